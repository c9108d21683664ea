#include "foundation/FileServices.h"

#include "foundation/ForceDelete.h"
#include "foundation/Globals.h"
#include "foundation/Progress.h"
#include "platform/DriveFigures.h"
#include "platform/DriveMap.h"
#include "platform/FileRemoval.h"
#include "platform/FileSearch.h"
#include "platform/NativeFile.h"
#include "platform/Pump.h"
#include "platform/RunAndWait.h"
#include "platform/SpecialFolders.h"

#include <QDir>

#include <optional>

namespace vmk
{
namespace
{
QString nativeOf(const QString& path)
{
    return DriveMap::instance().toNative(path);
}

std::optional<DriveSpace> spaceOf(const QString& path)
{
    const QString native = path.isEmpty() ? QDir::currentPath() : nativeOf(path);
    return DriveFigures::ofNative(native);
}

// KB from bytes, MB from KB: the finer figure divided by 1024, fraction cut off.
QString coarser(const QString& finer)
{
    bool ok = false;
    const quint64 v = finer.toULongLong(&ok);
    if (!ok)
        return {};
    return QString::number(v == 0 ? 0 : v / 1024);
}

} // namespace

bool FileExists(const QString& path)
{
    return NativeFile::exists(nativeOf(path));
}

bool FolderMissing(const QString& path)
{
    const quint32 a = FileSearch::attributesOf(path);
    if (a == AttrInvalid)
        return true;
    return (a & AttrDirectory) == 0;
}

QString SpecialFolderPath(int id)
{
    QString native;
    switch (id) {
    case 0:
        native = SpecialFolders::desktop();
        break;
    case 2:
        native = SpecialFolders::programs();
        break;
    case 5:
        native = SpecialFolders::documents();
        break;
    default:
        return {};
    }
    return DriveMap::instance().toLogical(native);
}

bool HasDiskFreeSpaceEx()
{
    // statvfs reports 64-bit figures everywhere: the fallback of 32-bit cluster
    // arithmetic is never needed.
    return true;
}

QString DriveFreeBytes(const QString& path)
{
    const auto s = spaceOf(path);
    return s ? QString::number(s->freeBytes) : QString();
}

QString DriveTotalBytes(const QString& path)
{
    const auto s = spaceOf(path);
    return s ? QString::number(s->totalBytes) : QString();
}

QString DriveFreeKB(const QString& path)
{
    return coarser(DriveFreeBytes(path));
}

QString DriveTotalKB(const QString& path)
{
    return coarser(DriveTotalBytes(path));
}

QString DriveFreeMB(const QString& path)
{
    return coarser(DriveFreeKB(path));
}

QString DriveTotalMB(const QString& path)
{
    return coarser(DriveTotalKB(path));
}

bool RunAndWait(const QString& command)
{
    return platform::RunAndWait(command).started;
}

bool CopyFileInBlocks(const QString& source, const QString& target)
{
    // A host path ("/...") passes as it is, so a caller that holds the exact host
    // names (the transfer) copies without resolving each path again.
    const QString src = source.startsWith(u'/') ? source : nativeOf(source);
    const QString dst = target.startsWith(u'/') ? target : nativeOf(target);
    if (FileRemoval::entryExists(dst))
        ForceDelete(target);

    NativeFile in;
    NativeFile out;
    auto failure = [&]() {
        in.close();
        out.close();
        ForceDelete(target);
        return false;
    };

    // A missing source counts as an empty one: nothing is copied.
    const qint64 length = NativeFile::regularFileSize(src);
    if (length <= 0 || !in.openForReading(src))
        return failure();
    if (!out.createForWriting(dst))
        return failure();

    // The block is the grain of progress and cancel; the data itself moves in
    // transfers of 1600 blocks (16 MB) so that the copy runs at the disk's pace. A
    // cancel still fails the copy at the next block, and the failure exit removes
    // whatever the target holds by then.
    constexpr qint64 kTransfer = kCopyBlock * 1600;
    qint64 transferred = 0;
    auto ensure = [&](qint64 upTo) {
        while (transferred < upTo) {
            const qint64 size = qMin(length - transferred, kTransfer);
            if (!out.copyFrom(in, size))
                return false;
            transferred += size;
        }
        return true;
    };
    auto step = [&](qint64 copied) {
        ProgressBarF(static_cast<int>(copied * 100 / length));
        DoEvents();
        return !G().CancelRequested;
    };

    if (length > kCopyBlock) {
        const qint64 whole = length / kCopyBlock;
        for (qint64 i = 1; i <= whole; ++i) {
            if (!ensure(i * kCopyBlock) || !step(i * kCopyBlock))
                return failure();
        }
        if (!ensure(length))
            return failure();
    } else {
        if (!ensure(length) || !step(length))
            return failure();
    }
    if (!out.close())
        return failure();
    in.close();
    return true;
}

} // namespace vmk
