#include "FoundationFixture.h"

#include "foundation/FileServices.h"
#include "foundation/ForceDelete.h"
#include "foundation/Progress.h"
#include "platform/Pump.h"

#include "TestSupport.h"

#include <QFile>

#include <sys/statvfs.h>
#include <unistd.h>

using namespace vmk;

namespace
{
QByteArray pattern(qint64 size)
{
    QByteArray b(size, '\0');
    for (qint64 i = 0; i < size; ++i)
        b[i] = static_cast<char>((i * 7 + i / 251) & 0xff);
    return b;
}

// Records the bar and the pump for one copy; `cancelAt` presses Cancel at that pump round.
struct CopyWatch {
    explicit CopyWatch(int cancelAt = 0)
    {
        SetProgressBarFHook([this](int p) { bars << p; });
        SetPumpHook([this, cancelAt] {
            ++pumps;
            if (cancelAt && pumps == cancelAt)
                G().CancelRequested = true;
        });
    }
    ~CopyWatch()
    {
        SetProgressBarFHook({});
        SetPumpHook({});
        G().CancelRequested = false;
    }
    QList<int> bars;
    int pumps = 0;
};
} // namespace

using FileServicesTest = FoundationFixture;

TEST_F(FileServicesTest, ExistenceAndFolders)
{
    ASSERT_TRUE(test::writeFile(m_root + "/Docs/QFP.txt", "x"));
    EXPECT_TRUE(FileExists(QStringLiteral("E:")));
    EXPECT_TRUE(FileExists(QStringLiteral("E:\\")));
    EXPECT_FALSE(FileExists(QStringLiteral("Q:")));
    EXPECT_TRUE(FileExists(QStringLiteral("E:\\docs\\qfp.TXT")));
    EXPECT_TRUE(FileExists(QStringLiteral("E:\\Docs")));
    EXPECT_FALSE(FileExists(QStringLiteral("E:\\Docs\\none.txt")));
    EXPECT_FALSE(FolderMissing(QStringLiteral("E:\\DOCS\\")));
    EXPECT_FALSE(FolderMissing(QStringLiteral("E:")));
    EXPECT_TRUE(FolderMissing(QStringLiteral("E:\\Docs\\QFP.txt")));
    EXPECT_TRUE(FolderMissing(QStringLiteral("E:\\Nothing")));

    for (int id : { 0, 2, 5 })
        EXPECT_TRUE(SpecialFolderPath(id).startsWith(QStringLiteral("C:\\"))) << id;
    EXPECT_EQ(SpecialFolderPath(7), QString());

    EXPECT_TRUE(RunAndWait(QStringLiteral("true")));
    EXPECT_FALSE(RunAndWait(QStringLiteral("no-such-helper.exe \"E:\\x\"")));
}

TEST_F(FileServicesTest, DriveFiguresAreExactDecimalChains)
{
    EXPECT_TRUE(HasDiskFreeSpaceEx());
    struct statvfs vfs;
    ASSERT_EQ(::statvfs(m_root.toUtf8().constData(), &vfs), 0);
    const quint64 total = quint64(vfs.f_blocks) * vfs.f_frsize;
    const QString bytes = DriveTotalBytes(QStringLiteral("E:"));
    EXPECT_EQ(bytes, QString::number(total));
    EXPECT_EQ(DriveTotalKB(QStringLiteral("E:")), QString::number(total / 1024));
    EXPECT_EQ(DriveTotalMB(QStringLiteral("E:")), QString::number(total / 1024 / 1024));
    // Above 4 GiB the text is exact, not rounded through a float.
    if (total > (quint64(1) << 32)) {
        EXPECT_GT(bytes.size(), 9);
    }
    const quint64 free = DriveFreeBytes(QStringLiteral("E:")).toULongLong();
    EXPECT_LE(free, total);
    EXPECT_EQ(DriveFreeMB(QStringLiteral("E:")).toULongLong(), DriveFreeKB(QStringLiteral("E:")).toULongLong() / 1024);
    EXPECT_FALSE(DriveTotalBytes(QString()).isEmpty());
    EXPECT_EQ(DriveFreeBytes(QStringLiteral("Q:")), QString());
    EXPECT_EQ(DriveFreeMB(QStringLiteral("Q:")), QString());
}

