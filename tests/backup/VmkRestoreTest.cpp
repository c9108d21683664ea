#include "components/zip/ZipCodes.h"
#include "platform/DriveMap.h"
#include "platform/NativeName.h"

#include "BackupDevice.h"
#include "RestoreArchives.h"
#include "TestSupport.h"
#include "TreeDrives.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace vmk;
using namespace vmk::test;

namespace
{
// vmk sees the test's drives, as a helper program the suite starts would.
class InheritedDrives
{
public:
    InheritedDrives() { qputenv(DriveMap::kInheritedVariable, DriveMap::instance().exportForChildren().toUtf8()); }
    ~InheritedDrives() { qunsetenv(DriveMap::kInheritedVariable); }
    InheritedDrives(const InheritedDrives&) = delete;
    InheritedDrives& operator=(const InheritedDrives&) = delete;
};
} // namespace

TEST(VmkRestore, BothRoutesSayWhatWasRestoredAndWhatWasRefused)
{
    QTemporaryDir base;
    TreeDrives drives(base.path());
    const InheritedDrives inherited;
    const QString datos = drives.host() + "/Datos";
    writeFile(datos + "/a.txt", "first a");
    writeFile(datos + "/sub/a.txt", "second a");
    writeFile(datos + "/Read.txt", "upper");
    writeFile(datos + "/read.txt", "lower");
    const QByteArray latin1 = QByteArray("ni\xf1o.txt");
    writeRaw(QFile::encodeName(datos) + "/" + latin1, "latin-1");
    const QString archive = drives.device() + "/Respaldos/backup.zip";
    QDir().mkpath(drives.device() + "/Respaldos");
    ASSERT_EQ(backupArchive("C:\\Datos\\", logicalOf(archive)), zip::ZipOk);

    // Default route: every file back to its own place.
    removeTree(datos);
    VmkRun r = runVmk({ "restore", archive });
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.contains("restored: C:\\Datos\\sub\\a.txt -> " + datos + "/sub/a.txt")) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains("5 of 5 entries restored, 0 refused.")) << r.out.toStdString();
    EXPECT_EQ(readFile(datos + "/sub/a.txt"), "second a");
    EXPECT_EQ(readFile(datos + "/Read.txt"), "upper");
    EXPECT_EQ(readFile(datos + "/read.txt"), "lower");
    EXPECT_EQ(readRaw(QFile::encodeName(datos) + "/" + latin1), "latin-1");

    // Chosen entries, written with "/" or "\", options after the operands.
    QFile::remove(datos + "/Read.txt");
    QFile::remove(datos + "/read.txt");
    r = runVmk({ "restore", archive, "C:/Datos/read.txt" });
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.contains("1 of 1 entries restored")) << r.out.toStdString();
    EXPECT_TRUE(QFile::exists(datos + "/read.txt"));
    EXPECT_FALSE(QFile::exists(datos + "/Read.txt"));
    r = runVmk({ "restore", archive, "C:\\Datos\\nada.txt" });
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(r.err.contains("vmk restore: C:\\Datos\\nada.txt: no está en el archivo de respaldo"))
        << r.err.toStdString();

    // Alternative route: side by side; of two a.txt the first is written, the second named.
    const QString dest = drives.host() + "/Destino";
    QDir().mkpath(dest);
    r = runVmk({ "restore", archive, "--to", dest });
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(r.out.contains("4 of 5 entries restored, 1 refused.")) << r.out.toStdString();
    EXPECT_TRUE(r.err.contains(QString("a.txt: nombre repetido: no se sobrescribe (%1)").arg(zip::SkipDuplicateName)))
        << r.err.toStdString();
    EXPECT_TRUE(QFile::exists(dest + "/a.txt"));
    EXPECT_TRUE(QFile::exists(dest + "/Read.txt"));
    EXPECT_TRUE(QFile::exists(dest + "/read.txt"));
    EXPECT_EQ(readRaw(QFile::encodeName(dest) + "/" + latin1), "latin-1");
    r = runVmk({ "restore", "--to", drives.host() + "/NoExiste", archive });
    EXPECT_NE(r.code, 0);
    EXPECT_TRUE(r.err.contains("NoExiste")) << r.err.toStdString();
    removeTree(base.path());
}

