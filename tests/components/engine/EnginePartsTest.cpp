#include "EngineTestSupport.h"
#include "components/engine/Engine.h"
#include "components/engine/EngineOptions.h"
#include "components/engine/EngineSession.h"
#include "components/engine/ThreatText.h"

#include <QDir>

#include <gtest/gtest.h>

#include <thread>

using namespace vmk;

TEST(ThreatText, SplitsKindFromNameAndDropsUnofficial)
{
    auto check = [](const char* sig, const char* kind, const char* name) {
        const auto t = engine::ThreatText::split(sig);
        EXPECT_EQ(t.kind, kind) << sig;
        EXPECT_EQ(t.name, name) << sig;
    };
    check("PUA.Win.Joke.VmkTest-1.UNOFFICIAL", "Joke", "Win.VmkTest-1");
    check("PUA.Win.Packer.Upx-3", "Packer", "Win.Upx-3");
    check("Heuristics.Limits.Exceeded.MaxFileSize", "Heuristics", "Limits.Exceeded.MaxFileSize");
    check("Win.Trojan.Agent-123.UNOFFICIAL", "Trojan", "Win.Agent-123");
    check("Eicar.Test", "Eicar", "Test");
    check("Eicar-Test-Signature", "Virus", "Eicar-Test-Signature");
    check("", "Virus", "");
}

TEST(EngineOptions, SizesLimitsAndWhichChangesNeedARebuild)
{
    using O = engine::EngineOptions;
    EXPECT_EQ(O::parseSize("50M"), 50ull << 20);
    EXPECT_EQ(O::parseSize("1G"), 1ull << 30);
    EXPECT_EQ(O::parseSize("512k"), 512ull << 10);
    EXPECT_EQ(O::parseSize("20MB"), 20ull << 20);
    EXPECT_EQ(O::parseSize("0"), 0ull);
    EXPECT_EQ(O::parseSize("1234"), 1234ull);
    EXPECT_FALSE(O::parseSize("lots"));
    EXPECT_FALSE(O::parseSize("M"));

    O o;
    EXPECT_FALSE(o.set(engine::Option::ArchiveScan, "0")) << "a parser switch acts per scan";
    EXPECT_FALSE(o.set(engine::Option::Repair, "1"));
    EXPECT_TRUE(o.set(engine::Option::ScanTimeout, "3"));
    EXPECT_EQ(o.maxScanTimeMs(), 3000ull) << "seconds in the settings, milliseconds in the engine";
    EXPECT_FALSE(o.set(engine::Option::ScanTimeout, "3")) << "the same value changes nothing";
    EXPECT_TRUE(o.set(engine::Option::DetectJoke, "0"));
    EXPECT_FALSE(o.wantsSignature("PUA.Win.Joke.Any-1"));
    EXPECT_TRUE(o.wantsSignature("PUA.Win.Game.Any-1"));
    EXPECT_TRUE(o.wantsSignature("Win.Joke.NotPua-1"));
    EXPECT_TRUE(o.set(engine::Option::ArchiveMaxRec, "4"));
    EXPECT_EQ(o.maxRecursion(), 4u);
    o.set(engine::Option::ArchiveMaxRec, "0");
    EXPECT_FALSE(o.maxRecursion()) << "0 keeps the engine's own depth";
    o.set(engine::Option::ArchiveMaxSize, "junk");
    EXPECT_FALSE(o.maxFileSize()) << "text that is no size keeps the engine's default";
    EXPECT_TRUE(o.repair());
}

TEST(EngineSession, ThreadsShareOneCompiledEngineAndKeepTheirOwnAlerts)
{
    ASSERT_EQ(test::loadBuiltEngine(), 0);
    const QStringList files = QDir("/usr/share/clamav-testfiles").entryList(QDir::Files);
    auto runAll = [&](QStringList& out) {
        engine::EngineSession session;
        for (const QString& f : files) {
            const QString p = "/usr/share/clamav-testfiles/" + f;
            const auto r = session.ScanFile(reinterpret_cast<const char16_t*>(p.utf16()));
            QString line = QString::number(r.ReturnCode) + ' ' + QString::number(r.AlertCount);
            for (int i = 0; i < r.AlertCount; ++i) {
                engine::AlertRecord a;
                session.ReadAlert(i, &a);
                line += ' ' + QString::fromUtf8(a.ObjectPtr, a.ObjectLen) + ' '
                    + QString::fromUtf8(a.ThreatNamePtr, a.ThreatNameLen);
            }
            out << line;
        }
    };
    QStringList alone, first, second;
    runAll(alone);
    std::thread t1([&] { runAll(first); });
    std::thread t2([&] { runAll(second); });
    t1.join();
    t2.join();
    EXPECT_EQ(first, alone);
    EXPECT_EQ(second, alone);
    engine::UnLoadEngine();
}
