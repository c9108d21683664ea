#pragma once

#include <QString>

namespace vmk
{

// The shape of a path as text, before anything on disk is looked at.
class PathForm
{
public:
    // True when a component ("\" or "/" separated, after a drive letter) is "." or
    // "..". A name such as `."."` is a literal name, not a step.
    static bool hasDotComponent(const QString& path);
    // A drive-letter path ("E:\...") or a host path from "/", without "." or ".."
    // components: the place it names cannot move with the current folder or
    // climb out of the folder it starts in. Empty components ("E:\\x") are
    // allowed; they name the same place.
    static bool isAbsoluteNormalised(const QString& path);
    // An absolute, normalised path that names an entry below its root: what a
    // removal may be given ("E:", "E:\" and "/" name no entry).
    static bool namesEntry(const QString& path);
};

} // namespace vmk
