#pragma once

#include <QString>

#include <optional>

namespace vmk
{

// Quick questions about one native folder or file that stop as early as they can:
// a tree asks them once per listed folder to decide its expand mark, so they must
// not walk a folder of a hundred thousand entries to the end.
class FolderProbe
{
public:
    // True when the folder holds anything but "." and ".."; false when it is no folder.
    static bool hasEntries(const QString& nativeFolder);
    // True when the folder holds at least one folder (a link to a folder counts).
    static bool hasSubfolders(const QString& nativeFolder);
    // Length of a regular file; nothing for a folder, a device or a missing path.
    static std::optional<qint64> fileLength(const QString& nativePath);
};

} // namespace vmk
