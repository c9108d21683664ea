#include "platform/DriveMap.h"

#include "platform/MountTable.h"
#include "platform/NativeName.h"
#include "platform/ShortNames.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QStringList>

#include <dirent.h>
#include <sys/stat.h>
#include <time.h>

#include <algorithm>
#include <deque>

namespace vmk
{
namespace
{
constexpr char16_t kPrivateBackslash = 0xF05C;
constexpr char16_t kPrivateBar = 0xF07C;

bool exists(const QString& native)
{
    struct stat st;
    return ::lstat(NativeName::toBytes(native).constData(), &st) == 0;
}

QString cleanNative(const QString& path)
{
    QString p = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    return p.isEmpty() ? QStringLiteral("/") : p;
}

QString readSmallFile(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(f.read(64)).trimmed();
}

// The block device behind "maj:min" is removable when sysfs says so for it or,
// for a partition, for its disk.
bool isRemovable(const QString& majorMinor)
{
    const QString dev = QFileInfo(QStringLiteral("/sys/dev/block/") + majorMinor).canonicalFilePath();
    if (dev.isEmpty())
        return false;
    if (readSmallFile(dev + QStringLiteral("/removable")) == QLatin1String("1"))
        return true;
    return QFile::exists(dev + QStringLiteral("/partition"))
        && readSmallFile(dev + QStringLiteral("/../removable")) == QLatin1String("1");
}

bool isUserMountPoint(const QString& mountPoint)
{
    return MountTable::isUnder(mountPoint, QStringLiteral("/media"))
        || MountTable::isUnder(mountPoint, QStringLiteral("/run/media"))
        || MountTable::isUnder(mountPoint, QStringLiteral("/mnt"));
}

// udev publishes labels as links in /dev/disk/by-label, with "\x20" for a space.
QString labelOf(const QString& source)
{
    if (!source.startsWith(QLatin1String("/dev/")))
        return {};
    const QString target = QFileInfo(source).canonicalFilePath();
    QDir byLabel(QStringLiteral("/dev/disk/by-label"));
    for (const QString& name : byLabel.entryList(QDir::Files | QDir::System | QDir::NoDotAndDotDot)) {
        if (QFileInfo(byLabel.filePath(name)).canonicalFilePath() != target)
            continue;
        QString label;
        for (qsizetype i = 0; i < name.size(); ++i) {
            if (name.mid(i, 2) == QLatin1String("\\x") && i + 3 < name.size()) {
                bool ok = false;
                const int c = name.mid(i + 2, 2).toInt(&ok, 16);
                if (ok) {
                    label += QChar(c);
                    i += 3;
                    continue;
                }
            }
            label += name[i];
        }
        return label;
    }
    return {};
}

QChar firstFreeLetter(const QList<DriveInfo>& drives)
{
    for (char16_t c = u'D'; c <= u'Z'; ++c) {
        if (std::none_of(drives.begin(), drives.end(), [c](const DriveInfo& d) { return d.letter == QChar(c); }))
            return QChar(c);
    }
    return {};
}

// The key under which a name is found ignoring case: each character folded as
// QString::compare(Qt::CaseInsensitive) folds it, so both agree on every name.
QString foldedKey(const QString& name)
{
    QString key = name;
    char16_t* d = reinterpret_cast<char16_t*>(key.data());
    for (qsizetype i = 0; i < key.size(); ++i) {
        if (QChar::isHighSurrogate(d[i]) && i + 1 < key.size() && QChar::isLowSurrogate(d[i + 1])) {
            const char32_t folded = QChar::toCaseFolded(QChar::surrogateToUcs4(d[i], d[i + 1]));
            d[i] = QChar::highSurrogate(folded);
            d[i + 1] = QChar::lowSurrogate(folded);
            ++i;
        } else {
            d[i] = QChar::toCaseFolded(d[i]);
        }
    }
    return key;
}

// A folder's names by their folded key, for the fallback of toNative. The memory
// scan resolves hundreds of upper-cased paths in the same few folders, and
// listing a folder of 1,300 names again for each miss cost ~6 ms a path. An
// index is kept per thread for a few seconds and only while its folder is
// unchanged (same device, inode and change times). A folder changed too shortly
// before its listing to tell a later change by its times is listed afresh each time.
class FolderNames
{
public:
    // The folder's name equal to `name` ignoring case, the first in name order
    // when several are; empty when none is.
    static QString find(const QString& folder, const QString& name)
    {
        struct stat st;
        if (::stat(NativeName::toBytes(folder).constData(), &st) != 0 || !S_ISDIR(st.st_mode))
            return {};
        const qint64 now = monotonicMs();
        std::deque<Index>& kept = cache();
        auto it = std::find_if(kept.begin(), kept.end(), [&](const Index& x) { return x.folder == folder; });
        if (it != kept.end() && !(it->sameState(st) && now - it->builtAt < kKeepMs)) {
            kept.erase(it);
            it = kept.end();
        }
        if (it != kept.end())
            return it->names.value(foldedKey(name));
        Index fresh = list(folder, st, now);
        const QString found = fresh.names.value(foldedKey(name));
        if (fresh.stable) {
            if (kept.size() >= kKeptFolders)
                kept.pop_front();
            kept.push_back(std::move(fresh));
        }
        return found;
    }

private:
    static constexpr qint64 kKeepMs = 3000;
    static constexpr size_t kKeptFolders = 8;
    // Folder times are taken from a coarse clock: a change in the same tick as
    // an earlier one may leave them equal.
    static constexpr qint64 kTimeGrainNs = 50'000'000;

