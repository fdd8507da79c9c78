// Row encoding: turns the bytes of one stored row into column values and back.
// A row holds its column count, the fixed-width columns, the variable-width
// columns, a table of their offsets (Jet 3 adds a jump table for rows over
// 256 bytes) and a null mask (which also carries Yes/No values). Text is
// UCS-2, possibly in the compressed form (Jet 4) or Windows-1252 (Jet 3).
// Memo and OLE columns hold a 12-byte long-value header followed either by the
// value itself or by a pointer to an LVAL page row (one row, or a chain).
//
// The codec never touches the file: long values are fetched and stored through
// the callbacks the table layer passes in.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "jet/format.h"
#include "jet/tdef.h"

namespace bw::jet {

/// One column value. Numbers keep their stored width in `kind`.
struct Value {
  enum class Kind { kNull, kBoolean, kByte, kInteger, kLong, kCurrency, kSingle, kDouble, kDateTime,
                    kBinary, kText, kOle, kMemo, kGuid, kNumeric };
  Kind kind = Kind::kNull;
  int64_t integer = 0;  ///< Boolean, Byte, Integer, Long; Currency in 1/10000 units
  double real = 0;      ///< Single, Double; DateTime as an OLE date
  std::string text;     ///< Text and Memo as UTF-8; Binary, OLE, GUID, Numeric as raw bytes

  static Value Null() { return {}; }
  static Value Boolean(bool b) { return Make(Kind::kBoolean, b ? -1 : 0); }
  static Value Byte(uint8_t v) { return Make(Kind::kByte, v); }
  static Value Integer(int16_t v) { return Make(Kind::kInteger, v); }
  static Value Long(int32_t v) { return Make(Kind::kLong, v); }
  static Value Double(double v) {
    Value x;
    x.kind = Kind::kDouble;
    x.real = v;
    return x;
  }
  static Value Text(std::string s) {
    Value x;
    x.kind = Kind::kText;
    x.text = std::move(s);
    return x;
  }
  static Value Memo(std::string s) {
    Value x = Text(std::move(s));
    x.kind = Kind::kMemo;
    return x;
  }
  static Value Binary(std::string bytes) {
    Value x;
    x.kind = Kind::kBinary;
    x.text = std::move(bytes);
    return x;
  }

  bool IsNull() const { return kind == Kind::kNull; }
  bool IsNumber() const;
  /// The value as DAO converts it to a string ("" for Null).
  std::string AsText() const;
  /// The value as a whole number (text is parsed; Null gives 0). Throws 3421
  /// for text that is no number.
  int64_t AsInteger() const;
  bool operator==(const Value&) const = default;

 private:
  static Value Make(Kind k, int64_t v) {
    Value x;
    x.kind = k;
    x.integer = v;
    return x;
  }
};

/// Fetches the bytes of a long value stored outside the row, given its
/// 12-byte header.
using LongValueReader = std::function<Bytes(const uint8_t* header)>;
/// Stores a long value's bytes and returns the complete field (12-byte header,
/// followed by the bytes when they stay in the row).
using LongValueWriter = std::function<Bytes(const Bytes& payload)>;

/// Decodes a stored row into one value per column of `def.columns`.
std::vector<Value> DecodeRow(const TableDef& def, bool jet4, const uint8_t* row, size_t length,
                             const LongValueReader& readLong);
/// Decodes one fixed-width (or Yes/No) column of a stored row, as DecodeRow
/// would, without touching the others.
Value DecodeFixedColumn(const TableDef& def, bool jet4, const uint8_t* row, size_t length, size_t column);

/// Encodes values (one per column of `def.columns`) as a Jet 4 row. Values
/// are converted to the column type; text longer than its column throws 3163.
Bytes EncodeRow(const TableDef& def, const std::vector<Value>& values, const LongValueWriter& writeLong);

/// Converts a value to what a column of `type` stores (Null stays Null).
Value CoerceTo(const Value& v, const ColumnDef& column);

/// Long-value header helpers: total length, and where the value lies.
inline constexpr uint32_t kLongValueInline = 0x80000000;
inline constexpr uint32_t kLongValueSinglePage = 0x40000000;
inline constexpr uint32_t kLongValueLengthMask = 0x3FFFFFFF;

}  // namespace bw::jet
