#include "filemanager/Stages.h"
#include "components/zip/ZipArchiver.h"
#include "filemanager/StageValues.h"
#include "foundation/Globals.h"
#include "foundation/Progress.h"
#include "foundation/Settings.h"

#include "TestDrive.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace vmk;
using vmk::test::MessageRecorder;
using vmk::test::readFile;
using vmk::test::writeFile;

namespace
{
// The stages speak logical paths; the test's folder stands for a drive.
QString logical(const QString& native)
{
    return vmk::test::TestDrive::logical(native);
}

QByteArray content(qint64 size)
{
    QByteArray b(size, '\0');
    quint32 x = 12345;
    for (qint64 i = 0; i < size; ++i) {
        x = x * 1103515245u + 12345u;
        b[i] = (i / 8192) % 3 ? "Vormak stage text\r\n"[i % 19] : static_cast<char>(x >> 16);
    }
    return b;
}

QString tool(const QString& program, const QStringList& args)
{
    QProcess p;
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(program, args);
    p.waitForFinished(60000);
    return QString::fromUtf8(p.readAll()) + (p.exitCode() == 0 ? "" : "\nEXIT " + QString::number(p.exitCode()));
}
} // namespace

TEST(Stages, CompressThenDecompressGivesTheSameBytesUnderTheSameName)
{
    QTemporaryDir dir;
    vmk::test::TestDrive drive(dir.path());
    MessageRecorder messages;
    zip::ZipArchiver zipControl;
    QList<int> bar;
    const ProgressHook previous = SetProgressBarFHook([&](int p) { bar << p; });
    const struct {
        const char* name;
        qint64 size;
    } files[] = { { "empty.txt", 0 }, { "one.bin", 1 }, { "ten MB.dat", 10 << 20 }, { "año Ünïcødé 文件.txt", 3000 } };
    for (int index : { 0, 1, 2 }) {
        S().CompAlgorithm = index;
        for (const auto& f : files) {
            SCOPED_TRACE(QString("index %1 file %2").arg(index).arg(f.name).toStdString());
            const QString name = QString::fromUtf8(f.name);
            const QString src = dir.filePath("src/" + name), packed = dir.filePath("packed/" + name),
                          out = dir.filePath(QString("out%1").arg(index));
            const QByteArray bytes = content(f.size);
            ASSERT_TRUE(writeFile(src, bytes));
            QDir().mkpath(dir.filePath("packed"));
            bar.clear();
            ASSERT_TRUE(CompressFile(logical(src), logical(packed), zipControl));
            ASSERT_TRUE(QFile::exists(packed)) << "the archive has the source's name, no .zip";
            EXPECT_EQ(bar.last(), 100);
            const QString test = tool("unzip", { "-t", packed });
            EXPECT_TRUE(test.contains("No errors detected")) << test.toStdString();
            const QString names = tool("/usr/bin/python3",
                { "-c",
                    "import sys,zipfile\n"
                    "z=zipfile.ZipFile(sys.argv[1])\n"
                    "print(z.namelist(), z.infolist()[0].compress_type)",
                    packed });
            const int zipType = index == 2 ? 8 : 12;
            EXPECT_EQ(names.trimmed(), QString("['%1'] %2").arg(name).arg(zipType)) << names.toStdString();

            ASSERT_TRUE(DecompressFile(logical(packed), logical(out) + "\\", zipControl));
            EXPECT_EQ(readFile(out + "/" + name), bytes);
            EXPECT_EQ(QDir(out).entryList(QDir::Files).filter(name).size(), 1);
        }
    }
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join("|").toStdString();
    SetProgressBarFHook(previous);
}

TEST(Stages, ARenamedArchiveComesBackUnderItsNewNameAndIndexThreeKeepsTheMethod)
{
    QTemporaryDir dir;
    vmk::test::TestDrive drive(dir.path());
    MessageRecorder messages;
    zip::ZipArchiver zipControl;
    ASSERT_TRUE(writeFile(dir.filePath("report.txt"), content(50000)));
    S().CompAlgorithm = 2;
    ASSERT_TRUE(CompressFile(logical(dir.filePath("report.txt")), logical(dir.filePath("report.txt.z")), zipControl));
    ASSERT_TRUE(QFile::rename(dir.filePath("report.txt.z"), dir.filePath("renamed.txt")));
    SV().ArchiveEntryName = "renamed.txt";
    ASSERT_TRUE(DecompressFile(logical(dir.filePath("renamed.txt")), logical(dir.filePath("out")), zipControl));
    SV().ArchiveEntryName.clear();
    EXPECT_EQ(readFile(dir.filePath("out/renamed.txt")), content(50000));
    EXPECT_FALSE(QFile::exists(dir.filePath("out/report.txt")));

    // Deflate is in force; index 3 sets nothing, so deflate stays; index 0 brings bzip2.
    EXPECT_EQ(zipControl.compressionMethod(), 8);
    S().CompAlgorithm = 3;
    ASSERT_TRUE(CompressFile(logical(dir.filePath("report.txt")), logical(dir.filePath("a3")), zipControl));
    EXPECT_EQ(zipControl.compressionMethod(), 8);
    EXPECT_TRUE(tool("unzip", { "-v", dir.filePath("a3") }).contains("Defl:X"));
    S().CompAlgorithm = 0;
    ASSERT_TRUE(CompressFile(logical(dir.filePath("report.txt")), logical(dir.filePath("a0")), zipControl));
    EXPECT_TRUE(tool("unzip", { "-v", dir.filePath("a0") }).contains("BZip2"));
    EXPECT_TRUE(messages.texts.isEmpty());
}

