#pragma once

#include <optional>

namespace vmk::cipher
{

// The ciphers of sealed files, numbered as #EncripAlgorithm numbers them. The
// number is written into every sealed file, so it must never be renumbered.
enum class CipherAlgorithm : int {
    Aes256 = 0,
    Twofish256 = 1,
};

// The algorithm for a settings index, or nothing for an index no cipher answers to.
inline std::optional<CipherAlgorithm> CipherAlgorithmFromIndex(int index)
{
    switch (index) {
    case 0:
        return CipherAlgorithm::Aes256;
    case 1:
        return CipherAlgorithm::Twofish256;
    default:
        return std::nullopt;
    }
}

} // namespace vmk::cipher
