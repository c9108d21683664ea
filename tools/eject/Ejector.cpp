#include "Ejector.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>

#include <unistd.h>

namespace vmk::eject
{
namespace
{
bool under(const QString& path, const QString& root)
{
    if (path.isEmpty())
        return false;
    const QString r = root.endsWith(QLatin1Char('/')) ? root : root + QLatin1Char('/');
    return path == root || path.startsWith(r);
}

// mountinfo escapes blanks and a few other characters as \ooo.
QString unescapeMount(const QByteArray& field)
{
    QByteArray out;
    for (qsizetype i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            bool ok = false;
            const int c = field.mid(i + 1, 3).toInt(&ok, 8);
            if (ok) {
                out.append(char(c));
                i += 3;
                continue;
            }
        }
        out.append(field[i]);
    }
    return QString::fromUtf8(out);
}
} // namespace

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
    QList<qint64> held;
    const qint64 self = QCoreApplication::applicationPid();
    const QStringList pids = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& name : pids) {
        bool ok = false;
        const qint64 pid = name.toLongLong(&ok);
        if (!ok || pid == self)
            continue;
        const QString base = QStringLiteral("/proc/") + name;
        bool holds = under(QFileInfo(base + QStringLiteral("/exe")).symLinkTarget(), m_root)
            || under(QFileInfo(base + QStringLiteral("/cwd")).symLinkTarget(), m_root);
        if (!holds) {
            const QDir fds(base + QStringLiteral("/fd"));
            for (const QString& fd : fds.entryList(QDir::Files | QDir::System | QDir::NoDotAndDotDot)) {
                if (under(QFileInfo(fds.filePath(fd)).symLinkTarget(), m_root)) {
                    holds = true;
                    break;
                }
            }
        }
        if (holds)
            held << pid;
    }
    return held;
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
    QFile f(QStringLiteral("/proc/self/mountinfo"));
    if (!f.open(QIODevice::ReadOnly))
        return false;
    QString best, bestSource;
    for (const QByteArray& line : f.readAll().split('\n')) {
        // id parent major:minor root mountpoint options [optional...] - fstype source superoptions
        const QList<QByteArray> fields = line.split(' ');
        if (fields.size() < 10)
            continue;
        const qsizetype dash = fields.indexOf("-");
        if (dash < 0 || dash + 2 >= fields.size())
            continue;
        const QString mp = unescapeMount(fields[4]);
        if (under(path, mp) && mp.size() >= best.size()) {
            best = mp;
            bestSource = unescapeMount(fields[dash + 2]);
        }
    }
    if (best.isEmpty())
        return false;
    if (mountPoint)
        *mountPoint = best;
    if (source)
        *source = bestSource;
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
    ::sync();
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
        ::sync();
    }
    return false;
}

} // namespace vmk::eject
