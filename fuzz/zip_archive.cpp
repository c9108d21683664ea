// A zip archive from anywhere: listed, then unpacked into a folder of its own.
#include "FuzzSandbox.h"

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
    zip::ZipArchiver archiver;
    archiver.setArchiveName(QStringLiteral("E:\\in.zip"));
    // Every entry, as the decompress verb asks for.
    archiver.setFilesToProcess(QStringLiteral("*"));
    archiver.listArchive();
    archiver.setExtractFolder(QStringLiteral("E:\\out"));
    archiver.extract();
    return 0;
}
