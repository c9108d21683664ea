#pragma once

#include "components/engine/AlertRecord.h"
#include "components/engine/EngineValue.h"
#include "components/engine/Option.h"
#include "components/engine/ScanResult.h"

#include <cstdint>

namespace vmk::engine
{

// The six operations of the scan engine, over libclamav. Signatures are read
// from "sigs" in the current folder (the program folder). Texts handed back live
// in engine memory and stay valid until the next call of the same kind.

// Starts the engine on its built-in options. 0 on success, else an EngineCode.
int32_t LoadEngine();
int32_t UnLoadEngine();
// `path` is zero-terminated UTF-16.
ScanResult ScanFile(const char16_t* path);
void ReadAlert(int32_t index, AlertRecord* out);
void getvalue(int32_t number, EngineValue* out); // number: an EngineValue::Number
// `value` is zero-terminated 8-bit text. The result means nothing.
int32_t setvalue(int32_t number, const char* value); // number: an Option

} // namespace vmk::engine
