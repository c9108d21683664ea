#pragma once

#include <QList>
#include <QString>

namespace vmk
{

// The host's running processes as the kernel shows them in /proc.
class Processes
{
public:
    // Every process but this one whose program, current folder or an open file
    // lies at or under the native folder `root`. Processes of other users that
    // this one may not look into are not seen.
    static QList<qint64> holding(const QString& root);
    // Flushes the data of every filesystem to its disk (sync).
    static void flushAllFilesystems();
};

} // namespace vmk
