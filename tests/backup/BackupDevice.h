#pragma once

#include "foundation/Globals.h"
#include "foundation/Settings.h"

#include "TreeDrives.h"

#include <QDir>

namespace vmk::test
{

// For the length of a test: a host C: and a device E: (TreeDrives) with the backups
// folder E:\Respaldos\ and the settings of a plain run (deflate, no scan before);
// the settings and the engine flag come back afterwards.
class BackupDevice : public TreeDrives
{
public:
    BackupDevice()
        : m_saved(S())
    {
        S().BackupsFolder = QStringLiteral("\\Respaldos\\");
        S().BCompAlgorithm = 2;
        S().ScanBeforeBackup = QStringLiteral("0");
        QDir().mkpath(backups());
    }
    ~BackupDevice()
    {
        S() = m_saved;
        G().EngineLoaded = false;
    }
    QString backups() const { return device() + QStringLiteral("/Respaldos"); }

private:
    SettingsValues m_saved;
};

} // namespace vmk::test
