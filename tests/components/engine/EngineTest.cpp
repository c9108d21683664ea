#include "components/engine/Engine.h"
#include "EngineTestSupport.h"
#include "TestSupport.h"
#include "components/engine/EngineCode.h"
#include "components/engine/EngineService.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace vmk;
using namespace vmk::test;

namespace
{

const QString kTestFiles = QStringLiteral("/usr/share/clamav-testfiles");

void set(int number, const char* value)
{
    engine::setvalue(number, value);
}

class Engine : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        ASSERT_EQ(loadBuiltEngine(), 0);
    }
    void TearDown() override { engine::UnLoadEngine(); }
    QString path(const QString& name) const { return m_dir.filePath(name); }

    QTemporaryDir m_dir;
};

std::string str(const QStringList& l)
{
    return l.join("\n").toStdString();
}

bool containsAlert(const EngineScan& s, const QString& needle)
{
    for (const QString& a : s.alerts)
        if (a.contains(needle))
            return true;
    return false;
}

} // namespace

TEST_F(Engine, DetectsEveryTestFileWithAllParsersOn)
{
    set(engine::Option::ArchiveScan, "1");
    set(engine::Option::MailboxScan, "1");
    set(engine::Option::NotifyOffice, "1");
    const QStringList files = QDir(kTestFiles).entryList(QDir::Files);
    ASSERT_EQ(files.size(), 44) << "clamav-testfiles should hold its 44 samples";
    for (const QString& f : files) {
        const EngineScan s = scanWithEngine(QDir(kTestFiles).filePath(f));
        EXPECT_EQ(s.code, 0) << qPrintable(f);
        EXPECT_TRUE(containsAlert(s, "|Test:Vmk.ClamExe-1|"))
            << qPrintable(f) << " " << qPrintable(s.alerts.join("; "));
        for (const QString& a : s.alerts)
            EXPECT_FALSE(a.contains("UNOFFICIAL")) << qPrintable(a);
    }

    // The object names the member inside the archive, nested ones in order.
    EngineScan zip = scanWithEngine(kTestFiles + "/clam.zip");
    EXPECT_EQ(str(zip.alerts), str(QStringList { kTestFiles + "/clam.zip --> clam.exe|Test:Vmk.ClamExe-1|1" }));
    EngineScan deep = scanWithEngine(kTestFiles + "/clam_ISmsi_int.exe");
    EXPECT_TRUE(containsAlert(deep, "clam_ISmsi_int.exe --> clam.msi --> clam.exe|Test:Vmk.ClamExe-1|0"))
        << qPrintable(deep.alerts.join("; "));
}

TEST_F(Engine, ArchiveSwitchOffLeavesCompressedArchivesClean)
{
    ASSERT_TRUE(makeZip(path("own.zip"), { { "clam.exe", clamExe() } }));
    set(engine::Option::ArchiveScan, "0");
    for (const QString& f : { kTestFiles + "/clam.zip", kTestFiles + "/clam.bz2.zip", kTestFiles + "/clam.d64.zip",
             kTestFiles + "/clam.impl.zip", kTestFiles + "/clam.7z", path("own.zip") }) {
        const EngineScan s = scanWithEngine(f);
        EXPECT_EQ(s.code, 0) << qPrintable(f);
        EXPECT_EQ(s.count, 0) << qPrintable(f) << " " << qPrintable(s.alerts.join("; "));
    }
    // Switching back on acts at the next scan: no cached clean verdict survives.
    set(engine::Option::ArchiveScan, "1");
    EXPECT_EQ(scanWithEngine(path("own.zip")).count, 1);
    EXPECT_EQ(scanWithEngine(kTestFiles + "/clam.zip").count, 1);
}

