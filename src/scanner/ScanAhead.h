#pragma once

#include "scanner/FileScanResult.h"

#include <QString>

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

namespace vmk
{

// A small pool of threads that scan files ahead of a walk, each thread with its
// own engine session on the one compiled engine. The walk hands over paths in its
// order and takes the results back in that same order, so what it records reads
// as the single-threaded walk would; a stop discards what was scanned ahead.
class ScanAhead
{
public:
    explicit ScanAhead(int jobs);
    ~ScanAhead();
    ScanAhead(const ScanAhead&) = delete;
    ScanAhead& operator=(const ScanAhead&) = delete;

    int jobs() const { return static_cast<int>(m_workers.size()); }
    // Queues a scan; the number is what take() asks for.
    qint64 submit(const QString& path);
    // The result of a submitted scan, waiting for it when it is not done yet;
    // `whileWaiting` runs between waits of at most 50 ms (the session pumps there).
    FileScanResult take(qint64 ticket, const std::function<void()>& whileWaiting = {});
    // Forgets every scan not taken yet: queued ones never start, running ones
    // finish and their results are dropped.
    void discard();

private:
    void work();

    std::mutex m_mutex;
    std::condition_variable m_queued;
    std::condition_variable m_done;
    std::deque<std::pair<qint64, QString>> m_queue;
    std::map<qint64, FileScanResult> m_results;
    qint64 m_nextTicket = 0;
    qint64 m_firstWanted = 0; // results of lower tickets were discarded
    bool m_stopping = false;
    std::vector<std::thread> m_workers;
};

} // namespace vmk
