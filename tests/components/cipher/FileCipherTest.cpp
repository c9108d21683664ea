#include "components/cipher/FileCipher.h"

#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace vmk::cipher;
using vmk::test::readFile;
using vmk::test::writeFile;

namespace
{
// Bytes that differ from chunk to chunk, so a swapped chunk cannot decrypt to the same text.
QByteArray pattern(qint64 size, int start = 7)
{
    QByteArray b(size, '\0');
    quint32 x = 2166136261u ^ static_cast<quint32>(start);
    for (qint64 i = 0; i < size; ++i) {
        x = (x ^ static_cast<quint32>(i)) * 16777619u;
        b[i] = static_cast<char>(x >> 13);
    }
    return b;
}

SealOptions smallChunks(int chunk)
{
    SealOptions o;
    o.chunkSize = chunk;
    return o;
}

const QByteArray kPass = "contraseña del dueño";
} // namespace

TEST(FileCipher, RoundTripsEverySizeWithBothCiphers)
{
    QTemporaryDir dir;
    const int chunk = 4096;
    const qint64 sizes[] = { 0, 1, chunk - 1, chunk, chunk + 1, 3 * chunk, 3 * chunk + 17, 40 * chunk + 5 };
    for (CipherAlgorithm alg : { CipherAlgorithm::Aes256, CipherAlgorithm::Twofish256 }) {
        for (qint64 size : sizes) {
            SCOPED_TRACE(QString("cipher %1 size %2").arg(int(alg)).arg(size).toStdString());
            const QString src = dir.filePath("clear.bin"), sealed = dir.filePath("sealed.bin"),
                          back = dir.filePath("back.bin");
            const QByteArray clear = pattern(size);
            ASSERT_TRUE(writeFile(src, clear));
            ASSERT_EQ(FileCipher::encryptFile(src, sealed, kPass, alg, {}, smallChunks(chunk)), CipherError::None);
            const qint64 chunks = size / chunk + 1 - (size > 0 && size % chunk == 0 ? 1 : 0);
            EXPECT_EQ(QFileInfo(sealed).size(), FileCipher::kHeaderSize + size + 16 * chunks);
            if (size >= 64) {
                EXPECT_EQ(readFile(sealed).indexOf(clear.left(64)), -1) << "no clear text in the output";
            }
            ASSERT_EQ(FileCipher::decryptFile(sealed, back, kPass), CipherError::None);
            EXPECT_EQ(readFile(back), clear);
        }
    }

    // The real chunk size: one chunk plus one byte, and progress reaching 100.
    const QString src = dir.filePath("big.bin"), sealed = dir.filePath("big.sealed"), back = dir.filePath("big.back");
    const QByteArray clear = pattern(SealOptions::kDefaultChunkSize + 1, 3);
    ASSERT_TRUE(writeFile(src, clear));
    QList<int> seen;
    auto progress = [&](int p) {
        seen << p;
        return true;
    };
    ASSERT_EQ(FileCipher::encryptFile(src, sealed, kPass, CipherAlgorithm::Aes256, progress), CipherError::None);
    ASSERT_FALSE(seen.isEmpty());
    EXPECT_EQ(seen.last(), 100);
    ASSERT_EQ(FileCipher::decryptFile(sealed, back, kPass), CipherError::None);
    EXPECT_EQ(readFile(back), clear);

    // Two seals of the same file differ (own file key and nonce), yet both open.
    const QString sealed2 = dir.filePath("big.sealed2");
    ASSERT_EQ(FileCipher::encryptFile(src, sealed2, kPass, CipherAlgorithm::Aes256), CipherError::None);
    EXPECT_NE(readFile(sealed).mid(44), readFile(sealed2).mid(44));
}

TEST(FileCipher, SealingManyFilesDerivesTheKeyOnce)
{
    QTemporaryDir dir;
    ASSERT_TRUE(writeFile(dir.filePath("a"), "alpha"));
    // Warm the run's key for this pass phrase, then count.
    ASSERT_EQ(FileCipher::encryptFile(dir.filePath("a"), dir.filePath("s0"), "once", CipherAlgorithm::Aes256),
        CipherError::None);
    const int before = PassPhraseKey::derivationCount();
    for (int i = 1; i <= 50; ++i) {
        const QString s = dir.filePath(QString("s%1").arg(i));
        ASSERT_EQ(
            FileCipher::encryptFile(dir.filePath("a"), s, "once", CipherAlgorithm::Twofish256), CipherError::None);
        ASSERT_EQ(FileCipher::decryptFile(s, dir.filePath("b"), "once"), CipherError::None);
    }
    EXPECT_EQ(PassPhraseKey::derivationCount(), before);
}

