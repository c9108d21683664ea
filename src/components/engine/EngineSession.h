#pragma once

#include "components/engine/AlertRecord.h"
#include "components/engine/ScanOutcome.h"
#include "components/engine/ScanResult.h"

namespace vmk::engine
{

// One caller's view of the engine: ScanFile and ReadAlert with the alerts of its
// own last scan. The program uses the single session behind the six operations;
// a scan with several threads gives each thread its own session, all sharing the
// one compiled engine of EngineService.
class EngineSession
{
public:
    // `path` is a zero-terminated UTF-16 path of the drive-letter namespace.
    ScanResult ScanFile(const char16_t* path);
    // Fills `out` for alert `index` of the last scan (an empty record when out of range).
    void ReadAlert(int index, AlertRecord* out) const;

private:
    ScanOutcome m_last;
};

} // namespace vmk::engine
