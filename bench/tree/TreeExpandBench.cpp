// Time to open a folder of N files (default 100,000) in the tree widget every form
// uses: from the click on the expand mark to the rows painted. Prints each run and
// the median against the target of 0.5 s, and the folder listing alone for scale.
// Usage: bench_tree_expand FOLDER [FILES] [RUNS]   (the folder is filled when empty)
#include "filemanager/FileTreeModel.h"
#include "filemanager/ui/SmartTree.h"
#include "foundation/Globals.h"
#include "platform/DriveMap.h"
#include "platform/FileSearch.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <ctime>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

using namespace vmk;

namespace
{
// CPU time of the process (user and system), which a loaded machine does not inflate
// the way it does the wall clock.
double cpuMs()
{
    timespec ts {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return ts.tv_sec * 1e3 + ts.tv_nsec / 1e6;
}
} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_tree_expand FOLDER [FILES] [RUNS]\n");
        return 2;
    }
    const QString root = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    const int files = argc > 2 ? std::atoi(argv[2]) : 100000;
    const int runs = argc > 3 ? std::atoi(argv[3]) : 5;
    const QString big = root + QStringLiteral("/big");
    QDir().mkpath(big);
    if (QDir(big).isEmpty()) {
        for (int i = 0; i < files; ++i) {
            const QByteArray name
                = QFile::encodeName(big + QStringLiteral("/file%1.txt").arg(i, 6, 10, QLatin1Char('0')));
            const int fd = ::open(name.constData(), O_CREAT | O_WRONLY, 0644);
            if (fd < 0) {
                std::perror("open");
                return 1;
            }
            ::close(fd);
        }
    }
    DriveMap::instance().setTestDrives({ { u'C', QStringLiteral("/") }, { u'T', root } }, u'T');
    G().ProgramDrive = QStringLiteral("T:");

    std::vector<double> expand;
    std::vector<double> expandCpu;
    std::vector<double> listing;
    std::vector<double> listingCpu;
    int rows = 0;
    for (int r = 0; r < runs; ++r) {
        QElapsedTimer t;
        t.start();
        const double listCpu0 = cpuMs();
        const int listed = static_cast<int>(FileSearch::list(QStringLiteral("T:\\big\\")).size());
        listing.push_back(t.nsecsElapsed() / 1e6);
        listingCpu.push_back(cpuMs() - listCpu0);

        SmartTree tree(TreeOptions::frmDataTreeDevice());
        tree.resize(400, 600);
        tree.show();
        // The device root is T: here, the bench's folder.
        tree.FillRoots();
        app.processEvents();
        const QModelIndex folder = tree.treeModel()->indexOf(QStringLiteral("T:\\big\\"));
        t.restart();
        const double cpu0 = cpuMs();
        tree.expand(folder); // what a click on the expand mark does
        tree.viewport()->repaint();
        app.processEvents();
        expand.push_back(t.nsecsElapsed() / 1e6);
        expandCpu.push_back(cpuMs() - cpu0);
        rows = tree.treeModel()->rowCount(folder);
        std::printf("run %d: open %.1f ms (cpu %.1f ms, %d rows); listing alone %.1f ms (%d entries)\n", r + 1,
            expand.back(), expandCpu.back(), rows, listing.back(), listed);
    }
    std::sort(expand.begin(), expand.end());
    std::sort(listing.begin(), listing.end());
    std::sort(expandCpu.begin(), expandCpu.end());
    std::sort(listingCpu.begin(), listingCpu.end());
    const double median = expand[expand.size() / 2];
    std::printf(
        "open a folder of %d files: median %.1f ms over %d runs (min %.1f, max %.1f); listing alone median %.1f ms\n",
        rows, median, runs, expand.front(), expand.back(), listing[listing.size() / 2]);
    std::printf("cpu time of one open: median %.1f ms (min %.1f), of which the folder listing (FileSearch) %.1f ms\n",
        expandCpu[expandCpu.size() / 2], expandCpu.front(), listingCpu[listingCpu.size() / 2]);
    std::printf("ratio to the 500 ms target: %.2f (below 1 meets it)\n", median / 500.0);
    DriveMap::instance().resetToHost();
    return rows == files ? 0 : 1;
}
