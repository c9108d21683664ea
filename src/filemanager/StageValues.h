#pragma once

#include <QString>

namespace vmk
{

// The shared set-up values of the pack and seal stages, written before each stage.
struct StageValues {
    int CipherIndex = 0; // #EncripAlgorithm at the start of the stage
    int EncryptionMode = 0; // always 0
    int PaddingMethod = 0; // always 0
    short KeyBits = 256;
    short HashSize = 256;
    // Set by the transfer for the length of one DecompressFile: the name the
    // extracted entry takes, so a renamed compressed file comes back under its new name.
    QString ArchiveEntryName;
};

StageValues& SV();

} // namespace vmk
