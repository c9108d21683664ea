#include "backup/BackupRun.h"
#include "backup/SkipReason.h"
#include "components/engine/Engine.h"
#include "components/zip/ZipArchiver.h"
#include "components/zip/ZipCodes.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "platform/NativeName.h"

#include "EngineTestSupport.h"
#include "TestSupport.h"
#include "TreeDrives.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSet>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace vmk;
using namespace vmk::test;

namespace
{
// The stored names as Python's zipfile reads them, as bytes (a name without the
// UTF-8 flag is taken back through code page 437, which zipfile decoded it with).
QList<QByteArray> pythonNames(const QString& archive)
{
    QProcess p;
    p.start(QStringLiteral("python3"),
        { QStringLiteral("-c"),
            QStringLiteral("import sys, zipfile\n"
                           "z = zipfile.ZipFile(sys.argv[1])\n"
                           "assert z.testzip() is None\n"
                           "for i in z.infolist():\n"
                           "    enc = 'utf-8' if i.flag_bits & 0x800 else 'cp437'\n"
                           "    sys.stdout.buffer.write(i.filename.encode(enc) + b'\\0')\n"),
            archive });
    EXPECT_TRUE(p.waitForFinished(60000));
    EXPECT_EQ(p.exitCode(), 0) << p.readAllStandardError().toStdString();
    QList<QByteArray> names = p.readAllStandardOutput().split('\0');
    names.removeLast();
    return names;
}

// Info-ZIP's list of names (one a line) after its own test of every entry.
QStringList infoZipNames(const QString& archive)
{
    QProcess test;
    test.start(QStringLiteral("unzip"), { QStringLiteral("-tq"), archive });
    EXPECT_TRUE(test.waitForFinished(60000));
    EXPECT_EQ(test.exitCode(), 0) << test.readAllStandardOutput().toStdString();
    QProcess list;
    list.start(QStringLiteral("unzip"), { QStringLiteral("-Z1"), archive });
    EXPECT_TRUE(list.waitForFinished(60000));
    return QString::fromUtf8(list.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

QStringList filesIn(const QString& nativeFolder)
{
    return QDir(nativeFolder).entryList(QDir::Files | QDir::Hidden | QDir::System);
}

// A host C: and a device E: with its backups folder, the settings for a run.
class BackupRunTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_saved = S();
        S().BackupsFolder = QStringLiteral("\\Respaldos\\");
        S().BCompAlgorithm = 2;
        S().ScanBeforeBackup = QStringLiteral("0");
        ASSERT_TRUE(QDir().mkpath(m_drives.device() + "/Respaldos"));
        m_zip.events().skippingFile = [this](const QString& name, int reason) { m_skipped[name] = reason; };
    }
    void TearDown() override
    {
        S() = m_saved;
        G().EngineLoaded = false;
    }
    QString host(const QString& rel) const { return m_drives.host() + u'/' + rel; }
    QString backups() const { return m_drives.device() + "/Respaldos"; }
    BackupRun::Outcome run(const QStringList& add, const QStringList& exc, BackupRun::Hooks hooks = {})
    {
        BackupRun r(m_zip);
        if (m_clock)
            r.setClock(m_clock);
        return r.Run(add, exc, QStringLiteral("E:\\Respaldos\\"), hooks);
    }
    QString native(const QString& logical) const { return DriveMap::instance().toNative(logical); }

    TreeDrives m_drives;
    SettingsValues m_saved;
    zip::ZipArchiver m_zip;
    QMap<QString, int> m_skipped;
    std::function<QDateTime()> m_clock;
};
} // namespace

