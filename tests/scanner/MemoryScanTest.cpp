#include "scanner/MemoryScan.h"

#include "TestDrive.h"
#include "TestSupport.h"
#include "components/engine/Engine.h"
#include "components/engine/EngineService.h"
#include "foundation/FileServices.h"
#include "foundation/Globals.h"
#include "platform/DriveMap.h"
#include "platform/ProcessSource.h"
#include "platform/Pump.h"
#include "scanner/Antivir.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace vmk;
using namespace vmk::test;

namespace
{

// For the length of a test, a temporary folder is drive T: ("/" stays C:) and
// the system folder is T:\Sys.
class MemoryScanDrive : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        QDir().mkpath(m_root + "/Sys");
        G().SystemFolder = QStringLiteral("T:\\Sys");
        Processes() = ProcessTable {};
    }
    void TearDown() override
    {
        SetProcessSource(nullptr);
        SetPumpHook({});
        Processes() = ProcessTable {};
        G().SystemFolder.clear();
    }
    QTemporaryDir m_dir;
    QString m_root = m_dir.path();
    TestDrive m_drive { m_root };
};

// A fixed process list. `firstCountExtra` processes more are seen by the first
// snapshot only: they end between the count and the list.
class FakeProcessSource : public ProcessSource
{
public:
    QList<ProcessEntry> list;
    QMap<uint32_t, QList<ModuleEntry>> modulesOf;
    QMap<uint32_t, QString> images;
    int firstCountExtra = 0;
    mutable int snapshots = 0;
    mutable QList<uint32_t> modulesAskedFor;

    QList<ProcessEntry> processes() const override
    {
        QList<ProcessEntry> out = list;
        if (snapshots++ == 0)
            for (int i = 0; i < firstCountExtra; ++i)
                out << ProcessEntry { 9000u + static_cast<uint32_t>(i), 1, QStringLiteral("ended"), 1, 0 };
        return out;
    }
    QList<ModuleEntry> modules(uint32_t processId) const override
    {
        modulesAskedFor << processId;
        return modulesOf.value(processId);
    }
    QString imagePath(uint32_t processId) const override { return images.value(processId); }
};

ProcessEntry process(uint32_t pid, const QString& name, uint32_t threads = 1)
{
    return ProcessEntry { pid, 1, name, threads, 0 };
}

const ProcessRecord* recordOf(uint32_t pid)
{
    for (const ProcessRecord& r : Processes().Record)
        if (r.ProcessID == pid)
            return &r;
    return nullptr;
}

} // namespace

