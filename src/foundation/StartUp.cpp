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
#include <QRegularExpression>
#include <QSaveFile>
#include <QStandardPaths>

#include <memory>
#include <optional>

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
    QString record; // native path of the mode record written for this run
};

constexpr QFileDevice::Permissions kWriteBits
    = QFileDevice::WriteOwner | QFileDevice::WriteUser | QFileDevice::WriteGroup | QFileDevice::WriteOther;

// The nine mode bits, from 0400 down to 0001.
constexpr QFileDevice::Permission kModeBits[9] = { QFileDevice::ReadOwner, QFileDevice::WriteOwner,
    QFileDevice::ExeOwner, QFileDevice::ReadGroup, QFileDevice::WriteGroup, QFileDevice::ExeGroup,
    QFileDevice::ReadOther, QFileDevice::WriteOther, QFileDevice::ExeOther };
constexpr QFileDevice::Permission kUserBits[3]
    = { QFileDevice::ReadUser, QFileDevice::WriteUser, QFileDevice::ExeUser };

// Permissions as an octal mode ("0644") and back; the "user" bits are the
// owner's as this process sees them and are not recorded.
QString modeText(QFileDevice::Permissions p)
{
    int mode = 0;
    for (int i = 0; i < 9; ++i)
        if (p & kModeBits[i])
            mode |= 0400 >> i;
    return QStringLiteral("0%1").arg(mode, 3, 8, QLatin1Char('0'));
}

std::optional<QFileDevice::Permissions> permissionsOf(const QByteArray& text)
{
    static const QRegularExpression octal(QStringLiteral("^0?[0-7]{3}$"));
    const QString t = QString::fromLatin1(text.trimmed());
    if (!octal.match(t).hasMatch())
        return std::nullopt;
    const int mode = t.toInt(nullptr, 8);
    QFileDevice::Permissions p;
    for (int i = 0; i < 9; ++i)
        if (mode & (0400 >> i)) {
            p |= kModeBits[i];
            if (i < 3)
                p |= kUserBits[i];
        }
    return p;
}

// Compares the mode bits only (the "user" bits follow the owner's here).
bool sameMode(QFileDevice::Permissions a, QFileDevice::Permissions b)
{
    return modeText(a) == modeText(b);
}

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

// A line of lib/eject.list: a path below the program folder, "/" between
// names. Anything that could reach outside the system folder is passed over.
bool isPlainRelativePath(const QString& path)
{
    if (path.isEmpty() || path.startsWith(QLatin1Char('/')) || path.contains(QLatin1Char('\\'))
        || path.contains(QLatin1Char(':')))
        return false;
    const QStringList names = path.split(QLatin1Char('/'));
    for (const QString& name : names) {
        if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String(".."))
            return false;
    }
    return true;
}

// eject.exe runs after the device is gone, so the libraries, Qt plugins,
// qt.conf and fonts it loads from the device (lib/eject.list, written when the
// device is laid out) are copied beside it, keeping their folders. This keeps
// one eject.exe, with its window and the suite's drive-letter rule and
// translation table, rather than a C-library-only build that would need a
// second copy of both. A file is copied only when it is missing or differs in
// size or time, so later starts copy nothing.
void installEjectRuntime()
{
    const DriveMap& map = DriveMap::instance();
    QFile list(map.toNative(programFile(QStringLiteral("lib\\eject.list"))));
    if (!list.open(QIODevice::ReadOnly))
        return;
    const QList<QByteArray> lines = list.readAll().split('\n');
    for (const QByteArray& line : lines) {
        const QString path = QString::fromUtf8(line.trimmed());
        if (!isPlainRelativePath(path))
            continue;
        QString name = path;
        name.replace(QLatin1Char('/'), QLatin1Char('\\'));
        const QFileInfo source(map.toNative(programFile(name)));
        const QString target = map.toNative(G().SystemFolder + QLatin1Char('\\') + name);
        const QFileInfo installed(target);
        if (!source.isFile()
            || (installed.isFile() && installed.size() == source.size()
                && installed.lastModified() == source.lastModified()))
            continue;
        QDir().mkpath(installed.absolutePath());
        if (!installComponent(name))
            continue;
        QFile copy(target);
        if (copy.open(QIODevice::ReadWrite))
            copy.setFileTime(source.lastModified(), QFileDevice::FileModificationTime);
    }
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
    installEjectRuntime();
}

void SettleProgramDrive()
{
    const QString drive = LogicalPath::driveOf(G().ProgramFolder);
    if (!drive.isEmpty())
        G().ProgramDrive = drive;
}

QString AutorunModeRecord()
{
    return G().ProgramDrive + QStringLiteral("\\VMK\\AUTORUN.mode");
}

bool GuardAutorun()
{
    AutorunGuardState& guard = autorunGuard();
    if (guard.file)
        return true;
    const DriveMap& map = DriveMap::instance();
    const QString native = map.toNative(G().ProgramDrive + QStringLiteral("\\AUTORUN.inf"));
    const QString record = map.toNative(AutorunModeRecord());
    if (!QFileInfo(native).isFile()) {
        // A record without its file tells nothing any more.
        QFile::remove(record);
        return false;
    }
    auto file = std::make_unique<QFile>(native);
    if (!file->open(QIODevice::ReadOnly))
        return false;
    QFileDevice::Permissions own = file->permissions();
    // A record left by a run that could not give the mode back (killed, or its
    // device pulled): while the file still has exactly the read-only mode that
    // run gave it, the recorded mode is the file's own. A mode changed since
    // then is someone else's choice and is kept.
    QFile recorded(record);
    if (recorded.open(QIODevice::ReadOnly)) {
        const auto before = permissionsOf(recorded.read(16));
        recorded.close();
        if (before && sameMode(own, *before & ~kWriteBits))
            own = *before;
    }
    guard.permissions = own;
    // The mode is taken away only once it is recorded where the next start
    // finds it, on the device itself.
    QDir().mkpath(QFileInfo(record).absolutePath());
    QSaveFile out(record);
    const bool kept = out.open(QIODevice::WriteOnly)
        && out.write((modeText(own) + QStringLiteral("\r\n")).toLatin1()) > 0 && out.commit();
    if (kept) {
        guard.record = record;
        file->setPermissions(own & ~kWriteBits);
    } else {
        file->setPermissions(own);
    }
    guard.file = std::move(file);
    return true;
}

void ReleaseAutorun()
{
    AutorunGuardState& guard = autorunGuard();
    if (!guard.file)
        return;
    const bool exists = guard.file->exists();
    const bool restored = !exists || guard.file->setPermissions(guard.permissions);
    guard.file->close();
    guard.file.reset();
    // Without the file's mode given back (the device is gone), the record stays
    // for the next start.
    if (restored && !guard.record.isEmpty())
        QFile::remove(guard.record);
    guard.record.clear();
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
