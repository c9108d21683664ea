#pragma once

#include "foundation/ForceDelete.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "platform/DriveMap.h"

#include "TestSupport.h"

#include <QDir>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace vmk::test
{

// For the length of a test: a host drive C: and a device E: (temporary folders),
// the program in E:\VMK, the quarantine in E:\Mis Documentos\Cuarentena\ and the
// owner's pass phrase "owner" with cipher index 1, so that a test sees whether
// the quarantine's fixed keys were given back. Helper programs are not run.
class QuarantineDevice
{
public:
    QuarantineDevice()
        : m_globals(G())
        , m_settings(S())
    {
        m_host = QDir(m_hostDir.path()).canonicalPath();
        m_device = QDir(m_deviceDir.path()).canonicalPath();
        DriveMap::instance().setTestDrives({ { u'C', m_host }, { u'E', m_device } }, u'E');
        DriveMap::instance().setProgramFolder(m_device + QStringLiteral("/VMK"));
        G().ProgramFolder = QStringLiteral("E:\\VMK");
        G().ProgramDrive = QStringLiteral("E:");
        G().SystemFolder = QStringLiteral("C:\\system");
        G().PassPhrase = QStringLiteral("owner");
        S().EncripAlgorithm = 1;
        S().ScanFilesOperations = QStringLiteral("1");
        S().QuarenteneFolder = QStringLiteral("\\Mis Documentos\\Cuarentena\\");
        QDir().mkpath(m_device + QStringLiteral("/VMK"));
        QDir().mkpath(quarantine());
        QDir().mkpath(m_host + QStringLiteral("/system"));
        m_runner = SetHelperRunner([this](const QString& program, const QStringList&) { m_helpers << program; });
    }
    ~QuarantineDevice()
    {
        SetHelperRunner(m_runner);
        // Names that are not UTF-8 are out of QTemporaryDir's reach.
        removeTree(m_host);
        removeTree(m_device);
        DriveMap::instance().resetToHost();
        G() = m_globals;
        S() = m_settings;
    }
    QuarantineDevice(const QuarantineDevice&) = delete;
    QuarantineDevice& operator=(const QuarantineDevice&) = delete;

    QString host() const { return m_host; } // native folder of C:
    QString device() const { return m_device; } // native folder of E:
    QString quarantine() const { return m_device + QStringLiteral("/Mis Documentos/Cuarentena"); }
    QString ledger() const { return m_device + QStringLiteral("/VMK/QFP.txt"); }
    const QStringList& helpers() const { return m_helpers; }

private:
    QTemporaryDir m_hostDir, m_deviceDir;
    QString m_host, m_device;
    Globals m_globals;
    SettingsValues m_settings;
    HelperRunner m_runner;
    QStringList m_helpers;
};

} // namespace vmk::test