TEST_F(FileServicesTest, CopyInBlocksAtTheEdges)
{
    const QString target = m_root + "/out.bin";
    {
        // An empty source: the old target goes, no new file, false.
        ASSERT_TRUE(test::writeFile(m_root + "/empty.bin", ""));
        ASSERT_TRUE(test::writeFile(target, "old"));
        CopyWatch w;
        EXPECT_FALSE(CopyFileInBlocks(QStringLiteral("E:\\empty.bin"), QStringLiteral("E:\\out.bin")));
        EXPECT_FALSE(QFile::exists(target));
        EXPECT_TRUE(w.bars.isEmpty());
    }
    {
        CopyWatch w;
        EXPECT_FALSE(CopyFileInBlocks(QStringLiteral("E:\\missing.bin"), QStringLiteral("E:\\out.bin")));
        EXPECT_FALSE(QFile::exists(target));
        EXPECT_FALSE(QFile::exists(m_root + "/missing.bin"));
    }
    {
        // Exactly one block.
        ASSERT_TRUE(test::writeFile(m_root + "/a.bin", pattern(10240)));
        ASSERT_TRUE(test::writeFile(target, "an older and different target"));
        CopyWatch w;
        EXPECT_TRUE(CopyFileInBlocks(QStringLiteral("E:\\A.BIN"), QStringLiteral("E:\\out.bin")));
        EXPECT_EQ(test::readFile(target), pattern(10240));
        EXPECT_EQ(w.bars, QList<int> { 100 });
        EXPECT_EQ(w.pumps, 1);
    }
    {
        // One whole block and a rest of one byte.
        ASSERT_TRUE(test::writeFile(m_root + "/b.bin", pattern(10241)));
        CopyWatch w;
        EXPECT_TRUE(CopyFileInBlocks(QStringLiteral("E:\\b.bin"), QStringLiteral("E:\\out.bin")));
        EXPECT_EQ(test::readFile(target), pattern(10241));
        EXPECT_EQ(w.bars, QList<int> { 99 });
        EXPECT_EQ(w.pumps, 1);
    }
    {
        ASSERT_TRUE(test::writeFile(m_root + "/c.bin", pattern(3 * 10240 + 5)));
        CopyWatch w;
        EXPECT_TRUE(CopyFileInBlocks(QStringLiteral("E:\\c.bin"), QStringLiteral("E:\\Sub dir\\..\\out.bin")));
        EXPECT_EQ(test::readFile(target), pattern(3 * 10240 + 5));
        EXPECT_EQ(w.bars, (QList<int> { 33, 66, 99 }));
    }
    {
        // Cancel pressed during the second pump round: false, no partial file, no message.
        test::MessageRecorder messages;
        ASSERT_TRUE(test::writeFile(m_root + "/big.bin", pattern(10 * 10240)));
        QFile::remove(target);
        CopyWatch w(2);
        EXPECT_FALSE(CopyFileInBlocks(QStringLiteral("E:\\big.bin"), QStringLiteral("E:\\out.bin")));
        EXPECT_FALSE(QFile::exists(target));
        EXPECT_EQ(w.bars, (QList<int> { 10, 20 }));
        EXPECT_EQ(w.pumps, 2);
        EXPECT_TRUE(messages.texts.isEmpty());
        EXPECT_EQ(test::readFile(m_root + "/big.bin"), pattern(10 * 10240));
    }
    {
        // A target in a folder that does not exist: false, nothing left.
        CopyWatch w;
        EXPECT_FALSE(CopyFileInBlocks(QStringLiteral("E:\\b.bin"), QStringLiteral("E:\\No\\Such\\out.bin")));
    }
    {
        // A Latin-1 name from an old stick, by its namespace form, both ways.
        const QByteArray latin1 = QFile::encodeName(m_root) + "/caf\xe9.bin";
        ASSERT_TRUE(test::writeFile(m_root + "/c.bin", pattern(20000)));
        CopyWatch w;
        const QString odd = QStringLiteral("E:\\caf") + QChar(0xF0E9) + QStringLiteral(".bin");
        EXPECT_TRUE(CopyFileInBlocks(QStringLiteral("E:\\c.bin"), odd));
        EXPECT_TRUE(FileExists(odd));
        EXPECT_EQ(::access(latin1.constData(), F_OK), 0);
        EXPECT_TRUE(CopyFileInBlocks(odd, QStringLiteral("E:\\back.bin")));
        EXPECT_EQ(test::readFile(m_root + "/back.bin"), pattern(20000));
        ::unlink(latin1.constData());
    }
}
