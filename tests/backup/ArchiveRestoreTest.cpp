#include "backup/ArchiveRestore.h"
#include "backup/BackupRun.h"
#include "backup/RestoreRow.h"
#include "components/zip/ZipArchiver.h"
#include "components/zip/ZipCodes.h"
#include "foundation/Settings.h"
#include "platform/NativeName.h"

#include "RestoreArchives.h"
#include "TestSupport.h"
#include "TreeDrives.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace vmk;
using namespace vmk::test;

namespace
{
const QByteArray kLatin1Name = QByteArray("caf\xe9 men\xfa.txt");

// A host C: with the folder Datos (same names in two folders, case-only twins,
// a Latin-1 name, a quote and a star) and a device E: with its backups folder.
struct RestoreFixture {
    QTemporaryDir base;
    TreeDrives drives { base.path() };
    QString datos = drives.host() + "/Datos";
    QString archive = drives.device() + "/Respaldos/nov-15-2026,20.37.05.zip";

    RestoreFixture()
    {
        writeFile(datos + "/a.txt", "first a");
        writeFile(datos + "/sub/a.txt", "second a");
        writeFile(datos + "/Read.txt", "upper");
        writeFile(datos + "/read.txt", "lower");
        writeFile(datos + "/quo\"te*.txt", "odd");
        writeRaw(QFile::encodeName(datos) + "/" + kLatin1Name, "latin-1");
        QDir().mkpath(drives.device() + "/Respaldos");
    }
    ~RestoreFixture() { removeTree(base.path()); }

    static QString latin1Logical() { return NativeName::fromBytes(kLatin1Name); }
};

QStringList keysOf(const QList<RestoreRow>& rows)
{
    QStringList keys;
    for (const RestoreRow& r : rows)
        keys << r.key;
    return keys;
}

QStringList refusalsOf(const ArchiveRestore::Outcome& o)
{
    QStringList out;
    for (const auto& r : o.refused)
        out << QString("%1 %2").arg(r.entry).arg(r.reason);
    out.sort();
    return out;
}

// Every file below `folder` whose name starts with "evil".
QStringList evilFiles(const QString& folder)
{
    QStringList found;
    QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString f = it.next();
        if (QFileInfo(f).fileName().startsWith("evil"))
            found << f;
    }
    return found;
}
} // namespace

TEST(ArchiveRestore, RowsSplitTheStoredNameAndListTheArchiveInOrder)
{
    const RestoreRow row = RestoreRow::FromStoredName("C:\\Datos\\sub\\a.txt", 8);
    EXPECT_EQ(row.key, "C:\\Datos\\sub\\a.txt");
    EXPECT_EQ(row.text, "a.txt");
    EXPECT_EQ(row.path, "C:\\Datos\\sub\\");
    EXPECT_EQ(row.size, 8);
    const RestoreRow bare = RestoreRow::FromStoredName("solo.txt", 0);
    EXPECT_EQ(bare.text, "solo.txt");
    EXPECT_EQ(bare.path, "");

    RestoreFixture f;
    ASSERT_EQ(backupArchive("C:\\Datos\\", logicalOf(f.archive)), zip::ZipOk);
    zip::ZipArchiver zip;
    ArchiveRestore restore(zip);
    QList<RestoreRow> rows;
    ASSERT_EQ(restore.ListArchive(logicalOf(f.archive), rows), zip::ZipOk);
    QStringList keys = keysOf(rows);
    keys.sort();
    QStringList expected { "C:\\Datos\\a.txt", "C:\\Datos\\sub\\a.txt", "C:\\Datos\\Read.txt", "C:\\Datos\\read.txt",
        "C:\\Datos\\quo\"te*.txt", "C:\\Datos\\" + RestoreFixture::latin1Logical() };
    expected.sort();
    EXPECT_EQ(keys, expected);
    for (const RestoreRow& r : rows)
        EXPECT_TRUE(r.path.startsWith("C:\\Datos\\")) << r.key.toStdString();

    // Info-ZIP stores folder entries: they are no files to check and give no row.
    writeFile(f.drives.host() + "/Src/sub/b.txt", "b");
    writeFile(f.drives.host() + "/Src/a.txt", "a");
    const QString infoZip = f.drives.device() + "/Respaldos/infozip.zip";
    ASSERT_EQ(runProgram("/usr/bin/zip", { "-q", "-r", infoZip, "Src" }, f.drives.host()), 0);
    ASSERT_EQ(restore.ListArchive(logicalOf(infoZip), rows), zip::ZipOk);
    keys = keysOf(rows);
    keys.sort();
    EXPECT_EQ(keys, QStringList({ "Src\\a.txt", "Src\\sub\\b.txt" }));
}