TEST(FileCipher, DamageAndWrongPassPhraseAreDetectedAndLeaveNoOutput)
{
    QTemporaryDir dir;
    const int chunk = 1024;
    const QString src = dir.filePath("clear"), sealedPath = dir.filePath("sealed"), out = dir.filePath("out");
    const QByteArray clear = pattern(4 * chunk + 100);
    ASSERT_TRUE(writeFile(src, clear));
    for (CipherAlgorithm alg : { CipherAlgorithm::Aes256, CipherAlgorithm::Twofish256 }) {
        ASSERT_EQ(FileCipher::encryptFile(src, sealedPath, kPass, alg, {}, smallChunks(chunk)), CipherError::None);
        const QByteArray sealed = readFile(sealedPath);
        const int h = FileCipher::kHeaderSize, c = chunk + 16;

        auto expectFailure
            = [&](const QByteArray& bytes, const QByteArray& pass, CipherError expected, const char* what) {
                  SCOPED_TRACE(what);
                  const QString damaged = dir.filePath("damaged");
                  ASSERT_TRUE(writeFile(damaged, bytes));
                  QFile::remove(out);
                  EXPECT_EQ(FileCipher::decryptFile(damaged, out, pass), expected);
                  EXPECT_FALSE(QFile::exists(out)) << "a failed decrypt must leave no output";
                  EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).filter("out").size(), 0)
                      << "nor a temporary file";
              };

        expectFailure(sealed, "another pass phrase", CipherError::WrongPassPhrase, "wrong pass phrase");
        QByteArray flipped = sealed;
        flipped[h + c + 10] = static_cast<char>(flipped[h + c + 10] ^ 0x01);
        expectFailure(flipped, kPass, CipherError::DamagedData, "flipped bit in the second chunk");
        QByteArray flippedTag = sealed;
        flippedTag[sealed.size() - 1] = static_cast<char>(flippedTag[sealed.size() - 1] ^ 0x80);
        expectFailure(flippedTag, kPass, CipherError::DamagedData, "flipped bit in the last tag");
        QByteArray header = sealed;
        header[9] = static_cast<char>(alg == CipherAlgorithm::Aes256 ? 1 : 0);
        expectFailure(header, kPass, CipherError::WrongPassPhrase, "cipher byte changed in the header");
        QByteArray cost = sealed;
        cost[24] = static_cast<char>(cost[24] + 1);
        expectFailure(cost, kPass, CipherError::WrongPassPhrase, "chunk size changed in the header");
        expectFailure(sealed.left(sealed.size() - 1), kPass, CipherError::DamagedData, "last byte cut");
        expectFailure(sealed.left(h + 3 * c), kPass, CipherError::DamagedData, "last chunk dropped");
        expectFailure(sealed.left(h + 2), kPass, CipherError::Truncated, "cut inside the header");
        expectFailure(sealed.left(h), kPass, CipherError::Truncated, "header only");
        expectFailure(sealed + "junk", kPass, CipherError::DamagedData, "trailing junk");
        expectFailure(sealed + QByteArray(c, 'j'), kPass, CipherError::DamagedData, "a whole chunk of junk");
        QByteArray swapped = sealed;
        swapped.replace(h, c, sealed.mid(h + c, c));
        swapped.replace(h + c, c, sealed.mid(h, c));
        expectFailure(swapped, kPass, CipherError::DamagedData, "first two chunks swapped");
        expectFailure(QByteArray("plain text, not ours"), kPass, CipherError::NotSealedFile, "not a sealed file");
        QByteArray version = sealed;
        version[8] = 2;
        expectFailure(version, kPass, CipherError::UnsupportedFormat, "a later format version");
    }

    // A failed decrypt over an existing file leaves that file as it was.
    ASSERT_TRUE(writeFile(out, "keep me"));
    EXPECT_EQ(FileCipher::decryptFile(sealedPath, out, "wrong"), CipherError::WrongPassPhrase);
    EXPECT_EQ(readFile(out), "keep me");
    EXPECT_EQ(FileCipher::decryptFile(dir.filePath("missing"), out, kPass), CipherError::SourceUnreadable);
    EXPECT_EQ(FileCipher::encryptFile(src, dir.filePath("no/such/folder/x"), kPass, CipherAlgorithm::Aes256),
        CipherError::TargetUnwritable);

    // Cancelling from the progress callback leaves no output either.
    QFile::remove(out);
    EXPECT_EQ(FileCipher::encryptFile(
                  src, out, kPass, CipherAlgorithm::Aes256, [](int) { return false; }, smallChunks(chunk)),
        CipherError::Cancelled);
    EXPECT_FALSE(QFile::exists(out));
}

