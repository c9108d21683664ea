#include "platform/DriveMap.h"
#include "platform/FileSearch.h"
#include "platform/MountTable.h"
#include "platform/NativeName.h"
#include "platform/ShortNames.h"

#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

using namespace vmk;

namespace
{
class DriveMapTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        m_root = QDir(m_dir.path()).canonicalPath();
        DriveMap::instance().setTestDrives({ { u'C', QStringLiteral("/") }, { u'E', m_root } }, u'E');
    }
    void TearDown() override { DriveMap::instance().resetToHost(); }

    QTemporaryDir m_dir;
    QString m_root;
};
} // namespace

TEST(MountTableTest, ParsesLinesWithEscapesAndOptionalFields)
{
    MountEntry e;
    ASSERT_TRUE(MountTable::parseLine(
        QStringLiteral("36 35 8:17 / /media/ana/MY\\040STICK rw,nosuid shared:1 master:2 - vfat /dev/sdb1 rw"), e));
    EXPECT_EQ(e.mountPoint, QStringLiteral("/media/ana/MY STICK"));
    EXPECT_EQ(e.fsType, QStringLiteral("vfat"));
    EXPECT_EQ(e.source, QStringLiteral("/dev/sdb1"));
    EXPECT_EQ(e.majorMinor, QStringLiteral("8:17"));
    EXPECT_FALSE(MountTable::parseLine(QStringLiteral("garbage line"), e));

    const QList<MountEntry> table = MountTable::read();
    ASSERT_FALSE(table.isEmpty());
    EXPECT_EQ(MountTable::holding(table, QStringLiteral("/proc/self")).fsType, QStringLiteral("proc"));
    EXPECT_TRUE(MountTable::isPseudoFilesystem(QStringLiteral("sysfs")));
    EXPECT_FALSE(MountTable::isPseudoFilesystem(QStringLiteral("tmpfs")));
    EXPECT_TRUE(MountTable::isUnder(QStringLiteral("/media/a/b"), QStringLiteral("/media/a")));
    EXPECT_FALSE(MountTable::isUnder(QStringLiteral("/media/ab"), QStringLiteral("/media/a")));
}

TEST_F(DriveMapTest, ResolvesComponentsCaseInsensitively)
{
    ASSERT_TRUE(test::writeFile(m_root + "/QFP.txt", "ledger"));
    ASSERT_TRUE(test::writeFile(m_root + "/Mis Documentos/Cuarentena/run.exe", "x"));
    const DriveMap& map = DriveMap::instance();

    EXPECT_EQ(map.toNative(QStringLiteral("E:\\QFP.TXT")), m_root + "/QFP.txt");
    EXPECT_EQ(map.toNative(QStringLiteral("e:\\qfp.txt")), m_root + "/QFP.txt");
    EXPECT_EQ(map.toNative(QStringLiteral("E:\\MIS DOCUMENTOS\\CUARENTENA\\RUN.EXE")),
        m_root + "/Mis Documentos/Cuarentena/run.exe");
    EXPECT_TRUE(QFile::exists(map.toNative(QStringLiteral("E:\\MIS DOCUMENTOS\\CUARENTENA\\RUN.EXE"))));
    // A new name keeps its spelling below the last folder that exists.
    EXPECT_EQ(map.toNative(QStringLiteral("E:\\mis documentos\\Nueva\\Archivo.TXT")),
        m_root + "/Mis Documentos/Nueva/Archivo.TXT");
    EXPECT_EQ(map.toNative(QStringLiteral("E:")), m_root);
    EXPECT_EQ(map.toNative(QStringLiteral("E:\\")), m_root);
    EXPECT_EQ(map.toNative(QStringLiteral("E:\\Mis Documentos\\..\\QFP.txt")), m_root + "/QFP.txt");
    EXPECT_EQ(map.toNative(QStringLiteral("Q:\\x")), QString());

    EXPECT_EQ(map.toLogical(m_root + "/Mis Documentos/Cuarentena/run.exe"),
        QStringLiteral("E:\\Mis Documentos\\Cuarentena\\run.exe"));
    EXPECT_EQ(map.toLogical(m_root), QStringLiteral("E:\\"));
    EXPECT_EQ(map.toLogical(QStringLiteral("/etc/hostname")), QStringLiteral("C:\\etc\\hostname"));
    EXPECT_EQ(map.deviceDrive(), QStringLiteral("E:"));
}

