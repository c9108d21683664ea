#pragma once

#include <QString>

namespace vmk
{

// What one run of Restaura did.
struct RestoreOutcome {
    int Matched = 0; // ledger lines of the item
    int Restored = 0; // lines whose file came back (their lines are dropped)
    int FolderMissing = 0; // lines kept: "¡La ruta de restauración no existe!"
    int Failed = 0; // lines kept: "¡Error de restauración!" (or a refused target)
    bool SealedGone = false; // the sealed item is no longer in the quarantine: its tree node goes
};

// `Restaura`: brings the quarantined item whose key (or logical path, bars or
// not) is `selectedKey` back to the folder its ledger line names, decrypting
// under the fixed pass phrase and index, and rewrites the ledger through QFP.Tmp
// without the lines that came back. Every line of the item is handled in the
// one run, the others keep their bytes and order. A missing ledger does nothing
// and says nothing. The file is written beneath its former folder without
// following a link there, and never over an existing file or link of that name.
RestoreOutcome Restaura(const QString& selectedKey);

} // namespace vmk
