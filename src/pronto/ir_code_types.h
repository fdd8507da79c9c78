// The Pronto form of the current entry, as stored in one "IR Codes" row.
#pragma once

#include <cstdint>
#include <string>

namespace bw {

struct IRCodeRecord {
  int32_t KeyCode1 = 0;
  int32_t KeyCode2 = 0;        ///< stored in "ButtonID"
  std::string Label;
  std::string FullText;
  std::string FormatText;      ///< "0x0000" learned, "0x5000"/"0x6000".. predefined
  int16_t CarrierWord = 0;
  int16_t OnceCount = 0;
  int16_t RepeatCount = 0;
  std::string BurstText;       ///< carrier-cycle counts, each followed by a blank
};

}  // namespace bw
