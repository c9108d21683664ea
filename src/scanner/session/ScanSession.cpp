#include "scanner/session/ScanSession.h"

#include "scanner/QuarantineKeys.h"
#include "scanner/QuarantineLedger.h"

#include "filemanager/Stages.h"
#include "foundation/ForceDelete.h"
#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Settings.h"
#include "foundation/Translate.h"
#include "platform/DriveMap.h"
#include "platform/FileSearch.h"
#include "platform/Pump.h"
#include "scanner/Antivir.h"
#include "scanner/MemoryScan.h"
#include "scanner/QuarantineKeys.h"
#include "scanner/QuarantineLedger.h"
#include "scanner/ScanAhead.h"

#include <QDir>
#include <QHash>
#include <QTemporaryDir>
#include <QThread>

#include <deque>
#include <vector>

namespace vmk
{
namespace
{

QString nativeOf(const QString& logical)
{
    return DriveMap::instance().toNative(logical);
}

// One entry of a folder walk, in the order the depth-first walk meets it.
struct WalkItem {
    QString Folder; // logical, ending in "\"
    QString Name;
    QString NativePath;
    EntryKind Kind = EntryKind::File;
    int Level = 0; // which folder level (one per ScanFolder of the recursion)
};

// ScanFolder's recursion as a sequence: entries come out in the filesystem's
// order, and a folder's own entries follow it at once (depth-first). Folders with
// the junction word (directory links, kernel filesystems) are not entered.
class FolderWalk
{
public:
    explicit FolderWalk(const QString& folder)
    {
        const auto entry = FileSearch::entryOfNative(nativeOf(folder));
        if (entry && entry->kind == EntryKind::Folder)
            enter(folder, entry->nativePath);
    }

    bool next(WalkItem& out)
    {
        while (!m_stack.empty()) {
            Frame& f = m_stack.back();
            if (f.Next >= f.Entries.size()) {
                m_stack.pop_back();
                continue;
            }
            const FoundEntry e = f.Entries.at(f.Next++);
            // A name is cut at its first NUL, as the listing of the system gives it.
            const QString name = e.name.left(e.name.indexOf(QChar(u'\0')));
            out = WalkItem { f.Folder, name, e.nativePath, e.kind, f.Level };
            if (e.kind == EntryKind::Folder && e.attributes != AttrJunction)
                enter(f.Folder + name + u'\\', e.nativePath);
            return true;
        }
        return false;
    }

private:
    struct Frame {
        QList<FoundEntry> Entries;
        qsizetype Next = 0;
        QString Folder;
        int Level = 0;
    };
    void enter(const QString& folder, const QString& native)
    {
        m_stack.push_back(Frame { FileSearch::listNative(native), 0, folder, m_levels++ });
    }

