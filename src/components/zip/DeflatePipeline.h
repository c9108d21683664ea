#pragma once

#include <QByteArray>
#include <QList>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace vmk::zip
{

// Deflates the files of an archive on every core, ahead of the library that
// writes them. Each file is cut into blocks deflated on their own, each primed
// with the 32 KiB of the file before it, and every block but the file's last
// ends on a byte boundary (a sync flush): laid end to end they form the file's
// single deflate stream, as if one deflater had read the whole file.
//
// The consumer takes the blocks strictly in the order of the files as given; at
// most a fixed number of blocks wait ahead of it, so memory stays small whatever
// the sizes. It never blocks for long after the abort flag is set.
class DeflatePipeline
{
public:
    struct Input {
        QByteArray native; // host path, encoded for the file system
        qint64 size = 0; // bytes to read; a file that has shrunk ends early
    };
    enum class Failure { None, Open, Read, Deflate };
    struct Piece {
        QByteArray data; // deflate stream bytes
        qint64 input = 0; // file bytes they hold
        bool end = false; // the file's stream is complete after this piece
        Failure failure = Failure::None;
    };

    static constexpr qint64 kBlockSize = 512 * 1024;

    DeflatePipeline(QList<Input> files, int level, const std::atomic<bool>& abort, int threads = 0);
    ~DeflatePipeline();
    DeflatePipeline(const DeflatePipeline&) = delete;
    DeflatePipeline& operator=(const DeflatePipeline&) = delete;

    // The next piece of file number `file`. False when the abort flag stopped the
    // wait, or when `file` is not the one whose turn it is.
    bool next(int file, Piece& piece);
    // CRC-32 and length of what the pieces of the current file held so far.
    quint32 crc() const { return m_crc; }
    qint64 input() const { return m_input; }

private:
    struct Unit {
        int file;
        qint64 offset, length;
        bool lastOfFile;
    };
    struct Result {
        Piece piece;
        quint32 crc = 0;
        quint32 dictCrc = 0, tailCrc = 0;
    };
    class Deflater;

    void work();
    Result compress(const Unit& unit, Deflater& deflater, bool primed) const;
    std::optional<Result> take(size_t index);

    const QList<Input> m_files;
    const int m_level;
    const std::atomic<bool>& m_abort;
    std::vector<Unit> m_units;
    const size_t m_window;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::optional<Result>> m_ring; // unit i waits in slot i % window
    size_t m_next = 0; // next unit for a worker
    size_t m_consumed = 0; // next unit for the consumer
    bool m_stop = false;
    std::vector<std::thread> m_workers;

    // Consumer side only.
    int m_file = -1;
    quint32 m_crc = 0, m_lastTail = 0;
    qint64 m_input = 0;
    bool m_fileEnded = false;
    std::unique_ptr<Deflater> m_ownDeflater;
};

} // namespace vmk::zip
