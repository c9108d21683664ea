#pragma once

#include <QString>

namespace vmk
{

// One row of SmartRestore: an archive entry as the restore panel shows it.
struct RestoreRow {
    QString key; // the whole name as stored in the archive, with "\"
    QString text; // the last piece of that name: the file's own name
    QString path; // every piece but the last, each followed by "\"
    qint64 size = 0; // bytes

    // Splits a stored name at "\" (the ListingFile rule).
    static RestoreRow FromStoredName(const QString& storedName, qint64 size);
};

} // namespace vmk
