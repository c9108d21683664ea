#include "components/zip/ZipArchiver.h"
#include "components/zip/ZipCodes.h"
#include "filemanager/Stages.h"
#include "platform/Pump.h"

#include "TestDrive.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace vmk::zip;
using vmk::test::readFile;
using vmk::test::writeFile;

namespace
{
QString iface(const QString& native)
{
    return vmk::test::TestDrive::logical(native);
}

QByteArray noise(qint64 size, quint32 start)
{
    QByteArray b(size, '\0');
    quint32 x = start * 2654435761u + 1;
    for (qint64 i = 0; i < size; ++i) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        // Half text, half noise, so every method has something to do.
        b[i] = (i / 4096) % 2 ? static_cast<char>(x) : "abcdefgh \r\n"[x % 11];
    }
    return b;
}

int run(const QString& program, const QStringList& args, QString* output = nullptr)
{
    QProcess p;
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(program, args);
    if (!p.waitForFinished(60000))
        return -1;
    if (output)
        *output = QString::fromUtf8(p.readAll());
    return p.exitCode();
}

// Each test gets its own host temporary folder, so tests running side by side
// cannot see each other's work files.
class PrivateTemp
{
public:
    explicit PrivateTemp(const QString& folder)
        : m_old(qgetenv("TMPDIR"))
    {
        QDir().mkpath(folder);
        qputenv("TMPDIR", QFile::encodeName(folder));
    }
    ~PrivateTemp() { qputenv("TMPDIR", m_old); }

private:
    QByteArray m_old;
};

QStringList vmkTempDirs()
{
    return QDir(QDir::tempPath()).entryList({ "vmkzip-*" }, QDir::Dirs | QDir::NoDotAndDotDot);
}
} // namespace

namespace
{
// Writes a file whose name is given as raw bytes (which need not be UTF-8).
bool writeRawName(const QByteArray& path, const QByteArray& bytes)
{
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0)
        return false;
    const bool ok = ::write(fd, bytes.constData(), static_cast<size_t>(bytes.size())) == bytes.size();
    return ::close(fd) == 0 && ok;
}

QByteArray readRawName(const QByteArray& path)
{
    QFile f;
    const int fd = ::open(path.constData(), O_RDONLY);
    if (fd < 0 || !f.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        return {};
    return f.readAll();
}

// An archive written by Python's zipfile, one entry per (name, data) pair in
// order, a name given twice included.
bool pythonZip(const QString& path, const QList<QPair<QString, QString>>& entries)
{
    QString script = "import sys,zipfile,warnings\n"
                     "warnings.simplefilter('ignore')\n"
                     "z=zipfile.ZipFile(sys.argv[1],'w',zipfile.ZIP_DEFLATED)\n"
                     "for i in range(2, len(sys.argv), 2): z.writestr(sys.argv[i], sys.argv[i+1])\n"
                     "z.close()\n";
    QStringList args { "-c", script, path };
    for (const auto& [name, data] : entries)
        args << name << data;
    return run("/usr/bin/python3", args) == 0;
}

// Extracts every entry of the archive into the folder: the result, and each
// skipped name with its reason.
QPair<int, QStringList> extractAll(ZipArchiver& zip, const QString& archive, const QString& into)
{
    QStringList skipped;
    zip.setArchiveName(iface(archive));
    zip.setFilesToProcess("*");
    zip.setExtractFolder(iface(into));
    zip.events().skippingFile = [&](const QString& n, int r) { skipped << QString("%1 %2").arg(n).arg(r); };
    const int result = zip.extract();
    zip.events().skippingFile = nullptr;
    return { result, skipped };
}

QStringList entriesOf(ZipArchiver& zip, const QString& archive)
{
    QStringList listed;
    zip.setArchiveName(iface(archive));
    zip.events().listingFile = [&](const QString& n, qint64) { listed << n; };
    EXPECT_EQ(zip.listArchive(), ZipOk);
    zip.events().listingFile = nullptr;
    listed.sort();
    return listed;
}

// Archives no tool of ours would write, made byte by byte.
const char* const kRawArchives = R"(
import struct, sys, zlib
kind, path = sys.argv[1], sys.argv[2]
def local(name, crc, packed, plain, data, method=8, extra=b''):
    return struct.pack('<IHHHHHIIIHH', 0x04034b50, 45, 0, method, 0, 0, crc, packed, plain, len(name), len(extra)) + name + extra + data
def central(name, crc, packed, plain, offset, method=8, extra=b''):
    return struct.pack('<IHHHHHHIIIHHHHHII', 0x02014b50, 45, 45, 0, method, 0, 0, crc, packed, plain, len(name), len(extra), 0, 0, 0, 0, offset) + name + extra
def end(count, cd, at):
    return struct.pack('<IHHHHIIH', 0x06054b50, 0, 0, count, count, len(cd), at, 0)
def deflate(data):
    c = zlib.compressobj(9, zlib.DEFLATED, -15)
    return c.compress(data) + c.flush()
if kind == 'overlap':
    # Ten entries over one local record: the data of one, unpacked ten times.
    data = b'A' * 100000
    kernel = deflate(data)
    head = local(b'kernel.txt', zlib.crc32(data), len(kernel), len(data), kernel)
    cd = b''.join(central(b'f%d.txt' % i, zlib.crc32(data), len(kernel), len(data), 0) for i in range(10))
    body = head + cd + end(10, cd, len(head))
else:
    # One entry whose directory declares a petabyte through the ZIP64 field.
    data = b'x'
    kernel = deflate(data)
    huge = struct.pack('<HHQQ', 1, 16, 1 << 50, len(kernel))
    head = local(b'huge.bin', zlib.crc32(data), 0xFFFFFFFF, 0xFFFFFFFF, kernel, extra=huge)
    cd = central(b'huge.bin', zlib.crc32(data), 0xFFFFFFFF, 0xFFFFFFFF, 0, extra=huge)
    body = head + cd + end(1, cd, len(head))
open(path, 'wb').write(body)
)";
} // namespace

