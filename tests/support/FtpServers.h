#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace vmk::test
{

// A port the kernel hands out on 127.0.0.1, free when asked.
quint16 FreeLoopbackPort();

// pyftpdlib on 127.0.0.1 (tests/data/ftp/ftp_server.py), on a port it picks and
// prints; `extra` are the script's ways to misbehave. User "alice", password "s3cret".
class PlainFtpServer
{
public:
    explicit PlainFtpServer(const QString& root, const QStringList& extra = {});
    ~PlainFtpServer();
    PlainFtpServer(const PlainFtpServer&) = delete;
    PlainFtpServer& operator=(const PlainFtpServer&) = delete;

    int port() const { return m_port; }
    // "127.0.0.1:PORT", as the settings hold a server.
    QString server() const;
    QString url(const QString& path, const QString& user = QStringLiteral("alice")) const;

private:
    QProcess m_process;
    int m_port = 0;
};

// vsftpd on 127.0.0.1 with a self-signed certificate made for the test, TLS
// required for the login and the data, and a local user (password "Pw-9x7") made
// for the test and removed after it. Without root or vsftpd it does not start and
// skipReason() says why.
class TlsFtpServer
{
public:
    TlsFtpServer();
    ~TlsFtpServer();
    TlsFtpServer(const TlsFtpServer&) = delete;
    TlsFtpServer& operator=(const TlsFtpServer&) = delete;

    const char* skipReason() const { return m_skip; }
    QString server() const;
    QString url(const QString& path) const;
    QString user() const { return m_user; }
    static QString password() { return QStringLiteral("Pw-9x7"); }
    // The user's home, the server's root for the session.
    QString home() const { return m_dir.path() + QStringLiteral("/home"); }
    // As openssl prints it: "sha256 Fingerprint=AB:CD:..."
    QString fingerprintText() const { return m_fingerprintText; }

private:
    QTemporaryDir m_dir;
    QProcess m_process;
    QString m_user, m_fingerprintText;
    quint16 m_port = 0;
    bool m_userMade = false;
    const char* m_skip = nullptr;
};

// Deterministic bytes of a given size, different for each size.
QByteArray randomBytes(qsizetype size);

} // namespace vmk::test
