#pragma once

#include "foundation/Globals.h"
#include "foundation/Settings.h"

#include "TestSupport.h"
#include "TreeDrives.h"

#include <QDir>
#include <QStringList>

#include <utility>

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

// A folder device for `vmk backup` and `vmk restore`: DEV/VMK holds the settings,
// sealed as the program keeps them (no scan, deflate, the backups folder
// DEV\Respaldos\). Returns the options that point vmk at it.
inline QStringList MakeVmkBackupDevice(const QString& dev)
{
    QDir().mkpath(dev + QStringLiteral("/VMK"));
    QDir().mkpath(dev + QStringLiteral("/Respaldos"));
    QByteArray settings;
    for (const auto& [key, value] : { std::pair { "#ScanBeforeBackup", "0" },
             std::pair { "#BackupsFolder", "\\Respaldos\\" }, std::pair { "#BCompAlgorithm", "2" } })
        settings += QByteArray(key) + "=" + runVmk({ "seal", value }).out.trimmed().toUtf8() + "\r\n";
    writeFile(dev + QStringLiteral("/VMK/VMK.cnf"), settings);
    return { QStringLiteral("--program-folder"), dev + QStringLiteral("/VMK"), QStringLiteral("--device"), dev };
}

} // namespace vmk::test
