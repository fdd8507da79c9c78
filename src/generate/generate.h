// The key generator: for every key of the loaded device (or every function code
// of an auto-generated range) it builds the burst sequence, the part sent once
// followed by the part that repeats, and hands it to the writer of the selected
// output format.
#pragma once

#include <cstdint>
#include <string>

#include "shell/program.h"

namespace bw {

/// Walks the keys (or, with Autogen, the range first..last). False when a RAW
/// device is refused; the caller then stops its run.
bool GenerateKeys(Program& p, const std::string& context, int32_t argument, int16_t first, int16_t last);
void ResetBurstSequence(Program& p);
bool LoadRawKey(Program& p, int key);
void BuildKeySequence(Program& p, int key);
void AutoGenerateEntry(Program& p, int16_t functionCode, int32_t deviceCode);
void DispatchEntry(Program& p, int key, int32_t argument);
/// A fixed, empty place for diagnostics, called before every dispatch in SNAP mode.
void SnapHook();

}  // namespace bw
