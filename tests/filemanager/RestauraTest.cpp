#include "filemanager/Restaura.h"
#include "filemanager/Stages.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "scanner/QuarantineKeys.h"
#include "scanner/QuarantineLedger.h"

#include "QuarantineDevice.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

using namespace vmk;
using scanner::QuarantineLedger;
using vmk::test::MessageRecorder;
using vmk::test::readFile;
using vmk::test::writeFile;

namespace
{
const QString kQuarantine = QStringLiteral("E:\\Mis Documentos\\Cuarentena\\");

// A device with items sealed as the quarantine verb seals them.
class Restore : public ::testing::Test
{
protected:
    // Seals `bytes` under the fixed keys as the quarantined item `name`, without a line.
    void seal(const QString& name, const QByteArray& bytes)
    {
        const QString clear = m_device.host() + "/clear.tmp";
        ASSERT_TRUE(writeFile(clear, bytes));
        const scanner::QuarantineKeys keys;
        // The host name itself: a logical one would reach an existing twin of another case.
        ASSERT_TRUE(EncryptFile(clear, sealedNative(name)));
        QFile::remove(clear);
    }
    QString sealedNative(const QString& name) const { return m_device.quarantine() + '/' + name; }
    QByteArray ledger() const { return readFile(m_device.ledger()); }

    test::QuarantineDevice m_device;
    MessageRecorder m_messages;
};
} // namespace

TEST_F(Restore, TheItemComesBackToItsFolderAndItsLineLeavesTheLedger)
{
    const QByteArray original("MZ original bytes\r\n\0\xff", 21);
    QDir().mkpath(m_device.host() + "/Docs");
    seal("run.exe", original);
    ASSERT_TRUE(writeFile(m_device.ledger(), "other.bin|C:\\X\\\r\nrun.exe|C:\\Docs\\\r\nz.bin|C:\\Z\\\r\n"));

    const RestoreOutcome r = Restaura("|E:\\Mis Documentos\\Cuarentena\\run.exe");
    EXPECT_EQ(r.Matched, 1);
    EXPECT_EQ(r.Restored, 1);
    EXPECT_TRUE(r.SealedGone);
    EXPECT_EQ(readFile(m_device.host() + "/Docs/run.exe"), original);
    EXPECT_FALSE(QFileInfo::exists(sealedNative("run.exe")));
    EXPECT_EQ(ledger(), QByteArray("other.bin|C:\\X\\\r\nz.bin|C:\\Z\\\r\n"));
    EXPECT_FALSE(QFileInfo::exists(m_device.device() + "/VMK/QFP.Tmp"));
    EXPECT_TRUE(m_messages.texts.isEmpty()) << m_messages.texts.join('|').toStdString();
    // The owner's keys are back.
    EXPECT_EQ(G().PassPhrase, "owner");
    EXPECT_EQ(S().EncripAlgorithm, 1);

    // A key with no line, and then no ledger at all: nothing changes, nothing is said.
    const QByteArray before = ledger();
    EXPECT_EQ(Restaura(kQuarantine + "none.bin").Matched, 0);
    EXPECT_EQ(ledger(), before);
    ASSERT_TRUE(QFile::remove(m_device.ledger()));
    EXPECT_EQ(Restaura(kQuarantine + "other.bin").Matched, 0);
    EXPECT_FALSE(QFileInfo::exists(m_device.ledger()));
    EXPECT_TRUE(m_messages.texts.isEmpty());
}

TEST_F(Restore, AMissingFolderKeepsTheLineAndTheItemAndSaysSo)
{
    seal("run.exe", "bytes");
    const QByteArray lines("a.bin|C:\\A\\\r\nrun.exe|C:\\Gone\\\r\nbroken line\r\n");
    ASSERT_TRUE(writeFile(m_device.ledger(), lines));
    const RestoreOutcome r = Restaura(kQuarantine + "RUN.EXE");
    EXPECT_EQ(r.Matched, 1);
    EXPECT_EQ(r.FolderMissing, 1);
    EXPECT_EQ(r.Restored, 0);
    EXPECT_FALSE(r.SealedGone);
    EXPECT_EQ(ledger(), lines) << "content and order unchanged";
    EXPECT_TRUE(QFileInfo::exists(sealedNative("run.exe")));
    EXPECT_EQ(m_messages.texts, QStringList { "¡La ruta de restauración no existe!\r\nC:\\Gone\\" });
    EXPECT_FALSE(QFileInfo::exists(m_device.host() + "/Gone"));
}

TEST_F(Restore, EveryLineOfTheItemIsHandledInOneRun)
{
    QDir().mkpath(m_device.host() + "/First");
    QDir().mkpath(m_device.host() + "/Third");
    seal("dup.bin", "the sealed one");
    ASSERT_TRUE(writeFile(
        m_device.ledger(), "dup.bin|C:\\Gone\\\r\nkeep.bin|C:\\K\\\r\ndup.bin|C:\\First\\\r\ndup.bin|C:\\Third\\\r\n"));
    const RestoreOutcome r = Restaura(kQuarantine + "dup.bin");
    EXPECT_EQ(r.Matched, 3);
    EXPECT_EQ(r.FolderMissing, 1);
    EXPECT_EQ(r.Restored, 1);
    EXPECT_EQ(r.Failed, 1);
    EXPECT_TRUE(r.SealedGone);
    EXPECT_EQ(readFile(m_device.host() + "/First/dup.bin"), QByteArray("the sealed one"));
    EXPECT_FALSE(QFileInfo::exists(m_device.host() + "/Third/dup.bin"));
    // The restored line goes; the others stay in their order.
    EXPECT_EQ(ledger(), QByteArray("dup.bin|C:\\Gone\\\r\nkeep.bin|C:\\K\\\r\ndup.bin|C:\\Third\\\r\n"));
    EXPECT_EQ(m_messages.texts,
        (QStringList {
            "¡La ruta de restauración no existe!\r\nC:\\Gone\\", "¡Error de restauración!\r\nC:\\Third\\dup.bin" }));
}

