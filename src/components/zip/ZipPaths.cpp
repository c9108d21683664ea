#include "components/zip/ZipPaths.h"

#include "platform/DriveMap.h"

#include <QStringList>

namespace vmk::zip
{

QString ZipPaths::toNative(const QString& logical)
{
    return DriveMap::instance().toNative(logical);
}

QString ZipPaths::toLogical(const QString& native)
{
    return DriveMap::instance().toLogical(native);
}

bool ZipPaths::isRooted(const QString& name)
{
    if (name.startsWith('\\') || name.startsWith('/'))
        return true;
    return name.size() >= 2 && name.at(1) == ':' && name.at(0).isLetter();
}

bool ZipPaths::hasParentStep(const QString& name)
{
    const QStringList parts = QString(name).replace('/', '\\').split('\\');
    return parts.contains(QStringLiteral(".."));
}

QString ZipPaths::toStored(const QString& name)
{
    QString s = QString(name).replace('\\', '/');
    // A leading "/" would make Info-ZIP strip it with a warning; the root is implied.
    while (s.startsWith('/'))
        s.remove(0, 1);
    return s;
}

QString ZipPaths::toInterface(const QString& stored)
{
    return QString(stored).replace('/', '\\');
}

} // namespace vmk::zip
