#include "components/engine/EnginePath.h"

#include <QDir>

namespace vmk::engine
{

QString NativePathOf(const QString& logicalPath)
{
    if (logicalPath.size() < 2 || logicalPath.at(1) != QLatin1Char(':') || !logicalPath.at(0).isLetter())
        return logicalPath; // already a host path
    QString rest = logicalPath.mid(2);
    rest.replace(QLatin1Char('\\'), QLatin1Char('/'));
    while (rest.startsWith(QLatin1Char('/')))
        rest.remove(0, 1);
    // "C:" is the host's root; any other letter is the device, which for a
    // program started from a plain folder is that folder (the current one).
    const QString root = logicalPath.at(0).toUpper() == QLatin1Char('C') ? QStringLiteral("/") : QDir::currentPath();
    return rest.isEmpty() ? root : QDir(root).filePath(rest);
}

} // namespace vmk::engine
