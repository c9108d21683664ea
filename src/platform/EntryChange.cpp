#include "platform/EntryChange.h"

#include "platform/NativeName.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>

namespace vmk
{
namespace
{
bool sameEntry(const QByteArray& a, const QByteArray& b)
{
    struct stat sa = {}, sb = {};
    return ::lstat(a.constData(), &sa) == 0 && ::lstat(b.constData(), &sb) == 0 && sa.st_dev == sb.st_dev
        && sa.st_ino == sb.st_ino;
}

EntryChange::Outcome failed(int* error)
{
    if (error)
        *error = errno;
    return EntryChange::Outcome::Failed;
}
} // namespace

EntryChange::Outcome EntryChange::rename(const QString& nativeFrom, const QString& nativeTo, int* error)
{
    const QByteArray from = NativeName::toBytes(nativeFrom), to = NativeName::toBytes(nativeTo);
    if (from.isEmpty() || to.isEmpty()) {
        errno = ENOENT;
        return failed(error);
    }
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return Outcome::Done;
    const int first = errno;
    if (first == EEXIST) {
        // On a case-blind filesystem the new spelling finds the entry itself.
        if (!sameEntry(from, to))
            return Outcome::Exists;
    } else if (first != EINVAL && first != ENOSYS && first != ENOTSUP) {
        return failed(error);
    } else {
        // The filesystem cannot refuse to replace: look first. Nothing else on the
        // interface thread can slip a file in between.
        struct stat st = {};
        if (::lstat(to.constData(), &st) == 0 && !sameEntry(from, to))
            return Outcome::Exists;
    }
    if (std::rename(from.constData(), to.constData()) == 0)
        return Outcome::Done;
    return failed(error);
}

EntryChange::Outcome EntryChange::makeFolder(const QString& nativePath, int* error)
{
    const QByteArray path = NativeName::toBytes(nativePath);
    if (path.isEmpty()) {
        errno = ENOENT;
        return failed(error);
    }
    if (::mkdir(path.constData(), 0777) == 0)
        return Outcome::Done;
    if (errno == EEXIST)
        return Outcome::Exists;
    return failed(error);
}

} // namespace vmk
