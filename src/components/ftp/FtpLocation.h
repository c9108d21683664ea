#pragma once

#include <QString>

#include <optional>

namespace vmk::ftp
{

// Where a server is and what on it is meant: "ftp://USER@HOST:PORT/PATH", or a
// bare "HOST", "HOST:PORT" or "[IPv6]:PORT" as the settings hold the server.
struct FtpLocation {
    QString host; // without brackets
    int port = 21;
    QString user; // empty when the text names none
    bool hasUser = false;
    // The path after the host, %-escapes decoded (bytes that are not UTF-8 kept
    // as NativeName does); "" when there is none. It is read from the login
    // folder, as FTP addresses are, unless it begins with "/" (written "%2F").
    QString path;

    // nullopt for a text that is not such an address (another scheme, no host,
    // a bad port, CR or LF anywhere).
    static std::optional<FtpLocation> parse(const QString& text);
};

} // namespace vmk::ftp
