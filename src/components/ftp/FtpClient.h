#pragma once

#include "components/ftp/FtpError.h"
#include "components/ftp/RemoteEntry.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>
#include <optional>

namespace vmk::ftp
{

// One FTP server, one connection kept for the life of the object (one libcurl
// handle, reset between operations so the connection is reused). Every remote
// path is absolute ("/Respaldos/ago-01-2026,10.00.00.zip"); an operation given a
// plain name works in the current folder. TLS is used whenever the server offers
// it (AUTH TLS before USER, so the password never travels in clear then), with
// the certificate verified against the system's authorities and the server's
// name; a certificate that does not verify is refused unless its SHA-256
// fingerprint is the accepted one. A reused connection that the server has
// dropped meanwhile is retried once on a fresh one; a server that refuses TLS
// 1.3 data connections (reply 522, or 426 at an upload's end) is retried with
// TLS 1.2.
//
// Every operation returns false (or nullopt) on failure and leaves the reason in
// lastError(). Names holding CR or LF are refused before anything is sent.
class FtpClient
{
public:
    // Bytes done and the total (-1 when unknown); returning false cancels.
    using Progress = std::function<bool(qint64 done, qint64 total)>;

    FtpClient();
    ~FtpClient();
    FtpClient(const FtpClient&) = delete;
    FtpClient& operator=(const FtpClient&) = delete;

    // "HOST", "HOST:PORT" or "ftp://HOST:PORT/PATH" (a path there becomes the
    // first current folder). Takes effect at the next connect().
    void setServer(const QString& server);
    void setUserName(const QString& user);
    void setPassword(const QString& password);
    // The one certificate to trust although it does not verify: 32 bytes of
    // SHA-256 (Fingerprint::parse), or empty to trust only verified ones.
    void setAcceptedFingerprint(const QByteArray& sha256);

    // Logs in; the current folder becomes the server's login folder (or the
    // path given with the server). A further call while connected does nothing.
    bool connect();
    bool isConnected() const { return m_connected; }
    // Closes the connection; the next connect() opens a new one.
    void disconnect();
    // True when the connection is under TLS (known after connect()).
    bool isSecure() const { return m_secure; }

    // The current folder, absolute, ending in "/".
    QString currentFolder() const { return m_current; }
    // `nameOrPath` relative to the current folder, or absolute; "." and ".."
    // resolved. nullopt (and BadName) for a name holding CR or LF.
    std::optional<QString> resolve(const QString& nameOrPath) const;

    // The entries of the current folder (MLSD, or LIST where the server has no MLSD).
    std::optional<QList<RemoteEntry>> list();
    std::optional<QList<RemoteEntry>> list(const QString& folder);
    // Into a sub-folder by name, or any folder by absolute path.
    bool changeFolder(const QString& nameOrPath);
    // To the parent of the current folder (stays at "/").
    bool up();
    bool folderExists(const QString& nameOrPath);
    bool makeFolder(const QString& nameOrPath);
    // Makes the folder and every missing folder above it.
    bool makeFolders(const QString& nameOrPath);
    bool removeFile(const QString& nameOrPath);
    // An empty folder.
    bool removeFolder(const QString& nameOrPath);

    // Sends a local file (native path) to `remote` (a name in the current folder
    // or an absolute path): to "<name>.part" first, renamed to its name once
    // complete, so the name never holds a half file. A failed or cancelled send
    // removes the ".part" where the server still answers.
    bool upload(const QString& localFile, const QString& remote, const Progress& progress = {});
    // Receives `remote` into a local file (native path): into a temporary file
    // beside it, put in its place once complete; a failure leaves the local file as
    // it was.
    bool download(const QString& remote, const QString& localFile, const Progress& progress = {});
    // Stops the running transfer at its next progress report (any thread).
    void cancel() { m_cancel = true; }

    const FtpError& lastError() const { return m_error; }
    // How many operations were repeated on a fresh connection after the kept one
    // had gone stale.
    int staleRetries() const { return m_staleRetries; }
    // True once a server refused a TLS 1.3 data connection and TLS 1.2 took over.
    bool tls12Only() const { return m_tls12; }

private:
    struct Operation;
    bool run(Operation& op);
    int perform();
    bool quote(const QStringList& commands, const QString& path, FtpFailure onRefusal);
    void setOptions(const Operation& op, bool fresh);
    QByteArray urlOf(const QString& absolutePath, bool folder) const;
    bool nameIsSafe(const QString& path);
    void fail(FtpFailure failure, const QString& path, int curlCode = 0);
    QString lastReply() const;
    int lastReplyCode() const;

    static int verifyCertificate(void* storeContext, void* self);
    static int sslContext(void* curl, void* sslCtx, void* self);
    static int debug(void* curl, int type, char* data, size_t size, void* self);
    static int xferInfo(void* self, qint64 dlTotal, qint64 dlNow, qint64 ulTotal, qint64 ulNow);

    void* m_curl = nullptr; // the one easy handle, reset between operations
    void* m_multi = nullptr; // holds the kept connection
    QString m_host, m_user, m_password, m_startPath;
    int m_port = 21;
    bool m_addressOk = false;
    QByteArray m_accepted;
    QByteArray m_refusedFingerprint;
    bool m_canPin = false; // libcurl uses OpenSSL, so the certificate check is ours
    bool m_connected = false;
    bool m_secure = false;
    bool m_tls12 = false;
    bool m_noMlsd = false;
    QString m_current = QStringLiteral("/");
    QStringList m_replies;
    FtpError m_error;
    int m_staleRetries = 0;
    std::atomic_bool m_cancel { false };
    const Progress* m_progress = nullptr;
};

} // namespace vmk::ftp
