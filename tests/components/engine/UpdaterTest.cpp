#include "EngineTestSupport.h"
#include "FtpServers.h"
#include "TestSupport.h"
#include "components/engine/Engine.h"
#include "components/engine/EngineService.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>


using namespace vmk;
using namespace vmk::test;

namespace
{

// A program folder of its own with avupdate.exe and the built set.
class Updater : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        ASSERT_TRUE(QFile::copy(binDir() + "/avupdate.exe", path("avupdate.exe")));
        QFile::setPermissions(path("avupdate.exe"), QFile::permissions(binDir() + "/avupdate.exe"));
        QDir().mkpath(path("sigs"));
        ASSERT_TRUE(QFile::copy(builtSignatureFolder() + "/vormak.cud", path("sigs/vormak.cud")));
        m_original = readFile(path("sigs/vormak.cud"));
    }
    QString path(const QString& n) const { return m_dir.filePath(n); }

    // Runs the updater as the panel does; returns the last line of its log.
    QString run(const QString& config)
    {
        writeFile(path("avupdate.conf"), config.toUtf8());
        QProcess p;
        p.setWorkingDirectory(m_dir.path());
        p.start(path("avupdate.exe"), { "--config=avupdate.conf", "--log=" + path("UPDLOG.TXT") });
        EXPECT_TRUE(p.waitForFinished(60000));
        m_exit = p.exitCode();
        const QStringList lines = QString::fromUtf8(readFile(path("UPDLOG.TXT"))).split("\r\n", Qt::SkipEmptyParts);
        return lines.isEmpty() ? QString() : lines.last();
    }

    // A container named vormak.cud of `version` holding one signature for `marker`.
    QByteArray buildContainer(int version, const QByteArray& marker)
    {
        QTemporaryDir stage;
        writeFile(stage.filePath("vormak.ndb"),
            "Vmk.Test.Update-" + QByteArray::number(version) + ":0:*:" + marker.toHex() + "\n");
        writeFile(stage.filePath("COPYING"), "test\n");
        writeFile(stage.filePath("builder.txt"), "test\n");
        QProcess p;
        p.setWorkingDirectory(stage.path());
        p.setStandardInputFile(stage.filePath("builder.txt"));
        p.start("sigtool",
            { "--unsigned", "--build=vormak.cud", "--cvd-version=" + QString::number(version),
                "--datadir=" + stage.path() });
        EXPECT_TRUE(p.waitForFinished(60000));
        return readFile(stage.filePath("vormak.cud"));
    }

    QString firstIndexLine() const
    {
        return QString::fromUtf8(readFile(m_dir.filePath("idx/master.idx"))).section("\r\n", 0, 0);
    }

    QTemporaryDir m_dir;
    QByteArray m_original;
    int m_exit = -1;
};

} // namespace

TEST_F(Updater, NothingNewThenUpdatedThenRefusedWhenDamaged)
{
    QDir().mkpath(path("updates"));
    ASSERT_TRUE(writeFile(path("updates/vormak.cud"), m_original));
    EXPECT_TRUE(run("source=updates\nfiles=vormak.cud daily.cvd\n").contains("Nothing to update"));
    EXPECT_EQ(m_exit, 0);
    EXPECT_EQ(readFile(path("sigs/vormak.cud")), m_original);

    const QByteArray v2 = buildContainer(2, "VMK-UPDATE-TWO");
    ASSERT_FALSE(v2.isEmpty());
    ASSERT_TRUE(writeFile(path("updates/vormak.cud"), v2));
    EXPECT_TRUE(run("source=updates\nfiles=vormak.cud\n").contains("Update finished"));
    EXPECT_EQ(m_exit, 0);
    EXPECT_EQ(readFile(path("sigs/vormak.cud")), v2);
    EXPECT_FALSE(QFileInfo::exists(path("sigs.new")));
    EXPECT_FALSE(QFileInfo::exists(path("sigs.old")));
    // "=" date "_" version "_" tail, the date as eight digits, year first.
    const QString first = firstIndexLine();
    EXPECT_TRUE(QRegularExpression("^Signatures=\\d{8}_2_1$").match(first).hasMatch()) << first.toStdString();

    // The new set is what the engine loads now.
    engine::EngineService::instance().setSignatureFolder(path("sigs"));
    ASSERT_EQ(engine::LoadEngine(), 0);
    ASSERT_TRUE(writeFile(path("probe.txt"), "..VMK-UPDATE-TWO.."));
    EXPECT_EQ(scanWithEngine(path("probe.txt")).count, 1);
    engine::UnLoadEngine();

    // A damaged container (cut short) is refused and the working set stays.
    QByteArray v3 = buildContainer(3, "VMK-UPDATE-THREE");
    v3.chop(40);
    ASSERT_TRUE(writeFile(path("updates/vormak.cud"), v3));
    const QString last = run("source=updates\nfiles=vormak.cud\n");
    EXPECT_TRUE(last.contains("error")) << last.toStdString();
    EXPECT_NE(m_exit, 0);
    EXPECT_EQ(readFile(path("sigs/vormak.cud")), v2);
    EXPECT_EQ(firstIndexLine(), first);
    EXPECT_FALSE(QFileInfo::exists(path("sigs.new")));

    // Garbage with no header at all is refused too.
    ASSERT_TRUE(writeFile(path("updates/vormak.cud"), "not a container"));
    EXPECT_TRUE(run("source=updates\nfiles=vormak.cud\n").contains("error"));
    EXPECT_EQ(readFile(path("sigs/vormak.cud")), v2);
}

