#include "DeviceFixture.h"

#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "foundation/StartUp.h"
#include "panel/DeviceIntegration.h"
#include "platform/Registry.h"
#include "scanner/QuarantinePurge.h"

#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QThread>
#include <QTimeZone>

using namespace vmk;
using namespace vmk::panel;

class DeviceIntegrationTest : public test::DeviceFixture
{
};

TEST_F(DeviceIntegrationTest, ShellVerbsAreAddedOnceAndRemovedChildFirst)
{
    test::MessageRecorder messages;
    for (const QString& key :
        { QStringLiteral("Folder\\shell\\Vormak Host-USB"), QStringLiteral("Folder\\shell\\Vormak Host-USB\\Command"),
            QStringLiteral("*\\shell\\Vormak Host-USB"), QStringLiteral("*\\shell\\Vormak Host-USB\\Command") })
        DeviceIntegration::AddShellVerb(key);
    EXPECT_TRUE(messages.texts.isEmpty());
    const QString command = QStringLiteral("C:\\system\\eject.exe \"%1\"");
    EXPECT_EQ(
        Registry::defaultValue(QStringLiteral("*\\shell\\Vormak Host-USB\\Command")).value_or(QString()), command);
    // An existing key keeps its value.
    Registry::setDefaultValue(QStringLiteral("Folder\\shell\\Vormak Host-USB"), QStringLiteral("kept"));
    DeviceIntegration::AddShellVerb(QStringLiteral("Folder\\shell\\Vormak Host-USB"));
    EXPECT_EQ(Registry::defaultValue(QStringLiteral("Folder\\shell\\Vormak Host-USB")).value_or(QString()),
        QStringLiteral("kept"));

    EXPECT_EQ(DeviceIntegration::ShellKeys().first(), QStringLiteral("Folder\\shell\\Vormak Host-USB\\Command"));
    DeviceIntegration::RemoveShellKeys();
    for (const QString& key : DeviceIntegration::ShellKeys())
        EXPECT_FALSE(Registry::keyExists(key)) << key.toStdString();
    // Removing what is gone is quiet.
    DeviceIntegration::RemoveShellKeys();
    EXPECT_TRUE(messages.texts.isEmpty());
}

TEST_F(DeviceIntegrationTest, AutorunIsGuardedAndRestoredFromTheBackup)
{
    const QString autorun = put(QStringLiteral("E:\\AUTORUN.inf"), "[autorun]\r\nopen=virus.exe\r\n");
    const QString backup = put(QStringLiteral("E:\\VMK\\AUTORUN.bck"), "[autorun]\r\nopen=VMK\\Vormak.exe\r\n");
    ASSERT_TRUE(GuardAutorun());
    EXPECT_TRUE(AutorunGuarded());
    EXPECT_FALSE(QFile::permissions(autorun) & QFileDevice::WriteOwner);
    DeviceIntegration::RestoreAutorun(G().ProgramDrive);
    EXPECT_FALSE(AutorunGuarded());
    EXPECT_EQ(test::readFile(autorun), test::readFile(backup));
    EXPECT_TRUE(QFile::permissions(autorun) & QFileDevice::WriteOwner);

    // No autorun file but a backup: the file appears.
    QFile::remove(autorun);
    EXPECT_FALSE(GuardAutorun());
    DeviceIntegration::RestoreAutorun(G().ProgramDrive);
    EXPECT_EQ(test::readFile(autorun), test::readFile(backup));

    // No backup: the autorun file is released and otherwise untouched.
    QFile::remove(backup);
    put(QStringLiteral("E:\\AUTORUN.inf"), "edited");
    ASSERT_TRUE(GuardAutorun());
    DeviceIntegration::RestoreAutorun(G().ProgramDrive);
    EXPECT_EQ(test::readFile(autorun), QByteArray("edited"));
    EXPECT_TRUE(QFile::permissions(autorun) & QFileDevice::WriteOwner);
}

TEST_F(DeviceIntegrationTest, AutorunGetsItsOwnModeBackAfterARunThatNeverReleasedIt)
{
    // The mode bits alone: the "user" bits say what this process may do, which
    // for root is everything.
    const auto modeOf = [](const QString& file) {
        return QFile::permissions(file) & ~(QFileDevice::ReadUser | QFileDevice::WriteUser | QFileDevice::ExeUser);
    };
    const QString autorun = put(QStringLiteral("E:\\AUTORUN.inf"), "[autorun]\r\n");
    const QString record = native(AutorunModeRecord());
    const QFileDevice::Permissions mode640 = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup;
    const QFileDevice::Permissions mode440 = QFileDevice::ReadOwner | QFileDevice::ReadGroup;
    ASSERT_TRUE(QFile::setPermissions(autorun, mode640));

    // While guarded, the own mode is recorded on the device; a release gives it
    // back and drops the record.
    ASSERT_TRUE(GuardAutorun());
    EXPECT_EQ(modeOf(autorun), mode440);
    EXPECT_EQ(test::readFile(record), QByteArray("0640\r\n"));
    ReleaseAutorun();
    EXPECT_EQ(modeOf(autorun), mode640);
    EXPECT_FALSE(QFileInfo::exists(record));

    // A run killed while guarding (or whose device was pulled) left the file
    // read-only with its record: the next start takes the recorded mode, not
    // the read-only one it finds, and its release gives 0640 back.
    ASSERT_TRUE(test::writeFile(record, "0640\r\n"));
    ASSERT_TRUE(QFile::setPermissions(autorun, mode440));
    ASSERT_TRUE(GuardAutorun());
    EXPECT_EQ(modeOf(autorun), mode440);
    EXPECT_EQ(test::readFile(record), QByteArray("0640\r\n"));
    ReleaseAutorun();
    EXPECT_EQ(modeOf(autorun), mode640);
    EXPECT_FALSE(QFileInfo::exists(record));

    // A mode changed since that run is the owner's own choice and is kept; so
    // is the mode found beside a record that is not a mode at all.
    const QFileDevice::Permissions mode600 = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
    for (const QByteArray& left : { QByteArray("0640\r\n"), QByteArray("rwx\r\n"), QByteArray("99999\r\n"),
             QByteArray("\xff\xfe"
                        "0777"),
             QByteArray() }) {
        ASSERT_TRUE(test::writeFile(record, left));
        ASSERT_TRUE(QFile::setPermissions(autorun, mode600));
        ASSERT_TRUE(GuardAutorun());
        EXPECT_EQ(test::readFile(record), QByteArray("0600\r\n")) << left.constData();
        ReleaseAutorun();
        EXPECT_EQ(modeOf(autorun), mode600) << left.constData();
    }

    // The file removed during the run: the release has nothing to give back and
    // drops the record; a record beside no file is dropped at the next start.
    ASSERT_TRUE(GuardAutorun());
    QFile::remove(autorun);
    ReleaseAutorun();
    EXPECT_FALSE(QFileInfo::exists(record));
    ASSERT_TRUE(test::writeFile(record, "0640\r\n"));
    EXPECT_FALSE(GuardAutorun());
    EXPECT_FALSE(QFileInfo::exists(record));
}

