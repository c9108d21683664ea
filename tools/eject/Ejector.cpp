#include "Ejector.h"

#include "platform/MountTable.h"
#include "platform/Processes.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>

namespace vmk::eject
{
Ejector::Ejector(QString deviceRoot)
    : m_root(QDir::cleanPath(
        QFileInfo(deviceRoot).canonicalFilePath().isEmpty() ? deviceRoot : QFileInfo(deviceRoot).canonicalFilePath()))
    , m_udisks(!QStandardPaths::findExecutable(QStringLiteral("udisksctl")).isEmpty())
{
}

int Ejector::run(const QString& program, const QStringList& args)
{
    m_log << program + QLatin1Char(' ') + args.join(QLatin1Char(' '));
    if (m_runner)
        return m_runner(program, args);
    QProcess p;
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(program, args);
    if (!p.waitForStarted(5000))
        return -1;
    p.waitForFinished(60000);
    const QString out = QString::fromLocal8Bit(p.readAll()).trimmed();
    if (!out.isEmpty())
        m_log << out;
    return p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
}

QList<qint64> Ejector::HoldingProcesses() const
{
    return Processes::holding(m_root);
}

bool Ejector::WaitForRelease(int timeoutMs)
{
    QElapsedTimer t;
    t.start();
    for (;;) {
        if (HoldingProcesses().isEmpty())
            return true;
        if (t.elapsed() >= timeoutMs)
            return false;
        QCoreApplication::processEvents();
        QThread::msleep(100);
    }
}

bool Ejector::FindMount(const QString& path, QString* mountPoint, QString* source)
{
    const MountEntry mount = MountTable::holding(MountTable::read(), path);
    if (mount.mountPoint.isEmpty())
        return false;
    if (mountPoint)
        *mountPoint = mount.mountPoint;
    if (source)
        *source = mount.source;
    return true;
}

bool Ejector::unmountOnce(const QString& mountPoint, const QString& source)
{
    if (m_udisks && source.startsWith(QStringLiteral("/dev/"))) {
        if (run(QStringLiteral("udisksctl"), { QStringLiteral("unmount"), QStringLiteral("-b"), source }) != 0)
            return false;
        // Power-off is a courtesy: a drive that refuses it is still safe to pull.
        run(QStringLiteral("udisksctl"), { QStringLiteral("power-off"), QStringLiteral("-b"), source });
        return true;
    }
    return run(QStringLiteral("umount"), { mountPoint }) == 0;
}

bool Ejector::Eject(int waitMs)
{
    if (!QFileInfo(m_root).isDir()) {
        m_log << QStringLiteral("no device at ") + m_root;
        return false;
    }
    const bool released = WaitForRelease(waitMs);
    if (!released)
        m_log << QStringLiteral("the device is still in use");
    Processes::flushAllFilesystems();
    QString mountPoint, source;
    if (!FindMount(m_root, &mountPoint, &source))
        return false;
    if (mountPoint != m_root) {
        // A portable folder on a fixed disk: it is its own device and nothing
        // is mounted there, so once the data is flushed it can be taken away.
        m_log << QStringLiteral("flushed ") + m_root;
        return released;
    }
    // A process that is just closing may keep the mount busy for a moment.
    for (int attempt = 0; attempt < 3; ++attempt) {
        if (unmountOnce(mountPoint, source))
            return true;
        QThread::msleep(500);
        Processes::flushAllFilesystems();
    }
    return false;
}

} // namespace vmk::eject
