#pragma once

#include "components/cipher/CipherAlgorithm.h"

#include <QByteArray>

#include <optional>

namespace vmk::cipher
{

// The raw block transform of a cipher, one 16-byte block under a 32-byte key.
// The file format never uses it directly; it lets the primitives be checked
// against their published vectors on every build.
class BlockCipher
{
public:
    static std::optional<QByteArray> encryptBlock(
        CipherAlgorithm algorithm, const QByteArray& key, const QByteArray& block);
    static std::optional<QByteArray> decryptBlock(
        CipherAlgorithm algorithm, const QByteArray& key, const QByteArray& block);
};

} // namespace vmk::cipher
