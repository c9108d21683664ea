#pragma once

#include <QString>

namespace vmk
{

// Puts a finished file or folder in the place of another in one step: the target
// is at every moment either the old one or the whole new one.
class FileReplace
{
public:
    // Native paths on one filesystem. After success the source name is gone and
    // the old target's data is deleted; after failure both are as they were.
    static bool replace(const QString& nativeSource, const QString& nativeTarget);
    // Swaps two existing entries (files or folders) on one filesystem in one step
    // (renameat2 with RENAME_EXCHANGE): neither name is ever missing. False, with
    // nothing changed, where the filesystem cannot exchange.
    static bool exchange(const QString& nativeA, const QString& nativeB);
    // A plain rename; an existing target file is replaced.
    static bool move(const QString& nativeSource, const QString& nativeTarget);
};

} // namespace vmk