TEST(ArchiveRestore, DefaultRouteBringsEachFileBackToItsPlace)
{
    RestoreFixture f;
    ASSERT_EQ(backupArchive("C:\\Datos\\", logicalOf(f.archive)), zip::ZipOk);
    // The originals are lost, or changed since the backup.
    removeTree(f.datos + "/sub");
    QFile::remove(f.datos + "/Read.txt");
    ::unlink((QFile::encodeName(f.datos) + "/" + kLatin1Name).constData());
    writeFile(f.datos + "/a.txt", "changed since");

    zip::ZipArchiver zip;
    int completed = 0;
    zip.events().processCompleted = [&] { ++completed; };
    ArchiveRestore restore(zip);
    QList<RestoreRow> rows;
    ASSERT_EQ(restore.ListArchive(logicalOf(f.archive), rows), zip::ZipOk);
    const ArchiveRestore::Outcome o = restore.Restore(logicalOf(f.archive), keysOf(rows), QString());
    EXPECT_EQ(o.result, zip::ZipOk);
    EXPECT_TRUE(o.refused.isEmpty()) << refusalsOf(o).join(", ").toStdString();
    EXPECT_EQ(o.restored.size(), 6);
    EXPECT_EQ(completed, 1);
    EXPECT_EQ(restore.AltRestoreFolder(), "");
    for (const auto& r : o.restored)
        EXPECT_EQ(r.destination, r.entry); // the stored path itself
    EXPECT_EQ(readFile(f.datos + "/a.txt"), "first a");
    EXPECT_EQ(readFile(f.datos + "/sub/a.txt"), "second a");
    EXPECT_EQ(readFile(f.datos + "/Read.txt"), "upper");
    EXPECT_EQ(readFile(f.datos + "/read.txt"), "lower");
    EXPECT_EQ(readFile(f.datos + "/quo\"te*.txt"), "odd");
    EXPECT_EQ(readRaw(QFile::encodeName(f.datos) + "/" + kLatin1Name), "latin-1");
    // Nothing was written beside the archive.
    EXPECT_EQ(QDir(f.drives.device() + "/Respaldos").entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size(), 1);

    // Only the checked rows come back.
    QFile::remove(f.datos + "/read.txt");
    QFile::remove(f.datos + "/Read.txt");
    const ArchiveRestore::Outcome one = restore.Restore(logicalOf(f.archive), { "C:\\Datos\\read.txt" }, QString());
    EXPECT_EQ(one.result, zip::ZipOk);
    ASSERT_EQ(one.restored.size(), 1);
    EXPECT_TRUE(QFile::exists(f.datos + "/read.txt"));
    EXPECT_FALSE(QFile::exists(f.datos + "/Read.txt"));

    // Nothing checked: the component is not called, and nothing is said.
    const ArchiveRestore::Outcome none = restore.Restore(logicalOf(f.archive), {}, QString());
    EXPECT_EQ(none.result, zip::ZipNothingToDo);
    EXPECT_EQ(completed, 2);
}

