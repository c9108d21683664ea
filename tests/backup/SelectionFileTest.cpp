#include "backup/SelectionFile.h"
#include "platform/NativeName.h"

#include "TestDrive.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>

#include <gtest/gtest.h>

using namespace vmk;
using vmk::test::readFile;
using vmk::test::TestDrive;
using vmk::test::writeFile;

TEST(SelectionFile, IsPlainTextWithCrLfAndTwoSections)
{
    const QByteArray bytes = SelectionFile::Compose({ "C:\\Datos\\", "C:\\b.txt" }, { "C:\\Datos\\tmp\\" });
    EXPECT_EQ(bytes, QByteArray("[Add]\r\nC:\\Datos\\\r\nC:\\b.txt\r\n[Exclude]\r\nC:\\Datos\\tmp\\\r\n"));
    // An empty [Add] section is legal.
    EXPECT_EQ(SelectionFile::Compose({}, {}), QByteArray("[Add]\r\n[Exclude]\r\n"));
    const SelectionFile::Lists back = SelectionFile::Parse(bytes);
    EXPECT_EQ(back.add, QStringList({ "C:\\Datos\\", "C:\\b.txt" }));
    EXPECT_EQ(back.exclude, QStringList { "C:\\Datos\\tmp\\" });
    // A name holding a line break cannot be a line: left out, and named.
    QStringList leftOut;
    EXPECT_EQ(SelectionFile::Compose({ "C:\\a\nb.txt", "C:\\ok.txt" }, { "C:\\c\rd\\" }, &leftOut),
        QByteArray("[Add]\r\nC:\\ok.txt\r\n[Exclude]\r\n"));
    EXPECT_EQ(leftOut, QStringList({ "C:\\a\nb.txt", "C:\\c\rd\\" }));
}

TEST(SelectionFile, ReadsWhatOtherEditorsAndDamageLeave)
{
    // Lines before the first section, empty lines, LF or CR alone, no final line end.
    SelectionFile::Lists l
        = SelectionFile::Parse("junk\r\nC:\\before\r\n[Add]\nC:\\a\\\r\n\r\nC:\\b\r[Exclude]\r\nC:\\a\\x");
    EXPECT_EQ(l.add, QStringList({ "C:\\a\\", "C:\\b" }));
    EXPECT_EQ(l.exclude, QStringList { "C:\\a\\x" });
    // The section lines are compared exactly; sections may come back.
    l = SelectionFile::Parse("[add]\r\nC:\\no\r\n[Exclude]\r\nC:\\e\r\n[Add] \r\n[Add]\r\nC:\\late\r\n");
    EXPECT_EQ(l.add, QStringList { "C:\\late" });
    EXPECT_EQ(l.exclude, QStringList({ "C:\\e", "[Add] " }));
    // Bytes that are not UTF-8 and NUL bytes are kept, not a reason to fail.
    l = SelectionFile::Parse(QByteArray("[Add]\r\nC:\\caf\xe9\r\nC:\\n") + QByteArray(1, '\0') + "ul\r\n");
    ASSERT_EQ(l.add.size(), 2);
    EXPECT_EQ(NativeName::toBytes(l.add[0]), QByteArray("C:\\caf\xe9"));
    EXPECT_EQ(l.add[1].size(), 7);
    // Truncated inside a section line, or nothing at all.
    EXPECT_TRUE(SelectionFile::Parse("[Exc").add.isEmpty());
    EXPECT_TRUE(SelectionFile::Parse("").exclude.isEmpty());
    EXPECT_TRUE(SelectionFile::Parse("\r\r\n\n").add.isEmpty());
}

