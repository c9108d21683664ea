// A scan session over a folder, driven offscreen through scanTree as a user would:
// the folder is the device, its root is ticked and Start is pressed. Prints the
// session's wall time, its counters, the rows of the event list and the process's
// peak resident memory.
// Usage: bench_session SIGS_FOLDER CORPUS_FOLDER
#include "components/engine/Engine.h"
#include "components/engine/EngineService.h"
#include "filemanager/FileTreeModel.h"
#include "filemanager/ui/SmartTree.h"
#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "platform/DriveMap.h"
#include "platform/Pump.h"
#include "scanner/ui/scanTree.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QTableView>

#include <cstdio>

using namespace vmk;

namespace
{
// Peak resident set of this process in kB (VmHWM).
long peakKb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').value(0).toLong();
    return -1;
}

QString counter(const scanTree& form, const char* name)
{
    const auto* box = form.findChild<QLineEdit*>(QLatin1String(name));
    return box ? box->text() : QStringLiteral("?");
}

int rows(const scanTree& form, const char* name)
{
    const auto* view = form.findChild<QTableView*>(QLatin1String(name));
    return view && view->model() ? view->model()->rowCount() : -1;
}
} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc < 3) {
        std::fprintf(stderr, "usage: bench_session SIGS_FOLDER CORPUS_FOLDER\n");
        return 2;
    }
    SetPumpHook([] { QCoreApplication::processEvents(); });
    SetMessageAnswerer([](const QString&, int) { return 0; });
    engine::EngineService::instance().setSignatureFolder(QDir(QString::fromLocal8Bit(argv[1])).absolutePath());
    if (const int code = engine::LoadEngine(); code != 0) {
        std::fprintf(stderr, "the engine did not load (%d)\n", code);
        return 2;
    }
    G().EngineLoaded = true;
    DriveMap::instance().setTestDrives({ { u'E', QDir(QString::fromLocal8Bit(argv[2])).canonicalPath() } }, u'E');
    G().ProgramDrive = QStringLiteral("E:");
    G().ScanHost = false;

    scanTree form;
    form.Form_Load();
    form.show();
    FileTreeModel& model = *form.SmartDataTree()->treeModel();
    model.setData(model.indexOf(QStringLiteral("E:\\")), Qt::Checked, Qt::CheckStateRole);

    QElapsedTimer clock;
    clock.start();
    form.Image5_Click();
    const double seconds = clock.nsecsElapsed() / 1e9;

    std::printf("session_seconds %.2f\n", seconds);
    std::printf("scanned %s clean %s not_processed %s infected %s alerts %s\n", qPrintable(counter(form, "txtscantot")),
        qPrintable(counter(form, "TxtNtot")), qPrintable(counter(form, "txtskiptot")),
        qPrintable(counter(form, "txtinfFiles")), qPrintable(counter(form, "txtinftot")));
    std::printf("rows %d threat_rows %d\n", rows(form, "ListView"), rows(form, "ListViewInf"));
    std::printf("peak_kb %ld\n", peakKb());
    engine::UnLoadEngine();
    return 0;
}
