#include "scanner/session/ScanSession.h"

#include "EngineTestSupport.h"
#include "TestSupport.h"
#include "TreeDrives.h"
#include "components/engine/Engine.h"
#include "filemanager/Stages.h"
#include "foundation/ForceDelete.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "foundation/Translate.h"
#include "platform/FileSearch.h"
#include "platform/ProcessSource.h"
#include "platform/Pump.h"
#include "scanner/Antivir.h"
#include "scanner/EventListModel.h"
#include "scanner/MemoryScan.h"
#include "scanner/QuarantineKeys.h"
#include "scanner/ThreatActions.h"
#include "scanner/ThreatListModel.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace vmk;
using namespace vmk::test;

namespace
{

class ScanSessionTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(loadBuiltEngine(), 0);
        m_quarantine = S().QuarenteneFolder;
        m_algorithm = S().EncripAlgorithm;
        m_pass = G().PassPhrase;
        S().QuarenteneFolder = QStringLiteral("\\Mis Documentos\\Cuarentena\\");
        m_oldRunner = SetHelperRunner([this](const QString& program, const QStringList&) { m_helpers << program; });
    }
    void TearDown() override
    {
        SetPumpHook({});
        SetHelperRunner(m_oldRunner);
        S().QuarenteneFolder = m_quarantine;
        S().EncripAlgorithm = m_algorithm;
        G().PassPhrase = m_pass;
        engine::UnLoadEngine();
    }
    QString host(const QString& rel) const { return m_drives.host() + '/' + rel; }
    QString device(const QString& rel) const { return m_drives.device() + '/' + rel; }

    // The event list as "path|status" lines, and the threat list as
    // "name|folder|threat|status" lines.
    static QStringList events(ScanSession& s)
    {
        QStringList out;
        for (qsizetype i = 0; i < s.ListView().rowCountWithPending(); ++i)
            out << s.ListView().path(i) + '|' + s.ListView().status(i);
        return out;
    }
    static QStringList threats(ScanSession& s)
    {
        QStringList out;
        ThreatListModel& t = s.ListViewInf();
        for (qsizetype i = 0; i < t.rowCountWithPending(); ++i)
            out << t.name(i) + '|' + t.folder(i) + '|' + t.threat(i) + '|' + t.status(i);
        return out;
    }

    // Seals `clear` as a quarantined item with the fixed pass phrase.
    void seal(const QString& clearLogical, const QString& itemLogical)
    {
        S().EncripAlgorithm = 0;
        G().PassPhrase = scanner::QuarantineKeys::passPhrase();
        ASSERT_TRUE(EncryptFile(clearLogical, itemLogical));
        // The owner's own values, which the item's scan replaces.
        S().EncripAlgorithm = 1;
        G().PassPhrase = QStringLiteral("owner");
    }

    TreeDrives m_drives;
    MessageRecorder m_messages;
    QStringList m_helpers;
    HelperRunner m_oldRunner;
    QString m_quarantine;
    int m_algorithm = 0;
    QString m_pass;
};

// Two processes that load the same infected library, one of them an archive too.
class TwoProcesses : public ProcessSource
{
public:
    explicit TwoProcesses(const QString& folder)
        : m_folder(folder)
    {
    }
    QList<ProcessEntry> processes() const override
    {
        return { ProcessEntry { 10, 1, "prog", 1, 0 }, ProcessEntry { 11, 1, "prog", 1, 0 } };
    }
    QList<ModuleEntry> modules(uint32_t pid) const override
    {
        QList<ModuleEntry> m { { "prog", m_folder + "/prog" }, { "evil.so", m_folder + "/evil.so" } };
        m << (pid == 10 ? ModuleEntry { "pack.so", m_folder + "/pack.so" }
                        : ModuleEntry { "ok.so", m_folder + "/ok.so" });
        return m;
    }
    QString imagePath(uint32_t) const override { return m_folder + "/prog"; }

private:
    QString m_folder;
};

const QString kDone = QString::fromUtf8("¡Análisis finalizado correctamente!");
const QString kAborted = QString::fromUtf8("¡Análisis abortado!");

} // namespace

