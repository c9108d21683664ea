#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QString>

#include <functional>

namespace vmk
{

// One program per device. The first start on a device holds a lock named
// after the device and listens beside it; a later start on the same device
// finds the lock taken, asks the running program to bring its panel to the
// front, and ends. A lock left by a run that was killed belongs to no live
// process and is taken over.
class SingleInstance : public QObject
{
    Q_OBJECT
public:
    // `deviceRoot`: the native folder that is the device.
    explicit SingleInstance(const QString& deviceRoot, QObject* parent = nullptr);

    // True when this process is now the device's program (it listens for later
    // starts from here on), or when no lock can be kept on this host at all, so
    // that the program is never kept from starting by the guard itself.
    bool claim();
    // A later start: asks the running program to come to the front. False when
    // it did not answer in time.
    bool activateRunning(int timeoutMs = 5000);
    // What the running program does when asked.
    void setActivation(std::function<void()> activation) { m_activation = std::move(activation); }

    // The lock file and the socket of a device.
    static QString lockPath(const QString& deviceRoot);
    static QString serverName(const QString& deviceRoot);

private:
    void answer();

    QLockFile m_lock;
    QString m_serverName;
    QLocalServer m_server;
    std::function<void()> m_activation;
};

} // namespace vmk
