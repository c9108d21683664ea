#include "DeviceFixture.h"

#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "foundation/StartUp.h"
#include "foundation/ui/Splash.h"
#include "platform/DriveMap.h"

#include "TestSupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

using namespace vmk;

class StartUpTest : public test::DeviceFixture
{
protected:
    void SetUp() override
    {
        DeviceFixture::SetUp();
        // The per-user system folder lives under the XDG data home: a temporary one here.
        m_dataHome = m_host.filePath(QStringLiteral("data"));
        qputenv("XDG_DATA_HOME", m_dataHome.toUtf8());
        G().SystemFolder.clear();
    }
    void TearDown() override
    {
        ReleaseAutorun();
        qunsetenv("XDG_DATA_HOME");
        DeviceFixture::TearDown();
    }
    QString m_dataHome;
};

TEST_F(StartUpTest, LanguageFromLanguageCnf)
{
    SettleLanguage();
    EXPECT_EQ(G().LanguageIndex, 0); // no file: Spanish
    const QString cnf = m_programFolder + QStringLiteral("\\Language.cnf");
    put(cnf, "[English]\r\nignored\r\n");
    SettleLanguage();
    EXPECT_EQ(G().LanguageIndex, 1);
    put(cnf, "[Chinesse]\r\n");
    SettleLanguage();
    EXPECT_EQ(G().LanguageIndex, 6);
    // The ordinary spelling is not one of the seven names.
    G().LanguageIndex = 0;
    put(cnf, "[Deutsch]\r\n");
    SettleLanguage();
    EXPECT_EQ(G().LanguageIndex, 0);
    put(cnf, "[Duetsch]\r\n");
    SettleLanguage();
    EXPECT_EQ(G().LanguageIndex, 2);
}

TEST_F(StartUpTest, ComponentsAreCopiedOnceAndEjectEveryTime)
{
    put(m_programFolder + QStringLiteral("\\xceedzip.dll"), "zip component");
    put(m_programFolder + QStringLiteral("\\MSCOMCT2.OCX"), "controls");
    putScript(m_programFolder + QStringLiteral("\\eject.exe"), "exit 0");
    SetUpComponents();
    ASSERT_FALSE(G().SystemFolder.isEmpty());
    EXPECT_FALSE(G().SystemFolder.endsWith(QLatin1Char('\\')));
    const QString sys = native(G().SystemFolder);
    EXPECT_TRUE(sys.startsWith(m_dataHome)) << sys.toStdString();
    EXPECT_EQ(test::readFile(sys + QStringLiteral("/xceedzip.dll")), QByteArray("zip component"));
    EXPECT_TRUE(ComponentRegistered(QStringLiteral("xceedzip.dll")));
    EXPECT_TRUE(ComponentRegistered(QStringLiteral("MSCOMCT2.OCX")));
    EXPECT_FALSE(ComponentRegistered(QStringLiteral("xceedcry.dll"))); // absent from the device
    EXPECT_FALSE(QFileInfo::exists(sys + QStringLiteral("/xceedcry.dll")));
    EXPECT_TRUE(QFileInfo(sys + QStringLiteral("/eject.exe")).isExecutable());

    // Second start: a component that is there is left alone, eject.exe is refreshed.
    put(m_programFolder + QStringLiteral("\\xceedzip.dll"), "newer zip component");
    putScript(m_programFolder + QStringLiteral("\\eject.exe"), "exit 3");
    SetUpComponents();
    EXPECT_EQ(test::readFile(sys + QStringLiteral("/xceedzip.dll")), QByteArray("zip component"));
    EXPECT_TRUE(test::readFile(sys + QStringLiteral("/eject.exe")).contains("exit 3"));
    EXPECT_TRUE(QFileInfo(sys + QStringLiteral("/eject.exe")).isExecutable());
}