// The reader runs ahead on its own thread and the header is written last: a
// replaced target, a stop halfway and a read-ahead cut short must all leave
// either the old file or the whole new one, and nothing else in the folder.
TEST(FileCipher, ReplacingAndStoppingHalfwayKeepTheFolderClean)
{
    QTemporaryDir dir;
    const int chunk = 4096;
    const QString src = dir.filePath("clear"), target = dir.filePath("target"), back = dir.filePath("back");
    const QByteArray clear = pattern(100 * chunk + 3, 11);
    ASSERT_TRUE(writeFile(src, clear));
    auto folder = [&] { return QDir(dir.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name); };

    ASSERT_TRUE(writeFile(target, "an older file under the same name"));
    ASSERT_EQ(FileCipher::encryptFile(src, target, kPass, CipherAlgorithm::Aes256, {}, smallChunks(chunk)),
        CipherError::None);
    EXPECT_EQ(folder(), (QStringList { "clear", "target" })) << "the old file goes, no temporary file stays";
    ASSERT_EQ(FileCipher::decryptFile(target, back, kPass), CipherError::None);
    EXPECT_EQ(readFile(back), clear);
    ASSERT_EQ(FileCipher::decryptFile(target, back, kPass), CipherError::None) << "over an existing output";
    EXPECT_EQ(readFile(back), clear);
    const QByteArray sealed = readFile(target);

    // Stopped at half of the file, with blocks still read ahead.
    for (bool sealing : { true, false }) {
        SCOPED_TRACE(sealing ? "encrypt" : "decrypt");
        int calls = 0;
        auto stopHalfway = [&](int percent) {
            ++calls;
            return percent < 50;
        };
        const QString out = sealing ? target : back;
        const QByteArray before = readFile(out);
        const CipherError e = sealing
            ? FileCipher::encryptFile(src, out, kPass, CipherAlgorithm::Aes256, stopHalfway, smallChunks(chunk))
            : FileCipher::decryptFile(target, out, kPass, stopHalfway);
        EXPECT_EQ(e, CipherError::Cancelled);
        EXPECT_GE(calls, 40);
        EXPECT_EQ(readFile(out), before);
        EXPECT_EQ(folder(), (QStringList { "back", "clear", "target" }));
    }
    EXPECT_EQ(readFile(target), sealed);
}

namespace
{
const QByteArray kFixturePass = "fixture pass ñ";
QByteArray fixtureText()
{
    QByteArray t;
    for (int i = 0; t.size() < 10000; ++i)
        t += QByteArray("Vormak fixture línea ") + QByteArray::number(i) + "\r\n";
    return t;
}
struct Fixture {
    const char* name;
    CipherAlgorithm alg;
    int chunk;
    bool empty;
};
const Fixture kFixtures[] = {
    { "v1-aes-empty.vmks", CipherAlgorithm::Aes256, SealOptions::kDefaultChunkSize, true },
    { "v1-aes-chunks.vmks", CipherAlgorithm::Aes256, 4096, false },
    { "v1-twofish-chunks.vmks", CipherAlgorithm::Twofish256, 1000, false },
};
} // namespace

// Files sealed by an earlier build must open for good: these were written once
// (by the disabled test below) and are kept in the tree.
TEST(FileCipher, FixturesOfFormatVersionOneStillOpen)
{
    QTemporaryDir dir;
    for (const Fixture& f : kFixtures) {
        SCOPED_TRACE(f.name);
        const QString path = vmk::test::testDataDir() + "/stages/" + f.name;
        ASSERT_TRUE(QFile::exists(path));
        const QString out = dir.filePath(f.name);
        ASSERT_EQ(FileCipher::decryptFile(path, out, kFixturePass), CipherError::None);
        EXPECT_EQ(readFile(out), f.empty ? QByteArray() : fixtureText());
        EXPECT_EQ(FileCipher::decryptFile(path, out + "x", "not the pass"), CipherError::WrongPassPhrase);
    }
}

TEST(FileCipher, DISABLED_WriteFixtures)
{
    QTemporaryDir dir;
    for (const Fixture& f : kFixtures) {
        const QString src = dir.filePath("clear");
        ASSERT_TRUE(writeFile(src, f.empty ? QByteArray() : fixtureText()));
        ASSERT_EQ(FileCipher::encryptFile(src, vmk::test::testDataDir() + "/stages/" + f.name, kFixturePass, f.alg, {},
                      smallChunks(f.chunk)),
            CipherError::None);
    }
}
