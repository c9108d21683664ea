#include "platform/PathForm.h"

#include "platform/DriveMap.h"

#include <QRegularExpression>
#include <QStringList>

namespace vmk
{

bool PathForm::hasDotComponent(const QString& path)
{
    static const QRegularExpression separators(QStringLiteral("[\\\\/]"));
    const QStringList parts = path.split(separators);
    for (const QString& part : parts) {
        if (part == QLatin1String(".") || part == QLatin1String(".."))
            return true;
    }
    return false;
}

bool PathForm::isAbsoluteNormalised(const QString& path)
{
    const bool lettered = DriveMap::hasDriveLetter(path);
    if (!lettered && !path.startsWith(u'/'))
        return false;
    return !hasDotComponent(lettered ? path.mid(2) : path);
}

} // namespace vmk
