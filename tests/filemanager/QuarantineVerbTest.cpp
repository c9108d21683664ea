#include "filemanager/QuarantineVerb.h"
#include "filemanager/Restaura.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "platform/Pump.h"
#include "scanner/ThreatListModel.h"

#include "QuarantineDevice.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

using namespace vmk;
using vmk::test::MessageRecorder;
using vmk::test::readFile;
using vmk::test::writeFile;

namespace
{
const QString kQuarantine = QStringLiteral("E:\\Mis Documentos\\Cuarentena\\");

class Quarantine : public ::testing::Test
{
protected:
    QString docs() const { return m_device.host() + "/Docs"; }
    QByteArray ledger() const { return readFile(m_device.ledger()); }
    QString item(const QString& name) const { return m_device.quarantine() + '/' + name; }
    // The shared values the verb must give back as it found them.
    void expectOwnersValues() const
    {
        EXPECT_EQ(G().PassPhrase, "owner");
        EXPECT_EQ(S().EncripAlgorithm, 1);
        EXPECT_EQ(S().ScanFilesOperations, "1");
        EXPECT_FALSE(G().MoveFlag);
        EXPECT_EQ(G().OperationCode, 3);
    }
    void SetUp() override
    {
        G().MoveFlag = false;
        G().OperationCode = 3;
    }

    test::QuarantineDevice m_device;
    MessageRecorder m_messages;
};

QByteArray readRawName(const QByteArray& path)
{
    const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return "(missing)";
    QByteArray out(4096, '\0');
    const ssize_t n = ::read(fd, out.data(), size_t(out.size()));
    ::close(fd);
    return out.left(n < 0 ? 0 : qsizetype(n));
}

bool writeRawName(const QByteArray& path, const QByteArray& bytes)
{
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    const bool ok = ::write(fd, bytes.constData(), size_t(bytes.size())) == bytes.size();
    return ::close(fd) == 0 && ok;
}
} // namespace

TEST_F(Quarantine, SealedThenRestoredTheOriginalBytesComeBackAndTheLedgerEmpties)
{
    QByteArray original(100000, '\0');
    for (int i = 0; i < original.size(); ++i)
        original[i] = char(i * 7 + i / 251);
    ASSERT_TRUE(writeFile(docs() + "/run.exe", original));
    QFile::remove(m_device.ledger());

    EXPECT_EQ(QuarantineFile("C:\\Docs\\run.exe"), QuarantineOutcome::Sealed);
    EXPECT_FALSE(QFileInfo::exists(docs() + "/run.exe"));
    ASSERT_TRUE(QFileInfo(item("run.exe")).isFile());
    EXPECT_NE(readFile(item("run.exe")), original) << "sealed, not copied";
    EXPECT_EQ(ledger(), QByteArray("run.exe|C:\\Docs\\\r\n")) << "the first quarantine makes the ledger";
    expectOwnersValues();
    EXPECT_TRUE(m_messages.texts.isEmpty()) << m_messages.texts.join('|').toStdString();

    const RestoreOutcome r = Restaura("|" + kQuarantine + "run.exe");
    EXPECT_EQ(r.Restored, 1);
    EXPECT_TRUE(r.SealedGone);
    EXPECT_EQ(readFile(docs() + "/run.exe"), original);
    EXPECT_FALSE(QFileInfo::exists(item("run.exe")));
    EXPECT_TRUE(QFileInfo::exists(m_device.ledger()));
    EXPECT_EQ(ledger(), QByteArray());
    expectOwnersValues();
    EXPECT_TRUE(m_messages.texts.isEmpty()) << m_messages.texts.join('|').toStdString();
}

