#include "components/cipher/Encryptor.h"

#include "components/cipher/CipherAlgorithm.h"

namespace vmk::cipher
{

int Encryptor::setCipherIndex(int index)
{
    if (!CipherAlgorithmFromIndex(index)) {
        m_cipherIndex = -1;
        return fail(CipherError::UnknownCipher);
    }
    m_cipherIndex = index;
    return fail(CipherError::None);
}

int Encryptor::setHashSize(int bits)
{
    if (bits != 256)
        return fail(CipherError::UnsupportedSetting);
    m_hashSize = bits;
    return fail(CipherError::None);
}

int Encryptor::setSecretKeyFromPassPhrase(const QString& passPhrase, int keyBits)
{
    if (!hasCipher())
        return fail(CipherError::NotReady);
    if (keyBits != 256)
        return fail(CipherError::UnsupportedSetting);
    m_passPhrase = passPhrase.toUtf8();
    m_keySet = true;
    return fail(CipherError::None);
}

int Encryptor::setEncryptionMode(int mode)
{
    return fail(mode == 0 ? CipherError::None : CipherError::UnsupportedSetting);
}

int Encryptor::setPaddingMethod(int padding)
{
    return fail(padding == 0 ? CipherError::None : CipherError::UnsupportedSetting);
}

int Encryptor::encryptFile(const QString& source, const QString& target)
{
    if (!hasCipher() || !m_keySet)
        return fail(CipherError::NotReady);
    return fail(FileCipher::encryptFile(
        source, target, m_passPhrase, static_cast<CipherAlgorithm>(m_cipherIndex), m_progress, m_options));
}

int Encryptor::decryptFile(const QString& source, const QString& target)
{
    if (!hasCipher() || !m_keySet)
        return fail(CipherError::NotReady);
    return fail(FileCipher::decryptFile(source, target, m_passPhrase, m_progress));
}

} // namespace vmk::cipher