TEST_F(ScanSessionTest, WholeSessionGivesCountersRowsAndStatusesInTheWalksOrder)
{
    ASSERT_TRUE(writeFile(host("Documentos/scan/a/clean.txt"), "fine"));
    ASSERT_TRUE(writeFile(host("Documentos/scan/a/eicar.com"), eicar()));
    ASSERT_TRUE(makeZip(host("Documentos/scan/b/pack.zip"),
        { { "x/clam.exe", clamExe() }, { "eicar.com", eicar(), true }, { "ok.txt", "fine" } }));
    ASSERT_EQ(mkfifo(QFile::encodeName(host("Documentos/scan/pipe")).constData(), 0600), 0);
    ASSERT_TRUE(QFile::link(host("Documentos/nowhere"), host("Documentos/scan/broken")));
    // A link back up the tree carries the junction word and is not entered.
    ASSERT_TRUE(QFile::link(host("Documentos/scan"), host("Documentos/scan/a/loop")));
    const QStringList listAdd { "C:\\Documentos\\scan\\", "C:\\Documentos\\gone.bin" };

    QStringList firstEvents, firstThreats;
    for (int jobs : { 1, 2 }) {
        m_messages.texts.clear();
        ScanSession s;
        s.setJobs(jobs);
        QList<ScanRecord> recorded;
        QObject::connect(&s, &ScanSession::fileRecorded, [&](const ScanRecord& r) { recorded << r; });
        QSignalSpy finished(&s, &ScanSession::finished);
        s.Start(listAdd);

        EXPECT_EQ(s.txtscantot(), 6) << jobs;
        EXPECT_EQ(s.TxtNtot(), 1);
        EXPECT_EQ(s.txtskiptot(), 3);
        EXPECT_EQ(s.txtinfFiles(), 2);
        EXPECT_GE(s.txtinftot(), 4); // two for eicar.com, at least two for the archive's members
        EXPECT_EQ(s.TextScan(), "-----");
        EXPECT_EQ(s.textfolder(), "-----");
        EXPECT_EQ(m_messages.texts, QStringList { kDone });
        ASSERT_EQ(finished.count(), 1);
        EXPECT_FALSE(finished.at(0).at(0).toBool());

        const QStringList ev = events(s);
        EXPECT_EQ(ev,
            (QStringList { "C:\\Documentos\\scan\\a\\clean.txt|Correcto",
                "C:\\Documentos\\scan\\a\\eicar.com|Infectado", "C:\\Documentos\\scan\\b\\pack.zip|Infectado",
                "C:\\Documentos\\scan\\broken|" + NotScannedText(EntryKind::DanglingLink),
                "C:\\Documentos\\scan\\pipe|" + NotScannedText(EntryKind::Fifo),
                "C:\\Documentos\\gone.bin|Error: 2" }));
        const QStringList th = threats(s);
        ASSERT_EQ(th.size(), s.txtinftot());
        EXPECT_EQ(th.at(0), "eicar.com|C:\\Documentos\\scan\\a\\|Test:Vmk.Eicar-1|No");
        EXPECT_EQ(th.at(1), "eicar.com|C:\\Documentos\\scan\\a\\|Test:Vmk.Eicar-2|No");
        // Each alert of the archive gets a row under the archive's own name.
        for (qsizetype i = 2; i < th.size(); ++i)
            EXPECT_TRUE(th.at(i).startsWith("pack.zip|C:\\Documentos\\scan\\b\\|")) << th.at(i).toStdString();
        EXPECT_TRUE(th.join(' ').contains("Test:Vmk.ClamExe-1"));
        ASSERT_EQ(recorded.size(), 6);
        EXPECT_EQ(recorded.at(0).NativePath, host("Documentos/scan/a/clean.txt"));
        EXPECT_EQ(recorded.at(5).Result.ReturnCode, 2);
        // The views learn of every row once the session has ended.
        EXPECT_EQ(s.ListView().rowCount(), 6);
        EXPECT_EQ(s.ListViewInf().rowCount(), th.size());
        if (jobs == 1) {
            firstEvents = ev;
            firstThreats = th;
        } else {
            EXPECT_EQ(ev, firstEvents) << "threads scanning ahead record in the walk's order";
            EXPECT_EQ(th, firstThreats);
        }
    }

    // An empty selection ends at once, with every counter at 0.
    m_messages.texts.clear();
    ScanSession empty;
    empty.Start({});
    EXPECT_EQ(empty.txtscantot() + empty.TxtNtot() + empty.txtskiptot() + empty.txtinfFiles() + empty.txtinftot(), 0);
    EXPECT_EQ(m_messages.texts, QStringList { kDone });
}

