#pragma once

#include <QByteArray>
#include <QSet>
#include <QString>

namespace vmk::engine
{

// The engine's own repair: libclamav cannot disinfect, but an infected member of
// a zip archive can be taken out. The archive is rewritten beside the original
// and renamed over it only once complete, so a failure (or a pulled drive)
// leaves the original as it was. The other members keep their stored bytes.
class ZipRepair
{
public:
    // `members` are stored names. Returns true when the archive was rewritten.
    static bool removeMembers(const QString& nativePath, const QSet<QByteArray>& members);
};

} // namespace vmk::engine
