#pragma once

namespace vmk::cipher
{

// Error numbers of the cipher component. They are shown to the user beside the
// stage's message, so keep the numbers stable.
enum class CipherError : int {
    None = 0,
    SourceUnreadable = 1, // the file to read cannot be opened or read
    TargetUnwritable = 2, // the file to write cannot be created, written or committed
    NotSealedFile = 3, // no header of ours at the start of the file
    UnsupportedFormat = 4, // a version, cipher, key derivation or chunk size this build cannot read
    WrongPassPhrase = 5, // the file key does not unwrap: another pass phrase, or a damaged header
    DamagedData = 6, // a chunk fails its authentication: flipped, swapped, cut at a chunk or extended
    Truncated = 7, // the file ends inside the header or inside a chunk's tag
    UnknownCipher = 8, // a cipher index no cipher answers to
    LibraryFailure = 9, // the crypto library refused an operation
    Cancelled = 10, // the progress callback asked to stop
    NotReady = 11, // an operation was asked of an encryptor before its set-up
    UnsupportedSetting = 12, // a key size, hash size, mode or padding the encryptor does not offer
    DiskFull = 13, // the file to write ran out of room on its disk
};

inline int ErrorNumber(CipherError e)
{
    return static_cast<int>(e);
}

} // namespace vmk::cipher