TEST(ZipArchiver, BuildsATreeWithEventsInOrderThatOtherToolsRead)
{
    QTemporaryDir dir;
    vmk::test::TestDrive drive(dir.path());
    PrivateTemp temp(dir.filePath("tmp"));
    const QString src = dir.filePath("src");
    ASSERT_TRUE(writeFile(src + "/a.txt", "alpha"));
    ASSERT_TRUE(writeFile(src + "/sub/b.bin", noise(300000, 1)));
    ASSERT_TRUE(writeFile(src + "/sub/deeper/c ñandú.txt", "non-ASCII name"));
    ASSERT_TRUE(writeFile(src + "/sub/skip.tmp", "excluded by mask"));
    ASSERT_TRUE(writeFile(src + "/cache/x.txt", "excluded folder"));
    ASSERT_TRUE(writeFile(src + "/empty.dat", ""));

    ZipArchiver zip;
    QStringList log;
    std::thread::id mainThread = std::this_thread::get_id();
    bool offThread = false;
    auto onMain = [&] { offThread |= std::this_thread::get_id() != mainThread; };
    zip.events().preprocessingFile = [&](QString& stored, const QString& source, qint64 size, bool& exclude) {
        onMain();
        log << "pre " + stored + " " + QString::number(size);
        EXPECT_TRUE(source.startsWith(iface(src))) << source.toStdString();
        if (stored.endsWith("empty.dat"))
            exclude = true;
    };
    zip.events().skippingFile
        = [&](const QString& name, int reason) { log << QString("skip %1 %2").arg(name).arg(reason); };
    int lastGlobal = -1, globalTotal = 0;
    zip.events().globalStatus = [&](int total, int processed, int, int pc) {
        onMain();
        EXPECT_GE(pc, lastGlobal);
        lastGlobal = pc;
        globalTotal = total;
        if (processed == total)
            log << "global done";
    };
    zip.events().tempFileProgress = [&](int pc) { log << QString("temp %1").arg(pc); };
    zip.events().writeProgress = [&](int pc) {
        if (pc == 100)
            log << "write 100";
    };
    zip.events().processCompleted = [&] { log << "completed"; };

    const QString archive = dir.filePath("out/backup ñ.zip");
    QDir().mkpath(dir.filePath("out"));
    zip.setArchiveName(iface(archive));
    zip.setPreservePaths(true);
    zip.setCompressionLevel(9);
    zip.setCompressionMethod(MethodDeflate);
    zip.setFilesToProcess("");
    zip.setFilesToExclude("");
    zip.addFileToProcess(iface(src) + "\\*<r>");
    zip.addFileToExclude("*.tmp");
    zip.addFileToExclude(iface(src) + "\\cache\\*<r>");
    EXPECT_EQ(zip.filesToExclude().count("\r\n"), 1);
    ASSERT_EQ(zip.compress(), ZipOk);
    EXPECT_FALSE(offThread) << "every event must reach the calling thread";

    const QStringList expected = { "pre a.txt 5", "pre empty.dat 0", "pre sub\\b.bin 300000",
        "pre sub\\deeper\\c ñandú.txt 14", "global done", "temp 100", "write 100", "completed" };
    EXPECT_EQ(log, expected) << log.join(" | ").toStdString();
    EXPECT_EQ(globalTotal, 3);
    EXPECT_EQ(lastGlobal, 100);

    QString out;
    EXPECT_EQ(run("unzip", { "-t", archive }, &out), 0) << out.toStdString();
    EXPECT_TRUE(out.contains("No errors detected")) << out.toStdString();
    EXPECT_EQ(run("/usr/bin/python3",
                  { "-c",
                      "import sys,zipfile; z=zipfile.ZipFile(sys.argv[1]); assert z.testzip() is None; "
                      "print('|'.join(sorted(z.namelist())))",
                      archive },
                  &out),
        0)
        << out.toStdString();
    EXPECT_EQ(out.trimmed(), "a.txt|sub/b.bin|sub/deeper/c ñandú.txt");

    // Listing: stored names with "\" and their sizes, and the status reaching 100.
    QStringList listed;
    int listPercent = 0;
    zip.events().listingFile = [&](const QString& name, qint64 size) { listed << name + "=" + QString::number(size); };
    zip.events().listStatus = [&](int pc) { listPercent = pc; };
    ASSERT_EQ(zip.listArchive(), ZipOk);
    EXPECT_EQ(listed, (QStringList { "a.txt=5", "sub\\b.bin=300000", "sub\\deeper\\c ñandú.txt=14" }));
    EXPECT_EQ(listPercent, 100);

    // Extract everything into a chosen folder: same bytes, same tree.
    const QString into = dir.filePath("restored");
    lastGlobal = -1;
    zip.setFilesToProcess("*");
    zip.setFilesToExclude("");
    zip.setExtractFolder(iface(into));
    QStringList unzipped;
    zip.events().unzipPreprocessingFile = [&](const QString& stored, QString& destination) {
        unzipped << stored;
        EXPECT_EQ(destination, iface(into) + "\\" + stored);
    };
    ASSERT_EQ(zip.extract(), ZipOk);
    EXPECT_EQ(unzipped.size(), 3);
    EXPECT_EQ(readFile(into + "/sub/b.bin"), noise(300000, 1));
    EXPECT_EQ(readFile(into + "/sub/deeper/c ñandú.txt"), "non-ASCII name");
    EXPECT_EQ(QFileInfo(into + "/a.txt").lastModified().toSecsSinceEpoch() / 2,
        QFileInfo(src + "/a.txt").lastModified().toSecsSinceEpoch() / 2)
        << "the entry's time comes back";

    // Only what the list names: one stored name.
    QDir(into).removeRecursively();
    zip.setFilesToProcess("sub\\b.bin");
    ASSERT_EQ(zip.extract(), ZipOk);
    EXPECT_TRUE(QFile::exists(into + "/sub/b.bin"));
    EXPECT_FALSE(QFile::exists(into + "/a.txt"));
    EXPECT_TRUE(vmkTempDirs().isEmpty());
}

