#pragma once

#include "components/engine/FoundThreat.h"

#include <vector>

namespace vmk::engine
{

// Everything one scan of one file produced; EngineSession keeps the last one so
// that the records of ReadAlert can point into it.
struct ScanOutcome {
    int code = 0;
    std::vector<FoundThreat> alerts;
};

} // namespace vmk::engine
