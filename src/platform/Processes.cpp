#include "platform/Processes.h"

#include "platform/MountTable.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <unistd.h>

namespace vmk
{
namespace
{
bool leadsUnder(const QString& link, const QString& root)
{
    const QString target = QFileInfo(link).symLinkTarget();
    return !target.isEmpty() && MountTable::isUnder(target, root);
}
} // namespace

QList<qint64> Processes::holding(const QString& root)
{
    QList<qint64> held;
    const qint64 self = QCoreApplication::applicationPid();
    const QStringList pids = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& name : pids) {
        bool ok = false;
        const qint64 pid = name.toLongLong(&ok);
        if (!ok || pid == self)
            continue;
        const QString base = QStringLiteral("/proc/") + name;
        bool holds = leadsUnder(base + QStringLiteral("/exe"), root) || leadsUnder(base + QStringLiteral("/cwd"), root);
        if (!holds) {
            const QDir fds(base + QStringLiteral("/fd"));
            for (const QString& fd : fds.entryList(QDir::Files | QDir::System | QDir::NoDotAndDotDot)) {
                if (leadsUnder(fds.filePath(fd), root)) {
                    holds = true;
                    break;
                }
            }
        }
        if (holds)
            held << pid;
    }
    return held;
}

void Processes::flushAllFilesystems()
{
    ::sync();
}

} // namespace vmk
