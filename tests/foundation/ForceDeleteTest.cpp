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

// Records the helper command lines together with the rename list as it stood
// when each helper ran, and the mouse pointer changes.
struct LadderWatch {
    LadderWatch()
    {
        m_previous = SetHelperRunner([this](const QString& line) {
            commands << line;
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
        (QStringList {
            "Unlock.exe \"E:\\Mis Documentos\\run me.exe\"", "Delete.exe \"E:\\Mis Documentos\\run me.exe\"" }));
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
