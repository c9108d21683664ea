#include "platform/DriveFigures.h"
#include "platform/DriveMap.h"
#include "platform/FileReplace.h"
#include "platform/PathForm.h"
#include "platform/Pump.h"
#include "platform/Registry.h"
#include "platform/RunAndWait.h"
#include "platform/Shell.h"
#include "platform/SpecialFolders.h"
#include "platform/Trash.h"

#include "TestSupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/mount.h>
#include <sys/statvfs.h>
#include <unistd.h>

using namespace vmk;

TEST(RunAndWaitTest, WaitsWithThePumpRunningAndReportsStartFailures)
{
    EXPECT_EQ(platform::SplitCommandLine(QStringLiteral("Delete.exe \"E:\\Mis Documentos\\a b.txt\"")),
        (QStringList { "Delete.exe", "E:\\Mis Documentos\\a b.txt" }));
    EXPECT_EQ(platform::SplitCommandLine(QStringLiteral("  a  \"\" \"say \"\"hi\"\"\" ")),
        (QStringList { "a", "", "say \"hi\"" }));

    int pumps = 0;
    SetPumpHook([&] { ++pumps; });
    QElapsedTimer t;
    t.start();
    const platform::RunOutcome slow = platform::RunAndWait(QStringLiteral("sh -c \"sleep 0.4; exit 3\""));
    const qint64 ms = t.elapsed();
    SetPumpHook({});
    EXPECT_TRUE(slow.started);
    EXPECT_EQ(slow.exitCode, 3);
    EXPECT_GE(ms, 350);
    // The pump runs every 50 ms of waiting: a few times, not thousands (no spin).
    EXPECT_GE(pumps, 3);
    EXPECT_LE(pumps, 20);

    const platform::RunOutcome missing = platform::RunAndWait(QStringLiteral("no-such-program-vmk.exe x"));
    EXPECT_FALSE(missing.started);
    EXPECT_FALSE(missing.error.isEmpty());

    // The child sees the same drive letters.
    QTemporaryDir dir;
    const QString root = QDir(dir.path()).canonicalPath();
    DriveMap::instance().setTestDrives({ { u'C', QStringLiteral("/") }, { u'E', root } }, u'E');
    ASSERT_TRUE(test::writeFile(root + "/show map.sh", "printf '%s' \"$VMK_DRIVE_MAP\" > \"$1\"\n"));
    const platform::RunOutcome env = platform::RunAndWait(
        QStringLiteral("sh \"") + root + QStringLiteral("/show map.sh\" \"") + root + QStringLiteral("/map.txt\""));
    DriveMap::instance().resetToHost();
    EXPECT_TRUE(env.started);
    EXPECT_EQ(env.exitCode, 0);
    const QString seen = QString::fromUtf8(test::readFile(root + "/map.txt"));
    EXPECT_TRUE(seen.contains(QStringLiteral("E\t") + root)) << seen.toStdString();
    EXPECT_TRUE(seen.contains(QStringLiteral("*\tE")));
}

TEST(RegistryTest, ShellVerbKeysInAFile)
{
    QTemporaryDir dir;
    Registry::setFile(dir.path() + "/reg/classes.reg");
    const QString verb = QStringLiteral("Folder\\shell\\Vormak Host-USB");
    const QString command = verb + QStringLiteral("\\Command");
    EXPECT_FALSE(Registry::keyExists(verb));
    ASSERT_TRUE(Registry::createKey(command));
    EXPECT_TRUE(Registry::keyExists(verb));
    EXPECT_TRUE(Registry::keyExists(QStringLiteral("folder\\SHELL\\vormak host-usb\\command")));
    ASSERT_TRUE(Registry::setDefaultValue(command, QStringLiteral("C:\\sys\\eject.exe \"%1\"")));
    EXPECT_EQ(Registry::defaultValue(command).value_or(QString()), QStringLiteral("C:\\sys\\eject.exe \"%1\""));
    EXPECT_FALSE(Registry::defaultValue(verb).has_value());
    EXPECT_FALSE(Registry::setDefaultValue(QStringLiteral("*\\shell\\none"), QStringLiteral("x")));
    // A key with a subkey cannot go first.
    EXPECT_FALSE(Registry::deleteKey(verb));
    EXPECT_TRUE(Registry::deleteKey(command));
    EXPECT_TRUE(Registry::deleteKey(verb));
    EXPECT_FALSE(Registry::keyExists(verb));
    EXPECT_FALSE(Registry::deleteKey(verb));
    EXPECT_TRUE(Registry::keyExists(QStringLiteral("Folder\\shell")));
    const QByteArray file = test::readFile(Registry::file());
    EXPECT_TRUE(file.contains("[Folder\\shell]\r\n"));
    Registry::setFile({});
}

