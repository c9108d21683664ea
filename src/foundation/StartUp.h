#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace vmk
{

// The start-up steps that Splash runs before and after it is painted. Each
// step survives its failures: nothing here ends the program.

// Language.cnf beside the program: the index of its first line, 0 when the
// file is missing or the line is none of the seven names.
void SettleLanguage();

// The per-user folder that stands in for the system folder (under the XDG data
// home), as a logical path without a trailing "\".
QString SystemFolderPath();
// The seven components, in their order of installing.
QStringList ComponentFiles();
// Fills SystemFolder, copies each missing component from the program folder and
// records it as registered, and always refreshes eject.exe so that it can run
// after the device is gone, with the device files it loads (lib/eject.list),
// each copied again only when it has changed.
void SetUpComponents();
// True when the component has been recorded as registered.
bool ComponentRegistered(const QString& file);

// ProgramDrive from the drive map: the letter of the program folder and ":".
void SettleProgramDrive();

// AUTORUN.inf on the device: held open and made read-only while the program
// runs (Linux has no deny-write lock), restored to its own permissions on
// release. Nothing happens when the file is absent. The own mode is recorded
// in AutorunModeRecord() on the device for as long as the file is read-only,
// so that a start after a run that ended without a release (killed, device
// pulled) gives the file its own mode back rather than taking the read-only
// one for it.
QString AutorunModeRecord();
bool GuardAutorun();
void ReleaseAutorun();
bool AutorunGuarded();

// The engine is started from the program folder; a failure is told with a
// message that stays Spanish, and EngineLoaded says how it went.
void StartEngine(const std::function<int()>& loadEngine);

} // namespace vmk
