#include "filemanager/FileVerbs.h"
#include "platform/NativeName.h"

#include "TestSupport.h"
#include "TreeDrives.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

using namespace vmk;
using vmk::test::MessageRecorder;
using vmk::test::readFile;
using vmk::test::TreeDrives;
using vmk::test::writeFile;

TEST(FileVerbs, NamesThatCannotNameAnEntry)
{
    EXPECT_TRUE(FileVerbs::NameRefusal(QStringLiteral("a.txt")).isEmpty());
    // Literal characters on this platform, kept as typed.
    for (const char* ok : { "say \"hi\"", "star*.txt", "what?", "a:b", " lead", "trail.", "ñandú" })
        EXPECT_TRUE(FileVerbs::NameRefusal(QString::fromUtf8(ok)).isEmpty()) << ok;
    for (const char* bad : { ".", "..", "a\\b", "a/b", "a|b", "line\nbreak", "cr\r", "tab\t" })
        EXPECT_FALSE(FileVerbs::NameRefusal(QString::fromUtf8(bad)).isEmpty()) << bad;
    EXPECT_FALSE(FileVerbs::NameRefusal(QStringLiteral("nul") + QChar(0)).isEmpty());
}

TEST(FileVerbs, RenameNeverReplacesAndKeepsOddNames)
{
    TreeDrives drives;
    const QString dir = drives.device() + "/d";
    ASSERT_TRUE(writeFile(dir + "/a.txt", "A"));
    ASSERT_TRUE(writeFile(dir + "/taken.txt", "T"));
    ASSERT_TRUE(writeFile(dir + "/Twin.txt", "upper"));
    ASSERT_TRUE(writeFile(dir + "/twin.txt", "lower"));
    MessageRecorder messages;

    // Into a name in use: refused with the name, both files as they were.
    EXPECT_FALSE(FileVerbs::RenameItem("E:\\d\\a.txt", "E:\\d\\", "taken.txt"));
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_EQ(messages.texts.at(0), "¡Ya existe un archivo o carpeta con ese nombre!\r\nE:\\d\\taken.txt");
    EXPECT_EQ(readFile(dir + "/a.txt"), "A");
    EXPECT_EQ(readFile(dir + "/taken.txt"), "T");

    // Case-only twins are two entries here: renaming one onto the other is refused,
    // and each keeps its bytes.
    EXPECT_FALSE(FileVerbs::RenameItem("E:\\d\\twin.txt", "E:\\d\\", "Twin.txt"));
    EXPECT_EQ(readFile(dir + "/Twin.txt"), "upper");
    EXPECT_EQ(readFile(dir + "/twin.txt"), "lower");
    // A case-only change of a name with no twin goes through (no case-blind match
    // with the old entry takes its place).
    EXPECT_TRUE(FileVerbs::RenameItem("E:\\d\\a.txt", "E:\\d\\", "A.TXT"));
    EXPECT_EQ(readFile(dir + "/A.TXT"), "A");
    EXPECT_FALSE(QFileInfo::exists(dir + "/a.txt"));

    // Odd but valid names are literal.
    EXPECT_TRUE(FileVerbs::RenameItem("E:\\d\\A.TXT", "E:\\d\\", "say \"hi\" *.txt"));
    EXPECT_EQ(readFile(dir + "/say \"hi\" *.txt"), "A");
    messages.texts.clear();
    // Invalid names are refused before anything is touched, naming the name.
    EXPECT_FALSE(FileVerbs::RenameItem("E:\\d\\say \"hi\" *.txt", "E:\\d\\", "two\nlines"));
    EXPECT_FALSE(FileVerbs::RenameItem("E:\\d\\say \"hi\" *.txt", "E:\\d\\", "..\\..\\up"));
    EXPECT_FALSE(FileVerbs::RenameItem("E:\\d\\say \"hi\" *.txt", "E:\\d\\", "sub/x"));
    ASSERT_EQ(messages.texts.size(), 3);
    EXPECT_TRUE(messages.texts.at(0).startsWith("¡Nombre no válido!\r\n\"two?lines\"\r\n"));
    EXPECT_TRUE(messages.texts.at(1).contains("\"..\\..\\up\""));
    EXPECT_EQ(readFile(dir + "/say \"hi\" *.txt"), "A");
    EXPECT_EQ(QDir(dir).entryList(QDir::Files).size(), 4);

    // A folder renamed with its trailing "\"; a missing source says so with its number.
    ASSERT_TRUE(QDir().mkpath(dir + "/sub"));
    EXPECT_TRUE(FileVerbs::RenameItem("E:\\d\\sub\\", "E:\\d\\", "Sub2"));
    EXPECT_TRUE(QFileInfo(dir + "/Sub2").isDir());
    messages.texts.clear();
    EXPECT_FALSE(FileVerbs::RenameItem("E:\\d\\gone.txt", "E:\\d\\", "x.txt"));
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_EQ(messages.texts.at(0), "¡No se pudo renombrar!\r\nE:\\d\\gone.txt (2)");
}