TEST_F(MemoryScanDrive, ResolvePathMendsSystemRootAndDevicePrefixesAndUpperCases)
{
    // \SystemRoot\System32 in any case comes out under the system folder.
    EXPECT_EQ(ResolvePath("\\SystemRoot\\System32\\ntdll.dll", "ntdll.dll"), "T:\\SYS\\NTDLL.DLL");
    EXPECT_EQ(ResolvePath("\\systemroot\\SYSTEM32\\drivers\\a b.sys", "a b.sys"), "T:\\SYS\\DRIVERS\\A B.SYS");
    // \SYSTEMROOT\ without System32 is not replaced, and without ":\" it stays.
    EXPECT_EQ(ResolvePath("\\SystemRoot\\fonts\\x.fon", "x.fon"), "\\SYSTEMROOT\\FONTS\\X.FON");
    // A device prefix before the drive letter is cut.
    EXPECT_EQ(ResolvePath("\\??\\C:\\Windows\\explorer.exe", "explorer.exe"), "C:\\WINDOWS\\EXPLORER.EXE");
    EXPECT_EQ(ResolvePath("\\\\?\\T:\\a\\b.dll", "b.dll"), "T:\\A\\B.DLL");
    EXPECT_EQ(ResolvePath("  E:\\x", "x"), "E:\\X");
    // A text without ":\" stays as it is, upper-cased; so does ":\" with no letter before it.
    EXPECT_EQ(ResolvePath("\\Device\\HarddiskVolume2\\x.exe", "x.exe"), "\\DEVICE\\HARDDISKVOLUME2\\X.EXE");
    EXPECT_EQ(ResolvePath(":\\odd", "odd"), ":\\ODD");
    EXPECT_EQ(ResolvePath("C:\\Already\\Fine.exe", "Fine.exe"), "C:\\ALREADY\\FINE.EXE");
    // Only the first ":\" counts.
    EXPECT_EQ(ResolvePath("\\??\\D:\\a:\\b", "b"), "D:\\A:\\B");

    // Empty text: the system folder is tried with the name, only when the file is there.
    ASSERT_TRUE(writeFile(m_root + "/Sys/Present.exe", "x"));
    EXPECT_EQ(ResolvePath("", "Present.exe"), "T:\\SYS\\PRESENT.EXE");
    EXPECT_EQ(ResolvePath("", "absent.exe"), "");
    EXPECT_EQ(ResolvePath("", ""), "");

    // Native paths come into the namespace through the drive map.
    EXPECT_EQ(ReportedPathText(m_root + "/Bin/Prog"), "T:\\Bin\\Prog");
    EXPECT_EQ(ReportedPathText("/usr/lib/x.so"), "C:\\usr\\lib\\x.so");
    EXPECT_EQ(ReportedPathText(""), "");

    // Upper case that the namespace still opens: "ß" and dotless "ı" have no upper
    // case that the case-insensitive lookup matches back, so they stay.
    EXPECT_EQ(UpperPath(QString::fromUtf8("t:\\straße\\ıi-ǆ-é")), QString::fromUtf8("T:\\STRAßE\\ıI-Ǆ-É"));
    ASSERT_TRUE(writeFile(m_root + QString::fromUtf8("/Mixed/Straße-ı.so"), "x"));
    ASSERT_TRUE(writeFile(m_root + "/Mixed/lower.so", "x"));
    const QString upper = ResolvePath(ReportedPathText(m_root + QString::fromUtf8("/Mixed/Straße-ı.so")), "");
    EXPECT_EQ(upper, QString::fromUtf8("T:\\MIXED\\STRAßE-ı.SO"));
    EXPECT_TRUE(FileExists(upper));
    EXPECT_EQ(DriveMap::instance().toNative(upper), m_root + QString::fromUtf8("/Mixed/Straße-ı.so"));
    EXPECT_TRUE(FileExists(ResolvePath(ReportedPathText(m_root + "/Mixed/lower.so"), "")));
    EXPECT_FALSE(FileExists(QString::fromUtf8("T:\\MIXED\\STRAßE-ı.SO").toUpper())); // "SS" would not open
}