TEST_F(StartUpTest, EjectRuntimeIsCopiedOnceAndRefreshedWhenChanged)
{
    putScript(m_programFolder + QStringLiteral("\\eject.exe"), "exit 0");
    put(m_programFolder + QStringLiteral("\\lib\\libQt6Core.so.6"), "core library");
    put(m_programFolder + QStringLiteral("\\plugins\\platforms\\libqxcb.so"), "xcb plugin");
    put(m_programFolder + QStringLiteral("\\qt.conf"), "[Paths]\r\n");
    put(m_programFolder + QStringLiteral("\\outside.txt"), "not the helper's");
    // A damaged list: lines that would leave the system folder, a missing file,
    // CR LF ends and a blank line are passed over.
    put(m_programFolder + QStringLiteral("\\lib\\eject.list"),
        "lib/libQt6Core.so.6\r\nplugins/platforms/libqxcb.so\n\nqt.conf\n../outside.txt\n/etc/passwd\n"
        "lib/../../outside.txt\nlib\\..\\outside.txt\nC:/outside.txt\nlib/absent.so\n");
    SetUpComponents();
    const QString sys = native(G().SystemFolder);
    const QString core = sys + QStringLiteral("/lib/libQt6Core.so.6");
    EXPECT_EQ(test::readFile(core), QByteArray("core library"));
    EXPECT_EQ(test::readFile(sys + QStringLiteral("/plugins/platforms/libqxcb.so")), QByteArray("xcb plugin"));
    EXPECT_EQ(test::readFile(sys + QStringLiteral("/qt.conf")), QByteArray("[Paths]\r\n"));
    EXPECT_FALSE(QFileInfo::exists(sys + QStringLiteral("/lib/absent.so")));
    EXPECT_FALSE(QFileInfo::exists(sys + QStringLiteral("/outside.txt")));
    EXPECT_FALSE(QFileInfo::exists(QFileInfo(sys).absolutePath() + QStringLiteral("/outside.txt")));
    EXPECT_FALSE(QFileInfo::exists(m_dataHome + QStringLiteral("/outside.txt")));
    const QFileInfo source(native(m_programFolder + QStringLiteral("\\lib\\libQt6Core.so.6")));
    EXPECT_EQ(QFileInfo(core).lastModified(), source.lastModified());

    // Second start: an unchanged file (same size and time) is not copied again.
    {
        QFile f(core);
        ASSERT_TRUE(f.open(QIODevice::ReadWrite));
        f.write("CORE LIBRARY");
        f.flush();
        f.setFileTime(source.lastModified(), QFileDevice::FileModificationTime);
    }
    SetUpComponents();
    EXPECT_EQ(test::readFile(core), QByteArray("CORE LIBRARY"));

    // A changed library on the device is copied over the old one.
    put(m_programFolder + QStringLiteral("\\lib\\libQt6Core.so.6"), "newer core library");
    SetUpComponents();
    EXPECT_EQ(test::readFile(core), QByteArray("newer core library"));
}

TEST_F(StartUpTest, DriveAutorunGuardAndEngineMessage)
{
    G().ProgramDrive.clear();
    SettleProgramDrive();
    EXPECT_EQ(G().ProgramDrive, QStringLiteral("E:"));

    EXPECT_FALSE(GuardAutorun()); // nothing to guard
    const QString autorun = put(QStringLiteral("E:\\AUTORUN.inf"), "[autorun]\r\n");
    ASSERT_TRUE(GuardAutorun());
    QFile writer(autorun);
    if (::getuid() != 0) { // root writes whatever the permissions say
        EXPECT_FALSE(writer.open(QIODevice::WriteOnly | QIODevice::Append));
    }
    EXPECT_FALSE(QFile::permissions(autorun) & QFileDevice::WriteOwner);
    ReleaseAutorun();
    EXPECT_TRUE(QFile::permissions(autorun) & QFileDevice::WriteOwner);

    test::MessageRecorder messages;
    G().LanguageIndex = 1;
    StartEngine([] { return 0; });
    EXPECT_TRUE(G().EngineLoaded);
    EXPECT_EQ(QDir::currentPath(), QDir(native(m_programFolder)).canonicalPath());
    StartEngine([] { return 7; });
    EXPECT_FALSE(G().EngineLoaded);
    // The message stays Spanish whatever the language.
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_EQ(messages.texts[0], QStringLiteral("Error iniciando servicio! (7)"));
}

