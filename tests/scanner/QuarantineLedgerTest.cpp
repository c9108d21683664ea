#include "scanner/QuarantineLedger.h"
#include "scanner/QuarantineKeys.h"

#include "QuarantineDevice.h"
#include "TestSupport.h"

#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

using namespace vmk;
using namespace vmk::scanner;
using vmk::test::MessageRecorder;
using vmk::test::readFile;
using vmk::test::writeFile;

TEST(QuarantineLedger, AppendWritesOneLineEachTimeCreatingTheLedger)
{
    test::QuarantineDevice device;
    MessageRecorder messages;
    ASSERT_FALSE(QFile::exists(device.ledger()));
    EXPECT_EQ(QuarantineLedger::ledgerPath(), device.ledger());
    EXPECT_EQ(QuarantineLedger::sealedPath("run.exe"), "E:\\Mis Documentos\\Cuarentena\\run.exe");
    EXPECT_FALSE(QuarantineLedger::read().has_value()) << "no ledger yet";
    ASSERT_TRUE(QuarantineLedger::append("run.exe", "C:\\Tools\\"));
    ASSERT_TRUE(QuarantineLedger::append("run.exe", "C:\\Other\\"));
    EXPECT_EQ(readFile(device.ledger()), QByteArray("run.exe|C:\\Tools\\\r\nrun.exe|C:\\Other\\\r\n"));
    const auto lines = QuarantineLedger::read();
    ASSERT_TRUE(lines.has_value());
    ASSERT_EQ(lines->size(), 2);
    EXPECT_EQ((*lines)[1].Number, 2);
    EXPECT_EQ((*lines)[1].formerPath(), "C:\\Other\\run.exe");
    EXPECT_TRUE((*lines)[0].sound());
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join('|').toStdString();

    // Another spelling of the name is the same ledger.
    ASSERT_TRUE(QFile::rename(device.ledger(), device.device() + "/VMK/QFP.TXT"));
    EXPECT_EQ(QuarantineLedger::read()->size(), 2);
    ASSERT_TRUE(QuarantineLedger::append("b.exe", "C:\\B\\"));
    EXPECT_FALSE(QFile::exists(device.ledger()));
    EXPECT_EQ(QuarantineLedger::read()->size(), 3);
}

TEST(QuarantineLedger, DamagedLinesAreNamedAndKeptAsTheyStand)
{
    static const char text[] = "ok.bin|E:\\Docs\\\r\n"
                               "no separator\r\n"
                               "|E:\\Docs\\\r\n"
                               "name.bin|Docs\\\r\n"
                               "name.bin|E:\\Docs\r\n"
                               "bare-lf.bin|E:\\Docs\\\n"
                               "\r\n"
                               "n\0ul.bin|E:\\Docs\\\r\n"
                               "two|bars|E:\\X\\\r\n"
                               "cut.bin|E:\\Do";
    const QByteArray bytes(text, sizeof(text) - 1);
    const QList<LedgerLine> lines = QuarantineLedger::parse(bytes);
    ASSERT_EQ(lines.size(), 10);
    QStringList problems;
    for (const LedgerLine& l : lines)
        problems << QString::number(l.Number) + ':' + (l.sound() ? QString("ok") : l.Problem);
    EXPECT_EQ(problems,
        QStringList({ "1:ok", "2:La línea no tiene separador \"|\"", "3:La línea no tiene nombre de archivo",
            "4:La carpeta de la línea no es una ruta completa terminada en \"\\\"",
            "5:La carpeta de la línea no es una ruta completa terminada en \"\\\"", "6:ok",
            "7:La línea no tiene separador \"|\"", "8:La línea contiene un byte nulo",
            "9:La carpeta de la línea no es una ruta completa terminada en \"\\\"",
            "10:La carpeta de la línea no es una ruta completa terminada en \"\\\"" }));
    // The first "|" separates: the rest, bars and all, is the folder.
    EXPECT_EQ(lines[8].Name, "two");
    EXPECT_EQ(lines[8].Folder, "bars|E:\\X\\");
    EXPECT_EQ(lines[5].Name, "bare-lf.bin");
    EXPECT_EQ(lines[1].Raw, QByteArray("no separator"));
    EXPECT_EQ(lines[9].Raw, QByteArray("cut.bin|E:\\Do"));
    EXPECT_EQ(lines[7].Raw, QByteArray("n\0ul.bin|E:\\Docs\\", 17));
    EXPECT_TRUE(QuarantineLedger::parse(QByteArray()).isEmpty());
}

