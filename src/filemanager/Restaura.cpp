#include "filemanager/Restaura.h"

#include "filemanager/Stages.h"
#include "foundation/FileServices.h"
#include "foundation/ForceDelete.h"
#include "foundation/Messages.h"
#include "foundation/Translate.h"
#include "foundation/WalkGuard.h"
#include "platform/ConfinedFolder.h"
#include "platform/DriveMap.h"
#include "platform/FileRemoval.h"
#include "platform/FileSearch.h"
#include "platform/LogicalPath.h"
#include "scanner/QuarantineKeys.h"
#include "scanner/QuarantineLedger.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <QTemporaryDir>

#include <vector>

namespace vmk
{
namespace
{
using scanner::LedgerLine;
using scanner::QuarantineLedger;

void tell(const QString& words, const QString& subject)
{
    ShowMessage(Translate(words) + QStringLiteral("\r\n") + subject, 0);
}

// The host folders below the drive root that lead to a logical folder, one name
// a level, so that the file can be written beneath the root without following a
// link on the way; nothing when the folder is not on a known drive.
std::optional<std::pair<QString, QStringList>> levelsOf(const QString& folder)
{
    const QString drive = LogicalPath::driveOf(folder);
    const QString root = DriveMap::instance().toNative(drive + u'\\');
    const QString native = DriveMap::instance().toNative(LogicalPath::withoutSlash(folder));
    if (drive.isEmpty() || root.isEmpty() || native.isEmpty())
        return std::nullopt;
    const QString base = root.endsWith(u'/') ? root : root + u'/';
    QStringList names;
    if (native != root) {
        if (!native.startsWith(base))
            return std::nullopt;
        names = native.mid(base.size()).split(u'/', Qt::SkipEmptyParts);
    }
    return std::make_pair(root, names);
}

// Copies the clear file `clearNative` to `folder` + `name`: beneath the drive
// root with no link followed, and only where nothing stands under the name.
bool placeBeneath(const QString& clearNative, const QString& folder, const QString& name)
{
    const auto levels = levelsOf(folder);
    if (!levels)
        return false;
    ConfinedFolder root(levels->first);
    if (!root.isOpen())
        return false;
    QStringList names = levels->second;
    names << DriveMap::decodeName(name);
    ConfinedFolder::Refusal why = ConfinedFolder::Refusal::None;
    std::unique_ptr<ConfinedFile> out = root.createFile(names, why);
    QFile in(clearNative);
    if (!out || !in.open(QIODevice::ReadOnly))
        return false;
    std::vector<char> block(1 << 20);
    for (;;) {
        const qint64 n = in.read(block.data(), qint64(block.size()));
        if (n < 0)
            return false;
        if (n == 0)
            break;
        if (!out->write(block.data(), n))
            return false;
    }
    return out->commitNew(QFileInfo(clearNative).lastModified().toSecsSinceEpoch());
}

// One line of the item: true when its file came back (the line is dropped).
bool restoreLine(const LedgerLine& line, const QString& sealed, const QString& nativeSealed, RestoreOutcome& outcome)
{
    const QString target = line.Folder + line.Name;
    if (FolderMissing(line.Folder)) {
        ++outcome.FolderMissing;
        tell(QStringLiteral("¡La ruta de restauración no existe!"), line.Folder);
        return false;
    }
    // The name as it stands: a twin that differs in case is another file.
    const QString nativeTarget = DriveMap::instance().toNative(LogicalPath::withoutSlash(line.Folder)) + u'/'
        + DriveMap::decodeName(line.Name);
    // A file or link of the name in the former folder is not ours to replace.
    if (FileRemoval::entryExists(nativeTarget)) {
        ++outcome.Failed;
        tell(QStringLiteral("¡El archivo ya existe en la ruta de restauración!"), target);
        return false;
    }
    // A second line of the item after its file came back finds nothing to open.
    bool placed = false;
    const auto item = FileSearch::entryOfNative(nativeSealed);
    if (item && item->kind == EntryKind::File) {
        QTemporaryDir clear(QDir::tempPath() + QStringLiteral("/vmk-restore-XXXXXX"));
        const QString clearNative = clear.filePath(QStringLiteral("item"));
        {
            const scanner::QuarantineKeys keys;
            DecryptFile(nativeSealed, clearNative);
        }
        placed = QFileInfo(clearNative).isFile() && placeBeneath(clearNative, line.Folder, line.Name);
    }
    if (!placed) {
        ++outcome.Failed;
        tell(QStringLiteral("¡Error de restauración!"), target);
        return false;
    }
    ++outcome.Restored;
    // The sealed item goes only from a folder the deleting walks accept.
    if (WalkGuard::folderForDeletingWalk(QuarantineLedger::quarantineFolder(), QStringLiteral("#QuarenteneFolder")))
        ForceDelete(sealed);
    return true;
}

// The line of `key`: its exact spelling first; a spelling of another case only
// when no line is exact, so that two items differing in case stay two.
QList<qsizetype> linesOf(const QList<LedgerLine>& lines, const QString& path)
{
    QList<qsizetype> exact, folded;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (!lines[i].sound())
            continue;
        const QString sealed = QuarantineLedger::sealedPath(lines[i].Name);
        if (sealed == path)
            exact << i;
        else if (sealed.compare(path, Qt::CaseInsensitive) == 0)
            folded << i;
    }
    return exact.isEmpty() ? folded : exact;
}
} // namespace

RestoreOutcome Restaura(const QString& selectedKey)
{
    RestoreOutcome outcome;
    const std::optional<QList<LedgerLine>> lines = QuarantineLedger::read();
    if (!lines)
        return outcome;
    const QList<qsizetype> matches = linesOf(*lines, LogicalPath::ofKey(selectedKey));
    if (matches.isEmpty())
        return outcome;
    const QString sealed = QuarantineLedger::sealedPath((*lines)[matches.first()].Name);
    // The host name is fixed once: looked up again after the item went, the
    // name would reach a twin that differs only in case.
    const QString nativeSealed = DriveMap::instance().toNative(sealed);
    QList<QByteArray> kept;
    for (qsizetype i = 0; i < lines->size(); ++i) {
        const LedgerLine& line = (*lines)[i];
        if (matches.contains(i)) {
            ++outcome.Matched;
            if (restoreLine(line, sealed, nativeSealed, outcome))
                continue;
        }
        kept << line.Raw;
    }
    if (outcome.Restored > 0)
        QuarantineLedger::rewrite(kept);
    outcome.SealedGone = !FileRemoval::entryExists(nativeSealed);
    return outcome;
}

} // namespace vmk
