#include "components/engine/EnginePath.h"

#include <QDir>

namespace vmk::engine
{

QString NativePathOf(const QString& logicalPath)
{
    // Host paths pass unchanged; "C:\..." is the host's root.
    if (logicalPath.size() >= 2 && logicalPath.at(1) == QLatin1Char(':') && logicalPath.at(0).toUpper() == 'C') {
        QString rest = logicalPath.mid(2);
        rest.replace(QLatin1Char('\\'), QLatin1Char('/'));
        return rest.isEmpty() ? QStringLiteral("/") : rest;
    }
    return logicalPath;
}

} // namespace vmk::engine