TEST_F(Engine, SeveralAlertsOnOneArchiveEachNameTheirMember)
{
    const QString zip = path("mixed ñ.zip");
    ASSERT_TRUE(makeZip(zip,
        { { "docs/readme.txt", "just text" }, { "bin/clam.exe", clamExe() }, { "eicar.com", eicar() },
            { "fun/joke.txt", "xx" + puaMarker("JOKE") + "yy" } }));
    const EngineScan s = scanWithEngine(zip);
    ASSERT_EQ(s.code, 0);
    QStringList expected { zip + " --> bin/clam.exe|Test:Vmk.ClamExe-1|1", zip + " --> eicar.com|Test:Vmk.Eicar-1|1",
        zip + " --> eicar.com|Test:Vmk.Eicar-2|1", zip + " --> fun/joke.txt|Joke:Win.VmkTest-1|1" };
    QStringList got = s.alerts;
    got.sort();
    expected.sort();
    EXPECT_EQ(str(got), str(expected));
    EXPECT_EQ(s.count, 4);

    // Plain files: the object is the path itself, and nothing is repairable.
    ASSERT_TRUE(writeFile(path("eicar.txt"), "head " + eicar() + " tail"));
    EXPECT_EQ(
        str(scanWithEngine(path("eicar.txt")).alerts), str(QStringList { path("eicar.txt") + "|Test:Vmk.Eicar-1|0" }));
    ASSERT_TRUE(writeFile(path("logic.bin"), "VORMAK-LOGICAL-TEST-PART-B ... VORMAK-LOGICAL-TEST-PART-A"));
    EXPECT_EQ(str(scanWithEngine(path("logic.bin")).alerts),
        str(QStringList { path("logic.bin") + "|Test:Vmk.Logical-1|0" }));
    ASSERT_TRUE(writeFile(path("half.bin"), "VORMAK-LOGICAL-TEST-PART-A only"));
    EXPECT_EQ(scanWithEngine(path("half.bin")).count, 0);
    ASSERT_TRUE(writeFile(path("clean.txt"), "nothing here"));
    const EngineScan clean = scanWithEngine(path("clean.txt"));
    EXPECT_EQ(clean.code, 0);
    EXPECT_EQ(clean.count, 0);

    // A new scan replaces the alerts of the last one; out-of-range reads are empty.
    engine::AlertRecord rec;
    engine::ReadAlert(0, &rec);
    EXPECT_EQ(rec.ObjectLen, 0);
    EXPECT_EQ(rec.ObjectPtr, nullptr);
}

TEST_F(Engine, CategorySwitchOffDropsExactlyThatCategory)
{
    using engine::Option;
    static const struct {
        Option::Number option;
        const char* marker;
    } kSwitches[] = { { Option::DetectAdspy, "ADSPY" }, { Option::DetectDial, "DIAL" }, { Option::DetectGame, "GAME" },
        { Option::DetectJoke, "JOKE" }, { Option::DetectPck, "PCK" }, { Option::DetectPhish, "PHISH" },
        { Option::DetectSpr, "SPR" } };
    static const char* kKinds[] = { "Adware", "Dialer", "Game", "Joke", "Packer", "Phishing", "Tool" };
    QByteArray all;
    for (const auto& sw : kSwitches)
        all += "<" + puaMarker(sw.marker) + ">\n";
    ASSERT_TRUE(writeFile(path("pua.txt"), all));

    EngineScan s = scanWithEngine(path("pua.txt"));
    ASSERT_EQ(s.count, 7) << qPrintable(s.alerts.join("; "));
    for (const char* k : kKinds)
        EXPECT_TRUE(containsAlert(s, QString("|%1:Win.VmkTest-1|").arg(k))) << k;

    engine::EngineValue before;
    engine::getvalue(engine::EngineValue::SignatureCount, &before);
    const int countAll = QByteArray(before.TextPtr, before.TextLen).toInt();

    for (int i = 0; i < 7; ++i) {
        set(kSwitches[i].option, "0");
        s = scanWithEngine(path("pua.txt"));
        EXPECT_EQ(s.count, 6) << kSwitches[i].marker;
        for (int j = 0; j < 7; ++j)
            EXPECT_EQ(containsAlert(s, QString("|%1:").arg(kKinds[j])), j != i)
                << kSwitches[i].marker << " " << kKinds[j];
        engine::EngineValue v;
        engine::getvalue(engine::EngineValue::SignatureCount, &v);
        EXPECT_EQ(QByteArray(v.TextPtr, v.TextLen).toInt(), countAll - 1);
        set(kSwitches[i].option, "1");
    }
    EXPECT_EQ(scanWithEngine(path("pua.txt")).count, 7);
}

TEST_F(Engine, ExceededLimitsAreHeuristicAlertsWhenHeuristicsAreOn)
{
    ASSERT_TRUE(writeFile(path("big.bin"), eicar() + QByteArray(8192, 'a')));
    set(engine::Option::ArchiveMaxSize, "4K");
    set(engine::Option::HeurLevel, "1");
    EngineScan s = scanWithEngine(path("big.bin"));
    EXPECT_EQ(str(s.alerts), str(QStringList { path("big.bin") + "|Heuristics:Limits.Exceeded.MaxFileSize|0" }));
    // Heuristics off: libclamav lets the file pass, as it documents.
    set(engine::Option::HeurLevel, "0");
    s = scanWithEngine(path("big.bin"));
    EXPECT_EQ(s.code, 0);
    EXPECT_EQ(s.count, 0);
    set(engine::Option::ArchiveMaxSize, "0");
    s = scanWithEngine(path("big.bin"));
    EXPECT_EQ(str(s.alerts), str(QStringList { path("big.bin") + "|Test:Vmk.Eicar-1|0" }));

    // Recursion: the 8-level nested archive is cut at level 3 and says so.
    set(engine::Option::HeurLevel, "1");
    set(engine::Option::ArchiveMaxRec, "3");
    s = scanWithEngine(kTestFiles + "/clam_cache_emax.tgz");
    EXPECT_FALSE(containsAlert(s, "ClamExe")) << qPrintable(s.alerts.join("; "));
    EXPECT_TRUE(containsAlert(s, "|Heuristics:Limits.Exceeded.MaxRecursion|")) << qPrintable(s.alerts.join("; "));
    set(engine::Option::ArchiveMaxRec, "0");
    s = scanWithEngine(kTestFiles + "/clam_cache_emax.tgz");
    EXPECT_TRUE(containsAlert(s, "clam08.tgz --> clam.exe|Test:Vmk.ClamExe-1|0")) << qPrintable(s.alerts.join("; "));
}

