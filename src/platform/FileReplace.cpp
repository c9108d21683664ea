#include "platform/FileReplace.h"

#include <QFile>
#include <QFileInfo>

#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace vmk
{

bool FileReplace::replace(const QString& nativeSource, const QString& nativeTarget)
{
    const QByteArray from = QFile::encodeName(nativeSource), to = QFile::encodeName(nativeTarget);
    // Renaming over an existing file makes ext4 push the new file's data to the
    // disk first (its guard against empty files after a crash): about a second
    // per gigabyte. Exchanging the two names is just as atomic and does not; the
    // old data then goes under the source's name. Filesystems without the
    // exchange get the plain rename, which replaces the target in one step too.
    if (QFileInfo(nativeTarget).isFile()
        && ::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_EXCHANGE) == 0) {
        ::unlink(from.constData());
        return true;
    }
    return std::rename(from.constData(), to.constData()) == 0;
}

} // namespace vmk
