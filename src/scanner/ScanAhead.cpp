#include "scanner/ScanAhead.h"

#include "components/engine/EngineSession.h"
#include "scanner/Antivir.h"

#include <chrono>

namespace vmk
{

ScanAhead::ScanAhead(int jobs)
{
    for (int i = 0; i < jobs; ++i)
        m_workers.emplace_back([this] { work(); });
}

ScanAhead::~ScanAhead()
{
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
        m_queue.clear();
    }
    m_queued.notify_all();
    for (std::thread& t : m_workers)
        t.join();
}

qint64 ScanAhead::submit(const QString& path)
{
    qint64 ticket = 0;
    {
        std::lock_guard lock(m_mutex);
        ticket = m_nextTicket++;
        m_queue.emplace_back(ticket, path);
    }
    m_queued.notify_one();
    return ticket;
}

FileScanResult ScanAhead::take(qint64 ticket, const std::function<void()>& whileWaiting)
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        const auto found = m_results.find(ticket);
        if (found != m_results.end()) {
            FileScanResult r = std::move(found->second);
            m_results.erase(found);
            return r;
        }
        if (ticket < m_firstWanted || ticket >= m_nextTicket)
            return {}; // discarded or never submitted
        m_done.wait_for(lock, std::chrono::milliseconds(50));
        if (whileWaiting && m_results.find(ticket) == m_results.end()) {
            lock.unlock();
            whileWaiting();
            lock.lock();
        }
    }
}

void ScanAhead::discard()
{
    std::lock_guard lock(m_mutex);
    m_queue.clear();
    m_results.clear();
    m_firstWanted = m_nextTicket;
}

void ScanAhead::work()
{
    engine::EngineSession session;
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_queued.wait(lock, [this] { return m_stopping || !m_queue.empty(); });
        if (m_stopping)
            return;
        auto [ticket, path] = std::move(m_queue.front());
        m_queue.pop_front();
        lock.unlock();
        FileScanResult r = ScanOneFile(path, &session);
        lock.lock();
        if (ticket >= m_firstWanted)
            m_results.emplace(ticket, std::move(r));
        m_done.notify_all();
    }
}

} // namespace vmk
