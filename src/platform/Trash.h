#pragma once

#include <QString>

namespace vmk
{

// The recycle bin: Qt's freedesktop.org trash. An item on another volume than
// the user's home goes to that volume's own "$topdir/.Trash-$uid" (so a file of
// the device stays on the device), anything else to "$XDG_DATA_HOME/Trash".
class Trash
{
public:
    // Moves a native file or folder to the right trash; false with `error` set when
    // it could not (the item is then left where it was).
    static bool moveToTrash(const QString& nativePath, QString* error = nullptr);
};

} // namespace vmk
