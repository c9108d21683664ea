#pragma once

#include "components/cipher/CipherAlgorithm.h"
#include "components/cipher/CipherError.h"
#include "components/cipher/SealOptions.h"

#include <QByteArray>
#include <QString>

#include <functional>

namespace vmk::cipher
{

// Sealed files: one file in, one file out, in a chunked authenticated format of
// our own. Layout (integers little-endian):
//
//   0  8  magic "VMKSEAL\x1a"
//   8  1  format version (1)
//   9  1  cipher (CipherAlgorithm)
//  10  1  key derivation (1 = Argon2id)
//  11  1  reserved, 0
//  12 12  Argon2id iterations, memory KiB, parallelism (3 x u32)
//  24  4  chunk size in bytes
//  28 16  salt
//  44 12  nonce that wraps the file key
//  56  4  nonce prefix of the chunks
//  60 48  the random file key, sealed by the pass-phrase key (32 bytes + tag);
//         everything before it is its associated data, so no header field can change
// 108     chunks: ciphertext of chunk-size bytes (the last one shorter) + 16-byte tag
//
// Each chunk is sealed under the file key with nonce = prefix + index (u64 BE)
// and associated data = index (u64 LE) + final flag, so reordering, cutting at a
// chunk boundary and trailing bytes all break a tag. There is always a final
// chunk, empty for an empty file.
class FileCipher
{
public:
    static constexpr int kFormatVersion = 1;
    static constexpr int kHeaderSize = 108;
    // Percentage of the file done; returning false stops the operation (Cancelled).
    using Progress = std::function<bool(int percent)>;

    // Paths are host paths. The target is written through a temporary file beside
    // it and appears only when the whole file is done: any failure leaves no target
    // (and an existing target untouched).
    static CipherError encryptFile(const QString& source, const QString& target, const QByteArray& passPhrase,
        CipherAlgorithm algorithm, const Progress& progress = {}, const SealOptions& options = {});
    // The cipher is read from the header, so files sealed before a change of the
    // cipher setting still open.
    static CipherError decryptFile(
        const QString& source, const QString& target, const QByteArray& passPhrase, const Progress& progress = {});
};

} // namespace vmk::cipher
