#pragma once

#include "components/cipher/CipherError.h"
#include "components/cipher/FileCipher.h"

#include <QByteArray>
#include <QString>

#include <functional>

namespace vmk::cipher
{

// The encryption object of the file stages: one is made for each file, given a
// cipher, a hash size, a key from the pass phrase, a mode and a padding, and then
// runs one pass over a whole file. Every setter records an error number the way
// the stages test it after each step; 0 means the step went through.
class Encryptor
{
public:
    // 0 AES-256, 1 Twofish-256; any other index sets no cipher and fails.
    int setCipherIndex(int index);
    int cipherIndex() const { return m_cipherIndex; }
    bool hasCipher() const { return m_cipherIndex >= 0; }

    // The hash that turns the pass phrase into a key: only 256 bits are offered.
    int setHashSize(int bits);
    int hashSize() const { return m_hashSize; }

    // Keeps the pass phrase for the file operation; the key itself is derived by
    // the file format with its salt. Only 256-bit keys are offered.
    int setSecretKeyFromPassPhrase(const QString& passPhrase, int keyBits);

    // Mode 0 and padding 0 are the only ones: the file format chooses its own
    // nonces and round-trips any length, so neither has another value to mean.
    int setEncryptionMode(int mode);
    int setPaddingMethod(int padding);

    void setProgress(FileCipher::Progress progress) { m_progress = std::move(progress); }
    // The chunk size and key-derivation cost of files this object seals.
    void setOptions(const SealOptions& options) { m_options = options; }

    // One pass over the whole source into target (host paths); returns the error number.
    int encryptFile(const QString& source, const QString& target);
    int decryptFile(const QString& source, const QString& target);

    int lastError() const { return m_lastError; }

private:
    int fail(CipherError e) { return m_lastError = ErrorNumber(e); }

    int m_cipherIndex = -1;
    int m_hashSize = 0;
    bool m_keySet = false;
    QByteArray m_passPhrase;
    FileCipher::Progress m_progress;
    SealOptions m_options;
    int m_lastError = 0;
};

} // namespace vmk::cipher
