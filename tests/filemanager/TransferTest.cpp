#include "filemanager/Transfer.h"

#include "EngineTestSupport.h"
#include "TestSupport.h"
#include "TreeDrives.h"
#include "components/engine/Engine.h"
#include "foundation/Globals.h"
#include "foundation/Progress.h"
#include "foundation/Settings.h"
#include "platform/NativeName.h"
#include "platform/Pump.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace vmk;
using vmk::test::MessageRecorder;
using vmk::test::readFile;
using vmk::test::writeFile;

namespace
{
const QString kExists = QString::fromUtf8("¿El archivo ya existe, desea remplazarlo?") + "\r\n";
const QString kInfected = QString::fromUtf8("¡Archivo infectado! ¿Desea excluir este archivo?") + "\r\n";

// Names as raw bytes, for those that are not UTF-8.
bool writeRaw(const QByteArray& path, const QByteArray& data)
{
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0)
        return false;
    const bool ok = ::write(fd, data.constData(), data.size()) == data.size();
    ::close(fd);
    return ok;
}

QByteArray readRaw(const QByteArray& path)
{
    QByteArray out;
    const int fd = ::open(path.constData(), O_RDONLY);
    if (fd < 0)
        return "<missing>";
    char buf[4096];
    ssize_t n;
    while ((n = ::read(fd, buf, sizeof buf)) > 0)
        out.append(buf, n);
    ::close(fd);
    return out;
}

bool isLink(const QString& path)
{
    struct stat st;
    return ::lstat(QFile::encodeName(path).constData(), &st) == 0 && S_ISLNK(st.st_mode);
}

QByteArray bytes(int size, char first)
{
    QByteArray b(size, '\0');
    for (int i = 0; i < size; ++i)
        b[i] = static_cast<char>(first + i * 7 % 251);
    return b;
}

// Every file below a folder, relative, with its bytes.
QMap<QString, QByteArray> tree(const QString& folder)
{
    QMap<QString, QByteArray> out;
    QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString p = it.next();
        out.insert(QDir(folder).relativeFilePath(p), readFile(p));
    }
    return out;
}

class Transfer : public ::testing::Test
{
protected:
    void SetUp() override
    {
        S().DeleteFilesMode = "0";
        S().ScanFilesOperations = "0";
        S().EncripAlgorithm = 0;
        S().CompAlgorithm = 0;
        G().PassPhrase = "clave de prueba";
        G().CancelRequested = false;
        G().MoveFlag = false;
        G().EngineLoaded = false;
        G().ProgramFolder = "E:\\VMK";
        QDir().mkpath(m_drives.device() + "/VMK");
        m_oldData = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_drives.host() + "/data"));
        m_labelsBefore = SetTransferLabelsHook([this](const QString& n, const QString& f) { labels << n + "|" + f; });
        m_totalBefore = SetProgressBarTHook([this](int p) { total << p; });
    }
    void TearDown() override
    {
        SetTransferLabelsHook(m_labelsBefore);
        SetProgressBarTHook(m_totalBefore);
        SetPumpHook({});
        if (m_oldData.isEmpty())
            qunsetenv("XDG_DATA_HOME");
        else
            qputenv("XDG_DATA_HOME", m_oldData);
        G().MoveFlag = false;
        G().CancelRequested = false;
        G().OperationCode = 0;
        G().ProgramFolder.clear();
        if (G().EngineLoaded)
            engine::UnLoadEngine();
        G().EngineLoaded = false;
        // The temporary folders hold names that are not UTF-8, which QDir cannot remove.
        test::removeTree(m_drives.host());
        test::removeTree(m_drives.device());
    }
    QString h(const QString& rel) const { return m_drives.host() + "/" + rel; }
    QString d(const QString& rel) const { return m_drives.device() + "/" + rel; }
    void run(int code, bool move, const QString& source, const QString& target, const QString& folderName = {})
    {
        G().OperationCode = code;
        G().MoveFlag = move;
        TransferItem(source, target, folderName);
    }
    // A folder of three levels: a.txt, b.bin (three blocks and a bit), sub/c.txt, sub/deeper/d.txt.
    void makeNested(const QString& root)
    {
        ASSERT_TRUE(writeFile(root + "/a.txt", "alpha"));
        ASSERT_TRUE(writeFile(root + "/b.bin", bytes(3 * 10240 + 17, 'b')));
        ASSERT_TRUE(writeFile(root + "/sub/c.txt", "gamma"));
        ASSERT_TRUE(writeFile(root + "/sub/deeper/d.txt", bytes(10240, 'd')));
    }

    test::TreeDrives m_drives;
    MessageRecorder messages { 6 };
    QStringList labels;
    QList<int> total;

