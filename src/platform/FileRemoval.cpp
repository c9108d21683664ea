#include "platform/FileRemoval.h"

#include "platform/NativeName.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vmk
{
namespace
{
void clearFlags(const QByteArray& path)
{
    const int fd = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return;
    int flags = 0;
    if (::ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0 && (flags & (FS_IMMUTABLE_FL | FS_APPEND_FL))) {
        flags &= ~(FS_IMMUTABLE_FL | FS_APPEND_FL);
        ::ioctl(fd, FS_IOC_SETFLAGS, &flags);
    }
    ::close(fd);
}

void giveWrite(const QByteArray& path)
{
    struct stat st;
    if (::lstat(path.constData(), &st) == 0 && !S_ISLNK(st.st_mode))
        ::chmod(path.constData(), (st.st_mode & 07777) | S_IWUSR);
}
} // namespace

void FileRemoval::makeWritable(const QString& nativePath)
{
    if (!nativePath.isEmpty())
        giveWrite(NativeName::toBytes(nativePath));
}

void FileRemoval::unlock(const QString& nativePath)
{
    if (nativePath.isEmpty())
        return;
    const QByteArray file = NativeName::toBytes(nativePath);
    const QByteArray folder = NativeName::toBytes(QFileInfo(nativePath).absolutePath());
    clearFlags(folder);
    giveWrite(folder);
    clearFlags(file);
    giveWrite(file);
}

bool FileRemoval::makeWritableAndRemove(const QString& nativePath, bool emptyFolderToo)
{
    if (nativePath.isEmpty())
        return false;
    const QByteArray path = NativeName::toBytes(nativePath);
    giveWrite(path);
    if (::unlink(path.constData()) != 0 && emptyFolderToo && (errno == EISDIR || errno == EPERM))
        ::rmdir(path.constData());
    struct stat st;
    return ::lstat(path.constData(), &st) != 0;
}

bool FileRemoval::entryExists(const QString& nativePath)
{
    struct stat st;
    return !nativePath.isEmpty() && ::lstat(NativeName::toBytes(nativePath).constData(), &st) == 0;
}

} // namespace vmk
