#pragma once

#include <QString>

namespace vmk
{

// The backup tool's process-wide values.
struct BackupValues {
    // The selection file that Form4 (save) or Form5 (open) chose; a cancelled
    // picker leaves it as it was.
    QString BackupSelectionFile;
};

BackupValues& BV();

} // namespace vmk
