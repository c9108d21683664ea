#include "components/engine/EnginePath.h"

#include "platform/DriveMap.h"

namespace vmk::engine
{

QString NativePathOf(const QString& logicalPath)
{
    // Host paths (the command-line tool's arguments) pass unchanged; an unknown
    // letter gives "" and the scan reports a bad path.
    if (!DriveMap::hasDriveLetter(logicalPath))
        return logicalPath;
    return DriveMap::instance().toNative(logicalPath);
}

} // namespace vmk::engine
