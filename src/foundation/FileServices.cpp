#include "foundation/FileServices.h"

#include "foundation/ForceDelete.h"
#include "foundation/Globals.h"
#include "foundation/Progress.h"
#include "platform/DriveFigures.h"
#include "platform/DriveMap.h"
#include "platform/FileSearch.h"
#include "platform/NativeName.h"
#include "platform/Pump.h"
#include "platform/RunAndWait.h"
#include "platform/SpecialFolders.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <vector>

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

// A whole write, retried over short writes and signals.
bool writeAll(int fd, const char* data, qint64 size)
{
    while (size > 0) {
        const ssize_t n = ::write(fd, data, static_cast<size_t>(size));
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        data += n;
        size -= n;
    }
    return true;
}

qint64 readAll(int fd, char* data, qint64 size)
{
    qint64 got = 0;
    while (got < size) {
        const ssize_t n = ::read(fd, data + got, static_cast<size_t>(size - got));
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return -1;
        }
        if (n == 0)
            break;
        got += n;
    }
    return got;
}
} // namespace

bool FileExists(const QString& path)
{
    const QString native = nativeOf(path);
    struct stat st;
    return !native.isEmpty() && ::stat(NativeName::toBytes(native).constData(), &st) == 0;
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
    if (FileExists(target))
        ForceDelete(target);

    // By the names' real bytes: a Latin-1 name from an old stick copies like any other.
    const QByteArray src = NativeName::toBytes(nativeOf(source));
    const QByteArray dst = NativeName::toBytes(nativeOf(target));
    int in = -1;
    int out = -1;
    auto failure = [&]() {
        if (in >= 0)
            ::close(in);
        if (out >= 0)
            ::close(out);
        ForceDelete(target);
        return false;
    };

    // A missing source counts as an empty one: nothing is copied.
    struct stat st;
    if (src.isEmpty() || ::stat(src.constData(), &st) != 0 || !S_ISREG(st.st_mode) || st.st_size == 0)
        return failure();
    in = ::open(src.constData(), O_RDONLY | O_CLOEXEC);
    if (in < 0)
        return failure();
    const qint64 length = st.st_size;
    if (dst.isEmpty())
        return failure();
    out = ::open(dst.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (out < 0)
        return failure();
    ::posix_fadvise(in, 0, 0, POSIX_FADV_SEQUENTIAL);

    // The block is the grain of progress and cancel; the data itself moves in
    // transfers of 1600 blocks (16 MB) so that the copy runs at the disk's pace. A
    // cancel still fails the copy at the next block, and the failure exit removes
    // whatever the target holds by then.
    constexpr qint64 kTransfer = kCopyBlock * 1600;
    std::vector<char> buffer;
    bool inKernel = true; // copy_file_range: no copy through user memory
    auto copyBytes = [&](qint64 size) {
        qint64 done = 0;
        while (inKernel && done < size) {
            const ssize_t n = ::copy_file_range(in, nullptr, out, nullptr, static_cast<size_t>(size - done), 0);
            if (n > 0)
                done += n;
            else if (n < 0 && errno == EINTR)
                continue;
            else if (n == 0 || done > 0)
                return false; // the source shrank meanwhile, or the target failed midway
            else
                inKernel = false; // EXDEV, ENOSYS, EINVAL...: this pair of files needs read and write
        }
        if (done == size)
            return true;
        constexpr qint64 kPiece = kCopyBlock * 100;
        buffer.resize(static_cast<size_t>(kPiece));
        while (done < size) {
            const qint64 piece = qMin(size - done, kPiece);
            if (readAll(in, buffer.data(), piece) != piece || !writeAll(out, buffer.data(), piece))
                return false;
            done += piece;
        }
        return true;
    };
    qint64 transferred = 0;
    auto ensure = [&](qint64 upTo) {
        while (transferred < upTo) {
            const qint64 size = qMin(length - transferred, kTransfer);
            if (!copyBytes(size))
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
    if (::close(out) != 0) {
        out = -1;
        return failure();
    }
    ::close(in);
    return true;
}

} // namespace vmk
