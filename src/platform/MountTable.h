#pragma once

#include <QList>
#include <QString>

namespace vmk
{

// One line of /proc/self/mountinfo.
struct MountEntry {
    QString mountPoint; // native path, escapes decoded
    QString fsType;
    QString source; // e.g. /dev/sdb1
    QString majorMinor; // e.g. "8:17"
};

// The host's mounts as the kernel reports them for this process.
class MountTable
{
public:
    // Reads the table; a file can be given for tests. Empty list when unreadable.
    static QList<MountEntry> read(const QString& file = QStringLiteral("/proc/self/mountinfo"));
    // Parses one mountinfo line; false when the line is malformed.
    static bool parseLine(const QString& line, MountEntry& entry);
    // The entry whose mount point holds `nativePath` (longest prefix, last mounted wins).
    static MountEntry holding(const QList<MountEntry>& table, const QString& nativePath);
    // Filesystems that are views of the kernel rather than stored files.
    static bool isPseudoFilesystem(const QString& fsType);
    // True when `path` is `root` or lies below it.
    static bool isUnder(const QString& path, const QString& root);
};

} // namespace vmk
