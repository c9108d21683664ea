#include "platform/Trash.h"

#include <QFile>

namespace vmk
{

bool Trash::moveToTrash(const QString& nativePath, QString* error)
{
    QFile item(nativePath);
    if (item.moveToTrash())
        return true;
    if (error)
        *error = item.errorString().isEmpty() ? QStringLiteral("cannot move to the trash: ") + nativePath
                                               : item.errorString() + QStringLiteral(": ") + nativePath;
    return false;
}

} // namespace vmk
