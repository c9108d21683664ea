#include "foundation/FileServices.h"

#include "foundation/ForceDelete.h"
#include "foundation/Globals.h"
#include "foundation/Progress.h"
#include "platform/DriveFigures.h"
#include "platform/DriveMap.h"
#include "platform/FileSearch.h"
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
    return !native.isEmpty() && ::stat(QFile::encodeName(native).constData(), &st) == 0;
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

    const QByteArray src = QFile::encodeName(nativeOf(source));
    const QByteArray dst = QFile::encodeName(nativeOf(target));
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

    char block[kCopyBlock];
    qint64 written = 0;
    auto copyBlock = [&](qint64 size) {
        if (readAll(in, block, size) != size || !writeAll(out, block, size))
            return false;
        written += size;
        return true;
    };
    auto step = [&]() {
        ProgressBarF(static_cast<int>(written * 100 / length));
        DoEvents();
        return !G().CancelRequested;
    };

    if (length > kCopyBlock) {
        const qint64 whole = length / kCopyBlock;
        for (qint64 i = 0; i < whole; ++i) {
            if (!copyBlock(kCopyBlock) || !step())
                return failure();
        }
        if (!copyBlock(length % kCopyBlock))
            return failure();
    } else {
        if (!copyBlock(length) || !step())
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
