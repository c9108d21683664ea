#include "DeviceFixture.h"

#include "panel/PanelFigures.h"
#include "panel/SignatureDate.h"
#include "panel/SignatureUpdate.h"
#include "platform/Pump.h"

#include "TestSupport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace vmk;
using namespace vmk::panel;

TEST(PanelFigures, FormatsAndRedrawsOnlyOnChange)
{
    EXPECT_EQ(PanelFigures::FormatMegabytes(0), QStringLiteral("M")); // the picture shows no zero
    EXPECT_EQ(PanelFigures::FormatMegabytes(7), QStringLiteral("7M"));
    EXPECT_EQ(PanelFigures::FormatMegabytes(999), QStringLiteral("999M"));
    EXPECT_EQ(PanelFigures::FormatMegabytes(1000), QStringLiteral("1,000M"));
    EXPECT_EQ(PanelFigures::FormatMegabytes(1953124999), QStringLiteral("1,953,124,999M"));
    EXPECT_EQ(PanelFigures::FormatCount(QStringLiteral("27")), QStringLiteral("27"));
    EXPECT_EQ(PanelFigures::FormatCount(QStringLiteral("3627844")), QStringLiteral("3,627,844"));
    EXPECT_EQ(PanelFigures::FormatCount(QStringLiteral("0")), QString());
    EXPECT_EQ(PanelFigures::FormatCount(QStringLiteral("n/a")), QStringLiteral("n/a"));

    PanelFigures f;
    ASSERT_TRUE(f.Update(QString(), 3000, 4000));
    EXPECT_EQ(f.FreeCaption(), QStringLiteral("3,000M"));
    EXPECT_EQ(f.UsedCaption(), QStringLiteral("1,000M"));
    EXPECT_EQ(f.TotalCaption(), QStringLiteral("4,000M"));
    EXPECT_DOUBLE_EQ(f.UsedPercent(), 25.0);
    EXPECT_DOUBLE_EQ(f.FreePercent(), 75.0);
    // The shown caption is the same: nothing to redraw.
    EXPECT_FALSE(f.Update(QStringLiteral("3,000M"), 3000, 4000));
    // An empty drive gives 0 and 100.
    ASSERT_TRUE(f.Update(QStringLiteral("3,000M"), 4000, 4000));
    EXPECT_DOUBLE_EQ(f.UsedPercent(), 0.0);
    EXPECT_DOUBLE_EQ(f.FreePercent(), 100.0);
    EXPECT_EQ(f.UsedCaption(), QStringLiteral("M"));
    // A vanished drive (total 0) keeps the chart and completes the tick.
    ASSERT_TRUE(f.Update(QStringLiteral("4,000M"), 0, 0));
    EXPECT_DOUBLE_EQ(f.FreePercent(), 100.0);
    EXPECT_EQ(f.TotalCaption(), QStringLiteral("M"));
}

TEST(SignatureDate, CaptionAndFiveDayBoundary)
{
    EXPECT_EQ(SignatureDate::CaptionFromIndexLine(QStringLiteral("VMK index v=2=20240305_1.2.0_27\r\n")),
        QStringLiteral("2024/MAR/05"));
    EXPECT_EQ(SignatureDate::CaptionFromIndexLine(QStringLiteral("x=20231231_abc_def")), QStringLiteral("2023/DEC/31"));
    EXPECT_EQ(SignatureDate::DateFromCaption(QStringLiteral("2024/MAR/05")), QDate(2024, 3, 5));

    const QDate today(2024, 3, 10);
    const QString fiveDays = SignatureDate::CaptionFromDate(today.addDays(-5));
    const QString sixDays = SignatureDate::CaptionFromDate(today.addDays(-6));
    EXPECT_EQ(SignatureDate::DaysOld(fiveDays, today), 5);
    EXPECT_FALSE(SignatureDate::NeedsUpdateWarning(fiveDays, today));
    EXPECT_TRUE(SignatureDate::NeedsUpdateWarning(sixDays, today));
    EXPECT_FALSE(SignatureDate::NeedsUpdateWarning(QStringLiteral("-----"), today));
    // Across a year's end.
    EXPECT_EQ(SignatureDate::DaysOld(QStringLiteral("2023/DEC/31"), QDate(2024, 1, 6)), 6);

    QTemporaryDir dir;
    const QString index = dir.filePath(QStringLiteral("master.idx"));
    EXPECT_EQ(SignatureDate::ReadSignatureDate(index), QString()); // absent
    ASSERT_TRUE(test::writeFile(index, "Vormak signatures=20240229_7_x\nsecond=20990101_1_1\n"));
    EXPECT_EQ(SignatureDate::ReadSignatureDate(index), QStringLiteral("2024/FEB/29"));
}

