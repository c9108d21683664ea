#include "platform/ProcProcessSource.h"

#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace vmk;

namespace
{
// One process folder of a /proc-shaped tree; an empty `stat` leaves it out.
void fakeProcess(const QString& root, int pid, const QByteArray& stat, const QByteArray& comm, const QByteArray& maps,
    const QByteArray& exe)
{
    const QString dir = root + '/' + QString::number(pid);
    QDir().mkpath(dir);
    if (!stat.isEmpty()) {
        ASSERT_TRUE(test::writeFile(dir + "/stat", stat));
    }
    if (!comm.isEmpty()) {
        ASSERT_TRUE(test::writeFile(dir + "/comm", comm));
    }
    if (!maps.isEmpty()) {
        ASSERT_TRUE(test::writeFile(dir + "/maps", maps));
    }
    if (!exe.isEmpty()) {
        ASSERT_TRUE(QFile::link(QFile::decodeName(exe), dir + "/exe"));
    }
}

QByteArray statLine(int pid, const QByteArray& comm, int ppid, int threads)
{
    // Fields 3..20: state, ppid, then 15 numbers, num_threads last.
    QByteArray s = QByteArray::number(pid) + " (" + comm + ") S " + QByteArray::number(ppid);
    for (int i = 5; i < 20; ++i)
        s += " 0";
    return s + ' ' + QByteArray::number(threads) + " 0 123\n";
}

QStringList paths(const QList<ModuleEntry>& modules)
{
    QStringList out;
    for (const ModuleEntry& m : modules)
        out << m.Path;
    return out;
}
} // namespace

TEST(ProcProcessSourceTest, ReadsNamesThreadsImagesAndModulesInLoadOrder)
{
    QTemporaryDir tmp;
    const QString root = tmp.path() + "/proc";
    const QByteArray maps = "55d0-55d1 r--p 00000000 fe:00 1   /opt/app/prog\n"
                            "55d1-55d2 r-xp 00001000 fe:00 1   /opt/app/prog\n"
                            "55d3-55d4 rw-p 00000000 00:00 0   [heap]\n"
                            "7f10-7f11 r-xp 00000000 fe:00 7   /usr/lib/libc.so.6\n"
                            "7f11-7f12 r--p 00001000 fe:00 7   /usr/lib/libc.so.6\n"
                            "7f20-7f21 r-xp 00000000 fe:00 8   /tmp/my lib (x).so (deleted)\n"
                            "7f22-7f23 r-xp 00000000 00:01 9   /memfd:jit (deleted)\n"
                            "7f24-7f25 r--p 00000000 fe:00 10  /usr/lib/locale/C.utf8/LC_CTYPE\n"
                            "7f30-7f31 r-xp 00000000 fe:00 11  /usr/lib/ld-linux.so.2\n"
                            "7f31-7f32 r-xp 00002000 fe:00 7   /usr/lib/libc.so.6\n"
                            "7f40-7f41 r-xp 00000000 00:00 0   [vdso]\n"
                            "7f50-7f51 rw-p 00000000 00:00 0\n";
    // A name with ") (" in it, a comm holding a NUL, a process that is gone
    // (no stat), one of another user (no maps, no exe), a folder that is no process.
    fakeProcess(root, 812, statLine(812, "a) (b", 1, 3), QByteArray("pr\0og\n", 6), maps, "/opt/app/prog");
    fakeProcess(root, 7, statLine(7, "sshd", 1, 1), "sshd\n", {}, {});
    fakeProcess(root, 90, {}, "gone\n", maps, "/opt/app/prog");
    fakeProcess(root, 100, statLine(100, "kworker/0:1", 2, 0), {}, {}, {});
    fakeProcess(root, 1200, statLine(1200, "old", 1, 2), "old\n",
        "5500-5501 r-xp 00000000 fe:00 1 /opt/old/bin (deleted)\n"
        "7f00-7f01 r-xp 00000000 fe:00 2 /usr/lib/libc.so.6\n",
        "/opt/old/bin (deleted)");
    // A program run from a memfd (sandboxes seal their binaries so).
    fakeProcess(root, 1300, statLine(1300, "sealed", 1, 1), "sealed\n",
        "5600-5601 r-xp 00000000 00:01 3 /memfd:sealed-abc (deleted)\n"
        "7e00-7e01 r-xp 00000000 00:01 4 /memfd:jit (deleted)\n"
        "7f00-7f01 r-xp 00000000 fe:00 2 /usr/lib/libc.so.6\n",
        "/memfd:sealed-abc (deleted)");
    QDir().mkpath(root + "/self");
    QDir().mkpath(root + "/12x");

    const ProcProcessSource source(root);
    const QList<ProcessEntry> list = source.processes();
    ASSERT_EQ(list.size(), 5);
    EXPECT_EQ(list[0].ProcessID, 7u);
    EXPECT_EQ(list[1].ProcessID, 100u);
    EXPECT_EQ(list[1].Name, "kworker/0:1"); // no comm: the stat's name
    EXPECT_EQ(list[1].ParentProcessID, 2u);
    EXPECT_EQ(list[1].ThreadCount, 0u);
    EXPECT_EQ(list[2].ProcessID, 812u);
    EXPECT_EQ(list[2].Name, "pr");
    EXPECT_EQ(list[2].ParentProcessID, 1u);
    EXPECT_EQ(list[2].ThreadCount, 3u);
    EXPECT_EQ(list[3].ProcessID, 1200u);

    EXPECT_EQ(source.imagePath(812), "/opt/app/prog");
    // The image, then the other files by descending address, each once; data,
    // anonymous, memfd and pseudo mappings are not modules.
    EXPECT_EQ(paths(source.modules(812)),
        (QStringList { "/opt/app/prog", "/usr/lib/ld-linux.so.2", "/tmp/my lib (x).so", "/usr/lib/libc.so.6" }));
    EXPECT_EQ(source.modules(812)[2].Name, "my lib (x).so");

    // Deleted files keep their path without the mark.
    EXPECT_EQ(source.imagePath(1200), "/opt/old/bin");
    EXPECT_EQ(paths(source.modules(1200)), (QStringList { "/opt/old/bin", "/usr/lib/libc.so.6" }));

    // A memfd image has no path but stays first; memfd libraries are no modules.
    EXPECT_TRUE(source.imagePath(1300).isEmpty());
    const QList<ModuleEntry> sealed = source.modules(1300);
    EXPECT_EQ(paths(sealed), (QStringList { "", "/usr/lib/libc.so.6" }));

    // Another user's process, a gone one and an unknown number: empty, no failure.
    EXPECT_TRUE(source.imagePath(7).isEmpty());
    EXPECT_TRUE(source.modules(7).isEmpty());
    EXPECT_TRUE(source.modules(4242).isEmpty());
    EXPECT_TRUE(source.imagePath(4242).isEmpty());
}

TEST(ProcProcessSourceTest, TheHostListHoldsThisProcessWithItsImageFirst)
{
    const ProcessSource& host = ProcessSource::host();
    const uint32_t self = static_cast<uint32_t>(::getpid());
    bool found = false;
    for (const ProcessEntry& e : host.processes()) {
        if (e.ProcessID == self) {
            found = true;
            EXPECT_GE(e.ThreadCount, 1u);
        }
    }
    EXPECT_TRUE(found);
    const QString image = host.imagePath(self);
    EXPECT_TRUE(image.endsWith("/test_platform"));
    const QList<ModuleEntry> modules = host.modules(self);
    ASSERT_GE(modules.size(), 2);
    EXPECT_EQ(modules[0].Path, image);
    EXPECT_EQ(modules[0].Name, "test_platform");
}