TEST(TrashTest, DeviceFilesToTheDeviceTrashHostFilesToTheUserTrash)
{
    QTemporaryDir dir;
    const QString base = QDir(dir.path()).canonicalPath();
    const QString device = base + "/device";
    const QString data = base + "/home-data";
    QDir().mkpath(device);
    qputenv("XDG_DATA_HOME", data.toUtf8());
    const QString uid = QString::number(::getuid());

    // A device is a volume of its own: its files stay on it, in its own trash.
    if (::mount("tmpfs", device.toUtf8().constData(), "tmpfs", 0, "size=4m") == 0) {
        ASSERT_TRUE(test::writeFile(device + "/Docs/a b.txt", "one"));
        QString error;
        ASSERT_TRUE(Trash::moveToTrash(device + "/Docs/a b.txt", &error)) << error.toStdString();
        const QString devTrash = device + "/.Trash-" + uid;
        EXPECT_FALSE(QFile::exists(device + "/Docs/a b.txt"));
        EXPECT_EQ(test::readFile(devTrash + "/files/a b.txt"), QByteArray("one"));
        const QByteArray info = test::readFile(devTrash + "/info/a b.txt.trashinfo");
        EXPECT_TRUE(info.startsWith("[Trash Info]\nPath=")) << info.toStdString();
        EXPECT_TRUE(info.contains("Docs/a%20b.txt\n") || info.contains("Docs/a b.txt\n")) << info.toStdString();
        // A second item of the same name gets a free name; the first stays.
        ASSERT_TRUE(test::writeFile(device + "/Docs/a b.txt", "two"));
        ASSERT_TRUE(Trash::moveToTrash(device + "/Docs/a b.txt"));
        EXPECT_EQ(test::readFile(devTrash + "/files/a b.txt"), QByteArray("one"));
        EXPECT_EQ(QDir(devTrash + "/files").entryList(QDir::Files).size(), 2);
        ::umount2(device.toUtf8().constData(), MNT_DETACH);
    }

    QString error;
    ASSERT_TRUE(test::writeFile(base + "/host/h.txt", "host"));
    ASSERT_TRUE(Trash::moveToTrash(base + "/host/h.txt", &error)) << error.toStdString();
    EXPECT_FALSE(QFile::exists(base + "/host/h.txt"));
    EXPECT_EQ(test::readFile(data + "/Trash/files/h.txt"), QByteArray("host"));
    EXPECT_TRUE(
        test::readFile(data + "/Trash/info/h.txt.trashinfo").contains("Path=" + (base + "/host/h.txt").toUtf8()));

    EXPECT_FALSE(Trash::moveToTrash(base + "/missing", &error));
    EXPECT_FALSE(error.isEmpty());
    qunsetenv("XDG_DATA_HOME");
}

TEST(ShellTest, OpenerSeamGetsHostPathsAndAddresses)
{
    QTemporaryDir dir;
    const QString root = QDir(dir.path()).canonicalPath();
    DriveMap::instance().setTestDrives({ { u'C', QStringLiteral("/") }, { u'E', root } }, u'E');
    test::writeFile(root + "/Manual.pdf", "pdf");
    QStringList opened;
    const Shell::Opener previous = Shell::setOpener([&](const QString& t) {
        opened << t;
        return true;
    });
    EXPECT_TRUE(Shell::open(QStringLiteral("E:\\MANUAL.PDF")));
    EXPECT_TRUE(Shell::open(QStringLiteral("https://example.org/vormak")));
    EXPECT_TRUE(Shell::open(QStringLiteral("www.example.org")));
    EXPECT_FALSE(Shell::open(QStringLiteral("Q:\\x")));
    Shell::setOpener(previous);
    DriveMap::instance().resetToHost();
    EXPECT_EQ(opened, (QStringList { root + "/Manual.pdf", "https://example.org/vormak", "http://www.example.org" }));
}

