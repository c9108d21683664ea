#pragma once

#include <cstdint>

namespace vmk::engine
{

// One alert of the last scan. The pointers lead into memory the engine owns;
// it stays valid until the next ScanFile of the same session and is never freed
// by the caller. Lengths are byte counts.
struct AlertRecord {
    int32_t ObjectLen = 0;
    const char* ObjectPtr = nullptr;
    int32_t ThreatNameLen = 0;
    const char* ThreatNamePtr = nullptr;
    int32_t ThreatKindLen = 0;
    const char* ThreatKindPtr = nullptr;
    int32_t Repairable = 0; // 1 when the engine can repair this object
};

} // namespace vmk::engine
