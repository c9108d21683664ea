#include "scanner/Antivir.h"
#include "EngineTestSupport.h"
#include "TestSupport.h"
#include "components/engine/Engine.h"
#include "components/engine/EngineCode.h"
#include "components/engine/EngineOptions.h"
#include "foundation/Globals.h"
#include "foundation/SettingKey.h"

#include <QSet>
#include <QTemporaryDir>

#include <algorithm>

#include <gtest/gtest.h>

using namespace vmk;
using namespace vmk::test;

namespace
{

SettingsValues defaults()
{
    SettingsValues s;
    s.ArchiveScan = "0";
    s.ArchiveMaxSize = "0";
    s.ArchiveMaxRec = "0";
    s.MailboxScan = "0";
    s.HeurMacro = "1";
    s.HeurLevel = "2";
    s.ScanTimeout = "0";
    s.Repair = "0";
    s.SavapiNotifyOffice = "1";
    s.SavapiNotifyOfficeMacro = "1";
    s.DetectAdspy = s.DetectDial = s.DetectGame = s.DetectJoke = s.DetectPck = s.DetectPhish = s.DetectSpr = "1";
    return s;
}

class Antivir : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        ASSERT_EQ(loadBuiltEngine(), 0);
    }
    void TearDown() override
    {
        engine::UnLoadEngine();
        G().ExcludeFile = false;
    }
    QString path(const QString& n) const { return m_dir.filePath(n); }
    QTemporaryDir m_dir;
};

} // namespace

TEST(LiftEngineText, CopiesLengthBytesAndDropsEveryNul)
{
    EXPECT_EQ(LiftEngineText(0, "abc"), QString());
    EXPECT_EQ(LiftEngineText(0, nullptr), QString());
    EXPECT_EQ(LiftEngineText(3, "abcdef"), "abc");
    const char wide[] = { 'E', 0, ':', 0, '\\', 0, 'x', 0 };
    EXPECT_EQ(LiftEngineText(sizeof wide, wide), "E:\\x") << "UTF-16 with zero high bytes reads as plain text";
    const char inner[] = { 'a', 0, 0, 'b' };
    EXPECT_EQ(LiftEngineText(4, inner), "ab");
    const QByteArray utf8 = QString::fromUtf8("ñandú").toUtf8();
    EXPECT_EQ(LiftEngineText(static_cast<int32_t>(utf8.size()), utf8.constData()), QString::fromUtf8("ñandú"));
    // An empty half still gives the ":" of the joined threat text.
    EXPECT_EQ(LiftEngineText(0, nullptr) + ':' + LiftEngineText(4, "Name"), ":Name");
}

TEST(EngineSettings, EighteenOptionsInTheirFixedOrder)
{
    const int expected[] = { 3, 4, 5, 8, 9, 10, 12, 13, 15, 16, 41, 24, 25, 26, 27, 28, 29, 30 };
    ASSERT_EQ(EngineSettings().size(), 18u);
    for (size_t i = 0; i < EngineSettings().size(); ++i)
        EXPECT_EQ(EngineSettings()[i].Number, expected[i]) << i;
    EXPECT_EQ(EngineSettings()[10].Key, nullptr);
    EXPECT_EQ(EngineSettings()[0].Key, &SettingsValues::ArchiveScan);
    EXPECT_EQ(EngineSettings()[6].Key, &SettingsValues::ScanTimeout);
    EXPECT_EQ(EngineSettings()[17].Key, &SettingsValues::DetectSpr);
}

