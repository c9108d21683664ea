#pragma once

#include <QByteArray>

#include <optional>

namespace vmk::cipher
{

// Argon2id cost parameters as they are written into sealed files.
struct KdfParams {
    unsigned iterations = 3; // t
    unsigned memoryKiB = 65536; // m
    unsigned parallelism = 1; // p

    bool operator==(const KdfParams&) const = default;
    // The range a reader accepts, so a forged header cannot make us allocate
    // gigabytes or spin for minutes before the pass phrase is even checked.
    bool isAcceptable() const
    {
        return iterations >= 1 && iterations <= 16 && parallelism >= 1 && parallelism <= 16
            && memoryKiB >= 8 * parallelism && memoryKiB <= 1024u * 1024u;
    }
};

// Keys derived from a pass phrase with Argon2id. Derivation is deliberately slow,
// so the result is kept for the rest of the run under (pass phrase, salt,
// parameters): sealing or opening a thousand files with one pass phrase costs
// one derivation.
class PassPhraseKey
{
public:
    // The plain derivation, uncached. secret and ad are Argon2's optional inputs.
    static std::optional<QByteArray> argon2id(const QByteArray& passPhrase, const QByteArray& salt,
        const KdfParams& params, size_t keyLen, const QByteArray& secret = {}, const QByteArray& ad = {});

    // A 32-byte key, from the run's cache when it was derived before.
    static std::optional<QByteArray> derive(
        const QByteArray& passPhrase, const QByteArray& salt, const KdfParams& params);

    // How many derivations the cache has done in this run (to measure the cache).
    static int derivationCount();
    // Forgets every cached key (the pass phrase changed for good, or a test starts afresh).
    static void clearCache();
};

} // namespace vmk::cipher
