#pragma once

#include <QString>

namespace vmk
{

// The shell's special folders, as native paths, from the XDG user directories
// ("$XDG_CONFIG_HOME/user-dirs.dirs"), with the XDG defaults when a name is unset.
class SpecialFolders
{
public:
    static QString desktop();
    static QString documents();
    // Where desktop entries of programs live: "$XDG_DATA_HOME/applications".
    static QString programs();
    // A per-user folder that stands in for the system folder: "$XDG_DATA_HOME/Vormak/System".
    static QString system();
    // Reads one XDG_*_DIR value from the user-dirs file; "" when not set there.
    static QString userDir(const QString& name);
};

} // namespace vmk
