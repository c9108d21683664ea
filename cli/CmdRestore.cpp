// vmk restore: the backup tool's way back from an archive, from a terminal.
#include "CliFailure.h"
#include "CommandLine.h"
#include "CommandRegistry.h"
#include "ErrorWords.h"
#include "FolderOptions.h"

#include "backup/ArchiveRestore.h"
#include "components/zip/ZipArchiver.h"
#include "components/zip/ZipCodes.h"
#include "platform/DriveMap.h"

#include <QSet>
#include <QTextStream>

#include <cstdio>

namespace
{
// A name of the namespace as the host writes it; a name with no drive here stays as stored.
QString shown(const QString& logical)
{
    const QString native = vmk::DriveMap::instance().toNative(logical);
    return native.isEmpty() ? logical : native;
}

// An entry as the user may type it: with "\" as listed, or with "/".
QString entryKey(const QString& arg)
{
    return QString(arg).replace(u'/', u'\\');
}

int restore(const QStringList& args)
{
    const CommandLine cl(args, QList<CliOption> { { QStringLiteral("--to"), true } } + FolderOptions());
    cl.expectOperands(1, -1, { QStringLiteral("ARCHIVE") });
    if (cl.has(QStringLiteral("--device")) || cl.has(QStringLiteral("--program-folder")))
        ApplyFolderOptions(cl);
    const vmk::DriveMap& map = vmk::DriveMap::instance();
    const QString archiveArg = cl.operands().first();
    const QString archive = map.toLogical(CommandLine::inputFile(archiveArg));
    QString altFolder;
    if (cl.has(QStringLiteral("--to"))) {
        altFolder = map.toLogical(CommandLine::inputFolder(cl.value(QStringLiteral("--to"))));
        if (!altFolder.endsWith(u'\\'))
            altFolder += u'\\';
    }

    vmk::zip::ZipArchiver zip;
    vmk::ArchiveRestore restorer(zip);
    QList<vmk::RestoreRow> rows;
    const int listed = restorer.ListArchive(archive, rows);
    if (listed != vmk::zip::ZipOk)
        throw CliFailure(archiveArg, ErrorWords::zipResult(listed), listed, ErrorWords::zipExitCode(listed));

    // Without ENTRY every file of the archive is checked, as "check all" does.
    QStringList checked;
    if (cl.operands().size() == 1) {
        for (const vmk::RestoreRow& row : rows)
            checked << row.key;
    } else {
        QSet<QString> inArchive;
        for (const vmk::RestoreRow& row : rows)
            inArchive.insert(row.key);
        for (const QString& arg : cl.operands().mid(1)) {
            const QString key = inArchive.contains(arg) ? arg : entryKey(arg);
            if (!inArchive.contains(key))
                throw CliFailure(arg, QStringLiteral("no está en el archivo de respaldo"), -1, CliFailure::kRefused);
            if (!checked.contains(key))
                checked << key;
        }
    }

    const vmk::ArchiveRestore::Outcome outcome = restorer.Restore(archive, checked, altFolder);
    QTextStream out(stdout);
    for (const auto& r : outcome.restored)
        out << "restored: " << r.entry << " -> " << shown(r.destination) << '\n';
    out.flush();
    for (const auto& r : outcome.refused)
        std::fprintf(stderr, "vmk restore: %s\n",
            CliFailure::line(r.entry, ErrorWords::zipSkip(r.reason), r.reason).toUtf8().constData());
    out << outcome.restored.size() << " of " << checked.size() << " entries restored, " << outcome.refused.size()
        << " refused.\n";
    out.flush();
    if (outcome.result == vmk::zip::ZipOk || outcome.result == vmk::zip::ZipFilesSkipped)
        return outcome.refused.isEmpty() ? 0 : CliFailure::kRefused;
    if (outcome.result == vmk::zip::ZipNothingToDo && checked.isEmpty())
        return 0;
    throw CliFailure(
        archiveArg, ErrorWords::zipResult(outcome.result), outcome.result, ErrorWords::zipExitCode(outcome.result));
}

CommandRegistry::Registrar r1("restore",
    { QStringLiteral("restore ARCHIVE [--to FOLDER] [--program-folder DIR] [--device DIR] [ENTRY...]"),
        QStringLiteral("bring files back from a backup archive"),
        QStringLiteral("  ARCHIVE            a backup archive (vmk list shows its entries)\n"
                       "  ENTRY              an entry's whole stored name, with \\ or /; without any, every file\n"
                       "  --to FOLDER        put the files side by side in FOLDER, their folders dropped: of\n"
                       "                     files of the same name the first in the archive is written and\n"
                       "                     the others are refused; without --to, each file goes back to its\n"
                       "                     own drive and folder\n"
                       "  Entries that would be written through \"..\", a rooted name or a link already on\n"
                       "  their way, or to a drive that is not present, are named on standard error and left out.\n")
            + FolderOptionsHelp(),
        restore });
} // namespace