TEST(FileVerbs, NewFolderNeverReplaces)
{
    TreeDrives drives;
    ASSERT_TRUE(writeFile(drives.device() + "/d/file", "F"));
    ASSERT_TRUE(QDir().mkpath(drives.device() + "/d/Made"));
    MessageRecorder messages;
    EXPECT_TRUE(FileVerbs::MakeFolder("E:\\d\\", "new \"one\" *"));
    EXPECT_TRUE(QFileInfo(drives.device() + "/d/new \"one\" *").isDir());
    // A file or a folder of that name: refused, nothing changed.
    EXPECT_FALSE(FileVerbs::MakeFolder("E:\\d\\", "file"));
    EXPECT_FALSE(FileVerbs::MakeFolder("E:\\d\\", "Made"));
    EXPECT_EQ(readFile(drives.device() + "/d/file"), "F");
    // A case-only twin of an existing folder is another folder here.
    EXPECT_TRUE(FileVerbs::MakeFolder("E:\\d\\", "made"));
    EXPECT_TRUE(QFileInfo(drives.device() + "/d/made").isDir());
    EXPECT_FALSE(FileVerbs::MakeFolder("E:\\d\\", "x\ny"));
    EXPECT_FALSE(FileVerbs::MakeFolder("E:\\d\\", "."));
    // Inside a folder that is not there: the failure names the folder and the number.
    EXPECT_FALSE(FileVerbs::MakeFolder("E:\\nothere\\", "x"));
    ASSERT_EQ(messages.texts.size(), 5);
    EXPECT_EQ(messages.texts.at(0), "¡Ya existe un archivo o carpeta con ese nombre!\r\nE:\\d\\file");
    EXPECT_EQ(messages.texts.at(4), "¡No se pudo crear la carpeta!\r\nE:\\nothere\\x (2)");
    EXPECT_EQ(QDir(drives.device() + "/d").entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 3);
}

TEST(FileVerbs, FactsOfFilesFoldersAndNothing)
{
    TreeDrives drives;
    ASSERT_TRUE(writeFile(drives.device() + "/d/t.txt", QByteArray(2000, 'x')));
    ASSERT_TRUE(writeFile(drives.device() + "/d/in/u.bin", QByteArray(10, 'y')));
    QFile::setPermissions(drives.device() + "/d/t.txt", QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup);
    const FileVerbs::Facts file = FileVerbs::ReadFacts("E:\\d\\t.txt");
    EXPECT_TRUE(file.exists);
    EXPECT_FALSE(file.folder);
    EXPECT_EQ(file.bytes, 2000);
    EXPECT_EQ(file.permissions, "rw-r-----");
    EXPECT_FALSE(file.type.isEmpty());
    EXPECT_TRUE(file.modified.isValid());
    EXPECT_EQ(FileVerbs::SizeWords(file.bytes), "1KB, 2000 Bytes");
    const FileVerbs::Facts folder = FileVerbs::ReadFacts("E:\\d\\");
    EXPECT_TRUE(folder.folder);
    EXPECT_EQ(folder.type, "Carpeta");
    EXPECT_EQ(folder.bytes, 2010);
    EXPECT_EQ(folder.files, 2);
    EXPECT_FALSE(folder.partial);
    EXPECT_FALSE(FileVerbs::ReadFacts("E:\\d\\none").exists);
    EXPECT_FALSE(FileVerbs::ReadFacts("HOST").exists);
    EXPECT_EQ(FileVerbs::SizeWords(-1), "-----");
    EXPECT_EQ(FileVerbs::SizeWords(1024), "1024 Bytes");
}

TEST(FileVerbs, NamesThatAreNotUtf8KeepTheirBytes)
{
    TreeDrives drives;
    ASSERT_TRUE(QDir().mkpath(drives.device() + "/d"));
    // A Latin-1 name from an old stick: "caf\xe9.txt".
    const QByteArray latin1 = QFile::encodeName(drives.device()) + "/d/caf\xe9.txt";
    const int fd = ::open(latin1.constData(), O_CREAT | O_WRONLY, 0644);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::write(fd, "old", 3), 3);
    ::close(fd);
    const QString logical = NativeName::fromBytes("caf\xe9.txt");
    MessageRecorder messages;
    EXPECT_TRUE(FileVerbs::RenameItem("E:\\d\\" + logical, "E:\\d\\", "cafe.txt"));
    EXPECT_EQ(readFile(drives.device() + "/d/cafe.txt"), "old");
    EXPECT_NE(::access(latin1.constData(), F_OK), 0);
    // And back, byte for byte.
    EXPECT_TRUE(FileVerbs::RenameItem("E:\\d\\cafe.txt", "E:\\d\\", logical));
    EXPECT_EQ(::access(latin1.constData(), F_OK), 0);
    EXPECT_TRUE(FileVerbs::MakeFolder("E:\\d\\", NativeName::fromBytes("ni\xf1o")));
    EXPECT_EQ(::access((QFile::encodeName(drives.device()) + "/d/ni\xf1o").constData(), F_OK), 0);
    EXPECT_TRUE(messages.texts.isEmpty());
}
