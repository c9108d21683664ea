#pragma once

#include <QString>

namespace vmk
{

// The steps that take a file away, shared by ForceDelete, the leftover list of the
// next start, Unlock.exe and Delete.exe. Native paths; a symbolic link is always
// acted on itself, never through to its target.
class FileRemoval
{
public:
    // The owner gets write permission back (Windows clears read-only, hidden and
    // system by setting the archive attribute).
    static void makeWritable(const QString& nativePath);
    // What Unlock.exe does, where this user may: the immutable and append-only
    // flags cleared and write permission given, on the entry and on its folder.
    static void unlock(const QString& nativePath);
    // Write permission back, then the entry removed; with `emptyFolderToo` an
    // empty folder goes as well. True when nothing is left under the path.
    static bool makeWritableAndRemove(const QString& nativePath, bool emptyFolderToo);
    // True when anything is there, a dangling link included.
    static bool entryExists(const QString& nativePath);
};

} // namespace vmk
