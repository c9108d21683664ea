#pragma once

#include <QByteArray>

#include <vector>

namespace vmk::engine
{

// One (object, threat) pair found by a scan.
struct FoundThreat {
    QByteArray object; // the scanned path, followed by the member chain inside it
    QByteArray kind;
    QByteArray name;
    int repairable = 0;
};

// Everything one scan of one file produced; EngineSession keeps the last one so
// that the records of ReadAlert can point into it.
struct ScanOutcome {
    int code = 0;
    std::vector<FoundThreat> alerts;
};

} // namespace vmk::engine