TEST(SpecialFoldersTest, XdgUserDirsAndDriveFigures)
{
    QTemporaryDir dir;
    test::writeFile(dir.path() + "/user-dirs.dirs",
        "# written by xdg-user-dirs-update\nXDG_DESKTOP_DIR=\"$HOME/Escritorio\"\n"
        "XDG_DOCUMENTS_DIR=\"/srv/docs\"\n");
    qputenv("XDG_CONFIG_HOME", dir.path().toUtf8());
    qputenv("XDG_DATA_HOME", (dir.path() + "/data").toUtf8());
    EXPECT_EQ(SpecialFolders::desktop(), QDir::homePath() + "/Escritorio");
    EXPECT_EQ(SpecialFolders::documents(), QStringLiteral("/srv/docs"));
    EXPECT_EQ(SpecialFolders::programs(), dir.path() + "/data/applications");
    qputenv("XDG_CONFIG_HOME", (dir.path() + "/none").toUtf8());
    EXPECT_EQ(SpecialFolders::desktop(), QDir::homePath() + "/Desktop");
    EXPECT_EQ(SpecialFolders::documents(), QDir::homePath());
    qunsetenv("XDG_CONFIG_HOME");
    qunsetenv("XDG_DATA_HOME");

    struct statvfs vfs;
    ASSERT_EQ(::statvfs("/", &vfs), 0);
    const auto s = DriveFigures::ofNative(QStringLiteral("/"));
    ASSERT_TRUE(s);
    EXPECT_EQ(s->totalBytes, quint64(vfs.f_blocks) * vfs.f_frsize);
    EXPECT_GT(s->totalBytes, 0u);
    EXPECT_LE(s->freeBytes, s->totalBytes);
    EXPECT_FALSE(DriveFigures::ofNative(QStringLiteral("/no/such/folder")).has_value());
}

// Two folders change names in one step, neither name missing in between; a
// missing side changes nothing.
TEST(FileReplaceTest, ExchangeSwapsTwoFoldersOrChangesNothing)
{
    QTemporaryDir dir;
    const QString base = QDir(dir.path()).canonicalPath();
    ASSERT_TRUE(test::writeFile(base + "/sigs/old.cud", "old set"));
    ASSERT_TRUE(test::writeFile(base + "/sigs.new/new.cud", "new set"));
    ASSERT_TRUE(FileReplace::exchange(base + "/sigs.new", base + "/sigs"));
    EXPECT_EQ(test::readFile(base + "/sigs/new.cud"), QByteArray("new set"));
    EXPECT_EQ(test::readFile(base + "/sigs.new/old.cud"), QByteArray("old set"));
    EXPECT_FALSE(FileReplace::exchange(base + "/missing", base + "/sigs"));
    EXPECT_EQ(test::readFile(base + "/sigs/new.cud"), QByteArray("new set"));
    EXPECT_FALSE(QFileInfo::exists(base + "/missing"));
    ASSERT_TRUE(FileReplace::move(base + "/sigs.new", base + "/sigs.old"));
    EXPECT_EQ(test::readFile(base + "/sigs.old/old.cud"), QByteArray("old set"));
}

TEST(PathFormTest, AbsoluteNormalisedPathsAndTheEntriesTheyName)
{
    for (const char* good : { "E:\\Q\\x\"y", "E:\\Q\\.\".\"\\victim", "E:/Q/..x", "/tmp/a", "E:\\\\Q", "e:\\...\\x" }) {
        EXPECT_TRUE(PathForm::isAbsoluteNormalised(QString::fromUtf8(good))) << good;
        EXPECT_TRUE(PathForm::namesEntry(QString::fromUtf8(good))) << good;
    }
    for (const char* bad : { "E:\\Q\\..\\x", "E:\\.\\x", "E:/Q/../x", "/tmp/../etc", "Q\\x", "x", "", "\\Q\\x",
             "EE:\\x", "E:x", "E:\\Q\\." }) {
        EXPECT_FALSE(PathForm::isAbsoluteNormalised(QString::fromUtf8(bad))) << bad;
        EXPECT_FALSE(PathForm::namesEntry(QString::fromUtf8(bad))) << bad;
    }
    for (const char* root : { "E:", "E:\\", "E:\\\\", "/", "//" }) {
        EXPECT_TRUE(PathForm::isAbsoluteNormalised(QString::fromUtf8(root))) << root;
        EXPECT_FALSE(PathForm::namesEntry(QString::fromUtf8(root))) << root;
    }
}
