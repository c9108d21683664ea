#pragma once

#include "scanner/ProcessTable.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>

namespace vmk
{

class ProcessSource;

// The scan of "*Memory*": no process memory is read and no process is touched.
// The running processes and their loaded files are listed, and the files go to
// the engine as files, through the same one-file step as the session's targets.
//
// What the result lists do differently for these targets:
//   1. Before an alert adds a row to ListViewInf, IsAlreadyListed looks for a row
//      whose text equals the current TextScan; when there is one the alert is
//      dropped (no txtinftot, no row, only the pump and the next alert). So a
//      library that many processes load stands once, while txtinfFiles still grows
//      with every occurrence.
//   2. The row text is MemoryAlertRowText: TextScan when the alert's object is the
//      file itself, else TextScan, "/" and the object (something inside the file).

// The source of the process list; nullptr goes back to the host's /proc.
void SetProcessSource(const ProcessSource* source);
const ProcessSource& CurrentProcessSource();

// Counts the running processes, pumping at each, and sets ProcessLast to the
// count minus 1. Returns the count.
int CountProcesses();

// Fills Processes() from a fresh list: names, numbers, threads, the modules of
// each process and its resolved executable path. Pumps at each process.
void BuildProcessList();

// The modules of one process after its image, resolved; `moduleLast` gets their
// count minus 1, so one module besides the image gives 0 and none gives -1.
// Process 0 has none. Adds 1 to Processes().ModuleTotal for every module, the
// image included, and takes 1 away at the end.
void WalkModules(uint32_t processId, QStringList& names, QStringList& paths, int32_t& moduleLast);

// The mends of a path as the system reports it, already in the drive namespace:
//  - "\SYSTEMROOT\System32" (any case) becomes the system folder;
//  - a device prefix before the drive letter ("\??\C:\...") is cut, so the text
//    starts one character before ":\"; a text without ":\" stays as it is;
//  - an empty text with a name tries the system folder, "\" and the name, and is
//    that path when such a file exists.
// The result is upper case (UpperPath), so it still opens in the namespace.
QString ResolvePath(const QString& reported, const QString& name);
// A native path reported by the process source as a namespace path ("" stays "").
QString ReportedPathText(const QString& native);
// Upper case letter by letter, keeping any letter whose upper case the
// namespace's case-insensitive lookup would not match back (e.g. "ß", dotless
// "ı"): an upper-cased path must still open.
QString UpperPath(const QString& path);
// The folder that stands in for the system folder, as a namespace path.
QString MemoryScanSystemFolder();

// The walk of "*Memory*" over Processes(), for each index up to ProcessLast:
// the image path when not empty, then, when ModuleLast is above 0, every module
// path (empty ones too), with a pump after each module and the flags tested
// there; and the same pump and test after each process's modules. So a process
// with one module besides its image has none of its modules scanned, and the
// flags are not looked at between an image and its first module. A pause waits
// at full speed, pumping until it is lifted; `pauseStarted` runs first (the
// session empties TextScan there). No deduplication: a library that ten
// processes load is handed over ten times.
struct MemoryWalkHooks {
    std::function<void(const QString& path)> scanPath; // the one-file step
    std::function<bool()> aborted; // ScanAbort
    std::function<bool()> paused; // ScanPause
    std::function<void()> pauseStarted;
};
void WalkMemoryTargets(const ProcessTable& table, const MemoryWalkHooks& hooks);
// The paths that walk hands over, in its order, when nobody stops or pauses it.
QStringList MemoryScanTargets(const ProcessTable& table);

// True when a row of ListViewInf already carries `textScan` as its text.
bool IsAlreadyListed(const QStringList& threatRowTexts, const QString& textScan);
// The row text of a memory-scan alert (see 2. above).
QString MemoryAlertRowText(const QString& textScan, const QString& textFolder, const QString& object);

} // namespace vmk
