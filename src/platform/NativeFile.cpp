#include "platform/NativeFile.h"

#include "platform/NativeName.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vmk
{
namespace
{
// A whole write, retried over short writes and signals.
bool writeAll(int fd, const char* data, qint64 size)
{
    while (size > 0) {
        const ssize_t n = ::write(fd, data, static_cast<size_t>(size));
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        data += n;
        size -= n;
    }
    return true;
}

qint64 readAll(int fd, char* data, qint64 size)
{
    qint64 got = 0;
    while (got < size) {
        const ssize_t n = ::read(fd, data + got, static_cast<size_t>(size - got));
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return -1;
        }
        if (n == 0)
            break;
        got += n;
    }
    return got;
}

constexpr qint64 kBufferPiece = 1024000;
} // namespace

NativeFile::~NativeFile()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

bool NativeFile::exists(const QString& nativePath)
{
    struct stat st;
    return !nativePath.isEmpty() && ::stat(NativeName::toBytes(nativePath).constData(), &st) == 0;
}

qint64 NativeFile::regularFileSize(const QString& nativePath)
{
    struct stat st;
    if (nativePath.isEmpty() || ::stat(NativeName::toBytes(nativePath).constData(), &st) != 0 || !S_ISREG(st.st_mode))
        return -1;
    return st.st_size;
}

int NativeFile::openDescriptor(const QString& nativePath)
{
    const int fd = ::open(NativeName::toBytes(nativePath).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0)
        return -1;
    // Reads of a regular file ignore O_NONBLOCK; take it off for everything else.
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags >= 0)
        ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
    return fd;
}

void NativeFile::closeDescriptor(int fd)
{
    if (fd >= 0)
        ::close(fd);
}

bool NativeFile::openForReading(const QString& nativePath)
{
    close();
    if (nativePath.isEmpty())
        return false;
    m_fd = ::open(NativeName::toBytes(nativePath).constData(), O_RDONLY | O_CLOEXEC);
    if (m_fd >= 0)
        ::posix_fadvise(m_fd, 0, 0, POSIX_FADV_SEQUENTIAL);
    return m_fd >= 0;
}

NativeFile::OpenOutcome NativeFile::openRegularFile(const QString& nativePath)
{
    close();
    const QByteArray path = NativeName::toBytes(nativePath);
    struct stat st {
    };
    if (path.isEmpty() || ::stat(path.constData(), &st) != 0)
        return !path.isEmpty() && errno == EACCES ? Unreadable : Missing;
    if (S_ISDIR(st.st_mode))
        return Folder;
    if (!S_ISREG(st.st_mode))
        return NotRegular;
    m_fd = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (m_fd < 0)
        return errno == ENOENT || errno == ENOTDIR ? Missing : Unreadable;
    if (::fstat(m_fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        close();
        return NotRegular;
    }
    return Opened;
}

bool NativeFile::createForWriting(const QString& nativePath)
{
    close();
    if (nativePath.isEmpty())
        return false;
    m_fd = ::open(NativeName::toBytes(nativePath).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    return m_fd >= 0;
}

bool NativeFile::copyFrom(NativeFile& source, qint64 size)
{
    if (m_fd < 0 || source.m_fd < 0)
        return false;
    qint64 done = 0;
    while (m_inKernel && done < size) {
        const ssize_t n = ::copy_file_range(source.m_fd, nullptr, m_fd, nullptr, static_cast<size_t>(size - done), 0);
        if (n > 0)
            done += n;
        else if (n < 0 && errno == EINTR)
            continue;
        else if (n == 0 || done > 0)
            return false; // the source shrank meanwhile, or the target failed midway
        else
            m_inKernel = false; // EXDEV, ENOSYS, EINVAL...: this pair of files needs read and write
    }
    if (done == size)
        return true;
    m_buffer.resize(static_cast<size_t>(kBufferPiece));
    while (done < size) {
        const qint64 piece = qMin(size - done, kBufferPiece);
        if (readAll(source.m_fd, m_buffer.data(), piece) != piece || !writeAll(m_fd, m_buffer.data(), piece))
            return false;
        done += piece;
    }
    return true;
}

bool NativeFile::close()
{
    if (m_fd < 0)
        return true;
    const int fd = m_fd;
    m_fd = -1;
    return ::close(fd) == 0;
}

} // namespace vmk
