#include "platform/PathForm.h"

#include "platform/DriveMap.h"

#include <QRegularExpression>
#include <QStringList>

namespace vmk
{
namespace
{
// The components after the drive letter, if any; empty ones are dropped.
QStringList componentsOf(const QString& path)
{
    static const QRegularExpression separators(QStringLiteral("[\\\\/]"));
    return (DriveMap::hasDriveLetter(path) ? path.mid(2) : path).split(separators, Qt::SkipEmptyParts);
}
} // namespace

bool PathForm::hasDotComponent(const QString& path)
{
    const QStringList parts = componentsOf(path);
    return parts.contains(QStringLiteral(".")) || parts.contains(QStringLiteral(".."));
}

bool PathForm::isAbsoluteNormalised(const QString& path)
{
    return (DriveMap::hasDriveLetter(path) || path.startsWith(u'/')) && !hasDotComponent(path);
}

bool PathForm::namesEntry(const QString& path)
{
    return isAbsoluteNormalised(path) && !componentsOf(path).isEmpty();
}

} // namespace vmk
