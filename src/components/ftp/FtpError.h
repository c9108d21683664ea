#pragma once

#include <QByteArray>
#include <QString>

namespace vmk::ftp
{

// What kind of failure an operation met; the words for the user follow from it.
enum class FtpFailure {
    None,
    BadName, // a name holding CR, LF or "/", or empty
    BadAddress, // the server's address cannot be read
    ConnectFailed, // no connection to the server
    LoginRefused, // the server refused the user name or the password
    CertificateUntrusted, // the server's certificate does not verify and is not the accepted one
    SecureConnectionFailed, // TLS was offered but could not be set up
    NotFound, // the remote file or folder does not exist (or cannot be reached)
    Refused, // the server refused the command (a folder that exists, no permission)
    Cancelled, // the progress callback or cancel() stopped the transfer
    LocalUnreadable, // the local file to send cannot be read
    LocalUnwritable, // the local file to receive cannot be written
    ConnectionLost, // the server closed the connection during the operation
    TransferFailed, // any other failure of the library
};

// The last failure of an FtpClient: the remote path it concerns, words for the
// user, the server's own reason and libcurl's code.
struct FtpError {
    FtpFailure failure = FtpFailure::None;
    QString path; // the remote path (or the local file, for the local failures)
    int curlCode = 0; // CURLcode; 0 when the library was not involved
    QString serverReply; // the server's last reply line, e.g. "530 Login incorrect."
    QByteArray fingerprint; // CertificateUntrusted: SHA-256 of the refused certificate (32 bytes)

    explicit operator bool() const { return failure != FtpFailure::None; }
    // The Spanish words of the translation table for `failure`.
    QString words() const;
    // What only this failure can tell, untranslated: the server's reason or the
    // certificate's fingerprint ("SHA-256 AB:CD:..."); "" when there is none.
    QString detail() const;
};

} // namespace vmk::ftp
