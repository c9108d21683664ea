#pragma once

#include <QByteArray>
#include <QString>

namespace vmk::ftp
{

// The SHA-256 fingerprint of a server certificate, as the user sees and gives it.
class Fingerprint
{
public:
    // "AB:CD:...:EF": 32 bytes in upper-case hex pairs, as
    // `openssl x509 -fingerprint -sha256` prints them.
    static QString text(const QByteArray& sha256);
    // The 32 bytes of a fingerprint written as openssl prints it, with or
    // without its "sha256 Fingerprint=" label and colons, in either case;
    // empty for anything else.
    static QByteArray parse(const QString& text);
};

} // namespace vmk::ftp
