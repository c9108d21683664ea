// vmk backup: a saved backup selection into a dated archive, as the backup tool's
// "Comenzar" makes it, for scheduled backups.
#include "CliFailure.h"
#include "CommandLine.h"
#include "CommandRegistry.h"
#include "EngineLoading.h"
#include "ErrorWords.h"
#include "FolderOptions.h"

#include "backup/BackupRun.h"
#include "backup/SelectionFile.h"
#include "backup/SkipReason.h"
#include "components/engine/Engine.h"
#include "components/zip/ZipArchiver.h"
#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Settings.h"
#include "foundation/Translate.h"
#include "platform/DriveMap.h"
#include "platform/NativeName.h"

#include <cstdio>

namespace
{

// Names are printed with their real bytes, those that are not UTF-8 included.
void print(FILE* to, const QString& line)
{
    std::fputs(vmk::NativeName::toBytes(line).constData(), to);
    std::fputc('\n', to);
}

QString hostName(const QString& logical)
{
    return vmk::DriveMap::hasDriveLetter(logical) ? vmk::DriveMap::instance().toNative(logical) : logical;
}

int runBackup(const QStringList& args)
{
    const CommandLine cl(args,
        QList<CliOption> { { QStringLiteral("--to"), true }, { QStringLiteral("--db"), true } } + FolderOptions());
    cl.expectOperands(1, 1, { QStringLiteral("SELECTION") });
    ApplyFolderOptions(cl);
    vmk::ReadSettings();
    const vmk::DriveMap& map = vmk::DriveMap::instance();

    const QString selectionArg = cl.operands().first();
    const QString selectionFile = map.toLogical(CommandLine::inputFile(selectionArg));
    const vmk::SelectionFile::Lists lists = vmk::SelectionFile::Load(selectionFile);
    if (!lists.failure.isEmpty())
        throw CliFailure(selectionArg, QStringLiteral("¡No se pudo leer la configuración de respaldo!"));

    QString folder = vmk::G().ProgramDrive + vmk::S().BackupsFolder;
    if (cl.has(QStringLiteral("--to"))) {
        folder = map.toLogical(CommandLine::inputFolder(cl.value(QStringLiteral("--to"))));
        if (!folder.endsWith(u'\\'))
            folder += u'\\';
    }

    // Scanned on the way in when the device's settings ask for it; without an
    // engine the files go in unscanned, and the line says why.
    if (vmk::S().ScanBeforeBackup.trimmed().toInt() == 1) {
        try {
            loadEngine(cl.value(QStringLiteral("--db")));
            vmk::G().EngineLoaded = true;
        } catch (const CliFailure& f) {
            print(stderr, QStringLiteral("vmk backup: ") + f.text());
        }
    }

    vmk::zip::ZipArchiver zip;
    int skipped = 0;
    int infected = 0;
    zip.events().skippingFile = [&skipped](const QString& name, int reason) {
        ++skipped;
        print(stderr,
            QStringLiteral("vmk backup: ") + hostName(name) + QStringLiteral(": ") + vmk::SkipReason(reason)
                + QStringLiteral(" (") + QString::number(reason) + u')');
    };
    vmk::BackupRun::Hooks hooks;
    hooks.scanned = [&infected](bool isInfected) { infected += isInfected ? 1 : 0; };
    // Without a screen the question is answered "no": the file is archived, and named.
    hooks.excludeInfected = [](const QString& file) {
        return vmk::ShowMessage(hostName(file) + QStringLiteral("\r\n")
                       + vmk::Translate(QStringLiteral("¡Archivo infectado! ¿Desea excluir este archivo?")),
                   4)
            == 6;
    };
    vmk::BackupRun run(zip);
    const vmk::BackupRun::Outcome outcome = run.Run(lists.add, lists.exclude, folder, hooks);
    if (vmk::G().EngineLoaded) {
        vmk::engine::UnLoadEngine();
        vmk::G().EngineLoaded = false;
    }
    switch (outcome.failure) {
    case vmk::BackupRun::Failure::None:
        break;
    case vmk::BackupRun::Failure::FolderMissing:
        throw CliFailure(hostName(folder), QStringLiteral("¡La carpeta de respaldos no existe!"));
    case vmk::BackupRun::Failure::NoFreeName:
        throw CliFailure(hostName(outcome.archive), QStringLiteral("¡No queda ningún nombre libre para el respaldo!"));
    case vmk::BackupRun::Failure::Component:
        throw CliFailure(hostName(outcome.archive), ErrorWords::zipResult(outcome.result), outcome.result);
    }
    print(stdout, hostName(outcome.archive));
    return skipped > 0 || infected > 0 ? CliFailure::kRefused : 0;
}

CommandRegistry::Registrar backupCmd("backup",
    { QStringLiteral("backup SELECTION [--to FOLDER] [--db DIR] [--program-folder DIR] [--device DIR]"),
        QStringLiteral("back up a saved selection into a dated archive, as the backup tool does"),
        QStringLiteral("  SELECTION       a selection file saved by the backup tool ([Add] and [Exclude] sections);\n"
                       "                  entries whose file or folder is gone are left out\n"
                       "  --to FOLDER     where the archive goes (default: the device's #BackupsFolder)\n"
                       "  --db DIR        the signature folder, when #ScanBeforeBackup asks for a scan (default: sigs "
                       "beside vmk)\n"
                       "  The archive is named mmm-dd-yyyy,hh.mm.ss.zip by the present time; a second run in the same\n"
                       "  second takes mmm-dd-yyyy,hh.mm.ss-2.zip, and so on. Its path is printed. Each file left out\n"
                       "  is named on standard error with its reason; an infected file is archived and named.\n"
                       "  Exit code 1 when a file was left out or found infected (the archive is made), 2 when no\n"
                       "  archive was made.\n")
            + FolderOptionsHelp(),
        runBackup });

} // namespace
