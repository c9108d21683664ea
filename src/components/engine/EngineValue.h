#pragma once

#include <cstdint>

namespace vmk::engine
{

// A value of the engine read with getvalue; the text lives in engine memory.
struct EngineValue {
    int32_t EngineStatus = 0;
    int32_t TextLen = 0;
    const char* TextPtr = nullptr;
};

} // namespace vmk::engine