    struct Index {
        QString folder;
        dev_t dev = 0;
        ino_t ino = 0;
        struct timespec mtime {
        };
        struct timespec ctime {
        };
        qint64 builtAt = 0;
        bool stable = false;
        QHash<QString, QString> names;

        bool sameState(const struct stat& st) const
        {
            return st.st_dev == dev && st.st_ino == ino && st.st_mtim.tv_sec == mtime.tv_sec
                && st.st_mtim.tv_nsec == mtime.tv_nsec && st.st_ctim.tv_sec == ctime.tv_sec
                && st.st_ctim.tv_nsec == ctime.tv_nsec;
        }
    };

    static std::deque<Index>& cache()
    {
        thread_local std::deque<Index> kept;
        return kept;
    }

    static qint64 monotonicMs()
    {
        struct timespec ts;
        ::clock_gettime(CLOCK_MONOTONIC, &ts);
        return qint64(ts.tv_sec) * 1000 + ts.tv_nsec / 1000000;
    }

    static qint64 ns(const struct timespec& t) { return qint64(t.tv_sec) * 1'000'000'000 + t.tv_nsec; }

    // Lists a folder's names, by their real bytes, without following anything.
    static Index list(const QString& folder, const struct stat& st, qint64 now)
    {
        struct timespec wall;
        ::clock_gettime(CLOCK_REALTIME, &wall);
        Index x;
        x.folder = folder;
        x.dev = st.st_dev;
        x.ino = st.st_ino;
        x.mtime = st.st_mtim;
        x.ctime = st.st_ctim;
        x.builtAt = now;
        x.stable = ns(wall) - std::max(ns(st.st_mtim), ns(st.st_ctim)) > kTimeGrainNs;
        DIR* dir = ::opendir(NativeName::toBytes(folder).constData());
        if (!dir)
            return x;
        while (const struct dirent* de = ::readdir(dir)) {
            const char* raw = de->d_name;
            if (raw[0] == '.' && (raw[1] == 0 || (raw[1] == '.' && raw[2] == 0)))
                continue;
            const QString name = NativeName::fromBytes(QByteArray::fromRawData(raw, qstrlen(raw)));
            QString& kept = x.names[foldedKey(name)];
            if (kept.isEmpty() || name < kept)
                kept = name;
        }
        ::closedir(dir);
        return x;
    }
};
} // namespace

DriveMap& DriveMap::instance()
{
    static DriveMap map;
    return map;
}

DriveMap::DriveMap()
{
    const QString app = QCoreApplication::instance() ? QCoreApplication::applicationDirPath() : QString();
    m_programFolder = app.isEmpty() ? QDir::currentPath() : app;
    refresh();
}

void DriveMap::setProgramFolder(const QString& nativeFolder)
{
    m_programFolder = cleanNative(nativeFolder);
    if (!m_testMode)
        refresh();
}

void DriveMap::setDeviceOverride(const QString& nativeDir)
{
    m_deviceOverride = nativeDir.isEmpty() ? QString() : cleanNative(nativeDir);
    m_testMode = false;
    refresh();
}

void DriveMap::setTestDrives(const QMap<QChar, QString>& drives, QChar device)
{
    m_testMode = true;
    m_drives.clear();
    for (auto it = drives.begin(); it != drives.end(); ++it) {
        DriveInfo d;
        d.letter = it.key().toUpper();
        d.root = it.key().toUpper() == u'C' && it.value() == QLatin1String("/") ? it.value() : cleanNative(it.value());
        d.isDevice = d.letter == device.toUpper();
        m_drives << d;
    }
}

void DriveMap::resetToHost()
{
    m_testMode = false;
    m_deviceOverride.clear();
    refresh();
}

void DriveMap::refresh()
{
    if (m_testMode)
        return;
    if (m_deviceOverride.isEmpty() && computeFromInherited())
        return;
    computeFromHost();
}

bool DriveMap::computeFromInherited()
{
    const QString text = qEnvironmentVariable(kInheritedVariable);
    if (text.isEmpty())
        return false;
    QList<DriveInfo> drives;
    QChar device;
    for (const QString& line : text.split(u'\n', Qt::SkipEmptyParts)) {
        const QStringList f = line.split(u'\t');
        if (f.size() == 2 && f[0] == QLatin1String("*") && !f[1].isEmpty()) {
            device = f[1][0];
        } else if (f.size() >= 2 && f[0].size() == 1) {
            DriveInfo d;
            d.letter = f[0][0];
            d.root = f[1];
            d.label = f.value(2);
            d.fsType = f.value(3);
            drives << d;
        }
    }
    if (drives.isEmpty())
        return false;
    for (DriveInfo& d : drives)
        d.isDevice = d.letter == device;
    m_drives = drives;
    return true;
}

void DriveMap::computeFromHost()
{
    const QList<MountEntry> table = MountTable::read();
    QList<DriveInfo> drives;
    DriveInfo c;
    c.letter = u'C';
    c.root = QStringLiteral("/");
    c.fsType = MountTable::holding(table, QStringLiteral("/")).fsType;
    drives << c;

    // Lettered mounts, in the order of their mount points; a point mounted twice counts once.
    QMap<QString, MountEntry> lettered;
    for (const MountEntry& e : table) {
        if (e.mountPoint == QLatin1String("/") || MountTable::isPseudoFilesystem(e.fsType))
            continue;
        if (isUserMountPoint(e.mountPoint) || isRemovable(e.majorMinor))
            lettered.insert(e.mountPoint, e);
        else
            lettered.remove(e.mountPoint); // covered by a later, unlettered mount
    }
    char16_t next = u'D';
    for (const MountEntry& e : lettered) {
        if (next > u'Z')
            break;
        DriveInfo d;
        d.letter = QChar(next++);
        d.root = e.mountPoint;
        d.fsType = e.fsType;
        d.label = labelOf(e.source);
        drives << d;
    }
    m_drives = drives;
    assignDevice(m_deviceOverride.isEmpty() ? m_programFolder : m_deviceOverride);
}

void DriveMap::assignDevice(const QString& deviceFolder)
{
    const QString folder = cleanNative(deviceFolder);
    // Under --device the folder itself is the device unless it is a lettered root.
    DriveInfo* holder = nullptr;
    for (DriveInfo& d : m_drives) {
        const bool match
            = m_deviceOverride.isEmpty() ? (d.letter != u'C' && MountTable::isUnder(folder, d.root)) : d.root == folder;
        if (match && (!holder || d.root.size() > holder->root.size()))
            holder = &d;
    }
    if (holder) {
        holder->isDevice = true;
        return;
    }
    const QChar letter = firstFreeLetter(m_drives);
    if (letter.isNull())
        return;
    DriveInfo d;
    d.letter = letter;
    d.root = folder;
    d.isDevice = true;
    m_drives << d;
}

std::optional<DriveInfo> DriveMap::drive(QChar letter) const
{
    const QChar up = letter.toUpper();
    for (const DriveInfo& d : m_drives) {
        if (d.letter == up)
            return d;
    }
    return std::nullopt;
}

std::optional<DriveInfo> DriveMap::device() const
{
    for (const DriveInfo& d : m_drives) {
        if (d.isDevice)
            return d;
    }
    return std::nullopt;
}

QString DriveMap::deviceDrive() const
{
    const auto d = device();
    return d ? d->drive() : QString();
}

bool DriveMap::hasDriveLetter(const QString& path)
{
    return path.size() >= 2 && path[1] == u':' && path[0].isLetter() && path[0].unicode() < 128
        && (path.size() == 2 || path[2] == u'\\' || path[2] == u'/');
}

QString DriveMap::nativeOfArgument(const QString& pathOrNative) const
{
    return hasDriveLetter(pathOrNative) ? toNative(pathOrNative) : pathOrNative;
}

QString DriveMap::toNative(const QString& logical) const
{
    QString base;
    QString rest;
    if (hasDriveLetter(logical)) {
        const auto d = drive(logical[0]);
        if (!d)
            return {};
        base = d->root;
        rest = logical.mid(2);
    } else if (logical.startsWith(u'\\') || logical.startsWith(u'/')) {
        // A rooted path without a letter lies on the drive of the current folder.
        const QString cur = toLogical(QDir::currentPath());
        const auto d = hasDriveLetter(cur) ? drive(cur[0]) : std::nullopt;
        base = d ? d->root : QStringLiteral("/");
        rest = logical;
    } else {
        base = QDir::currentPath();
        rest = logical;
    }
    QStringList parts = rest.split(QRegularExpression(QStringLiteral("[\\\\/]")), Qt::SkipEmptyParts);
    QString path = base;
    bool resolving = true;
    for (const QString& raw : parts) {
        if (raw == QLatin1String("."))
            continue;
        if (raw == QLatin1String("..")) {
            if (path != base)
                path = QFileInfo(path).path();
            continue;
        }
        const QString name = decodeName(raw);
        QString next = path == QLatin1String("/") ? u'/' + name : path + u'/' + name;
        if (resolving && !exists(next)) {
            QString found = FolderNames::find(path, name);
            if (found.isEmpty() && name.contains(u'~'))
                found = ShortNames::resolve(path, name);
            if (found.isEmpty())
                resolving = false; // the rest is new: keep it as written
            else
                next = path == QLatin1String("/") ? u'/' + found : path + u'/' + found;
        }
        path = next;
    }
    return path;
}

QString DriveMap::toLogical(const QString& native) const
{
    const QString path = cleanNative(native);
    const DriveInfo* best = nullptr;
    for (const DriveInfo& d : m_drives) {
        if (MountTable::isUnder(path, d.root) && (!best || d.root.size() > best->root.size()))
            best = &d;
    }
    if (!best)
        return {};
    QString rest = best->root == QLatin1String("/") ? path.mid(1) : path.mid(best->root.size() + 1);
    QStringList parts;
    for (const QString& p : rest.split(u'/', Qt::SkipEmptyParts))
        parts << encodeName(p);
    if (parts.isEmpty())
        return best->drive() + u'\\';
    return best->drive() + u'\\' + parts.join(u'\\');
}

QString DriveMap::logicalProgramFolder() const
{
    return toLogical(m_programFolder);
}

QString DriveMap::exportForChildren() const
{
    QStringList lines;
    for (const DriveInfo& d : m_drives)
        lines << QStringList { QString(d.letter), d.root, d.label, d.fsType }.join(u'\t');
    const QString dev = deviceDrive();
    if (!dev.isEmpty())
        lines << QStringLiteral("*\t") + dev.left(1);
    return lines.join(u'\n');
}

QString DriveMap::encodeName(const QString& nativeName)
{
    QString out = nativeName;
    out.replace(u'\\', QChar(kPrivateBackslash));
    out.replace(u'|', QChar(kPrivateBar));
    return out;
}

QString DriveMap::decodeName(const QString& logicalName)
{
    QString out = logicalName;
    out.replace(QChar(kPrivateBackslash), u'\\');
    out.replace(QChar(kPrivateBar), u'|');
    return out;
}

} // namespace vmk
