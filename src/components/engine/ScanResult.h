#pragma once

#include <cstdint>

namespace vmk::engine
{

// What ScanFile gives back. ReturnCode 0: the file was examined, and AlertCount
// alerts can be read with ReadAlert; any other code: the file was not processed.
struct ScanResult {
    int32_t ReturnCode = 0;
    int32_t AlertCount = 0;
};

} // namespace vmk::engine
