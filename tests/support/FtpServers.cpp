#include "FtpServers.h"

#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <thread>

namespace vmk::test
{
namespace
{

bool answers(quint16 port)
{
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a {};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    a.sin_port = htons(port);
    const bool ok = ::connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0;
    close(fd);
    return ok;
}

int runQuietly(const QString& program, const QStringList& args, const QByteArray& input = {})
{
    QProcess p;
    p.start(program, args);
    if (!p.waitForStarted())
        return -1;
    p.write(input);
    p.closeWriteChannel();
    p.waitForFinished(60000);
    return p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
}
} // namespace

QByteArray randomBytes(qsizetype size)
{
    QByteArray b(size, '\0');
    QRandomGenerator gen(static_cast<quint32>(size));
    for (char& c : b)
        c = static_cast<char>(gen.generate() & 0xff);
    return b;
}

PlainFtpServer::PlainFtpServer(const QString& root, const QStringList& extra)
{
    m_process.start(QStringLiteral("/usr/bin/python3"),
        QStringList { testDataDir() + QStringLiteral("/ftp/ftp_server.py"), QStringLiteral("--root"), root } + extra);
    if (m_process.waitForStarted(10000) && m_process.waitForReadyRead(20000))
        m_port = m_process.readLine().trimmed().toInt();
}

PlainFtpServer::~PlainFtpServer()
{
    m_process.kill();
    m_process.waitForFinished();
}

QString PlainFtpServer::server() const
{
    return QStringLiteral("127.0.0.1:") + QString::number(m_port);
}

QString PlainFtpServer::url(const QString& path, const QString& user) const
{
    return QStringLiteral("ftp://%1@127.0.0.1:%2/%3").arg(user).arg(m_port).arg(path);
}

TlsFtpServer::TlsFtpServer()
{
    if (geteuid() != 0) {
        m_skip = "needs root to add a local user for vsftpd";
        return;
    }
    if (!QFileInfo::exists(QStringLiteral("/usr/sbin/vsftpd"))) {
        m_skip = "vsftpd is not installed";
        return;
    }
    const QString d = m_dir.path();
    QDir(d).mkpath(QStringLiteral("home"));
    QDir(d).mkpath(QStringLiteral("empty"));
    if (runQuietly(QStringLiteral("openssl"),
            { "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", d + "/key.pem", "-out", d + "/cert.pem",
                "-days", "2", "-subj", "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1" })
        != 0) {
        m_skip = "openssl could not make the certificate";
        return;
    }
    QProcess fp;
    fp.start(QStringLiteral("openssl"), { "x509", "-noout", "-fingerprint", "-sha256", "-in", d + "/cert.pem" });
    fp.waitForFinished();
    m_fingerprintText = QString::fromLatin1(fp.readAllStandardOutput()).trimmed();
    // One user per server: two servers of one test program must not share one.
    static int made = 0;
    m_user = QStringLiteral("vmkftp%1x%2").arg(getpid()).arg(++made);
    if (runQuietly(QStringLiteral("useradd"), { "-M", "-d", d + "/home", "-s", "/bin/sh", m_user }) != 0) {
        m_skip = "useradd failed";
        return;
    }
    m_userMade = true;
    runQuietly(QStringLiteral("chpasswd"), {}, (m_user + u':' + password() + u'\n').toUtf8());
    runQuietly(QStringLiteral("chown"), { m_user, d + "/home" });
    // The user's session must reach its home below the private temporary folder.
    QFile::setPermissions(d,
        QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther
            | QFile::ExeOther);
    m_port = FreeLoopbackPort();
    const QString conf = QStringLiteral(
        "listen=YES\nlisten_address=127.0.0.1\nlisten_port=%1\nbackground=NO\nanonymous_enable=NO\n"
        "local_enable=YES\nwrite_enable=YES\nlocal_umask=022\npasv_enable=YES\npasv_address=127.0.0.1\n"
        "ssl_enable=YES\nrsa_cert_file=%2/cert.pem\nrsa_private_key_file=%2/key.pem\n"
        "force_local_logins_ssl=YES\nforce_local_data_ssl=YES\nseccomp_sandbox=NO\npam_service_name=vsftpd\n"
        "userlist_enable=NO\nchroot_local_user=YES\nallow_writeable_chroot=YES\nsecure_chroot_dir=%2/empty\n")
                             .arg(m_port)
                             .arg(d);
    writeFile(d + "/vsftpd.conf", conf.toUtf8());
    m_process.start(QStringLiteral("/usr/sbin/vsftpd"), { d + "/vsftpd.conf" });
    for (int i = 0; i < 100 && !answers(m_port); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    if (!answers(m_port))
        m_skip = "vsftpd did not start";
}

TlsFtpServer::~TlsFtpServer()
{
    m_process.kill();
    m_process.waitForFinished();
    if (m_userMade)
        runQuietly(QStringLiteral("userdel"), { m_user });
}

QString TlsFtpServer::server() const
{
    return QStringLiteral("127.0.0.1:") + QString::number(m_port);
}

QString TlsFtpServer::url(const QString& path) const
{
    return QStringLiteral("ftp://%1@127.0.0.1:%2/%3").arg(m_user).arg(m_port).arg(path);
}

quint16 FreeLoopbackPort()
{
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a {};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof a;
    bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a);
    getsockname(fd, reinterpret_cast<sockaddr*>(&a), &len);
    close(fd);
    return ntohs(a.sin_port);
}

} // namespace vmk::test
