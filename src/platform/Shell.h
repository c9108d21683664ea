#pragma once

#include <QString>

#include <functional>

namespace vmk
{

// Opens a web address or a file with the desktop's opener, as a double click
// would. The opener is a seam: tests record the targets instead of starting
// a browser.
class Shell
{
public:
    using Opener = std::function<bool(const QString& target)>;
    // `target`: a URL, a logical path ("E:\x.txt") or a native path. True when the
    // opener was started.
    static bool open(const QString& target);
    // Installs an opener and returns the previous one; an empty one restores xdg-open.
    static Opener setOpener(Opener opener);
};

} // namespace vmk
