#pragma once

#include <QDateTime>
#include <QString>

namespace vmk::ftp
{

// One entry of a server's folder, as a listing gives it. The name is exact:
// blanks, accents and a leading dash kept; bytes that are not UTF-8 are carried
// as NativeName's private-use characters so that they go back unchanged.
struct RemoteEntry {
    QString name;
    bool folder = false;
    bool link = false; // a symbolic link on the server (its target's kind is unknown)
    qint64 size = -1; // -1 when the listing does not say
    QDateTime modified; // invalid when the listing does not say
};

} // namespace vmk::ftp
