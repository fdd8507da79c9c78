// The protocol record: the one current IR protocol, as the last protocol file
// loaded described it (modulation, bit order, forms, carrier, time base, the
// mark/space pairs of a one and a zero).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>

namespace bw {

struct ProtocolRecord {
  std::string Modulation = "PWM";
  std::string BitOrder = "LSB";
  std::string ProtocolTitle;   ///< reset and never filled
  std::string ProtocolName;    ///< upper-cased PROTOCOL value
  std::string FormOnce;        ///< upper-cased
  std::string FormRepeat;      ///< upper-cased
  int32_t Frequency = 0;       ///< carrier in Hz as written
  int16_t RepeatCount = 0;
  int16_t TimeBase = 0;        ///< microseconds; 1 after loading when it was 0
  int32_t OneMark = 0, OneSpace = 0;
  int32_t ZeroMark = 0, ZeroSpace = 0;
};

/// What the library's protocol files were found to name, kept while the
/// folder stays the same (one generation of its FolderCache): the files are
/// read in listing order only as far as a search needed.
struct ProtocolFileIndex {
  uint64_t generation = 0;
  /// How many files of the listing have been read.
  std::size_t filesRead = 0;
  /// Name (blanks removed, upper case) -> the first file in listing order naming it.
  std::unordered_map<std::string, std::string> firstFile;
};

}  // namespace bw
