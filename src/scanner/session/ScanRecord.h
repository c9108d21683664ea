#pragma once

#include "platform/FileSearch.h"
#include "scanner/FileScanResult.h"

#include <QString>

namespace vmk
{

// What the session recorded for one row of the event list, for those who follow
// a session file by file (the command-line tool prints it).
struct ScanRecord {
    QString Path; // the row's text: the logical path
    QString NativePath; // where that file lies on the host
    QString ScannedPath; // what the engine was given: F + ".tmp" for a quarantined item
    EntryKind Kind = EntryKind::File; // anything else was not scanned (NotScannedText says why)
    FileScanResult Result;
    QString Status; // the row's "Estatus"
};

} // namespace vmk
