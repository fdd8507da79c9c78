// One ADI Leopard/Ocelot IR command: a fixed 256-byte record of a ".lir" file.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace bw {

struct LirRecord {
  static constexpr int kSize = 256;
  uint8_t CarrierByte = 0;
  std::array<uint8_t, 200> PulseBytes{};
  std::array<uint8_t, 23> Reserved{};
  std::array<char, 32> Name{};   ///< Windows-1252 bytes, blank-padded
};

/// Records numbered from 1 (element 0 unused), the current record number and the changed flag.
struct LirTable {
  std::vector<LirRecord> records{LirRecord{}};
  int16_t Current = 0;
  bool Changed = false;
  int UpperBound() const { return static_cast<int>(records.size()) - 1; }
};

}  // namespace bw
