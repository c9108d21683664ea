#include "components/zip/DeflatePipeline.h"
#include "components/zip/ZipArchiver.h"
#include "components/zip/ZipCodes.h"
#include "platform/Pump.h"

#include "TestDrive.h"
#include "TestSupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>

#include <zlib.h>

using namespace vmk::zip;
using vmk::test::writeFile;

namespace
{
// Text with repeats across block boundaries (so priming matters), then noise.
QByteArray mixed(qint64 size, quint32 salt)
{
    QByteArray b(size, '\0');
    quint32 x = salt * 2654435761u + 7;
    for (qint64 i = 0; i < size; ++i) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        b[i] = (i / 65536) % 3 == 2 ? static_cast<char>(x) : "the quick brown fox\n"[(i + x % 3) % 20];
    }
    return b;
}

// Raw inflate of a whole entry stream; empty on any error.
QByteArray inflateRaw(const QByteArray& stream, qint64 expected)
{
    z_stream z {};
    if (inflateInit2(&z, -MAX_WBITS) != Z_OK)
        return {};
    QByteArray out(expected + 1, '\0');
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(stream.constData()));
    z.avail_in = static_cast<uInt>(stream.size());
    z.next_out = reinterpret_cast<Bytef*>(out.data());
    z.avail_out = static_cast<uInt>(out.size());
    const int rc = inflate(&z, Z_FINISH);
    const bool ok = rc == Z_STREAM_END && z.avail_in == 0;
    out.resize(static_cast<qsizetype>(z.total_out));
    inflateEnd(&z);
    return ok ? out : QByteArray("inflate failed");
}

quint32 crcOf(const QByteArray& b)
{
    return static_cast<quint32>(crc32(0, reinterpret_cast<const Bytef*>(b.constData()), static_cast<uInt>(b.size())));
}
} // namespace

TEST(DeflatePipeline, BlocksJoinIntoOneStreamPerFileInTheGivenOrder)
{
    QTemporaryDir dir;
    const qint64 block = DeflatePipeline::kBlockSize;
    const qint64 sizes[] = { 0, 5, block - 1, block, 3 * block + 17, 600000 };
    QList<DeflatePipeline::Input> inputs;
    QList<QByteArray> contents;
    for (int i = 0; i < int(std::size(sizes)); ++i) {
        const QString path = dir.filePath(QString("f%1").arg(i));
        contents << mixed(sizes[i], i + 1);
        ASSERT_TRUE(writeFile(path, contents.last()));
        inputs.append({ QFile::encodeName(path), sizes[i] });
    }
    // The last file has shrunk since it was listed: its entry ends early with what is there.
    inputs.last().size = 2 * block + 100;
    inputs.append({ QFile::encodeName(dir.filePath("missing")), 10 });

    for (int threads : { 1, 2, 3 }) {
        SCOPED_TRACE(threads);
        std::atomic<bool> abort { false };
        DeflatePipeline pipeline(inputs, 9, abort, threads);
        DeflatePipeline::Piece piece;
        EXPECT_FALSE(pipeline.next(1, piece)) << "only the first file's turn";
        for (int i = 0; i < contents.size(); ++i) {
            QByteArray stream;
            int pieces = 0;
            do {
                ASSERT_TRUE(pipeline.next(i, piece));
                ASSERT_EQ(piece.failure, DeflatePipeline::Failure::None);
                stream += piece.data;
                ++pieces;
            } while (!piece.end);
            EXPECT_EQ(inflateRaw(stream, contents[i].size()), contents[i]) << "file " << i;
            EXPECT_EQ(pipeline.crc(), crcOf(contents[i]));
            EXPECT_EQ(pipeline.input(), contents[i].size());
            EXPECT_EQ(pieces, std::max<qint64>(1, (std::min(inputs[i].size, contents[i].size()) + block - 1) / block));
        }
        ASSERT_TRUE(pipeline.next(int(contents.size()), piece));
        EXPECT_EQ(piece.failure, DeflatePipeline::Failure::Open);
    }

    // A set abort flag releases a consumer that would wait, and the workers stop.
    std::atomic<bool> abort { true };
    DeflatePipeline stopped(inputs, 9, abort, 2);
    DeflatePipeline::Piece piece;
    QElapsedTimer t;
    t.start();
    for (int i = 0; i < 4 && stopped.next(0, piece); ++i) { }
    EXPECT_LT(t.elapsed(), 2000);
}