TEST(VmkRestore, HostileAndDamagedArchives)
{
    QTemporaryDir base;
    TreeDrives drives(base.path());
    const InheritedDrives inherited;
    const QString outside = base.path() + "/outside";
    QDir().mkpath(outside);
    QDir().mkpath(drives.host() + "/Datos");
    ASSERT_TRUE(QFile::link(outside, drives.host() + "/Datos/link"));
    const QString hostile = drives.device() + "/hostile.zip";
    ASSERT_TRUE(pythonZip(hostile,
        { { "../evil1.txt", "1" }, { "/evil-abs/evil2.txt", "2" }, { "Q:/Datos/evil3.txt", "3" },
            { "C:/Datos/link/evil4.txt", "4" }, { "C:/Datos/fine.txt", "fine" } }));
    VmkRun r = runVmk({ "restore", hostile });
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(r.out.contains("1 of 5 entries restored, 4 refused.")) << r.out.toStdString();
    for (const QString& line : { QString("vmk restore: ..\\evil1.txt: su nombre saldría de la carpeta de destino (%1)")
                                     .arg(zip::SkipUnsafeName),
             QString("vmk restore: \\evil-abs\\evil2.txt: su nombre saldría de la carpeta de destino (%1)")
                 .arg(zip::SkipUnsafeName),
             QString("vmk restore: Q:\\Datos\\evil3.txt: su unidad no está presente (%1)").arg(zip::SkipDriveMissing),
             QString("vmk restore: C:\\Datos\\link\\evil4.txt: hay un enlace en su camino: no se sigue (%1)")
                 .arg(zip::SkipLinkInTarget) })
        EXPECT_TRUE(r.err.contains(line)) << line.toStdString() << "\n" << r.err.toStdString();
    EXPECT_EQ(readFile(drives.host() + "/Datos/fine.txt"), "fine");
    EXPECT_TRUE(QDir(outside).isEmpty());
    EXPECT_FALSE(QFileInfo::exists(base.path() + "/evil1.txt"));
    EXPECT_FALSE(QFileInfo::exists(drives.device() + "/../evil1.txt"));
    EXPECT_FALSE(QFileInfo::exists("/evil-abs"));

    // A cut archive is named, with what is wrong with it.
    const QString whole = drives.device() + "/whole.zip";
    ASSERT_EQ(backupArchive("C:\\Datos\\", logicalOf(whole)), zip::ZipOk);
    const QByteArray bytes = readFile(whole);
    const QString cut = drives.device() + "/cut.zip";
    writeFile(cut, bytes.left(bytes.size() - 30));
    r = runVmk({ "restore", cut });
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(r.err.contains(
        QString("vmk restore: %1: no es un archivo zip o está dañado (%2)").arg(cut).arg(zip::ZipArchiveUnreadable)))
        << r.err.toStdString();
    r = runVmk({ "restore", drives.device() + "/missing.zip" });
    EXPECT_NE(r.code, 0);
    EXPECT_TRUE(r.err.contains("missing.zip")) << r.err.toStdString();
    removeTree(base.path());
}

TEST(VmkRestore, WhatVmkBackupSavedComesBackToTheHostItCameFrom)
{
    // No test mapping: C: is "/", as on a real host, and the device is a folder.
    QTemporaryDir dir;
    const QString root = QDir(dir.path()).canonicalPath();
    const QString datos = root + "/host/Datos";
    ASSERT_TRUE(writeFile(datos + "/a.txt", "a"));
    ASSERT_TRUE(writeFile(datos + "/sub/A.txt", "upper A"));
    ASSERT_TRUE(writeRaw(QFile::encodeName(datos) + "/se\xf1" + "al.txt", "latin-1"));
    const QString datosLogical = "C:" + QString(datos).replace(u'/', u'\\') + "\\";
    ASSERT_TRUE(writeFile(root + "/sel.txt", "[Add]\r\n" + datosLogical.toUtf8() + "\r\n[Exclude]\r\n"));
    const QStringList device = vmk::test::MakeVmkBackupDevice(root + "/dev");
    ASSERT_TRUE(QFileInfo::exists(root + "/dev/VMK/VMK.cnf"));
    VmkRun r = runVmk(QStringList { "backup", root + "/sel.txt" } + device);
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    const QString archive = r.out.trimmed();

    removeTree(datos);
    r = runVmk(QStringList { "restore", archive } + device);
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.contains("3 of 3 entries restored, 0 refused.")) << r.out.toStdString();
    EXPECT_EQ(readFile(datos + "/a.txt"), "a");
    EXPECT_EQ(readFile(datos + "/sub/A.txt"), "upper A");
    EXPECT_EQ(readRaw(QFile::encodeName(datos) + "/se\xf1" + "al.txt"), "latin-1");
    removeTree(root);
}
