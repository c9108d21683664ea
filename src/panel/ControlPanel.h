#pragma once

#include "panel/SignatureUpdate.h"

#include <QDate>
#include <QString>

namespace vmk::panel
{

// The control panel's logic, apart from its window: what Form1's load, its
// timers, the update and the two ways to quit do to the settings, the engine,
// the device and the host. Paths are logical ("E:\..."), built from the
// process-wide values at each use.
class ControlPanel
{
public:
    // The maker's web site, opened by Noticias and Ayuda.
    static const char* const kWebAddress;

    // The program folder with a trailing "\".
    QString ProgramFolderSlash() const;

    // Noticias, Ayuda: the desktop's opener with the web address.
    void OpenWebSite() const;

    // Load, step 5: the five folders of the settings, each missing one told.
    void CheckFolders() const;
    // Load, step 6: the quarantine purge when #DeleteFilesOpt is 1; the number
    // of files removed.
    int PurgeQuarantine(const QDate& today) const;
    // Load, step 7 and after an update: the caption of Label8, "-----" without an index.
    QString SignatureCaption() const;
    bool SignatureIndexExists() const;
    // The five-day question; true when the user wants the update now.
    bool AskForOldSignatures(const QString& caption, const QDate& today) const;
    // Why the engine is not running, in words and translated, with the folder
    // it concerns and the code after them; empty while it runs.
    QString EngineFailure() const;
    // Load, step 9: engine values 52 and 55 as the labels show them.
    QString EngineVersionText() const;
    QString EngineCountText() const;
    // Load, step 10.
    void PushOptions() const;

    // Timer1: the figures of the program's drive in whole megabytes.
    void ReadDrive(qint64* freeMB, qint64* totalMB) const;
    // Timer1, step 3: the literal "Vormak.exe" in the program folder.
    bool ProgramFileExists() const;
    // The device is gone: the four shell keys go, nothing else is touched.
    void DevicePulled() const;

    // The update: runs avupdate.exe with the pump alive and judges its log.
    UpdateVerdict RunUpdater() const;
    // After a yes to the restart question; the results are not looked at.
    void RestartEngine() const;

    // Shut-down, common to both ways: engine unloaded (a failure is told),
    // AUTORUN.inf released and restored from \VMK\AUTORUN.bck.
    void ShutDownServices() const;
    // The eject way: the current folder goes to the system folder and the
    // helper is started without waiting. False when it could not start.
    bool StartEjectHelper() const;
};

} // namespace vmk::panel