TEST_F(MemoryScanDrive, ProcessListModuleLastAndTheWalkOrder)
{
    FakeProcessSource fake;
    const QString b = m_root + "/bin/";
    fake.list = { process(0, "System Idle Process"), process(4, "denied"), process(10, "solo"), process(11, "one"),
        process(12, QString("three") + QChar(u'\0') + "junk"), process(13, "nothreads", 0) };
    fake.images
        = { { 0, b + "never" }, { 10, b + "Solo" }, { 11, b + "One" }, { 12, b + "Three" }, { 13, b + "NoThreads" } };
    fake.modulesOf[0] = { { "never", b + "never" }, { "x.so", b + "x.so" } };
    fake.modulesOf[10] = { { "Solo", b + "Solo" } };
    fake.modulesOf[11] = { { "One", b + "One" }, { "libA.so", b + "libA.so" } };
    fake.modulesOf[12] = { { "Three", b + "Three" }, { "ld.so", b + "ld.so" },
        { QString("libB.so") + QChar(u'\0') + "x", b + "libB.so" }, { "gone.so", "" }, { "libA.so", b + "libA.so" } };
    fake.modulesOf[13]
        = { { "NoThreads", b + "NoThreads" }, { "libA.so", b + "libA.so" }, { "libC.so", b + "libC.so" } };
    fake.firstCountExtra = 2;
    SetProcessSource(&fake);

    int pumps = 0;
    SetPumpHook([&] { ++pumps; });
    EXPECT_EQ(CountProcesses(), 8);
    EXPECT_EQ(Processes().ProcessLast, 7);
    EXPECT_EQ(pumps, 8);

    BuildProcessList();
    const ProcessTable& t = Processes();
    // The two processes that ended between the count and the list are not there.
    ASSERT_EQ(t.Record.size(), 6);
    EXPECT_EQ(t.ProcessLast, 5);
    EXPECT_FALSE(fake.modulesAskedFor.contains(0u)); // the idle process is not asked

    const ProcessRecord& idle = t.Record[0];
    EXPECT_EQ(idle.ExeName, "System Idle Process");
    EXPECT_EQ(idle.ModuleLast, 0);
    EXPECT_TRUE(idle.ModulePaths.isEmpty());
    EXPECT_EQ(idle.ExePath, "");

    const ProcessRecord& denied = t.Record[1];
    EXPECT_EQ(denied.ModuleLast, -1);
    EXPECT_EQ(denied.ExePath, "");

    EXPECT_EQ(t.Record[2].ModuleLast, -1); // only its image
    EXPECT_EQ(t.Record[2].ExePath, "T:\\BIN\\SOLO");

    const ProcessRecord& one = t.Record[3];
    EXPECT_EQ(one.ModuleLast, 0); // one module beyond the image
    EXPECT_EQ(one.ModuleNames, QStringList { "libA.so" });
    EXPECT_EQ(one.ModulePaths, QStringList { "T:\\BIN\\LIBA.SO" });

    const ProcessRecord& three = t.Record[4];
    EXPECT_EQ(three.ExeName, "three");
    EXPECT_EQ(three.ModuleLast, 3);
    EXPECT_EQ(three.ModuleNames, (QStringList { "ld.so", "libB.so", "gone.so", "libA.so" }));
    EXPECT_EQ(three.ModulePaths, (QStringList { "T:\\BIN\\LD.SO", "T:\\BIN\\LIBB.SO", "", "T:\\BIN\\LIBA.SO" }));
    EXPECT_TRUE(three.HasThreads);
    EXPECT_EQ(three.ThreadCount, 1u);

    const ProcessRecord& quiet = t.Record[5];
    EXPECT_FALSE(quiet.HasThreads);
    EXPECT_EQ(quiet.ThreadCount, 0u);
    EXPECT_EQ(quiet.ModuleLast, 1);

    // Each module counts, the image included, and each asked process takes 1 away:
    // denied -1, solo 0, one 1, three 4, nothreads 2.
    EXPECT_EQ(t.ModuleTotal, 6);

    // The walk: images when known; modules only where ModuleLast is above 0, the
    // empty path included; the library of two processes twice.
    EXPECT_EQ(MemoryScanTargets(t),
        (QStringList { "T:\\BIN\\SOLO", "T:\\BIN\\ONE", "T:\\BIN\\THREE", "T:\\BIN\\LD.SO", "T:\\BIN\\LIBB.SO", "",
            "T:\\BIN\\LIBA.SO", "T:\\BIN\\NOTHREADS", "T:\\BIN\\LIBA.SO", "T:\\BIN\\LIBC.SO" }));

    // The flags are not looked at between an image and its first module: a stop
    // asked while THREE's image is scanned lets LD.SO through, then ends the walk.
    bool abort = false;
    QStringList seen;
    WalkMemoryTargets(t,
        MemoryWalkHooks { [&](const QString& p) {
                             seen << p;
                             if (p == "T:\\BIN\\THREE")
                                 abort = true;
                         },
            [&] { return abort; }, [] { return false; }, {} });
    EXPECT_EQ(seen, (QStringList { "T:\\BIN\\SOLO", "T:\\BIN\\ONE", "T:\\BIN\\THREE", "T:\\BIN\\LD.SO" }));

    // A stop after a process's modules (or after a process without any) ends the walk there.
    abort = false;
    seen.clear();
    WalkMemoryTargets(t,
        MemoryWalkHooks { [&](const QString& p) {
                             seen << p;
                             abort = p == "T:\\BIN\\ONE";
                         },
            [&] { return abort; }, {}, {} });
    EXPECT_EQ(seen, (QStringList { "T:\\BIN\\SOLO", "T:\\BIN\\ONE" }));

    // A pause after a module waits, pumping without sleep, then goes on where it was.
    bool pause = false;
    int pauseStarts = 0;
    int pausedPumps = 0;
    seen.clear();
    SetPumpHook([&] {
        if (pause && ++pausedPumps == 5)
            pause = false;
    });
    WalkMemoryTargets(t,
        MemoryWalkHooks { [&](const QString& p) {
                             seen << p;
                             if (p == "T:\\BIN\\LIBB.SO")
                                 pause = true;
                         },
            [] { return false; }, [&] { return pause; }, [&] { ++pauseStarts; } });
    EXPECT_EQ(seen, MemoryScanTargets(t));
    EXPECT_EQ(pauseStarts, 1);
    EXPECT_EQ(pausedPumps, 5);
}

