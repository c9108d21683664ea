#include "platform/ProcessClock.h"

#include <QByteArray>
#include <QFile>
#include <QList>

#include <unistd.h>

namespace vmk::platform
{

double MillisecondsSinceProcessStart()
{
    // Field 22 of /proc/self/stat is the start time in clock ticks since boot.
    QFile stat(QStringLiteral("/proc/self/stat"));
    QFile uptime(QStringLiteral("/proc/uptime"));
    if (!stat.open(QIODevice::ReadOnly) || !uptime.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray s = stat.readAll();
    const QList<QByteArray> fields = s.mid(s.lastIndexOf(')') + 2).split(' ');
    if (fields.size() < 20)
        return -1;
    const double startTicks = fields[19].toDouble();
    const double up = uptime.readAll().split(' ').value(0).toDouble();
    return (up - startTicks / double(sysconf(_SC_CLK_TCK))) * 1000.0;
}

} // namespace vmk::platform
