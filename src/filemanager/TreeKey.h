#pragma once

#include <QString>

namespace vmk
{

struct DriveInfo;

// The grammar of tree node keys, shared by every tree of the program. A key doubles
// as a path: "|HOST|" is the host root, a key ending in "\" is a folder, any other
// key is a file, and the path is the key with every "|" removed. The bar in front of
// the desktop and documents roots keeps their keys apart from the same folders
// reached through their drive nodes; every key below them inherits it.
class TreeKey
{
public:
    static QString host() { return QStringLiteral("|HOST|"); }
    static QString memory() { return QStringLiteral("*Memory*"); }
    static QString folderImage() { return QStringLiteral("Folder"); }

    // The key with every "|" removed. "|HOST|" gives "HOST", which is no path:
    // callers compare the host root by its exact key first.
    static QString pathOf(const QString& key);
    static bool isFolder(const QString& key) { return key.endsWith(u'\\'); }

    // "|" + folder + "\" for the desktop and documents roots (folder as "C:\Users\ana\Desktop").
    static QString specialRoot(const QString& logicalFolder);
    // "E:\" with the letter upper-cased, and the caption: the drive list entry upper-cased.
    static QString driveRoot(const DriveInfo& drive);
    static QString driveText(const DriveInfo& drive);
    // The device root: the program drive ("E:") and "\".
    static QString deviceRoot(const QString& programDrive);
    // A child of a folder key: the name, and "\" for a folder.
    static QString child(const QString& parentKey, const QString& name, bool folder);
    // Image key of a file: "|" and its type (the lower-cased extension), so that a
    // folder of a thousand files of one type needs one icon.
    static QString fileImage(const QString& name);

    // The two expand-mark tests. Each takes a key or a path and strips the bars
    // itself; false when the path is no folder.
    static bool FolderHasEntries(const QString& keyOrPath);
    static bool FolderHasSubfolders(const QString& keyOrPath);

    // The size text of a file: "-----" when the length cannot be had; above 1024
    // bytes "<KB>KB, <n> Bytes" with the kilobytes cut, else "<n> Bytes".
    static QString SizeText(const QString& keyOrPath);
};

} // namespace vmk
