// The protocol record: the one current IR protocol, as the last protocol file
// loaded described it (modulation, bit order, forms, carrier, time base, the
// mark/space pairs of a one and a zero).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "input/defines_types.h"

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

/// What loading one protocol file left behind when it showed no message: the
/// record, the symbols, the statements whose effect reaches past them.
struct KeptProtocolLoad {
  ProtocolRecord protocol;
  DefinesTable defines;
  /// The MODULATION / BITORDER text the file set last; nothing when it set none.
  std::optional<std::string> modulationText, bitOrderText;
  /// Each PROTOCOL value in file order: each selects its entry in the format list.
  std::vector<std::string> protocolNames;
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
  /// File name -> what loading it left behind, for files loaded without a message.
  std::unordered_map<std::string, KeptProtocolLoad> loads;
};

}  // namespace bw
