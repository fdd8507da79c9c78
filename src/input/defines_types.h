// The symbol table that DEFINES directives of protocol and device files fill:
// names bound to numbers, expressions, raw duration lists, frame lengths or the
// per-key variables DEVICE, FUNCTION and EXTENSION.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace bw {

/// Kind codes of a definition. The numbers show up in a message, so they are fixed.
namespace define_kind {
inline constexpr int16_t kNone = 0;
inline constexpr int16_t kNumber = 1;
inline constexpr int16_t kExpression = 2;
inline constexpr int16_t kVariableExpression = 3;
inline constexpr int16_t kPerKeyVariable = 4;
inline constexpr int16_t kRawData = 5;
inline constexpr int16_t kFrameLength = 6;
}  // namespace define_kind

struct DefineEntry {
  std::string Name;   ///< upper-cased, trimmed
  std::string Text;   ///< definition text, case kept (raw data: the normalised list)
  double Value = 0;   ///< kinds 1 and 6; set per key for kind 4
  int16_t Kind = 0;
};

/// Entry 0 is always present and never filled: a failed lookup returns 0 and
/// reading entry 0 is harmless. The first real entry is index 1.
struct DefinesTable {
  std::vector<DefineEntry> entries{DefineEntry{}};
  /// Cuts the table back to its empty entry 0.
  void Clear() { entries.assign(1, DefineEntry{}); }
  /// Highest index in use (0 when empty).
  int UpperBound() const { return static_cast<int>(entries.size()) - 1; }
  DefineEntry& operator[](int index) { return entries.at(static_cast<std::size_t>(index)); }
  const DefineEntry& operator[](int index) const { return entries.at(static_cast<std::size_t>(index)); }
};

}  // namespace bw
