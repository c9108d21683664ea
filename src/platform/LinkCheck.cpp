#include "platform/LinkCheck.h"

#include "platform/NativeName.h"

#include <climits>
#include <cstdlib>
#include <sys/stat.h>

namespace vmk
{

bool LinkCheck::isLink(const QString& nativePath)
{
    struct stat st;
    return !nativePath.isEmpty() && ::lstat(NativeName::toBytes(nativePath).constData(), &st) == 0
        && S_ISLNK(st.st_mode);
}

bool LinkCheck::isRegularFile(const QString& nativePath)
{
    struct stat st;
    return !nativePath.isEmpty() && ::lstat(NativeName::toBytes(nativePath).constData(), &st) == 0
        && S_ISREG(st.st_mode);
}

QString LinkCheck::resolved(const QString& nativePath)
{
    if (nativePath.isEmpty())
        return {};
    char* real = ::realpath(NativeName::toBytes(nativePath).constData(), nullptr);
    if (!real)
        return {};
    const QString out = NativeName::fromBytes(QByteArray(real));
    std::free(real);
    return out;
}

bool LinkCheck::sameEntry(const QString& nativeA, const QString& nativeB)
{
    struct stat a;
    struct stat b;
    return !nativeA.isEmpty() && !nativeB.isEmpty() && ::stat(NativeName::toBytes(nativeA).constData(), &a) == 0
        && ::stat(NativeName::toBytes(nativeB).constData(), &b) == 0 && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

} // namespace vmk
