#include "platform/DriveFigures.h"

#include <QFile>

#include <sys/statvfs.h>

namespace vmk
{

std::optional<DriveSpace> DriveFigures::ofNative(const QString& nativePath)
{
    if (nativePath.isEmpty())
        return std::nullopt;
    struct statvfs vfs;
    if (::statvfs(QFile::encodeName(nativePath).constData(), &vfs) != 0)
        return std::nullopt;
    DriveSpace s;
    s.freeBytes = static_cast<quint64>(vfs.f_bavail) * vfs.f_frsize;
    s.totalBytes = static_cast<quint64>(vfs.f_blocks) * vfs.f_frsize;
    return s;
}

bool DriveFigures::wasFull(const QString& nativePath, qint64 bytes)
{
    // The file's own buffer may hold more than the failed write: allow for it.
    constexpr qint64 kBufferSlack = 64 * 1024;
    const auto space = ofNative(nativePath);
    return space && space->freeBytes < static_cast<quint64>(qMax<qint64>(bytes, 0) + kBufferSlack);
}

} // namespace vmk