TEST(ArchiveRestore, AlternativeRouteDropsTheFoldersAndTheFirstOfOneNameWins)
{
    RestoreFixture f;
    ASSERT_EQ(backupArchive("C:\\Datos\\", logicalOf(f.archive)), zip::ZipOk);
    ASSERT_TRUE(QDir().mkpath(f.drives.host() + "/Destino"));

    zip::ZipArchiver zip;
    QStringList ownersSkips;
    zip.events().skippingFile
        = [&](const QString& name, int reason) { ownersSkips << QString("%1 %2").arg(name).arg(reason); };
    ArchiveRestore restore(zip);
    QList<RestoreRow> rows;
    ASSERT_EQ(restore.ListArchive(logicalOf(f.archive), rows), zip::ZipOk);
    QString firstA, secondA;
    for (const RestoreRow& r : rows) {
        if (r.text == "a.txt")
            (firstA.isEmpty() ? firstA : secondA) = r.key;
    }
    ASSERT_FALSE(secondA.isEmpty());

    const ArchiveRestore::Outcome o = restore.Restore(logicalOf(f.archive), keysOf(rows), "C:\\Destino");
    EXPECT_EQ(restore.AltRestoreFolder(), "C:\\Destino\\");
    EXPECT_EQ(o.result, zip::ZipFilesSkipped);
    EXPECT_EQ(refusalsOf(o), QStringList({ QString("%1 %2").arg(secondA).arg(zip::SkipDuplicateName) }));
    // The run panel's own handler still hears of it.
    EXPECT_EQ(ownersSkips, refusalsOf(o));
    EXPECT_EQ(o.restored.size(), 5);
    const QString dest = f.drives.host() + "/Destino";
    EXPECT_EQ(readFile(dest + "/a.txt"), firstA == "C:\\Datos\\a.txt" ? "first a" : "second a");
    EXPECT_EQ(readFile(dest + "/Read.txt"), "upper");
    EXPECT_EQ(readFile(dest + "/read.txt"), "lower");
    EXPECT_EQ(readFile(dest + "/quo\"te*.txt"), "odd");
    EXPECT_EQ(readRaw(QFile::encodeName(dest) + "/" + kLatin1Name), "latin-1");
    EXPECT_FALSE(QFileInfo::exists(dest + "/sub"));
    EXPECT_FALSE(QFileInfo::exists(dest + "/Datos"));
    // The handlers taken for the call are given back.
    EXPECT_FALSE(zip.events().unzipPreprocessingFile);
    EXPECT_FALSE(zip.events().listingFile);
    ASSERT_TRUE(zip.events().skippingFile);

    // The rule on its own.
    QString destination = "C:\\Datos\\sub\\a.txt";
    ArchiveRestore::UnzipPreprocessingFile("D:\\Otra\\", "C:\\Datos\\sub\\a.txt", destination);
    EXPECT_EQ(destination, "D:\\Otra\\a.txt");
    ArchiveRestore::UnzipPreprocessingFile("", "C:\\Datos\\sub\\a.txt", destination);
    EXPECT_EQ(destination, "D:\\Otra\\a.txt"); // the default route leaves it as it stands

    // Info-ZIP's relative names: side by side in the folder, or beside the archive.
    writeFile(f.drives.host() + "/Src/sub/b.txt", "b");
    writeFile(f.drives.host() + "/Src/a.txt", "a");
    const QString infoZip = f.drives.device() + "/Respaldos/infozip.zip";
    ASSERT_EQ(runProgram("/usr/bin/zip", { "-q", "-r", infoZip, "Src" }, f.drives.host()), 0);
    ASSERT_TRUE(QDir().mkpath(f.drives.host() + "/Plano"));
    const ArchiveRestore::Outcome flat
        = restore.Restore(logicalOf(infoZip), { "Src\\", "Src\\a.txt", "Src\\sub\\b.txt" }, "C:\\Plano\\");
    EXPECT_EQ(flat.result, zip::ZipOk);
    EXPECT_EQ(QDir(f.drives.host() + "/Plano").entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
        QStringList({ "a.txt", "b.txt" }));
    const ArchiveRestore::Outcome beside = restore.Restore(logicalOf(infoZip), { "Src\\sub\\b.txt" }, QString());
    EXPECT_EQ(beside.result, zip::ZipOk);
    EXPECT_EQ(readFile(f.drives.device() + "/Respaldos/Src/sub/b.txt"), "b");
}

