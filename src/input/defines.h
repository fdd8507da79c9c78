// The symbol table's operations: defining names from DEFINES directives,
// looking them up and classifying them, and expanding a protocol's form text
// into the signed durations of a burst list.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "generate/burst_types.h"
#include "shell/program.h"

namespace bw {

/// Index of the first entry (from 1) whose name equals the upper-cased name; 0 if none.
int16_t LookupDefine(const Program& p, std::string_view name);
/// One DEFINES directive (the text behind the keyword). Shows its messages itself.
void DefineSymbol(Program& p, std::string line, bool allowReplace);
/// Sets Kind (and Value or Text where the kind says so) of entry `index`; returns the kind.
int16_t ClassifyDefine(Program& p, int index);
/// Small numbers count in time-base units, large ones in microseconds.
std::string ScaleRawData(Program& p, const std::string& text);

/// Expands `form` `repeats` times into `out` (cleared first; out.Count set).
void ExpandForm(Program& p, const std::string& form, DurationList& out, int repeats);

// The steps of ExpandForm.
void EmitBits(Program& p, int32_t value, const std::string& bitCountText, bool inverted, DurationList& out);
void EmitSymbol(Program& p, const std::string& name, const std::string& bitCountText, bool inverted,
                DurationList& out);
void EmitRawData(Program& p, const std::string& text, DurationList& out);
void AppendPair(Program& p, int32_t mark, int32_t space, DurationList& out);
void MergeSameSign(DurationList& list);

}  // namespace bw
