// CopyFileInBlocks of a large file against cp in the same run. Both copies run
// from a warm page cache, alternately, and the best of the rounds counts.
// Usage: bench_copy [MiB=1024] [rounds=3] [folder=host temp]

#include "foundation/FileServices.h"
#include "platform/DriveMap.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace
{
bool makeSource(const QString& path, qint64 bytes)
{
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly))
        return false;
    QByteArray chunk(1 << 20, '\0');
    for (qsizetype i = 0; i < chunk.size(); ++i)
        chunk[i] = static_cast<char>((i * 31 + 7) & 0xff);
    for (qint64 done = 0; done < bytes; done += chunk.size()) {
        chunk[0] = static_cast<char>(done >> 20); // no two MiB alike
        if (f.write(chunk.constData(), qMin<qint64>(chunk.size(), bytes - done)) < 0)
            return false;
    }
    return f.flush();
}

// The copy counts as done when its data is on the way to the disk, as cp's is.
double timed(const std::function<bool()>& copy, const QString& target)
{
    QFile::remove(target);
    ::sync();
    QElapsedTimer t;
    t.start();
    if (!copy())
        return -1;
    return t.nsecsElapsed() / 1e9;
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const qint64 mib = argc > 1 ? QByteArray(argv[1]).toLongLong() : 1024;
    const int rounds = argc > 2 ? QByteArray(argv[2]).toInt() : 3;
    QTemporaryDir dir(argc > 3 ? QString::fromLocal8Bit(argv[3]) + "/bench-copy-XXXXXX" : QString());
    if (mib <= 0 || rounds <= 0 || !dir.isValid()) {
        std::fprintf(stderr, "usage: bench_copy [MiB] [rounds] [folder]\n");
        return 2;
    }
    const QString root = QDir(dir.path()).canonicalPath();
    vmk::DriveMap::instance().setTestDrives({ { u'C', QStringLiteral("/") }, { u'T', root } }, u'T');
    const QString source = root + "/source.bin";
    const QString target = root + "/target.bin";
    if (!makeSource(source, mib << 20)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(source));
        return 1;
    }
    const double mb = static_cast<double>(mib);
    double bestCp = 1e99, bestOurs = 1e99;
    for (int r = 0; r < rounds; ++r) {
        const double cp = timed([&] { return QProcess::execute("cp", { source, target }) == 0; }, target);
        const double ours = timed(
            [&] { return vmk::CopyFileInBlocks(QStringLiteral("T:\\source.bin"), QStringLiteral("T:\\target.bin")); },
            target);
        if (cp < 0 || ours < 0) {
            std::fprintf(stderr, "a copy failed\n");
            return 1;
        }
        std::printf("round %d: cp %.3f s (%.0f MB/s), CopyFileInBlocks %.3f s (%.0f MB/s)\n", r + 1, cp, mb / cp, ours,
            mb / ours);
        bestCp = qMin(bestCp, cp);
        bestOurs = qMin(bestOurs, ours);
    }
    std::printf("best: cp %.0f MB/s, CopyFileInBlocks %.0f MB/s, ratio %.2f (target >= 0.90)\n", mb / bestCp,
        mb / bestOurs, bestCp / bestOurs);
    return 0;
}
