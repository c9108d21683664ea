// bench_zip_tree FOLDER ARCHIVE: the whole tree below FOLDER into ARCHIVE with
// deflate level 9, paths kept, as a backup run builds its archive.
#include "components/zip/ZipArchiver.h"
#include "components/zip/ZipCodes.h"
#include "platform/DriveMap.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: bench_zip_tree FOLDER ARCHIVE\n");
        return 2;
    }
    auto& map = vmk::DriveMap::instance();
    vmk::zip::ZipArchiver zip;
    zip.setArchiveName(map.toLogical(QFileInfo(QString::fromLocal8Bit(argv[2])).absoluteFilePath()));
    zip.setFilesToProcess(map.toLogical(QFileInfo(QString::fromLocal8Bit(argv[1])).absoluteFilePath()) + "\\*<r>");
    zip.setCompressionMethod(vmk::zip::MethodDeflate);
    zip.setCompressionLevel(9);
    zip.setPreservePaths(true);
    int skipped = 0;
    zip.events().skippingFile = [&](const QString&, int) { ++skipped; };
    const int result = zip.compress();
    if (result != 0) {
        std::fprintf(stderr, "bench_zip_tree: compress failed (%d)\n", result);
        return 1;
    }
    if (skipped)
        std::fprintf(stderr, "bench_zip_tree: %d files skipped\n", skipped);
    return 0;
}