TEST(SignatureUpdate, ProgramArgumentsLastLineAndVerdicts)
{
    EXPECT_EQ(SignatureUpdate::UpdaterProgram(QStringLiteral("E:\\VMK")), QStringLiteral("E:\\VMK\\avupdate.exe"));
    EXPECT_EQ(SignatureUpdate::UpdaterProgram(QStringLiteral("E:\\")), QStringLiteral("E:\\avupdate.exe"));
    EXPECT_EQ(SignatureUpdate::UpdaterArguments(QStringLiteral("E:")),
        QStringList({ QStringLiteral("--config=avupdate.conf"), QStringLiteral("--log=E:\\UPDLOG.TXT") }));

    platform::RunOutcome ok;
    ok.started = true;
    ok.exitCode = 0;
    platform::RunOutcome failed = ok;
    failed.exitCode = 1;
    platform::RunOutcome crashed = ok;
    crashed.crashed = true;
    const platform::RunOutcome notStarted;
    const QString finished = QStringLiteral("2026-11-23 14:02:11 Update finished");
    EXPECT_EQ(SignatureUpdate::LogMessage(finished), QStringLiteral("Update finished"));
    EXPECT_EQ(SignatureUpdate::LogMessage(QStringLiteral("Update finished")), QStringLiteral("Update finished"));
    EXPECT_EQ(SignatureUpdate::Judge(ok, finished), UpdateVerdict::Finished);
    EXPECT_EQ(SignatureUpdate::Judge(ok, QStringLiteral("Nothing to update")), UpdateVerdict::NothingToUpdate);
    // A failed or crashed run is an error, whatever its last line says.
    EXPECT_EQ(SignatureUpdate::Judge(failed, finished), UpdateVerdict::Error);
    EXPECT_EQ(SignatureUpdate::Judge(crashed, finished), UpdateVerdict::Error);
    EXPECT_EQ(SignatureUpdate::Judge(notStarted, finished), UpdateVerdict::LogMissing);
    // The success words inside an error text, or around other words, decide nothing.
    EXPECT_EQ(SignatureUpdate::Judge(
                  ok, QStringLiteral("2026-11-23 14:02:11 Update error: /media/x/Update finished holds none of a.cud")),
        UpdateVerdict::Error);
    EXPECT_EQ(SignatureUpdate::Judge(ok, QStringLiteral("Update finished with error")), UpdateVerdict::Silent);
    EXPECT_EQ(SignatureUpdate::Judge(ok, QStringLiteral("Source Update finished failed")), UpdateVerdict::Silent);
    EXPECT_EQ(SignatureUpdate::Judge(ok, QStringLiteral("update FINISHED")), UpdateVerdict::Silent); // case-sensitive
    EXPECT_EQ(SignatureUpdate::Judge(failed, QStringLiteral("Nothing to update")), UpdateVerdict::Error);

    QTemporaryDir dir;
    const QString log = dir.filePath(QStringLiteral("UPDLOG.TXT"));
    EXPECT_EQ(SignatureUpdate::JudgeLog(ok, log), UpdateVerdict::LogMissing);
    EXPECT_EQ(SignatureUpdate::JudgeLog(failed, log), UpdateVerdict::Error);
    ASSERT_TRUE(test::writeFile(log, ""));
    EXPECT_EQ(SignatureUpdate::JudgeLog(ok, log), UpdateVerdict::LogMissing);
    ASSERT_TRUE(test::writeFile(log, "start\r\nNothing to update\r\nUpdate finished\r\n"));
    EXPECT_EQ(SignatureUpdate::JudgeLog(ok, log), UpdateVerdict::Finished);
    // Only the last line counts, and a CR inside a line ends it.
    ASSERT_TRUE(test::writeFile(log, "Update finished\r\nUpdate error: disk full"));
    EXPECT_EQ(SignatureUpdate::JudgeLog(ok, log), UpdateVerdict::Error);
    ASSERT_TRUE(test::writeFile(log, "Update error: x\rUpdate finished\r\n"));
    EXPECT_EQ(SignatureUpdate::JudgeLog(failed, log), UpdateVerdict::Error);
    // A trailing empty line is the last line: no message.
    ASSERT_TRUE(test::writeFile(log, "Update finished\r\n\r\n"));
    EXPECT_EQ(SignatureUpdate::JudgeLog(ok, log), UpdateVerdict::Silent);

    // The pump runs after each line.
    int pumps = 0;
    SetPumpHook([&] { ++pumps; });
    ASSERT_TRUE(test::writeFile(log, "a\nb\nc\n"));
    bool found = false;
    EXPECT_EQ(SignatureUpdate::ReadLastLine(log, &found), QStringLiteral("c"));
    EXPECT_TRUE(found);
    EXPECT_EQ(pumps, 3);
    SetPumpHook({});
}
