#include "components/zip/DeflatePipeline.h"

#include "platform/NativeFile.h"
#include "platform/NativeName.h"

#include <zlib.h>

#include <QFile>

#include <algorithm>
#include <chrono>
#include <cstring>

namespace vmk::zip
{

namespace
{
// The deflate window: a block may refer this far back into the data before it.
constexpr qint64 kWindow = 32 * 1024;

quint32 crcOf(const char* data, qint64 len)
{
    return static_cast<quint32>(crc32(0, reinterpret_cast<const Bytef*>(data), static_cast<uInt>(len)));
}
} // namespace

class DeflatePipeline::Deflater
{
public:
    explicit Deflater(int level)
    {
        std::memset(&m_z, 0, sizeof m_z);
        // Raw deflate (the zip entry has no zlib header), as Info-ZIP sets it up.
        m_ok = deflateInit2(&m_z, level, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) == Z_OK;
    }
    ~Deflater()
    {
        if (m_ok)
            deflateEnd(&m_z);
    }
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;

    // One block: primed with dict, the data, then a sync flush or the end of the stream.
    bool run(const char* dict, qint64 dictLen, const char* data, qint64 len, bool finish, QByteArray& out)
    {
        if (!m_ok || deflateReset(&m_z) != Z_OK)
            return false;
        if (dictLen > 0
            && deflateSetDictionary(&m_z, reinterpret_cast<const Bytef*>(dict), static_cast<uInt>(dictLen)) != Z_OK)
            return false;
        out.resize(static_cast<qsizetype>(deflateBound(&m_z, static_cast<uLong>(len)) + 64));
        m_z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data));
        m_z.avail_in = static_cast<uInt>(len);
        qsizetype produced = 0;
        for (;;) {
            m_z.next_out = reinterpret_cast<Bytef*>(out.data() + produced);
            m_z.avail_out = static_cast<uInt>(out.size() - produced);
            const int rc = deflate(&m_z, finish ? Z_FINISH : Z_SYNC_FLUSH);
            produced = out.size() - static_cast<qsizetype>(m_z.avail_out);
            if (rc == Z_STREAM_ERROR)
                return false;
            const bool done = finish ? rc == Z_STREAM_END : m_z.avail_in == 0 && m_z.avail_out > 0;
            if (done)
                break;
            out.resize(out.size() * 2);
        }
        out.resize(produced);
        return true;
    }

private:
    z_stream m_z;
    bool m_ok = false;
};

DeflatePipeline::DeflatePipeline(QList<Input> files, int level, const std::atomic<bool>& abort, int threads)
    : m_files(std::move(files))
    , m_level(level)
    , m_abort(abort)
    , m_window(static_cast<size_t>(
          std::max(16, 8 * (threads > 0 ? threads : static_cast<int>(std::thread::hardware_concurrency())))))
{
    for (int i = 0; i < m_files.size(); ++i) {
        const qint64 size = std::max<qint64>(0, m_files[i].size);
        const qint64 blocks = std::max<qint64>(1, (size + kBlockSize - 1) / kBlockSize);
        for (qint64 b = 0; b < blocks; ++b)
            m_units.push_back({ i, b * kBlockSize, std::min(kBlockSize, size - b * kBlockSize), b == blocks - 1 });
    }
    m_ring.resize(m_window);
    if (threads <= 0)
        threads = static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1u, 8u));
    threads = static_cast<int>(std::min<size_t>(static_cast<size_t>(threads), m_units.size()));
    for (int i = 0; i < threads; ++i)
        m_workers.emplace_back([this] { work(); });
}