TEST_F(Engine, RepairRemovesInfectedZipMembersAndKeepsTheOthersByteIdentical)
{
    const QString zip = path("repair.zip");
    QByteArray big;
    for (int i = 0; i < 5000; ++i)
        big += QByteArray::number(i) + " line of clean text\n";
    ASSERT_TRUE(makeZip(zip,
        { { "a.txt", big }, { "stored.bin", QByteArray(3000, '\x7f'), true }, { "sub/clam.exe", clamExe() },
            { "sub/note.txt", "hello" }, { "eicar.com", eicar(), true } }));
    const auto rawBefore = zipRawMembers(zip);
    ASSERT_EQ(rawBefore.size(), 5);

    // Without repair nothing changes, but the engine says it could.
    EngineScan s = scanWithEngine(zip);
    ASSERT_GE(s.count, 2);
    for (const QString& a : s.alerts) {
        if (a.contains(" --> ")) {
            EXPECT_TRUE(a.endsWith("|1")) << qPrintable(a);
        }
    }
    EXPECT_EQ(zipRawMembers(zip), rawBefore);

    set(engine::Option::Repair, "1");
    s = scanWithEngine(zip);
    EXPECT_EQ(s.code, 0);
    EXPECT_GE(s.count, 2);
    set(engine::Option::Repair, "0");

    const auto rawAfter = zipRawMembers(zip);
    EXPECT_EQ(rawAfter.keys(), (QList<QByteArray> { "a.txt", "stored.bin", "sub/note.txt" }));
    for (auto it = rawAfter.begin(); it != rawAfter.end(); ++it)
        EXPECT_EQ(it.value(), rawBefore.value(it.key())) << it.key().constData();
    EXPECT_EQ(zipMembers(zip).value("a.txt"), big);
    EXPECT_FALSE(QFile::exists(path(".repair.zip.vmkrepair")));
    s = scanWithEngine(zip);
    EXPECT_EQ(s.count, 0) << qPrintable(s.alerts.join("; "));

    // A plain infected file is not repairable and is left alone.
    ASSERT_TRUE(writeFile(path("eicar.com"), eicar()));
    set(engine::Option::Repair, "1");
    s = scanWithEngine(path("eicar.com"));
    set(engine::Option::Repair, "0");
    ASSERT_EQ(s.count, 2);
    for (const QString& a : s.alerts)
        EXPECT_TRUE(a.endsWith("|0"));
    EXPECT_EQ(readFile(path("eicar.com")), eicar());
}

TEST_F(Engine, BadPathsReturnCodesQuickly)
{
    QElapsedTimer t;
    t.start();
    EXPECT_EQ(scanWithEngine(path("missing.exe")).code, engine::PathMissing);
    ASSERT_TRUE(writeFile(path("file.txt"), "x"));
    EXPECT_EQ(scanWithEngine(path("file.txt/inner")).code, engine::PathMissing);
    EXPECT_EQ(scanWithEngine(m_dir.path()).code, engine::PathIsFolder);
    EXPECT_EQ(scanWithEngine(QString()).code, engine::BadPath);

    const QByteArray fifo = QFile::encodeName(path("pipe"));
    ASSERT_EQ(mkfifo(fifo.constData(), 0600), 0);
    EXPECT_EQ(scanWithEngine(path("pipe")).code, engine::NotRegularFile);

    const QByteArray sock = QFile::encodeName(path("sock"));
    int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_GE(fd, 0);
    sockaddr_un addr {};
    addr.sun_family = AF_UNIX;
    std::snprintf(addr.sun_path, sizeof addr.sun_path, "%s", sock.constData());
    ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
    EXPECT_EQ(scanWithEngine(path("sock")).code, engine::NotRegularFile);
    close(fd);

    EXPECT_EQ(scanWithEngine("/dev/zero").code, engine::NotRegularFile);
    EXPECT_EQ(scanWithEngine("/dev/null").code, engine::NotRegularFile);
    EXPECT_LT(t.elapsed(), 2000);

    // A failed scan has no alerts to read even if asked.
    engine::AlertRecord rec;
    engine::ReadAlert(0, &rec);
    EXPECT_EQ(rec.ObjectPtr, nullptr);

    if (geteuid() != 0) {
        ASSERT_TRUE(writeFile(path("locked.bin"), eicar()));
        ASSERT_EQ(chmod(QFile::encodeName(path("locked.bin")).constData(), 0), 0);
        EXPECT_EQ(scanWithEngine(path("locked.bin")).code, engine::Unreadable);
    }

    engine::UnLoadEngine();
    EXPECT_EQ(scanWithEngine(path("file.txt")).code, engine::NotLoaded);
}

