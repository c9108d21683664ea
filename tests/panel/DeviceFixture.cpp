#include "DeviceFixture.h"

#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "platform/DriveMap.h"
#include "platform/Registry.h"
#include "scanner/QuarantinePurge.h"

#include "TestSupport.h"

#include <QDir>
#include <QFile>

namespace vmk::test
{

void DeviceFixture::SetUp()
{
    ASSERT_TRUE(m_host.isValid());
    ASSERT_TRUE(m_device.isValid());
    QDir(m_host.path()).mkpath(QStringLiteral("system"));
    DriveMap::instance().setTestDrives(
        { { QLatin1Char('C'), m_host.path() }, { QLatin1Char('E'), m_device.path() } }, QLatin1Char('E'));
    Registry::setFile(m_host.path() + QStringLiteral("/classes-root.reg"));
    G() = Globals();
    G().ProgramFolder = m_programFolder;
    G().ProgramDrive = QStringLiteral("E:");
    G().SystemFolder = QStringLiteral("C:\\system");
    S() = SettingsValues();
    S().QuarenteneFolder = QStringLiteral("\\Mis Documentos\\Cuarentena\\");
    S().DesinfectedFolder = QStringLiteral("\\Mis Documentos\\Desinfectados\\");
    S().BackupsFolder = QStringLiteral("\\Mis Documentos\\Respaldos\\");
    S().CompFileFolder = QStringLiteral("\\Mis Documentos\\Comprimidos\\");
    S().EncriptFileFolder = QStringLiteral("\\Mis Documentos\\Encriptados\\");
    S().DeleteFilesOpt = 0;
    S().DeleteFilesAfter = 7;
    for (const QString& f :
        { S().QuarenteneFolder, S().DesinfectedFolder, S().BackupsFolder, S().CompFileFolder, S().EncriptFileFolder })
        QDir().mkpath(native(G().ProgramDrive + f));
    QDir().mkpath(native(m_programFolder));
    put(m_programFolder + QStringLiteral("\\Vormak.exe"), "program");
}

void DeviceFixture::TearDown()
{
    scanner::SetCreationTimeHook({});
    QDir::setCurrent(QDir::tempPath());
    DriveMap::instance().resetToHost();
}

QString DeviceFixture::native(const QString& logical) const
{
    return DriveMap::instance().toNative(logical);
}

QString DeviceFixture::put(const QString& logical, const QByteArray& bytes)
{
    const QString path = native(logical);
    EXPECT_TRUE(writeFile(path, bytes)) << path.toStdString();
    return path;
}

QString DeviceFixture::putScript(const QString& logical, const QByteArray& body)
{
    const QString path = put(logical, "#!/bin/sh\n" + body + "\n");
    QFile::setPermissions(path, QFile::permissions(path) | QFileDevice::ExeOwner | QFileDevice::ExeUser);
    return path;
}

QByteArray DeviceFixture::indexLine(const QDate& date)
{
    return "VMK signature index=" + date.toString(QStringLiteral("yyyyMMdd")).toLatin1() + "_1.2.0_27\r\n";
}

} // namespace vmk::test