TEST_F(BackupRunTest, TheArchiveHoldsExactlyTheSelectionLessItsExceptions)
{
    for (const char* f :
        { "Datos/a.txt", "Datos/b.log", "Datos/tmp/t1.txt", "Datos/tmp/deep/t2.txt", "Datos/fotos/x.jpg",
            "Datos/fotos/y.jpg", "Datos/fotos/raw/z.raw", "Otros/solo.txt", "Otros/no.txt", "Fuera/nada.txt" })
        ASSERT_TRUE(writeFile(host(f), QByteArray(f) + QByteArray(5000, 'v')));
    QList<QString> stages;
    BackupRun::Hooks hooks;
    hooks.stage = [&stages](const QString& w) { stages << w; };
    const BackupRun::Outcome out
        = run({ "C:\\Datos\\", "C:\\Otros\\solo.txt" }, { "C:\\Datos\\tmp\\", "C:\\Datos\\fotos\\y.jpg" }, hooks);
    ASSERT_EQ(out.failure, BackupRun::Failure::None);
    ASSERT_EQ(out.result, 0);
    EXPECT_TRUE(out.archive.startsWith("E:\\Respaldos\\"));
    EXPECT_EQ(filesIn(backups()), QStringList { out.archive.mid(13) });

    const QStringList expected = { "C:/Datos/a.txt", "C:/Datos/b.log", "C:/Datos/fotos/x.jpg",
        "C:/Datos/fotos/raw/z.raw", "C:/Otros/solo.txt" };
    QStringList python;
    for (const QByteArray& n : pythonNames(native(out.archive)))
        python << QString::fromUtf8(n);
    EXPECT_EQ(QSet<QString>(python.begin(), python.end()), QSet<QString>(expected.begin(), expected.end()));
    EXPECT_EQ(python.size(), expected.size());
    const QStringList infoZip = infoZipNames(native(out.archive));
    EXPECT_EQ(QSet<QString>(infoZip.begin(), infoZip.end()), QSet<QString>(expected.begin(), expected.end()));
    EXPECT_EQ(infoZip.size(), expected.size());
    EXPECT_TRUE(m_skipped.isEmpty());
    // Each file went in unscanned: "Procesando" for each.
    EXPECT_EQ(stages, QList<QString>(5, QStringLiteral("Procesando")));
}

TEST_F(BackupRunTest, NameMethodAndTheTwoRunsOfOneSecond)
{
    EXPECT_EQ(BackupRun::DatedName(QDateTime(QDate(2026, 11, 15), QTime(20, 37, 5)), QLocale(QLocale::Spanish)),
        QStringLiteral("nov-15-2026,20.37.05.zip"));
    EXPECT_EQ(BackupRun::DatedName(QDateTime(QDate(2026, 3, 1), QTime(7, 8, 9)), QLocale(QLocale::English)),
        QStringLiteral("Mar-01-2026,07.08.09.zip"));
    // No dot or other mark of a language's abbreviation reaches the name.
    for (int m = 1; m <= 12; ++m) {
        for (QLocale::Language language : { QLocale::Spanish, QLocale::German, QLocale::French, QLocale::Portuguese,
                 QLocale::Italian, QLocale::Chinese }) {
            const QString name = BackupRun::DatedName(QDateTime(QDate(2026, m, 1), QTime(1, 2, 3)), QLocale(language));
            EXPECT_EQ(name.count(u'.'), 3) << name.toStdString();
            EXPECT_FALSE(name.startsWith(u'-')) << name.toStdString();
        }
    }
    EXPECT_EQ(BackupRun::NameOfAttempt("nov-15-2026,20.37.05.zip", 2), QStringLiteral("nov-15-2026,20.37.05-2.zip"));
    EXPECT_EQ(BackupRun::MethodOf(0), zip::MethodBwt);
    EXPECT_EQ(BackupRun::MethodOf(1), zip::MethodBzip2);
    EXPECT_EQ(BackupRun::MethodOf(2), zip::MethodDeflate);
    EXPECT_EQ(BackupRun::MethodOf(3), 0);

    ASSERT_TRUE(writeFile(host("Datos/a.txt"), "first"));
    const QDateTime second(QDate(2026, 11, 15), QTime(20, 37, 5));
    m_clock = [second] { return second; };
    QLocale::setDefault(QLocale(QLocale::Spanish, QLocale::Spain));
    const BackupRun::Outcome one = run({ "C:\\Datos\\" }, {});
    ASSERT_TRUE(writeFile(host("Datos/a.txt"), "second"));
    const BackupRun::Outcome two = run({ "C:\\Datos\\" }, {});
    const BackupRun::Outcome three = run({ "C:\\Datos\\" }, {});
    QLocale::setDefault(QLocale::system());
    EXPECT_EQ(one.archive, QStringLiteral("E:\\Respaldos\\nov-15-2026,20.37.05.zip"));
    EXPECT_EQ(two.archive, QStringLiteral("E:\\Respaldos\\nov-15-2026,20.37.05-2.zip"));
    EXPECT_EQ(three.archive, QStringLiteral("E:\\Respaldos\\nov-15-2026,20.37.05-3.zip"));
    // The first archive was not overwritten by the second run.
    EXPECT_EQ(zipMembers(native(one.archive)).value("C:/Datos/a.txt"), QByteArray("first"));
    EXPECT_EQ(zipMembers(native(two.archive)).value("C:/Datos/a.txt"), QByteArray("second"));

    // #BCompAlgorithm: 0 and 1 bzip2, 2 deflate, out of range keeps the last method.
    m_clock = {};
    const auto methodOf = [this](int setting) {
        S().BCompAlgorithm = setting;
        const BackupRun::Outcome o = run({ "C:\\Datos\\a.txt" }, {});
        QProcess p;
        p.start("python3",
            { "-c", "import sys, zipfile; print(zipfile.ZipFile(sys.argv[1]).infolist()[0].compress_type)",
                native(o.archive) });
        p.waitForFinished(60000);
        QFile::remove(native(o.archive));
        return p.readAllStandardOutput().trimmed().toInt();
    };
    EXPECT_EQ(methodOf(1), 12);
    EXPECT_EQ(methodOf(7), 12);
    EXPECT_EQ(methodOf(2), 8);
    EXPECT_EQ(methodOf(-1), 8);
    EXPECT_EQ(methodOf(0), 12);
}

