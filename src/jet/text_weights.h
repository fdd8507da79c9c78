// Weights of single characters in Access's General sort order, the order of
// text index keys: what one character adds to a key.
#pragma once

#include <cstdint>

namespace bw::jet {

enum class CharKind : uint8_t {
  kUnknown,  ///< not measured: no key can be made for text holding it
  kIgnored,  ///< adds nothing to a key
  kLetter,   ///< letters, digits, most symbols: primary weight, maybe a diacritic weight
  kMark,     ///< a combining mark: its diacritic weight adds to the character before it
  kSpecial,  ///< punctuation such as '-' that sorts only after all else, by position
};

struct CharWeights {
  CharKind kind = CharKind::kUnknown;
  uint8_t primary[3] = {};
  uint8_t primaryLength = 0;
  uint8_t extra[2] = {};
  uint8_t extraLength = 0;
  uint16_t special = 0;
};

CharWeights WeightsOf(char16_t c);

}  // namespace bw::jet
