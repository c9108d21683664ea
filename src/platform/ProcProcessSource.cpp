#include "platform/ProcProcessSource.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vmk
{
namespace
{
const QByteArray kDeletedMark = " (deleted)";

// /proc files report a size of 0: read until the end.
bool readWhole(const QString& path, QByteArray& out)
{
    out.clear();
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    char buffer[16384];
    for (;;) {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n < 0) {
            ::close(fd);
            return false;
        }
        if (n == 0)
            break;
        out.append(buffer, static_cast<qsizetype>(n));
    }
    ::close(fd);
    return true;
}

QByteArray cutAtNul(QByteArray text)
{
    const qsizetype nul = text.indexOf('\0');
    if (nul >= 0)
        text.truncate(nul);
    return text;
}

QByteArray withoutDeletedMark(QByteArray path)
{
    if (path.endsWith(kDeletedMark))
        path.chop(kDeletedMark.size());
    return path;
}

// Memory-backed files: /proc shows a path for them that nobody can open.
bool isMemfd(const QByteArray& path)
{
    return path.startsWith("/memfd:");
}

bool lexists(const QByteArray& path)
{
    struct stat st {
    };
    return ::lstat(path.constData(), &st) == 0;
}

// The kernel writes a newline of a name as "\012" in maps; a name that really
// holds those four characters is taken as written when it exists.
QByteArray unescapeMapsPath(const QByteArray& path)
{
    if (!path.contains("\\012") || lexists(path))
        return path;
    QByteArray out = path;
    out.replace("\\012", "\n");
    return out;
}

QString fileNameOf(const QByteArray& path)
{
    return QFile::decodeName(cutAtNul(path.mid(path.lastIndexOf('/') + 1)));
}

struct StatFields {
    QByteArray name;
    uint32_t parent = 0;
    uint32_t threads = 0;
};

// "pid (comm) state ppid ..."; comm may hold spaces and ')', so the fields are
// counted from the last ')'.
bool parseStat(const QByteArray& stat, StatFields& out)
{
    const qsizetype open = stat.indexOf('(');
    const qsizetype close = stat.lastIndexOf(')');
    if (open < 0 || close < open)
        return false;
    out.name = stat.mid(open + 1, close - open - 1);
    const QList<QByteArray> fields = stat.mid(close + 1).simplified().split(' ');
    // fields[0] is the state (field 3); ppid is field 4, num_threads field 20.
    if (fields.size() < 18)
        return false;
    bool ok = false;
    out.parent = fields[1].toUInt(&ok);
    if (!ok)
        return false;
    out.threads = fields[17].toUInt();
    return true;
}
} // namespace

const ProcessSource& ProcessSource::host()
{
    static const ProcProcessSource source;
    return source;
}

ProcProcessSource::ProcProcessSource(QString procRoot)
    : m_root(std::move(procRoot))
{
}

QList<ProcessEntry> ProcProcessSource::processes() const
{
    QList<uint32_t> numbers;
    for (const QString& entry : QDir(m_root).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        bool ok = false;
        const uint32_t pid = entry.toUInt(&ok);
        if (ok && QString::number(pid) == entry)
            numbers << pid;
    }
    std::sort(numbers.begin(), numbers.end());

    QList<ProcessEntry> list;
    for (uint32_t pid : numbers) {
        const QString dir = m_root + u'/' + QString::number(pid);
        QByteArray stat;
        StatFields f;
        // A process whose stat can no longer be read has ended: it is not running now.
        if (!readWhole(dir + QStringLiteral("/stat"), stat) || !parseStat(stat, f))
            continue;
        QByteArray comm;
        QByteArray name = readWhole(dir + QStringLiteral("/comm"), comm) ? comm : f.name;
        name = cutAtNul(name);
        if (name.endsWith('\n'))
            name.chop(1);
        ProcessEntry e;
        e.ProcessID = pid;
        e.ParentProcessID = f.parent;
        e.Name = QFile::decodeName(name);
        e.ThreadCount = f.threads;
        list << e;
    }
    return list;
}

QString ProcProcessSource::imagePath(uint32_t processId) const
{
    const QByteArray target = imageTarget(processId);
    return isMemfd(target) ? QString() : QFile::decodeName(target);
}

QByteArray ProcProcessSource::imageTarget(uint32_t processId) const
{
    const QByteArray link = QFile::encodeName(m_root + u'/' + QString::number(processId) + QStringLiteral("/exe"));
    QByteArray target(4096, '\0');
    const ssize_t n = ::readlink(link.constData(), target.data(), static_cast<size_t>(target.size()));
    if (n <= 0 || n >= target.size())
        return {};
    target.truncate(n);
    return withoutDeletedMark(target);
}

QList<ModuleEntry> ProcProcessSource::modules(uint32_t processId) const
{
    QByteArray maps;
    if (!readWhole(m_root + u'/' + QString::number(processId) + QStringLiteral("/maps"), maps))
        return {};

    struct Mapped {
        quint64 start = 0;
        QByteArray path;
    };
    QList<Mapped> files; // first executable mapping of each file, in address order
    for (const QByteArray& line : maps.split('\n')) {
        // address perms offset dev inode [path]; the path starts after the fifth
        // field's padding and may hold spaces of its own.
        qsizetype pos = 0;
        QList<QByteArray> fields;
        while (fields.size() < 5 && pos < line.size()) {
            while (pos < line.size() && line[pos] == ' ')
                ++pos;
            const qsizetype end = line.indexOf(' ', pos);
            fields << line.mid(pos, end < 0 ? -1 : end - pos);
            pos = end < 0 ? line.size() : end;
        }
        while (pos < line.size() && line[pos] == ' ')
            ++pos;
        if (fields.size() < 5 || fields[1].size() < 3 || fields[1][2] != 'x')
            continue;
        QByteArray path = line.mid(pos);
        if (!path.startsWith('/'))
            continue;
        path = unescapeMapsPath(withoutDeletedMark(path));
        const bool seen = std::any_of(files.cbegin(), files.cend(), [&](const Mapped& m) { return m.path == path; });
        if (!seen)
            files << Mapped { fields[0].left(fields[0].indexOf('-')).toULongLong(nullptr, 16), path };
    }
    if (files.isEmpty())
        return {};

    // The image: the file behind exe, else the lowest mapping (where the kernel puts it).
    const QByteArray image = imageTarget(processId);
    qsizetype imageAt = 0;
    for (qsizetype i = 0; i < files.size(); ++i) {
        if (!image.isEmpty() && files[i].path == image) {
            imageAt = i;
            break;
        }
    }
    const Mapped first = files.takeAt(imageAt);
    std::stable_sort(files.begin(), files.end(), [](const Mapped& a, const Mapped& b) { return a.start > b.start; });

    // An image run from a memfd stays first, without a path; other memfd files are left out.
    QList<ModuleEntry> out { ModuleEntry {
        fileNameOf(first.path), isMemfd(first.path) ? QString() : QFile::decodeName(first.path) } };
    for (const Mapped& m : files) {
        if (!isMemfd(m.path))
            out << ModuleEntry { fileNameOf(m.path), QFile::decodeName(m.path) };
    }
    return out;
}

} // namespace vmk