TEST_F(BackupRunTest, AbortMissingFolderAndEmptySelectionLeaveNoArchive)
{
    for (int i = 0; i < 40; ++i)
        ASSERT_TRUE(writeFile(host(QString("Datos/f%1.bin").arg(i)), QByteArray(200000, char('a' + i % 26))));
    // Abortar during the compression.
    m_zip.events().globalStatus = [this](int, int, int, int) { m_zip.setAbort(true); };
    BackupRun::Outcome out = run({ "C:\\Datos\\" }, {});
    EXPECT_EQ(out.failure, BackupRun::Failure::Component);
    EXPECT_EQ(out.result, int(zip::ZipAborted));
    EXPECT_TRUE(filesIn(backups()).isEmpty());
    m_zip.events().globalStatus = {};
    // ... and during the copy to the device.
    m_zip.events().writeProgress = [this](int percent) {
        if (percent < 100)
            m_zip.setAbort(true);
    };
    out = run({ "C:\\Datos\\" }, {});
    EXPECT_EQ(out.result, int(zip::ZipAborted));
    EXPECT_TRUE(filesIn(backups()).isEmpty());
    m_zip.events().writeProgress = {};
    // The abort flag does not outlast its run.
    const BackupRun::Outcome again = run({ "C:\\Datos\\" }, {});
    EXPECT_EQ(again.failure, BackupRun::Failure::None);
    EXPECT_EQ(filesIn(backups()).size(), 1);
    QFile::remove(native(again.archive));

    // No backups folder: nothing is done.
    ASSERT_TRUE(QDir(backups()).removeRecursively());
    out = run({ "C:\\Datos\\" }, {});
    EXPECT_EQ(out.failure, BackupRun::Failure::FolderMissing);
    EXPECT_FALSE(QFileInfo::exists(backups()));
    // An empty selection still calls the component, whose result is not 0.
    ASSERT_TRUE(QDir().mkpath(backups()));
    out = run({}, {});
    EXPECT_EQ(out.failure, BackupRun::Failure::Component);
    EXPECT_EQ(out.result, int(zip::ZipNothingToDo));
    EXPECT_TRUE(filesIn(backups()).isEmpty());
}

