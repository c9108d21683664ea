#include "platform/LogicalPath.h"

#include "platform/DriveMap.h"

namespace vmk
{

QString LogicalPath::withSlash(const QString& folder)
{
    if (folder.isEmpty() || folder.endsWith(u'\\'))
        return folder;
    return folder + u'\\';
}

QString LogicalPath::withoutSlash(const QString& folder)
{
    QString out = folder;
    while (out.endsWith(u'\\'))
        out.chop(1);
    return out;
}

QString LogicalPath::join(const QString& folder, const QString& name)
{
    QString tail = name;
    while (tail.startsWith(u'\\'))
        tail.remove(0, 1);
    return withoutSlash(folder) + u'\\' + tail;
}

QString LogicalPath::ofKey(const QString& key)
{
    QString out = key;
    out.remove(u'|');
    return out;
}

QString LogicalPath::driveOf(const QString& path)
{
    if (!DriveMap::hasDriveLetter(path))
        return QString();
    return path.left(1) + u':';
}

} // namespace vmk
