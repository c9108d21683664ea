#include "platform/ConfinedFolder.h"

#include "platform/NativeName.h"

#include <QRandomGenerator>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace vmk
{
namespace
{
constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

bool goodName(const QString& name)
{
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") && !name.contains(u'/')
        && !name.contains(QChar(0));
}

// What stands under `name` in the folder, without following it.
ConfinedFolder::Refusal refusalFor(int folderFd, const QByteArray& name)
{
    struct stat st;
    if (::fstatat(folderFd, name.constData(), &st, AT_SYMLINK_NOFOLLOW) != 0)
        return ConfinedFolder::Refusal::Failed;
    if (S_ISLNK(st.st_mode))
        return ConfinedFolder::Refusal::LinkOnPath;
    return ConfinedFolder::Refusal::NotAFolder;
}

// mkdir -p for the root, which may itself lie behind links the user chose.
void makeRoot(const QByteArray& root)
{
    for (qsizetype i = 1; i <= root.size(); ++i) {
        if (i == root.size() || root.at(i) == '/')
            ::mkdir(root.left(i).constData(), 0777);
    }
}
} // namespace

ConfinedFolder::ConfinedFolder(const QString& nativeRoot)
    : m_root(nativeRoot)
{
    const QByteArray root = NativeName::toBytes(nativeRoot);
    if (root.isEmpty())
        return;
    m_rootFd = ::open(root.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (m_rootFd < 0 && errno == ENOENT) {
        makeRoot(root);
        m_rootFd = ::open(root.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    }
}

ConfinedFolder::~ConfinedFolder()
{
    if (m_rootFd >= 0)
        ::close(m_rootFd);
}

qint64 ConfinedFolder::freeBytes() const
{
    struct statvfs vs;
    if (m_rootFd < 0 || ::fstatvfs(m_rootFd, &vs) != 0)
        return -1;
    return static_cast<qint64>(vs.f_bavail) * static_cast<qint64>(vs.f_frsize);
}

int ConfinedFolder::openFolder(const QStringList& names, Refusal& why)
{
    why = Refusal::None;
    if (m_rootFd < 0) {
        why = Refusal::Failed;
        return -1;
    }
    int current = ::dup(m_rootFd);
    for (const QString& name : names) {
        if (current < 0) {
            why = Refusal::Failed;
            return -1;
        }
        if (!goodName(name)) {
            ::close(current);
            why = Refusal::BadName;
            return -1;
        }
        const QByteArray bytes = NativeName::toBytes(name);
        int next = ::openat(current, bytes.constData(), kFolderFlags);
        if (next < 0 && errno == ENOENT && ::mkdirat(current, bytes.constData(), 0777) == 0)
            next = ::openat(current, bytes.constData(), kFolderFlags);
        if (next < 0) {
            why = (errno == ELOOP || errno == ENOTDIR || errno == EEXIST) ? refusalFor(current, bytes)
                                                                          : Refusal::Failed;
            ::close(current);
            return -1;
        }
        ::close(current);
        current = next;
    }
    return current;
}

ConfinedFolder::Refusal ConfinedFolder::makeFolders(const QStringList& names)
{
    Refusal why;
    const int fd = openFolder(names, why);
    if (fd >= 0)
        ::close(fd);
    return why;
}

std::unique_ptr<ConfinedFile> ConfinedFolder::createFile(const QStringList& names, Refusal& why)
{
    if (names.isEmpty() || !goodName(names.last())) {
        why = Refusal::BadName;
        return nullptr;
    }
    const int folder = openFolder(names.mid(0, names.size() - 1), why);
    if (folder < 0)
        return nullptr;
    const QByteArray name = NativeName::toBytes(names.last());
    struct stat st;
    if (::fstatat(folder, name.constData(), &st, AT_SYMLINK_NOFOLLOW) == 0 && !S_ISREG(st.st_mode)) {
        why = S_ISLNK(st.st_mode) ? Refusal::LinkOnPath : Refusal::NotAFolder;
        ::close(folder);
        return nullptr;
    }
    for (int attempt = 0; attempt < 16; ++attempt) {
        const QByteArray temp = ".vmk-" + QByteArray::number(QRandomGenerator::global()->generate(), 16) + ".part";
        const int fd = ::openat(folder, temp.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
        if (fd >= 0)
            return std::make_unique<ConfinedFile>(folder, fd, temp, name);
        if (errno != EEXIST)
            break;
    }
    why = Refusal::Failed;
    ::close(folder);
    return nullptr;
}

} // namespace vmk