// A file rewritten while its blocks are deflated: whatever mix of old and new
// bytes each block read, the stream must inflate to data whose CRC and length
// are the ones reported, or a zip tool would call the entry damaged.
TEST(DeflatePipeline, AFileChangingUnderTheWorkersStillGivesAConsistentStream)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("moving.bin");
    const qint64 size = 4 * DeflatePipeline::kBlockSize;
    ASSERT_TRUE(writeFile(path, mixed(size, 1)));
    std::atomic<bool> done { false };
    std::thread writer([&] {
        QFile f(path);
        if (!f.open(QIODevice::ReadWrite))
            return;
        for (quint32 round = 2; !done; ++round) {
            // Same length, other bytes, written in pieces so readers see a mix.
            const QByteArray next = mixed(size, round);
            for (qint64 at = 0; at < size && !done; at += 64 * 1024) {
                f.seek(at);
                f.write(next.constData() + at, 64 * 1024);
                f.flush();
            }
        }
    });
    int rounds = 0;
    for (; rounds < 12; ++rounds) {
        std::atomic<bool> abort { false };
        DeflatePipeline pipeline({ { QFile::encodeName(path), size } }, 6, abort, 2);
        QByteArray stream;
        DeflatePipeline::Piece piece;
        do {
            ASSERT_TRUE(pipeline.next(0, piece));
            ASSERT_EQ(piece.failure, DeflatePipeline::Failure::None);
            stream += piece.data;
        } while (!piece.end);
        const QByteArray back = inflateRaw(stream, size);
        ASSERT_EQ(back.size(), size) << "round " << rounds;
        EXPECT_EQ(crcOf(back), pipeline.crc()) << "round " << rounds;
        EXPECT_EQ(pipeline.input(), size);
    }
    done = true;
    writer.join();
}

