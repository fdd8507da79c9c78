#include "jet/index_key.h"

#include <cmath>
#include <algorithm>
#include <cstring>

#include "jet/text_weights.h"

namespace bw::jet {
namespace {

constexpr uint8_t kAscendingFlag = 0x7F;
constexpr uint8_t kDescendingFlag = 0x80;
constexpr uint8_t kNullAscending = 0x00;
constexpr uint8_t kNullDescending = 0xFF;

void PutBigEndian(Bytes& out, uint64_t v, int bytes) {
  for (int s = 8 * (bytes - 1); s >= 0; s -= 8) out.push_back(uint8_t(v >> s));
}

/// Two's complement with the sign bit turned: byte order is number order.
void PutSigned(Bytes& out, int64_t v, int bytes) {
  uint64_t bits = uint64_t(v) ^ (uint64_t(1) << (8 * bytes - 1));
  PutBigEndian(out, bits, bytes);
}

/// IEEE bits: positive numbers get the sign bit set, negative ones are
/// inverted whole, so byte order is number order.
void PutFloat(Bytes& out, uint64_t bits, int bytes) {
  const uint64_t sign = uint64_t(1) << (8 * bytes - 1);
  const uint64_t all = bytes == 8 ? ~uint64_t(0) : (sign << 1) - 1;
  bits = (bits & sign) ? (~bits & all) : (bits | sign);
  PutBigEndian(out, bits, bytes);
}

/// The value's bytes after the flag, ascending; false when it has no key.
bool ValueBytes(Bytes& out, ColumnType type, const Value& v) {
  switch (type) {
    case ColumnType::kByte: out.push_back(uint8_t(v.integer)); return true;
    case ColumnType::kInteger: PutSigned(out, v.integer, 2); return true;
    case ColumnType::kLong: PutSigned(out, v.integer, 4); return true;
    case ColumnType::kCurrency: PutSigned(out, v.integer, 8); return true;
    case ColumnType::kDouble:
    case ColumnType::kDateTime: {
      uint64_t bits;
      std::memcpy(&bits, &v.real, 8);
      PutFloat(out, bits, 8);
      return true;
    }
    case ColumnType::kSingle: {
      float f = float(v.real);
      uint32_t bits;
      std::memcpy(&bits, &f, 4);
      PutFloat(out, bits, 4);
      return true;
    }
    case ColumnType::kText: {
      auto key = TextSortKey(v.text);
      if (!key) return false;
      out.insert(out.end(), key->begin(), key->end());
      return true;
    }
    default: return false;
  }
}

}  // namespace

// A text key has up to three parts, each after the one before and a 01: the
// primary weights of its characters (a space inside the text counts, spaces at
// its end do not), their diacritic weights (02 for none, trailing 02s left
// out; a combining mark adds its weight to the character before it), and the
// special characters, each as a code of its position (counted in the
// letters' diacritic slots) and its own code. Parts left empty at the end are left out, the
// primary part's 01 excepted; a 00 ends the key.
std::optional<Bytes> TextSortKey(std::string_view utf8) {
  // Weights for "no diacritic", and how a special character's position is told.
  constexpr uint8_t kNoDiacritic = 0x02;
  constexpr uint8_t kPartEnd = 0x01;
  constexpr uint16_t kPositionBase = 0x8007;
  constexpr uint16_t kPositionStep = 4;
  std::u16string text = Utf8ToUtf16(utf8);
  while (!text.empty() && text.back() == u' ') text.pop_back();
  Bytes primary, extra, special;
  size_t slots = 0;  // diacritic slots of letters so far (a mark before any letter makes none)
  for (char16_t c : text) {
    CharWeights w = WeightsOf(c);
    switch (w.kind) {
      case CharKind::kUnknown: return std::nullopt;
      case CharKind::kIgnored: break;
      case CharKind::kLetter:
        primary.insert(primary.end(), w.primary, w.primary + w.primaryLength);
        if (w.extraLength == 0) extra.push_back(kNoDiacritic);
        else extra.insert(extra.end(), w.extra, w.extra + w.extraLength);
        slots += std::max<size_t>(1, w.extraLength);
        break;
      case CharKind::kMark:
        if (extra.empty()) extra.insert(extra.end(), w.extra, w.extra + w.extraLength);
        else extra.back() = uint8_t(extra.back() + w.extra[w.extraLength - 1]);
        break;
      case CharKind::kSpecial: {
        uint16_t position = uint16_t(kPositionBase + kPositionStep * slots);
        special.push_back(uint8_t(position >> 8));
        special.push_back(uint8_t(position));
        special.push_back(uint8_t(w.special >> 8));
        special.push_back(uint8_t(w.special));
        break;
      }
    }
  }
  while (!extra.empty() && extra.back() == kNoDiacritic) extra.pop_back();
  Bytes key = primary;
  key.push_back(kPartEnd);
  if (!extra.empty() || !special.empty()) key.insert(key.end(), extra.begin(), extra.end());
  if (!special.empty()) {
    // The two parts between are always empty: case is not part of the key.
    key.insert(key.end(), {kPartEnd, kPartEnd, kPartEnd});
    key.insert(key.end(), special.begin(), special.end());
  }
  key.push_back(0x00);
  return key;
}

bool AppendColumnKey(Bytes& key, ColumnType type, const Value& value, bool ascending) {
  if (type == ColumnType::kBoolean) {
    // A Yes/No column is never null in an index: null counts as No. Yes sorts first.
    bool yes = !value.IsNull() && value.integer != 0;
    key.push_back(ascending ? kAscendingFlag : kDescendingFlag);
    key.push_back(uint8_t(yes == ascending ? 0x00 : 0xFF));
    return true;
  }
  if (value.IsNull()) {
    switch (type) {
      case ColumnType::kByte: case ColumnType::kInteger: case ColumnType::kLong: case ColumnType::kCurrency:
      case ColumnType::kSingle: case ColumnType::kDouble: case ColumnType::kDateTime: case ColumnType::kText:
        key.push_back(ascending ? kNullAscending : kNullDescending);
        return true;
      default: return false;
    }
  }
  Bytes data;
  if (!ValueBytes(data, type, value)) return false;
  if (ascending) {
    key.push_back(kAscendingFlag);
    key.insert(key.end(), data.begin(), data.end());
  } else {
    key.push_back(kDescendingFlag);
    for (uint8_t b : data) key.push_back(uint8_t(~b));
    // A descending text key ends in 00 like the ascending one: its own 00
    // turned into FF, and a 00 after it.
    if (type == ColumnType::kText) key.push_back(0x00);
  }
  return true;
}

}  // namespace bw::jet
