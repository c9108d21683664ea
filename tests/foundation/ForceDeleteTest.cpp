#include "FoundationFixture.h"

#include "foundation/FileServices.h"
#include "foundation/ForceDelete.h"
#include "foundation/Progress.h"

#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace vmk;

namespace
{
const char kRebootText[] = "¡El archivo será eliminado en el próximo reinicio de su sistema!";

// Records each helper run as "program|argument|..." together with the rename list as it stood
// when each helper ran, and the mouse pointer changes.
struct LadderWatch {
    LadderWatch()
    {
        m_previous = SetHelperRunner([this](const QString& program, const QStringList& arguments) {
            commands << (QStringList { program } + arguments).join(u'|');
            listAtRun << QString::fromUtf8(test::readFile(PendingRemovalListPath()));
        });
        SetMousePointerHook([this](int p) { pointers << p; });
    }
    ~LadderWatch()
    {
        SetHelperRunner(m_previous);
        SetMousePointerHook({});
    }
    QStringList commands;
    QStringList listAtRun;
    QList<int> pointers;

private:
    HelperRunner m_previous;
};

bool setImmutable(const QString& path, bool on)
{
    const int fd = ::open(path.toUtf8().constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    int flags = 0;
    bool ok = ::ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0;
    if (ok) {
        flags = on ? (flags | FS_IMMUTABLE_FL) : (flags & ~FS_IMMUTABLE_FL);
        ok = ::ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
    }
    ::close(fd);
    return ok;
}
} // namespace

using ForceDeleteTest = FoundationFixture;

TEST_F(ForceDeleteTest, PlainAndReadOnlyFilesGoAtTheFirstStep)
{
    test::MessageRecorder messages;
    LadderWatch watch;
    ASSERT_TRUE(test::writeFile(m_root + "/ro.txt", "x"));
    ASSERT_EQ(::chmod((m_root + "/ro.txt").toUtf8().constData(), 0444), 0);
    ForceDelete(QStringLiteral("E:\\RO.TXT"));
    EXPECT_FALSE(QFile::exists(m_root + "/ro.txt"));
    ForceDelete(QStringLiteral("E:\\not there.txt"));
    EXPECT_TRUE(watch.commands.isEmpty());
    EXPECT_TRUE(messages.texts.isEmpty());
    EXPECT_FALSE(QFile::exists(PendingRemovalListPath()));
    EXPECT_EQ(watch.pointers, (QList<int> { 11, 1, 11, 1 }));
}

TEST_F(ForceDeleteTest, ATwinThatDiffersInCaseNeitherStandsInNorGoes)
{
    test::MessageRecorder messages;
    LadderWatch watch;
    ASSERT_TRUE(test::writeFile(m_root + "/twin.bin", "lower"));
    ASSERT_TRUE(test::writeFile(m_root + "/Twin.bin", "upper"));
    ForceDelete(QStringLiteral("E:\\twin.bin"));
    EXPECT_FALSE(QFile::exists(m_root + "/twin.bin"));
    EXPECT_EQ(test::readFile(m_root + "/Twin.bin"), QByteArray("upper"));
    EXPECT_TRUE(watch.commands.isEmpty()) << watch.commands.join(u' ').toStdString();
    EXPECT_TRUE(messages.texts.isEmpty());
    EXPECT_FALSE(QFile::exists(PendingRemovalListPath()));
}

TEST_F(ForceDeleteTest, LadderOrderRebootEntryFirstThenTheTools)
{
    test::MessageRecorder messages;
    LadderWatch watch;
    // A folder with content resists the plain delete, whatever the user's rights.
    ASSERT_TRUE(test::writeFile(m_root + "/Mis Documentos/run me.exe/inner", "x"));
    const QString path = QStringLiteral("E:\\Mis Documentos\\run me.exe");
    EXPECT_EQ(GetShortPath(path), QStringLiteral("E:\\MISDOC~1\\RUNME~1.EXE"));
    ForceDelete(path);

    EXPECT_EQ(watch.commands,
        (QStringList { "Unlock.exe|E:\\Mis Documentos\\run me.exe", "Delete.exe|E:\\Mis Documentos\\run me.exe" }));
    ASSERT_EQ(watch.listAtRun.size(), 2);
    EXPECT_EQ(watch.listAtRun[0], QStringLiteral("[Rename]\r\nNUL=E:\\MISDOC~1\\RUNME~1.EXE\r\n"));
    EXPECT_EQ(messages.texts, QStringList { QString::fromUtf8(kRebootText) });
    EXPECT_EQ(PendingRemovalListPath(), systemNative() + "/WinInit.ini");

    // A second removal appends: one [Rename] line, two NUL= lines in order.
    ASSERT_TRUE(test::writeFile(m_root + "/Other Folder/keep", "x"));
    ForceDelete(QStringLiteral("E:\\Other Folder"));
    EXPECT_EQ(test::readFile(PendingRemovalListPath()),
        QByteArray("[Rename]\r\nNUL=E:\\MISDOC~1\\RUNME~1.EXE\r\nNUL=E:\\OTHERF~1\r\n"));
    EXPECT_EQ(messages.texts.size(), 2);

    // The next start carries the entries out and removes the list.
    QFile::remove(m_root + "/Mis Documentos/run me.exe/inner");
    QFile::remove(m_root + "/Other Folder/keep");
    EXPECT_EQ(ProcessPendingRemovals(), 2);
    EXPECT_FALSE(QFile::exists(m_root + "/Mis Documentos/run me.exe"));
    EXPECT_FALSE(QFile::exists(m_root + "/Other Folder"));
    EXPECT_FALSE(QFile::exists(PendingRemovalListPath()));
    EXPECT_EQ(ProcessPendingRemovals(), 0);
}

TEST_F(ForceDeleteTest, RenameListWithoutFinalLineBreakGetsOne)
{
    // The list ends in a NUL and junk after it, as a list cut by another program may.
    static const char cut[] = "[Rename]\r\nNUL=C:\\OLD.TXT\0junk";
    ASSERT_TRUE(test::writeFile(systemNative() + "/WinInit.ini", QByteArray(cut, sizeof cut - 1)));
    ASSERT_TRUE(test::writeFile(m_root + "/x.txt", "x"));
    ScheduleDeleteAtReboot(QStringLiteral("E:\\x.txt"));
    EXPECT_EQ(test::readFile(systemNative() + "/WinInit.ini"),
        QByteArray("[Rename]\r\nNUL=C:\\OLD.TXT\r\nNUL=E:\\x.txt\r\n"));
    // A rename entry moves the file back at the next start.
    ASSERT_TRUE(test::writeFile(systemNative() + "/WinInit.ini", "[Rename]\r\nE:\\y.txt=E:\\X.TXT\r\n"));
    EXPECT_EQ(ProcessPendingRemovals(), 1);
    EXPECT_TRUE(QFile::exists(m_root + "/y.txt"));
    // Entries that climb or name a whole drive are passed over.
    ASSERT_TRUE(test::writeFile(m_root + "/D/keep.txt", "x"));
    ASSERT_TRUE(test::writeFile(systemNative() + "/WinInit.ini",
        "[Rename]\r\nNUL=E:\\D\\..\\y.txt\r\nNUL=E:\\\r\nNUL=E:\r\nE:\\D\\..\\z.txt=E:\\D\\keep.txt\r\n"
        "NUL=E:\\D\\.\\keep.txt\r\n"));
    EXPECT_EQ(ProcessPendingRemovals(), 0);
    EXPECT_TRUE(QFile::exists(m_root + "/y.txt"));
    EXPECT_TRUE(QFile::exists(m_root + "/D/keep.txt"));
    EXPECT_FALSE(QFile::exists(m_root + "/z.txt"));
}

TEST_F(ForceDeleteTest, LeftoverEntryNeverRemovesTheNeighbourThatInheritsItsShortName)
{
    ASSERT_TRUE(test::writeFile(m_root + "/Docs/my file.txt", "meant"));
    ASSERT_TRUE(test::writeFile(m_root + "/Docs/my file2.txt", "keep me"));
    const QString shortMeant = GetShortPath(QStringLiteral("E:\\Docs\\my file.txt"));
    ScheduleDeleteAtReboot(QStringLiteral("E:\\Docs\\my file.txt"));
    // The helpers removed the file in this session; the entry stays for the next start.
    ASSERT_TRUE(QFile::remove(m_root + "/Docs/my file.txt"));
    ASSERT_EQ(GetShortPath(QStringLiteral("E:\\Docs\\my file2.txt")), shortMeant)
        << "the neighbour now answers to the short name the entry holds";
    EXPECT_EQ(ProcessPendingRemovals(), 0);
    EXPECT_EQ(test::readFile(m_root + "/Docs/my file2.txt"), QByteArray("keep me"));
    EXPECT_FALSE(QFile::exists(PendingRemovalListPath()));

    // While the meant file is still there, its entry removes it.
    ASSERT_TRUE(test::writeFile(m_root + "/Docs/my file.txt", "meant"));
    ScheduleDeleteAtReboot(QStringLiteral("E:\\Docs\\my file.txt"));
    EXPECT_EQ(ProcessPendingRemovals(), 1);
    EXPECT_FALSE(QFile::exists(m_root + "/Docs/my file.txt"));
    EXPECT_TRUE(QFile::exists(m_root + "/Docs/my file2.txt"));
}

TEST_F(ForceDeleteTest, RealHelperProgramsRemoveAnImmutableFile)
{
    const QString bin = test::binDir();
    ASSERT_TRUE(QFile::exists(bin + "/Delete.exe"));
    ASSERT_TRUE(QFile::exists(bin + "/Unlock.exe"));

    // Delete.exe reports by exit code.
    ASSERT_TRUE(test::writeFile(m_root + "/plain file.txt", "x"));
    ASSERT_TRUE(test::writeFile(m_root + "/Full/inner", "x"));
    auto run = [&](const QString& program, const QString& arg) {
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(DriveMap::kInheritedVariable, DriveMap::instance().exportForChildren());
        p.setProcessEnvironment(env);
        p.start(bin + "/" + program, { arg });
        p.waitForFinished(30000);
        return p.exitCode();
    };
    EXPECT_EQ(run("Delete.exe", "E:\\PLAIN FILE.TXT"), 0);
    EXPECT_FALSE(QFile::exists(m_root + "/plain file.txt"));
    EXPECT_EQ(run("Delete.exe", "E:\\Full"), 1);
    EXPECT_EQ(run("Delete.exe", "E:\\never was"), 0);
    EXPECT_EQ(run("Delete.exe", ""), 2);

    ASSERT_TRUE(test::writeFile(m_root + "/Locked/virus.exe", "x"));
    if (!setImmutable(m_root + "/Locked/virus.exe", true))
        GTEST_SKIP() << "the filesystem or this user cannot set the immutable flag";
    test::MessageRecorder messages;
    const QString oldDir = QDir::currentPath();
    QDir::setCurrent(bin); // the helpers are found through the current folder
    ForceDelete(QStringLiteral("E:\\Locked\\virus.exe"));
    QDir::setCurrent(oldDir);
    const bool gone = !QFile::exists(m_root + "/Locked/virus.exe");
    if (!gone)
        setImmutable(m_root + "/Locked/virus.exe", false);
    EXPECT_TRUE(gone);
    EXPECT_TRUE(messages.texts.isEmpty());
    // The reboot entry stands, harmless.
    EXPECT_TRUE(test::readFile(PendingRemovalListPath()).contains("NUL=E:\\Locked\\virus.exe"));
}

namespace
{
int runHelperProgram(const QString& program, const QStringList& arguments)
{
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(DriveMap::kInheritedVariable, DriveMap::instance().exportForChildren());
    p.setProcessEnvironment(env);
    p.start(test::binDir() + "/" + program, arguments);
    p.waitForFinished(30000);
    return p.exitCode();
}
} // namespace

// A name holding a quote, or folders named `."."`, reach the helpers whole: the
// locked file named goes, and no other file.
TEST_F(ForceDeleteTest, QuotesAndDotNamesReachTheHelpersWhole)
{
    {
        // What the helpers are given: the program and the path as one argument.
        LadderWatch watch;
        test::MessageRecorder messages;
        ASSERT_TRUE(test::writeFile(m_root + "/Q/x\"y/inner", "x"));
        ForceDelete(QStringLiteral("E:\\Q\\x\"y"));
        EXPECT_EQ(watch.commands, (QStringList { "Unlock.exe|E:\\Q\\x\"y", "Delete.exe|E:\\Q\\x\"y" }));
        QDir(m_root + "/Q").removeRecursively();
    }

    ASSERT_TRUE(test::writeFile(m_root + "/Q/x\"y", "locked"));
    ASSERT_TRUE(test::writeFile(m_root + "/Q/xy", "neighbour"));
    ASSERT_TRUE(test::writeFile(m_root + "/Q/.\".\"/victim", "locked"));
    ASSERT_TRUE(test::writeFile(m_root + "/victim", "user document"));
    if (!setImmutable(m_root + "/Q/x\"y", true) || !setImmutable(m_root + "/Q/.\".\"/victim", true))
        GTEST_SKIP() << "the filesystem or this user cannot set the immutable flag";
    test::MessageRecorder messages;
    const QString oldDir = QDir::currentPath();
    QDir::setCurrent(test::binDir()); // the helpers are found through the current folder
    ForceDelete(QStringLiteral("E:\\Q\\x\"y"));
    ForceDelete(QStringLiteral("E:\\Q\\.\".\"\\victim"));
    QDir::setCurrent(oldDir);
    for (const char* left : { "/Q/x\"y", "/Q/.\".\"/victim" }) {
        if (QFile::exists(m_root + left))
            setImmutable(m_root + left, false);
    }
    EXPECT_FALSE(QFile::exists(m_root + "/Q/x\"y"));
    EXPECT_FALSE(QFile::exists(m_root + "/Q/.\".\"/victim"));
    EXPECT_EQ(test::readFile(m_root + "/Q/xy"), QByteArray("neighbour"));
    EXPECT_EQ(test::readFile(m_root + "/victim"), QByteArray("user document"));
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join(u'|').toStdString();

    // The helpers take one absolute path without "." or "..", and nothing else.
    ASSERT_TRUE(test::writeFile(m_root + "/Q/.\".\"/victim", "x"));
    const QString nativeVictim = m_root + "/Q/../victim";
    for (const QStringList& bad :
        QList<QStringList> { { "E:\\Q\\..\\victim" }, { "E:\\Q\\.\\..\\victim" }, { nativeVictim }, { "victim" },
            { "Q\\..\\victim" }, { "E:\\Q\\.\"", "\"\\victim" }, { "E:\\" }, { "/" }, {} }) {
        EXPECT_EQ(runHelperProgram("Delete.exe", bad), 2) << bad.join(u' ').toStdString();
        EXPECT_EQ(runHelperProgram("Unlock.exe", bad), 2) << bad.join(u' ').toStdString();
    }
    EXPECT_EQ(test::readFile(m_root + "/victim"), QByteArray("user document"));
    EXPECT_EQ(runHelperProgram("Delete.exe", { "E:\\Q\\.\".\"\\victim" }), 0);
    EXPECT_TRUE(QFile::exists(m_root + "/victim"));

    // ForceDelete itself refuses a path that could climb, and says so.
    ForceDelete(QStringLiteral("E:\\Q\\..\\victim"));
    ForceDelete(QStringLiteral("victim"));
    ForceDelete(QStringLiteral("E:\\"));
    EXPECT_TRUE(QFile::exists(m_root + "/victim"));
    ASSERT_EQ(messages.texts.size(), 3);
    EXPECT_EQ(messages.texts[0], QStringLiteral("¡Ruta no válida, no se elimina nada!\r\nE:\\Q\\..\\victim"));
}

// The leftover-removal list grows to its limit with whole entries only; the entry
// that would pass it is refused and told, and the next start removes exactly the
// files listed.
TEST_F(ForceDeleteTest, LongLeftoverListKeepsWholeEntries)
{
    test::MessageRecorder messages;
    auto native = [this](const QString& logical) { return m_root + u'/' + logical.mid(3).replace(u'\\', u'/'); };
    // Names of different lengths, so that no cut could fall between two entries;
    // each component is an 8.3 name, so the entry holds it as it stands.
    const QString deep = QStringLiteral("E:\\LEFTOVER\\DEEPFOLD\\DEEPFOLD\\DEEPFOLD\\GROUP%1\\");
    const int groups = 16;
    // A list written by earlier sessions up to a few entries short of the limit,
    // then removals scheduled one by one until the list is full.
    QStringList scheduled;
    QStringList refused;
    QByteArray earlier = "[Rename]\r\n";
    bool filled = false;
    for (int i = 0; i < 2000 && refused.isEmpty(); ++i) {
        const QString name = QStringLiteral("%1.%2").arg(i, 1 + i % 8, 10, QLatin1Char('0')).arg(i % 3 ? "TXT" : "T");
        const QString path = deep.arg(i % groups, 3, 10, QLatin1Char('0')) + name;
        ASSERT_TRUE(test::writeFile(native(path), "x"));
        if (!filled && earlier.size() < kPendingRemovalListLimit - 400) {
            earlier += "NUL=" + GetShortPath(path).toUtf8() + "\r\n";
            scheduled << path;
            continue;
        }
        if (!filled) {
            ASSERT_TRUE(test::writeFile(PendingRemovalListPath(), earlier));
            filled = true;
        }
        (ScheduleDeleteAtReboot(path) ? scheduled : refused) << path;
    }
    ASSERT_EQ(refused.size(), 1) << "the list never filled";
    ASSERT_GT(scheduled.size(), 400);
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_EQ(messages.texts[0],
        QStringLiteral("¡La lista de archivos a eliminar en el próximo reinicio está llena!\r\n") + refused[0]);

    const QByteArray list = test::readFile(PendingRemovalListPath());
    EXPECT_LE(list.size(), kPendingRemovalListLimit);
    EXPECT_GT(list.size(), kPendingRemovalListLimit - 80);
    QStringList entries;
    for (const QByteArray& line : list.split('\n')) {
        if (line.startsWith("NUL="))
            entries << QString::fromUtf8(line.mid(4)).chopped(1);
    }
    EXPECT_EQ(entries, scheduled);
    EXPECT_TRUE(list.endsWith("\r\n"));

    // Files whose names are the beginnings of listed ones, as a cut would leave them.
    QStringList all;
    for (int g = 0; g < groups; ++g) {
        const QString folder = deep.arg(g, 3, 10, QLatin1Char('0'));
        for (const char* d : { "0", "00", "000", "1", "10", "100", "1000", "1", "1.T", "1.TX" }) {
            if (!QFile::exists(native(folder + QLatin1String(d)))) {
                ASSERT_TRUE(test::writeFile(native(folder + QLatin1String(d)), "decoy"));
            }
        }
        for (const QString& name : QDir(native(folder)).entryList(QDir::Files))
            all << folder + name;
    }
    EXPECT_EQ(ProcessPendingRemovals(), scheduled.size());
    for (const QString& path : all)
        EXPECT_EQ(QFile::exists(native(path)), !scheduled.contains(path)) << path.toStdString();
    EXPECT_TRUE(QFile::exists(native(refused[0])));
}