TEST_F(ScanSessionTest, PauseWaitsAndContinueGoesOnWhereTheWalkStood)
{
    for (int i = 0; i < 6; ++i)
        ASSERT_TRUE(writeFile(host(QString("Documentos/p/f%1.txt").arg(i)), "fine"));
    ScanSession s;
    bool pausedOnce = false;
    qint64 countWhilePaused = -1;
    int pausedPumps = 0;
    SetPumpHook([&] {
        if (!pausedOnce && s.txtscantot() == 3) {
            pausedOnce = true;
            s.Pause();
        } else if (s.ScanPause()) {
            ++pausedPumps;
            countWhilePaused = s.txtscantot();
            s.Continue();
        }
    });
    s.Start({ "C:\\Documentos\\p\\" });
    EXPECT_TRUE(pausedOnce);
    EXPECT_EQ(pausedPumps, 1);
    EXPECT_EQ(countWhilePaused, 3) << "nothing is recorded while the session waits";
    EXPECT_EQ(s.txtscantot(), 6);
    EXPECT_EQ(s.TxtNtot(), 6);
    EXPECT_EQ(m_messages.texts, QStringList { kDone });

    // A pause right after a file target shows an empty TextScan while it waits.
    ASSERT_TRUE(writeFile(host("Documentos/t/eicar.com"), eicar()));
    ASSERT_TRUE(writeFile(host("Documentos/t/clean.txt"), "fine"));
    pausedOnce = false;
    QString textWhilePaused = "unset";
    SetPumpHook([&] {
        // The last pump of the first target: its second alert.
        if (!pausedOnce && s.ListViewInf().rowCountWithPending() == 2) {
            pausedOnce = true;
            s.Pause();
        } else if (s.ScanPause()) {
            textWhilePaused = s.TextScan();
            countWhilePaused = s.txtscantot();
            s.Continue();
        }
    });
    s.Start({ "C:\\Documentos\\t\\eicar.com", "C:\\Documentos\\t\\clean.txt" });
    EXPECT_EQ(textWhilePaused, "");
    EXPECT_EQ(countWhilePaused, 1);
    EXPECT_EQ(s.txtscantot(), 2);
    EXPECT_EQ(s.txtinftot(), 2);
}

TEST_F(ScanSessionTest, StopMidFolderKeepsWhatWasListedAndDiscardsTheScanAhead)
{
    for (int i = 0; i < 40; ++i)
        ASSERT_TRUE(writeFile(host(QString("Documentos/s/f%1.com").arg(i, 2, 10, QChar('0'))),
            i % 3 == 0 ? eicar() : QByteArray("fine")));
    ScanSession s;
    s.setJobs(2);
    int recorded = 0;
    QObject::connect(&s, &ScanSession::fileRecorded, [&](const ScanRecord&) { ++recorded; });
    SetPumpHook([&] {
        if (s.txtscantot() == 5 && !s.ScanAbort())
            s.Stop();
    });
    s.Start({ "C:\\Documentos\\s\\", "C:\\Documentos\\s\\f39.com" });
    EXPECT_TRUE(s.ScanAbort());
    EXPECT_FALSE(s.ScanPause());
    // The file whose row was up when Stop came is still recorded; nothing after it.
    EXPECT_EQ(s.txtscantot(), 5);
    EXPECT_EQ(recorded, 5);
    EXPECT_EQ(s.ListView().rowCountWithPending(), 5);
    EXPECT_EQ(s.ListView().path(4), "C:\\Documentos\\s\\f04.com");
    EXPECT_EQ(s.txtinfFiles(), 2); // f00 and f03
    EXPECT_EQ(s.TxtNtot() + s.txtinfFiles() + s.txtskiptot(), 5);
    EXPECT_EQ(m_messages.texts, QStringList { kAborted });
}

