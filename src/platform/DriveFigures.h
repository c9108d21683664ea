#pragma once

#include <QString>

#include <optional>

namespace vmk
{

struct DriveSpace {
    quint64 freeBytes = 0; // free to the calling user
    quint64 totalBytes = 0;
};

// Space of the filesystem that holds a native path (statvfs).
class DriveFigures
{
public:
    static std::optional<DriveSpace> ofNative(const QString& nativePath);
    // After a write of `bytes` under nativePath failed: true when its filesystem
    // has less room than that, so the failure was a full disk. (Qt reports a
    // write cut short by a full disk as a plain write error.)
    static bool wasFull(const QString& nativePath, qint64 bytes);
};

} // namespace vmk
