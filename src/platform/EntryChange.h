#pragma once

#include <QString>

namespace vmk
{

// Renaming an entry and making a folder, the two changes the file manager makes by
// name. Neither ever takes the place of an existing entry: a name already in use is
// reported, not overwritten (a plain rename on Linux would replace a file silently).
class EntryChange
{
public:
    enum class Outcome { Done, Exists, Failed };

    // Renames within the host: `nativeTo` must not exist. A new name that differs
    // from the old only in case is the same entry on a case-blind filesystem (a FAT
    // stick), and is renamed there too. `error` gets errno on Failed.
    static Outcome rename(const QString& nativeFrom, const QString& nativeTo, int* error = nullptr);
    // Makes one folder (its parent must exist).
    static Outcome makeFolder(const QString& nativePath, int* error = nullptr);
};

} // namespace vmk
