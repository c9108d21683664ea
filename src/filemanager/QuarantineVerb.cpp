#include "filemanager/QuarantineVerb.h"

#include "filemanager/Transfer.h"
#include "foundation/FileServices.h"
#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Translate.h"
#include "foundation/WalkGuard.h"
#include "platform/DriveMap.h"
#include "platform/FileRemoval.h"
#include "platform/FileSearch.h"
#include "platform/LinkCheck.h"
#include "platform/LogicalPath.h"
#include "scanner/QuarantineKeys.h"
#include "scanner/QuarantineLedger.h"
#include "scanner/ThreatListModel.h"

#include <QDir>
#include <QStringList>

namespace vmk
{
namespace
{
using scanner::QuarantineLedger;

void tell(const QString& words, const QString& path)
{
    ShowMessage(Translate(words) + QStringLiteral("\r\n") + path, 0);
}

// The quarantine folder, made when missing, where the deleting walks accept it:
// the purge walks it later, so it must be a real folder strictly below the
// device root. A refused folder is told, naming #QuarenteneFolder.
bool quarantineFolderReady()
{
    const QString folder = QuarantineLedger::quarantineFolder();
    if (WalkGuard::check(folder) == WalkGuard::Missing) {
        const QString native = DriveMap::instance().toNative(LogicalPath::withoutSlash(folder));
        if (!native.isEmpty())
            QDir().mkpath(native);
    }
    return WalkGuard::folderForDeletingWalk(folder, QStringLiteral("#QuarenteneFolder")).has_value();
}

// The transfer's own values, given back after the verb: a move flag left set
// would turn the file manager's next paste of the clipboard into a move.
struct TransferStateKeeper {
    int code = G().OperationCode;
    bool move = G().MoveFlag;
    ~TransferStateKeeper()
    {
        G().OperationCode = code;
        G().MoveFlag = move;
    }
};
} // namespace

QuarantineOutcome QuarantineFile(const QString& path)
{
    const qsizetype cut = path.lastIndexOf(u'\\') + 1;
    const QString folder = path.left(cut);
    const QString name = path.mid(cut);
    if (QuarantineLedger::holdsQuarantinePath(folder)) {
        // This one text has its plain exclamation mark at the start.
        tell(QStringLiteral("!El archivo ya existe en Cuarentena!"), path);
        return QuarantineOutcome::AlreadyInQuarantine;
    }
    const QString native = DriveMap::instance().toNative(path);
    const auto entry = name.isEmpty() || native.isEmpty() ? std::nullopt : FileSearch::entryOfNative(native);
    if (!entry) {
        tell(QStringLiteral("Error, el archivo o carpeta no existe"), path);
        return QuarantineOutcome::Refused;
    }
    // A link is never followed: sealing it would carry off a file elsewhere.
    if (LinkCheck::isLink(native)) {
        tell(QStringLiteral("¡Un enlace no se pone en cuarentena!"), path);
        return QuarantineOutcome::Refused;
    }
    if (entry->kind != EntryKind::File) {
        tell(QStringLiteral("¡Solo un archivo regular se pone en cuarentena!"), path);
        return QuarantineOutcome::Refused;
    }
    if (!quarantineFolderReady())
        return QuarantineOutcome::Refused;
    // An item of that very name stays as it is; a twin that differs only in case
    // is another item, as the transfer writes the name as it stands.
    const QString nativeSealed
        = DriveMap::instance().toNative(LogicalPath::withoutSlash(QuarantineLedger::quarantineFolder())) + u'/'
        + DriveMap::decodeName(name);
    if (FileRemoval::entryExists(nativeSealed)) {
        tell(QStringLiteral("¡Ya hay en Cuarentena un archivo con ese nombre, no se sobrescribe!"), path);
        return QuarantineOutcome::Refused;
    }
    {
        const TransferStateKeeper transferState;
        const scanner::QuarantineKeys keys(true);
        G().OperationCode = TransferEncrypt;
        G().MoveFlag = true;
        G().CancelRequested = false;
        TransferItem(path, QuarantineLedger::quarantineFolder(), QString());
    }
    // The sealed item decides, as for every move: without it the source stays.
    const auto sealed = FileSearch::entryOfNative(nativeSealed);
    if (!sealed || sealed->kind != EntryKind::File) {
        tell(QStringLiteral("¡No se pudo poner el archivo en cuarentena!"), path);
        return QuarantineOutcome::Failed;
    }
    QuarantineLedger::append(name, folder);
    return QuarantineOutcome::Sealed;
}

void QuarantineTickedThreats(ThreatListModel& threats)
{
    // Two alerts of one file give two rows: the second finds its file sealed already.
    QStringList sealed;
    G().CancelRequested = false;
    for (qsizetype row = 0; row < threats.rowCountWithPending(); ++row) {
        // Barra's cancel stops before the next file; the one being sealed is finished.
        if (G().CancelRequested)
            break;
        if (!threats.isTicked(row))
            continue;
        const QString path = threats.fullPath(row);
        if (!sealed.contains(path)) {
            if (QuarantineFile(path) != QuarantineOutcome::Sealed)
                continue;
            sealed << path;
        }
        threats.setTicked(row, false);
        threats.setStatus(row, Translate(QStringLiteral("Cuarentena")));
    }
}

} // namespace vmk