TEST_F(Antivir, PushedOptionsActOnTheNextScan)
{
    ASSERT_TRUE(makeZip(path("z.zip"), { { "clam.exe", clamExe() }, { "joke.txt", puaMarker("JOKE") } }));
    SettingsValues s = defaults();
    PushEngineOptions(s);
    FileScanResult r = ScanOneFile(path("z.zip"));
    EXPECT_EQ(r.ReturnCode, 0);
    EXPECT_EQ(r.AlertCount, 0) << "archives are off in a new settings file";

    s.ArchiveScan = "1";
    PushEngineOptions(s);
    r = ScanOneFile(path("z.zip"));
    ASSERT_EQ(r.AlertCount, 2);
    QStringList threats;
    for (const AlertRow& row : r.Rows) {
        threats << row.Object + " / " + row.Threat;
        EXPECT_EQ(row.Threat, row.ThreatKind + ":" + row.ThreatName);
        EXPECT_TRUE(row.Repairable);
    }
    threats.sort();
    EXPECT_EQ(threats,
        (QStringList { path("z.zip") + " --> clam.exe / Test:Vmk.ClamExe-1",
            path("z.zip") + " --> joke.txt / Joke:Win.VmkTest-1" }));

    s.DetectJoke = "0";
    PushEngineOptions(s);
    r = ScanOneFile(path("z.zip"));
    ASSERT_EQ(r.AlertCount, 1);
    EXPECT_EQ(r.Rows.at(0).Threat, "Test:Vmk.ClamExe-1");
}

TEST_F(Antivir, NotProcessedFilesGiveTheirCodeAndNoRows)
{
    FileScanResult r = ScanOneFile(path("nothing-here.exe"));
    EXPECT_FALSE(r.processed());
    EXPECT_FALSE(r.infected());
    EXPECT_TRUE(r.Rows.isEmpty());
    EXPECT_EQ(NotProcessedText(r.ReturnCode), "Error: " + QString::number(engine::PathMissing));
    r = ScanOneFile(m_dir.path());
    EXPECT_EQ(r.ReturnCode, engine::PathIsFolder);
    ASSERT_TRUE(writeFile(path("clean.txt"), "fine"));
    r = ScanOneFile(path("clean.txt"));
    EXPECT_TRUE(r.processed());
    EXPECT_FALSE(r.infected());
}

TEST_F(Antivir, SideScanAsksOnlyForInfectedFiles)
{
    ASSERT_TRUE(writeFile(path("eicar.com"), eicar()));
    ASSERT_TRUE(writeFile(path("clean.txt"), "fine"));
    MessageRecorder rec;
    rec.script({ 6, 7 });
    EXPECT_TRUE(SideScanForExclusion(path("eicar.com")));
    EXPECT_TRUE(G().ExcludeFile);
    EXPECT_FALSE(SideScanForExclusion(path("eicar.com")));
    EXPECT_FALSE(G().ExcludeFile);
    ASSERT_EQ(rec.texts.size(), 2);
    EXPECT_EQ(rec.texts.at(0),
        QString::fromUtf8("¡Archivo infectado! ¿Desea excluir este archivo?") + "\r\n" + path("eicar.com"));
    EXPECT_NE(rec.kinds.at(0), 0);

    G().ExcludeFile = true;
    EXPECT_FALSE(SideScanForExclusion(path("clean.txt")));
    EXPECT_FALSE(SideScanForExclusion(path("missing.com"))) << "an engine error counts as clean";
    EXPECT_EQ(rec.texts.size(), 2) << "no question for clean or unprocessed files";
}

// The engine binding reads the settings table: each engine-bound key is sent at
// its place, under an option number the engine knows by name.
TEST(EngineSettings, EveryEngineBoundKeyMapsToANamedOption)
{
    const engine::EngineOptions engineOptions;
    int bound = 0;
    for (const SettingKey& k : SettingKeys()) {
        if (k.EngineOrder == 0)
            continue;
        ++bound;
        const EngineSetting& row = EngineSettings()[static_cast<size_t>(k.EngineOrder - 1)];
        EXPECT_EQ(row.Number, k.EngineOption) << k.Name;
        EXPECT_EQ(row.Key, k.TextVariable) << k.Name;
        EXPECT_TRUE(engineOptions.known(k.EngineOption)) << k.Name;
    }
    EXPECT_EQ(bound, 17);
    QSet<int> numbers;
    for (const EngineSetting& s : EngineSettings()) {
        EXPECT_TRUE(engineOptions.known(s.Number)) << s.Number;
        numbers << s.Number;
    }
    EXPECT_EQ(numbers.size(), 18);
    // The first values of a new settings file are what the binding sends from it.
    for (const SettingKey& k : SettingKeys()) {
        if (k.EngineOrder > 0) {
            EXPECT_EQ(defaults().*k.TextVariable, k.defaultFor(0).value()) << k.Name;
        }
    }
}
