#pragma once

#include "backup/RestoreRow.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace vmk
{

namespace zip
{
class ZipArchiver;
}

// The way back from an archive of the backups: what it holds, and unpacking the
// checked entries either to the places they came from (each stored name carries
// its drive and folders) or side by side into one chosen folder. The zip
// component belongs to the caller (BackTree shares one between the run and the
// restore); its progress, skip and completion events stay the caller's, and only
// the listing and destination events are taken for the length of a call.
class ArchiveRestore
{
public:
    explicit ArchiveRestore(zip::ZipArchiver& zipControl);

    // The rows of SmartRestore for `archive` (interface form), in archive order;
    // folder entries are no files to check and give no row. Returns the
    // component's result (ZipArchiveUnreadable for a damaged or cut archive).
    int ListArchive(const QString& archive, QList<RestoreRow>& rows);

    // Where an entry lands: with an alternative folder (ending in "\"), that folder
    // and the last piece of the stored name, so files of the same name from
    // different folders collide and the first one in the archive wins; without one,
    // the destination stays as the component has it, the stored path itself.
    static void UnzipPreprocessingFile(
        const QString& altRestoreFolder, const QString& storedName, QString& destination);

    struct Refusal {
        QString entry; // stored name
        int reason = 0; // ZipSkipReason
    };
    struct Restored {
        QString entry; // stored name
        QString destination; // interface form
    };
    struct Outcome {
        int result = 0; // ZipResult; ZipNothingToDo when nothing was checked
        QList<Restored> restored; // in the order they were written
        QList<Refusal> refused; // in the order they were met
    };

    // Unpacks `checkedKeys` (stored names) of `archive`. An empty
    // `altRestoreFolder` is the default route; otherwise the folder must exist.
    // With nothing checked the component is not called.
    Outcome Restore(const QString& archive, const QStringList& checkedKeys, const QString& altRestoreFolder);

    QString AltRestoreFolder() const { return m_altRestoreFolder; }

private:
    zip::ZipArchiver& m_zip;
    QString m_altRestoreFolder;
};

} // namespace vmk
