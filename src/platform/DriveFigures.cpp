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

} // namespace vmk
