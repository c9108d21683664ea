// Vormak.exe: the program a user starts from the device.
//   Vormak.exe [--device DIR]
// --device names the folder that stands for the device when the program does
// not run from a mounted drive of its own.
#include "components/engine/Engine.h"
#include "foundation/Globals.h"
#include "foundation/StartUp.h"
#include "foundation/ui/MessageForms.h"
#include "foundation/ui/Splash.h"
#include "panel/ControlPanel.h"
#include "panel/ui/Form1.h"
#include "platform/DeviceFonts.h"
#include "platform/DriveMap.h"
#include "platform/Pump.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QFile>
#include <QPixmap>
#include <QTimer>

#include <cstdio>

#include <unistd.h>

namespace
{
// Milliseconds since the kernel started this process (field 22 of /proc/self/stat).
double msSinceProcessStart()
{
    QFile stat(QStringLiteral("/proc/self/stat"));
    QFile uptime(QStringLiteral("/proc/uptime"));
    if (!stat.open(QIODevice::ReadOnly) || !uptime.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray s = stat.readAll();
    const QList<QByteArray> fields = s.mid(s.lastIndexOf(')') + 2).split(' ');
    if (fields.size() < 20)
        return -1;
    const double startTicks = fields[19].toDouble();
    const double up = uptime.readAll().split(' ').value(0).toDouble();
    return (up - startTicks / double(sysconf(_SC_CLK_TCK))) * 1000.0;
}
} // namespace

int main(int argc, char** argv)
{
    vmk::DeviceFonts::useWhenHostHasNone();
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Vormak"));
    QApplication::setQuitOnLastWindowClosed(false);
    Q_INIT_RESOURCE(panel);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Vormak, a portable security suite"));
    parser.addHelpOption();
    QCommandLineOption device(
        QStringLiteral("device"), QStringLiteral("Folder that stands for the device."), QStringLiteral("DIR"));
    parser.addOption(device);
    parser.process(app);

    vmk::SetPumpHook([] { QCoreApplication::processEvents(); });
    vmk::DriveMap& map = vmk::DriveMap::instance();
    map.setProgramFolder(QCoreApplication::applicationDirPath());
    if (parser.isSet(device))
        map.setDeviceOverride(parser.value(device));
    vmk::G().ProgramFolder = map.logicalProgramFolder();
    vmk::InstallMessageForms();

    // VMK_EXIT_WHEN_SHOWN=1 ends the program as soon as the panel is up and
    // prints the time it took, for the start-up benchmark.
    const bool exitWhenShown = qEnvironmentVariableIntValue("VMK_EXIT_WHEN_SHOWN") == 1;
    // VMK_GRAB_DIR=DIR saves pictures of the splash and the panel there, for
    // the documentation.
    const QString grabDir = qEnvironmentVariable("VMK_GRAB_DIR");

    vmk::panel::ControlPanel panel;
    vmk::Splash* splash = nullptr;
    vmk::panel::Form1* form = nullptr;

    vmk::panel::Form1::Hooks formHooks;
    formHooks.removeTrayIcon = [&] { splash->RemoveTrayIcon(); };
    formHooks.hideToTray = [&] {
        if (splash->TrayIcon()) {
            splash->ShowPanelEntry();
            form->hide();
        } else {
            form->showMinimized(); // no tray to come back from
        }
    };
    formHooks.endProgram = [](int code) {
        std::fflush(nullptr);
        QCoreApplication::exit(code);
    };
    form = new vmk::panel::Form1(panel, formHooks);

    vmk::Splash::Hooks splashHooks;
    splashHooks.loadEngine = [] { return int(vmk::engine::LoadEngine()); };
    splashHooks.showPanel = [&] {
        form->show();
        form->Form_Load();
        if (!grabDir.isEmpty())
            QTimer::singleShot(400, [&] { form->grab().save(grabDir + QStringLiteral("/panel.png")); });
        if (exitWhenShown) {
            QTimer::singleShot(0, [] {
                std::printf("panel shown after %.1f ms\n", msSinceProcessStart());
                std::fflush(stdout);
                vmk::engine::UnLoadEngine();
                vmk::ReleaseAutorun();
                QCoreApplication::exit(0);
            });
        }
    };
    splashHooks.exitPanel = [&] { form->Image20_Click(); };
    splashHooks.restorePanel = [&] {
        form->showNormal();
        form->raise();
    };
    splash = new vmk::Splash(QPixmap(QStringLiteral(":/panel/icons/splash.png")),
        QIcon(QStringLiteral(":/panel/icons/vormak.png")), splashHooks);
    splash->show();
    splash->Form_Load();
    if (!grabDir.isEmpty())
        splash->grab().save(grabDir + QStringLiteral("/splash.png"));
    const int code = app.exec();
    delete form;
    delete splash;
    return code;
}
