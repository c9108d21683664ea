#pragma once

#include <QFile>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace vmk::cipher
{

// Reads a file ahead of its consumer on a thread of its own, in blocks of one
// size, so that reading overlaps the cipher and the writes of the previous
// blocks. It starts at the file's current position and owns the file until it is
// destroyed; destroying it early stops the reading.
class ChunkReader
{
public:
    struct Block {
        char* data = nullptr; // room for size + spare bytes, free to change in place
        qint64 size = 0;
        bool last = false; // a short read or the end of the file
        bool failed = false; // the read failed; nothing follows
    };

    // spare: bytes of room after each block (a tag goes there). depth: blocks
    // read ahead at most.
    ChunkReader(QFile& file, qint64 blockSize, qint64 spare, int depth = 4);
    ~ChunkReader();
    ChunkReader(const ChunkReader&) = delete;
    ChunkReader& operator=(const ChunkReader&) = delete;

    // The next block in file order, waiting for it. The previous block goes back
    // to the reader, so its data must not be used after this call.
    Block next();

private:
    void readLoop();

    QFile& m_file;
    const qint64 m_blockSize;
    std::vector<std::unique_ptr<char[]>> m_buffers;
    std::vector<Block> m_ready; // ring of filled blocks, m_head first
    size_t m_head = 0, m_count = 0;
    bool m_holding = false; // the consumer holds the block before m_head
    bool m_stop = false;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::thread m_thread;
};

} // namespace vmk::cipher
