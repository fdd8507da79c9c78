// The key table of the loaded device: one entry per key line of the device
// file, each with its code lists and its key-level DEFINES lines.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace bw {

struct KeyCode {
  std::string Name;          ///< optional protocol name of the code, upper-cased ("" = the device's protocol)
  int32_t DeviceCode = 0;
  int32_t FunctionCode = 0;
  int16_t RepeatCount = 0;   ///< never 0 after parsing
};

/// Code lists and options are 0-based vectors here: element k-1 is the k-th code.
struct KeyEntry {
  std::string Label{};
  std::string RawText{};     ///< for a RAW device: the whole text after "="
  bool HasSecondCodes = false;
  int16_t OptionCount = 0;
  std::vector<KeyCode> FirstCodes{};
  std::vector<KeyCode> SecondCodes{};  ///< empty unless HasSecondCodes: the first list then repeats
  std::vector<std::string> Options{};  ///< key-level DEFINES lines, name=value as written
  int Line = 0;              ///< the device file line it was read from (0: not read from a file)
};

/// Entry 0 is always present and never filled; the first key is at index 1.
struct KeyTable {
  std::vector<KeyEntry> entries{KeyEntry{}};
  void Clear() { entries.assign(1, KeyEntry{}); }
  int UpperBound() const { return static_cast<int>(entries.size()) - 1; }
  /// Out-of-range indexes are a run-time error 9.
  KeyEntry& operator[](int index);
  const KeyEntry& operator[](int index) const;
};

}  // namespace bw
