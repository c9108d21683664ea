// Times Form1's Timer1 tick on the device given as the first argument: the
// idle tick (figures unchanged: two statvfs calls and a compare) and the tick
// that redraws the pie and the figures.
#include "foundation/Globals.h"
#include "panel/ControlPanel.h"
#include "panel/ui/Form1.h"
#include "platform/DriveMap.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>

#include <cstdio>

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_panel_tick DEVICE_DIR\n");
        return 2;
    }
    vmk::DriveMap& map = vmk::DriveMap::instance();
    map.setProgramFolder(QString::fromLocal8Bit(argv[1]));
    map.setDeviceOverride(QString::fromLocal8Bit(argv[1]));
    vmk::G().ProgramFolder = map.logicalProgramFolder();
    vmk::G().ProgramDrive = vmk::G().ProgramFolder.left(2);
    vmk::panel::ControlPanel panel;
    vmk::panel::Form1 form(panel, {});
    const int rounds = 2000;
    form.Timer1_Timer();
    QElapsedTimer t;
    t.start();
    for (int i = 0; i < rounds; ++i)
        form.Timer1_Timer();
    const double idle = double(t.nsecsElapsed()) / rounds / 1000.0;
    const int redrawRounds = 200;
    t.restart();
    for (int i = 0; i < redrawRounds; ++i) {
        form.label("Lbl_Lib")->setText(QString()); // forces the stale path
        form.Timer1_Timer();
    }
    const double redraw = double(t.nsecsElapsed()) / redrawRounds / 1000.0;
    std::printf("Timer1 tick, figures unchanged: %.1f us\n", idle);
    std::printf("Timer1 tick, pie and figures redrawn: %.1f us\n", redraw);
    std::printf("ratio redraw/unchanged: %.1f\n", redraw / idle);
    return 0;
}