TEST(ZipArchiver, EveryMethodRoundTripsAndAnUnknownMethodKeepsThePrevious)
{
    QTemporaryDir dir;
    vmk::test::TestDrive drive(dir.path());
    ASSERT_TRUE(writeFile(dir.filePath("data.bin"), noise(200000, 9)));
    ZipArchiver zip;
    for (int method : { MethodDeflate, MethodBzip2, MethodBwt }) {
        zip.setCompressionMethod(method);
        EXPECT_EQ(zip.compressionMethod(), method);
        zip.setCompressionMethod(3);
        EXPECT_EQ(zip.compressionMethod(), method) << "an unknown number leaves the method";
        zip.setCompressionMethod(99);
        EXPECT_EQ(zip.compressionMethod(), method);

        const QString archive = dir.filePath(QString("m%1.zip").arg(method));
        zip.setArchiveName(iface(archive));
        zip.setFilesToProcess(iface(dir.filePath("data.bin")));
        zip.setCompressionLevel(9);
        ASSERT_EQ(zip.compress(), ZipOk);
        QString out;
        EXPECT_EQ(run("unzip", { "-v", archive }, &out), 0);
        EXPECT_TRUE(out.contains(method == MethodDeflate ? "Defl:X" : "BZip2")) << out.toStdString();
        EXPECT_EQ(run("unzip", { "-t", archive }, &out), 0) << out.toStdString();

        const QString into = dir.filePath(QString("x%1").arg(method));
        zip.setExtractFolder(iface(into));
        zip.setFilesToProcess("*");
        ASSERT_EQ(zip.extract(), ZipOk);
        EXPECT_EQ(readFile(into + "/data.bin"), noise(200000, 9));
    }
}

