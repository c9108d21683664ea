#include "filemanager/Transfer.h"

#include "components/zip/ZipArchiver.h"
#include "filemanager/StageValues.h"
#include "filemanager/Stages.h"
#include "foundation/FileServices.h"
#include "foundation/ForceDelete.h"
#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Progress.h"
#include "foundation/Settings.h"
#include "foundation/Translate.h"
#include "foundation/WalkGuard.h"
#include "platform/ConfinedFolder.h"
#include "platform/DriveMap.h"
#include "platform/FileRemoval.h"
#include "platform/FileReplace.h"
#include "platform/FileSearch.h"
#include "platform/LinkCheck.h"
#include "platform/LogicalPath.h"
#include "platform/MountTable.h"
#include "platform/Pump.h"
#include "platform/Trash.h"
#include "scanner/Antivir.h"
#include "scanner/ScanAhead.h"

#include <QHash>
#include <QRandomGenerator>
#include <QThread>

#include <algorithm>
#include <memory>
#include <utility>

namespace vmk
{
namespace
{
TransferLabelsHook& labelsSlot()
{
    static TransferLabelsHook hook;
    return hook;
}

void showLabels(const QString& name, const QString& folder)
{
    if (labelsSlot())
        labelsSlot()(name, folder);
}

void tell(const QString& spanish, const QString& subject)
{
    ShowMessage(Translate(spanish) + QStringLiteral("\r\n") + subject, 0);
}

// The item being carried: where its links must stay, and the scans running ahead
// of the walk.
struct ItemContext {
    QString root; // resolved host folder that links met in the source must stay in
    std::unique_ptr<ScanAhead> ahead;
    QStringList planned; // host paths of the files to scan first, in the walk's order
    QHash<QString, qsizetype> position; // index into planned
    QList<qint64> tickets; // ticket of each submitted entry of planned
    bool collecting = false;
};
ItemContext* g_item = nullptr;

// The scans run this many files ahead of the copy, so that scanning and writing
// overlap; the window bounds what a cancel throws away.
int scanJobs()
{
    return std::clamp(QThread::idealThreadCount(), 1, 4);
}

bool scansSourceFirst(int code)
{
    return code == TransferCopy || code == TransferEncrypt || code == TransferCompress;
}

QString nameOf(const QString& native)
{
    return native.mid(native.lastIndexOf(u'/') + 1);
}

QString parentOf(const QString& native)
{
    const qsizetype cut = native.lastIndexOf(u'/');
    return cut <= 0 ? QStringLiteral("/") : native.left(cut);
}

QString joinNative(const QString& folder, const QString& name)
{
    return folder.endsWith(u'/') ? folder + name : folder + u'/' + name;
}

// The logical form of a host path that exists, each component under its exact
// name, so that the services resolving it back find that very entry.
QString logicalOf(const QString& native, const QString& fallback)
{
    const QString logical = DriveMap::instance().toLogical(native);
    return logical.isEmpty() ? fallback : logical;
}

// Links are carried only when they lead to a file within the item's own tree: a
// link in a copied folder never brings in what lies outside it.
bool staysInTree(const FoundEntry& entry)
{
    if (!LinkCheck::isLink(entry.nativePath))
        return true;
    const QString target = LinkCheck::resolved(entry.nativePath);
    return g_item && !target.isEmpty() && MountTable::isUnder(target, g_item->root);
}

// Files a copying walk carries; the rest (links leading out, FIFOs, sockets,
// devices, dangling links) are named and left.
bool carried(const FoundEntry& entry)
{
    return entry.kind == EntryKind::File && staysInTree(entry);
}

void submitAhead(qsizetype upTo)
{
    ItemContext& c = *g_item;
    const qsizetype last = std::min(upTo, c.planned.size() - 1);
    while (c.tickets.size() <= last)
        c.tickets.append(c.ahead->submit(c.planned.at(c.tickets.size())));
}

FileScanResult scanResultOf(const QString& native)
{
    if (g_item && g_item->ahead) {
        const auto found = g_item->position.constFind(native);
        if (found != g_item->position.constEnd()) {
            submitAhead(found.value() + 4 * g_item->ahead->jobs());
            return g_item->ahead->take(g_item->tickets.at(found.value()), [] { DoEvents(); });
        }
    }
    return ScanOneFile(native);
}

bool deleteFile(const QString& logical, const QString& native)
{
    const QString mode = S().DeleteFilesMode;
    if (mode == QLatin1String("0"))
        ForceDelete(native);
    else if (mode == QLatin1String("1"))
        Trash::moveToTrash(native);
    // "2" leaves the file where it is; the caller finds it still there and says so.
    const bool gone = !FileRemoval::entryExists(native);
    if (!gone)
        TN().Failed << logical;
    return gone;
}

// One file through the stage of the operation into `destFolder`. The result is
// made under a temporary name beside its place and renamed into it when whole and
// accepted by the scan: a failed, cancelled or refused stage leaves no file under
// the name, a link standing there is replaced, never written through, and a name
// that differs only in case from another in the folder stays its own.
bool carryFile(const QString& srcLogical, const QString& srcNative, const QString& destFolderLogical,
    const QString& destFolderNative, const QString& nameNative, const QString& nameLogical)
{
    const int code = G().OperationCode;
    const QString destNative = joinNative(destFolderNative, nameNative);
    const QString destLogical = LogicalPath::join(destFolderLogical, nameLogical);
    if (FileRemoval::entryExists(destNative) && LinkCheck::sameEntry(srcNative, destNative)) {
        tell(QStringLiteral("¡El origen y el destino son el mismo archivo!"), destLogical);
        TN().Failed << srcLogical;
        return false;
    }
    const bool scanning = TransferScans();
    if (scanning && scansSourceFirst(code) && SideScanForExclusion(srcLogical, scanResultOf(srcNative))) {
        TN().Excluded << srcLogical;
        return false;
    }

    const QString tempName = QStringLiteral(".vmk-") + QString::number(QRandomGenerator::global()->generate(), 16)
        + QStringLiteral(".part");
    const QString tempLogical = LogicalPath::join(destFolderLogical, tempName);
    const QString tempNative = joinNative(destFolderNative, tempName);
    switch (code) {
    case TransferCopy:
        CopyFileInBlocks(srcNative, tempNative);
        break;
    case TransferEncrypt:
        EncryptFile(srcLogical, tempLogical);
        break;
    case TransferDecrypt:
        DecryptFile(srcLogical, tempLogical);
        break;
    case TransferCompress: {
        zip::ZipArchiver zipControl;
        CompressFile(srcLogical, tempLogical, zipControl);
        break;
    }
    case TransferDecompress: {
        zip::ZipArchiver zipControl;
        SV().ArchiveEntryName = tempName;
        DecompressFile(srcLogical, destFolderLogical, zipControl);
        SV().ArchiveEntryName.clear();
        break;
    }
    default:
        return false;
    }
    if (!LinkCheck::isRegularFile(tempNative)) {
        if (FileRemoval::entryExists(tempNative))
            ForceDelete(tempNative);
        if (!G().CancelRequested)
            TN().Failed << srcLogical;
        return false;
    }
    // A result that could only be judged once made is scanned before it takes its name.
    if (scanning && !scansSourceFirst(code) && SideScanForExclusion(destLogical, ScanOneFile(tempNative))) {
        ForceDelete(tempNative);
        TN().Excluded << srcLogical;
        return false;
    }
    bool placed = FileReplace::move(tempNative, destNative);
    if (!placed && FileRemoval::entryExists(destNative)
        && !(FileSearch::attributesOfNative(destNative) & AttrDirectory)) {
        ForceDelete(destNative);
        placed = FileReplace::move(tempNative, destNative);
    }
    if (!placed) {
        ForceDelete(tempNative);
        TN().Failed << srcLogical;
        return false;
    }
    TN().Done << destLogical;
    // The source goes only when its result stands.
    if (G().MoveFlag && FileRemoval::entryExists(destNative))
        ForceDelete(srcNative);
    return true;
}

void countNative(const QString& srcNative)
{
    const int code = G().OperationCode;
    for (const FoundEntry& e : FileSearch::listNative(srcNative)) {
        DoEvents();
        if (G().CancelRequested)
            return;
        if (e.kind == EntryKind::Folder) {
            countNative(e.nativePath);
        } else if (code == TransferDelete || carried(e)) {
            ++G().TotalFiles;
            if (g_item && g_item->collecting) {
                g_item->position.insert(e.nativePath, g_item->planned.size());
                g_item->planned << e.nativePath;
            }
        }
    }
}

// Makes (or enters) the folder `name` below `parentNative` without following a
// link standing under that name; "" when it cannot be used.
QString targetFolder(const QString& parentNative, const QString& name, const QString& shown)
{
    if (name.isEmpty())
        return parentNative;
    ConfinedFolder parent(parentNative);
    const ConfinedFolder::Refusal why = parent.makeFolders({ name });
    if (why == ConfinedFolder::Refusal::None)
        return joinNative(parentNative, name);
    if (why == ConfinedFolder::Refusal::LinkOnPath)
        tell(QStringLiteral("¡La carpeta destino es un enlace, no se escribe en ella!"), shown);
    else
        tell(QStringLiteral("¡Ruta destino inválida!"), shown);
    return {};
}

void walkFolder(const QString& srcLogical, const QString& srcNative, const QString& destParentLogical,
    const QString& destParentNative, const QString& nameNative)
{
    const int code = G().OperationCode;
    QString destNative;
    QString destLogical;
    if (code != TransferDelete) {
        const QString shown = nameNative.isEmpty()
            ? destParentLogical
            : LogicalPath::join(destParentLogical, DriveMap::encodeName(nameNative));
        destNative = targetFolder(destParentNative, nameNative, shown);
        if (destNative.isEmpty()) {
            TN().Failed << srcLogical;
            return;
        }
        destLogical = logicalOf(destNative, shown);
    }
    const QString folderShown = LogicalPath::withoutSlash(srcLogical);
    for (const FoundEntry& e : FileSearch::listNative(srcNative)) {
        DoEvents();
        if (G().CancelRequested)
            break;
        const QString entryLogical = LogicalPath::join(srcLogical, e.name);
        const QString entryNameNative = nameOf(e.nativePath);
        if (e.kind == EntryKind::Folder) {
            walkFolder(LogicalPath::withSlash(entryLogical), e.nativePath, destLogical, destNative, entryNameNative);
            continue;
        }
        if (code == TransferDelete) {
            // Links, FIFOs and the like go themselves; nothing behind them is touched.
            ++G().DoneFiles;
            showLabels(e.name, folderShown);
            ProgressBarT(G().TotalFiles > 0 ? G().DoneFiles * 100 / G().TotalFiles : 100);
            ProgressBarF(0);
            deleteFile(entryLogical, e.nativePath);
            continue;
        }
        if (!carried(e)) {
            tell(QStringLiteral("¡Enlace o archivo especial, no se copia!"), entryLogical);
            TN().Failed << entryLogical;
            continue;
        }
        const QString destFile = joinNative(destNative, entryNameNative);
        if (FileRemoval::entryExists(destFile)) {
            // Shown as it stands: the name follows the question.
            const QString question
                = QStringLiteral("¿El archivo ya existe, desea remplazarlo?") + QStringLiteral("\r\n") + e.name;
            if (ShowMessage(question, 4) != 6) {
                TN().Kept << LogicalPath::join(destLogical, e.name);
                continue;
            }
        }
        ++G().DoneFiles;
        showLabels(e.name, folderShown);
        ProgressBarT(G().TotalFiles > 0 ? G().DoneFiles * 100 / G().TotalFiles : 100);
        ProgressBarF(0);
        carryFile(entryLogical, e.nativePath, destLogical, destNative, entryNameNative, e.name);
    }
    // Only an emptied folder goes: one holding a kept file or what a cancel left stays.
    if (code == TransferDelete || G().MoveFlag)
        FileRemoval::makeWritableAndRemove(srcNative, true);
}

// Refuses a folder carried into itself or below itself: the walk would see what
// it creates, and a copy onto itself would replace each file by itself.
bool intoItself(const QString& srcNative, const QString& targetNative, const QString& nameNative)
{
    const QString source = LinkCheck::resolved(srcNative);
    const QString target = LinkCheck::resolved(targetNative);
    if (source.isEmpty() || target.isEmpty())
        return false;
    if (MountTable::isUnder(target, source))
        return true;
    return LinkCheck::sameEntry(joinNative(targetNative, nameNative), srcNative);
}
} // namespace

TransferNotes& TN()
{
    static TransferNotes notes;
    return notes;
}

TransferLabelsHook SetTransferLabelsHook(TransferLabelsHook hook)
{
    return std::exchange(labelsSlot(), std::move(hook));
}

bool TransferScans()
{
    return S().ScanFilesOperations == QLatin1String("1") && G().EngineLoaded;
}

bool ScanTransferFile(const QString& path)
{
    return SideScanForExclusion(path, scanResultOf(DriveMap::instance().nativeOfArgument(path)));
}

void CountFiles(const QString& sourceFolder, const QString&, const QString&)
{
    countNative(DriveMap::instance().nativeOfArgument(LogicalPath::withoutSlash(sourceFolder)));
}

void TransferFolder(const QString& sourceFolder, const QString& targetBase, const QString& folderName)
{
    const DriveMap& map = DriveMap::instance();
    const QString srcNative = map.nativeOfArgument(LogicalPath::withoutSlash(sourceFolder));
    if (G().OperationCode == TransferDelete) {
        walkFolder(LogicalPath::withSlash(sourceFolder), srcNative, QString(), QString(), QString());
        return;
    }
    const QString baseNative = map.nativeOfArgument(LogicalPath::withoutSlash(targetBase));
    walkFolder(LogicalPath::withSlash(sourceFolder), srcNative, LogicalPath::withoutSlash(targetBase), baseNative,
        DriveMap::decodeName(folderName));
}

void TransferItem(const QString& source, const QString& target, const QString& folderName)
{
    TN() = TransferNotes();
    const int code = G().OperationCode;
    QString src = source;
    QString folder = folderName;
    const DriveMap& map = DriveMap::instance();
    if (code == TransferDelete) {
        src = target;
        folder.clear();
    } else if (FolderMissing(target)) {
        TN().Refused = Translate(QStringLiteral("¡Ruta destino inválida!"));
        tell(QStringLiteral("¡Ruta destino inválida!"), target);
        return;
    }
    const QString srcNative = map.nativeOfArgument(LogicalPath::withoutSlash(src));
    const auto entry = FileSearch::entryOfNative(srcNative);
    ItemContext context;
    g_item = &context;
    struct Release {
        ~Release() { g_item = nullptr; }
    } release;

    if (entry && entry->kind == EntryKind::Folder) {
        G().TotalFiles = 0;
        G().DoneFiles = 0;
        const QString srcFolder = LogicalPath::withSlash(src);
        // A walk that removes what it has carried, or deletes, stays in a folder the
        // user may lose: never a drive's root, a link, or the program's own folder.
        if (code == TransferDelete || G().MoveFlag) {
            const QString key = code == TransferDelete ? QStringLiteral("Delete") : QStringLiteral("Cut");
            if (!WalkGuard::chosenFolderForDeletingWalk(LogicalPath::withoutSlash(src), key)) {
                TN().Refused
                    = Translate(WalkGuard::refusalText(WalkGuard::checkChosen(LogicalPath::withoutSlash(src))));
                return;
            }
        }
        if (code != TransferDelete) {
            const QString targetNative = map.nativeOfArgument(LogicalPath::withoutSlash(target));
            if (intoItself(srcNative, targetNative, DriveMap::decodeName(folder))) {
                TN().Refused = Translate(QStringLiteral("¡No se puede copiar o mover una carpeta dentro de sí misma!"));
                tell(QStringLiteral("¡No se puede copiar o mover una carpeta dentro de sí misma!"), srcFolder);
                return;
            }
        }
        context.root = LinkCheck::resolved(srcNative);
        context.collecting = code != TransferDelete && TransferScans() && scansSourceFirst(code);
        CountFiles(srcFolder, target, folder);
        if (context.collecting && !context.planned.isEmpty()) {
            context.ahead = std::make_unique<ScanAhead>(scanJobs());
            submitAhead(4 * context.ahead->jobs() - 1);
        }
        if (!G().CancelRequested)
            TransferFolder(srcFolder, target, folder);
        return;
    }

    G().TotalFiles = 1;
    G().DoneFiles = 1;
    const QString logical = LogicalPath::withoutSlash(src);
    const qsizetype cut = logical.lastIndexOf(u'\\');
    const QString name = logical.mid(cut + 1);
    const QString from = cut > 0 ? logical.left(cut) : QString();
    showLabels(name, from.mid(from.lastIndexOf(u'\\') + 1));
    if (!entry) {
        TN().Failed << logical;
        return;
    }
    if (code == TransferDelete) {
        deleteFile(logical, srcNative);
        return;
    }
    context.root = LinkCheck::resolved(parentOf(srcNative));
    if (entry->kind != EntryKind::File || !staysInTree(*entry)) {
        tell(QStringLiteral("¡Enlace o archivo especial, no se copia!"), logical);
        TN().Failed << logical;
        return;
    }
    const QString targetNative = map.nativeOfArgument(LogicalPath::withoutSlash(target));
    carryFile(logical, srcNative, logicalOf(targetNative, LogicalPath::withoutSlash(target)), targetNative,
        nameOf(srcNative), entry->name);
}

} // namespace vmk
