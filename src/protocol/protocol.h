// The protocol library: finds the ".irp" file of a named protocol in the Device
// Library (by its first FORMAT/PROTOCOL line, not its file name), resets the
// protocol record and the symbol table, and fills them from the file.
#pragma once

#include <string>

#include "shell/program.h"

namespace bw {

/// ONE and ZERO numbers as read, before they are scaled by the time base.
struct ProtocolScratch {
  float OneMark = 0, OneSpace = 0, ZeroMark = 0, ZeroSpace = 0;
};

/// True when a file for `name` was found and read; false leaves everything as it was.
bool LoadProtocol(Program& p, const std::string& name);
/// One statement; false for an unknown keyword.
bool ParseProtocolLine(Program& p, const std::string& keyword, const std::string& value,
                       ProtocolScratch& scratch);
bool ParseProtocolKeyword(Program& p, const std::string& keyword, const std::string& value,
                          ProtocolScratch& scratch, bool acceptUnknown);
void ResetProtocol(Program& p, ProtocolScratch& scratch);
void ScaleProtocolTimes(Program& p, const ProtocolScratch& scratch);
void RegisterFormSymbols(Program& p, const std::string& form);
void CompileProtocolForm(Program& p);
void SelectProtocolInList(Program& p, const std::string& name);

}  // namespace bw
