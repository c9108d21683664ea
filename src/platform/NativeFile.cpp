#include "platform/NativeFile.h"

#include "platform/NativeName.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vmk
{

int NativeFile::openForReading(const QString& native)
{
    const int fd = ::open(NativeName::toBytes(native).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0)
        return -1;
    // Reads of a regular file ignore O_NONBLOCK; take it off for everything else.
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags >= 0)
        ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
    return fd;
}

void NativeFile::close(int fd)
{
    if (fd >= 0)
        ::close(fd);
}

bool NativeFile::exists(const QString& native)
{
    struct stat st;
    return ::lstat(NativeName::toBytes(native).constData(), &st) == 0;
}

} // namespace vmk
