// The protocol library: finds the ".irp" file of a named protocol in the Device
// Library (by its first FORMAT/PROTOCOL line, not its file name), resets the
// protocol record and the symbol table, and fills them from the file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "shell/program.h"

namespace bw {

/// ONE and ZERO numbers as read, before they are scaled by the time base.
struct ProtocolScratch {
  float OneMark = 0, OneSpace = 0, ZeroMark = 0, ZeroSpace = 0;
};

/// True when a file for `name` was found and read; false leaves everything as it was.
bool LoadProtocol(Program& p, const std::string& name);
/// True when LoadProtocol would find a file for `name` in the Device Library (nothing is read but the names).
bool ProtocolInLibrary(Program& p, const std::string& name);
/// One statement; false for an unknown keyword.
bool ParseProtocolLine(Program& p, const std::string& keyword, const std::string& value,
                       ProtocolScratch& scratch);
bool ParseProtocolKeyword(Program& p, const std::string& keyword, const std::string& value,
                          ProtocolScratch& scratch, bool acceptUnknown);
void ResetProtocol(Program& p, ProtocolScratch& scratch);
void ScaleProtocolTimes(Program& p, const ProtocolScratch& scratch);
/// One ONE/ZERO number in microseconds: a number below the time base counts in
/// time-base units (times `timeBase`, rounded half to even); any other number is
/// not used and `unused` comes back. A time base of 0 counts as 1.
int32_t ScaleProtocolTime(float number, int16_t timeBase, int32_t unused);
void RegisterFormSymbols(Program& p, const std::string& form);
void CompileProtocolForm(Program& p);
void SelectProtocolInList(Program& p, const std::string& name);

}  // namespace bw
