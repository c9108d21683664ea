#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace vmk::cipher
{

// Proof of the owner's password that does not reveal it: Argon2id over the
// password with a random 16-byte salt, kept as the text
// "argon2id$T$M$P$SALTHEX$HASHHEX". Anyone can read the text; only the password
// reproduces the hash, and the costs make guessing slow.
class PassPhraseVerifier
{
public:
    // A new verifier with a fresh salt; empty when the library is unusable.
    static std::optional<QString> make(const QByteArray& passPhrase);
    // True when `verifier` was made from this pass phrase. A damaged or forged
    // verifier (bad fields, costs out of range) matches nothing.
    static bool matches(const QByteArray& passPhrase, const QString& verifier);
};

} // namespace vmk::cipher
