#pragma once

#include <QString>

namespace vmk
{

class ThreatListModel;

// The quarantine verb: a file is sealed into the quarantine folder by the
// transfer engine's encrypting move (code 1, MoveFlag set), under the fixed
// pass phrase and index (QuarantineKeys) and with no scan on the way, and its
// ledger line is appended. Paths are logical.

enum class QuarantineOutcome {
    Sealed, // the sealed item exists, the source is gone (or its removal is pending), the line is written
    AlreadyInQuarantine, // the file lies in the quarantine folder: "!El archivo ya existe en Cuarentena!"
    Refused, // not done, with a message naming the file: a link, no regular file, a
             // sealed item of that name already there, a refused quarantine folder
    Failed, // the stage left no sealed item (its message is shown); the source stays
};

// Seals one file. The original stays in place whenever anything fails.
QuarantineOutcome QuarantineFile(const QString& path);

// `Command8`: each ticked row of ListViewInf, first to last. A sealed row is
// unticked and reads "Cuarentena"; a row of a file already in the quarantine,
// or one that failed, stays as it is, ticked. G().CancelRequested (Barra's
// cancel) stops the walk before the next file. The owner's pass phrase, index
// and #ScanFilesOperations are given back after each file.
void QuarantineTickedThreats(ThreatListModel& threats);

} // namespace vmk
