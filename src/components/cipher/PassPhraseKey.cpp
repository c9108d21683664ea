#include "components/cipher/PassPhraseKey.h"

#include "components/cipher/CryptoLibrary.h"

#include <gcrypt.h>

#include <map>
#include <mutex>
#include <tuple>

namespace vmk::cipher
{
namespace
{
// Cached keys under a digest of the pass phrase, so the cache itself does not
// hold the pass phrase in clear.
using CacheKey = std::tuple<QByteArray, QByteArray, unsigned, unsigned, unsigned>;

struct KeyCache {
    std::mutex mutex;
    std::map<CacheKey, QByteArray> keys;
    int derivations = 0;
};

KeyCache& cache()
{
    static KeyCache c;
    return c;
}

QByteArray digest(const QByteArray& passPhrase)
{
    QByteArray out(32, '\0');
    gcry_md_hash_buffer(GCRY_MD_SHA256, out.data(), passPhrase.constData(), passPhrase.size());
    return out;
}
} // namespace

std::optional<QByteArray> PassPhraseKey::argon2id(const QByteArray& passPhrase, const QByteArray& salt,
    const KdfParams& params, size_t keyLen, const QByteArray& secret, const QByteArray& ad)
{
    if (!EnsureCryptoLibrary() || !params.isAcceptable() || keyLen < 4)
        return std::nullopt;
    const unsigned long p[4] = { keyLen, params.iterations, params.memoryKiB, params.parallelism };
    gcry_kdf_hd_t hd = nullptr;
    // An empty pass phrase still needs a valid pointer.
    static const char empty = 0;
    if (gcry_kdf_open(&hd, GCRY_KDF_ARGON2, GCRY_KDF_ARGON2ID, p, 4,
            passPhrase.isEmpty() ? &empty : passPhrase.constData(), passPhrase.size(), salt.constData(), salt.size(),
            secret.isEmpty() ? nullptr : secret.constData(), secret.size(), ad.isEmpty() ? nullptr : ad.constData(),
            ad.size()))
        return std::nullopt;
    QByteArray out(static_cast<qsizetype>(keyLen), '\0');
    const bool ok = gcry_kdf_compute(hd, nullptr) == 0 && gcry_kdf_final(hd, keyLen, out.data()) == 0;
    gcry_kdf_close(hd);
    if (!ok)
        return std::nullopt;
    return out;
}

std::optional<QByteArray> PassPhraseKey::derive(
    const QByteArray& passPhrase, const QByteArray& salt, const KdfParams& params)
{
    if (!EnsureCryptoLibrary())
        return std::nullopt;
    const CacheKey key { digest(passPhrase), salt, params.iterations, params.memoryKiB, params.parallelism };
    KeyCache& c = cache();
    {
        std::lock_guard lock(c.mutex);
        auto it = c.keys.find(key);
        if (it != c.keys.end())
            return it->second;
    }
    auto derived = argon2id(passPhrase, salt, params, 32);
    if (!derived)
        return std::nullopt;
    std::lock_guard lock(c.mutex);
    ++c.derivations;
    c.keys[key] = *derived;
    return derived;
}

int PassPhraseKey::derivationCount()
{
    std::lock_guard lock(cache().mutex);
    return cache().derivations;
}

void PassPhraseKey::clearCache()
{
    std::lock_guard lock(cache().mutex);
    cache().keys.clear();
}

} // namespace vmk::cipher
