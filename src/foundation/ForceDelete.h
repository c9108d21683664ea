#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace vmk
{

// Locked-file removal (module modReplaceFiles): the one way the suite removes a
// file. Paths are logical ("E:\Cuarentena\run.exe").

// Climbs the ladder: owner write permission back, delete; if the file is still
// there: the removal entry for the next start, "Unlock.exe", write permission
// again, "Delete.exe", and only then tells the user. A path that is not absolute
// or holds "." or ".." components is refused with a message naming it.
void ForceDelete(const QString& path);
// Appends "NUL=<short path>" to the rename list "WinInit.ini" in the system folder.
// The list keeps whole entries within kPendingRemovalListLimit bytes: an entry that
// would pass it is refused, with a message naming the file, and false comes back.
bool ScheduleDeleteAtReboot(const QString& path);
constexpr qsizetype kPendingRemovalListLimit = 32768;
// The 8.3 form of an existing path ("E:\MISDOC~1\run.exe"); "" when it does not exist.
QString GetShortPath(const QString& path);
// Start-up runs the rename list left by earlier sessions: each "NUL=path" entry
// removes its file, each "new=old" entry renames, and the list is then removed.
// Returns the number of entries carried out.
int ProcessPendingRemovals();
// The rename list as a native path: <SystemFolder>\WinInit.ini, or the per-user
// system folder while start-up has not set SystemFolder.
QString PendingRemovalListPath();

// How the helper programs are run: the program's name and its arguments as a
// list, so that a name holding quotes or blanks reaches the helper whole. Tests
// install a runner that records them. The default is platform RunAndWait.
using HelperRunner = std::function<void(const QString& program, const QStringList& arguments)>;
HelperRunner SetHelperRunner(HelperRunner runner);

} // namespace vmk
