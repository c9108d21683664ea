// vmk scan / update / engine: the scan engine from a terminal, through the same
// binding the program uses.
#include "CommandRegistry.h"

#include "components/engine/Engine.h"
#include "components/engine/EngineService.h"
#include "components/engine/EngineSession.h"
#include "foundation/Globals.h"
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

QString takeValue(QStringList& args, int i, const QString& option)
{
    if (i + 1 >= args.size())
        throw std::runtime_error(QString("%1 needs a value").arg(option).toStdString());
    return args.at(i + 1);
}

// Loads the engine from --db DIR or the sigs folder beside vmk.
int loadEngine(const QString& db)
{
    vmk::engine::EngineService::instance().setSignatureFolder(
        db.isEmpty() ? QDir(programFolder()).filePath("sigs") : QDir(db).absolutePath());
    const int code = vmk::engine::LoadEngine();
    if (code != 0)
        std::fprintf(stderr, "vmk: the engine did not start (%d)\n", code);
    return code;
}

struct Counters {
    int scanned = 0, errors = 0, clean = 0, infectedFiles = 0, alerts = 0;
};

void report(const QString& path, const vmk::FileScanResult& r, Counters& c)
{
    ++c.scanned;
    if (!r.processed()) {
        ++c.errors;
        out(path + ": " + vmk::NotProcessedText(r.ReturnCode));
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

int runScan(const QStringList& argsIn)
{
    QStringList args = argsIn;
    QString db;
    bool noArchive = false;
    int jobs = 1;
    QStringList targets;
    for (int i = 0; i < args.size(); ++i) {
        const QString& a = args.at(i);
        if (a == "--db") {
            db = takeValue(args, i++, a);
        } else if (a == "--no-archive") {
            noArchive = true;
        } else if (a == "--jobs") {
            bool ok = false;
            jobs = takeValue(args, i++, a).toInt(&ok);
            if (!ok || jobs < 1 || jobs > 64) {
                std::fprintf(stderr, "vmk scan: --jobs takes a number from 1 to 64\n");
                return 2;
            }
        } else if (a.startsWith("--")) {
            std::fprintf(stderr, "vmk scan: unknown option %s\n", a.toUtf8().constData());
            return 2;
        } else {
            targets << a;
        }
    }
    if (targets.isEmpty()) {
        std::fprintf(stderr, "usage: vmk scan [--db DIR] [--no-archive] [--jobs N] PATH...\n");
        return 2;
    }
    if (loadEngine(db) != 0)
        return 2;
    if (noArchive)
        vmk::engine::setvalue(3, "0");

    QList<Target> files;
    for (const QString& t : targets) {
        const QString native
            = QDir::cleanPath(QDir::current().absoluteFilePath(vmk::DriveMap::instance().nativeOfArgument(t)));
        const auto entry = vmk::FileSearch::entryOfNative(native);
        if (entry && entry->kind == vmk::EntryKind::Folder)
            walk(entry->nativePath, files);
        else if (entry && entry->kind != vmk::EntryKind::File && entry->kind != vmk::EntryKind::Junction)
            files << Target { t, entry->kind };
        else
            files << Target { t }; // a missing path is reported by the engine's own code
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
    QString db;
    for (int i = 0; i < args.size(); ++i)
        if (args.at(i) == "--db")
            db = args.value(++i);
    if (loadEngine(db) != 0)
        return 2;
    vmk::engine::EngineValue v52, v55;
    vmk::engine::getvalue(52, &v52);
    vmk::engine::getvalue(55, &v55);
    out("52: " + vmk::LiftEngineText(v52.TextLen, v52.TextPtr));
    out("55: " + vmk::LiftEngineText(v55.TextLen, v55.TextPtr));
    vmk::engine::UnLoadEngine();
    return 0;
}

// Runs avupdate.exe through the panel's own update step (same command line, log
// on the device's root, same verdict) and prints the verdict.
int runUpdate(const QStringList& args)
{
    if (!args.isEmpty()) {
        std::fprintf(stderr, "usage: vmk update\n");
        return 2;
    }
    const vmk::DriveMap& map = vmk::DriveMap::instance();
    vmk::G().ProgramFolder = map.logicalProgramFolder();
    vmk::G().ProgramDrive = vmk::G().ProgramFolder.left(2);
    if (vmk::G().ProgramDrive.isEmpty()) {
        std::fprintf(stderr, "vmk update: the program folder has no drive letter\n");
        return 2;
    }
    const vmk::panel::UpdateVerdict verdict = vmk::panel::ControlPanel().RunUpdater();
    const QString log = map.toNative(vmk::panel::SignatureUpdate::LogPath(vmk::G().ProgramDrive));
    switch (verdict) {
    case vmk::panel::UpdateVerdict::LogMissing:
        std::fprintf(stderr, "vmk update: avupdate.exe left no log at %s\n", log.toUtf8().constData());
        return 2;
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

CommandRegistry::Registrar scanCmd("scan", "scan [--db DIR] [--no-archive] [--jobs N] PATH...", runScan);
CommandRegistry::Registrar engineCmd("engine", "engine [--db DIR]   (signature set and count)", runEngine);
CommandRegistry::Registrar updateCmd("update", "update   (runs avupdate.exe beside vmk as the panel does)", runUpdate);

} // namespace
