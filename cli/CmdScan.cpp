// vmk scan / update / engine: the scan engine from a terminal, through the same
// binding the program uses.
#include "CliFailure.h"
#include "CommandLine.h"
#include "CommandRegistry.h"
#include "EngineLoading.h"
#include "ErrorWords.h"
#include "FolderOptions.h"

#include "components/engine/Engine.h"
#include "components/engine/EngineCode.h"
#include "components/engine/EngineService.h"
#include "components/engine/EngineSession.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "foundation/StartUp.h"
#include "panel/ControlPanel.h"
#include "platform/DriveMap.h"
#include "platform/FileSearch.h"
#include "platform/NativeName.h"
#include "scanner/Antivir.h"
#include "scanner/session/ScanSession.h"

#include <QCoreApplication>
#include <QDir>

#include <cstdio>

namespace
{

// Names are printed with their real bytes, those that are not UTF-8 included.
void out(const QString& line)
{
    std::fputs(vmk::NativeName::toBytes(line).constData(), stdout);
    std::fputc('\n', stdout);
}

// One line per row of the session's event list, with the host path: OK, each
// alert with FOUND, or why the file was not scanned. An alert's object names the
// item itself, never the clear copy a quarantined item was scanned through.
void report(const vmk::ScanRecord& rec)
{
    const vmk::FileScanResult& r = rec.Result;
    if (rec.Kind != vmk::EntryKind::File) {
        out(rec.NativePath + ": " + vmk::NotScannedText(rec.Kind));
    } else if (!r.processed()) {
        out(CliFailure::line(rec.NativePath, ErrorWords::engine(r.ReturnCode), r.ReturnCode));
    } else if (!r.infected()) {
        out(rec.NativePath + ": OK");
    } else {
        for (const vmk::AlertRow& row : r.Rows) {
            QString object = row.Object.isEmpty() ? rec.ScannedPath : row.Object;
            if (object.startsWith(rec.ScannedPath))
                object = rec.NativePath + object.mid(rec.ScannedPath.size());
            out(object + ": " + row.Threat + " FOUND");
        }
    }
}

// The session's selection for the operands: each as a logical path, a folder
// ending in "\".
QStringList selection(const QStringList& operands)
{
    const vmk::DriveMap& map = vmk::DriveMap::instance();
    QStringList listAdd;
    for (const QString& t : operands) {
        const QString path = CommandLine::hostPath(t);
        QString logical = map.toLogical(path);
        if (logical.isEmpty())
            throw CliFailure(t, QStringLiteral("no está en ninguna unidad"));
        const auto entry = vmk::FileSearch::entryOfNative(path);
        if (entry && entry->kind == vmk::EntryKind::Folder && !logical.endsWith(u'\\'))
            logical += u'\\';
        listAdd << logical;
    }
    return listAdd;
}

int runScan(const QStringList& args)
{
    const CommandLine cl(args,
        QList<CliOption> { { QStringLiteral("--db"), true }, { QStringLiteral("--no-archive"), false },
            { QStringLiteral("--jobs"), true }, { QStringLiteral("--memory"), false } }
            + FolderOptions());
    const bool memory = cl.has(QStringLiteral("--memory"));
    cl.expectOperands(memory ? 0 : 1, -1, { QStringLiteral("PATH") });
    bool ok = false;
    const int jobs = cl.value(QStringLiteral("--jobs"), QStringLiteral("1")).toInt(&ok);
    if (!ok || jobs < 1 || jobs > 64)
        throw CliFailure::usage(
            QStringLiteral("--jobs ") + cl.value(QStringLiteral("--jobs")), QStringLiteral("valor no válido"));
    // A device's settings name its quarantine folder, whose sealed items are
    // scanned through a clear copy and reported under their own names.
    if (cl.has(QStringLiteral("--device")) || cl.has(QStringLiteral("--program-folder"))) {
        ApplyFolderOptions(cl);
        vmk::ReadSettings();
    }
    QStringList listAdd = selection(cl.operands());
    if (memory)
        listAdd << vmk::ScanSession::memoryTarget();
    loadEngine(cl.value(QStringLiteral("--db")));
    if (cl.has(QStringLiteral("--no-archive")))
        vmk::engine::setvalue(vmk::engine::Option::ArchiveScan, "0");

    vmk::ScanSession session;
    session.setJobs(jobs);
    session.setClosingMessage(false);
    QObject::connect(&session, &vmk::ScanSession::fileRecorded, &session, &report);
    session.Start(listAdd);
    out(QString("\nScanned files: %1\nClean files: %2\nInfected files: %3\nAlerts: %4\nNot processed: %5")
            .arg(session.txtscantot())
            .arg(session.TxtNtot())
            .arg(session.txtinfFiles())
            .arg(session.txtinftot())
            .arg(session.txtskiptot()));
    vmk::engine::UnLoadEngine();
    if (session.txtinfFiles() > 0)
        return 1;
    return session.txtskiptot() > 0 ? 2 : 0;
}

int runEngine(const QStringList& args)
{
    const CommandLine cl(args, { { QStringLiteral("--db"), true } });
    cl.expectOperands(0, 0, {});
    loadEngine(cl.value(QStringLiteral("--db")));
    vmk::engine::EngineValue v52, v55;
    vmk::engine::getvalue(vmk::engine::EngineValue::SignatureVersion, &v52);
    vmk::engine::getvalue(vmk::engine::EngineValue::SignatureCount, &v55);
    out("52: " + vmk::LiftEngineText(v52.TextLen, v52.TextPtr));
    out("55: " + vmk::LiftEngineText(v55.TextLen, v55.TextPtr));
    vmk::engine::UnLoadEngine();
    return 0;
}

// Runs avupdate.exe through the panel's own update step (same command line, log
// on the device's root, same verdict) and prints the verdict.
int runUpdate(const QStringList& args)
{
    const CommandLine cl(args, {});
    cl.expectOperands(0, 0, {});
    const vmk::DriveMap& map = vmk::DriveMap::instance();
    vmk::G().ProgramFolder = map.logicalProgramFolder();
    vmk::G().ProgramDrive = vmk::G().ProgramFolder.left(2);
    if (vmk::G().ProgramDrive.isEmpty())
        throw CliFailure(map.programFolder(), QStringLiteral("la carpeta del programa no tiene letra de unidad"));
    const vmk::panel::UpdateVerdict verdict = vmk::panel::ControlPanel().RunUpdater();
    const QString log = map.toNative(vmk::panel::SignatureUpdate::LogPath(vmk::G().ProgramDrive));
    switch (verdict) {
    case vmk::panel::UpdateVerdict::LogMissing:
        throw CliFailure(log, QStringLiteral("avupdate.exe no dejó su registro"));
    case vmk::panel::UpdateVerdict::Finished:
        out(vmk::panel::SignatureUpdate::ReadLastLine(log, nullptr));
        out("Signatures updated.");
        return 0;
    case vmk::panel::UpdateVerdict::Error:
        out(vmk::panel::SignatureUpdate::ReadLastLine(log, nullptr));
        out(QString::fromUtf8("¡Error al actualizar!"));
        return 1;
    case vmk::panel::UpdateVerdict::NothingToUpdate:
        out(vmk::panel::SignatureUpdate::ReadLastLine(log, nullptr));
        out(QString::fromUtf8("¡Nada que actualizar!"));
        return 0;
    case vmk::panel::UpdateVerdict::Silent:
        break;
    }
    out(vmk::panel::SignatureUpdate::ReadLastLine(log, nullptr));
    return 2;
}

CommandRegistry::Registrar scanCmd("scan",
    { QStringLiteral(
          "scan [--db DIR] [--no-archive] [--jobs N] [--memory] [--program-folder DIR] [--device DIR] [PATH...]"),
        QStringLiteral("scan files and folders (whole trees) for threats"),
        QStringLiteral(
            "  PATH            a file, or a folder walked depth-first (links to folders are not entered)\n"
            "  --db DIR        the signature folder (default: sigs beside vmk)\n"
            "  --no-archive    do not look inside archives\n"
            "  --jobs N        scan with N threads (1 to 64); the report keeps the walk's order\n"
            "  --memory        also scan the files of the running processes and of what they loaded\n"
            "  --program-folder DIR, --device DIR  read that device's settings: a sealed item in its\n"
            "                  quarantine folder is scanned through a clear copy, reported under its own name\n"
            "  Each file gets a line: OK, the threat and FOUND, or why it was not scanned."),
        runScan });
CommandRegistry::Registrar engineCmd("engine",
    { QStringLiteral("engine [--db DIR]"), QStringLiteral("the signature set's version and count (values 52 and 55)"),
        QStringLiteral("  --db DIR        the signature folder (default: sigs beside vmk)"), runEngine });
CommandRegistry::Registrar updateCmd("update",
    { QStringLiteral("update"), QStringLiteral("update the signatures with avupdate.exe, as the panel does"),
        QStringLiteral("  Runs avupdate.exe beside vmk; its log UPDLOG.TXT goes to the device's root.\n"
                       "  Exit code 1 when the update failed."),
        runUpdate });

} // namespace
