#pragma once

#include <cstdint>

namespace vmk::engine
{

// A value of the engine read with getvalue; the text lives in engine memory.
struct EngineValue {
    // The value numbers that getvalue understands.
    enum Number : int32_t {
        SignatureVersion = 52, // the loaded signature set, as text
        SignatureCount = 55, // how many signatures it holds, decimal
    };

    int32_t EngineStatus = 0;
    int32_t TextLen = 0;
    const char* TextPtr = nullptr;
};

} // namespace vmk::engine
