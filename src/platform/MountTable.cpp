#include "platform/MountTable.h"

#include <QFile>
#include <QSet>
#include <QStringList>

namespace vmk
{
namespace
{
// mountinfo writes space, tab, newline and backslash as three octal digits after "\".
QString unescape(const QString& s)
{
    QString out;
    out.reserve(s.size());
    for (qsizetype i = 0; i < s.size(); ++i) {
        if (s[i] == u'\\' && i + 3 < s.size()) {
            bool ok = false;
            const int code = s.mid(i + 1, 3).toInt(&ok, 8);
            if (ok) {
                out += QChar(code);
                i += 3;
                continue;
            }
        }
        out += s[i];
    }
    return out;
}
} // namespace

bool MountTable::parseLine(const QString& line, MountEntry& entry)
{
    const QStringList f = line.split(u' ', Qt::SkipEmptyParts);
    const qsizetype dash = f.indexOf(QStringLiteral("-"));
    if (f.size() < 7 || dash < 6 || dash + 2 >= f.size())
        return false;
    entry.majorMinor = f[2];
    entry.mountPoint = unescape(f[4]);
    entry.fsType = f[dash + 1];
    entry.source = unescape(f[dash + 2]);
    return true;
}

QList<MountEntry> MountTable::read(const QString& file)
{
    QList<MountEntry> table;
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly))
        return table;
    // /proc files report size 0: read until the end, not by size.
    const QByteArray all = f.readAll();
    for (const QByteArray& raw : all.split('\n')) {
        MountEntry e;
        if (!raw.isEmpty() && parseLine(QString::fromUtf8(raw), e))
            table << e;
    }
    return table;
}

bool MountTable::isUnder(const QString& path, const QString& root)
{
    if (root == QLatin1String("/"))
        return path.startsWith(u'/');
    return path == root || (path.startsWith(root) && path.size() > root.size() && path[root.size()] == u'/');
}

MountEntry MountTable::holding(const QList<MountEntry>& table, const QString& nativePath)
{
    MountEntry best;
    for (const MountEntry& e : table) {
        if (isUnder(nativePath, e.mountPoint) && e.mountPoint.size() >= best.mountPoint.size())
            best = e;
    }
    return best;
}

bool MountTable::isPseudoFilesystem(const QString& fsType)
{
    static const QSet<QString> pseudo {
        QStringLiteral("proc"),
        QStringLiteral("sysfs"),
        QStringLiteral("devtmpfs"),
        QStringLiteral("devpts"),
        QStringLiteral("cgroup"),
        QStringLiteral("cgroup2"),
        QStringLiteral("securityfs"),
        QStringLiteral("debugfs"),
        QStringLiteral("tracefs"),
        QStringLiteral("pstore"),
        QStringLiteral("bpf"),
        QStringLiteral("configfs"),
        QStringLiteral("fusectl"),
        QStringLiteral("mqueue"),
        QStringLiteral("hugetlbfs"),
        QStringLiteral("binfmt_misc"),
        QStringLiteral("autofs"),
        QStringLiteral("efivarfs"),
        QStringLiteral("nsfs"),
        QStringLiteral("selinuxfs"),
        QStringLiteral("rpc_pipefs"),
        QStringLiteral("nfsd"),
        QStringLiteral("devfs"),
        QStringLiteral("usbfs"),
    };
    return pseudo.contains(fsType);
}

} // namespace vmk
