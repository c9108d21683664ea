#include "components/cipher/ChunkReader.h"

namespace vmk::cipher
{

ChunkReader::ChunkReader(QFile& file, qint64 blockSize, qint64 spare, int depth)
    : m_file(file)
    , m_blockSize(blockSize)
    , m_ready(static_cast<size_t>(depth))
{
    for (int i = 0; i < depth; ++i)
        m_buffers.push_back(std::make_unique<char[]>(static_cast<size_t>(blockSize + spare)));
    m_thread = std::thread([this] { readLoop(); });
}

ChunkReader::~ChunkReader()
{
    {
        std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void ChunkReader::readLoop()
{
    const size_t depth = m_buffers.size();
    const qint64 total = m_file.size();
    qint64 pos = m_file.pos();
    for (size_t slot = 0;; slot = (slot + 1) % depth) {
        {
            // A slot is free when it is neither waiting to be taken nor held.
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [&] { return m_stop || m_count + (m_holding ? 1 : 0) < depth; });
            if (m_stop)
                return;
        }
        Block b;
        b.data = m_buffers[slot].get();
        b.size = m_file.read(b.data, m_blockSize);
        b.failed = b.size < 0;
        if (!b.failed)
            pos += b.size;
        b.last = b.failed || b.size < m_blockSize || pos >= total;
        {
            std::lock_guard lock(m_mutex);
            m_ready[(m_head + m_count) % depth] = b;
            ++m_count;
        }
        m_changed.notify_all();
        if (b.last)
            return;
    }
}

ChunkReader::Block ChunkReader::next()
{
    std::unique_lock lock(m_mutex);
    if (m_holding) {
        m_holding = false;
        m_changed.notify_all();
    }
    m_changed.wait(lock, [&] { return m_count > 0; });
    Block b = m_ready[m_head];
    m_head = (m_head + 1) % m_ready.size();
    --m_count;
    m_holding = true;
    return b;
}

} // namespace vmk::cipher