TEST_F(Quarantine, WhatIsNotSealedStaysWhereItIsWithAMessageNamingIt)
{
    ASSERT_TRUE(writeFile(m_device.host() + "/outside.txt", "outside"));
    QDir().mkpath(docs());
    ASSERT_TRUE(QFile::link(m_device.host() + "/outside.txt", docs() + "/link.exe"));
    QDir().mkpath(docs() + "/folder.exe");
    ASSERT_TRUE(writeFile(docs() + "/taken.exe", "new one"));
    ASSERT_TRUE(writeFile(item("taken.exe"), "the item already there"));
    ASSERT_TRUE(writeFile(item("inside.exe"), "an item"));

    EXPECT_EQ(QuarantineFile("C:\\Docs\\link.exe"), QuarantineOutcome::Refused);
    EXPECT_EQ(QuarantineFile("C:\\Docs\\folder.exe"), QuarantineOutcome::Refused);
    EXPECT_EQ(QuarantineFile("C:\\Docs\\gone.exe"), QuarantineOutcome::Refused);
    EXPECT_EQ(QuarantineFile("C:\\Docs\\taken.exe"), QuarantineOutcome::Refused);
    EXPECT_EQ(QuarantineFile("e:\\mis documentos\\cuarentena\\inside.exe"), QuarantineOutcome::AlreadyInQuarantine);
    EXPECT_EQ(m_messages.texts,
        (QStringList { "¡Un enlace no se pone en cuarentena!\r\nC:\\Docs\\link.exe",
            "¡Solo un archivo regular se pone en cuarentena!\r\nC:\\Docs\\folder.exe",
            "Error, el archivo o carpeta no existe\r\nC:\\Docs\\gone.exe",
            "¡Ya hay en Cuarentena un archivo con ese nombre, no se sobrescribe!\r\nC:\\Docs\\taken.exe",
            "!El archivo ya existe en Cuarentena!\r\ne:\\mis documentos\\cuarentena\\inside.exe" }));
    EXPECT_TRUE(QFileInfo(docs() + "/link.exe").isSymLink());
    EXPECT_EQ(readFile(m_device.host() + "/outside.txt"), QByteArray("outside"));
    EXPECT_FALSE(QFileInfo::exists(item("link.exe")));
    EXPECT_EQ(readFile(docs() + "/taken.exe"), QByteArray("new one"));
    EXPECT_EQ(readFile(item("taken.exe")), QByteArray("the item already there"));
    EXPECT_FALSE(QFileInfo::exists(m_device.ledger()));
    expectOwnersValues();
}

TEST_F(Quarantine, ARefusedOrMissingQuarantineFolder)
{
    ASSERT_TRUE(writeFile(docs() + "/a.exe", "a"));
    // The device's root is no quarantine: the purge would walk the whole device.
    S().QuarenteneFolder = "\\";
    EXPECT_EQ(QuarantineFile("C:\\Docs\\a.exe"), QuarantineOutcome::Refused);
    EXPECT_EQ(readFile(docs() + "/a.exe"), QByteArray("a"));
    ASSERT_EQ(m_messages.texts.size(), 1);
    EXPECT_TRUE(m_messages.texts[0].contains("#QuarenteneFolder")) << m_messages.texts[0].toStdString();
    EXPECT_FALSE(QFileInfo::exists(m_device.ledger()));
    EXPECT_FALSE(QFileInfo::exists(m_device.device() + "/a.exe"));

    // A folder not made yet is made.
    S().QuarenteneFolder = "\\Nueva\\Cuarentena\\";
    EXPECT_EQ(QuarantineFile("C:\\Docs\\a.exe"), QuarantineOutcome::Sealed);
    EXPECT_TRUE(QFileInfo(m_device.device() + "/Nueva/Cuarentena/a.exe").isFile());
    EXPECT_EQ(ledger(), QByteArray("a.exe|C:\\Docs\\\r\n"));
}

