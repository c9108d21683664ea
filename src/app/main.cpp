// Vormak.exe: the program a user starts from the device.
//   Vormak.exe [--device DIR]
// --device names the folder that stands for the device when the program does
// not run from a mounted drive of its own.
#include "EnvironmentHooks.h"
#include "ProgramWindows.h"
#include "SingleInstance.h"

#include "foundation/Globals.h"
#include "foundation/StartUp.h"
#include "foundation/ui/MessageForms.h"
#include "platform/DeviceFonts.h"
#include "platform/DriveMap.h"
#include "platform/Pump.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>

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

    // One program per device: a second start brings the first one's panel forward.
    const auto root = map.device();
    vmk::SingleInstance instance(root ? root->root : QCoreApplication::applicationDirPath());
    if (!instance.claim()) {
        if (!instance.activateRunning())
            std::fprintf(stderr, "Vormak: already running on this device, and it did not answer\n");
        return 0;
    }

    vmk::InstallMessageForms();
    vmk::ProgramWindows windows(vmk::EnvironmentHooks::fromEnvironment());
    instance.setActivation([&windows] { windows.bringToFront(); });
    windows.start();
    const int code = app.exec();
    // However the loop ended, the autorun file gets its own mode back.
    vmk::ReleaseAutorun();
    return code;
}