TEST(ZipArchiver, AbortLeavesNoArchiveAndNoTemporaryFile)
{
    QTemporaryDir dir;
    vmk::test::TestDrive drive(dir.path());
    for (int i = 0; i < 4; ++i)
        ASSERT_TRUE(writeFile(dir.filePath(QString("in/f%1.bin").arg(i)), noise(3 << 20, i)));
    const QString archive = dir.filePath("a.zip");
    PrivateTemp temp(dir.filePath("tmp"));
    const QStringList tempsBefore = vmkTempDirs();

    // Pressed while the library works (from the pump, as a Stop button would be).
    ZipArchiver zip;
    zip.setArchiveName(iface(archive));
    zip.setCompressionLevel(9);
    zip.setCompressionMethod(MethodBzip2);
    zip.setFilesToProcess(iface(dir.filePath("in")) + "\\*<r>");
    int pumps = 0;
    bool completed = false;
    vmk::SetPumpHook([&] {
        if (++pumps == 6)
            zip.setAbort(true);
    });
    zip.events().processCompleted = [&] { completed = true; };
    EXPECT_EQ(zip.compress(), ZipAborted);
    vmk::SetPumpHook(nullptr);
    EXPECT_TRUE(completed);
    EXPECT_GE(pumps, 6);
    EXPECT_FALSE(QFile::exists(archive));
    EXPECT_EQ(vmkTempDirs(), tempsBefore);

    // Pressed while the archive is being written to its destination.
    zip.events().writeProgress = [&](int) { zip.setAbort(true); };
    zip.setCompressionMethod(MethodDeflate);
    zip.setCompressionLevel(1);
    EXPECT_EQ(zip.compress(), ZipAborted);
    EXPECT_FALSE(QFile::exists(archive));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 0)
        << "no half archive beside the destination";
    EXPECT_EQ(vmkTempDirs(), tempsBefore);

    // And the next run starts with the flag clear.
    zip.events().writeProgress = nullptr;
    EXPECT_EQ(zip.compress(), ZipOk);
    EXPECT_TRUE(QFile::exists(archive));

    // Nothing to do: an empty list and a list that finds nothing.
    zip.setFilesToProcess("");
    EXPECT_EQ(zip.compress(), ZipNothingToDo);
    int skipReason = 0;
    zip.events().skippingFile = [&](const QString&, int reason) { skipReason = reason; };
    zip.addFileToProcess(iface(dir.filePath("missing")) + "\\*<r>");
    EXPECT_EQ(zip.compress(), ZipNothingToDo);
    EXPECT_EQ(skipReason, SkipNotFound);
}

TEST(ZipArchiver, ExtractionRefusesEscapingNamesAndDamagedEntries)
{
    QTemporaryDir dir;
    vmk::test::TestDrive drive(dir.path());
    const QString evil = dir.filePath("evil.zip");
    // Names another tool could put in an archive.
    ASSERT_TRUE(pythonZip(evil,
        { { "../escape.txt", "x" }, { "ok/../../escape2.txt", "x" }, { "C:/Windows/owned.txt", "x" },
            { "good/fine.txt", "fine" }, { "folder/", "" } }));
    ZipArchiver zip;
    const QString into = dir.filePath("into");
    const auto [result, refused] = extractAll(zip, evil, into);
    EXPECT_EQ(result, ZipFilesSkipped);
    EXPECT_EQ(
        refused, (QStringList { "..\\escape.txt 120", "ok\\..\\..\\escape2.txt 120", "C:\\Windows\\owned.txt 120" }));
    QStringList skipped;
    zip.events().skippingFile = [&](const QString& n, int r) { skipped << QString("%1 %2").arg(n).arg(r); };
    EXPECT_EQ(readFile(into + "/good/fine.txt"), "fine");
    EXPECT_TRUE(QFileInfo(into + "/folder").isDir());
    EXPECT_FALSE(QFile::exists(dir.filePath("escape.txt")));
    EXPECT_FALSE(QFile::exists(dir.filePath("escape2.txt")));

    // A flipped byte in the compressed data: the entry fails its check and no file appears.
    const QString good = dir.filePath("good.zip");
    ASSERT_TRUE(writeFile(dir.filePath("big.txt"), noise(100000, 4)));
    zip.setArchiveName(iface(good));
    zip.setFilesToProcess(iface(dir.filePath("big.txt")));
    ASSERT_EQ(zip.compress(), ZipOk);
    QByteArray bytes = readFile(good);
    bytes[30 + 7 + 5000] = static_cast<char>(bytes[30 + 7 + 5000] ^ 0x20);
    ASSERT_TRUE(writeFile(good, bytes));
    skipped.clear();
    zip.setFilesToProcess("*");
    const QString into2 = dir.filePath("into2");
    zip.setExtractFolder(iface(into2));
    EXPECT_EQ(zip.extract(), ZipFilesSkipped);
    EXPECT_EQ(skipped, QStringList { "big.txt 121" });
    EXPECT_FALSE(QFile::exists(into2 + "/big.txt"));
    EXPECT_TRUE(QDir(into2).entryList(QDir::Files | QDir::Hidden).isEmpty()) << "nor a temporary file";

    zip.setArchiveName(iface(dir.filePath("missing.zip")));
    EXPECT_EQ(zip.extract(), ZipArchiveUnreadable);
    EXPECT_EQ(zip.listArchive(), ZipArchiveUnreadable);
    ASSERT_TRUE(writeFile(dir.filePath("not.zip"), "not a zip at all"));
    zip.setArchiveName(iface(dir.filePath("not.zip")));
    EXPECT_EQ(zip.listArchive(), ZipArchiveUnreadable);
}

