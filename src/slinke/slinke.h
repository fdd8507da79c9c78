// The Slink-e code file writer: a loaded device as a ".cde" file in "Slinke
// Library", either as signed durations per key (transmit only) or as a protocol
// header plus one bit string per key (transmit and receive).
#pragma once

#include <cstdint>
#include <string>

#include "shell/program.h"

namespace bw {

void SelectSlinkTxOnly(Program& p);
void SelectSlinkTxRx(Program& p);
void ShowSlinkOptions(Program& p);
void FillSlinkFields(Program& p);
void cmdSlinkXqt_Click(Program& p);
void CmdSlinkDone_Click(Program& p);
void RunSlinkOutput(Program& p);
/// Joins the repeat form onto the once form (a run does this before any key is
/// built): a Slink-e entry is one list, nothing of it repeats.
void MergeSlinkForms(ProtocolRecord& r);
/// One transmit-only entry from the current burst sequence.
void WriteSlinkRawEntry(Program& p, int key, const std::string& label);
void WriteSlinkProtocolFile(Program& p);
std::string BuildSlinkCodeList(Program& p, int32_t& averageBitTime, std::string& trailingSymbol);
std::string EncodeFormBits(Program& p, std::string form, int32_t& totalBitTime, std::string& trailingSymbol);
std::string ValueToBits(Program& p, double value, int16_t bitCount, int32_t& bitTime, const std::string& order);
void AdjustSlinkStop(Program& p, int32_t averageBitTime);
std::string ExpandTimingText(Program& p, const std::string& text);
void SaveSlinkFile(Program& p, const std::string& name);

}  // namespace bw
