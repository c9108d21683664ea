#include "components/cipher/PassPhraseVerifier.h"

#include "components/cipher/CryptoLibrary.h"
#include "components/cipher/PassPhraseKey.h"

#include <QStringList>

#include <gcrypt.h>

namespace vmk::cipher
{
namespace
{
constexpr int kSaltSize = 16;
constexpr int kHashSize = 32;
const QString kScheme = QStringLiteral("argon2id");

// Compares without stopping at the first difference, so the time taken says
// nothing about how much of a guess was right.
bool sameBytes(const QByteArray& a, const QByteArray& b)
{
    if (a.size() != b.size())
        return false;
    unsigned char diff = 0;
    for (qsizetype i = 0; i < a.size(); ++i)
        diff |= static_cast<unsigned char>(a[i] ^ b[i]);
    return diff == 0;
}
} // namespace

std::optional<QString> PassPhraseVerifier::make(const QByteArray& passPhrase)
{
    if (!EnsureCryptoLibrary())
        return std::nullopt;
    QByteArray salt(kSaltSize, '\0');
    gcry_randomize(salt.data(), kSaltSize, GCRY_STRONG_RANDOM);
    const KdfParams params;
    const auto hash = PassPhraseKey::argon2id(passPhrase, salt, params, kHashSize);
    if (!hash)
        return std::nullopt;
    return QStringList { kScheme, QString::number(params.iterations), QString::number(params.memoryKiB),
        QString::number(params.parallelism), QString::fromLatin1(salt.toHex()), QString::fromLatin1(hash->toHex()) }
        .join(u'$');
}

bool PassPhraseVerifier::matches(const QByteArray& passPhrase, const QString& verifier)
{
    const QStringList f = verifier.split(u'$');
    if (f.size() != 6 || f[0] != kScheme)
        return false;
    bool ok[3] = {};
    KdfParams params;
    params.iterations = f[1].toUInt(&ok[0]);
    params.memoryKiB = f[2].toUInt(&ok[1]);
    params.parallelism = f[3].toUInt(&ok[2]);
    if (!ok[0] || !ok[1] || !ok[2] || !params.isAcceptable())
        return false;
    const QByteArray salt = QByteArray::fromHex(f[4].toLatin1());
    const QByteArray expected = QByteArray::fromHex(f[5].toLatin1());
    if (salt.size() < 8 || expected.size() != kHashSize)
        return false;
    const auto hash = PassPhraseKey::argon2id(passPhrase, salt, params, kHashSize);
    return hash && sameBytes(*hash, expected);
}

} // namespace vmk::cipher
