// Time to resolve upper-cased paths (what the memory scan hands the namespace) in
// one large folder, by DriveMap::toNative's case-insensitive fallback.
// Usage: bench_resolve [FOLDER] [PATHS]   (default /usr/lib/x86_64-linux-gnu, 500)
#include "platform/DriveMap.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <cstdio>
#include <cstdlib>

using namespace vmk;

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QString folder
        = QDir(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("/usr/lib/x86_64-linux-gnu")).absolutePath();
    const int wanted = argc > 2 ? std::atoi(argv[2]) : 500;
    DriveMap::instance().setTestDrives({ { u'C', QStringLiteral("/") } }, u'C');
    const QStringList names = QDir(folder).entryList(QDir::Files);
    QStringList paths;
    for (qsizetype i = 0; i < names.size() && paths.size() < wanted; ++i)
        paths << DriveMap::instance().toLogical(folder + u'/' + names[i]).toUpper();
    QElapsedTimer t;
    t.start();
    int found = 0;
    for (const QString& p : paths)
        found += QFile::exists(DriveMap::instance().toNative(p)) ? 1 : 0;
    const double ms = t.nsecsElapsed() / 1e6;
    std::printf("%lld upper-cased paths in a folder of %lld files: %d found, %.1f ms, %.3f ms a path\n",
        static_cast<long long>(paths.size()), static_cast<long long>(names.size()), found, ms,
        paths.isEmpty() ? 0.0 : ms / paths.size());
    return found == paths.size() ? 0 : 1;
}
