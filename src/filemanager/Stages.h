#pragma once

#include <QString>

namespace vmk::zip
{
class ZipArchiver;
}
namespace vmk::cipher
{
class Encryptor;
}

namespace vmk
{

// The per-file stages of the transfer engine: one file in, one file out under
// the name the transfer gave it. Paths are logical ("E:\Dir\file"). Each stage
// reports its own failure through ShowMessage; the transfer judges the result by
// whether the target exists. The return value says whether the component
// reported success, for callers that want it (the command-line tool); `error`,
// when given, receives the component's number (a ZipResult or a CipherError, 0
// on success) so such a caller can tell one failure from another.

// The method number for a #CompAlgorithm index (0 -> 18, 1 -> 12, 2 -> 8), or 0
// for an index that sets no method.
int CompressionMethodForIndex(int index);

bool CompressFile(const QString& source, const QString& archive, zip::ZipArchiver& zipControl);
bool DecompressFile(
    const QString& archive, const QString& targetFolder, zip::ZipArchiver& zipControl, int* error = nullptr);
bool EncryptFile(const QString& source, const QString& target, int* error = nullptr);
bool DecryptFile(const QString& source, const QString& target, int* error = nullptr);
// Gives the encryption object its cipher, hash, key, mode and padding from the
// shared set-up values and PassPhrase; false (after the set-up message) when a step failed.
bool SetupEncryptor(cipher::Encryptor& encryption);

} // namespace vmk