TEST_F(StartUpTest, SplashRunsTheSequenceAndHandsOverToThePanel)
{
    put(m_programFolder + QStringLiteral("\\Language.cnf"), "[English]\r\n");
    put(QStringLiteral("E:\\AUTORUN.inf"), "[autorun]\r\n");
    test::MessageRecorder messages;
    bool panelShown = false;
    int loads = 0;
    Splash::Hooks hooks;
    hooks.loadEngine = [&] {
        ++loads;
        return 0;
    };
    hooks.showPanel = [&] { panelShown = true; };
    Splash splash(QPixmap(), QIcon(), hooks);
    splash.show();
    splash.Form_Load();
    EXPECT_EQ(G().LanguageIndex, 1);
    EXPECT_EQ(G().ProgramDrive, QStringLiteral("E:"));
    EXPECT_TRUE(AutorunGuarded());
    EXPECT_TRUE(splash.TimerLoader()->isActive());
    EXPECT_FALSE(panelShown);
    for (int i = 0; i < 100 && !panelShown; ++i) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(10);
    }
    ASSERT_TRUE(panelShown);
    EXPECT_FALSE(splash.TimerLoader()->isActive());
    EXPECT_EQ(loads, 1);
    EXPECT_TRUE(G().EngineLoaded);
    EXPECT_FALSE(splash.isVisible());
    // VMK.cnf was missing: the defaults were written and read.
    EXPECT_TRUE(QFileInfo::exists(native(m_programFolder + QStringLiteral("\\VMK.cnf"))));
    EXPECT_FALSE(S().QuarenteneFolder.isEmpty());
    ASSERT_EQ(splash.Captions().size(), 3);
    EXPECT_EQ(splash.Captions()[0], QStringLiteral("Registering components"));
    EXPECT_EQ(splash.Captions()[1], QStringLiteral("Reading configuration"));
    // No tray offscreen: the program starts without one.
    EXPECT_FALSE(splash.HasTray());
    EXPECT_EQ(splash.TrayIcon(), nullptr);
    // Closing the splash only hides it.
    splash.show();
    splash.close();
    EXPECT_FALSE(splash.isVisible());
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join(QLatin1Char('|')).toStdString();
}

namespace
{
// A device folder holding the program, its helpers, the signatures, an autorun
// file and the folders of the default settings.
void layOutDevice(const QString& device)
{
    const QString bin = test::binDir();
    for (const char* f : { "Vormak.exe", "eject.exe" }) {
        const QString name = QString::fromLatin1(f);
        ASSERT_TRUE(QFile::copy(bin + QLatin1Char('/') + name, device + QLatin1Char('/') + name));
        QFile::setPermissions(device + QLatin1Char('/') + name, QFile::permissions(bin + QLatin1Char('/') + name));
    }
    QDir().mkpath(device + QStringLiteral("/sigs"));
    QFile::copy(bin + QStringLiteral("/sigs/vormak.cud"), device + QStringLiteral("/sigs/vormak.cud"));
    test::writeFile(device + QStringLiteral("/AUTORUN.inf"), "[autorun]\r\n");
    for (const char* d :
        { "Mis Documentos/Cuarentena", "Mis Documentos/Respaldos", "Documentos Comprimidos", "Documentos Encriptados" })
        QDir().mkpath(device + QLatin1Char('/') + QString::fromLatin1(d));
}

// Vormak.exe of `device`, offscreen, with its per-user folders in `data`.
void startProgram(
    QProcess& p, const QString& device, const QString& data, bool exitWhenShown, const QString& grabDir = QString())
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("XDG_DATA_HOME"), data);
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), data);
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), data + QStringLiteral("/run"));
    env.remove(QStringLiteral("VMK_EXIT_WHEN_SHOWN"));
    env.remove(QStringLiteral("VMK_GRAB_DIR"));
    if (exitWhenShown)
        env.insert(QStringLiteral("VMK_EXIT_WHEN_SHOWN"), QStringLiteral("1"));
    if (!grabDir.isEmpty())
        env.insert(QStringLiteral("VMK_GRAB_DIR"), grabDir);
    env.remove(QString::fromLatin1(DriveMap::kInheritedVariable));
    p.setProcessEnvironment(env);
    p.setWorkingDirectory(device);
    p.start(device + QStringLiteral("/Vormak.exe"), { QStringLiteral("--device"), device });
}
} // namespace

