#include "platform/DriveMap.h"

#include "platform/MountTable.h"
#include "platform/NativeName.h"
#include "platform/ShortNames.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>

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

// Lists a folder's names, by their real bytes, without following anything; the
// caller matches them.
QStringList namesIn(const QString& folder)
{
    QStringList names;
    DIR* dir = ::opendir(NativeName::toBytes(folder).constData());
    if (!dir)
        return names;
    while (const struct dirent* de = ::readdir(dir)) {
        const QByteArray raw(de->d_name);
        if (raw != "." && raw != "..")
            names << NativeName::fromBytes(raw);
    }
    ::closedir(dir);
    names.sort();
    return names;
}
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
            QString found;
            for (const QString& entry : namesIn(path)) {
                if (entry.compare(name, Qt::CaseInsensitive) == 0) {
                    found = entry;
                    break;
                }
            }
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