TEST(Stages, EncryptAndDecryptRoundTripWithBothCiphers)
{
    QTemporaryDir dir;
    vmk::test::TestDrive drive(dir.path());
    MessageRecorder messages;
    G().PassPhrase = "la clave del dueño";
    const qint64 chunk = 1 << 20;
    for (int index : { 0, 1 }) {
        S().EncripAlgorithm = index;
        for (qint64 size : { qint64(0), qint64(1), chunk, chunk + 1, 3 * chunk + 17 }) {
            SCOPED_TRACE(QString("cipher %1 size %2").arg(index).arg(size).toStdString());
            const QString src = dir.filePath("clear"), sealed = dir.filePath("sealed"), back = dir.filePath("back");
            ASSERT_TRUE(writeFile(src, content(size)));
            ASSERT_TRUE(EncryptFile(logical(src), logical(sealed)));
            EXPECT_EQ(SV().CipherIndex, index);
            EXPECT_EQ(readFile(sealed).at(9), index) << "the file names its cipher";
            ASSERT_TRUE(DecryptFile(logical(sealed), logical(back)));
            EXPECT_EQ(readFile(back), content(size));
        }
    }
    // A file sealed with Twofish still opens after the setting moved to AES.
    S().EncripAlgorithm = 1;
    ASSERT_TRUE(EncryptFile(logical(dir.filePath("clear")), logical(dir.filePath("tf"))));
    S().EncripAlgorithm = 0;
    ASSERT_TRUE(DecryptFile(logical(dir.filePath("tf")), logical(dir.filePath("tf.out"))));
    EXPECT_EQ(readFile(dir.filePath("tf.out")), content(3 * chunk + 17));
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join("|").toStdString();
}

TEST(Stages, FailuresShowTheirMessagesAndLeaveNoOutput)
{
    QTemporaryDir dir;
    vmk::test::TestDrive drive(dir.path());
    MessageRecorder messages;
    zip::ZipArchiver zipControl;
    G().PassPhrase = "first password";
    S().EncripAlgorithm = 0;
    const qint64 chunk = 1 << 20;
    const QString src = dir.filePath("clear"), sealed = dir.filePath("sealed"), out = dir.filePath("out");
    ASSERT_TRUE(writeFile(src, content(3 * chunk)));
    ASSERT_TRUE(EncryptFile(logical(src), logical(sealed)));
    const QByteArray good = readFile(sealed);

    auto decryptFails = [&](const QByteArray& bytes, const QString& expected) {
        ASSERT_TRUE(writeFile(dir.filePath("bad"), bytes));
        messages.texts.clear();
        EXPECT_FALSE(DecryptFile(logical(dir.filePath("bad")), logical(out)));
        EXPECT_EQ(messages.texts, QStringList { expected });
        EXPECT_EQ(messages.kinds.last(), 0);
        EXPECT_FALSE(QFile::exists(out));
    };
    // The password changed: older sealed files stay closed to the new one.
    G().PassPhrase = "second password";
    decryptFails(good, "¡Error de decriptado!\n(5)");
    G().PassPhrase = "first password";
    QByteArray flipped = good;
    flipped[200] = static_cast<char>(flipped[200] ^ 4);
    decryptFails(flipped, "¡Error de decriptado!\n(6)");
    decryptFails(good.left(good.size() - 100), "¡Error de decriptado!\n(6)");
    const int h = 108, c = static_cast<int>(chunk) + 16;
    QByteArray swapped = good;
    swapped.replace(h, c, good.mid(h + c, c));
    swapped.replace(h + c, c, good.mid(h, c));
    decryptFails(swapped, "¡Error de decriptado!\n(6)");
    decryptFails("not sealed", "¡Error de decriptado!\n(3)");

    // An index no cipher answers to fails the set-up, untranslated, and writes nothing.
    messages.texts.clear();
    S().EncripAlgorithm = 3;
    EXPECT_FALSE(EncryptFile(logical(src), logical(out)));
    EXPECT_FALSE(DecryptFile(logical(sealed), logical(out)));
    EXPECT_EQ(messages.texts, (QStringList { "¡Error iniciando encriptador!(8)", "¡Error iniciando encriptador!(8)" }));
    EXPECT_FALSE(QFile::exists(out));
    S().EncripAlgorithm = 0;

    messages.texts.clear();
    const QString missing = logical(dir.filePath("missing.txt"));
    EXPECT_FALSE(EncryptFile(missing, logical(out)));
    EXPECT_FALSE(CompressFile(missing, logical(dir.filePath("z")), zipControl));
    EXPECT_FALSE(DecompressFile(logical(src), logical(dir.filePath("x")), zipControl));
    EXPECT_EQ(messages.texts,
        (QStringList {
            "¡Error de encriptado! (1)\n" + missing, "¡Error de compresión! (1)", "¡Error de descompresión! (3)" }));
    EXPECT_FALSE(QFile::exists(dir.filePath("z")));
}
