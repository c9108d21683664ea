#include "platform/FileSearch.h"

#include "platform/DriveMap.h"
#include "platform/MountTable.h"
#include "platform/NativeName.h"

#include <QDir>
#include <QHash>
#include <QRegularExpression>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace vmk
{
namespace
{
FileSearch::AttributeHook& hookSlot()
{
    static FileSearch::AttributeHook hook;
    return hook;
}

QString parentOf(const QString& native)
{
    const qsizetype slash = native.lastIndexOf(u'/');
    return slash <= 0 ? QStringLiteral("/") : native.left(slash);
}

// Mount points of kernel filesystems, read once per listing and only when an
// entry sits on another device than its folder.
class PseudoMounts
{
public:
    bool contains(const QString& path)
    {
        if (!m_loaded) {
            for (const MountEntry& e : MountTable::read())
                m_types.insert(e.mountPoint, e.fsType); // the last mount on a point wins
            m_loaded = true;
        }
        return MountTable::isPseudoFilesystem(m_types.value(path));
    }

private:
    bool m_loaded = false;
    QMap<QString, QString> m_types;
};

EntryKind kindOf(const struct stat& lst, const struct stat& st)
{
    if (S_ISDIR(st.st_mode))
        return S_ISLNK(lst.st_mode) ? EntryKind::Junction : EntryKind::Folder;
    if (S_ISREG(st.st_mode))
        return EntryKind::File;
    if (S_ISFIFO(st.st_mode))
        return EntryKind::Fifo;
    if (S_ISSOCK(st.st_mode))
        return EntryKind::Socket;
    return EntryKind::Device;
}

// Local times of one listing by their second. Each new local QDateTime asks the
// C library for the zone, which looks at /etc/localtime twice; the files of a
// folder mostly share a few times (an unpacked archive, a copied tree).
class LocalTimes
{
public:
    QDateTime of(qint64 secs)
    {
        auto it = m_known.constFind(secs);
        if (it == m_known.cend())
            it = m_known.insert(secs, QDateTime::fromSecsSinceEpoch(secs));
        return it.value();
    }

private:
    QHash<qint64, QDateTime> m_known;
};

// Where one entry is looked at: by its name relative to its open folder in a
// listing (no path walk per entry), or by its full path (`dirfd` AT_FDCWD).
struct EntryAt {
    int dirfd;
    const char* name;
    bool surelyWritable = false; // known without asking the kernel again (see ownWritable)
};

// True when access(W_OK) cannot fail for this entry, so a listing asks only for
// the others: a file or folder (not a link) on the listed folder's writable
// volume, owned by us with its owner write bit, not immutable. The owner's
// rights come from those bits alone, ACLs included.
bool ownWritable(const struct statx& sx, dev_t folderDev, bool readOnlyVolume, uid_t uid)
{
    return !readOnlyVolume && (S_ISREG(sx.stx_mode) || S_ISDIR(sx.stx_mode))
        && makedev(sx.stx_dev_major, sx.stx_dev_minor) == folderDev && sx.stx_uid == uid && (sx.stx_mode & S_IWUSR)
        && (sx.stx_attributes_mask & STATX_ATTR_IMMUTABLE) && !(sx.stx_attributes & STATX_ATTR_IMMUTABLE);
}

// The fields of stat that the attribute word and FoundEntry read.
struct stat statOf(const struct statx& sx)
{
    struct stat st {
    };
    st.st_dev = makedev(sx.stx_dev_major, sx.stx_dev_minor);
    st.st_ino = sx.stx_ino;
    st.st_mode = sx.stx_mode;
    st.st_uid = sx.stx_uid;
    st.st_gid = sx.stx_gid;
    st.st_size = static_cast<off_t>(sx.stx_size);
    st.st_mtim.tv_sec = sx.stx_mtime.tv_sec;
    st.st_mtim.tv_nsec = sx.stx_mtime.tv_nsec;
    return st;
}

quint32 computeAttributes(const QString& path, EntryAt at, const struct stat& lst, dev_t parentDev,
    PseudoMounts& mounts, struct stat* target, EntryKind* kind = nullptr)
{
    if (kind)
        *kind = EntryKind::File;
    const qsizetype nameStart = path.lastIndexOf(u'/') + 1;
    const bool hidden = nameStart < path.size() && path[nameStart] == u'.';
    struct stat st = lst;
    if (S_ISLNK(lst.st_mode)) {
        if (::fstatat(at.dirfd, at.name, &st, 0) != 0) {
            if (kind)
                *kind = EntryKind::DanglingLink;
            return AttrArchive | AttrReparsePoint | (hidden ? quint32(AttrHidden) : 0u); // dangling link
        }
        if (S_ISDIR(st.st_mode)) {
            if (kind)
                *kind = EntryKind::Junction;
            return AttrJunction;
        }
    }
    if (target)
        *target = st;
    if (kind)
        *kind = kindOf(lst, st);
    if (S_ISDIR(st.st_mode)) {
        if (lst.st_dev != parentDev && mounts.contains(path)) {
            if (kind)
                *kind = EntryKind::Junction;
            return AttrJunction;
        }
        quint32 a = AttrDirectory;
        if (hidden)
            a |= AttrHidden;
        if (!at.surelyWritable && ::faccessat(at.dirfd, at.name, W_OK, 0) != 0)
            a |= AttrReadOnly;
        return a;
    }
    if (!S_ISREG(st.st_mode))
        return AttrSystem | AttrDevice | (hidden ? quint32(AttrHidden) : 0u);
    quint32 a = AttrArchive;
    if (hidden)
        a |= AttrHidden;
    if (!at.surelyWritable && ::faccessat(at.dirfd, at.name, W_OK, 0) != 0)
        a |= AttrReadOnly;
    return a;
}

quint32 applyHook(const QString& path, quint32 computed)
{
    const FileSearch::AttributeHook hook = hookSlot();
    if (!hook)
        return computed;
    return hook(path, computed).value_or(computed);
}

QRegularExpression patternRegex(const QString& pattern)
{
    QString p = pattern.isEmpty() || pattern == QLatin1String("*.*") ? QStringLiteral("*") : pattern;
    return QRegularExpression(
        QRegularExpression::wildcardToRegularExpression(p, QRegularExpression::UnanchoredWildcardConversion),
        QRegularExpression::CaseInsensitiveOption);
}
} // namespace

QList<FoundEntry> FileSearch::listNative(const QString& nativeFolder, const QString& pattern)
{
    QList<FoundEntry> out;
    const QString folder
        = nativeFolder.size() > 1 && nativeFolder.endsWith(u'/') ? nativeFolder.chopped(1) : nativeFolder;
    // Entries are looked at relative to the open folder: a folder of 100,000
    // files costs no path walk per entry.
    const int dirfd = ::open(NativeName::toBytes(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dirfd < 0)
        return out;
    struct stat fst;
    DIR* dir = ::fstat(dirfd, &fst) == 0 ? ::fdopendir(dirfd) : nullptr;
    if (!dir) {
        ::close(dirfd);
        return out;
    }
    const QRegularExpression re = patternRegex(pattern);
    const bool all = pattern.isEmpty() || pattern == QLatin1String("*") || pattern == QLatin1String("*.*");
    const bool hooked = static_cast<bool>(hookSlot());
    const QString prefix = folder == QLatin1String("/") ? folder : folder + u'/';
    struct statvfs volume;
    const bool readOnlyVolume = ::fstatvfs(dirfd, &volume) != 0 || (volume.f_flag & ST_RDONLY);
    const uid_t uid = ::getuid(); // access() checks the real user
    constexpr unsigned kStatxFields
        = STATX_TYPE | STATX_MODE | STATX_UID | STATX_GID | STATX_INO | STATX_SIZE | STATX_MTIME;
    PseudoMounts mounts;
    LocalTimes times;
    while (struct dirent* de = ::readdir(dir)) {
        const char* rawName = de->d_name;
        if (rawName[0] == '.' && (rawName[1] == 0 || (rawName[1] == '.' && rawName[2] == 0)))
            continue;
        const QString nativeName = NativeName::fromBytes(QByteArray::fromRawData(rawName, qstrlen(rawName)));
        QString logicalName = DriveMap::encodeName(nativeName);
        if (!all && !re.match(logicalName).hasMatch())
            continue;
        struct statx sx;
        if (::statx(dirfd, rawName, AT_SYMLINK_NOFOLLOW, kStatxFields, &sx) != 0)
            continue; // vanished meanwhile
        const struct stat lst = statOf(sx);
        const QString path = prefix + nativeName;
        struct stat st = lst;
        FoundEntry e;
        e.name = std::move(logicalName);
        e.nativePath = path;
        const quint32 computed
            = computeAttributes(path, { dirfd, rawName, ownWritable(sx, fst.st_dev, readOnlyVolume, uid) }, lst,
                fst.st_dev, mounts, &st, &e.kind);
        e.attributes = hooked ? applyHook(path, computed) : computed;
        if (e.attributes == AttrJunction)
            e.kind = EntryKind::Junction; // a test double's junction is walked past like a real one
        e.size = S_ISREG(st.st_mode) ? static_cast<qint64>(st.st_size) : 0;
        e.modified = times.of(st.st_mtim.tv_sec);
        out.append(std::move(e));
    }
    ::closedir(dir); // closes dirfd too
    std::sort(out.begin(), out.end(), [](const FoundEntry& a, const FoundEntry& b) { return a.name < b.name; });
    return out;
}

QList<FoundEntry> FileSearch::list(const QString& logicalFolder, const QString& pattern)
{
    const QString native = DriveMap::instance().toNative(logicalFolder);
    if (native.isEmpty())
        return {};
    return listNative(native, pattern);
}

std::optional<FoundEntry> FileSearch::entryOfNative(const QString& nativePath)
{
    const QString path = nativePath.size() > 1 && nativePath.endsWith(u'/') ? nativePath.chopped(1) : nativePath;
    if (path.isEmpty())
        return std::nullopt;
    const QByteArray encoded = NativeName::toBytes(path);
    struct stat lst;
    if (::lstat(encoded.constData(), &lst) != 0)
        return std::nullopt;
    struct stat pst;
    const dev_t parentDev
        = ::stat(NativeName::toBytes(parentOf(path)).constData(), &pst) == 0 ? pst.st_dev : lst.st_dev;
    PseudoMounts mounts;
    struct stat st = lst;
    FoundEntry e;
    e.name = DriveMap::encodeName(path.mid(path.lastIndexOf(u'/') + 1));
    e.nativePath = path;
    e.attributes = applyHook(
        path, computeAttributes(path, { AT_FDCWD, encoded.constData() }, lst, parentDev, mounts, &st, &e.kind));
    if (e.attributes == AttrJunction)
        e.kind = EntryKind::Junction;
    e.size = S_ISREG(st.st_mode) ? static_cast<qint64>(st.st_size) : 0;
    e.modified = QDateTime::fromSecsSinceEpoch(st.st_mtim.tv_sec);
    return e;
}

quint32 FileSearch::attributesOfNative(const QString& nativePath)
{
    if (nativePath.isEmpty())
        return AttrInvalid;
    QString path = nativePath.size() > 1 && nativePath.endsWith(u'/') ? nativePath.chopped(1) : nativePath;
    const QByteArray encoded = NativeName::toBytes(path);
    struct stat lst;
    if (::lstat(encoded.constData(), &lst) != 0)
        return AttrInvalid;
    struct stat pst;
    const dev_t parentDev
        = ::stat(NativeName::toBytes(parentOf(path)).constData(), &pst) == 0 ? pst.st_dev : lst.st_dev;
    PseudoMounts mounts;
    if (path == QLatin1String("/"))
        return applyHook(path, AttrDirectory);
    return applyHook(path, computeAttributes(path, { AT_FDCWD, encoded.constData() }, lst, parentDev, mounts, nullptr));
}

quint32 FileSearch::attributesOf(const QString& logicalPath)
{
    return attributesOfNative(DriveMap::instance().toNative(logicalPath));
}

void FileSearch::setAttributeHook(AttributeHook hook)
{
    hookSlot() = std::move(hook);
}

} // namespace vmk
