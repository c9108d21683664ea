#include "backup/RestoreRow.h"

#include <QStringList>

namespace vmk
{

RestoreRow RestoreRow::FromStoredName(const QString& storedName, qint64 size)
{
    RestoreRow row;
    row.key = storedName;
    row.size = size;
    const QStringList pieces = storedName.split('\\');
    row.text = pieces.last();
    for (qsizetype i = 0; i + 1 < pieces.size(); ++i)
        row.path += pieces.at(i) + '\\';
    return row;
}

} // namespace vmk
