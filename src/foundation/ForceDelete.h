#pragma once

#include <QString>

#include <functional>

namespace vmk
{

// Locked-file removal (module modReplaceFiles): the one way the suite removes a
// file. Paths are logical ("E:\Cuarentena\run.exe").

// Climbs the ladder: owner write permission back, delete; if the file is still
// there: the removal entry for the next start, "Unlock.exe", write permission
// again, "Delete.exe", and only then tells the user.
void ForceDelete(const QString& path);
// Appends "NUL=<short path>" to the rename list "WinInit.ini" in the system folder.
void ScheduleDeleteAtReboot(const QString& path);
// The 8.3 form of an existing path ("E:\MISDOC~1\run.exe"); "" when it does not exist.
QString GetShortPath(const QString& path);
// Start-up runs the rename list left by earlier sessions: each "NUL=path" entry
// removes its file, each "new=old" entry renames, and the list is then removed.
// Returns the number of entries carried out.
int ProcessPendingRemovals();
// The rename list as a native path: <SystemFolder>\WinInit.ini, or the per-user
// system folder while start-up has not set SystemFolder.
QString PendingRemovalListPath();

// How the helper programs are run; tests install a runner that records the
// command lines. The default is RunAndWait.
using HelperRunner = std::function<void(const QString& commandLine)>;
HelperRunner SetHelperRunner(HelperRunner runner);

} // namespace vmk
