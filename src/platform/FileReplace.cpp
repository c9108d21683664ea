#include "platform/FileReplace.h"

#include "platform/FileRemoval.h"
#include "platform/NativeName.h"

#include <QFile>
#include <QFileInfo>

#include <cstdio>

#include <fcntl.h>

namespace vmk
{

bool FileReplace::exchange(const QString& nativeA, const QString& nativeB)
{
    const QByteArray a = NativeName::toBytes(nativeA), b = NativeName::toBytes(nativeB);
    return !a.isEmpty() && !b.isEmpty()
        && ::renameat2(AT_FDCWD, a.constData(), AT_FDCWD, b.constData(), RENAME_EXCHANGE) == 0;
}

bool FileReplace::move(const QString& nativeSource, const QString& nativeTarget)
{
    const QByteArray from = NativeName::toBytes(nativeSource), to = NativeName::toBytes(nativeTarget);
    return !from.isEmpty() && !to.isEmpty() && std::rename(from.constData(), to.constData()) == 0;
}

bool FileReplace::replace(const QString& nativeSource, const QString& nativeTarget)
{
    // Renaming over an existing file makes ext4 push the new file's data to the
    // disk first (its guard against empty files after a crash): about a second
    // per gigabyte. Exchanging the two names is just as atomic and does not; the
    // old data then goes under the source's name. Filesystems without the
    // exchange get the plain rename, which replaces the target in one step too.
    if (QFileInfo(nativeTarget).isFile() && exchange(nativeSource, nativeTarget)) {
        FileRemoval::makeWritableAndRemove(nativeSource, false);
        return true;
    }
    return move(nativeSource, nativeTarget);
}

} // namespace vmk