TEST(ArchiveRestore, HostileNamesRestoreNothingOutsideTheTarget)
{
    RestoreFixture f;
    const QString outside = f.base.path() + "/outside";
    ASSERT_TRUE(QDir().mkpath(outside));
    ASSERT_TRUE(writeFile(outside + "/kept.txt", "kept"));
    // A link already in the target: on the way of one entry, in the place of another.
    ASSERT_TRUE(QFile::link(outside, f.datos + "/link"));
    ASSERT_TRUE(QFile::link(outside + "/kept.txt", f.datos + "/planted.txt"));
    const QString hostile = f.drives.device() + "/Respaldos/hostile.zip";
    ASSERT_TRUE(pythonZip(hostile,
        { { "../evil1.txt", "1" }, { "C:/Datos/../../evil2.txt", "2" }, { "/evil-abs/evil3.txt", "3" },
            { "D:/Datos/evil4.txt", "4" }, { "C:/Datos/link/evil5.txt", "5" }, { "C:/Datos/planted.txt", "6" },
            { "C:/Datos/fine.txt", "fine" } }));

    zip::ZipArchiver zip;
    ArchiveRestore restore(zip);
    QList<RestoreRow> rows;
    ASSERT_EQ(restore.ListArchive(logicalOf(hostile), rows), zip::ZipOk);
    ASSERT_EQ(rows.size(), 7);
    ArchiveRestore::Outcome o = restore.Restore(logicalOf(hostile), keysOf(rows), QString());
    EXPECT_EQ(o.result, zip::ZipFilesSkipped);
    QStringList expected { QString("..\\evil1.txt %1").arg(zip::SkipUnsafeName),
        QString("C:\\Datos\\..\\..\\evil2.txt %1").arg(zip::SkipUnsafeName),
        QString("\\evil-abs\\evil3.txt %1").arg(zip::SkipUnsafeName),
        QString("D:\\Datos\\evil4.txt %1").arg(zip::SkipDriveMissing),
        QString("C:\\Datos\\link\\evil5.txt %1").arg(zip::SkipLinkInTarget),
        QString("C:\\Datos\\planted.txt %1").arg(zip::SkipLinkInTarget) };
    expected.sort();
    EXPECT_EQ(refusalsOf(o), expected);
    ASSERT_EQ(o.restored.size(), 1);
    EXPECT_EQ(o.restored.first().entry, "C:\\Datos\\fine.txt");
    EXPECT_EQ(readFile(f.datos + "/fine.txt"), "fine");
    EXPECT_TRUE(evilFiles(f.base.path()).isEmpty()) << evilFiles(f.base.path()).join(", ").toStdString();
    EXPECT_FALSE(QFileInfo::exists("/evil-abs"));
    EXPECT_EQ(readFile(outside + "/kept.txt"), "kept");
    EXPECT_TRUE(QFileInfo(f.datos + "/planted.txt").isSymLink());

    // The alternative route: names are cut to their last piece inside the folder,
    // but a climb is refused all the same and a link in the folder is never followed.
    const QString dest = f.drives.host() + "/Destino";
    ASSERT_TRUE(QDir().mkpath(dest));
    ASSERT_TRUE(QFile::link(outside + "/kept.txt", dest + "/planted.txt"));
    o = restore.Restore(logicalOf(hostile), keysOf(rows), "C:\\Destino\\");
    expected = QStringList { QString("..\\evil1.txt %1").arg(zip::SkipUnsafeName),
        QString("C:\\Datos\\..\\..\\evil2.txt %1").arg(zip::SkipUnsafeName),
        QString("C:\\Datos\\planted.txt %1").arg(zip::SkipLinkInTarget) };
    expected.sort();
    EXPECT_EQ(refusalsOf(o), expected);
    EXPECT_EQ(readFile(dest + "/evil3.txt"), "3");
    EXPECT_EQ(readFile(dest + "/evil4.txt"), "4");
    EXPECT_EQ(readFile(dest + "/evil5.txt"), "5");
    QStringList evil = evilFiles(f.base.path());
    evil.sort();
    EXPECT_EQ(evil, QStringList({ dest + "/evil3.txt", dest + "/evil4.txt", dest + "/evil5.txt" }));
    EXPECT_EQ(readFile(outside + "/kept.txt"), "kept");
    EXPECT_EQ(QDir(outside).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList({ "kept.txt" }));
}

