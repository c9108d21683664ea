#include "foundation/StartUp.h"

#include "foundation/FileServices.h"
#include "foundation/ForceDelete.h"
#include "foundation/Globals.h"
#include "foundation/LanguageFile.h"
#include "foundation/Messages.h"
#include "foundation/Translate.h"
#include "platform/DriveMap.h"
#include "platform/LogicalPath.h"
#include "platform/Pump.h"
#include "platform/Registry.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <memory>

namespace vmk
{
namespace
{
// Components are recorded under this key of the registry stand-in, one subkey
// each, with the installed path as the value.
const QString kRegisteredKey = QStringLiteral("Vormak\\Components\\");

struct AutorunGuardState {
    std::unique_ptr<QFile> file;
    QFileDevice::Permissions permissions;
};

AutorunGuardState& autorunGuard()
{
    static AutorunGuardState state;
    return state;
}

QString programFile(const QString& name)
{
    return LogicalPath::join(G().ProgramFolder, name);
}

QString systemFile(const QString& name)
{
    return LogicalPath::join(G().SystemFolder, name);
}

// Copies a component into the system folder; the copy keeps the source's
// permissions so that a program stays runnable.
bool installComponent(const QString& name)
{
    const QString source = programFile(name);
    const QString target = systemFile(name);
    if (!FileExists(source))
        return false;
    if (!CopyFileInBlocks(source, target))
        return false;
    const DriveMap& map = DriveMap::instance();
    QFile::setPermissions(map.toNative(target), QFileInfo(map.toNative(source)).permissions());
    return true;
}
} // namespace

void SettleLanguage()
{
    G().LanguageIndex = ReadLanguageFile(G().ProgramFolder, G().LanguageIndex);
}

QString SystemFolderPath()
{
    const QString native
        = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/Vormak/system");
    QDir().mkpath(native);
    return LogicalPath::withoutSlash(DriveMap::instance().toLogical(native));
}

QStringList ComponentFiles()
{
    return { QStringLiteral("aaxDriveManager.ocx"), QStringLiteral("xceedzip.dll"), QStringLiteral("xceedcry.dll"),
        QStringLiteral("xceedFtp.dll"), QStringLiteral("mswsock.dll"), QStringLiteral("MSWINSCK.OCX"),
        QStringLiteral("MSCOMCT2.OCX") };
}

bool ComponentRegistered(const QString& file)
{
    return Registry::keyExists(kRegisteredKey + file);
}

void SetUpComponents()
{
    G().SystemFolder = SystemFolderPath();
    for (const QString& file : ComponentFiles()) {
        // Presence is the only test: a component already there is left alone.
        if (FileExists(systemFile(file)))
            continue;
        if (installComponent(file)) {
            Registry::createKey(kRegisteredKey + file);
            Registry::setDefaultValue(kRegisteredKey + file, systemFile(file));
        }
    }
    // eject.exe is refreshed at every start; a copy that cannot be replaced stays.
    const QString eject = systemFile(QStringLiteral("eject.exe"));
    if (FileExists(programFile(QStringLiteral("eject.exe")))) {
        QFile::remove(DriveMap::instance().toNative(eject));
        installComponent(QStringLiteral("eject.exe"));
    }
}

void SettleProgramDrive()
{
    const QString drive = LogicalPath::driveOf(G().ProgramFolder);
    if (!drive.isEmpty())
        G().ProgramDrive = drive;
}

bool GuardAutorun()
{
    AutorunGuardState& guard = autorunGuard();
    if (guard.file)
        return true;
    const QString native = DriveMap::instance().toNative(G().ProgramDrive + QStringLiteral("\\AUTORUN.inf"));
    if (!QFileInfo(native).isFile())
        return false;
    auto file = std::make_unique<QFile>(native);
    if (!file->open(QIODevice::ReadOnly))
        return false;
    guard.permissions = file->permissions();
    file->setPermissions(guard.permissions
        & ~(QFileDevice::WriteOwner | QFileDevice::WriteUser | QFileDevice::WriteGroup | QFileDevice::WriteOther));
    guard.file = std::move(file);
    return true;
}

void ReleaseAutorun()
{
    AutorunGuardState& guard = autorunGuard();
    if (!guard.file)
        return;
    guard.file->setPermissions(guard.permissions);
    guard.file->close();
    guard.file.reset();
}

bool AutorunGuarded()
{
    return autorunGuard().file != nullptr;
}

void StartEngine(const std::function<int()>& loadEngine)
{
    DoEvents();
    QDir::setCurrent(DriveMap::instance().toNative(G().ProgramFolder));
    const int r = loadEngine ? loadEngine() : -1;
    if (r == 0) {
        G().EngineLoaded = true;
        return;
    }
    G().EngineLoaded = false;
    // The key has no opening sign while the table's row has one, so this
    // message is never translated.
    ShowMessage(Translate(QStringLiteral("Error iniciando servicio!")) + QStringLiteral(" (") + QString::number(r)
        + QLatin1Char(')'));
}

} // namespace vmk
