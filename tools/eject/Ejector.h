#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace vmk::eject
{

// Removes a device safely once Vormak has gone: waits for every process that
// runs from the device or sits in it to end, flushes, unmounts (udisks2 where
// it is installed, umount otherwise) and powers the drive off where it can.
class Ejector
{
public:
    using Runner = std::function<int(const QString& program, const QStringList& args)>;

    explicit Ejector(QString deviceRoot);

    // Replaces the program runner (tests record the commands instead).
    void SetRunner(Runner runner) { m_runner = std::move(runner); }
    void SetUdisksAvailable(bool available) { m_udisks = available; }

    // Waits up to `timeoutMs` for the processes holding the device to end;
    // true when none is left.
    bool WaitForRelease(int timeoutMs);
    // Processes other than this one whose executable, current folder or an
    // open file lies under the device root.
    QList<qint64> HoldingProcesses() const;

    // The whole removal; true when the device can be taken out.
    bool Eject(int waitMs = 15000);

    // The mount point of the filesystem holding `path` and its source device.
    static bool FindMount(const QString& path, QString* mountPoint, QString* source);
    const QStringList& Log() const { return m_log; }

private:
    int run(const QString& program, const QStringList& args);
    bool unmountOnce(const QString& mountPoint, const QString& source);

    QString m_root;
    Runner m_runner;
    bool m_udisks;
    QStringList m_log;
};

} // namespace vmk::eject