TEST(ArchiveRestore, DamagedOrCutArchivesAreRefusedAndNamed)
{
    RestoreFixture f;
    QByteArray big;
    for (int i = 0; i < 20000; ++i)
        big += QByteArray::number(i * 7919) + ' ';
    writeFile(f.datos + "/big.txt", big);
    ASSERT_EQ(backupArchive("C:\\Datos\\", logicalOf(f.archive)), zip::ZipOk);
    const QByteArray whole = readFile(f.archive);

    zip::ZipArchiver zip;
    ArchiveRestore restore(zip);
    QList<RestoreRow> rows;
    // Cut in half: the directory at the end is gone.
    const QString cut = f.drives.device() + "/Respaldos/cut.zip";
    writeFile(cut, whole.left(whole.size() / 2));
    EXPECT_EQ(restore.ListArchive(logicalOf(cut), rows), zip::ZipArchiveUnreadable);
    EXPECT_TRUE(rows.isEmpty());
    EXPECT_EQ(restore.Restore(logicalOf(cut), { "C:\\Datos\\big.txt" }, QString()).result, zip::ZipArchiveUnreadable);
    // Not a zip at all, and an empty file.
    const QString text = f.drives.device() + "/Respaldos/notes.zip";
    writeFile(text, "just words\n");
    EXPECT_EQ(restore.ListArchive(logicalOf(text), rows), zip::ZipArchiveUnreadable);
    const QString empty = f.drives.device() + "/Respaldos/empty.zip";
    writeFile(empty, "");
    EXPECT_EQ(restore.ListArchive(logicalOf(empty), rows), zip::ZipArchiveUnreadable);

    // Damaged data under an intact directory: the entry is refused, nothing half-written stays.
    ASSERT_EQ(restore.ListArchive(logicalOf(f.archive), rows), zip::ZipOk);
    QByteArray damaged = whole;
    const qsizetype at = damaged.indexOf("big.txt");
    ASSERT_GT(at, 0);
    for (qsizetype i = at + 200; i < at + 400; ++i)
        damaged[i] = static_cast<char>(damaged[i] ^ 0x5a);
    const QString hurt = f.drives.device() + "/Respaldos/hurt.zip";
    writeFile(hurt, damaged);
    QFile::remove(f.datos + "/big.txt");
    const ArchiveRestore::Outcome o = restore.Restore(logicalOf(hurt), { "C:\\Datos\\big.txt" }, QString());
    EXPECT_EQ(o.result, zip::ZipFilesSkipped);
    EXPECT_EQ(refusalsOf(o), QStringList({ QString("C:\\Datos\\big.txt %1").arg(zip::SkipDamagedEntry) }));
    EXPECT_TRUE(o.restored.isEmpty());
    EXPECT_EQ(QDir(f.datos).entryList({ "big*" }, QDir::AllEntries | QDir::Hidden).size(), 0);
}

TEST(ArchiveRestore, WhatTheBackupRunSavedComesBackWhole)
{
    RestoreFixture f;
    writeFile(f.datos + "/fuera/no.txt", "excepted");
    ASSERT_TRUE(QFile::link(f.datos + "/nowhere", f.datos + "/dangling"));
    const QString oldScan = S().ScanBeforeBackup;
    const int oldMethod = S().BCompAlgorithm;
    S().ScanBeforeBackup = "0";
    S().BCompAlgorithm = 0; // bzip2
    zip::ZipArchiver zip;
    QStringList skippedAtBackup;
    zip.events().skippingFile = [&](const QString& name, int) { skippedAtBackup << name; };
    BackupRun run(zip);
    const BackupRun::Outcome made = run.Run({ "C:\\Datos\\" }, { "C:\\Datos\\fuera\\" }, "E:\\Respaldos\\", {});
    S().ScanBeforeBackup = oldScan;
    S().BCompAlgorithm = oldMethod;
    ASSERT_EQ(made.failure, BackupRun::Failure::None) << made.result;
    EXPECT_EQ(skippedAtBackup, QStringList({ "C:\\Datos\\dangling" }));

    ArchiveRestore restore(zip);
    QList<RestoreRow> rows;
    ASSERT_EQ(restore.ListArchive(made.archive, rows), zip::ZipOk);
    ASSERT_EQ(rows.size(), 6);
    // Python's zipfile reads the run's archive whole as well.
    EXPECT_EQ(runProgram("/usr/bin/python3",
                  { "-c",
                      "import sys,zipfile; z=zipfile.ZipFile(sys.argv[1]); "
                      "sys.exit(0 if len(z.namelist())==6 and z.testzip() is None else 1)",
                      DriveMap::instance().toNative(made.archive) }),
        0);
    removeTree(f.datos);
    const ArchiveRestore::Outcome o = restore.Restore(made.archive, keysOf(rows), QString());
    EXPECT_EQ(o.result, zip::ZipOk);
    EXPECT_TRUE(o.refused.isEmpty()) << refusalsOf(o).join(", ").toStdString();
    EXPECT_EQ(readFile(f.datos + "/a.txt"), "first a");
    EXPECT_EQ(readFile(f.datos + "/sub/a.txt"), "second a");
    EXPECT_EQ(readFile(f.datos + "/Read.txt"), "upper");
    EXPECT_EQ(readFile(f.datos + "/read.txt"), "lower");
    EXPECT_EQ(readFile(f.datos + "/quo\"te*.txt"), "odd");
    EXPECT_EQ(readRaw(QFile::encodeName(f.datos) + "/" + kLatin1Name), "latin-1");
    EXPECT_FALSE(QFileInfo::exists(f.datos + "/fuera"));
    EXPECT_FALSE(QFileInfo(f.datos + "/dangling").isSymLink());
}