TEST_F(Restore, NothingIsWrittenOverOrThroughWhatStandsInTheFormerFolder)
{
    const QString docs = m_device.host() + "/Docs";
    QDir().mkpath(docs);
    QDir().mkpath(m_device.host() + "/Elsewhere");
    ASSERT_TRUE(writeFile(m_device.host() + "/outside.txt", "outside"));
    seal("taken.bin", "sealed");
    seal("link.bin", "sealed");
    seal("via.bin", "sealed");
    ASSERT_TRUE(writeFile(docs + "/taken.bin", "the user's newer file"));
    ASSERT_TRUE(QFile::link(m_device.host() + "/outside.txt", docs + "/link.bin"));
    // A folder of the line that became a link to another folder.
    ASSERT_TRUE(QFile::link(m_device.host() + "/Elsewhere", m_device.host() + "/Moved"));
    const QByteArray lines("taken.bin|C:\\Docs\\\r\nlink.bin|C:\\Docs\\\r\nvia.bin|C:\\Moved\\\r\n");
    ASSERT_TRUE(writeFile(m_device.ledger(), lines));

    EXPECT_EQ(Restaura(kQuarantine + "taken.bin").Failed, 1);
    EXPECT_EQ(Restaura(kQuarantine + "link.bin").Failed, 1);
    EXPECT_EQ(Restaura(kQuarantine + "via.bin").Failed, 1);
    EXPECT_EQ(readFile(docs + "/taken.bin"), QByteArray("the user's newer file"));
    EXPECT_EQ(readFile(m_device.host() + "/outside.txt"), QByteArray("outside"));
    EXPECT_TRUE(QFileInfo(docs + "/link.bin").isSymLink());
    EXPECT_TRUE(QDir(m_device.host() + "/Elsewhere").isEmpty());
    EXPECT_EQ(ledger(), lines);
    for (const char* name : { "taken.bin", "link.bin", "via.bin" })
        EXPECT_TRUE(QFileInfo::exists(sealedNative(name))) << name;
    EXPECT_EQ(m_messages.texts,
        (QStringList { "¡El archivo ya existe en la ruta de restauración!\r\nC:\\Docs\\taken.bin",
            "¡El archivo ya existe en la ruta de restauración!\r\nC:\\Docs\\link.bin",
            "¡Error de restauración!\r\nC:\\Moved\\via.bin" }));
}

TEST_F(Restore, AnItemSealedUnderAnotherPassPhraseStaysWithItsLine)
{
    QDir().mkpath(m_device.host() + "/Docs");
    ASSERT_TRUE(writeFile(m_device.host() + "/clear.tmp", "owner's sealing"));
    ASSERT_TRUE(EncryptFile(m_device.host() + "/clear.tmp", kQuarantine + "own.bin"));
    ASSERT_TRUE(writeFile(m_device.ledger(), "own.bin|C:\\Docs\\\r\n"));
    const RestoreOutcome r = Restaura(kQuarantine + "own.bin");
    EXPECT_EQ(r.Failed, 1);
    EXPECT_FALSE(QFileInfo::exists(m_device.host() + "/Docs/own.bin"));
    EXPECT_EQ(ledger(), QByteArray("own.bin|C:\\Docs\\\r\n"));
    ASSERT_EQ(m_messages.texts.size(), 2);
    EXPECT_TRUE(m_messages.texts[0].startsWith("¡Error de decriptado!"));
    EXPECT_EQ(m_messages.texts[1], "¡Error de restauración!\r\nC:\\Docs\\own.bin");
    EXPECT_EQ(G().PassPhrase, "owner");
}

TEST_F(Restore, OddNamesAndCaseOnlyTwinsComeBackAsThemselves)
{
    const QString odd = m_device.host() + "/Odd \"*\" Folder";
    QDir().mkpath(odd);
    const QString names[] = { "q\"uote*.bin", "two\nlines.bin", "Twin.bin", "twin.bin", "año 文件.bin" };
    for (const QString& name : names) {
        seal(name, name.toUtf8());
        ASSERT_TRUE(QuarantineLedger::append(name, "C:\\Odd \"*\" Folder\\"));
    }
    for (const QString& name : { names[0], names[1], names[3], names[4] }) {
        SCOPED_TRACE(name.toStdString());
        const RestoreOutcome r = Restaura(kQuarantine + name);
        EXPECT_EQ(r.Restored, 1);
        EXPECT_EQ(readFile(odd + '/' + name), name.toUtf8());
        EXPECT_TRUE(r.SealedGone);
        EXPECT_TRUE(m_messages.texts.isEmpty()) << m_messages.texts.join('|').toStdString();
    }
    // Only the twin asked for came back; the other keeps its item and line.
    EXPECT_FALSE(QFileInfo::exists(odd + "/Twin.bin"));
    EXPECT_TRUE(QFileInfo::exists(sealedNative("Twin.bin")));
    EXPECT_EQ(ledger(), QByteArray("Twin.bin|C:\\Odd \"*\" Folder\\\r\n"));
    EXPECT_TRUE(m_messages.texts.isEmpty()) << m_messages.texts.join('|').toStdString();
}