TEST_F(DriveMapTest, CaseFallbackNeverMergesNamesAndSeesEveryChange)
{
    // Two names that differ only in case: each exact spelling reaches its own
    // file, and an upper-cased one takes the first in name order.
    const QString folder = m_root + "/inc";
    ASSERT_TRUE(test::writeFile(folder + "/xt_mark.h", "lower"));
    ASSERT_TRUE(test::writeFile(folder + "/xt_MARK.h", "upper"));
    const DriveMap& map = DriveMap::instance();
    EXPECT_EQ(map.toNative(QStringLiteral("E:\\inc\\xt_mark.h")), folder + "/xt_mark.h");
    EXPECT_EQ(map.toNative(QStringLiteral("E:\\inc\\xt_MARK.h")), folder + "/xt_MARK.h");
    EXPECT_EQ(map.toNative(QStringLiteral("E:\\INC\\XT_MARK.H")), folder + "/xt_MARK.h");

    // The folder's names are looked up from an index; a change right after a
    // lookup (in the same tick of the folder's times) is still seen.
    EXPECT_EQ(map.toNative(QStringLiteral("E:\\INC\\NEW.TXT")), folder + "/NEW.TXT"); // absent: as written
    ASSERT_TRUE(test::writeFile(folder + "/New.txt", "n"));
    EXPECT_EQ(map.toNative(QStringLiteral("E:\\INC\\NEW.TXT")), folder + "/New.txt");
    ASSERT_TRUE(QFile::rename(folder + "/New.txt", folder + "/nEW.txt"));
    EXPECT_EQ(map.toNative(QStringLiteral("E:\\INC\\NEW.TXT")), folder + "/nEW.txt");
    ASSERT_TRUE(QFile::remove(folder + "/xt_MARK.h"));
    EXPECT_EQ(map.toNative(QStringLiteral("E:\\INC\\XT_MARK.H")), folder + "/xt_mark.h");

    // A name that is not UTF-8 (Latin-1 "caf\xe9") is found by its real bytes
    // from the upper-cased logical form.
    const QByteArray latin = QFile::encodeName(folder) + "/Caf\xe9.doc";
    const int fd = ::open(latin.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
    ASSERT_GE(fd, 0);
    ::close(fd);
    const QString upper = QStringLiteral("E:\\INC\\") + NativeName::fromBytes("CAF\xe9.DOC");
    EXPECT_EQ(NativeName::toBytes(map.toNative(upper)), latin);
}

TEST_F(DriveMapTest, NamesWithBackslashOrBarMapToAReversibleForm)
{
    const QString odd = QStringLiteral("a|b\\c.txt");
    ASSERT_TRUE(test::writeFile(m_root + "/" + odd, "odd"));
    const QList<FoundEntry> entries = FileSearch::list(QStringLiteral("E:\\"));
    ASSERT_EQ(entries.size(), 1);
    const QString logicalName = entries[0].name;
    EXPECT_FALSE(logicalName.contains(u'\\'));
    EXPECT_FALSE(logicalName.contains(u'|'));
    EXPECT_EQ(DriveMap::decodeName(logicalName), odd);
    const QString logical = DriveMap::instance().toLogical(m_root + "/" + odd);
    EXPECT_EQ(logical, QStringLiteral("E:\\") + logicalName);
    EXPECT_EQ(DriveMap::instance().toNative(logical), m_root + "/" + odd);
    EXPECT_EQ(test::readFile(DriveMap::instance().toNative(logical)), QByteArray("odd"));
}

TEST_F(DriveMapTest, ShortAliasesFollowNameOrderAndResolveBack)
{
    ASSERT_TRUE(QDir().mkpath(m_root + "/Mis Documentos"));
    ASSERT_TRUE(QDir().mkpath(m_root + "/Mis Docs viejos"));
    ASSERT_TRUE(test::writeFile(m_root + "/README.TXT", "r"));
    ASSERT_TRUE(test::writeFile(m_root + "/long name.html", "h"));
    EXPECT_EQ(ShortNames::aliasFor(m_root, QStringLiteral("Mis Docs viejos")), QStringLiteral("MISDOC~1"));
    EXPECT_EQ(ShortNames::aliasFor(m_root, QStringLiteral("Mis Documentos")), QStringLiteral("MISDOC~2"));
    EXPECT_EQ(ShortNames::aliasFor(m_root, QStringLiteral("README.TXT")), QStringLiteral("README.TXT"));
    EXPECT_EQ(ShortNames::aliasFor(m_root, QStringLiteral("long name.html")), QStringLiteral("LONGNA~1.HTM"));
    EXPECT_EQ(ShortNames::resolve(m_root, QStringLiteral("misdoc~2")), QStringLiteral("Mis Documentos"));
    EXPECT_EQ(DriveMap::instance().toNative(QStringLiteral("E:\\MISDOC~2")), m_root + "/Mis Documentos");
}

TEST(DriveMapHostTest, LettersFromTheHostAndTheDeviceRule)
{
    QTemporaryDir dir;
    const QString folder = QDir(dir.path()).canonicalPath();
    DriveMap& map = DriveMap::instance();
    qunsetenv(DriveMap::kInheritedVariable);
    map.resetToHost();
    map.setProgramFolder(folder);

    const auto c = map.drive(u'C');
    ASSERT_TRUE(c);
    EXPECT_EQ(c->root, QStringLiteral("/"));
    EXPECT_EQ(c->display(), QStringLiteral("c: [/]"));
    // Letters follow mount point order from D:, with no gaps.
    QChar expected = u'C';
    QString previousRoot;
    for (const DriveInfo& d : map.drives()) {
        EXPECT_EQ(d.letter, expected);
        expected = QChar(expected.unicode() + 1);
        if (d.letter != u'C' && !d.isDevice) {
            EXPECT_GT(d.root, previousRoot);
            previousRoot = d.root;
        }
    }
    // A program folder on an unlettered filesystem is itself the device.
    const auto dev = map.device();
    ASSERT_TRUE(dev);
    if (dev->root == folder) {
        EXPECT_EQ(map.logicalProgramFolder(), dev->drive() + u'\\');
        EXPECT_EQ(dev->display(), QString(dev->letter.toLower()) + QStringLiteral(": [") + folder + u']');
    }

    // --device wins; a subfolder of it is the program folder.
    QDir().mkpath(folder + "/VMK");
    map.setProgramFolder(folder + "/VMK");
    map.setDeviceOverride(folder);
    ASSERT_TRUE(map.device());
    EXPECT_EQ(map.device()->root, folder);
    EXPECT_EQ(map.logicalProgramFolder(), map.deviceDrive() + QStringLiteral("\\VMK"));

    // A child reads back the same table.
    const QString exported = map.exportForChildren();
    const QList<DriveInfo> before = map.drives();
    qputenv(DriveMap::kInheritedVariable, exported.toUtf8());
    map.resetToHost();
    ASSERT_EQ(map.drives().size(), before.size());
    for (qsizetype i = 0; i < before.size(); ++i) {
        EXPECT_EQ(map.drives()[i].letter, before[i].letter);
        EXPECT_EQ(map.drives()[i].root, before[i].root);
        EXPECT_EQ(map.drives()[i].isDevice, before[i].isDevice);
    }
    qunsetenv(DriveMap::kInheritedVariable);
    map.resetToHost();
}