TEST(ZipArchiver, UpdatingKeepsEntriesAndStoredNamesFromTheEventRestoreToTheirPlace)
{
    QTemporaryDir dir;
    vmk::test::TestDrive drive(dir.path());
    ASSERT_TRUE(writeFile(dir.filePath("home/one.txt"), "1"));
    ASSERT_TRUE(writeFile(dir.filePath("home/two.txt"), "2"));
    const QString archive = dir.filePath("u.zip");
    ZipArchiver zip;
    zip.setArchiveName(iface(archive));
    // The backup's way: each file under its whole source path.
    zip.events().preprocessingFile = [](QString& stored, const QString& source, qint64, bool&) { stored = source; };
    zip.setFilesToProcess(iface(dir.filePath("home/one.txt")));
    ASSERT_EQ(zip.compress(), ZipOk);
    zip.setReplaceArchive(false);
    zip.setFilesToProcess(iface(dir.filePath("home/two.txt")));
    ASSERT_EQ(zip.compress(), ZipOk);
    QStringList listed;
    zip.events().listingFile = [&](const QString& n, qint64) { listed << n; };
    ASSERT_EQ(zip.listArchive(), ZipOk);
    ASSERT_EQ(listed.size(), 2);
    EXPECT_EQ(listed[0], iface(dir.filePath("home/one.txt")));

    // No folder chosen: a name with its drive goes back where it came from; the event may redirect it.
    QFile::remove(dir.filePath("home/one.txt"));
    zip.setExtractFolder("");
    zip.setFilesToProcess("*one.txt");
    QString proposed;
    zip.events().unzipPreprocessingFile = [&](const QString&, QString& destination) {
        proposed = destination;
        destination = iface(dir.filePath("alt/one.txt"));
    };
    ASSERT_EQ(zip.extract(), ZipOk);
    EXPECT_EQ(proposed, listed[0]);
    EXPECT_EQ(readFile(dir.filePath("alt/one.txt")), "1");
}