private:
    QByteArray m_oldData;
    TransferLabelsHook m_labelsBefore;
    ProgressHook m_totalBefore;
};
} // namespace

TEST_F(Transfer, CopyAndMoveOfAFileAndOfANestedFolder)
{
    ASSERT_TRUE(writeFile(h("Documentos/one.txt"), bytes(10240, 'x')));
    run(TransferCopy, false, "C:\\Documentos\\one.txt", "E:\\");
    EXPECT_EQ(readFile(d("one.txt")), bytes(10240, 'x')) << "exactly one block";
    EXPECT_TRUE(QFile::exists(h("Documentos/one.txt")));
    EXPECT_EQ(G().TotalFiles, 1);
    EXPECT_EQ(labels, QStringList { "one.txt|Documentos" });
    EXPECT_TRUE(total.isEmpty()) << "a single file leaves the item's bar alone";
    EXPECT_EQ(TN().Done, QStringList { "E:\\one.txt" });

    // A file already there is replaced without a question.
    ASSERT_TRUE(writeFile(h("Documentos/one.txt"), "new"));
    run(TransferCopy, true, "C:\\Documentos\\one.txt", "E:\\");
    EXPECT_EQ(readFile(d("one.txt")), "new");
    EXPECT_FALSE(QFile::exists(h("Documentos/one.txt")));
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join('\n').toStdString();

    makeNested(h("Documentos/Set"));
    const auto before = tree(h("Documentos/Set"));
    labels.clear();
    run(TransferCopy, false, "C:\\Documentos\\Set\\", "E:\\", "Set");
    EXPECT_EQ(tree(d("Set")), before);
    EXPECT_EQ(G().TotalFiles, 4);
    EXPECT_EQ(G().DoneFiles, 4);
    EXPECT_EQ(total.last(), 100);
    EXPECT_EQ(labels.size(), 4);
    EXPECT_TRUE(labels.contains("c.txt|C:\\Documentos\\Set\\sub")) << labels.join(' ').toStdString();

    run(TransferCopy, true, "E:\\Set\\", "C:\\Escritorio", "Set");
    EXPECT_EQ(tree(h("Escritorio/Set")), before);
    EXPECT_FALSE(QFileInfo::exists(d("Set"))) << "the emptied folders go too";
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join('\n').toStdString();

    // A target that is no folder is refused before anything is done.
    run(TransferCopy, false, "C:\\Escritorio\\Set\\", "E:\\missing", "Set");
    EXPECT_EQ(messages.texts.value(0), QString::fromUtf8("¡Ruta destino inválida!") + "\r\nE:\\missing");
    EXPECT_FALSE(QFileInfo::exists(d("missing")));
}