// Several files of several blocks each, deflated on every core: the events come
// in the order of the files, each file's progress rising to 100 before the next
// one starts; an abort pressed halfway leaves no archive and no temporary file.
TEST(DeflatePipeline, ParallelCompressKeepsTheEventOrderAndStopsOnAbort)
{
    QTemporaryDir dir;
    vmk::test::TestDrive drive(dir.path());
    const int files = 5;
    for (int i = 0; i < files; ++i)
        ASSERT_TRUE(writeFile(dir.filePath(QString("in/f%1.bin").arg(i)), mixed((i + 1) * 700000, 40 + i)));
    const QString archive = dir.filePath("out.zip");

    ZipArchiver zip;
    zip.setArchiveName(vmk::test::TestDrive::logical(archive));
    zip.setFilesToProcess(vmk::test::TestDrive::logical(dir.filePath("in")) + "\\*");
    zip.setCompressionMethod(MethodDeflate);
    zip.setCompressionLevel(9);
    QStringList order;
    QList<int> percents;
    bool rising = true;
    zip.events().fileProgress = [&](const QString& name, int percent) {
        const QString bare = name.section('\\', -1);
        if (order.isEmpty() || order.last() != bare) {
            EXPECT_TRUE(percents.isEmpty() || percents.last() == 100) << "a file ended below 100";
            order << bare;
            percents.clear();
        }
        rising &= percents.isEmpty() || percent >= percents.last();
        percents << percent;
    };
    QList<int> processed;
    zip.events().globalStatus = [&](int, int p, int, int) {
        if (processed.isEmpty() || processed.last() != p)
            processed << p;
    };
    ASSERT_EQ(zip.compress(), ZipOk);
    EXPECT_EQ(order, (QStringList { "f0.bin", "f1.bin", "f2.bin", "f3.bin", "f4.bin" }));
    EXPECT_TRUE(rising);
    EXPECT_EQ(percents.last(), 100);
    EXPECT_EQ(processed.last(), files);
    for (int i = 1; i < processed.size(); ++i)
        EXPECT_EQ(processed[i], processed[i - 1] + 1);

    const QString into = dir.filePath("back");
    zip.setExtractFolder(vmk::test::TestDrive::logical(into));
    zip.setFilesToProcess("*");
    ASSERT_EQ(zip.extract(), ZipOk);
    for (int i = 0; i < files; ++i)
        EXPECT_EQ(vmk::test::readFile(into + QString("/f%1.bin").arg(i)), mixed((i + 1) * 700000, 40 + i));

    // Abort while the workers are busy: pressed from the pump once the first
    // file's progress has been heard.
    QFile::remove(archive);
    zip.events() = {};
    zip.setFilesToProcess(vmk::test::TestDrive::logical(dir.filePath("in")) + "\\*");
    // A temporary folder of this test's own, so archives built by tests running
    // beside it cannot look like a work folder left behind.
    QTemporaryDir privateTemp;
    const QByteArray oldTemp = qgetenv("TMPDIR");
    qputenv("TMPDIR", privateTemp.path().toLocal8Bit());
    const QStringList tempsBefore = QDir(QDir::tempPath()).entryList({ "vmkzip-*" }, QDir::Dirs);
    bool heard = false;
    int heardAfter = 0;
    zip.events().fileProgress = [&](const QString&, int) {
        heard = true;
        heardAfter += zip.abortRequested() ? 1 : 0;
    };
    vmk::SetPumpHook([&] {
        if (heard)
            zip.setAbort(true);
    });
    EXPECT_EQ(zip.compress(), ZipAborted);
    vmk::SetPumpHook(nullptr);
    EXPECT_TRUE(heard);
    EXPECT_LT(heardAfter, 20) << "the work stops soon after the flag";
    EXPECT_FALSE(QFile::exists(archive));
    EXPECT_EQ(QDir(QDir::tempPath()).entryList({ "vmkzip-*" }, QDir::Dirs), tempsBefore);
    qputenv("TMPDIR", oldTemp);
}

// Updating an archive: a replaced entry keeps its place, so the library reads
// the entries in another order than they were listed (z.txt before a.txt here);
// the deflated streams must follow the library's order.
TEST(DeflatePipeline, UpdatingFollowsTheArchiveOrderOfEntries)
{
    QTemporaryDir dir;
    vmk::test::TestDrive drive(dir.path());
    const QString archive = dir.filePath("u.zip");
    ASSERT_TRUE(writeFile(dir.filePath("in/z.txt"), mixed(900000, 1)));
    ZipArchiver zip;
    zip.setArchiveName(vmk::test::TestDrive::logical(archive));
    zip.setCompressionMethod(MethodDeflate);
    zip.setCompressionLevel(9);
    zip.setFilesToProcess(vmk::test::TestDrive::logical(dir.filePath("in")) + "\\*");
    ASSERT_EQ(zip.compress(), ZipOk);

    ASSERT_TRUE(writeFile(dir.filePath("in/a.txt"), mixed(800000, 2)));
    ASSERT_TRUE(writeFile(dir.filePath("in/z.txt"), mixed(700000, 3)));
    zip.setReplaceArchive(false);
    QStringList order;
    zip.events().fileProgress = [&](const QString& name, int) {
        const QString bare = name.section('\\', -1);
        if (order.isEmpty() || order.last() != bare)
            order << bare;
    };
    ASSERT_EQ(zip.compress(), ZipOk);
    EXPECT_EQ(order, (QStringList { "z.txt", "a.txt" }));

    const QString into = dir.filePath("back");
    zip.setExtractFolder(vmk::test::TestDrive::logical(into));
    zip.setFilesToProcess("*");
    ASSERT_EQ(zip.extract(), ZipOk);
    EXPECT_EQ(vmk::test::readFile(into + "/z.txt"), mixed(700000, 3));
    EXPECT_EQ(vmk::test::readFile(into + "/a.txt"), mixed(800000, 2));
}