TEST_F(ScanSessionTest, QuarantinedItemIsReportedUnderItsOwnNameAndLeavesNoTmp)
{
    ASSERT_TRUE(writeFile(host("Documentos/src.exe"), eicar()));
    ASSERT_TRUE(QDir().mkpath(device("Mis Documentos/Cuarentena")));
    seal("C:\\Documentos\\src.exe", "E:\\Mis Documentos\\Cuarentena\\run.exe");
    ASSERT_TRUE(QFile::exists(device("Mis Documentos/Cuarentena/run.exe")));

    G().PassPhrase = QStringLiteral("owner's phrase");
    S().EncripAlgorithm = 1;
    const QString ownersPhrase = G().PassPhrase;
    const int ownersAlgorithm = S().EncripAlgorithm;
    // A file of the user's named as the clear copy would be, beside the item.
    ASSERT_TRUE(writeFile(device("Mis Documentos/Cuarentena/run.exe.tmp"), "the user's"));
    ScanSession s;
    s.Start({ "E:\\Mis Documentos\\Cuarentena\\" });
    // (The user's file, in the quarantine folder, is taken for a sealed item and
    // does not open; it is only read.)
    EXPECT_EQ(events(s).value(0), "E:\\Mis Documentos\\Cuarentena\\run.exe|Infectado");
    EXPECT_EQ(vmk::test::readFile(device("Mis Documentos/Cuarentena/run.exe.tmp")), "the user's");
    ASSERT_TRUE(QFile::remove(device("Mis Documentos/Cuarentena/run.exe.tmp")));
    ASSERT_EQ(s.ListViewInf().rowCountWithPending(), 2);
    EXPECT_EQ(s.ListViewInf().name(0), "run.exe");
    EXPECT_EQ(s.ListViewInf().fullPath(0), "E:\\Mis Documentos\\Cuarentena\\run.exe");
    // No clear copy was made beside the item.
    EXPECT_EQ(
        QDir(device("Mis Documentos/Cuarentena")).entryList(QDir::Files | QDir::Hidden), QStringList { "run.exe" });
    // The quarantine's pass phrase and index were swapped in for the item alone.
    EXPECT_EQ(G().PassPhrase, ownersPhrase);
    EXPECT_EQ(S().EncripAlgorithm, ownersAlgorithm);
    ASSERT_FALSE(m_messages.texts.isEmpty());
    EXPECT_EQ(m_messages.texts.last(), kDone);
    m_messages.texts.clear();

    // Among file targets the mark lasts for the rest of the session, and a new
    // session starts without it; a later file's "X.tmp" is the user's and stays.
    ASSERT_TRUE(writeFile(host("Documentos/x.txt"), "fine"));
    ASSERT_TRUE(writeFile(host("Documentos/x.txt.tmp"), "left over"));
    s.Start({ "C:\\Documentos\\x.txt" });
    EXPECT_FALSE(s.fileTargetsMarked());
    EXPECT_TRUE(QFile::exists(host("Documentos/x.txt.tmp")));
    s.Start({ "E:\\Mis Documentos\\Cuarentena\\run.exe", "C:\\Documentos\\x.txt" });
    EXPECT_TRUE(s.fileTargetsMarked());
    EXPECT_TRUE(QFile::exists(host("Documentos/x.txt.tmp")));
    EXPECT_TRUE(QFile::exists(host("Documentos/x.txt")));
    EXPECT_EQ(s.txtinfFiles(), 1);
    EXPECT_EQ(s.TxtNtot(), 1);

    // An item that does not open with the pass phrase: the stage says so, and the
    // engine's code for the missing clear copy is what the row shows.
    ASSERT_TRUE(writeFile(device("Mis Documentos/Cuarentena/plain.txt"), "not sealed"));
    m_messages.texts.clear();
    s.Start({ "E:\\Mis Documentos\\Cuarentena\\plain.txt" });
    EXPECT_EQ(events(s), QStringList { "E:\\Mis Documentos\\Cuarentena\\plain.txt|Error: 2" });
    EXPECT_EQ(s.txtskiptot(), 1);
    ASSERT_EQ(m_messages.texts.size(), 2);
    EXPECT_TRUE(m_messages.texts.at(0).startsWith(QString::fromUtf8("¡Error de decriptado!")));
    EXPECT_FALSE(QFile::exists(device("Mis Documentos/Cuarentena/plain.txt.tmp")));
}