TEST_F(Transfer, CompressDecompressEncryptDecryptOfAFileAndOfANestedFolder)
{
    makeNested(h("Set"));
    const auto before = tree(h("Set"));
    QDir().mkpath(d("Packed"));
    QDir().mkpath(d("Sealed"));
    QDir().mkpath(h("Back"));

    run(TransferCompress, false, "C:\\Set\\", "E:\\Packed", "Set");
    ASSERT_EQ(tree(d("Packed/Set")).keys(), before.keys()) << "each file its own archive, under its own name";
    EXPECT_TRUE(readFile(d("Packed/Set/a.txt")).startsWith("PK"));
    run(TransferDecompress, true, "E:\\Packed\\Set\\", "C:\\Back", "Set");
    EXPECT_EQ(tree(h("Back/Set")), before);
    EXPECT_FALSE(QFileInfo::exists(d("Packed/Set"))) << "moved by decompression";

    run(TransferEncrypt, false, "C:\\Set\\", "E:\\Sealed", "Set");
    ASSERT_EQ(tree(d("Sealed/Set")).keys(), before.keys());
    EXPECT_NE(readFile(d("Sealed/Set/a.txt")), "alpha");
    QDir().mkpath(h("Open"));
    run(TransferDecrypt, false, "E:\\Sealed\\Set\\", "C:\\Open", "Set");
    EXPECT_EQ(tree(h("Open/Set")), before);
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join('\n').toStdString();

    // Single files, each stage; the name stays.
    run(TransferCompress, false, "C:\\Set\\b.bin", "E:\\");
    run(TransferDecompress, false, "E:\\b.bin", "C:\\Back");
    EXPECT_EQ(readFile(h("Back/b.bin")), before["b.bin"]);
    run(TransferEncrypt, true, "C:\\Back\\b.bin", "E:\\Sealed");
    EXPECT_FALSE(QFile::exists(h("Back/b.bin")));
    run(TransferDecrypt, true, "E:\\Sealed\\b.bin", "C:\\Back");
    EXPECT_EQ(readFile(h("Back/b.bin")), before["b.bin"]);
    EXPECT_FALSE(QFile::exists(d("Sealed/b.bin")));

    // A wrong pass phrase leaves no output, and a move keeps its source.
    run(TransferEncrypt, false, "C:\\Back\\b.bin", "E:\\Sealed");
    G().PassPhrase = "otra";
    QDir().mkpath(h("Wrong"));
    run(TransferDecrypt, true, "E:\\Sealed\\b.bin", "C:\\Wrong");
    EXPECT_FALSE(QFile::exists(h("Wrong/b.bin")));
    EXPECT_TRUE(QFile::exists(d("Sealed/b.bin")));
    EXPECT_EQ(QDir(h("Wrong")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList())
        << "no temporary file left behind";
    EXPECT_EQ(TN().Failed, QStringList { "E:\\Sealed\\b.bin" });
}

TEST_F(Transfer, CancelInTheSecondOfThreeItemsStopsThereAndTheThirdIsNotBegun)
{
    ASSERT_TRUE(writeFile(h("1.bin"), bytes(5 * 10240, '1')));
    ASSERT_TRUE(writeFile(h("2.bin"), bytes(40 * 10240, '2')));
    ASSERT_TRUE(writeFile(h("3.bin"), bytes(5 * 10240, '3')));
    const QStringList clipboard { "C:\\1.bin", "C:\\2.bin", "C:\\3.bin" };
    int item = 0;
    int pumps = 0;
    // Barra's cancel button, pressed while the second item copies its blocks.
    SetPumpHook([&] {
        if (item == 2 && ++pumps == 3)
            G().CancelRequested = true;
    });
    // The verb's loop as the screen runs it: one item a tick, and a cancel ends the list.
    G().CancelRequested = false;
    for (int index = 1; index <= clipboard.size(); ++index) {
        item = index;
        run(TransferCopy, true, clipboard[index - 1], "E:\\");
        if (G().CancelRequested)
            index = clipboard.size();
    }
    EXPECT_EQ(readFile(d("1.bin")), bytes(5 * 10240, '1'));
    EXPECT_FALSE(QFile::exists(h("1.bin")));
    EXPECT_FALSE(QFile::exists(d("2.bin"))) << "the file in progress is removed";
    EXPECT_TRUE(QFile::exists(h("2.bin"))) << "and its source stays";
    EXPECT_EQ(item, 2);
    EXPECT_FALSE(QFile::exists(d("3.bin")));
    EXPECT_TRUE(QFile::exists(h("3.bin")));
    EXPECT_EQ(QDir(d("")).entryList(QDir::Files | QDir::Hidden), QStringList { "1.bin" });

    // In a folder walk the cancel is seen at the next entry.
    makeNested(h("Set"));
    G().CancelRequested = false;
    int entries = 0;
    SetPumpHook([&] {
        if (++entries == 8)
            G().CancelRequested = true;
    });
    run(TransferCopy, false, "C:\\Set\\", "E:\\", "Set");
    EXPECT_LT(tree(d("Set")).size(), 4);
    EXPECT_TRUE(G().CancelRequested);
}

TEST_F(Transfer, ARefusedOverwriteKeepsThatFileAndItsFolderOnAMove)
{
    makeNested(h("Set"));
    ASSERT_TRUE(writeFile(d("Set/sub/c.txt"), "kept"));
    messages.script({ 7 });
    run(TransferCopy, true, "C:\\Set\\", "E:\\", "Set");
    EXPECT_EQ(messages.texts, QStringList { kExists + "c.txt" });
    EXPECT_EQ(readFile(d("Set/sub/c.txt")), "kept");
    EXPECT_EQ(readFile(h("Set/sub/c.txt")), "gamma") << "the refused file stays at the source";
    EXPECT_FALSE(QFile::exists(h("Set/a.txt")));
    EXPECT_FALSE(QFile::exists(h("Set/sub/deeper/d.txt")));
    EXPECT_FALSE(QFileInfo::exists(h("Set/sub/deeper")));
    EXPECT_EQ(tree(h("Set")).keys(), QStringList { "sub/c.txt" });
    EXPECT_EQ(G().DoneFiles, 3) << "a refused file is not counted";
    EXPECT_EQ(TN().Kept, QStringList { "E:\\Set\\sub\\c.txt" });

    // Answered yes, it is replaced.
    messages.texts.clear();
    messages.script({ 6 });
    run(TransferCopy, true, "C:\\Set\\", "E:\\", "Set");
    EXPECT_EQ(readFile(d("Set/sub/c.txt")), "gamma");
    EXPECT_FALSE(QFileInfo::exists(h("Set")));
}

TEST_F(Transfer, AnEmptyFileIsNotCopiedAndStaysOnAMove)
{
    ASSERT_TRUE(writeFile(h("empty.txt"), ""));
    run(TransferCopy, true, "C:\\empty.txt", "E:\\");
    EXPECT_FALSE(QFile::exists(d("empty.txt")));
    EXPECT_TRUE(QFile::exists(h("empty.txt")));
    EXPECT_TRUE(messages.texts.isEmpty());
    ASSERT_TRUE(writeFile(h("Set/empty.txt"), ""));
    ASSERT_TRUE(writeFile(h("Set/full.txt"), "x"));
    run(TransferCopy, true, "C:\\Set\\", "E:\\", "Set");
    EXPECT_EQ(tree(d("Set")).keys(), QStringList { "full.txt" });
    EXPECT_TRUE(QFile::exists(h("Set/empty.txt")));
    EXPECT_EQ(TN().Failed, QStringList { "C:\\Set\\empty.txt" });
}

TEST_F(Transfer, AFileFoundInfectedOnTheWayIsLeftOut)
{
    ASSERT_EQ(test::loadBuiltEngine(), 0);
    G().EngineLoaded = true;
    S().ScanFilesOperations = "1";
    // Enough files that the scans run ahead of the copy.
    for (int i = 0; i < 30; ++i)
        ASSERT_TRUE(writeFile(h(QString("Set/f%1.txt").arg(i, 2, 10, QChar('0'))), bytes(2000 + i, 'f')));
    ASSERT_TRUE(writeFile(h("Set/f15 eicar.com"), test::eicar()));
    ASSERT_TRUE(writeFile(h("Set/z/eicar2.com"), test::eicar()));
    messages.script({ 6, 7 });
    run(TransferCopy, true, "C:\\Set\\", "E:\\", "Set");
    EXPECT_EQ(
        messages.texts, QStringList({ kInfected + "C:\\Set\\f15 eicar.com", kInfected + "C:\\Set\\z\\eicar2.com" }))
        << "asked in the walk's order, naming the source";
    EXPECT_FALSE(QFile::exists(d("Set/f15 eicar.com")));
    EXPECT_TRUE(QFile::exists(h("Set/f15 eicar.com"))) << "excluded: it stays where it was";
    EXPECT_TRUE(QFile::exists(d("Set/z/eicar2.com"))) << "answered no: it goes";
    EXPECT_EQ(tree(d("Set")).size(), 31);
    EXPECT_EQ(TN().Excluded, QStringList { "C:\\Set\\f15 eicar.com" });

    // A sealed threat is judged once opened: the result is removed and the sealed file kept.
    S().ScanFilesOperations = "0";
    run(TransferEncrypt, false, "C:\\Set\\f15 eicar.com", "E:\\");
    S().ScanFilesOperations = "1";
    messages.texts.clear();
    messages.script({ 6 });
    run(TransferDecrypt, true, "E:\\f15 eicar.com", "C:\\Escritorio");
    EXPECT_EQ(messages.texts, QStringList { kInfected + "C:\\Escritorio\\f15 eicar.com" });
    EXPECT_FALSE(QFile::exists(h("Escritorio/f15 eicar.com")));
    EXPECT_TRUE(QFile::exists(d("f15 eicar.com")));
    EXPECT_EQ(QDir(h("Escritorio")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList());

    // The scan step itself.
    messages.texts.clear();
    messages.script({ 6 });
    EXPECT_TRUE(ScanTransferFile("C:\\Set\\f15 eicar.com"));
    EXPECT_TRUE(G().ExcludeFile);
    EXPECT_FALSE(ScanTransferFile("C:\\Set\\f00.txt"));
}

TEST_F(Transfer, DeleteInEachMode)
{
    makeNested(h("Del0"));
    ASSERT_TRUE(writeFile(h("single.txt"), "s"));
    S().DeleteFilesMode = "0";
    run(TransferDelete, false, QString(), "C:\\single.txt");
    EXPECT_FALSE(QFile::exists(h("single.txt")));
    run(TransferDelete, false, QString(), "C:\\Del0\\");
    EXPECT_FALSE(QFileInfo::exists(h("Del0")));
    EXPECT_EQ(G().TotalFiles, 4);

    S().DeleteFilesMode = "1";
    makeNested(h("Del1"));
    ASSERT_TRUE(writeFile(h("trash me.txt"), "t"));
    run(TransferDelete, false, QString(), "C:\\trash me.txt");
    run(TransferDelete, false, QString(), "C:\\Del1\\");
    EXPECT_FALSE(QFile::exists(h("trash me.txt")));
    EXPECT_FALSE(QFileInfo::exists(h("Del1")));
    QStringList trashed;
    for (const QString& root : { h("data/Trash/files"), QDir::homePath() + "/.local/share/Trash/files" }) {
        QDirIterator it(root, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            trashed << QFileInfo(it.next()).fileName();
    }
    EXPECT_TRUE(trashed.contains("trash me.txt")) << trashed.join(' ').toStdString();
    EXPECT_TRUE(trashed.contains("d.txt"));

    S().DeleteFilesMode = "2";
    makeNested(h("Del2"));
    QDir().mkpath(h("Del2/empty/inner"));
    run(TransferDelete, false, QString(), "C:\\Del2\\");
    EXPECT_EQ(tree(h("Del2")).size(), 4) << "files stay";
    EXPECT_FALSE(QFileInfo::exists(h("Del2/empty"))) << "empty folders go";
    ASSERT_TRUE(writeFile(h("stays.txt"), "s"));
    run(TransferDelete, false, QString(), "C:\\stays.txt");
    EXPECT_TRUE(QFile::exists(h("stays.txt")));

    // The delete walk never reads "\name" on the current drive, and never runs on a
    // drive root or on the program's folder.
    S().DeleteFilesMode = "0";
    ASSERT_TRUE(writeFile(d("a.txt"), "root of E:"));
    const QString oldCurrent = QDir::currentPath();
    QDir::setCurrent(d(""));
    makeNested(h("Del3"));
    run(TransferDelete, false, QString(), "C:\\Del3\\");
    QDir::setCurrent(oldCurrent);
    EXPECT_EQ(readFile(d("a.txt")), "root of E:");
    EXPECT_FALSE(QFileInfo::exists(h("Del3")));
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join('\n').toStdString();

    ASSERT_TRUE(writeFile(d("VMK/Vormak.exe"), "program"));
    run(TransferDelete, false, QString(), "E:\\");
    run(TransferDelete, false, QString(), "E:\\VMK\\");
    EXPECT_EQ(readFile(d("VMK/Vormak.exe")), "program");
    EXPECT_EQ(readFile(d("a.txt")), "root of E:");
    ASSERT_EQ(messages.texts.size(), 2);
    EXPECT_TRUE(messages.texts[1].contains(QString::fromUtf8("contiene el programa")));
}

TEST_F(Transfer, AttackerNamesAreCarriedLikeAnyOther)
{
    const QStringList names { "Case.txt", "case.txt", "star*.txt", "what?.txt", "back\\slash.txt", "pipe|.txt",
        "quote\".txt", "new\nline.txt", "-dash.txt", ".hidden" };
    QDir().mkpath(h("Odd"));
    for (const QString& n : names)
        ASSERT_TRUE(writeRaw(QFile::encodeName(h("Odd/") + n), n.toUtf8())) << n.toStdString();
    const QByteArray latin = QFile::encodeName(h("Odd/")) + "caf\xe9 \xff.txt";
    ASSERT_TRUE(writeRaw(latin, "latin-1"));
    // A name that differs only in case stands in the target already.
    QDir().mkpath(d("Odd"));
    ASSERT_TRUE(writeFile(d("Odd/CASE.TXT"), "theirs"));

    run(TransferCopy, true, "C:\\Odd\\", "E:\\", "Odd");
    for (const QString& n : names)
        EXPECT_EQ(readRaw(QFile::encodeName(d("Odd/") + n)), n.toUtf8()) << n.toStdString();
    EXPECT_EQ(readRaw(QFile::encodeName(d("Odd/")) + "caf\xe9 \xff.txt"), "latin-1");
    EXPECT_EQ(readFile(d("Odd/CASE.TXT")), "theirs");
    EXPECT_FALSE(QFileInfo::exists(h("Odd")))
        << "every source went, the raw name too: "
        << QDir(h("Odd")).entryList(QDir::AllEntries | QDir::Hidden).join('/').toStdString();
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join('\n').toStdString();

    // One by one as single files: the case twin is left alone.
    ASSERT_TRUE(writeFile(h("Single/Case.txt"), "mine"));
    run(TransferCopy, false, "C:\\Single\\Case.txt", "E:\\Odd");
    EXPECT_EQ(readFile(d("Odd/Case.txt")), "mine");
    EXPECT_EQ(readFile(d("Odd/CASE.TXT")), "theirs");
    EXPECT_EQ(readFile(d("Odd/case.txt")), "case.txt");
    const QString raw = NativeName::fromBytes(QFile::encodeName(d("Odd/")) + "caf\xe9 \xff.txt");
    run(TransferCopy, false, DriveMap::instance().toLogical(raw), "C:\\Single");
    EXPECT_EQ(readRaw(QFile::encodeName(h("Single/")) + "caf\xe9 \xff.txt"), "latin-1");
}

TEST_F(Transfer, LinksAreNeitherFollowedOutOfTheTreeNorWrittenThrough)
{
    ASSERT_TRUE(writeFile(h("secret.txt"), "secret"));
    QDir().mkpath(h("Outside"));
    ASSERT_TRUE(writeFile(h("Outside/o.txt"), "outside"));
    ASSERT_TRUE(writeFile(h("Src/real.txt"), "real"));
    ASSERT_EQ(
        ::symlink(QFile::encodeName(h("secret.txt")).constData(), QFile::encodeName(h("Src/out")).constData()), 0);
    ASSERT_EQ(::symlink("real.txt", QFile::encodeName(h("Src/in")).constData()), 0);
    ASSERT_EQ(
        ::symlink(QFile::encodeName(h("Outside")).constData(), QFile::encodeName(h("Src/dirlink")).constData()), 0);
    ASSERT_EQ(::symlink("nowhere", QFile::encodeName(h("Src/dangling")).constData()), 0);
    ASSERT_EQ(::mkfifo(QFile::encodeName(h("Src/fifo")).constData(), 0644), 0);

    run(TransferCopy, false, "C:\\Src\\", "E:\\", "Src");
    EXPECT_EQ(tree(d("Src")), (QMap<QString, QByteArray> { { "real.txt", "real" }, { "in", "real" } }));
    EXPECT_FALSE(isLink(d("Src/in"))) << "carried as the file it names";
    EXPECT_EQ(messages.texts.size(), 4) << messages.texts.join('\n').toStdString();
    for (const QString& t : messages.texts)
        EXPECT_TRUE(t.startsWith(QString::fromUtf8("¡Enlace o archivo especial, no se copia!\r\nC:\\Src\\")));

    // Links already in the target: replaced on "yes", never written through.
    messages.texts.clear();
    QDir().mkpath(d("T/Src"));
    ASSERT_EQ(
        ::symlink(QFile::encodeName(h("secret.txt")).constData(), QFile::encodeName(d("T/Src/real.txt")).constData()),
        0);
    ASSERT_EQ(::symlink(QFile::encodeName(h("Outside")).constData(), QFile::encodeName(d("T/Src/sub")).constData()), 0);
    ASSERT_TRUE(writeFile(h("Src/sub/s.txt"), "s"));
    run(TransferCopy, false, "C:\\Src\\", "E:\\T", "Src");
    EXPECT_EQ(readFile(h("secret.txt")), "secret");
    EXPECT_EQ(readFile(d("T/Src/real.txt")), "real");
    EXPECT_FALSE(isLink(d("T/Src/real.txt")));
    EXPECT_FALSE(QFile::exists(h("Outside/s.txt"))) << "nothing written into a linked folder";
    EXPECT_TRUE(messages.texts.contains(
        QString::fromUtf8("¡La carpeta destino es un enlace, no se escribe en ella!\r\nE:\\T\\Src\\sub")))
        << messages.texts.join('\n').toStdString();

    // A single file onto a dangling link: the link is replaced, its target never made.
    ASSERT_EQ(
        ::symlink(QFile::encodeName(h("made-through.txt")).constData(), QFile::encodeName(d("real.txt")).constData()),
        0);
    run(TransferCopy, false, "C:\\Src\\real.txt", "E:\\");
    EXPECT_FALSE(QFileInfo::exists(h("made-through.txt")));
    EXPECT_EQ(readFile(d("real.txt")), "real");

    // Moving a folder deletes nothing behind its links.
    run(TransferCopy, true, "C:\\Src\\", "E:\\Moved", "Src");
    EXPECT_EQ(readFile(h("secret.txt")), "secret");
    EXPECT_EQ(readFile(h("Outside/o.txt")), "outside");
}

TEST_F(Transfer, AFolderIntoItselfOrOntoItselfIsRefused)
{
    makeNested(h("Set"));
    const auto before = tree(h("Set"));
    const QString text = QString::fromUtf8("¡No se puede copiar o mover una carpeta dentro de sí misma!\r\nC:\\Set\\");
    run(TransferCopy, false, "C:\\Set\\", "C:\\Set\\sub", "Set");
    run(TransferCopy, true, "C:\\Set\\", "C:\\Set", "Set");
    run(TransferCopy, false, "C:\\Set\\", "C:\\", "Set");
    ASSERT_TRUE(QFile::link(h("Set"), h("SetLink")));
    run(TransferCopy, false, "C:\\Set\\", "C:\\SetLink\\sub", "Set");
    EXPECT_EQ(messages.texts, QStringList({ text, text, text, text }));
    EXPECT_EQ(tree(h("Set")), before);

    // A file onto itself is refused as well.
    messages.texts.clear();
    run(TransferCopy, true, "C:\\Set\\a.txt", "C:\\Set");
    EXPECT_EQ(readFile(h("Set/a.txt")), "alpha");
    EXPECT_EQ(messages.texts,
        QStringList { QString::fromUtf8("¡El origen y el destino son el mismo archivo!\r\nC:\\Set\\a.txt") });
}
