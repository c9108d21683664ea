#include "components/zip/ZipArchiver.h"

#include "components/zip/DeflatePipeline.h"
#include "components/zip/FileMask.h"
#include "components/zip/ZipCodes.h"
#include "components/zip/ZipLayout.h"
#include "components/zip/ZipPaths.h"
#include "platform/ConfinedFolder.h"
#include "platform/DriveFigures.h"
#include "platform/DriveMap.h"
#include "platform/FileRemoval.h"
#include "platform/FileSearch.h"
#include "platform/NativeFile.h"
#include "platform/NativeName.h"
#include "platform/Pump.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSet>
#include <QTemporaryDir>

#include <zip.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace vmk::zip
{

namespace
{
constexpr qint64 kCopyBlock = 1 << 20;

QStringList splitLines(const QString& text)
{
    QStringList out;
    for (const QString& line : text.split('\n')) {
        const QString t = QString(line).remove('\r');
        if (!t.isEmpty())
            out << t;
    }
    return out;
}

int percent(qint64 done, qint64 total)
{
    if (total <= 0)
        return 100;
    return static_cast<int>(std::clamp<qint64>(done * 100 / total, 0, 100));
}

zip_int32_t libraryMethod(int method, int level)
{
    if (level == 0)
        return ZIP_CM_STORE;
    return method == MethodDeflate ? ZIP_CM_DEFLATE : ZIP_CM_BZIP2;
}

QString parentOf(const QString& logical)
{
    const qsizetype cut = logical.lastIndexOf('\\');
    return cut < 0 ? QString() : logical.left(cut);
}

// The skip reason of an entry that is not a file to read.
int reasonForKind(EntryKind kind)
{
    switch (kind) {
    case EntryKind::DanglingLink:
        return SkipDanglingLink;
    case EntryKind::Fifo:
        return SkipFifo;
    case EntryKind::Socket:
        return SkipSocket;
    case EntryKind::Device:
        return SkipDevice;
    default:
        return 0;
    }
}

// A line that names an existing path is that path as it is spelled there, "*"
// and "?" included: only a line that names nothing is a mask, and only a name
// that does not exist exactly falls back to matching without case. `resolve`
// gives the existing spelling, or "" when nothing has that name.
FileMask maskOfLine(const QString& line, const std::function<QString(const QString&)>& resolve)
{
    const FileMask mask(line);
    // "X\*<r>" is the folder X with all below it. X taken as it is spelled there
    // keeps a folder that differs from it only in case out, and a file named "*"
    // inside it from standing for the whole folder.
    if (mask.recursive() && mask.mask() == QStringLiteral("*") && !mask.folder().isEmpty()) {
        const QString folder = resolve(mask.folder());
        if (!folder.isEmpty())
            return FileMask(folder + QStringLiteral("<r>"), true);
    }
    const QString path = FileMask(line, true).exactPath();
    if (path.isEmpty() || path.endsWith('\\'))
        return mask;
    const QString found = resolve(path);
    if (found.isEmpty())
        return mask;
    return FileMask(mask.recursive() ? found + QStringLiteral("<r>") : found, true);
}

// The existing spelling of a path with a drive letter on the host.
QString existingSpelling(const QString& logical)
{
    if (!DriveMap::hasDriveLetter(logical))
        return {};
    const QString native = ZipPaths::toNative(logical);
    return FileRemoval::entryExists(native) ? ZipPaths::toLogical(native) : QString();
}

// Names in the archive are bytes: UTF-8 as a rule, any other bytes kept as they
// are through the namespace's private form, so they come back out unchanged.
QString entryName(const char* raw)
{
    return ZipPaths::toInterface(NativeName::fromBytes(QByteArray(raw)));
}

// Where the extraction of one entry may write, and which of its names it must make.
struct Confinement {
    QString anchor; // interface form of the folder written beneath
    QStringList names; // native names below it
};
} // namespace

struct ZipArchiver::PlannedFile {
    QString native; // host path to read
    QString source; // interface name of the file
    QString stored; // interface form of the stored name
    qint64 size = 0;
    qint64 mtime = 0;
};

// One operation's counters and, while the library works on its worker thread, the
// queue of events waiting to be fired on the calling thread in order.
class ZipArchiver::Run
{
public:
    explicit Run(ZipArchiver& owner)
        : m_owner(owner)
    {
    }

    int total = 0;
    int processed = 0;
    int skipped = 0;
    qint64 totalBytes = 0;
    qint64 doneBytes = 0;
    int lastPercent = -1;

    void skip(const QString& name, int reason)
    {
        ++skipped;
        if (m_owner.m_events.skippingFile)
            m_owner.m_events.skippingFile(name, reason);
    }

    void status()
    {
        const int p = percent(doneBytes, totalBytes);
        if (m_owner.m_events.globalStatus)
            m_owner.m_events.globalStatus(total, processed, skipped, p);
    }

    // Worker side: queue an event for the calling thread.
    void post(std::function<void()> event)
    {
        {
            std::lock_guard lock(m_mutex);
            m_queue.push_back(std::move(event));
        }
        m_wake.notify_one();
    }

    // Runs work() on a worker thread; meanwhile fires queued events and pumps.
    template<class Work> auto runOnWorker(Work work)
    {
        decltype(work()) result {};
        bool done = false;
        std::thread worker([&] {
            auto r = work();
            std::lock_guard lock(m_mutex);
            result = r;
            done = true;
            m_wake.notify_one();
        });
        for (;;) {
            std::deque<std::function<void()>> batch;
            bool finished;
            {
                std::unique_lock lock(m_mutex);
                m_wake.wait_for(lock, std::chrono::milliseconds(50), [&] { return done || !m_queue.empty(); });
                batch.swap(m_queue);
                finished = done;
            }
            for (auto& e : batch)
                e();
            vmk::DoEvents();
            if (finished)
                break;
        }
        worker.join();
        return result;
    }

private:
    ZipArchiver& m_owner;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<std::function<void()>> m_queue;
};

namespace
{
// A file fed to the library during zip_close (on the worker thread): it counts
// what is read so the calling thread hears of each file's and the run's progress.
struct FileFeed {
    QString name;
    QString native;
    qint64 size = 0;
    qint64 mtime = 0;
    std::FILE* file = nullptr;
    qint64 read = 0;
    int lastFilePercent = -1;
    zip_error_t error;
    std::function<void(FileFeed&, qint64 delta, bool closed)> onProgress;

    // Deflated ahead by the pipeline: the library copies the stream as it is.
    DeflatePipeline* pipeline = nullptr;
    int pipelineIndex = -1;
    const std::atomic<bool>* abort = nullptr;
    DeflatePipeline::Piece piece;
    qsizetype pieceOffset = 0;
    bool ended = false;
    quint32 crc = 0;
    int level = 6;
};

// The answer to a source's stat command: size and time, to which a caller adds
// what it knows besides. Null when the library's buffer is too small.
zip_stat_t* sourceStat(void* data, zip_uint64_t len, zip_error_t* error, qint64 size, qint64 mtime)
{
    auto* st = ZIP_SOURCE_GET_ARGS(zip_stat_t, data, len, error);
    if (!st)
        return nullptr;
    zip_stat_init(st);
    st->size = static_cast<zip_uint64_t>(size);
    st->mtime = static_cast<time_t>(mtime);
    st->valid |= ZIP_STAT_SIZE | ZIP_STAT_MTIME;
    return st;
}

zip_int64_t feedCallback(void* userdata, void* data, zip_uint64_t len, zip_source_cmd_t cmd)
{
    auto* f = static_cast<FileFeed*>(userdata);
    switch (cmd) {
    case ZIP_SOURCE_OPEN:
        if (const int fd = NativeFile::openDescriptor(f->native); fd >= 0) {
            f->file = ::fdopen(fd, "rb");
            if (!f->file)
                NativeFile::closeDescriptor(fd);
        }
        if (!f->file) {
            zip_error_set(&f->error, ZIP_ER_OPEN, errno);
            return -1;
        }
        f->read = 0;
        return 0;
    case ZIP_SOURCE_READ: {
        const size_t n = std::fread(data, 1, len, f->file);
        if (n < len && std::ferror(f->file)) {
            zip_error_set(&f->error, ZIP_ER_READ, errno);
            return -1;
        }
        f->read += static_cast<qint64>(n);
        f->onProgress(*f, static_cast<qint64>(n), false);
        return static_cast<zip_int64_t>(n);
    }
    case ZIP_SOURCE_CLOSE:
        if (f->file)
            std::fclose(f->file);
        f->file = nullptr;
        f->onProgress(*f, 0, true);
        return 0;
    case ZIP_SOURCE_STAT:
        return sourceStat(data, len, &f->error, f->size, f->mtime) ? sizeof(zip_stat_t) : -1;
    case ZIP_SOURCE_ERROR:
        return zip_error_to_data(&f->error, data, len);
    case ZIP_SOURCE_FREE:
        if (f->file)
            std::fclose(f->file);
        f->file = nullptr;
        return 0;
    case ZIP_SOURCE_SUPPORTS:
        return zip_source_make_command_bitmap(
            ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE, ZIP_SOURCE_STAT, ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE, -1);
    default:
        zip_error_set(&f->error, ZIP_ER_OPNOTSUPP, 0);
        return -1;
    }
}

int libraryError(DeflatePipeline::Failure failure)
{
    switch (failure) {
    case DeflatePipeline::Failure::Open:
        return ZIP_ER_OPEN;
    case DeflatePipeline::Failure::Read:
        return ZIP_ER_READ;
    default:
        return ZIP_ER_ZLIB;
    }
}

// The source of an entry deflated by the pipeline: it hands the library the
// finished deflate stream, so the library stores it without compressing again,
// and knows the CRC and the size once the stream is read.
zip_int64_t deflatedCallback(void* userdata, void* data, zip_uint64_t len, zip_source_cmd_t cmd)
{
    auto* f = static_cast<FileFeed*>(userdata);
    switch (cmd) {
    case ZIP_SOURCE_OPEN:
        f->read = 0;
        f->ended = false;
        f->piece = {};
        f->pieceOffset = 0;
        return 0;
    case ZIP_SOURCE_READ: {
        auto* out = static_cast<char*>(data);
        zip_uint64_t copied = 0;
        while (copied < len) {
            if (f->pieceOffset < f->piece.data.size()) {
                const auto n = std::min<zip_uint64_t>(len - copied, f->piece.data.size() - f->pieceOffset);
                std::memcpy(out + copied, f->piece.data.constData() + f->pieceOffset, n);
                copied += n;
                f->pieceOffset += static_cast<qsizetype>(n);
                continue;
            }
            if (f->ended)
                break;
            if (!f->pipeline || !f->pipeline->next(f->pipelineIndex, f->piece)) {
                zip_error_set(&f->error, f->abort && f->abort->load() ? ZIP_ER_CANCELLED : ZIP_ER_INTERNAL, 0);
                return -1;
            }
            if (f->piece.failure != DeflatePipeline::Failure::None) {
                zip_error_set(&f->error, libraryError(f->piece.failure), 0);
                return -1;
            }
            f->pieceOffset = 0;
            f->read += f->piece.input;
            if (f->piece.end) {
                f->ended = true;
                f->crc = f->pipeline->crc();
            }
            f->onProgress(*f, f->piece.input, false);
        }
        return static_cast<zip_int64_t>(copied);
    }
    case ZIP_SOURCE_CLOSE:
        f->piece = {};
        f->onProgress(*f, 0, true);
        return 0;
    case ZIP_SOURCE_STAT: {
        // Before reading: the expected size. After: what the stream really holds.
        zip_stat_t* st = sourceStat(data, len, &f->error, f->ended ? f->read : f->size, f->mtime);
        if (!st)
            return -1;
        st->comp_method = ZIP_CM_DEFLATE;
        st->valid |= ZIP_STAT_COMP_METHOD;
        if (f->ended) {
            st->crc = f->crc;
            st->valid |= ZIP_STAT_CRC;
        }
        return sizeof(zip_stat_t);
    }
    case ZIP_SOURCE_GET_FILE_ATTRIBUTES: {
        // The level bits of the entry's flags, which the library sets when it
        // deflates itself: maximum above 7, fast below 3.
        auto* attributes = ZIP_SOURCE_GET_ARGS(zip_file_attributes_t, data, len, &f->error);
        if (!attributes)
            return -1;
        attributes->general_purpose_bit_flags = f->level > 7 ? 0x2 : f->level < 3 ? 0x4 : 0;
        attributes->general_purpose_bit_mask = 0x6;
        attributes->version_needed = 20;
        attributes->valid |= ZIP_FILE_ATTRIBUTES_GENERAL_PURPOSE_BIT_FLAGS | ZIP_FILE_ATTRIBUTES_VERSION_NEEDED;
        return sizeof(zip_file_attributes_t);
    }
    case ZIP_SOURCE_ERROR:
        return zip_error_to_data(&f->error, data, len);
    case ZIP_SOURCE_FREE:
        return 0;
    case ZIP_SOURCE_SUPPORTS:
        return zip_source_make_command_bitmap(ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE, ZIP_SOURCE_STAT,
            ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE, ZIP_SOURCE_GET_FILE_ATTRIBUTES, -1);
    default:
        zip_error_set(&f->error, ZIP_ER_OPNOTSUPP, 0);
        return -1;
    }
}

int cancelCallback(zip_t*, void* state)
{
    return static_cast<std::atomic<bool>*>(state)->load() ? 1 : 0;
}
} // namespace

ZipArchiver::ZipArchiver() = default;
ZipArchiver::~ZipArchiver() = default;

void ZipArchiver::setFilesToProcess(const QString& text)
{
    m_process = splitLines(text);
}

// One call adds one line as it is: a name holding a line break stays whole.
void ZipArchiver::addFileToProcess(const QString& line)
{
    if (!line.isEmpty())
        m_process << line;
}

void ZipArchiver::setFilesToExclude(const QString& text)
{
    m_exclude = splitLines(text);
}

void ZipArchiver::addFileToExclude(const QString& line)
{
    if (!line.isEmpty())
        m_exclude << line;
}

void ZipArchiver::setCompressionLevel(int level)
{
    m_level = qBound(0, level, 9);
}

void ZipArchiver::setCompressionMethod(int method)
{
    if (method == MethodDeflate || method == MethodBzip2 || method == MethodBwt)
        m_method = method;
}

bool ZipArchiver::isExcluded(const QString& logical) const
{
    return std::any_of(
        m_excludeMasks.begin(), m_excludeMasks.end(), [&logical](const FileMask& m) { return m.matches(logical); });
}

void ZipArchiver::skipUnreadable(const QString& source, int reason, Run& run)
{
    if (isExcluded(source))
        return;
    ++run.total;
    run.skip(source, reason);
}

int ZipArchiver::finish(int result)
{
    if (m_events.processCompleted)
        m_events.processCompleted();
    return result;
}

void ZipArchiver::addFile(PlannedFile file, const QString& baseFolder, QList<PlannedFile>& out, Run& run)
{
    if (isExcluded(file.source))
        return;
    ++run.total;
    if (file.size < m_minSize) {
        run.skip(file.source, SkipBelowMinimumSize);
        return;
    }
    const int probe = NativeFile::openDescriptor(file.native);
    if (probe < 0) {
        run.skip(file.source, SkipAccessDenied);
        return;
    }
    NativeFile::closeDescriptor(probe);

    if (m_preservePaths && !baseFolder.isEmpty() && file.source.startsWith(baseFolder + '\\', Qt::CaseInsensitive))
        file.stored = file.source.mid(baseFolder.size() + 1);
    else
        file.stored = file.source.mid(file.source.lastIndexOf('\\') + 1);
    bool exclude = false;
    if (m_events.preprocessingFile)
        m_events.preprocessingFile(file.stored, file.source, file.size, exclude);
    if (exclude) {
        --run.total;
        return;
    }
    out << file;
}

void ZipArchiver::walkLine(const QString& line, QList<PlannedFile>& out, Run& run)
{
    // A name holding "*" or "?" is itself when it exists: only a line that names
    // nothing is a mask.
    const FileMask fs = maskOfLine(line, existingSpelling);
    const QString named = fs.isExact() ? fs.exactPath() : fs.folder();
    const QString native = named.isEmpty() ? QString() : ZipPaths::toNative(named);
    const std::optional<FoundEntry> found = FileSearch::entryOfNative(native);
    if (fs.isExact() && found && found->kind != EntryKind::Folder && found->kind != EntryKind::Junction) {
        const QString source = ZipPaths::toLogical(found->nativePath);
        if (found->kind != EntryKind::File) {
            skipUnreadable(source, reasonForKind(found->kind), run);
            return;
        }
        PlannedFile file;
        file.native = found->nativePath;
        file.source = source;
        file.size = found->size;
        file.mtime = found->modified.toSecsSinceEpoch();
        addFile(file, parentOf(file.source), out, run);
        return;
    }
    // The folder a line names is walked even when it is a link to one (the owner
    // chose it); links to folders met below it are not entered.
    if (!found || (found->kind != EntryKind::Folder && found->kind != EntryKind::Junction)) {
        run.skip(line, SkipNotFound);
        return;
    }
    const QString mask = fs.mask().isEmpty() ? QStringLiteral("*") : fs.mask();
    QString base = ZipPaths::toLogical(found->nativePath);
    while (base.endsWith('\\'))
        base.chop(1);

    // Files of a folder first, then its subfolders, each in name order: the same
    // walk gives the same archive. The walk goes by host paths, so names that
    // differ only in case stay apart and names that are not UTF-8 keep their
    // bytes. Junctions, links to folders and the mounts of kernel filesystems
    // carry the junction word and are never entered; dangling links, sockets,
    // FIFOs and devices are never read, and each is reported with its reason.
    std::function<void(const QString&, const QString&)> walk = [&](const QString& nativeFolder, const QString& folder) {
        const QList<FoundEntry> entries = FileSearch::listNative(nativeFolder, QStringLiteral("*"));
        for (const FoundEntry& e : entries) {
            if (m_abort)
                return;
            if (e.kind == EntryKind::Folder || e.kind == EntryKind::Junction || !FileMask::wildcardMatch(mask, e.name))
                continue;
            if (e.kind != EntryKind::File) {
                skipUnreadable(folder + '\\' + e.name, reasonForKind(e.kind), run);
                continue;
            }
            PlannedFile file;
            file.native = e.nativePath;
            file.source = folder + '\\' + e.name;
            file.size = e.size;
            file.mtime = e.modified.toSecsSinceEpoch();
            addFile(file, base, out, run);
            vmk::DoEvents();
        }
        if (!fs.recursive())
            return;
        for (const FoundEntry& e : entries) {
            if (m_abort)
                return;
            if (e.kind == EntryKind::Folder)
                walk(e.nativePath, folder + '\\' + e.name);
        }
    };
    walk(found->nativePath, base);
}

int ZipArchiver::compress()
{
    m_abort = false;
    if (m_archiveName.trimmed().isEmpty())
        return finish(ZipNoArchiveName);
    Run run(*this);
    m_excludeMasks.clear();
    for (const QString& line : m_exclude)
        m_excludeMasks << maskOfLine(line, existingSpelling);
    QList<PlannedFile> files;
    for (const QString& line : m_process) {
        walkLine(line, files, run);
        if (m_abort)
            return finish(ZipAborted);
    }

    // Two files under one stored name: the first keeps it. Names that differ only
    // in case are two files.
    QSet<QString> storedNames;
    QList<PlannedFile> planned;
    for (const PlannedFile& f : files) {
        const QString key = ZipPaths::toStored(f.stored);
        if (f.stored.isEmpty() || ZipPaths::hasParentStep(f.stored) || storedNames.contains(key)) {
            run.skip(
                f.source, f.stored.isEmpty() || ZipPaths::hasParentStep(f.stored) ? SkipUnsafeName : SkipDuplicateName);
            continue;
        }
        storedNames.insert(key);
        planned << f;
        run.totalBytes += f.size;
    }
    if (planned.isEmpty())
        return finish(ZipNothingToDo);

    QTemporaryDir temp(QDir::tempPath() + QStringLiteral("/vmkzip-XXXXXX"));
    if (!temp.isValid())
        return finish(ZipTempFileFailed);
    const QString tempArchive = temp.filePath(QStringLiteral("archive.zip"));
    const QString destination = ZipPaths::toNative(m_archiveName);
    int flags = ZIP_CREATE | ZIP_TRUNCATE;
    if (!m_replace && QFileInfo(destination).isFile()) {
        // Keep the entries of the archive: work on a copy of it.
        QFile src(destination), dst(tempArchive);
        if (!src.open(QIODevice::ReadOnly))
            return finish(ZipArchiveUnreadable);
        if (!dst.open(QIODevice::WriteOnly))
            return finish(ZipTempFileFailed);
        const qint64 size = src.size();
        qint64 copied = 0;
        QByteArray block;
        while (!(block = src.read(kCopyBlock)).isEmpty()) {
            if (dst.write(block) != block.size())
                return finish(ZipTempFileFailed);
            copied += block.size();
            if (m_events.tempFileProgress)
                m_events.tempFileProgress(percent(copied, size));
            vmk::DoEvents();
            if (m_abort)
                return finish(ZipAborted);
        }
        dst.close();
        flags = ZIP_CREATE;
    }

    int zerr = 0;
    zip_t* za = zip_open(NativeName::toBytes(tempArchive).constData(), flags, &zerr);
    if (!za)
        return finish(flags == ZIP_CREATE ? ZipArchiveUnreadable : ZipTempFileFailed);

    std::vector<std::unique_ptr<FileFeed>> feeds;
    feeds.reserve(static_cast<size_t>(planned.size()));
    auto onProgress = [this, &run](FileFeed& f, qint64 delta, bool closed) {
        // Worker thread: count, and queue what the calling thread should hear.
        run.doneBytes += delta; // only the worker writes it while the library runs
        const int fp = closed ? 100 : percent(f.read, f.size);
        if (fp != f.lastFilePercent) {
            f.lastFilePercent = fp;
            const QString name = f.name;
            run.post([this, name, fp] {
                if (m_events.fileProgress)
                    m_events.fileProgress(name, fp);
            });
        }
        const int overall = percent(run.doneBytes, run.totalBytes);
        if (closed || overall != run.lastPercent) {
            run.lastPercent = overall;
            if (closed)
                ++run.processed;
            const int t = run.total, p = run.processed, s = run.skipped, pc = percent(run.doneBytes, run.totalBytes);
            run.post([this, t, p, s, pc] {
                if (m_events.globalStatus)
                    m_events.globalStatus(t, p, s, pc);
            });
        }
    };
    // Deflate runs on every core ahead of the library; the other methods are the library's own work.
    const bool parallel = m_method == MethodDeflate && m_level > 0;
    std::vector<std::pair<zip_uint64_t, FileFeed*>> byIndex;
    for (const PlannedFile& f : planned) {
        auto feed = std::make_unique<FileFeed>();
        feed->name = f.source;
        feed->native = f.native;
        feed->size = f.size;
        feed->mtime = f.mtime;
        feed->abort = &m_abort;
        feed->level = m_level;
        zip_error_init(&feed->error);
        feed->onProgress = onProgress;
        zip_source_t* src = zip_source_function(za, parallel ? deflatedCallback : feedCallback, feed.get());
        if (!src) {
            zip_discard(za);
            return finish(ZipCompressionFailed);
        }
        // A name that is not UTF-8 is stored as its bytes, without the UTF-8 flag.
        const QString stored = ZipPaths::toStored(f.stored);
        const QByteArray name = NativeName::toBytes(stored);
        const zip_flags_t encoding = NativeName::holdsRawBytes(stored) ? ZIP_FL_ENC_GUESS : ZIP_FL_ENC_UTF_8;
        const zip_int64_t index = zip_file_add(za, name.constData(), src, encoding | ZIP_FL_OVERWRITE);
        if (index < 0) {
            zip_source_free(src);
            zip_discard(za);
            return finish(ZipCompressionFailed);
        }
        zip_set_file_compression(
            za, static_cast<zip_uint64_t>(index), libraryMethod(m_method, m_level), static_cast<zip_uint32_t>(m_level));
        byIndex.emplace_back(static_cast<zip_uint64_t>(index), feed.get());
        feeds.push_back(std::move(feed));
    }
    zip_register_cancel_callback_with_state(za, cancelCallback, nullptr, &m_abort);

    // The library writes the entries in the order of their indexes (a replaced
    // entry keeps its place): the pipeline deflates them in that order.
    std::unique_ptr<DeflatePipeline> pipeline;
    if (parallel) {
        std::sort(byIndex.begin(), byIndex.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
        QList<DeflatePipeline::Input> inputs;
        for (const auto& [index, feed] : byIndex) {
            feed->pipelineIndex = static_cast<int>(inputs.size());
            inputs.append({ NativeName::toBytes(feed->native), feed->size });
        }
        pipeline = std::make_unique<DeflatePipeline>(inputs, m_level, m_abort);
        for (const auto& [index, feed] : byIndex)
            feed->pipeline = pipeline.get();
    }

    // All of the library's work happens in zip_close: run it on a worker thread
    // while this thread fires the events it produces and keeps the screens alive.
    const int closed = run.runOnWorker([za] { return zip_close(za); });
    if (closed != 0) {
        const bool cancelled = zip_error_code_zip(zip_get_error(za)) == ZIP_ER_CANCELLED || m_abort;
        zip_discard(za);
        return finish(cancelled ? ZipAborted : ZipCompressionFailed);
    }
    if (m_events.tempFileProgress)
        m_events.tempFileProgress(100);
    if (m_abort)
        return finish(ZipAborted);
    return finish(copyToDestination(tempArchive));
}

int ZipArchiver::copyToDestination(const QString& tempPath)
{
    QFile in(tempPath);
    if (!in.open(QIODevice::ReadOnly))
        return ZipTempFileFailed;
    // Written beside the destination and renamed at the end: the device is written
    // once, and an abort or a pulled drive leaves no half archive.
    QSaveFile out(ZipPaths::toNative(m_archiveName));
    if (!out.open(QIODevice::WriteOnly))
        return ZipDestinationFailed;
    const qint64 size = in.size();
    qint64 written = 0;
    QByteArray block;
    if (m_events.writeProgress)
        m_events.writeProgress(percent(0, size == 0 ? 1 : size));
    const QString destinationFolder = QFileInfo(ZipPaths::toNative(m_archiveName)).absolutePath();
    const auto failure = [&destinationFolder] {
        return DriveFigures::wasFull(destinationFolder, kCopyBlock) ? ZipDestinationFull : ZipDestinationFailed;
    };
    while (!(block = in.read(kCopyBlock)).isEmpty()) {
        if (out.write(block) != block.size())
            return failure();
        written += block.size();
        vmk::DoEvents();
        if (m_abort) {
            out.cancelWriting();
            return ZipAborted;
        }
        if (written < size && m_events.writeProgress)
            m_events.writeProgress(percent(written, size));
    }
    if (!out.commit())
        return failure();
    if (m_events.writeProgress)
        m_events.writeProgress(100);
    return ZipOk;
}

int ZipArchiver::listArchive()
{
    m_abort = false;
    if (m_archiveName.trimmed().isEmpty())
        return ZipNoArchiveName;
    int zerr = 0;
    zip_t* za = zip_open(NativeName::toBytes(ZipPaths::toNative(m_archiveName)).constData(), ZIP_RDONLY, &zerr);
    if (!za)
        return ZipArchiveUnreadable;
    const zip_int64_t n = zip_get_num_entries(za, 0);
    for (zip_int64_t i = 0; i < n; ++i) {
        zip_stat_t st;
        if (zip_stat_index(za, static_cast<zip_uint64_t>(i), ZIP_FL_ENC_RAW, &st) != 0) {
            zip_discard(za);
            return ZipArchiveUnreadable;
        }
        if (m_events.listingFile)
            m_events.listingFile(entryName(st.name), static_cast<qint64>(st.size));
        if (m_events.listStatus)
            m_events.listStatus(percent(i + 1, n));
        if ((i & 63) == 63)
            vmk::DoEvents();
        if (m_abort) {
            zip_discard(za);
            return ZipAborted;
        }
    }
    if (n == 0 && m_events.listStatus)
        m_events.listStatus(100);
    zip_discard(za);
    return ZipOk;
}

int ZipArchiver::extract()
{
    m_abort = false;
    m_shortage = {};
    if (m_archiveName.trimmed().isEmpty())
        return finish(ZipNoArchiveName);
    const QString archiveNative = ZipPaths::toNative(m_archiveName);
    int zerr = 0;
    zip_t* za = zip_open(NativeName::toBytes(archiveNative).constData(), ZIP_RDONLY, &zerr);
    if (!za)
        return finish(ZipArchiveUnreadable);
    std::unique_ptr<zip_t, void (*)(zip_t*)> guard(za, zip_discard);
    const zip_int64_t n = zip_get_num_entries(za, 0);
    switch (ZipLayout::check(archiveNative, n)) {
    case ZipLayout::Verdict::Overlapping:
        return finish(ZipOverlappingEntries);
    case ZipLayout::Verdict::Unreadable:
        return finish(ZipArchiveUnreadable);
    case ZipLayout::Verdict::Sound:
        break;
    }

    struct Entry {
        zip_uint64_t index;
        QString name;
        qint64 size;
        qint64 mtime;
    };
    QList<Entry> all;
    QSet<QString> names;
    for (zip_int64_t i = 0; i < n; ++i) {
        zip_stat_t st;
        if (zip_stat_index(za, static_cast<zip_uint64_t>(i), ZIP_FL_ENC_RAW, &st) != 0)
            return finish(ZipArchiveUnreadable);
        all << Entry { static_cast<zip_uint64_t>(i), entryName(st.name), static_cast<qint64>(st.size),
            static_cast<qint64>(st.mtime) };
        names.insert(all.last().name);
    }
    // A line that is exactly an entry's name picks that entry, "*" and "?" included.
    auto inArchive = [&names](const QString& line) { return names.contains(line) ? line : QString(); };
    QList<FileMask> process, exclude;
    for (const QString& line : m_process)
        process << maskOfLine(line, inArchive);
    for (const QString& line : m_exclude)
        exclude << maskOfLine(line, inArchive);
    auto anyMatch = [](const QList<FileMask>& masks, const QString& name) {
        return std::any_of(masks.begin(), masks.end(), [&name](const FileMask& m) { return m.matches(name); });
    };

    Run run(*this);
    QList<Entry> entries;
    for (const Entry& e : all) {
        if (!anyMatch(process, e.name) || anyMatch(exclude, e.name))
            continue;
        entries << e;
        run.totalBytes += e.size;
    }
    run.total = static_cast<int>(entries.size());
    if (entries.isEmpty())
        return finish(ZipNothingToDo);

    QString baseFolder = m_extractFolder.isEmpty() ? parentOf(m_archiveName) : m_extractFolder;
    while (baseFolder.endsWith('\\'))
        baseFolder.chop(1);
    // Each folder written beneath, opened once: the chosen one, and the roots of
    // the drives that names with their own drive go back to.
    std::map<QString, std::unique_ptr<ConfinedFolder>> anchors;
    auto anchorFor = [&anchors](const QString& logical) -> ConfinedFolder& {
        auto& slot = anchors[logical];
        if (!slot)
            slot = std::make_unique<ConfinedFolder>(ZipPaths::toNative(logical.size() == 2 ? logical + '\\' : logical));
        return *slot;
    };
    // Everything is checked against the free space before anything is written.
    ConfinedFolder& base = anchorFor(baseFolder);
    const qint64 available = base.freeBytes();
    if (available >= 0 && run.totalBytes > available) {
        m_shortage = { baseFolder, run.totalBytes, available };
        return finish(ZipNoSpace);
    }
    auto confine = [&baseFolder](const QString& destination) -> std::optional<Confinement> {
        Confinement c;
        QString rest;
        if (destination.startsWith(baseFolder + '\\')) {
            c.anchor = baseFolder;
            rest = destination.mid(baseFolder.size() + 1);
        } else if (DriveMap::hasDriveLetter(destination)) {
            c.anchor = destination.left(2);
            rest = destination.mid(3);
        } else {
            return std::nullopt;
        }
        for (const QString& part : rest.split('\\', Qt::SkipEmptyParts))
            c.names << DriveMap::decodeName(part);
        if (c.names.isEmpty())
            return std::nullopt;
        return c;
    };
    auto refusalReason = [](ConfinedFolder::Refusal why) {
        switch (why) {
        case ConfinedFolder::Refusal::LinkOnPath:
            return SkipLinkInTarget;
        case ConfinedFolder::Refusal::BadName:
            return SkipUnsafeName;
        default:
            return SkipDestinationFailed;
        }
    };

    QSet<QString> written;
    QByteArray buffer(kCopyBlock, '\0');
    for (const Entry& e : entries) {
        vmk::DoEvents();
        if (m_abort)
            return finish(ZipAborted);
        const bool isFolder = e.name.endsWith('\\');
        const QString name = isFolder ? e.name.chopped(1) : e.name;
        // Names that climb out with ".." are never written; a name with its own
        // drive is refused when the user chose a folder, since it would leave it.
        if (name.isEmpty() || ZipPaths::hasParentStep(name)
            || (ZipPaths::isRooted(name) && !m_extractFolder.isEmpty())) {
            run.skip(e.name, SkipUnsafeName);
            continue;
        }
        QString destination = ZipPaths::isRooted(name) ? name : baseFolder + '\\' + name;
        if (m_events.unzipPreprocessingFile)
            m_events.unzipPreprocessingFile(e.name, destination);
        const std::optional<Confinement> place
            = destination.isEmpty() || ZipPaths::hasParentStep(destination) ? std::nullopt : confine(destination);
        if (!place) {
            run.skip(e.name, SkipUnsafeName);
            continue;
        }
        ConfinedFolder& anchor = anchorFor(place->anchor);
        if (isFolder) {
            const ConfinedFolder::Refusal why = anchor.makeFolders(place->names);
            if (why != ConfinedFolder::Refusal::None)
                run.skip(e.name, refusalReason(why));
            else
                ++run.processed;
            run.status();
            continue;
        }
        // A second entry for a file already written is reported, never written over it.
        const QString key = anchor.root() + '/' + place->names.join('/');
        if (written.contains(key)) {
            run.skip(e.name, SkipDuplicateName);
            continue;
        }
        written.insert(key);
        zip_file_t* zf = zip_fopen_index(za, e.index, 0);
        if (!zf) {
            run.skip(e.name, SkipDamagedEntry);
            continue;
        }
        ConfinedFolder::Refusal why = ConfinedFolder::Refusal::None;
        std::unique_ptr<ConfinedFile> out = anchor.createFile(place->names, why);
        if (!out) {
            zip_fclose(zf);
            run.skip(e.name, refusalReason(why));
            continue;
        }
        qint64 got = 0, done = 0;
        bool failed = false, writeFailed = false;
        int lastPercent = -1;
        while ((got = zip_fread(zf, buffer.data(), static_cast<zip_uint64_t>(buffer.size()))) > 0) {
            // Never more than the entry declares: that is what the space was checked for.
            if (done + got > e.size) {
                got = -1;
                break;
            }
            if (!out->write(buffer.constData(), got)) {
                writeFailed = true;
                break;
            }
            done += got;
            run.doneBytes += got;
            const int p = percent(done, e.size);
            if (p != lastPercent && m_events.fileProgress) {
                lastPercent = p;
                m_events.fileProgress(e.name, p);
            }
            vmk::DoEvents();
            if (m_abort) {
                zip_fclose(zf);
                out->cancel();
                return finish(ZipAborted);
            }
        }
        // A damaged entry shows as a read error, its checksum included, at the end.
        failed = got < 0 || (!writeFailed && done != e.size);
        zip_fclose(zf);
        if (failed || writeFailed) {
            out->cancel();
            run.skip(e.name, failed ? SkipDamagedEntry : SkipDestinationFailed);
            continue;
        }
        if (!out->commit(e.mtime)) {
            run.skip(e.name, SkipDestinationFailed);
            continue;
        }
        if (lastPercent != 100 && m_events.fileProgress)
            m_events.fileProgress(e.name, 100);
        ++run.processed;
        run.status();
    }
    return finish(run.skipped > 0 ? ZipFilesSkipped : ZipOk);
}

} // namespace vmk::zip