    std::vector<Frame> m_stack;
    int m_levels = 0;
};

bool isSkippedFolder(const WalkItem& item)
{
    return item.Kind == EntryKind::Folder || item.Kind == EntryKind::Junction;
}

} // namespace

struct ScanSession::Pending {
    WalkItem Item;
    qint64 Ticket = -1; // scanned ahead when not -1
};

ScanSession::ScanSession(QObject* parent)
    : QObject(parent)
{
}

ScanSession::~ScanSession() = default;

void ScanSession::setJobs(int jobs)
{
    if (!m_running)
        m_jobs = qMax(1, jobs);
}

bool ScanSession::IsQuarantineItem(const QString& path)
{
    return scanner::QuarantineLedger::holdsQuarantinePath(path);
}

void ScanSession::Pause()
{
    m_scanPause = true;
}

void ScanSession::Continue()
{
    m_scanPause = false;
}

void ScanSession::Stop()
{
    m_scanAbort = true;
    m_scanPause = false;
}

void ScanSession::Start(const QStringList& listAdd)
{
    if (m_running)
        return;
    m_running = true;
    m_txtinftot = m_txtinfFiles = m_txtNtot = m_txtskiptot = m_txtscantot = 0;
    emit countersChanged();
    m_scanAbort = false;
    m_scanPause = false;
    m_listView.clear();
    m_listViewInf.clear();
    m_fileTargetMark = false;
    if (m_jobs > 1)
        m_ahead = std::make_unique<ScanAhead>(m_jobs);
    m_flushClock.start();

    for (const QString& entry : listAdd) {
        if (entry == memoryTarget()) {
            BuildProcessList();
            scanMemory();
        } else {
            const auto found = FileSearch::entryOfNative(nativeOf(entry));
            // A missing path counts as not a folder.
            if (!found || found->kind != EntryKind::Folder)
                scanOneFileTarget(entry);
            else
                ScanFolder(entry.endsWith(u'\\') ? entry : entry + u'\\');
        }
        if (m_scanAbort)
            break;
        if (m_scanPause) {
            m_textScan.clear();
            emit currentChanged();
            waitWhilePaused();
        }
    }

    m_ahead.reset();
    m_textScan = m_textFolder = QStringLiteral("-----");
    emit currentChanged();
    flushRows();
    m_running = false;
    const bool aborted = m_scanAbort;
    emit finished(aborted);
    if (m_closingMessage)
        ShowMessage(aborted ? Translate(QStringLiteral("¡Análisis abortado!"))
                            : Translate(QStringLiteral("¡Análisis finalizado correctamente!")),
            0);
}

void ScanSession::setCurrent(const QString& folder, const QString& name)
{
    m_textFolder = folder;
    m_textScan = name;
    emit currentChanged();
}

void ScanSession::setCurrentFromPath(const QString& path)
{
    // The last piece is the name; the folder grows by every other piece and a "\".
    const QStringList parts = path.split(u'\\');
    QString folder;
    for (qsizetype i = 0; i + 1 < parts.size(); ++i)
        folder += parts.at(i) + u'\\';
    setCurrent(folder, parts.constLast());
}

qsizetype ScanSession::addEventRow(const QString& path)
{
    ++m_txtscantot;
    const qsizetype row = m_listView.appendRow(path);
    emit countersChanged();
    return row;
}

void ScanSession::scanOneFileTarget(const QString& path)
{
    setCurrentFromPath(path);
    const qsizetype row = addEventRow(path);
    ScanRecord rec;
    rec.Path = path;
    rec.NativePath = nativeOf(path);
    const auto found = FileSearch::entryOfNative(rec.NativePath);
    if (found && found->kind != EntryKind::File && found->kind != EntryKind::Folder
        && found->kind != EntryKind::Junction) {
        rec.Kind = found->kind;
        recordNotScanned(rec, row);
        return;
    }
    ScanAndRecord(rec, row, -1, m_fileTargetMark);
}

void ScanSession::ScanFolder(const QString& folder)
{
    FolderWalk walk(folder);
    std::deque<Pending> window;
    // Enough queued work to keep every engine thread busy while one result is recorded.
    const size_t ahead = m_ahead ? static_cast<size_t>(m_ahead->jobs()) * 4 : 1;
    QHash<int, bool> marks; // the quarantine mark of each folder level
    for (;;) {
        while (window.size() < ahead) {
            Pending p;
            if (!walk.next(p.Item))
                break;
            if (m_ahead && p.Item.Kind == EntryKind::File && !IsQuarantineItem(p.Item.Folder + p.Item.Name))
                p.Ticket = m_ahead->submit(p.Item.NativePath);
            window.push_back(std::move(p));
        }
        if (window.empty())
            break;
        Pending p = std::move(window.front());
        window.pop_front();
        if (m_scanPause)
            waitWhilePaused();
        if (m_scanAbort) {
            if (m_ahead)
                m_ahead->discard();
            return;
        }
        if (isSkippedFolder(p.Item))
            continue;
        setCurrent(p.Item.Folder, p.Item.Name);
        ScanRecord rec;
        rec.Path = p.Item.Folder + p.Item.Name;
        rec.NativePath = p.Item.NativePath;
        rec.Kind = p.Item.Kind;
        const qsizetype row = addEventRow(rec.Path);
        pump();
        if (rec.Kind == EntryKind::File)
            ScanAndRecord(rec, row, p.Ticket, marks[p.Item.Level]);
        else
            recordNotScanned(rec, row);
    }
}

void ScanSession::ScanAndRecord(ScanRecord& rec, qsizetype row, qint64 ticket, bool& mark)
{
    // A sealed item is scanned through a clear copy. The copy goes to a private
    // folder in the host's temporary folder, never beside the item as F + ".tmp":
    // there it could replace a file of the user's of that name, and the device is
    // no place for scratch work. So the quarantine mark, which would remove an
    // "X.tmp" beside every later file of the level, is kept as state only: the
    // one file the session removes is its own copy, with the private folder.
    QTemporaryDir clearCopies(QDir::tempPath() + QStringLiteral("/vmk-item-XXXXXX"));
    if (IsQuarantineItem(rec.Path)) {
        // The fixed pass phrase and index are swapped in for this item alone: left
        // set, they would seal the owner's next files under the quarantine's phrase.
        const QString clearNative = clearCopies.filePath(QStringLiteral("item"));
        {
            const scanner::QuarantineKeys keys;
            DecryptFile(rec.Path, clearNative);
        }
        mark = true;
        rec.ScannedPath = clearNative;
        rec.Result = ScanOneFile(rec.ScannedPath);
    } else {
        rec.ScannedPath = rec.NativePath;
        rec.Result = ticket >= 0 ? m_ahead->take(ticket, [] { DoEvents(); }) : ScanOneFile(rec.ScannedPath);
    }
    recordOutcome(rec, row, false);
    emit fileRecorded(rec);
}

void ScanSession::recordOutcome(ScanRecord& rec, qsizetype row, bool memory)
{
    const FileScanResult& r = rec.Result;
    if (!r.processed()) {
        rec.Status = NotProcessedText(r.ReturnCode);
        m_listView.setStatus(row, rec.Status);
        ++m_txtskiptot;
        emit countersChanged();
        return;
    }
    if (!r.infected()) {
        rec.Status = Translate(QStringLiteral("Correcto"));
        m_listView.setStatus(row, rec.Status);
        ++m_txtNtot;
        emit countersChanged();
        return;
    }
    rec.Status = Translate(QStringLiteral("Infectado"));
    m_listView.setStatus(row, rec.Status);
    ++m_txtinfFiles;
    emit countersChanged();
    for (const AlertRow& alert : r.Rows) {
        // A file that many processes load stands once in the memory scan's list.
        if (memory && IsAlreadyListed(m_listViewInf.rowTexts(), m_textScan)) {
            pump();
            continue;
        }
        ++m_txtinftot;
        const QString text = memory ? MemoryAlertRowText(m_textScan, m_textFolder, alert.Object) : m_textScan;
        m_listViewInf.appendRow(text, m_textFolder, alert.Threat, alert.Repairable);
        emit countersChanged();
        pump();
    }
}

void ScanSession::recordNotScanned(ScanRecord& rec, qsizetype row)
{
    rec.Status = NotScannedText(rec.Kind);
    m_listView.setStatus(row, rec.Status);
    ++m_txtskiptot;
    emit countersChanged();
    emit fileRecorded(rec);
}

void ScanSession::scanMemory()
{
    // With engine threads, the paths the walk will hand over (in its order) are
    // scanned ahead; the walk itself still decides what is recorded and when.
    QStringList targets;
    std::deque<qint64> tickets;
    qsizetype submitted = 0;
    if (m_ahead)
        targets = MemoryScanTargets(Processes());
    const size_t ahead = m_ahead ? static_cast<size_t>(m_ahead->jobs()) * 4 : 0;
    MemoryWalkHooks hooks;
    hooks.scanPath = [&](const QString& path) {
        while (tickets.size() < ahead && submitted < targets.size())
            tickets.push_back(m_ahead->submit(targets.at(submitted++)));
        qint64 ticket = -1;
        if (!tickets.empty() && targets.at(submitted - static_cast<qsizetype>(tickets.size())) == path) {
            ticket = tickets.front();
            tickets.pop_front();
        }
        memoryFile(path, ticket);
    };
    hooks.aborted = [this] { return m_scanAbort; };
    hooks.paused = [this] {
        if (m_scanPause)
            flushRows();
        return m_scanPause;
    };
    hooks.pauseStarted = [this] {
        m_textScan.clear();
        emit currentChanged();
    };
    WalkMemoryTargets(Processes(), hooks);
    if (m_ahead)
        m_ahead->discard();
}

void ScanSession::memoryFile(const QString& path, qint64 ticket)
{
    setCurrentFromPath(path);
    const qsizetype row = addEventRow(path);
    ScanRecord rec;
    rec.Path = path;
    rec.NativePath = nativeOf(path);
    rec.ScannedPath = path;
    rec.Result = ticket >= 0 ? m_ahead->take(ticket, [] { DoEvents(); }) : ScanOneFile(path);
    recordOutcome(rec, row, true);
    emit fileRecorded(rec);
}

void ScanSession::waitWhilePaused()
{
    flushRows();
    while (m_scanPause) {
        QThread::msleep(kPausePollMs);
        DoEvents();
    }
}

void ScanSession::pump()
{
    if (m_flushClock.elapsed() >= kFlushIntervalMs)
        flushRows();
    DoEvents();
}

void ScanSession::flushRows()
{
    m_listView.flush();
    m_listViewInf.flush();
    m_flushClock.restart();
}

} // namespace vmk
