#pragma once

#include <QString>

namespace vmk
{

// The recycle bin, following the freedesktop.org Trash layout: files on the
// device go to the device's own "$topdir/.Trash-$uid", host files to the user's
// trash ("$XDG_DATA_HOME/Trash"), or, when they lie on another filesystem than
// that, to the "$topdir/.Trash-$uid" of their own mount.
class Trash
{
public:
    // Moves a native file or folder to the right trash; false with `error` set when
    // it could not (the item is then left where it was).
    static bool moveToTrash(const QString& nativePath, QString* error = nullptr);
    // The trash folder (holding "files" and "info") that an item would go to.
    static QString trashFolderFor(const QString& nativePath);
};

} // namespace vmk