TEST(ProgramStart, VormakExeReachesThePanelOnADeviceFolder)
{
    QTemporaryDir device, data;
    layOutDevice(device.path());
    QProcess p;
    startProgram(p, device.path(), data.path(), true);
    ASSERT_TRUE(p.waitForFinished(60000));
    const QString out = QString::fromUtf8(p.readAllStandardOutput());
    EXPECT_EQ(p.exitCode(), 0) << out.toStdString() << p.readAllStandardError().toStdString();
    EXPECT_TRUE(out.contains(QStringLiteral("panel shown after"))) << out.toStdString();
    // Settings written on the first start, eject.exe installed in the system folder,
    // the autorun file writable again once the program is gone.
    EXPECT_TRUE(QFileInfo::exists(device.filePath(QStringLiteral("VMK.cnf"))));
    EXPECT_TRUE(QFileInfo(data.filePath(QStringLiteral("Vormak/system/eject.exe"))).isExecutable());
    EXPECT_TRUE(QFile::permissions(device.filePath(QStringLiteral("AUTORUN.inf"))) & QFileDevice::WriteOwner);
}

// The "user" permission bits say what this process may do, which for root is everything.
constexpr QFileDevice::Permissions kUserBits = QFileDevice::ReadUser | QFileDevice::WriteUser | QFileDevice::ExeUser;

TEST(ProgramStart, OneProgramPerDeviceAndAKilledRunBlocksNothing)
{
    QTemporaryDir first, second, data, grab;
    layOutDevice(first.path());
    layOutDevice(second.path());
    QDir().mkpath(data.filePath(QStringLiteral("run")));
    QFile::setPermissions(
        data.filePath(QStringLiteral("run")), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    const QString autorun = first.filePath(QStringLiteral("AUTORUN.inf"));
    const auto ownMode = QFileDevice::ReadOwner | QFileDevice::ReadUser | QFileDevice::WriteOwner
        | QFileDevice::WriteUser | QFileDevice::ReadGroup;
    ASSERT_TRUE(QFile::setPermissions(autorun, ownMode));

    // The first start stays up; its panel picture says when it is shown.
    QProcess running;
    startProgram(running, first.path(), data.path(), false, grab.path());
    struct Stop {
        QProcess& p;
        ~Stop()
        {
            p.kill();
            p.waitForFinished(10000);
        }
    } stop { running };
    ASSERT_TRUE(running.waitForStarted(30000));
    const QString picture = grab.filePath(QStringLiteral("panel.png"));
    for (int i = 0; i < 600 && !QFileInfo::exists(picture) && running.state() == QProcess::Running; ++i)
        running.waitForFinished(100);
    ASSERT_TRUE(QFileInfo::exists(picture)) << running.readAllStandardError().toStdString();
    EXPECT_FALSE(QFile::permissions(autorun) & QFileDevice::WriteOwner); // guarded

    // A second start on the same device ends at once, without a panel of its own,
    // and the running program is told to bring its panel forward.
    QProcess again;
    startProgram(again, first.path(), data.path(), true);
    ASSERT_TRUE(again.waitForFinished(30000));
    EXPECT_EQ(again.exitCode(), 0);
    EXPECT_FALSE(again.readAllStandardOutput().contains("panel shown")) << again.readAllStandardError().toStdString();
    QByteArray told;
    for (int i = 0; i < 100 && !told.contains("brought the panel to the front"); ++i) {
        running.waitForReadyRead(100);
        told += running.readAllStandardError();
    }
    EXPECT_TRUE(told.contains("brought the panel to the front")) << told.toStdString();
    EXPECT_EQ(running.state(), QProcess::Running);

    // Another device starts while the first runs.
    QProcess other;
    startProgram(other, second.path(), data.path(), true);
    ASSERT_TRUE(other.waitForFinished(60000));
    EXPECT_EQ(other.exitCode(), 0);
    EXPECT_TRUE(other.readAllStandardOutput().contains("panel shown after"))
        << other.readAllStandardError().toStdString();

    // The first run is killed: its lock, its socket and the read-only autorun
    // file stay behind. The next start is not blocked, and gives the file its
    // own mode back rather than keeping the read-only one it finds.
    running.kill();
    ASSERT_TRUE(running.waitForFinished(10000));
    EXPECT_FALSE(QFile::permissions(autorun) & QFileDevice::WriteOwner);
    QProcess next;
    startProgram(next, first.path(), data.path(), true);
    ASSERT_TRUE(next.waitForFinished(60000));
    EXPECT_EQ(next.exitCode(), 0);
    EXPECT_TRUE(next.readAllStandardOutput().contains("panel shown after"))
        << next.readAllStandardError().toStdString();
    EXPECT_EQ(QFile::permissions(autorun) & ~kUserBits, ownMode & ~kUserBits);
    EXPECT_FALSE(QFileInfo::exists(first.filePath(QStringLiteral("VMK/AUTORUN.mode"))));
}
