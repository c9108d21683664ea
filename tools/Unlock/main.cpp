// Unlock.exe "path": clears what keeps a file from being removed, where this user
// may: write permission on the file and on its folder, and the immutable and
// append-only flags of both. It removes nothing itself; Delete.exe follows.
// Exit code: 0 done (whatever could be cleared), 2 bad command line.

#include "platform/HelperArgument.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

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

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const auto argument = vmk::HelperPathArgument("Unlock.exe");
    if (!argument)
        return 2;
    const QString native = *argument;
    const QByteArray file = QFile::encodeName(native);
    const QByteArray folder = QFile::encodeName(QFileInfo(native).absolutePath());
    clearFlags(folder);
    giveWrite(folder);
    clearFlags(file);
    giveWrite(file);
    return 0;
}