TEST(EngineLoad, FailsWithoutUsableTempFolderOrSignatures)
{
    QTemporaryDir dir;
    EXPECT_EQ(loadBuiltEngine(dir.filePath("no-such-folder")), engine::TempFolderUnusable);
    ASSERT_TRUE(writeFile(dir.filePath("a-file"), "x"));
    EXPECT_EQ(loadBuiltEngine(dir.filePath("a-file")), engine::TempFolderUnusable);
    EXPECT_EQ(scanWithEngine("/usr/share/clamav-testfiles/clam.exe").code, engine::NotLoaded);

    auto& service = engine::EngineService::instance();
    service.setTempFolder(QString());
    service.setSignatureFolder(dir.filePath("nosigs"));
    EXPECT_EQ(engine::LoadEngine(), engine::SignaturesMissing);
    ASSERT_TRUE(writeFile(dir.filePath("broken/bad.ndb"), "this is not a signature line\n"));
    service.setSignatureFolder(dir.filePath("broken"));
    EXPECT_EQ(engine::LoadEngine(), engine::SignaturesBroken);
    // An engine that failed to load scans nothing.
    EXPECT_EQ(scanWithEngine("/usr/share/clamav-testfiles/clam.exe").code, engine::NotLoaded);
}

TEST(EngineLoad, ValuesDescribeTheLoadedSetAndContainersMixWithLooseFiles)
{
    ASSERT_EQ(loadBuiltEngine(), 0);
    engine::EngineValue v52, v55;
    engine::getvalue(engine::EngineValue::SignatureVersion, &v52);
    engine::getvalue(engine::EngineValue::SignatureCount, &v55);
    EXPECT_TRUE(QByteArray(v52.TextPtr, v52.TextLen).startsWith("vormak 1 (")) << v52.TextPtr;
    EXPECT_EQ(QByteArray(v55.TextPtr, v55.TextLen), "11");
    engine::UnLoadEngine();

    // A container next to loose signature files: both load.
    QTemporaryDir dir;
    ASSERT_TRUE(QFile::copy(builtSignatureFolder() + "/vormak.cud", dir.filePath("vormak.cud")));
    ASSERT_TRUE(writeFile(dir.filePath("extra.ndb"), "Vmk.Test.Extra-1:0:*:564d4b2d4558545241\n"));
    engine::EngineService::instance().setSignatureFolder(dir.path());
    ASSERT_EQ(engine::LoadEngine(), 0);
    engine::getvalue(engine::EngineValue::SignatureVersion, &v52);
    engine::getvalue(engine::EngineValue::SignatureCount, &v55);
    EXPECT_EQ(QByteArray(v55.TextPtr, v55.TextLen), "12");
    EXPECT_TRUE(QByteArray(v52.TextPtr, v52.TextLen).endsWith(", local")) << v52.TextPtr;
    ASSERT_TRUE(writeFile(dir.filePath("x.bin"), "..VMK-EXTRA.."));
    EXPECT_EQ(str(scanWithEngine(dir.filePath("x.bin")).alerts),
        str(QStringList { dir.filePath("x.bin") + "|Test:Vmk.Extra-1|0" }));
    engine::UnLoadEngine();
}

TEST(EngineLoad, ARestartRunsOnBuiltInOptions)
{
    ASSERT_EQ(loadBuiltEngine(), 0);
    QTemporaryDir dir;
    ASSERT_TRUE(makeZip(dir.filePath("z.zip"), { { "clam.exe", clamExe() } }));
    engine::setvalue(engine::Option::ArchiveScan, "0");
    EXPECT_EQ(scanWithEngine(dir.filePath("z.zip")).count, 0);
    engine::UnLoadEngine();
    ASSERT_EQ(engine::LoadEngine(), 0);
    EXPECT_EQ(scanWithEngine(dir.filePath("z.zip")).count, 1);
    engine::UnLoadEngine();
}
