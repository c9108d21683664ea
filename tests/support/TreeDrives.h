#pragma once

#include "foundation/Globals.h"
#include "platform/DriveMap.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

namespace vmk::test
{

// For the length of a test: a temporary host drive C: holding the desktop
// ("C:\Escritorio", through the XDG user directories) and the documents
// ("C:\Documentos"), and a temporary device E: that is the program drive.
class TreeDrives
{
public:
    // `base`: where the two temporary folders go (a memory filesystem for tests that
    // create a hundred thousand files); the system's temporary folder by default.
    explicit TreeDrives(const QString& base = QString())
        : m_host(templateIn(base))
        , m_device(templateIn(base))
        , m_oldConfig(qgetenv("XDG_CONFIG_HOME"))
    {
        m_hostRoot = QDir(m_host.path()).canonicalPath();
        m_deviceRoot = QDir(m_device.path()).canonicalPath();
        QDir().mkpath(m_hostRoot + QStringLiteral("/Escritorio"));
        QDir().mkpath(m_hostRoot + QStringLiteral("/Documentos"));
        QDir().mkpath(m_hostRoot + QStringLiteral("/config"));
        QFile dirs(m_hostRoot + QStringLiteral("/config/user-dirs.dirs"));
        if (dirs.open(QIODevice::WriteOnly)) {
            dirs.write("XDG_DESKTOP_DIR=\"" + QFile::encodeName(m_hostRoot) + "/Escritorio\"\n");
            dirs.write("XDG_DOCUMENTS_DIR=\"" + QFile::encodeName(m_hostRoot) + "/Documentos\"\n");
        }
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_hostRoot + QStringLiteral("/config")));
        DriveMap::instance().setTestDrives({ { u'C', m_hostRoot }, { u'E', m_deviceRoot } }, u'E');
        m_oldProgramDrive = G().ProgramDrive;
        G().ProgramDrive = QStringLiteral("E:");
    }
    ~TreeDrives()
    {
        G().ProgramDrive = m_oldProgramDrive;
        DriveMap::instance().resetToHost();
        if (m_oldConfig.isEmpty())
            qunsetenv("XDG_CONFIG_HOME");
        else
            qputenv("XDG_CONFIG_HOME", m_oldConfig);
    }
    TreeDrives(const TreeDrives&) = delete;
    TreeDrives& operator=(const TreeDrives&) = delete;

    QString host() const { return m_hostRoot; } // native folder of C:
    QString device() const { return m_deviceRoot; } // native folder of E:

private:
    static QString templateIn(const QString& base)
    {
        return (base.isEmpty() || !QDir(base).exists() ? QDir::tempPath() : base) + QStringLiteral("/vmk-tree-XXXXXX");
    }

    QTemporaryDir m_host;
    QTemporaryDir m_device;
    QString m_hostRoot;
    QString m_deviceRoot;
    QByteArray m_oldConfig;
    QString m_oldProgramDrive;
};

} // namespace vmk::test