TEST_F(ScanSessionTest, DeleteRemovesReadOnlyFilesAndHandledRowsRefuseTicks)
{
    const QString file = host("Documentos/del/eicar.com");
    ASSERT_TRUE(writeFile(file, eicar()));
    ASSERT_TRUE(writeFile(host("Documentos/del/keep.com"), eicar()));
    ASSERT_EQ(chmod(QFile::encodeName(file).constData(), 0444), 0);
    ScanSession s;
    s.Start({ "C:\\Documentos\\del\\" });
    ThreatListModel& t = s.ListViewInf();
    ASSERT_EQ(t.rowCountWithPending(), 4);
    EXPECT_EQ(t.status(0), "No");
    // A row that can't be disinfected can still be ticked.
    EXPECT_TRUE(t.setTicked(0, true));
    EXPECT_TRUE(t.setTicked(1, true));
    DeleteTickedThreats(t);
    EXPECT_FALSE(QFileInfo::exists(file));
    EXPECT_TRUE(QFileInfo::exists(host("Documentos/del/keep.com")));
    EXPECT_TRUE(m_helpers.isEmpty()) << "the first rung removed it";
    for (int row : { 0, 1 }) {
        EXPECT_EQ(t.status(row), "Eliminado");
        EXPECT_FALSE(t.isTicked(row));
        EXPECT_FALSE(t.setTicked(row, true)) << "a handled row refuses its tick";
    }
    // The view's way of ticking follows the same rule.
    EXPECT_FALSE(t.setData(t.index(0, 0), Qt::Checked, Qt::CheckStateRole));
    EXPECT_TRUE(t.setData(t.index(2, 0), Qt::Checked, Qt::CheckStateRole));
    EXPECT_EQ(t.data(t.index(2, 0), Qt::CheckStateRole).toInt(), Qt::Checked);
    EXPECT_EQ(t.status(2), "No");
}

TEST_F(ScanSessionTest, DisinfectRepairsAZipAndWritesDesinfectadoAlways)
{
    QByteArray text;
    for (int i = 0; i < 500; ++i)
        text += QByteArray::number(i) + " clean line\n";
    const QString zip = host("Documentos/rep/repair.zip");
    ASSERT_TRUE(makeZip(zip, { { "a.txt", text }, { "sub/clam.exe", clamExe() } }));
    ASSERT_TRUE(writeFile(host("Documentos/rep/z.com"), eicar()));
    ScanSession s;
    s.Start({ "C:\\Documentos\\rep\\" });
    ThreatListModel& t = s.ListViewInf();
    ASSERT_EQ(t.rowCountWithPending(), 3);
    EXPECT_EQ(t.name(0), "repair.zip");
    EXPECT_EQ(t.status(0), "Si");
    EXPECT_EQ(t.status(1), "No");
    t.setTicked(0, true);
    t.setTicked(1, true);
    DisinfectTickedThreats(t);
    EXPECT_EQ(t.status(0), "Desinfectado");
    EXPECT_EQ(t.status(1), "Desinfectado") << "the word is written whatever the engine did";
    EXPECT_EQ(t.status(2), "No");
    EXPECT_FALSE(t.isTicked(0));
    EXPECT_EQ(ScanOneFile(zip).AlertCount, 0);
    EXPECT_EQ(zipMembers(zip).keys(), QList<QByteArray> { "a.txt" });
    EXPECT_EQ(zipMembers(zip).value("a.txt"), text);
    // Option 13 stands at "0" afterwards: a new infected archive is only reported.
    ASSERT_TRUE(makeZip(zip, { { "a.txt", text }, { "sub/clam.exe", clamExe() } }));
    EXPECT_GE(ScanOneFile(zip).AlertCount, 1);
    EXPECT_EQ(zipMembers(zip).size(), 2);
}

