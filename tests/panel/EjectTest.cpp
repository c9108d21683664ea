#include "DeviceFixture.h"

#include "EjectTarget.h"
#include "Ejector.h"

#include "platform/DriveMap.h"

#include "TestSupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <sys/mount.h>

using namespace vmk;
using namespace vmk::eject;

TEST(EjectTarget, ParsesLanguageAndDrive)
{
    EjectTarget t;
    ASSERT_TRUE(t.Parse(QStringLiteral("2|e:")));
    EXPECT_EQ(t.LanguageIndex(), 2);
    EXPECT_EQ(t.Drive(), QStringLiteral("E:"));
    EXPECT_TRUE(t.Parse(QStringLiteral("\"0|F:\"")));
    for (const char* bad : { "", "1", "|E:", "x|E:", "1|EE", "1|E:\\", "9|E:", "-1|E:" })
        EXPECT_FALSE(EjectTarget().Parse(QString::fromLatin1(bad))) << bad;
}

TEST(Ejector, FolderDeviceIsFlushedAndMountedDeviceIsUnmountedOnceReleased)
{
    QTemporaryDir folder;
    Ejector plain(folder.path());
    EXPECT_TRUE(plain.Eject(2000));
    EXPECT_TRUE(plain.Log().join(QLatin1Char('\n')).contains(QStringLiteral("flushed")));
    EXPECT_FALSE(Ejector(folder.filePath(QStringLiteral("missing"))).Eject(100));

    QTemporaryDir mountPoint;
    const QByteArray mp = mountPoint.path().toUtf8();
    if (::mount("tmpfs", mp.constData(), "tmpfs", 0, "size=8m") != 0)
        GTEST_SKIP() << "mounting a tmpfs is not permitted here";
    QString foundMount, source;
    ASSERT_TRUE(Ejector::FindMount(mountPoint.path() + QStringLiteral("/x"), &foundMount, &source));
    EXPECT_EQ(foundMount, QDir(mountPoint.path()).canonicalPath());

    // A refused unmount is retried and then reported.
    Ejector refused(mountPoint.path());
    refused.SetUdisksAvailable(false);
    int calls = 0;
    refused.SetRunner([&](const QString& program, const QStringList&) {
        EXPECT_EQ(program, QStringLiteral("umount"));
        ++calls;
        return 32;
    });
    EXPECT_FALSE(refused.Eject(500));
    EXPECT_EQ(calls, 3);

    // A process sitting in the device holds the removal until it ends.
    QProcess holder;
    holder.setWorkingDirectory(mountPoint.path());
    holder.start(QStringLiteral("sleep"), { QStringLiteral("1") });
    ASSERT_TRUE(holder.waitForStarted());
    Ejector ejector(mountPoint.path());
    ejector.SetUdisksAvailable(false);
    EXPECT_TRUE(ejector.HoldingProcesses().contains(holder.processId()));
    QElapsedTimer t;
    t.start();
    const bool ok = ejector.Eject(5000);
    holder.waitForFinished();
    if (!ok)
        ::umount2(mp.constData(), MNT_DETACH);
    EXPECT_TRUE(ok) << ejector.Log().join(QLatin1Char('\n')).toStdString();
    EXPECT_GE(t.elapsed(), 500);
    EXPECT_FALSE(Ejector::FindMount(mountPoint.path(), &foundMount, &source) && foundMount == mountPoint.path());
}

class EjectProgramTest : public test::DeviceFixture
{
};

TEST_F(EjectProgramTest, HelperReportsInTheGivenLanguage)
{
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove(QStringLiteral("QT_QPA_PLATFORM"));
    env.remove(QStringLiteral("DISPLAY"));
    env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    env.insert(QString::fromLatin1(DriveMap::kInheritedVariable), DriveMap::instance().exportForChildren());
    p.setProcessEnvironment(env);
    p.start(test::binDir() + QStringLiteral("/eject.exe"), { QStringLiteral("1|E:") });
    ASSERT_TRUE(p.waitForFinished(30000));
    const QString out = QString::fromUtf8(p.readAllStandardOutput());
    EXPECT_EQ(p.exitCode(), 0) << out.toStdString();
    EXPECT_TRUE(out.contains(QStringLiteral("Wait ejecting...")));
    EXPECT_TRUE(out.contains(QStringLiteral("Device ejected.")));

    // A letter with no drive behind it: the Spanish failure text.
    p.start(test::binDir() + QStringLiteral("/eject.exe"), { QStringLiteral("0|Q:") });
    ASSERT_TRUE(p.waitForFinished(30000));
    EXPECT_EQ(p.exitCode(), 1);
    EXPECT_TRUE(QString::fromUtf8(p.readAllStandardOutput())
                    .contains(QStringLiteral("¡Error, el dispositivo NO pudo expulsarse correctamente!")));

    p.start(test::binDir() + QStringLiteral("/eject.exe"), { QStringLiteral("nonsense") });
    ASSERT_TRUE(p.waitForFinished(30000));
    EXPECT_EQ(p.exitCode(), 2);
}
