#pragma once

#include <QDateTime>
#include <QList>
#include <QString>

#include <functional>
#include <optional>

namespace vmk
{

// The Windows attribute word that every walk of the suite tests.
enum FileAttribute : quint32 {
    AttrReadOnly = 0x01,
    AttrHidden = 0x02,
    AttrSystem = 0x04,
    AttrDirectory = 0x10,
    AttrArchive = 0x20,
    AttrDevice = 0x40,
    AttrReparsePoint = 0x400,
    // Exactly the word of a system junction: directory symlinks and mount points of
    // kernel filesystems carry it, so walks skip them as they skip junctions.
    AttrJunction = 0x2416,
    AttrInvalid = 0xFFFFFFFF, // what GetFileAttributes answers for a missing path
};

// What an entry is on the host, beyond its attribute word: walks report the
// kinds they cannot read with a reason of their own.
enum class EntryKind {
    File, // a regular file, or a link to one
    Folder,
    Junction, // a link to a folder, or the mount of a kernel filesystem
    DanglingLink, // a link whose target does not exist
    Fifo,
    Socket,
    Device, // a character or block device
};

struct FoundEntry {
    QString name; // in the namespace (see DriveMap::encodeName)
    QString nativePath; // full host path; bytes that are not UTF-8 in NativeName's form
    quint32 attributes = 0;
    qint64 size = 0; // 0 for folders and for anything that is not a regular file
    QDateTime modified;
    EntryKind kind = EntryKind::File;
};

// Folder listings with the attribute word. Only lstat/stat is used on entries:
// sockets, FIFOs and devices are reported (system + device) but never opened.
class FileSearch
{
public:
    // Entries of a logical folder ("E:\Docs" or "E:\Docs\") whose names match the
    // wildcard (case-insensitive, "*" and "?", "*.*" is everything). "." and ".."
    // are not reported. Sorted by name. Empty when the folder is missing.
    static QList<FoundEntry> list(const QString& logicalFolder, const QString& pattern = QStringLiteral("*"));
    // The same for a native folder.
    static QList<FoundEntry> listNative(const QString& nativeFolder, const QString& pattern = QStringLiteral("*"));
    // The entry of one native path, as a listing of its folder would give it.
    static std::optional<FoundEntry> entryOfNative(const QString& nativePath);
    // Attribute word of one native path, AttrInvalid when it does not exist.
    static quint32 attributesOfNative(const QString& nativePath);
    // Attribute word of one logical path.
    static quint32 attributesOf(const QString& logicalPath);

    // Test double: when set, the hook may replace the word computed for a path.
    using AttributeHook = std::function<std::optional<quint32>(const QString& nativePath, quint32 computed)>;
    static void setAttributeHook(AttributeHook hook);
};

} // namespace vmk
