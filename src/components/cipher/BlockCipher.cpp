#include "components/cipher/BlockCipher.h"

#include "components/cipher/CryptoLibrary.h"

#include <gcrypt.h>

namespace vmk::cipher
{
namespace
{
int libraryAlgorithm(CipherAlgorithm algorithm)
{
    return algorithm == CipherAlgorithm::Twofish256 ? GCRY_CIPHER_TWOFISH : GCRY_CIPHER_AES256;
}

std::optional<QByteArray> transform(
    CipherAlgorithm algorithm, const QByteArray& key, const QByteArray& block, bool encrypt)
{
    if (!EnsureCryptoLibrary() || key.size() != 32 || block.size() != 16)
        return std::nullopt;
    gcry_cipher_hd_t hd = nullptr;
    if (gcry_cipher_open(&hd, libraryAlgorithm(algorithm), GCRY_CIPHER_MODE_ECB, 0))
        return std::nullopt;
    QByteArray out(16, '\0');
    bool ok = gcry_cipher_setkey(hd, key.constData(), key.size()) == 0;
    if (ok)
        ok = (encrypt ? gcry_cipher_encrypt(hd, out.data(), out.size(), block.constData(), block.size())
                      : gcry_cipher_decrypt(hd, out.data(), out.size(), block.constData(), block.size()))
            == 0;
    gcry_cipher_close(hd);
    if (!ok)
        return std::nullopt;
    return out;
}
} // namespace

std::optional<QByteArray> BlockCipher::encryptBlock(
    CipherAlgorithm algorithm, const QByteArray& key, const QByteArray& block)
{
    return transform(algorithm, key, block, true);
}

std::optional<QByteArray> BlockCipher::decryptBlock(
    CipherAlgorithm algorithm, const QByteArray& key, const QByteArray& block)
{
    return transform(algorithm, key, block, false);
}

} // namespace vmk::cipher
