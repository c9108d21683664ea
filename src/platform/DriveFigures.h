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
};

} // namespace vmk