TEST(ResultModels, RowsReachTheViewsInBatches)
{
    EventListModel m;
    QSignalSpy inserted(&m, &QAbstractItemModel::rowsInserted);
    for (int i = 0; i < 100000; ++i) {
        const qsizetype row = m.appendRow(QString("C:\\f\\%1.txt").arg(i));
        m.setStatus(row, "Correcto");
        if (i % 1000 == 999)
            m.flush();
    }
    m.flush(); // nothing left: no further insert
    EXPECT_EQ(inserted.count(), 100);
    EXPECT_EQ(m.rowCount(), 100000);
    EXPECT_EQ(m.data(m.index(99999, 0)).toString(), "C:\\f\\99999.txt");
    EXPECT_EQ(m.data(m.index(99999, 1)).toString(), "Correcto");
    EXPECT_EQ(m.headerData(1, Qt::Horizontal).toString(), "Estatus");
    m.clear();
    EXPECT_EQ(m.rowCount(), 0);

    ThreatListModel t;
    EXPECT_EQ(t.headerData(3, Qt::Horizontal).toString(), "Desinfectable/Estatus");
    t.appendRow("a.exe", "C:\\x\\", "Kind:Name", true);
    EXPECT_EQ(t.rowCount(), 0) << "a buffered row is not shown before the flush";
    EXPECT_EQ(t.rowTexts(), QStringList { "a.exe" });
    t.flush();
    EXPECT_EQ(t.rowCount(), 1);
    EXPECT_TRUE(t.flags(t.index(0, 0)).testFlag(Qt::ItemIsUserCheckable));
}

TEST_F(ScanSessionTest, ALargeFolderReachesTheEventListInFewInserts)
{
    for (int i = 0; i < 400; ++i)
        ASSERT_TRUE(writeFile(host(QString("Documentos/big/f%1.txt").arg(i)), "fine"));
    ScanSession s;
    QSignalSpy inserted(&s.ListView(), &QAbstractItemModel::rowsInserted);
    s.Start({ "C:\\Documentos\\big\\" });
    EXPECT_EQ(s.ListView().rowCount(), 400);
    EXPECT_GE(inserted.count(), 1);
    EXPECT_LT(inserted.count(), 40) << "rows are inserted per flush, not one by one";
}

TEST(VmkScanSession, DeviceQuarantineItemAndMemory)
{
    ASSERT_EQ(loadBuiltEngine(), 0);
    TreeDrives drives;
    const QString folder = drives.device() + "/Mis Documentos/Cuarentena";
    ASSERT_TRUE(QDir().mkpath(folder));
    ASSERT_TRUE(writeFile(drives.host() + "/src.exe", eicar()));
    const QString oldPass = G().PassPhrase;
    const int oldAlgorithm = S().EncripAlgorithm;
    S().EncripAlgorithm = 0;
    G().PassPhrase = scanner::QuarantineKeys::passPhrase();
    ASSERT_TRUE(EncryptFile("C:\\src.exe", "E:\\Mis Documentos\\Cuarentena\\run.exe"));
    G().PassPhrase = oldPass;
    S().EncripAlgorithm = oldAlgorithm;
    engine::UnLoadEngine();

    // Options after the operand, as anywhere.
    const VmkRun run
        = runVmk({ "scan", folder, "--device", drives.device(), "--program-folder", drives.device(), "--jobs", "2" });
    EXPECT_EQ(run.code, 1) << run.err.toStdString();
    const QStringList lines = run.out.split('\n', Qt::SkipEmptyParts);
    EXPECT_TRUE(lines.contains(folder + "/run.exe: Test:Vmk.Eicar-1 FOUND")) << run.out.toStdString();
    EXPECT_TRUE(lines.contains("Scanned files: 1"));
    EXPECT_TRUE(lines.contains("Infected files: 1"));
    EXPECT_TRUE(lines.contains("Alerts: 2"));
    EXPECT_FALSE(QFile::exists(folder + "/run.exe.tmp"));

    // Without the device's settings the item is only a file that holds nothing known.
    const VmkRun plain = runVmk({ "scan", folder + "/run.exe" });
    EXPECT_EQ(plain.code, 0) << plain.out.toStdString();

    // The running processes: vmk's own executable is among the targets.
    const VmkRun memory = runVmk({ "scan", "--memory", "--jobs", "2" });
    const QString self = QFileInfo(binDir() + "/vmk").canonicalFilePath();
    EXPECT_TRUE(memory.out.split('\n').contains(self + ": OK")) << memory.out.left(2000).toStdString();
    EXPECT_TRUE(memory.out.contains("Scanned files: "));
    EXPECT_NE(memory.code, -1);
}