TEST(ZipArchiver, RootedNamesEnterAChosenFolderOnlyWhereTheOwnerPlacesThemAndAnAbsentDriveIsReported)
{
    QTemporaryDir dir;
    vmk::test::TestDrive drive(dir.path());
    const QString archive = dir.filePath("rooted.zip");
    ASSERT_TRUE(pythonZip(archive, { { "C:/Windows/owned.txt", "x" }, { "Q:/Datos/far.txt", "q" } }));
    ZipArchiver zip;
    QList<int> skippedCounts;
    zip.events().globalStatus = [&](int, int, int skipped, int) { skippedCounts << skipped; };
    QStringList refused;
    zip.events().skippingFile = [&](const QString& n, int r) { refused << QString("%1 %2").arg(n).arg(r); };
    zip.setArchiveName(iface(archive));
    zip.setFilesToProcess("*");

    // A folder is chosen: the owner's event leaving the name as it is does not let it out.
    const QString into = dir.filePath("into");
    zip.setExtractFolder(iface(into));
    zip.events().unzipPreprocessingFile = [](const QString&, QString&) {};
    EXPECT_EQ(zip.extract(), ZipFilesSkipped);
    EXPECT_EQ(refused, (QStringList { "C:\\Windows\\owned.txt 120", "Q:\\Datos\\far.txt 120" }));
    // Each skip is counted on screen when it happens.
    EXPECT_EQ(skippedCounts, (QList<int> { 1, 2 }));
    // Placed inside the folder by the owner, both are written there.
    refused.clear();
    zip.events().unzipPreprocessingFile = [&](const QString& stored, QString& destination) {
        destination = iface(into) + "\\" + stored.section('\\', -1);
    };
    EXPECT_EQ(zip.extract(), ZipOk);
    EXPECT_TRUE(refused.isEmpty());
    EXPECT_EQ(readFile(into + "/owned.txt"), "x");
    EXPECT_EQ(readFile(into + "/far.txt"), "q");

    // No folder chosen: a name goes back to its own drive, and Q: is not here.
    refused.clear();
    zip.setExtractFolder("");
    zip.setFilesToProcess("Q:\\Datos\\far.txt");
    zip.events().unzipPreprocessingFile = nullptr;
    EXPECT_EQ(zip.extract(), ZipFilesSkipped);
    EXPECT_EQ(refused, QStringList { QString("Q:\\Datos\\far.txt %1").arg(SkipDriveMissing) });
}

TEST(ZipArchiver, ExtractionFollowsNoLinkAlreadyInTheTarget)
{
    QTemporaryDir dir;
    vmk::test::TestDrive drive(dir.path());
    const QString outside = dir.filePath("outside");
    ASSERT_TRUE(writeFile(outside + "/victim.txt", "precious"));
    const QString into = dir.filePath("into");
    ASSERT_TRUE(QDir().mkpath(into + "/real"));
    // A link to a file, a link to a folder, and one deeper down, all pointing outside.
    ASSERT_TRUE(QFile::link(outside + "/victim.txt", into + "/f.txt"));
    ASSERT_TRUE(QFile::link(outside, into + "/sub"));
    ASSERT_TRUE(QFile::link(outside, into + "/real/deeper"));

    const QString archive = dir.filePath("links.zip");
    ASSERT_TRUE(pythonZip(archive,
        { { "f.txt", "overwritten through the link" }, { "sub/evil.txt", "written through the folder link" },
            { "sub/", "" }, { "real/deeper/evil2.txt", "written through the deeper link" },
            { "real/ok.txt", "fine" } }));

    ZipArchiver zip;
    const auto [result, skipped] = extractAll(zip, archive, into);
    EXPECT_EQ(result, ZipFilesSkipped);
    EXPECT_EQ(skipped, (QStringList { "f.txt 125", "sub\\evil.txt 125", "sub\\ 125", "real\\deeper\\evil2.txt 125" }));
    EXPECT_EQ(readFile(outside + "/victim.txt"), "precious");
    EXPECT_EQ(QDir(outside).entryList(QDir::Files | QDir::Hidden), QStringList { "victim.txt" });
    EXPECT_TRUE(QFileInfo(into + "/f.txt").isSymLink()) << "the link is not ours to replace";
    EXPECT_EQ(readFile(into + "/real/ok.txt"), "fine");
}

