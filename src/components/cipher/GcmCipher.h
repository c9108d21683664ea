#pragma once

#include "components/cipher/CipherAlgorithm.h"

#include <QByteArray>

#include <cstddef>

namespace vmk::cipher
{

// One cipher in Galois/Counter mode under one 256-bit key, reused for many
// messages: each call takes its own nonce and associated data. Data is
// transformed in place; the tag is 16 bytes.
class GcmCipher
{
public:
    static constexpr size_t kKeySize = 32;
    static constexpr size_t kTagSize = 16;

    explicit GcmCipher(CipherAlgorithm algorithm);
    ~GcmCipher();
    GcmCipher(const GcmCipher&) = delete;
    GcmCipher& operator=(const GcmCipher&) = delete;

    // False when the library refused the cipher or the key.
    bool setKey(const void* key, size_t keyLen);
    bool isReady() const { return m_ready; }

    bool encrypt(
        const void* nonce, size_t nonceLen, const void* aad, size_t aadLen, void* data, size_t dataLen, void* tagOut);
    // False when the tag does not authenticate the data under this key, nonce and
    // associated data; the data is then garbage and must not be used.
    bool decrypt(const void* nonce, size_t nonceLen, const void* aad, size_t aadLen, void* data, size_t dataLen,
        const void* tag);

private:
    bool begin(const void* nonce, size_t nonceLen, const void* aad, size_t aadLen);

    void* m_handle = nullptr;
    bool m_ready = false;
};

} // namespace vmk::cipher