TEST_F(Updater, ErrorsNameTheirReason)
{
    QString last = run("source=nowhere\n");
    EXPECT_TRUE(last.contains("error") && last.contains("nowhere")) << last.toStdString();
    EXPECT_NE(m_exit, 0);
    last = run("this line is no setting\n");
    EXPECT_TRUE(last.contains("error")) << last.toStdString();
    QFile::remove(path("avupdate.conf"));
    QProcess p;
    p.start(path("avupdate.exe"), { "--config=missing.conf", "--log=" + path("UPDLOG.TXT") });
    ASSERT_TRUE(p.waitForFinished(60000));
    last = QString::fromUtf8(readFile(path("UPDLOG.TXT"))).trimmed().section("\r\n", -1);
    EXPECT_TRUE(last.contains("error") && last.contains("missing.conf")) << last.toStdString();
    EXPECT_EQ(readFile(path("sigs/vormak.cud")), m_original);
}

TEST_F(Updater, InterruptedSwapIsUndoneAndHttpAndFtpSourcesWork)
{
    // A run cut between its two renames left only sigs.old.
    ASSERT_TRUE(QDir().rename(path("sigs"), path("sigs.old")));
    QDir().mkpath(path("updates"));
    ASSERT_TRUE(writeFile(path("updates/vormak.cud"), m_original));
    EXPECT_TRUE(run("source=updates\n").contains("Nothing to update"));
    EXPECT_EQ(readFile(path("sigs/vormak.cud")), m_original);
    // A run cut right after its exchange left the old set in sigs.new: sigs is the
    // new set and stays, the old one is cleared.
    ASSERT_TRUE(writeFile(path("sigs.new/vormak.cud"), "the set before"));
    EXPECT_TRUE(run("source=updates\n").contains("Nothing to update"));
    EXPECT_EQ(readFile(path("sigs/vormak.cud")), m_original);
    EXPECT_FALSE(QFileInfo::exists(path("sigs.new")));

    const QByteArray v2 = buildContainer(2, "VMK-UPDATE-HTTP");
    ASSERT_TRUE(writeFile(path("served/vormak.cud"), v2));
    const quint16 httpPort = vmk::test::FreeLoopbackPort();
    QProcess http;
    http.start("/usr/bin/python3",
        { "-m", "http.server", "--bind", "127.0.0.1", "--directory", path("served"), QString::number(httpPort) });
    ASSERT_TRUE(http.waitForStarted());
    QThread::msleep(700);
    const QString url = QString("http://127.0.0.1:%1/").arg(httpPort);
    EXPECT_TRUE(run("source=" + url + "\nfiles=vormak.cud daily.cvd\n").contains("Update finished"));
    EXPECT_EQ(readFile(path("sigs/vormak.cud")), v2);
    // A source that does not answer falls through to the next one.
    EXPECT_TRUE(run("source=http://127.0.0.1:1/\nsource=" + url + "\n").contains("Nothing to update"));
    http.kill();
    http.waitForFinished();

    const QByteArray v3 = buildContainer(3, "VMK-UPDATE-FTP");
    ASSERT_TRUE(writeFile(path("served/vormak.cud"), v3));
    const quint16 ftpPort = vmk::test::FreeLoopbackPort();
    QProcess ftp;
    ftp.start("/usr/bin/python3",
        { "-m", "pyftpdlib", "-i", "127.0.0.1", "-p", QString::number(ftpPort), "-d", path("served") });
    ASSERT_TRUE(ftp.waitForStarted());
    QThread::msleep(1000);
    const QString last = run(QString("source=ftp://127.0.0.1:%1/\nfiles=vormak.cud\n").arg(ftpPort));
    EXPECT_TRUE(last.contains("Update finished")) << last.toStdString();
    EXPECT_EQ(readFile(path("sigs/vormak.cud")), v3);
    ftp.kill();
    ftp.waitForFinished();
}