TEST_F(ScanSessionTest, MemoryTargetListsASharedLibraryOnceAndNamesWhatIsInsideAFile)
{
    ASSERT_TRUE(writeFile(host("Documentos/mem/prog"), "program"));
    ASSERT_TRUE(writeFile(host("Documentos/mem/ok.so"), "library"));
    ASSERT_TRUE(writeFile(host("Documentos/mem/evil.so"), eicar()));
    ASSERT_TRUE(makeZip(host("Documentos/mem/pack.so"), { { "x/clam.exe", clamExe() } }));
    TwoProcesses source(host("Documentos/mem"));
    SetProcessSource(&source);
    QStringList firstThreats;
    for (int jobs : { 1, 2 }) {
        ScanSession s;
        s.setJobs(jobs);
        s.Start({ ScanSession::memoryTarget() });
        const QString folder = "C:\\DOCUMENTOS\\MEM\\";
        EXPECT_EQ(events(s),
            (QStringList { folder + "PROG|Correcto", folder + "EVIL.SO|Infectado", folder + "PACK.SO|Infectado",
                folder + "PROG|Correcto", folder + "EVIL.SO|Infectado", folder + "OK.SO|Correcto" }));
        // Every occurrence counts as an infected file; the list holds the library once.
        EXPECT_EQ(s.txtinfFiles(), 3);
        EXPECT_EQ(s.txtinftot(), 2);
        const QStringList th = threats(s);
        ASSERT_EQ(th.size(), 2);
        EXPECT_EQ(th.at(0), "EVIL.SO|" + folder + "|Test:Vmk.Eicar-1|No");
        EXPECT_EQ(th.at(1), "PACK.SO/" + folder + "PACK.SO --> x/clam.exe|" + folder + "|Test:Vmk.ClamExe-1|Si");
        if (jobs == 1)
            firstThreats = th;
        else
            EXPECT_EQ(th, firstThreats);
    }
    SetProcessSource(nullptr);
}

TEST_F(ScanSessionTest, OnlyTheExactJunctionWordKeepsAFolderOut)
{
    for (const char* name : { "j2416", "j2016", "j416" })
        ASSERT_TRUE(writeFile(host(QString("Documentos/w/%1/f.txt").arg(name)), "fine"));
    FileSearch::setAttributeHook([](const QString& native, quint32 computed) -> std::optional<quint32> {
        for (quint32 word : { 0x2416u, 0x2016u, 0x416u })
            if (native.endsWith(QString("/j%1").arg(word, 0, 16)))
                return word;
        return computed;
    });
    ScanSession s;
    s.Start({ "C:\\Documentos\\w\\" });
    FileSearch::setAttributeHook({});
    EXPECT_EQ(events(s),
        (QStringList { "C:\\Documentos\\w\\j2016\\f.txt|Correcto", "C:\\Documentos\\w\\j416\\f.txt|Correcto" }));
}