TEST(QuarantineLedger, OddNamesGoThroughOneLineAndBack)
{
    test::QuarantineDevice device;
    MessageRecorder messages;
    const QString latin1 = QString("caf") + QChar(0xF0E9) + ".bin"; // the byte 0xE9 of a Latin-1 name
    const QString odd[] = { "q\"uote*.bin", "two\nlines.bin", "cr\r\n.bin", latin1, "Case.bin", "case.bin",
        QString("back") + QChar(0xF05C) + "slash.bin", "a/n.bin", "año 文件.bin" };
    QByteArray expected;
    for (const QString& name : odd) {
        ASSERT_TRUE(QuarantineLedger::append(name, "C:\\Odd Folder\\" + name + "\\"));
        expected += QuarantineLedger::lineFor(name, "C:\\Odd Folder\\" + name + "\\") + "\r\n";
    }
    const QByteArray bytes = readFile(device.ledger());
    EXPECT_EQ(bytes, expected);
    // One line a name: line breaks are written in their "/" form, and a
    // Latin-1 name keeps its own byte.
    EXPECT_EQ(bytes.count("\r\n"), qsizetype(std::size(odd)));
    EXPECT_TRUE(bytes.contains("two/nlines.bin|"));
    EXPECT_TRUE(bytes.contains("caf\xE9.bin|"));
    EXPECT_TRUE(bytes.contains("back/x5cslash.bin|"));
    const auto lines = QuarantineLedger::read();
    ASSERT_TRUE(lines.has_value());
    ASSERT_EQ(lines->size(), qsizetype(std::size(odd)));
    for (qsizetype i = 0; i < lines->size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_TRUE((*lines)[i].sound()) << (*lines)[i].Problem.toStdString();
        if (odd[i] == "a/n.bin") {
            // "/" stands in no logical name; a hand-written one reads as a break.
            EXPECT_EQ((*lines)[i].Name, "a\n.bin");
            continue;
        }
        EXPECT_EQ((*lines)[i].Name, odd[i]);
        EXPECT_EQ((*lines)[i].Folder, "C:\\Odd Folder\\" + odd[i] + "\\");
    }
    EXPECT_TRUE(messages.texts.isEmpty());
}

TEST(QuarantineLedger, RewriteGoesThroughTheTemporaryFileAndNeverThroughALink)
{
    test::QuarantineDevice device;
    MessageRecorder messages;
    ASSERT_TRUE(writeFile(device.ledger(), "a|E:\\A\\\r\nb|E:\\B\\\r\n"));
    // A leftover temporary file of a stopped run, and an outside file that
    // a link under the temporary name leads to.
    ASSERT_TRUE(writeFile(device.host() + "/outside.txt", "outside"));
    ASSERT_TRUE(QFile::link(device.host() + "/outside.txt", device.device() + "/VMK/QFP.Tmp"));
    ASSERT_TRUE(QuarantineLedger::rewrite({ "b|E:\\B\\", "odd line" }));
    EXPECT_EQ(readFile(device.ledger()), QByteArray("b|E:\\B\\\r\nodd line\r\n"));
    EXPECT_EQ(readFile(device.host() + "/outside.txt"), QByteArray("outside"));
    EXPECT_FALSE(QFileInfo::exists(device.device() + "/VMK/QFP.Tmp"));
    EXPECT_FALSE(QFileInfo(device.device() + "/VMK/QFP.Tmp").isSymLink());

    // A ledger that is a link is neither appended through nor left a link.
    ASSERT_TRUE(QFile::remove(device.ledger()));
    ASSERT_TRUE(QFile::link(device.host() + "/outside.txt", device.ledger()));
    EXPECT_FALSE(QuarantineLedger::append("c", "E:\\C\\"));
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_TRUE(messages.texts[0].startsWith("¡No se pudo escribir el registro de cuarentena!\r\n"));
    EXPECT_TRUE(messages.texts[0].endsWith("/VMK/QFP.txt"));
    EXPECT_EQ(readFile(device.host() + "/outside.txt"), QByteArray("outside"));
    ASSERT_TRUE(QuarantineLedger::rewrite({ "c|E:\\C\\" }));
    EXPECT_FALSE(QFileInfo(device.ledger()).isSymLink());
    EXPECT_EQ(readFile(device.ledger()), QByteArray("c|E:\\C\\\r\n"));
    EXPECT_EQ(readFile(device.host() + "/outside.txt"), QByteArray("outside"));
}

TEST(QuarantineLedger, AnOversizedLedgerIsToldAndNotRead)
{
    test::QuarantineDevice device;
    MessageRecorder messages;
    QFile f(device.ledger());
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    ASSERT_TRUE(f.resize(QuarantineLedger::kMaxBytes + 1));
    f.close();
    EXPECT_FALSE(QuarantineLedger::read().has_value());
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_EQ(messages.texts[0], "¡El registro de cuarentena es demasiado grande!\r\n" + device.ledger());
}

TEST(QuarantineLedger, TheFixedKeysAreGivenBackWhenTheGuardEnds)
{
    test::QuarantineDevice device;
    {
        const QuarantineKeys keys(true);
        EXPECT_EQ(G().PassPhrase, "PKWDtorbel");
        EXPECT_EQ(S().EncripAlgorithm, 0);
        EXPECT_EQ(S().ScanFilesOperations, "0");
        {
            const QuarantineKeys inner;
            EXPECT_EQ(G().PassPhrase, "PKWDtorbel");
        }
        EXPECT_EQ(G().PassPhrase, "PKWDtorbel");
    }
    EXPECT_EQ(G().PassPhrase, "owner");
    EXPECT_EQ(S().EncripAlgorithm, 1);
    EXPECT_EQ(S().ScanFilesOperations, "1");
}