TEST(MemoryScanRows, IsAlreadyListedAndTheObjectSuffix)
{
    const QStringList rows { "LIBC.SO.6", "PROG.EXE/T:\\BIN\\PROG.EXE --> inner" };
    EXPECT_TRUE(IsAlreadyListed(rows, "LIBC.SO.6"));
    EXPECT_FALSE(IsAlreadyListed(rows, "PROG.EXE")); // a row with the suffix is another text
    EXPECT_FALSE(IsAlreadyListed(rows, "libc.so.6"));
    EXPECT_FALSE(IsAlreadyListed({}, "LIBC.SO.6"));

    // The object is the file itself (compared without case): the row text is the name.
    EXPECT_EQ(MemoryAlertRowText("PROG.EXE", "T:\\BIN\\", "t:\\bin\\prog.exe"), "PROG.EXE");
    // Something inside the file: name, "/" and the object.
    EXPECT_EQ(MemoryAlertRowText("PROG.EXE", "T:\\BIN\\", "T:\\BIN\\PROG.EXE --> a/b.txt"),
        "PROG.EXE/T:\\BIN\\PROG.EXE --> a/b.txt");
}

namespace
{
QByteArray hexOf(const QByteArray& bytes)
{
    return bytes.toHex();
}

// The child is killed and reaped on every way out of the test.
struct RunningChild {
    QProcess process;
    ~RunningChild()
    {
        if (process.state() != QProcess::NotRunning) {
            process.kill();
            process.waitForFinished(5000);
        }
    }
};

bool mapsHold(qint64 pid, const QString& native)
{
    QFile maps(QStringLiteral("/proc/%1/maps").arg(pid));
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains(QFile::encodeName(native));
}
} // namespace

