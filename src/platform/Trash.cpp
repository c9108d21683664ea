#include "platform/Trash.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace vmk
{

bool Trash::moveToTrash(const QString& nativePath, QString* error)
{
    // Qt makes the trash inside the data folder but not the data folder itself,
    // which a fresh account may not have yet.
    QDir().mkpath(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
    QFile item(nativePath);
    if (item.moveToTrash())
        return true;
    if (error)
        *error = item.errorString().isEmpty() ? QStringLiteral("cannot move to the trash: ") + nativePath
                                              : item.errorString() + QStringLiteral(": ") + nativePath;
    return false;
}

} // namespace vmk
