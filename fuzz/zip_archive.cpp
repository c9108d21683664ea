// A zip archive from anywhere: listed, then unpacked into a folder of its own, and
// restored as a backup would be: each entry back to its own place (only E: is
// here, so every other drive is absent) and side by side into one folder.
#include "FuzzSandbox.h"

#include "backup/ArchiveRestore.h"
#include "components/zip/ZipArchiver.h"

#include <cstdint>

using namespace vmk;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::FuzzSandbox::init();
    fuzz::FuzzSandbox::clearDevice();
    fuzz::FuzzSandbox::writeDeviceFile(
        QStringLiteral("in.zip"), QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    fuzz::FuzzSandbox::writeDeviceFile(QStringLiteral("out/keep.txt"), "ours");
    fuzz::FuzzSandbox::writeDeviceFile(QStringLiteral("alt/keep.txt"), "ours");
    zip::ZipArchiver archiver;
    archiver.setArchiveName(QStringLiteral("E:\\in.zip"));
    // Every entry, as the decompress verb asks for.
    archiver.setFilesToProcess(QStringLiteral("*"));
    archiver.listArchive();
    archiver.setExtractFolder(QStringLiteral("E:\\out"));
    archiver.extract();

    ArchiveRestore restore(archiver);
    QList<RestoreRow> rows;
    if (restore.ListArchive(QStringLiteral("E:\\in.zip"), rows) != 0)
        return 0;
    QStringList keys;
    for (const RestoreRow& row : rows)
        keys << row.key;
    restore.Restore(QStringLiteral("E:\\in.zip"), keys, QStringLiteral("E:\\alt\\"));
    restore.Restore(QStringLiteral("E:\\in.zip"), keys, QString());
    return 0;
}
