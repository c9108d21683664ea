#pragma once

#include <QString>

namespace vmk
{

// Puts a finished file in the place of another in one step: the target is at
// every moment either the old file or the whole new one.
class FileReplace
{
public:
    // Native paths on one filesystem. After success the source name is gone and
    // the old target's data is deleted; after failure both are as they were.
    static bool replace(const QString& nativeSource, const QString& nativeTarget);
};

} // namespace vmk
