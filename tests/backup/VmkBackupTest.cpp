#include "BackupDevice.h"
#include "EngineTestSupport.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <utility>

using namespace vmk::test;

namespace
{
QString logicalOf(const QString& host)
{
    // C: is "/" for vmk without a test mapping.
    return "C:" + QString(host).replace(u'/', u'\\');
}
} // namespace

TEST(VmkBackup, BacksUpASavedSelectionAndNamesWhatItLeavesOut)
{
    QTemporaryDir dir;
    const QString root = QDir(dir.path()).canonicalPath();
    ASSERT_TRUE(writeFile(root + "/host/Datos/a.txt", "a"));
    ASSERT_TRUE(writeFile(root + "/host/Datos/tmp/t.txt", "t"));
    ASSERT_TRUE(writeFile(root + "/host/Datos/locked.txt", "secret"));
    ASSERT_EQ(::chmod(QFile::encodeName(root + "/host/Datos/locked.txt").constData(), 0), 0);
    ASSERT_TRUE(writeFile(root + "/host/gone-soon.txt", "x"));
    const QByteArray selection = "[Add]\r\n" + logicalOf(root + "/host/Datos/").toUtf8() + "\r\n"
        + logicalOf(root + "/host/vanished/").toUtf8() + "\r\n[Exclude]\r\n"
        + logicalOf(root + "/host/Datos/tmp/").toUtf8() + "\r\n";
    ASSERT_TRUE(writeFile(root + "/sel.txt", selection));
    // A device with its settings: the backups folder, no scan.
    ASSERT_TRUE(QDir().mkpath(root + "/elsewhere"));
    const QStringList device = vmk::test::MakeVmkBackupDevice(root + "/dev");
    ASSERT_TRUE(QFileInfo::exists(root + "/dev/VMK/VMK.cnf"));

    // Run as a user would: the unreadable file is named with "Acceso denegado".
    VmkRun r = runVmk(QStringList { "backup", root + "/sel.txt" } + device, {}, true);
    EXPECT_EQ(r.code, 1) << r.err.toStdString();
    const QStringList printed = r.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(printed.size(), 1) << r.out.toStdString();
    const QString archive = printed.first();
    EXPECT_EQ(QFileInfo(archive).absolutePath(), root + "/dev/Respaldos");
    EXPECT_TRUE(
        QFileInfo(archive).fileName().contains(QRegularExpression("^\\w+-\\d\\d-\\d{4},\\d\\d\\.\\d\\d\\.\\d\\d")));
    EXPECT_TRUE(r.err.contains(root + "/host/Datos/locked.txt: Acceso denegado (113)")) << r.err.toStdString();
    const QMap<QByteArray, QByteArray> members = zipMembers(archive);
    EXPECT_EQ(
        members.keys(), QList<QByteArray> { logicalOf(root + "/host/Datos/a.txt").replace(u'\\', u'/').toUtf8() });

    // --to, options after the operand; readable this time, so nothing is left out.
    ASSERT_EQ(::chmod(QFile::encodeName(root + "/host/Datos/locked.txt").constData(), 0600), 0);
    r = runVmk(QStringList { "backup", root + "/sel.txt", "--to", root + "/elsewhere" } + device);
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(QFileInfo(r.out.trimmed()).absolutePath(), root + "/elsewhere");
    EXPECT_EQ(zipMembers(r.out.trimmed()).size(), 2);

    // No selection file, no backups folder: each says what failed and names it.
    r = runVmk(QStringList { "backup", root + "/none.txt" } + device);
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.startsWith("vmk backup: " + root + "/none.txt")) << r.err.toStdString();
    ASSERT_TRUE(QDir(root + "/dev/Respaldos").removeRecursively());
    r = runVmk(QStringList { "backup", root + "/sel.txt" } + device);
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.contains("¡La carpeta de respaldos no existe!")) << r.err.toStdString();
    EXPECT_TRUE(r.out.isEmpty());
}