TEST_F(BackupRunTest, EveryFileIsInTheArchiveOrNamedWithItsReason)
{
    // Names that differ only in case (files and folders), quotes, stars, blanks at
    // both ends, a line break, a name that is not UTF-8, a folder named like a
    // wildcard holding a file named "*", a dangling link, a FIFO, a link to a file.
    const QByteArray latin1 = QByteArray("caf\xe9.txt");
    const QStringList plain = { "Datos/Twin.txt", "Datos/twin.txt", "Datos/Sub/a.txt", "Datos/sub/a.txt",
        "Datos/q\"x.txt", "Datos/star*.txt", "Datos/ lead", "Datos/trail ", "Datos/new\nline.txt", "Datos/odd*dir/*",
        "Datos/odd*dir/b.txt" };
    for (const QString& f : plain)
        ASSERT_TRUE(writeFile(host(f), f.toUtf8()));
    const QByteArray latin1Path = QFile::encodeName(host("Datos/")) + latin1;
    {
        FILE* f = std::fopen(latin1Path.constData(), "wb");
        ASSERT_NE(f, nullptr);
        std::fputs("latin", f);
        std::fclose(f);
    }
    ASSERT_EQ(::symlink("nowhere", QFile::encodeName(host("Datos/dangle")).constData()), 0);
    ASSERT_EQ(::symlink("Twin.txt", QFile::encodeName(host("Datos/link.txt")).constData()), 0);
    ASSERT_EQ(::mkfifo(QFile::encodeName(host("Datos/pipe")).constData(), 0600), 0);
    // One excepted case twin and one excepted twin folder: their twins stay in.
    const BackupRun::Outcome out = run({ "C:\\Datos\\" }, { "C:\\Datos\\twin.txt", "C:\\Datos\\sub\\" });
    ASSERT_EQ(out.failure, BackupRun::Failure::None) << out.result;

    const QList<QByteArray> names = pythonNames(native(out.archive));
    const QSet<QByteArray> stored(names.begin(), names.end());
    QSet<QByteArray> expected;
    for (const char* f : { "Datos/Twin.txt", "Datos/Sub/a.txt", "Datos/q\"x.txt", "Datos/star*.txt", "Datos/ lead",
             "Datos/trail ", "Datos/new\nline.txt", "Datos/odd*dir/*", "Datos/odd*dir/b.txt", "Datos/link.txt" })
        expected << QByteArray("C:/") + f;
    expected << QByteArray("C:/Datos/") + latin1;
    EXPECT_EQ(stored, expected);
    EXPECT_EQ(names.size(), expected.size());
    // Info-ZIP reads the same archive and counts the same entries.
    EXPECT_EQ(infoZipNames(native(out.archive)).size(), expected.size());
    // The contents are the files' own.
    const QMap<QByteArray, QByteArray> members = zipMembers(native(out.archive));
    EXPECT_EQ(members.value("C:/Datos/odd*dir/*"), QByteArray("Datos/odd*dir/*"));
    EXPECT_EQ(members.value("C:/Datos/link.txt"), QByteArray("Datos/Twin.txt"));
    // What could not go in is named with a reason of its own.
    const QMap<QString, int> skipped
        = { { "C:\\Datos\\dangle", zip::SkipDanglingLink }, { "C:\\Datos\\pipe", zip::SkipFifo } };
    EXPECT_EQ(m_skipped, skipped);
    EXPECT_EQ(SkipReason(zip::SkipAccessDenied), QStringLiteral("Acceso denegado"));
    QSet<QString> reasons;
    for (int code : { 113, 114, 120, 121, 122, 123, 124, 125, 126, 127, 128, 129 })
        reasons << SkipReason(code);
    EXPECT_EQ(reasons.size(), 12); // every reason has words of its own
    EXPECT_EQ(SkipReason(4242), QStringLiteral("Omitido (4242)"));
    removeTree(host("Datos")); // a name that is not UTF-8 is beyond QDir
}

TEST_F(BackupRunTest, ScanBeforeBackupAsksForEachInfectedFile)
{
    ASSERT_EQ(loadBuiltEngine(), 0);
    S().ScanBeforeBackup = QStringLiteral("1");
    ASSERT_TRUE(writeFile(host("Datos/clean.txt"), "nothing here"));
    ASSERT_TRUE(writeFile(host("Datos/eicar.com"), eicar()));
    QStringList asked, stages;
    int scanned = 0, infected = 0;
    bool answer = true;
    BackupRun::Hooks hooks;
    hooks.stage = [&stages](const QString& w) { stages << w; };
    hooks.scanned = [&](bool i) {
        ++scanned;
        infected += i;
    };
    hooks.excludeInfected = [&](const QString& file) {
        asked << file;
        return answer;
    };
    // With the engine not ready, files go in unscanned and nothing is asked.
    G().EngineLoaded = false;
    BackupRun::Outcome out = run({ "C:\\Datos\\" }, {}, hooks);
    EXPECT_EQ(stages, QStringList({ "Procesando", "Procesando" }));
    EXPECT_TRUE(asked.isEmpty());
    EXPECT_EQ(zipMembers(native(out.archive)).size(), 2);
    QFile::remove(native(out.archive));

    // "Yes": the infected file stays out.
    G().EngineLoaded = true;
    stages.clear();
    out = run({ "C:\\Datos\\" }, {}, hooks);
    EXPECT_EQ(stages, QStringList({ "Analizando", "Analizando" }));
    EXPECT_EQ(asked, QStringList { "C:\\Datos\\eicar.com" });
    EXPECT_EQ(scanned, 2);
    EXPECT_EQ(infected, 1);
    EXPECT_EQ(zipMembers(native(out.archive)).keys(), QList<QByteArray> { "C:/Datos/clean.txt" });
    QFile::remove(native(out.archive));
    // "No": it is archived all the same.
    answer = false;
    out = run({ "C:\\Datos\\" }, {}, hooks);
    EXPECT_EQ(asked.size(), 2);
    EXPECT_EQ(infected, 2);
    EXPECT_EQ(zipMembers(native(out.archive)).value("C:/Datos/eicar.com"), eicar());
    engine::UnLoadEngine();
}