TEST(ZipArchiver, ExtractionRefusesOverlappingEntriesWhatDoesNotFitAndTruncation)
{
    QTemporaryDir dir;
    vmk::test::TestDrive drive(dir.path());
    const QString into = dir.filePath("into");
    ZipArchiver zip;
    zip.setFilesToProcess("*");
    zip.setExtractFolder(iface(into));

    const QString bomb = dir.filePath("bomb.zip");
    ASSERT_EQ(run("/usr/bin/python3", { "-c", kRawArchives, "overlap", bomb }), 0);
    QString out;
    ASSERT_EQ(run("/usr/bin/python3",
                  { "-c", "import sys,zipfile; print(len(zipfile.ZipFile(sys.argv[1]).namelist()))", bomb }, &out),
        0);
    ASSERT_EQ(out.trimmed(), "10") << "another reader sees the ten entries";
    zip.setArchiveName(iface(bomb));
    EXPECT_EQ(zip.extract(), ZipOverlappingEntries);
    EXPECT_TRUE(QDir(into).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden).isEmpty());

    // A declared size beyond the free space: nothing is written, and the stage says
    // which folder lacks how much.
    const QString huge = dir.filePath("huge.zip");
    ASSERT_EQ(run("/usr/bin/python3", { "-c", kRawArchives, "huge", huge }), 0);
    zip.setArchiveName(iface(huge));
    EXPECT_EQ(zip.extract(), ZipNoSpace);
    EXPECT_EQ(zip.spaceShortage().folder, iface(into));
    EXPECT_EQ(zip.spaceShortage().needed, qint64(1) << 50);
    EXPECT_GT(zip.spaceShortage().available, 0);
    EXPECT_TRUE(QDir(into).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden).isEmpty());
    {
        vmk::test::MessageRecorder messages;
        EXPECT_FALSE(vmk::DecompressFile(iface(huge), iface(into), zip));
        ASSERT_EQ(messages.texts.size(), 1);
        const QString text = messages.texts[0];
        EXPECT_TRUE(text.contains(iface(into))) << text.toStdString();
        EXPECT_TRUE(text.contains(QString::number(qint64(1) << 50))) << text.toStdString();
        EXPECT_TRUE(text.endsWith(" (9)")) << text.toStdString();
        messages.texts.clear();
        EXPECT_FALSE(vmk::DecompressFile(iface(bomb), iface(into), zip));
        ASSERT_EQ(messages.texts.size(), 1);
        EXPECT_TRUE(messages.texts[0].contains(iface(bomb))) << messages.texts[0].toStdString();
    }

    // Truncated: cut before its directory, or in the middle of it.
    const QString good = dir.filePath("good.zip");
    ASSERT_TRUE(writeFile(dir.filePath("data.bin"), noise(50000, 3)));
    zip.setArchiveName(iface(good));
    zip.setFilesToProcess(iface(dir.filePath("data.bin")));
    ASSERT_EQ(zip.compress(), ZipOk);
    const QByteArray whole = readFile(good);
    zip.setFilesToProcess("*");
    for (const qsizetype keep : { whole.size() / 2, whole.size() - 30, whole.size() - 1 }) {
        ASSERT_TRUE(writeFile(good, whole.left(keep)));
        EXPECT_EQ(zip.extract(), ZipArchiveUnreadable) << keep;
        EXPECT_FALSE(QFile::exists(into + "/data.bin"));
    }
}

TEST(ZipArchiver, DuplicateEntriesAreReportedAndCaseOnlyNamesAreAllWritten)
{
    QTemporaryDir dir;
    vmk::test::TestDrive drive(dir.path());
    const QString archive = dir.filePath("dup.zip");
    ASSERT_TRUE(pythonZip(archive,
        { { "a.txt", "first" }, { "xt_mark.h", "lower" }, { "xt_MARK.h", "upper" }, { "a.txt", "second" },
            { "Dir/x.txt", "one" }, { "dir/x.txt", "two" } }));
    ZipArchiver zip;
    const QString into = dir.filePath("into");
    const auto [result, skipped] = extractAll(zip, archive, into);
    EXPECT_EQ(result, ZipFilesSkipped);
    EXPECT_EQ(skipped, QStringList { "a.txt 123" });
    EXPECT_EQ(readFile(into + "/a.txt"), "first");
    EXPECT_EQ(readFile(into + "/xt_mark.h"), "lower");
    EXPECT_EQ(readFile(into + "/xt_MARK.h"), "upper");
    EXPECT_EQ(readFile(into + "/Dir/x.txt"), "one");
    EXPECT_EQ(readFile(into + "/dir/x.txt"), "two");

    // Extracting again over the files of the last run replaces them: that is no duplicate.
    EXPECT_EQ(extractAll(zip, archive, into), qMakePair(int(ZipFilesSkipped), QStringList { "a.txt 123" }));
    EXPECT_EQ(QDir(into).entryList(QDir::Files | QDir::Hidden).size(), 3) << "no temporary file is left";
}

