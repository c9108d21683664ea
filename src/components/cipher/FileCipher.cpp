#include "components/cipher/FileCipher.h"

#include "components/cipher/ChunkReader.h"
#include "components/cipher/CryptoLibrary.h"
#include "components/cipher/GcmCipher.h"
#include "components/cipher/TargetFile.h"
#include "platform/NativeFile.h"

#include <QFile>

#include <gcrypt.h>

#include <algorithm>
#include <cstring>
#include <future>
#include <map>
#include <mutex>
#include <tuple>

namespace vmk::cipher
{
namespace
{
constexpr char kMagic[8] = { 'V', 'M', 'K', 'S', 'E', 'A', 'L', '\x1a' };
constexpr int kKdfArgon2id = 1;
constexpr int kSaltSize = 16;
constexpr int kWrapNonceSize = 12;
constexpr int kPrefixSize = 4;
constexpr int kOffWrapped = 60;
constexpr size_t kTag = GcmCipher::kTagSize;

void putU32(unsigned char* p, quint32 v)
{
    for (int i = 0; i < 4; ++i)
        p[i] = static_cast<unsigned char>(v >> (8 * i));
}

quint32 getU32(const unsigned char* p)
{
    return quint32(p[0]) | quint32(p[1]) << 8 | quint32(p[2]) << 16 | quint32(p[3]) << 24;
}

struct ChunkLabel {
    unsigned char nonce[12];
    unsigned char aad[9];
};

ChunkLabel chunkLabel(const unsigned char* prefix, quint64 index, bool final)
{
    ChunkLabel l {};
    std::memcpy(l.nonce, prefix, kPrefixSize);
    for (int i = 0; i < 8; ++i) {
        l.nonce[kPrefixSize + i] = static_cast<unsigned char>(index >> (8 * (7 - i)));
        l.aad[i] = static_cast<unsigned char>(index >> (8 * i));
    }
    l.aad[8] = final ? 1 : 0;
    return l;
}

// One salt per pass phrase and cost for the whole run: every file sealed in a run
// then shares one derived key, and only the file keys differ.
QByteArray runSalt(const QByteArray& passPhrase, const KdfParams& params)
{
    static std::mutex mutex;
    static std::map<std::tuple<QByteArray, unsigned, unsigned, unsigned>, QByteArray> salts;
    QByteArray digest(32, '\0');
    gcry_md_hash_buffer(GCRY_MD_SHA256, digest.data(), passPhrase.constData(), passPhrase.size());
    std::lock_guard lock(mutex);
    QByteArray& salt = salts[{ digest, params.iterations, params.memoryKiB, params.parallelism }];
    if (salt.isEmpty()) {
        salt.resize(kSaltSize);
        gcry_randomize(salt.data(), kSaltSize, GCRY_STRONG_RANDOM);
    }
    return salt;
}

// Blocks read ahead: about 8 MiB, at least two blocks.
int readAheadDepth(qint64 blockSize)
{
    return static_cast<int>(std::clamp<qint64>((8 << 20) / blockSize, 2, 8));
}

int percentOf(qint64 done, qint64 total)
{
    return total <= 0 ? 100 : static_cast<int>(done * 100 / total);
}

// Reports only changes of the percentage; false means stop.
class ProgressTicker
{
public:
    explicit ProgressTicker(const FileCipher::Progress& progress)
        : m_progress(progress)
    {
    }
    bool report(int percent)
    {
        if (!m_progress || percent == m_last)
            return true;
        m_last = percent;
        return m_progress(percent);
    }

private:
    const FileCipher::Progress& m_progress;
    int m_last = -1;
};
} // namespace

namespace
{
// The source by its host name, bytes that are not UTF-8 included (NativeName's
// form), which QFile's own naming would not reach.
bool openSource(QFile& in, const QString& source)
{
    const int fd = NativeFile::openDescriptor(source);
    if (fd < 0)
        return false;
    if (in.open(fd, QIODevice::ReadOnly | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle))
        return true;
    NativeFile::closeDescriptor(fd);
    return false;
}
} // namespace

CipherError FileCipher::encryptFile(const QString& source, const QString& target, const QByteArray& passPhrase,
    CipherAlgorithm algorithm, const Progress& progress, const SealOptions& options)
{
    if (!EnsureCryptoLibrary())
        return CipherError::LibraryFailure;
    if (!CipherAlgorithmFromIndex(static_cast<int>(algorithm)))
        return CipherError::UnknownCipher;
    if (options.chunkSize < SealOptions::kMinChunkSize || options.chunkSize > SealOptions::kMaxChunkSize
        || !options.kdf.isAcceptable())
        return CipherError::UnsupportedSetting;

    QFile in;
    if (!openSource(in, source))
        return CipherError::SourceUnreadable;
    const qint64 total = in.size();

    // The data is sealed under a random file key, and only the wrapping of that
    // key needs the slow pass-phrase key: derive it while the data streams, and
    // write the header last.
    const QByteArray salt = runSalt(passPhrase, options.kdf);
    auto kekLater = std::async(std::launch::async,
        [&passPhrase, &salt, &options] { return PassPhraseKey::derive(passPhrase, salt, options.kdf); });

    unsigned char header[kHeaderSize] = {};
    std::memcpy(header, kMagic, sizeof kMagic);
    header[8] = kFormatVersion;
    header[9] = static_cast<unsigned char>(algorithm);
    header[10] = kKdfArgon2id;
    putU32(header + 12, options.kdf.iterations);
    putU32(header + 16, options.kdf.memoryKiB);
    putU32(header + 20, options.kdf.parallelism);
    putU32(header + 24, static_cast<quint32>(options.chunkSize));
    std::memcpy(header + 28, salt.constData(), kSaltSize);
    gcry_create_nonce(header + 44, kWrapNonceSize + kPrefixSize);

    unsigned char fileKey[32];
    gcry_randomize(fileKey, sizeof fileKey, GCRY_STRONG_RANDOM);
    GcmCipher data(algorithm);
    if (!data.setKey(fileKey, sizeof fileKey)) {
        std::memset(fileKey, 0, sizeof fileKey);
        return CipherError::LibraryFailure;
    }

    TargetFile out(target);
    // Room for the header; the file key is not in it yet.
    if (!out.open() || out.write(reinterpret_cast<const char*>(header), kHeaderSize) != kHeaderSize) {
        std::memset(fileKey, 0, sizeof fileKey);
        return out.failure();
    }

    const CipherError streamed = [&] {
        ChunkReader reader(in, options.chunkSize, static_cast<qint64>(kTag), readAheadDepth(options.chunkSize));
        ProgressTicker ticker(progress);
        qint64 done = 0;
        for (quint64 index = 0;; ++index) {
            const ChunkReader::Block block = reader.next();
            if (block.failed)
                return CipherError::SourceUnreadable;
            done += block.size;
            // A short read or the end of the file makes this the final chunk.
            const ChunkLabel label = chunkLabel(header + 56, index, block.last);
            if (!data.encrypt(label.nonce, sizeof label.nonce, label.aad, sizeof label.aad, block.data,
                    static_cast<size_t>(block.size), block.data + block.size))
                return CipherError::LibraryFailure;
            const qint64 len = block.size + static_cast<qint64>(kTag);
            if (out.write(block.data, len) != len)
                return out.failure();
            if (!ticker.report(percentOf(done, total)))
                return CipherError::Cancelled;
            if (block.last)
                return CipherError::None;
        }
    }();
    const auto kek = kekLater.get();
    if (streamed != CipherError::None || !kek) {
        std::memset(fileKey, 0, sizeof fileKey);
        return streamed != CipherError::None ? streamed : CipherError::LibraryFailure;
    }

    std::memcpy(header + kOffWrapped, fileKey, sizeof fileKey);
    std::memset(fileKey, 0, sizeof fileKey);
    GcmCipher wrap(algorithm);
    if (!wrap.setKey(kek->constData(), kek->size())
        || !wrap.encrypt(
            header + 44, kWrapNonceSize, header, kOffWrapped, header + kOffWrapped, 32, header + kOffWrapped + 32))
        return CipherError::LibraryFailure;
    if (!out.rewrite(0, reinterpret_cast<const char*>(header), kHeaderSize))
        return out.failure();
    return out.commit() ? CipherError::None : out.failure();
}

CipherError FileCipher::decryptFile(
    const QString& source, const QString& target, const QByteArray& passPhrase, const Progress& progress)
{
    if (!EnsureCryptoLibrary())
        return CipherError::LibraryFailure;
    QFile in;
    if (!openSource(in, source))
        return CipherError::SourceUnreadable;
    const qint64 total = in.size();

    unsigned char header[kHeaderSize];
    const qint64 got = in.read(reinterpret_cast<char*>(header), kHeaderSize);
    if (got < 0)
        return CipherError::SourceUnreadable;
    if (got < static_cast<qint64>(sizeof kMagic) || std::memcmp(header, kMagic, sizeof kMagic) != 0)
        return CipherError::NotSealedFile;
    if (got < kHeaderSize)
        return CipherError::Truncated;
    if (header[8] != kFormatVersion || header[10] != kKdfArgon2id || header[11] != 0)
        return CipherError::UnsupportedFormat;
    const auto algorithm = CipherAlgorithmFromIndex(header[9]);
    if (!algorithm)
        return CipherError::UnsupportedFormat;
    const KdfParams kdf { getU32(header + 12), getU32(header + 16), getU32(header + 20) };
    const qint64 chunkSize = getU32(header + 24);
    if (!kdf.isAcceptable() || chunkSize < SealOptions::kMinChunkSize || chunkSize > SealOptions::kMaxChunkSize)
        return CipherError::UnsupportedFormat;

    // The reader fills its blocks while the pass-phrase key is derived.
    ChunkReader reader(in, chunkSize + static_cast<qint64>(kTag), 0, readAheadDepth(chunkSize));
    const QByteArray salt(reinterpret_cast<const char*>(header + 28), kSaltSize);
    const auto kek = PassPhraseKey::derive(passPhrase, salt, kdf);
    if (!kek)
        return CipherError::LibraryFailure;
    unsigned char fileKey[32];
    std::memcpy(fileKey, header + kOffWrapped, sizeof fileKey);
    GcmCipher wrap(*algorithm);
    if (!wrap.setKey(kek->constData(), kek->size()))
        return CipherError::LibraryFailure;
    if (!wrap.decrypt(header + 44, kWrapNonceSize, header, kOffWrapped, fileKey, sizeof fileKey,
            header + kOffWrapped + sizeof fileKey))
        return CipherError::WrongPassPhrase;
    GcmCipher data(*algorithm);
    const bool keyed = data.setKey(fileKey, sizeof fileKey);
    std::memset(fileKey, 0, sizeof fileKey);
    if (!keyed)
        return CipherError::LibraryFailure;

    TargetFile out(target);
    if (!out.open())
        return CipherError::TargetUnwritable;
    ProgressTicker ticker(progress);
    qint64 pos = kHeaderSize;
    for (quint64 index = 0;; ++index) {
        const ChunkReader::Block block = reader.next();
        if (block.failed)
            return CipherError::SourceUnreadable;
        // Whatever fits in one sealed chunk is the last one; an appended or
        // removed tail shows up as a final flag that does not match its tag.
        if (block.size < static_cast<qint64>(kTag))
            return CipherError::Truncated;
        pos += block.size;
        const size_t clearLen = static_cast<size_t>(block.size) - kTag;
        const ChunkLabel label = chunkLabel(header + 56, index, block.last);
        if (!data.decrypt(label.nonce, sizeof label.nonce, label.aad, sizeof label.aad, block.data, clearLen,
                block.data + clearLen))
            return CipherError::DamagedData;
        if (out.write(block.data, static_cast<qint64>(clearLen)) != static_cast<qint64>(clearLen))
            return out.failure();
        if (!ticker.report(percentOf(pos, total)))
            return CipherError::Cancelled;
        if (block.last)
            break;
    }
    return out.commit() ? CipherError::None : out.failure();
}

} // namespace vmk::cipher
