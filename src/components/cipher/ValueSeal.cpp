#include "components/cipher/ValueSeal.h"

#include "components/cipher/CryptoLibrary.h"

#include <gcrypt.h>

#include <array>
#include <mutex>

namespace vmk::cipher
{
namespace
{
constexpr char kPassPhrase[] = "TQKZRdomb";
constexpr char kSalt[] = "Vormak value seal";
constexpr unsigned long kIterations = 10000;
constexpr size_t kKeyLen = 16;
constexpr size_t kTagLen = 16;
constexpr std::array<unsigned char, 12> kNonce {};

const std::array<unsigned char, kKeyLen>* sealKey()
{
    static std::once_flag once;
    static std::array<unsigned char, kKeyLen> key {};
    static bool ok = false;
    std::call_once(once, [] {
        if (!EnsureCryptoLibrary())
            return;
        ok = gcry_kdf_derive(kPassPhrase, sizeof(kPassPhrase) - 1, GCRY_KDF_PBKDF2, GCRY_MD_SHA256, kSalt,
                 sizeof(kSalt) - 1, kIterations, key.size(), key.data())
            == 0;
    });
    return ok ? &key : nullptr;
}

gcry_cipher_hd_t openCipher()
{
    const auto* key = sealKey();
    if (!key)
        return nullptr;
    gcry_cipher_hd_t hd = nullptr;
    if (gcry_cipher_open(&hd, GCRY_CIPHER_AES128, GCRY_CIPHER_MODE_GCM_SIV, 0))
        return nullptr;
    if (gcry_cipher_setkey(hd, key->data(), key->size()) || gcry_cipher_setiv(hd, kNonce.data(), kNonce.size())) {
        gcry_cipher_close(hd);
        return nullptr;
    }
    return hd;
}
} // namespace

std::optional<QByteArray> ValueSeal::seal(const QByteArray& clear)
{
    gcry_cipher_hd_t hd = openCipher();
    if (!hd)
        return std::nullopt;
    QByteArray out(clear.size() + static_cast<qsizetype>(kTagLen), '\0');
    gcry_cipher_final(hd);
    bool ok = gcry_cipher_encrypt(hd, out.data(), clear.size(), clear.constData(), clear.size()) == 0
        && gcry_cipher_gettag(hd, out.data() + clear.size(), kTagLen) == 0;
    gcry_cipher_close(hd);
    if (!ok)
        return std::nullopt;
    return out;
}

std::optional<QByteArray> ValueSeal::unseal(const QByteArray& sealed)
{
    if (sealed.size() < static_cast<qsizetype>(kTagLen))
        return std::nullopt;
    gcry_cipher_hd_t hd = openCipher();
    if (!hd)
        return std::nullopt;
    const qsizetype len = sealed.size() - static_cast<qsizetype>(kTagLen);
    QByteArray out(len, '\0');
    gcry_cipher_final(hd);
    bool ok = gcry_cipher_set_decryption_tag(hd, sealed.constData() + len, kTagLen) == 0
        && gcry_cipher_decrypt(hd, out.data(), len, sealed.constData(), len) == 0;
    gcry_cipher_close(hd);
    if (!ok)
        return std::nullopt;
    return out;
}

} // namespace vmk::cipher
