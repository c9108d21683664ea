#include "components/engine/EnginePath.h"

#include "platform/DriveMap.h"

namespace vmk::engine
{

QString NativePathOf(const QString& logicalPath)
{
    // Host paths (the command-line tool's arguments) pass unchanged; an unknown
    // letter gives "" and the scan reports a bad path.
    return DriveMap::instance().nativeOfArgument(logicalPath);
}

} // namespace vmk::engine