TEST_F(Quarantine, OddNamesAndCaseOnlyTwinsAreEachTheirOwnItem)
{
    const QString odd = m_device.host() + "/Odd \"*\" Folder";
    const QString names[] = { "Twin.bin", "twin.bin", "q\"uote*.bin", "two\nlines.bin" };
    for (const QString& name : names)
        ASSERT_TRUE(writeFile(odd + '/' + name, "content of " + name.toUtf8()));
    const QByteArray latin1 = QFile::encodeName(odd) + "/caf\xe9.bin";
    ASSERT_TRUE(writeRawName(latin1, "latin-1 content"));
    const QString latin1Name = QString("caf") + QChar(0xF0E9) + ".bin";

    for (const QString& name : names)
        EXPECT_EQ(QuarantineFile("C:\\Odd \"*\" Folder\\" + name), QuarantineOutcome::Sealed) << name.toStdString();
    const QuarantineOutcome latin1Outcome = QuarantineFile("C:\\Odd \"*\" Folder\\" + latin1Name);
    EXPECT_TRUE(m_messages.texts.isEmpty()) << m_messages.texts.join('|').toStdString();
    ASSERT_EQ(latin1Outcome, QuarantineOutcome::Sealed);
    EXPECT_TRUE(QDir(odd).entryList(QDir::Files).isEmpty());
    EXPECT_EQ(readRawName(latin1), QByteArray("(missing)"));
    EXPECT_EQ(QDir(m_device.quarantine()).entryList(QDir::Files).size(), 4) << "QDir does not list the Latin-1 name";
    EXPECT_NE(readRawName(QFile::encodeName(m_device.quarantine()) + "/caf\xe9.bin"), QByteArray("(missing)"));
    EXPECT_EQ(ledger().count("\r\n"), 5);
    EXPECT_TRUE(ledger().contains("caf\xe9.bin|C:\\Odd \"*\" Folder\\\r\n"));

    for (const QString& name : { names[1], names[2], names[3], latin1Name }) {
        SCOPED_TRACE(name.toStdString());
        EXPECT_EQ(Restaura(kQuarantine + name).Restored, 1);
    }
    EXPECT_EQ(readFile(odd + "/twin.bin"), QByteArray("content of twin.bin"));
    EXPECT_EQ(readFile(odd + "/two\nlines.bin"), QByteArray("content of two\nlines.bin"));
    EXPECT_EQ(readFile(odd + "/q\"uote*.bin"), QByteArray("content of q\"uote*.bin"));
    EXPECT_EQ(readRawName(latin1), QByteArray("latin-1 content")) << "back under its own byte";
    EXPECT_FALSE(QFileInfo::exists(odd + "/Twin.bin"));
    EXPECT_EQ(ledger(), QByteArray("Twin.bin|C:\\Odd \"*\" Folder\\\r\n"));
    EXPECT_TRUE(m_messages.texts.isEmpty()) << m_messages.texts.join('|').toStdString();
    expectOwnersValues();
}

TEST_F(Quarantine, TickedRowsAreSealedAndMarkedTheOthersStay)
{
    ASSERT_TRUE(writeFile(docs() + "/two alerts.exe", "x"));
    ASSERT_TRUE(writeFile(docs() + "/not ticked.exe", "y"));
    ASSERT_TRUE(writeFile(item("already.exe"), "z"));
    ThreatListModel threats;
    threats.appendRow("two alerts.exe", "C:\\Docs\\", "Virus:A", true);
    threats.appendRow("not ticked.exe", "C:\\Docs\\", "Virus:B", false);
    threats.appendRow("two alerts.exe", "C:\\Docs\\", "Virus:C", false);
    threats.appendRow("already.exe", kQuarantine, "Virus:D", true);
    for (const int row : { 0, 2, 3 })
        ASSERT_TRUE(threats.setTicked(row, true));

    QuarantineTickedThreats(threats);
    EXPECT_EQ(threats.status(0), "Cuarentena");
    EXPECT_EQ(threats.status(2), "Cuarentena");
    EXPECT_FALSE(threats.isTicked(0));
    EXPECT_FALSE(threats.isTicked(2));
    EXPECT_EQ(threats.status(1), "No");
    EXPECT_TRUE(QFileInfo::exists(docs() + "/not ticked.exe"));
    EXPECT_TRUE(threats.isTicked(3)) << "a row in the quarantine stays ticked";
    EXPECT_EQ(threats.status(3), "Si");
    EXPECT_EQ(
        m_messages.texts, QStringList { "!El archivo ya existe en Cuarentena!\r\n" + kQuarantine + "already.exe" });
    EXPECT_EQ(ledger(), QByteArray("two alerts.exe|C:\\Docs\\\r\n"));
    expectOwnersValues();
}

TEST_F(Quarantine, BarrasCancelStopsBeforeTheNextFile)
{
    ThreatListModel threats;
    for (const char* name : { "one.exe", "two.exe" }) {
        ASSERT_TRUE(writeFile(docs() + '/' + name, name));
        threats.appendRow(name, "C:\\Docs\\", "Virus:A", true);
        ASSERT_TRUE(threats.setTicked(threats.rowCountWithPending() - 1, true));
    }
    // Cancel pressed while the first file is being sealed.
    SetPumpHook([] { G().CancelRequested = true; });
    QuarantineTickedThreats(threats);
    SetPumpHook({});
    EXPECT_EQ(threats.status(0), "Cuarentena");
    EXPECT_TRUE(threats.isTicked(1));
    EXPECT_TRUE(QFileInfo::exists(docs() + "/two.exe"));
    EXPECT_EQ(ledger(), QByteArray("one.exe|C:\\Docs\\\r\n"));
}
