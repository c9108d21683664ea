#include "panel/DeviceIntegration.h"

#include "foundation/FileServices.h"
#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/StartUp.h"
#include "platform/DriveMap.h"
#include "platform/Registry.h"
#include "platform/RunAndWait.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>

namespace vmk::panel
{

QStringList DeviceIntegration::ShellKeys()
{
    return { QStringLiteral("Folder\\shell\\Vormak Host-USB\\Command"),
        QStringLiteral("Folder\\shell\\Vormak Host-USB"), QStringLiteral("*\\shell\\Vormak Host-USB\\Command"),
        QStringLiteral("*\\shell\\Vormak Host-USB") };
}

void DeviceIntegration::AddShellVerb(const QString& key)
{
    if (Registry::keyExists(key))
        return;
    if (!Registry::createKey(key)) {
        ShowMessage(QStringLiteral("¡Las funciones externas no han sido instaladas!"));
        return;
    }
    Registry::setDefaultValue(key,
        G().SystemFolder + QStringLiteral("\\eject.exe ") + QLatin1Char('"') + QStringLiteral("%1") + QLatin1Char('"'));
}

void DeviceIntegration::RemoveShellKey(const QString& key)
{
    Registry::deleteKey(key);
}

void DeviceIntegration::RemoveShellKeys()
{
    for (const QString& key : ShellKeys())
        RemoveShellKey(key);
}

void DeviceIntegration::RestoreAutorun(const QString& programDrive)
{
    const QString autorun = programDrive + QStringLiteral("\\AUTORUN.inf");
    const QString backup = programDrive + QStringLiteral("\\VMK\\AUTORUN.bck");
    // Released even when the file is gone, so that its mode record goes too.
    ReleaseAutorun();
    if (FileExists(backup)) {
        QFile::remove(DriveMap::instance().toNative(autorun));
        CopyFileInBlocks(backup, autorun);
    }
}

QString DeviceIntegration::EjectCommandLine(const QString& systemFolder, int languageIndex, const QString& programDrive)
{
    return QLatin1Char('"') + systemFolder + QStringLiteral("\\eject.exe") + QLatin1Char('"')
        + QString::number(languageIndex) + QLatin1Char('|') + programDrive;
}

bool DeviceIntegration::StartEjectHelper(const QString& systemFolder, int languageIndex, const QString& programDrive)
{
    const QString nativeSystem = DriveMap::instance().toNative(systemFolder);
    QDir::setCurrent(nativeSystem);
    const QStringList parts = platform::SplitCommandLine(EjectCommandLine(systemFolder, languageIndex, programDrive));
    if (parts.isEmpty())
        return false;
    const QString program = platform::ResolveProgram(parts.first());
    if (program.isEmpty())
        return false;
    QProcess helper;
    helper.setProgram(program);
    helper.setArguments(parts.mid(1));
    helper.setWorkingDirectory(nativeSystem);
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QString::fromLatin1(DriveMap::kInheritedVariable), DriveMap::instance().exportForChildren());
    helper.setProcessEnvironment(env);
    return helper.startDetached();
}

} // namespace vmk::panel