TEST_F(DeviceIntegrationTest, EjectHelperGetsLanguageAndDriveFromTheSystemFolder)
{
    EXPECT_EQ(DeviceIntegration::EjectCommandLine(QStringLiteral("C:\\system"), 2, QStringLiteral("E:")),
        QStringLiteral("\"C:\\system\\eject.exe\"2|E:"));
    const QString out = m_host.filePath(QStringLiteral("eject-args.txt"));
    putScript(QStringLiteral("C:\\system\\eject.exe"), "printf '%s|%s' \"$*\" \"$PWD\" > '" + out.toUtf8() + "'");
    ASSERT_TRUE(DeviceIntegration::StartEjectHelper(QStringLiteral("C:\\system"), 1, QStringLiteral("E:")));
    for (int i = 0; i < 100 && !QFileInfo::exists(out); ++i)
        QThread::msleep(20);
    QThread::msleep(50);
    EXPECT_EQ(QString::fromUtf8(test::readFile(out)), QStringLiteral("1|E:|") + native(QStringLiteral("C:\\system")));
    // The process no longer sits on the device.
    EXPECT_EQ(QDir::currentPath(), QDir(native(QStringLiteral("C:\\system"))).canonicalPath());
    // No helper: the start fails and nothing else happens.
    QFile::remove(native(QStringLiteral("C:\\system\\eject.exe")));
    EXPECT_FALSE(DeviceIntegration::StartEjectHelper(QStringLiteral("C:\\system"), 1, QStringLiteral("E:")));
}

TEST_F(DeviceIntegrationTest, PurgeKeepsFilesOfExactlyTheLimitAndWalksSubfolders)
{
    const QString q = G().ProgramDrive + S().QuarenteneFolder;
    const QString fresh = put(q + QStringLiteral("fresh.exe"), "a");
    const QString limit = put(q + QStringLiteral("limit.exe"), "b");
    const QString over = put(q + QStringLiteral("over.exe"), "c");
    const QString deep = put(q + QStringLiteral("sub\\deep.exe"), "d");
    const QDate today(2024, 5, 20);
    // Creation times in UTC; late in the evening still counts as that day.
    QHash<QString, QDateTime> born { { fresh, QDateTime(today, QTime(0, 1), Qt::UTC) },
        { limit, QDateTime(today.addDays(-7), QTime(23, 59), Qt::UTC) },
        { over, QDateTime(today.addDays(-8), QTime(0, 0), Qt::UTC) },
        { deep, QDateTime(today.addDays(-30), QTime(12, 0), Qt::UTC) } };
    scanner::SetCreationTimeHook([&](const QString& path) { return born.value(path); });

    EXPECT_EQ(scanner::PurgeOldFiles(q, 7, today), 2);
    EXPECT_TRUE(QFileInfo::exists(fresh));
    EXPECT_TRUE(QFileInfo::exists(limit)); // exactly seven days stays
    EXPECT_FALSE(QFileInfo::exists(over)); // the eighth day goes
    EXPECT_FALSE(QFileInfo::exists(deep));
    // A file created today never goes, even with a limit of 0; tomorrow it does.
    EXPECT_EQ(scanner::PurgeOldFiles(q, 0, today), 1);
    EXPECT_TRUE(QFileInfo::exists(fresh));
    EXPECT_FALSE(QFileInfo::exists(limit));
    EXPECT_EQ(scanner::PurgeOldFiles(q, 0, today.addDays(1)), 1);
    EXPECT_FALSE(QFileInfo::exists(fresh));
    // A missing folder is no error.
    EXPECT_EQ(scanner::PurgeOldFiles(QStringLiteral("E:\\nowhere\\"), 0, today), 0);

    // With the real clock a file written now is today's.
    scanner::SetCreationTimeHook({});
    const QString now = put(q + QStringLiteral("now.exe"), "n");
    EXPECT_EQ(scanner::FileCreationTime(now).toUTC().date(), QDateTime::currentDateTimeUtc().date());
}
