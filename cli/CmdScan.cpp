// vmk scan / update / engine: the scan engine from a terminal, through the same
// binding the program uses.
#include "CliFailure.h"
#include "CommandLine.h"
#include "CommandRegistry.h"
#include "ErrorWords.h"

#include "components/engine/Engine.h"
#include "components/engine/EngineCode.h"
#include "components/engine/EngineService.h"
#include "components/engine/EngineSession.h"
#include "foundation/Globals.h"
#include "foundation/StartUp.h"
#include "panel/ControlPanel.h"
#include "platform/DriveMap.h"
#include "platform/FileSearch.h"
#include "platform/NativeName.h"
#include "scanner/Antivir.h"

#include <QCoreApplication>
#include <QDir>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <thread>
#include <vector>

namespace
{

// Names are printed with their real bytes, those that are not UTF-8 included.
void out(const QString& line)
{
    std::fputs(vmk::NativeName::toBytes(line).constData(), stdout);
    std::fputc('\n', stdout);
}

// One thing the walk met: a file to scan, or an entry that is reported with the
// reason it is not scanned.
struct Target {
    QString path;
    vmk::EntryKind kind = vmk::EntryKind::File;
};

// Depth-first, a folder walked as soon as it is met, skipping entries with the
// junction word (directory symlinks, kernel filesystems): the scanner's own walk.
// Dangling links, FIFOs, sockets and devices are never opened; each gets its line.
void walk(const QString& folder, QList<Target>& targets)
{
    for (const vmk::FoundEntry& e : vmk::FileSearch::listNative(folder)) {
        if (e.kind == vmk::EntryKind::Junction)
            continue;
        if (e.kind == vmk::EntryKind::Folder)
            walk(e.nativePath, targets);
        else
            targets << Target { e.nativePath, e.kind };
    }
}

QString programFolder()
{
    return QCoreApplication::applicationDirPath();
}

// Loads the engine from --db DIR or the sigs folder beside vmk; a failure names
// the signature folder and says what is wrong with it.
void loadEngine(const QString& dbArg)
{
    const QString folder
        = dbArg.isEmpty() ? QDir(programFolder()).filePath(QStringLiteral("sigs")) : CommandLine::hostPath(dbArg);
    const QString named = dbArg.isEmpty() ? folder : dbArg;
    vmk::engine::EngineService::instance().setSignatureFolder(folder);
    const int code = vmk::engine::LoadEngine();
    if (code == 0)
        return;
    if (code == vmk::engine::SignaturesMissing && !QFileInfo(folder).isDir())
        throw CliFailure(named, QStringLiteral("no existe la carpeta de firmas"), code);
    if (code == vmk::engine::TempFolderUnusable)
        throw CliFailure(QDir::tempPath(), ErrorWords::engine(code), code);
    throw CliFailure(named, ErrorWords::engine(code), code);
}

struct Counters {
    int scanned = 0, errors = 0, clean = 0, infectedFiles = 0, alerts = 0;
};

void report(const QString& path, const vmk::FileScanResult& r, Counters& c)
{
    ++c.scanned;
    if (!r.processed()) {
        ++c.errors;
        out(CliFailure::line(path, ErrorWords::engine(r.ReturnCode), r.ReturnCode));
    } else if (!r.infected()) {
        ++c.clean;
        out(path + ": OK");
    } else {
        ++c.infectedFiles;
        for (const vmk::AlertRow& row : r.Rows) {
            ++c.alerts;
            out((row.Object.isEmpty() ? path : row.Object) + ": " + row.Threat + " FOUND");
        }
    }
}

void report(const Target& t, const vmk::FileScanResult& r, Counters& c)
{
    if (t.kind == vmk::EntryKind::File) {
        report(t.path, r, c);
        return;
    }
    ++c.scanned;
    ++c.errors;
    out(t.path + ": " + vmk::NotScannedText(t.kind));
}

vmk::FileScanResult scanTarget(const Target& t, vmk::engine::EngineSession* session = nullptr)
{
    return t.kind == vmk::EntryKind::File ? vmk::ScanOneFile(t.path, session) : vmk::FileScanResult {};
}

// Scans with `jobs` threads, each with its own engine session on the one
// compiled engine, and reports in the order of `files`.
void scanParallel(const QList<Target>& files, int jobs, Counters& c)
{
    std::vector<vmk::FileScanResult> results(static_cast<size_t>(files.size()));
    std::vector<char> done(static_cast<size_t>(files.size()), 0);
    std::atomic<qsizetype> next { 0 };
    std::mutex m;
    std::condition_variable cv;
    std::vector<std::thread> workers;
    for (int j = 0; j < jobs; ++j)
        workers.emplace_back([&] {
            vmk::engine::EngineSession session;
            for (qsizetype i = next++; i < files.size(); i = next++) {
                vmk::FileScanResult r = scanTarget(files.at(i), &session);
                std::lock_guard lock(m);
                results[static_cast<size_t>(i)] = std::move(r);
                done[static_cast<size_t>(i)] = 1;
                cv.notify_all();
            }
        });
    for (qsizetype i = 0; i < files.size(); ++i) {
        vmk::FileScanResult r;
        {
            std::unique_lock lock(m);
            cv.wait(lock, [&] { return done[static_cast<size_t>(i)] != 0; });
            r = std::move(results[static_cast<size_t>(i)]);
        }
        report(files.at(i), r, c);
    }
    for (auto& w : workers)
        w.join();
}

int runScan(const QStringList& args)
{
    const CommandLine cl(args,
        { { QStringLiteral("--db"), true }, { QStringLiteral("--no-archive"), false },
            { QStringLiteral("--jobs"), true } });
    cl.expectOperands(1, -1, { QStringLiteral("PATH") });
    bool ok = false;
    const int jobs = cl.value(QStringLiteral("--jobs"), QStringLiteral("1")).toInt(&ok);
    if (!ok || jobs < 1 || jobs > 64)
        throw CliFailure::usage(
            QStringLiteral("--jobs ") + cl.value(QStringLiteral("--jobs")), QStringLiteral("valor no válido"));
    loadEngine(cl.value(QStringLiteral("--db")));
    if (cl.has(QStringLiteral("--no-archive")))
        vmk::engine::setvalue(vmk::engine::Option::ArchiveScan, "0");

    QList<Target> files;
    for (const QString& t : cl.operands()) {
        const QString path = CommandLine::hostPath(t);
        const auto entry = vmk::FileSearch::entryOfNative(path);
        if (entry && entry->kind == vmk::EntryKind::Folder)
            walk(entry->nativePath, files);
        else if (entry && entry->kind != vmk::EntryKind::File && entry->kind != vmk::EntryKind::Junction)
            files << Target { path, entry->kind };
        else
            files << Target { path }; // a missing path is reported by the engine's own code
    }

    Counters c;
    if (jobs == 1 || files.size() < 2) {
        for (const Target& f : files)
            report(f, scanTarget(f), c);
    } else {
        scanParallel(files, jobs, c);
    }
    out(QString("\nScanned files: %1\nClean files: %2\nInfected files: %3\nAlerts: %4\nNot processed: %5")
            .arg(c.scanned)
            .arg(c.clean)
            .arg(c.infectedFiles)
            .arg(c.alerts)
            .arg(c.errors));
    vmk::engine::UnLoadEngine();
    if (c.infectedFiles > 0)
        return 1;
    return c.errors > 0 ? 2 : 0;
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
    { QStringLiteral("scan [--db DIR] [--no-archive] [--jobs N] PATH..."),
        QStringLiteral("scan files and folders (whole trees) for threats"),
        QStringLiteral("  PATH            a file, or a folder walked depth-first (links to folders are not entered)\n"
                       "  --db DIR        the signature folder (default: sigs beside vmk)\n"
                       "  --no-archive    do not look inside archives\n"
                       "  --jobs N        scan with N threads (1 to 64); the report keeps the walk's order\n"
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
