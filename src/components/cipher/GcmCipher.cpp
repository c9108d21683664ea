#include "components/cipher/GcmCipher.h"

#include "components/cipher/CryptoLibrary.h"

#include <gcrypt.h>

namespace vmk::cipher
{
namespace
{
gcry_cipher_hd_t handle(void* p)
{
    return static_cast<gcry_cipher_hd_t>(p);
}
} // namespace

GcmCipher::GcmCipher(CipherAlgorithm algorithm)
{
    if (!EnsureCryptoLibrary())
        return;
    const int algo = algorithm == CipherAlgorithm::Twofish256 ? GCRY_CIPHER_TWOFISH : GCRY_CIPHER_AES256;
    gcry_cipher_hd_t hd = nullptr;
    if (gcry_cipher_open(&hd, algo, GCRY_CIPHER_MODE_GCM, 0) == 0)
        m_handle = hd;
}

GcmCipher::~GcmCipher()
{
    if (m_handle)
        gcry_cipher_close(handle(m_handle));
}

bool GcmCipher::setKey(const void* key, size_t keyLen)
{
    m_ready = m_handle && keyLen == kKeySize && gcry_cipher_setkey(handle(m_handle), key, keyLen) == 0;
    return m_ready;
}

bool GcmCipher::begin(const void* nonce, size_t nonceLen, const void* aad, size_t aadLen)
{
    if (!m_ready)
        return false;
    gcry_cipher_hd_t hd = handle(m_handle);
    // Setting the nonce resets the mode's state, so one handle serves every chunk.
    if (gcry_cipher_setiv(hd, nonce, nonceLen))
        return false;
    if (aadLen && gcry_cipher_authenticate(hd, aad, aadLen))
        return false;
    return gcry_cipher_final(hd) == 0;
}

bool GcmCipher::encrypt(
    const void* nonce, size_t nonceLen, const void* aad, size_t aadLen, void* data, size_t dataLen, void* tagOut)
{
    if (!begin(nonce, nonceLen, aad, aadLen))
        return false;
    gcry_cipher_hd_t hd = handle(m_handle);
    return gcry_cipher_encrypt(hd, data, dataLen, nullptr, 0) == 0 && gcry_cipher_gettag(hd, tagOut, kTagSize) == 0;
}

bool GcmCipher::decrypt(
    const void* nonce, size_t nonceLen, const void* aad, size_t aadLen, void* data, size_t dataLen, const void* tag)
{
    if (!begin(nonce, nonceLen, aad, aadLen))
        return false;
    gcry_cipher_hd_t hd = handle(m_handle);
    return gcry_cipher_decrypt(hd, data, dataLen, nullptr, 0) == 0 && gcry_cipher_checktag(hd, tag, kTagSize) == 0;
}

} // namespace vmk::cipher
