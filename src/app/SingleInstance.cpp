#include "SingleInstance.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>

#include <cstdio>

namespace vmk
{
namespace
{
const QByteArray kRequest = "front\n";
const QByteArray kAnswer = "shown\n";

// Per user, so that no one else can hold or answer for another user's device.
QString runtimeFolder()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    return folder;
}

// The device's name in the runtime folder: the same device reached by another
// path (a link, a relative --device) is the same device.
QString deviceKey(const QString& deviceRoot)
{
    QString canonical = QFileInfo(deviceRoot).canonicalFilePath();
    if (canonical.isEmpty())
        canonical = QDir::cleanPath(QDir(deviceRoot).absolutePath());
    return QStringLiteral("vormak-")
        + QString::fromLatin1(
            QCryptographicHash::hash(canonical.toUtf8(), QCryptographicHash::Sha256).toHex().left(24));
}
} // namespace

SingleInstance::SingleInstance(const QString& deviceRoot, QObject* parent)
    : QObject(parent)
    , m_lock(lockPath(deviceRoot))
    , m_serverName(serverName(deviceRoot))
{
    // The lock is held for the whole run: only a dead holder makes it stale, never its age.
    m_lock.setStaleLockTime(0);
    connect(&m_server, &QLocalServer::newConnection, this, &SingleInstance::answer);
}

QString SingleInstance::lockPath(const QString& deviceRoot)
{
    return runtimeFolder() + QLatin1Char('/') + deviceKey(deviceRoot) + QStringLiteral(".lock");
}

QString SingleInstance::serverName(const QString& deviceRoot)
{
    return runtimeFolder() + QLatin1Char('/') + deviceKey(deviceRoot) + QStringLiteral(".sock");
}

bool SingleInstance::claim()
{
    if (!m_lock.tryLock(0)) {
        if (m_lock.error() == QLockFile::LockFailedError)
            return false;
        std::fprintf(stderr, "Vormak: no lock can be kept in %s; a second start on this device will not be noticed\n",
            QFile::encodeName(QFileInfo(m_lock.fileName()).absolutePath()).constData());
        return true;
    }
    // A socket left by a run that was killed would refuse to listen.
    QLocalServer::removeServer(m_serverName);
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server.listen(m_serverName))
        std::fprintf(stderr, "Vormak: cannot listen on %s: %s\n", QFile::encodeName(m_serverName).constData(),
            m_server.errorString().toLocal8Bit().constData());
    return true;
}

bool SingleInstance::activateRunning(int timeoutMs)
{
    // The running program takes its lock a moment before it listens.
    const QDeadlineTimer deadline(timeoutMs);
    while (!deadline.hasExpired()) {
        QLocalSocket socket;
        socket.connectToServer(m_serverName);
        if (socket.waitForConnected(int(qMax<qint64>(1, deadline.remainingTime())))) {
            socket.write(kRequest);
            socket.waitForBytesWritten(int(qMax<qint64>(1, deadline.remainingTime())));
            while (!socket.canReadLine() && socket.waitForReadyRead(int(qMax<qint64>(1, deadline.remainingTime()))))
                ;
            return socket.readLine() == kAnswer;
        }
        QThread::msleep(100);
    }
    return false;
}

void SingleInstance::answer()
{
    while (QLocalSocket* socket = m_server.nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            if (!socket->canReadLine()) {
                // Only a short request line is ever sent.
                if (socket->bytesAvailable() > kRequest.size())
                    socket->abort();
                return;
            }
            if (socket->readLine(64) == kRequest) {
                std::fprintf(stderr, "Vormak: a second start on this device brought the panel to the front\n");
                if (m_activation)
                    m_activation();
                socket->write(kAnswer);
                socket->flush();
            }
            socket->disconnectFromServer();
        });
    }
}

} // namespace vmk
