#include "platform/ConfinedFile.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace vmk
{

ConfinedFile::ConfinedFile(int folderFd, int fd, QByteArray tempName, QByteArray finalName)
    : m_folderFd(folderFd)
    , m_fd(fd)
    , m_tempName(std::move(tempName))
    , m_finalName(std::move(finalName))
{
}

ConfinedFile::~ConfinedFile()
{
    cancel();
}

bool ConfinedFile::write(const char* data, qint64 length)
{
    while (length > 0) {
        const ssize_t n = ::write(m_fd, data, static_cast<size_t>(length));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        data += n;
        length -= n;
    }
    return true;
}

bool ConfinedFile::commit(qint64 modified)
{
    return finish(modified, true);
}

bool ConfinedFile::commitNew(qint64 modified)
{
    return finish(modified, false);
}

bool ConfinedFile::finish(qint64 modified, bool replace)
{
    if (m_fd < 0)
        return false;
    const struct timespec times[2] = { { 0, UTIME_OMIT }, { static_cast<time_t>(modified), 0 } };
    ::futimens(m_fd, times);
    const bool closed = ::close(m_fd) == 0;
    m_fd = -1;
    const char* from = m_tempName.constData();
    const char* to = m_finalName.constData();
    const bool renamed = replace ? ::renameat(m_folderFd, from, m_folderFd, to) == 0
                                 : ::renameat2(m_folderFd, from, m_folderFd, to, RENAME_NOREPLACE) == 0;
    if (!closed || !renamed) {
        cancel();
        return false;
    }
    ::close(m_folderFd);
    m_folderFd = -1;
    return true;
}

void ConfinedFile::cancel()
{
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
    if (m_folderFd >= 0) {
        ::unlinkat(m_folderFd, m_tempName.constData(), 0);
        ::close(m_folderFd);
    }
    m_folderFd = -1;
}

} // namespace vmk