DeflatePipeline::~DeflatePipeline()
{
    {
        std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_changed.notify_all();
    for (std::thread& t : m_workers)
        t.join();
}

void DeflatePipeline::work()
{
    Deflater deflater(m_level);
    for (;;) {
        size_t index;
        {
            std::unique_lock lock(m_mutex);
            // The abort flag is set from outside without a notification: look again now and then.
            while (!m_stop && !m_abort && m_next < m_units.size() && m_next >= m_consumed + m_window)
                m_changed.wait_for(lock, std::chrono::milliseconds(20));
            if (m_stop || m_abort || m_next >= m_units.size())
                return;
            index = m_next++;
        }
        Result r = compress(m_units[index], deflater, true);
        {
            std::lock_guard lock(m_mutex);
            m_ring[index % m_window] = std::move(r);
        }
        m_changed.notify_all();
    }
}

DeflatePipeline::Result DeflatePipeline::compress(const Unit& unit, Deflater& deflater, bool primed) const
{
    Result r;
    auto fail = [&r](Failure failure) {
        r.piece.failure = failure;
        return r;
    };
    QFile file;
    const int fd = NativeFile::openDescriptor(NativeName::fromBytes(m_files[unit.file].native));
    if (fd < 0 || !file.open(fd, QIODevice::ReadOnly | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle)) {
        NativeFile::closeDescriptor(fd);
        return fail(Failure::Open);
    }
    qint64 dictLen = primed ? std::min(kWindow, unit.offset) : 0;
    QByteArray in(dictLen + unit.length, Qt::Uninitialized);
    qint64 got = 0;
    if (!file.seek(unit.offset - dictLen))
        return fail(Failure::Read);
    while (got < in.size()) {
        const qint64 n = file.read(in.data() + got, in.size() - got);
        if (n < 0)
            return fail(Failure::Read);
        if (n == 0)
            break;
        got += n;
    }
    file.close();

    // A file that has shrunk since it was listed ends early, with what is there.
    if (got < dictLen)
        dictLen = got = 0;
    const char* data = in.constData() + dictLen;
    const qint64 len = got - dictLen;
    r.piece.input = len;
    r.piece.end = unit.lastOfFile || len < unit.length;
    if (!deflater.run(in.constData(), dictLen, data, len, r.piece.end, r.piece.data))
        return fail(Failure::Deflate);
    r.crc = crcOf(data, len);
    r.dictCrc = crcOf(in.constData(), dictLen);
    const qint64 tail = std::min(kWindow, len);
    r.tailCrc = crcOf(data + len - tail, tail);
    return r;
}

std::optional<DeflatePipeline::Result> DeflatePipeline::take(size_t index)
{
    std::unique_lock lock(m_mutex);
    std::optional<Result>& slot = m_ring[index % m_window];
    while (!slot) {
        if (m_abort)
            return std::nullopt;
        m_changed.wait_for(lock, std::chrono::milliseconds(20));
    }
    std::optional<Result> r = std::move(slot);
    slot.reset();
    ++m_consumed;
    lock.unlock();
    m_changed.notify_all();
    return r;
}

bool DeflatePipeline::next(int file, Piece& piece)
{
    if (file != m_file) {
        // Another file's turn comes only when the current one has ended.
        if ((m_file >= 0 && !m_fileEnded) || m_consumed >= m_units.size() || m_units[m_consumed].file != file)
            return false;
        m_file = file;
        m_crc = static_cast<quint32>(crc32(0, nullptr, 0));
        m_input = 0;
        m_fileEnded = false;
    }
    piece = Piece();
    if (m_fileEnded) {
        piece.end = true;
        return true;
    }
    if (m_consumed >= m_units.size() || m_units[m_consumed].file != file)
        return false;
    const Unit unit = m_units[m_consumed];
    std::optional<Result> r = take(m_consumed);
    if (!r)
        return false;
    if (r->piece.failure == Failure::None && unit.offset > 0 && r->piece.input > 0 && r->dictCrc != m_lastTail) {
        // The file changed under us between the two reads: the block's priming
        // is not what the stream holds before it, so deflate it unprimed.
        if (!m_ownDeflater)
            m_ownDeflater = std::make_unique<Deflater>(m_level);
        r = compress(unit, *m_ownDeflater, false);
    }
    if (r->piece.failure == Failure::None) {
        m_lastTail = r->tailCrc;
        m_crc = static_cast<quint32>(crc32_combine(m_crc, r->crc, static_cast<z_off_t>(r->piece.input)));
        m_input += r->piece.input;
        m_fileEnded = r->piece.end;
        // Blocks after an early end hold nothing of the file: pass them by.
        while (m_fileEnded && m_consumed < m_units.size() && m_units[m_consumed].file == file)
            if (!take(m_consumed))
                return false;
    }
    piece = std::move(r->piece);
    return true;
}

} // namespace vmk::zip
