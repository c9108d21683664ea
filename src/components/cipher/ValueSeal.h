#pragma once

#include <QByteArray>

#include <optional>

namespace vmk::cipher
{

// The seal of settings values and of the password store: AES-128 in GCM-SIV mode
// under a key derived once from the suite's fixed pass phrase, with a fixed nonce,
// so the same text always seals to the same bytes (the settings file stays stable
// across saves) and any change to the sealed bytes is detected by the tag.
// The sealed form is the ciphertext followed by the 16-byte tag.
class ValueSeal
{
public:
    static std::optional<QByteArray> seal(const QByteArray& clear);
    // Empty optional when the bytes were damaged, truncated or not sealed by us.
    static std::optional<QByteArray> unseal(const QByteArray& sealed);
};

} // namespace vmk::cipher
