#include "platform/HelperArgument.h"

#include "platform/DriveMap.h"
#include "platform/PathForm.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

namespace vmk
{

std::optional<QString> HelperPathArgument(const char* toolName)
{
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    if (args.size() != 1 || args.first().isEmpty()) {
        std::fprintf(stderr, "usage: %s PATH (one absolute path, as one argument)\n", toolName);
        return std::nullopt;
    }
    const QString given = args.first();
    if (!PathForm::namesEntry(given)) {
        std::fprintf(stderr, "%s: refused, the path is not absolute or holds \".\" or \"..\": %s\n", toolName,
            given.toUtf8().constData());
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