TEST_F(MemoryScanDrive, FindsACopiedProgramAndItsPreloadedLibraryInfected)
{
    // Copies of a program and of a library, each with a marker of this run that
    // only the signatures written here match.
    const QByteArray tag = QByteArray::number(QRandomGenerator::global()->generate64(), 16);
    const QByteArray exeMarker = "VORMAK-MEMORY-SCAN-PROGRAM-" + tag;
    const QByteArray libMarker = "VORMAK-MEMORY-SCAN-LIBRARY-" + tag;
    const QString exe = m_root + "/Bin/memSleep";
    const QString lib = m_root + QString::fromUtf8("/Lib/libProbe-straße.so");
    QByteArray program = readFile("/bin/sleep");
    QByteArray library = readFile(VMK_MEMORY_PROBE);
    ASSERT_FALSE(program.isEmpty());
    ASSERT_FALSE(library.isEmpty());
    // The loader reads only what the headers name: trailing bytes change nothing.
    ASSERT_TRUE(writeFile(exe, program + exeMarker));
    ASSERT_TRUE(writeFile(lib, library + libMarker));
    ASSERT_TRUE(QFile::setPermissions(exe, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));

    const QString sigs = m_root + "/sigs";
    ASSERT_TRUE(writeFile(sigs + "/memory.ndb",
        "Vormak.Test.MemoryProgram:0:*:" + hexOf(exeMarker) + "\n" + "Vormak.Test.MemoryLibrary:0:*:" + hexOf(libMarker)
            + "\n"));
    auto& service = engine::EngineService::instance();
    const QString previousSigs = service.signatureFolder();
    service.setSignatureFolder(sigs);
    service.setTempFolder(QString());
    ASSERT_EQ(engine::LoadEngine(), 0);
    struct Unload {
        QString folder;
        ~Unload()
        {
            engine::UnLoadEngine();
            engine::EngineService::instance().setSignatureFolder(folder);
        }
    } unload { previousSigs };

    RunningChild child;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("LD_PRELOAD", lib);
    child.process.setProcessEnvironment(env);
    child.process.start(exe, { "300" });
    ASSERT_TRUE(child.process.waitForStarted(10000));
    const qint64 pid = child.process.processId();
    // Wait (bounded) until the loader has mapped the library.
    for (int i = 0; i < 500 && !mapsHold(pid, lib); ++i)
        QThread::msleep(10);
    ASSERT_TRUE(mapsHold(pid, lib));

    BuildProcessList();
    const ProcessRecord* r = recordOf(static_cast<uint32_t>(pid));
    ASSERT_NE(r, nullptr);
    const QString exeTarget = "T:\\BIN\\MEMSLEEP";
    const QString libTarget = QString::fromUtf8("T:\\LIB\\LIBPROBE-STRAßE.SO");
    EXPECT_EQ(r->ExeName, "memSleep");
    EXPECT_EQ(r->ParentProcessID, static_cast<uint32_t>(::getpid()));
    EXPECT_TRUE(r->HasThreads);
    EXPECT_EQ(r->ExePath, exeTarget);
    EXPECT_TRUE(r->ModulePaths.contains(libTarget));
    EXPECT_TRUE(r->ModuleNames.contains(QString::fromUtf8("libProbe-straße.so")));
    EXPECT_GT(r->ModuleLast, 0);
    EXPECT_EQ(r->ModulePaths.size(), r->ModuleLast + 1);

    // In the whole walk the program comes before its library.
    const QStringList targets = MemoryScanTargets(Processes());
    const qsizetype exeAt = targets.indexOf(exeTarget);
    ASSERT_GE(exeAt, 0);
    EXPECT_GT(targets.indexOf(libTarget, exeAt), exeAt);

    // The child's targets through the real engine: both copies infected, by their
    // upper-cased paths; the system's loader and C library clean.
    ProcessTable mine;
    mine.Record << *r;
    mine.ProcessLast = 0;
    QMap<QString, FileScanResult> results;
    WalkMemoryTargets(
        mine, MemoryWalkHooks { [&](const QString& p) { results.insert(p, ScanOneFile(p)); }, {}, {}, {} });
    ASSERT_TRUE(results.contains(exeTarget));
    ASSERT_TRUE(results.contains(libTarget));
    EXPECT_TRUE(results[exeTarget].infected());
    EXPECT_TRUE(results[libTarget].infected());
    ASSERT_EQ(results[exeTarget].Rows.size(), 1);
    ASSERT_EQ(results[libTarget].Rows.size(), 1);
    EXPECT_EQ(results[exeTarget].Rows[0].Threat, "Test:Vormak.MemoryProgram");
    EXPECT_EQ(results[libTarget].Rows[0].Threat, "Test:Vormak.MemoryLibrary");
    EXPECT_EQ(results[libTarget].Rows[0].Object, libTarget);
    int clean = 0;
    for (auto it = results.cbegin(); it != results.cend(); ++it) {
        if (it.key() != exeTarget && it.key() != libTarget) {
            EXPECT_EQ(it.value().ReturnCode, 0) << it.key().toStdString();
            EXPECT_FALSE(it.value().infected()) << it.key().toStdString();
            ++clean;
        }
    }
    EXPECT_GE(clean, 2); // at least the loader and the C library
}
