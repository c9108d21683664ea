#pragma once

#include "components/cipher/PassPhraseKey.h"

namespace vmk::cipher
{

// How a file is sealed: the chunk size and the cost of the key derivation. Both
// are written into the file, so a reader needs neither.
struct SealOptions {
    static constexpr int kDefaultChunkSize = 1 << 20;
    static constexpr int kMinChunkSize = 16;
    static constexpr int kMaxChunkSize = 64 << 20;

    int chunkSize = kDefaultChunkSize;
    KdfParams kdf;
};

} // namespace vmk::cipher