TEST(ZipArchiver, OddNamesAreCompressedAsThemselvesAndUnreadableEntriesAreReported)
{
    QTemporaryDir dir;
    vmk::test::TestDrive drive(dir.path());
    PrivateTemp temp(dir.filePath("tmp"));
    const QString src = dir.filePath("src");
    ASSERT_TRUE(writeFile(src + "/xt_mark.h", "lower"));
    ASSERT_TRUE(writeFile(src + "/xt_MARK.h", "upper"));
    ASSERT_TRUE(writeFile(src + "/a*b.txt", "star"));
    ASSERT_TRUE(writeFile(src + "/a?b.txt", "question"));
    ASSERT_TRUE(writeFile(src + "/axb.txt", "x"));
    const QByteArray latin1 = QFile::encodeName(src) + "/caf\xe9.txt";
    ASSERT_TRUE(writeRawName(latin1, "X5O latin-1 name"));
    ASSERT_TRUE(QFile::link(src + "/gone", src + "/dangling"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(src + "/pipe").constData(), 0600), 0);
    const QString odd = QStringLiteral("caf") + QChar(0xF0E9) + QStringLiteral(".txt");

    for (const int method : { MethodDeflate, MethodBzip2 }) {
        ZipArchiver zip;
        zip.setCompressionMethod(method);
        QStringList skipped;
        zip.events().skippingFile = [&](const QString& n, int r) { skipped << QString("%1 %2").arg(n).arg(r); };
        const QString archive = dir.filePath(QString("tree%1.zip").arg(method));
        zip.setArchiveName(iface(archive));
        zip.setPreservePaths(true);
        zip.setFilesToProcess(iface(src) + "\\*<r>");
        ASSERT_EQ(zip.compress(), ZipOk);
        EXPECT_EQ(skipped, (QStringList { iface(src) + "\\dangling 126", iface(src) + "\\pipe 127" }));
        EXPECT_EQ(
            entriesOf(zip, archive), (QStringList { "a*b.txt", "a?b.txt", "axb.txt", odd, "xt_MARK.h", "xt_mark.h" }));
        QString out;
        EXPECT_EQ(run("unzip", { "-t", archive }, &out), 0) << out.toStdString();

        // Out again: every name with its own bytes, the Latin-1 one included.
        const QString into = dir.filePath(QString("into%1").arg(method));
        zip.setFilesToProcess("*");
        zip.setExtractFolder(iface(into));
        ASSERT_EQ(zip.extract(), ZipOk);
        EXPECT_EQ(readRawName(QFile::encodeName(into) + "/caf\xe9.txt"), "X5O latin-1 name");
        EXPECT_EQ(readFile(into + "/xt_mark.h"), "lower");
        EXPECT_EQ(readFile(into + "/xt_MARK.h"), "upper");
        EXPECT_EQ(readFile(into + "/a*b.txt"), "star");
    }

    // A line naming one file is that file, "*" and "?" included; a line naming
    // nothing is still a mask.
    ZipArchiver zip;
    const QString one = dir.filePath("one.zip");
    const QList<QPair<QString, QStringList>> cases = {
        { "\\a*b.txt", { "a*b.txt" } },
        { "\\a?b.txt", { "a?b.txt" } },
        { "\\xt_MARK.h", { "xt_MARK.h" } },
        { "\\" + odd, { odd } },
        { "\\x*.h", { "xt_MARK.h", "xt_mark.h" } },
    };
    for (const auto& [line, expected] : cases) {
        zip.setArchiveName(iface(one));
        zip.setFilesToProcess(iface(src) + line);
        ASSERT_EQ(zip.compress(), ZipOk) << line.toStdString();
        EXPECT_EQ(entriesOf(zip, one), expected) << line.toStdString();
    }
    // The folder a line names may be a link to one; links met below it are not entered.
    ASSERT_TRUE(QFile::link(src, dir.filePath("srclink")));
    ASSERT_TRUE(QFile::link(src, src + "/loop"));
    zip.setFilesToProcess(iface(dir.filePath("srclink")) + "\\x*.h<r>");
    ASSERT_EQ(zip.compress(), ZipOk);
    EXPECT_EQ(entriesOf(zip, one), (QStringList { "xt_MARK.h", "xt_mark.h" }));

    // Excluding one of two names that differ in case leaves the other.
    zip.setArchiveName(iface(one));
    zip.setFilesToProcess(iface(src) + "\\x*.h");
    zip.setFilesToExclude(iface(src) + "\\xt_mark.h");
    ASSERT_EQ(zip.compress(), ZipOk);
    EXPECT_EQ(entriesOf(zip, one), QStringList { "xt_MARK.h" });
    zip.setFilesToExclude("");

    // And the exact entry in an archive is picked the same way.
    zip.setArchiveName(iface(dir.filePath(QString("tree%1.zip").arg(MethodDeflate))));
    const QString picked = dir.filePath("picked");
    zip.setExtractFolder(iface(picked));
    for (const QString name : { "a?b.txt", "xt_mark.h" }) {
        QDir(picked).removeRecursively();
        zip.setFilesToProcess(name);
        ASSERT_EQ(zip.extract(), ZipOk);
        EXPECT_EQ(QDir(picked).entryList(QDir::Files), QStringList { name });
    }
    vmk::test::removeTree(dir.path());
}
