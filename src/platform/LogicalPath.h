#pragma once

#include <QString>

namespace vmk
{

// Paths of the drive-letter namespace as the logic writes them: a folder may end
// in "\" or not, and a tree key is a path with "|" marks in it. This is the one
// place that decides how such texts are joined and cut.
class LogicalPath
{
public:
    // "E:\VMK" and "E:\VMK\" both give "E:\VMK\"; "" stays "".
    static QString withSlash(const QString& folder);
    // Every trailing "\" removed: "E:\VMK\" gives "E:\VMK", "E:\" gives "E:".
    static QString withoutSlash(const QString& folder);
    // The folder and the name with exactly one "\" between them.
    static QString join(const QString& folder, const QString& name);
    // The path of a tree node's key: every "|" removed ("|HOST|" marks the host root).
    static QString ofKey(const QString& key);
    // "E:" for "E:\VMK" or "e:"; "" for a path without a drive letter.
    static QString driveOf(const QString& path);
};

} // namespace vmk
