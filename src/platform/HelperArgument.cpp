#include "platform/HelperArgument.h"

#include "platform/DriveMap.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

namespace vmk
{

std::optional<QString> HelperPathArgument(const char* toolName)
{
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    // A path with spaces may arrive split when the caller's quotes were lost.
    const QString given = args.join(u' ');
    if (given.isEmpty()) {
        std::fprintf(stderr, "usage: %s \"path\"\n", toolName);
        return std::nullopt;
    }
    const QString native = DriveMap::instance().nativeOfArgument(given);
    if (native.isEmpty()) {
        std::fprintf(stderr, "%s: no such drive: %s\n", toolName, given.toUtf8().constData());
        return std::nullopt;
    }
    return native;
}

} // namespace vmk