TEST(SelectionFile, RoundTripsOddNamesAndDropsWhatIsGone)
{
    QTemporaryDir dir;
    const QString root = QDir(dir.path()).canonicalPath();
    TestDrive drive(root);
    // Odd names that exist: quotes, stars, blanks at both ends, a name that is not UTF-8.
    const QString nonUtf8 = NativeName::fromBytes(QByteArray("caf\xe9.txt"));
    for (const QString& name : { QStringLiteral("q\"x*.txt"), QStringLiteral(" lead"), QStringLiteral("trail "),
             QStringLiteral("Twin.txt"), QStringLiteral("twin.txt") })
        ASSERT_TRUE(writeFile(root + "/data/" + name, "x"));
    FILE* latin = std::fopen(QFile::encodeName(root + "/data/") + "caf\xe9.txt", "wb");
    ASSERT_NE(latin, nullptr);
    std::fclose(latin);
    ASSERT_TRUE(QDir().mkpath(root + "/data/sub"));
    const QStringList add = { "T:\\data\\q\"x*.txt", "T:\\data\\ lead", "T:\\data\\trail ", "T:\\data\\Twin.txt",
        "T:\\data\\" + nonUtf8, "T:\\gone\\", "T:\\data\\sub\\" };
    const QStringList exc = { "T:\\data\\twin.txt", "T:\\data\\gone.txt" };
    ASSERT_EQ(SelectionFile::Save("T:\\sel.txt", add, exc), QString());
    const QByteArray bytes = readFile(root + "/sel.txt");
    EXPECT_TRUE(bytes.startsWith("[Add]\r\nT:\\data\\q\"x*.txt\r\nT:\\data\\ lead\r\n"));
    EXPECT_TRUE(bytes.contains("T:\\data\\caf\xe9.txt\r\n")); // the name's own bytes
    EXPECT_TRUE(bytes.endsWith("[Exclude]\r\nT:\\data\\twin.txt\r\nT:\\data\\gone.txt\r\n"));

    const SelectionFile::Lists loaded = SelectionFile::Load("T:\\sel.txt");
    EXPECT_EQ(loaded.failure, QString());
    // What no longer exists is dropped without a word; the rest comes back exactly.
    EXPECT_EQ(loaded.add, QStringList({ add[0], add[1], add[2], add[3], add[4], add[6] }));
    EXPECT_EQ(loaded.exclude, QStringList { "T:\\data\\twin.txt" });

    // A saved name with a line break is named in the message, and the rest saved.
    const QString failure = SelectionFile::Save("T:\\sel2.txt", { "T:\\a\nb" }, {});
    EXPECT_TRUE(failure.contains("T:\\a\nb"));
    EXPECT_EQ(readFile(root + "/sel2.txt"), QByteArray("[Add]\r\n[Exclude]\r\n"));
    vmk::test::removeTree(root + "/data"); // a name that is not UTF-8 is beyond QDir
}

TEST(SelectionFile, UnreadableOrHugeFilesAreNamedAndGiveNothing)
{
    QTemporaryDir dir;
    const QString root = QDir(dir.path()).canonicalPath();
    TestDrive drive(root);
    // A folder where the file should be, a missing file, a file larger than any selection.
    ASSERT_TRUE(QDir().mkpath(root + "/afolder"));
    for (const QString& path : { QStringLiteral("T:\\afolder"), QStringLiteral("T:\\missing.txt") }) {
        const SelectionFile::Lists l = SelectionFile::Load(path);
        EXPECT_TRUE(l.failure.contains(path)) << path.toStdString();
        EXPECT_TRUE(l.add.isEmpty() && l.exclude.isEmpty());
    }
    QFile huge(root + "/huge.txt");
    ASSERT_TRUE(huge.open(QIODevice::WriteOnly));
    ASSERT_TRUE(huge.write("[Add]\r\nT:\\afolder\\\r\n"));
    ASSERT_TRUE(huge.resize(SelectionFile::kMaxBytes + 1)); // sparse
    huge.close();
    const SelectionFile::Lists l = SelectionFile::Load("T:\\huge.txt");
    EXPECT_TRUE(l.failure.contains("T:\\huge.txt"));
    EXPECT_TRUE(l.add.isEmpty());
    // Saving into a folder that does not exist says so and names the file.
    EXPECT_TRUE(SelectionFile::Save("T:\\no\\where.txt", { "T:\\afolder\\" }, {}).contains("T:\\no\\where.txt"));
}
