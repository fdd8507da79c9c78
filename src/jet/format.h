// Shared vocabulary of the Access (Jet) file format: page types, row-offset
// flags, column types, little-endian byte access and the text conversions the
// format needs (UCS-2 and its compressed form, Windows-1252 for Jet 3). Every
// other file of the engine builds on these; nothing here touches a file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace bw::jet {

using Bytes = std::vector<uint8_t>;

/// The two on-disk generations the engine knows. Jet 3 is Access 97 (2 KB
/// pages, one-byte text); Jet 4 is Access 2000-2003 (4 KB pages, UCS-2 text).
enum class JetVersion { kJet3, kJet4 };

/// Page types, the first byte of every page.
namespace page_type {
inline constexpr uint8_t kDatabaseDefinition = 0x00;
inline constexpr uint8_t kData = 0x01;
inline constexpr uint8_t kTableDefinition = 0x02;
inline constexpr uint8_t kIndexNode = 0x03;
inline constexpr uint8_t kIndexLeaf = 0x04;
inline constexpr uint8_t kUsageMap = 0x05;
}  // namespace page_type

/// Flags in the high bits of a data page's row-offset entry. A deleted row has
/// both set; a row that moved away keeps only a 4-byte pointer and has the
/// overflow flag; the moved row itself carries only the deleted flag so that
/// a page walk does not meet it twice.
namespace row_flag {
inline constexpr uint16_t kDeleted = 0x8000;
inline constexpr uint16_t kOverflow = 0x4000;
inline constexpr uint16_t kOffsetMask = 0x1FFF;
}  // namespace row_flag

/// Column types as stored in a table definition.
enum class ColumnType : uint8_t {
  kBoolean = 0x01,
  kByte = 0x02,
  kInteger = 0x03,
  kLong = 0x04,
  kCurrency = 0x05,
  kSingle = 0x06,
  kDouble = 0x07,
  kDateTime = 0x08,
  kBinary = 0x09,
  kText = 0x0A,
  kOle = 0x0B,
  kMemo = 0x0C,
  kGuid = 0x0F,
  kNumeric = 0x10,
  kComplex = 0x11,
};

/// Column flag bits of a table definition.
namespace column_flag {
inline constexpr uint8_t kFixed = 0x01;
inline constexpr uint8_t kNullable = 0x02;
inline constexpr uint8_t kAutoLong = 0x04;
/// Jet 4 "misc flags" byte: text may be stored in the compressed UCS-2 form.
inline constexpr uint8_t kCompressedUnicode = 0x01;
}  // namespace column_flag

/// A row position: page number and row number on that page, packed the way
/// the file stores it (page << 8 | row).
struct RowId {
  uint32_t page = 0;
  uint8_t row = 0;
  uint32_t Packed() const { return (page << 8) | row; }
  static RowId FromPacked(uint32_t v) { return RowId{v >> 8, static_cast<uint8_t>(v & 0xFF)}; }
  bool operator==(const RowId&) const = default;
};

inline uint16_t Get16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | (p[1] << 8)); }
inline uint32_t Get24(const uint8_t* p) { return p[0] | (p[1] << 8) | (uint32_t(p[2]) << 16); }
inline uint32_t Get32(const uint8_t* p) {
  return p[0] | (p[1] << 8) | (uint32_t(p[2]) << 16) | (uint32_t(p[3]) << 24);
}
inline uint64_t Get64(const uint8_t* p) { return Get32(p) | (uint64_t(Get32(p + 4)) << 32); }
inline void Put16(uint8_t* p, uint16_t v) {
  p[0] = uint8_t(v);
  p[1] = uint8_t(v >> 8);
}
inline void Put32(uint8_t* p, uint32_t v) {
  for (int i = 0; i < 4; ++i) p[i] = uint8_t(v >> (8 * i));
}
inline void Put64(uint8_t* p, uint64_t v) {
  Put32(p, uint32_t(v));
  Put32(p + 4, uint32_t(v >> 32));
}
inline double GetDouble(const uint8_t* p) {
  uint64_t bits = Get64(p);
  double d;
  std::memcpy(&d, &bits, 8);
  return d;
}
inline void PutDouble(uint8_t* p, double d) {
  uint64_t bits;
  std::memcpy(&bits, &d, 8);
  Put64(p, bits);
}

/// UTF-8 <-> UTF-16 code units (Jet 4 stores text as UCS-2 little endian).
std::u16string Utf8ToUtf16(std::string_view utf8);
std::string Utf16ToUtf8(std::u16string_view utf16);
/// Decodes stored Jet 4 text: plain UCS-2, or the compressed form that starts
/// with FF FE and toggles between one-byte and two-byte characters at each 00.
std::string DecodeJet4Text(const uint8_t* data, size_t len);
/// Encodes text for a Jet 4 column; `allowCompression` picks the compressed
/// form when it is shorter (only strings without characters above U+00FF
/// and without U+0000 are compressed).
Bytes EncodeJet4Text(std::string_view utf8, bool allowCompression);
/// Jet 3 text and names are Windows-1252.
std::string DecodeCp1252(const uint8_t* data, size_t len);
/// Upper case as Jet compares names: ASCII and Latin-1 letters.
std::string UpperName(std::string_view utf8);

}  // namespace bw::jet
