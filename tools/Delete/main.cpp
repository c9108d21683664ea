// Delete.exe "path": removes the file (or an empty folder) and reports by exit
// code: 0 the path is gone, 1 it is still there, 2 bad command line.

#include "platform/HelperArgument.h"

#include <QCoreApplication>
#include <QFile>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const auto argument = vmk::HelperPathArgument("Delete.exe");
    if (!argument)
        return 2;
    const QString native = *argument;
    const QByteArray path = QFile::encodeName(native);
    if (::unlink(path.constData()) != 0 && (errno == EISDIR || errno == EPERM))
        ::rmdir(path.constData());
    struct stat st;
    if (::lstat(path.constData(), &st) == 0) {
        std::fprintf(stderr, "Delete.exe: %s: %s\n", native.toUtf8().constData(), std::strerror(errno));
        return 1;
    }
    return 0;
}
