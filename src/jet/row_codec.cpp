#include "jet/row_codec.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "jet/jet_errors.h"

namespace bw::jet {
namespace {

bool NullBit(const uint8_t* mask, size_t maskLen, uint16_t number) {
  if (size_t(number / 8) >= maskLen) return false;
  return (mask[number / 8] >> (number % 8)) & 1;
}

Value FixedValue(const ColumnDef& c, bool jet4, const uint8_t* p) {
  Value v;
  switch (c.type) {
    case ColumnType::kText:
      v.kind = Value::Kind::kText;
      v.text = jet4 ? DecodeJet4Text(p, c.length) : DecodeCp1252(p, c.length);
      break;
    case ColumnType::kByte: v.kind = Value::Kind::kByte; v.integer = p[0]; break;
    case ColumnType::kInteger: v.kind = Value::Kind::kInteger; v.integer = int16_t(Get16(p)); break;
    case ColumnType::kLong:
    case ColumnType::kComplex: v.kind = Value::Kind::kLong; v.integer = int32_t(Get32(p)); break;
    case ColumnType::kCurrency: v.kind = Value::Kind::kCurrency; v.integer = int64_t(Get64(p)); break;
    case ColumnType::kSingle: {
      uint32_t bits = Get32(p);
      float f;
      std::memcpy(&f, &bits, 4);
      v.kind = Value::Kind::kSingle;
      v.real = f;
      break;
    }
    case ColumnType::kDouble: v.kind = Value::Kind::kDouble; v.real = GetDouble(p); break;
    case ColumnType::kDateTime: v.kind = Value::Kind::kDateTime; v.real = GetDouble(p); break;
    case ColumnType::kGuid: v.kind = Value::Kind::kGuid; v.text.assign(reinterpret_cast<const char*>(p), 16); break;
    case ColumnType::kNumeric: v.kind = Value::Kind::kNumeric; v.text.assign(reinterpret_cast<const char*>(p), 17); break;
    default: v.kind = Value::Kind::kBinary; v.text.assign(reinterpret_cast<const char*>(p), c.length); break;
  }
  return v;
}

Value VariableValue(const ColumnDef& c, bool jet4, const uint8_t* p, size_t len, const LongValueReader& readLong) {
  Value v;
  auto text = [&](const uint8_t* d, size_t n) { return jet4 ? DecodeJet4Text(d, n) : DecodeCp1252(d, n); };
  // Later Access versions store some numeric columns as variable ones.
  if (FixedSize(c.type) > 0 && len >= FixedSize(c.type)) return FixedValue(c, jet4, p);
  switch (c.type) {
    case ColumnType::kText: v.kind = Value::Kind::kText; v.text = text(p, len); break;
    case ColumnType::kMemo:
    case ColumnType::kOle: {
      if (len < 12) {
        v.kind = c.type == ColumnType::kMemo ? Value::Kind::kMemo : Value::Kind::kOle;
        break;
      }
      uint32_t head = Get32(p);
      uint32_t total = head & kLongValueLengthMask;
      Bytes data;
      if (head & kLongValueInline) {
        size_t n = std::min<size_t>(total, len - 12);
        data.assign(p + 12, p + 12 + n);
      } else {
        data = readLong(p);
      }
      if (c.type == ColumnType::kMemo) {
        v.kind = Value::Kind::kMemo;
        v.text = text(data.data(), data.size());
      } else {
        v.kind = Value::Kind::kOle;
        v.text.assign(data.begin(), data.end());
      }
      break;
    }
    default: v.kind = Value::Kind::kBinary; v.text.assign(reinterpret_cast<const char*>(p), len); break;
  }
  return v;
}

/// Where a stored row keeps its column count and null mask; not `sound` when
/// the row is too short to hold them.
struct RowFrame {
  bool sound = false;
  size_t countSize = 0, numCols = 0, maskLen = 0;
  const uint8_t* mask = nullptr;
};

RowFrame FrameOf(bool jet4, const uint8_t* row, size_t length) {
  RowFrame f;
  f.countSize = jet4 ? 2 : 1;
  if (length < f.countSize + 1) return f;
  f.numCols = jet4 ? Get16(row) : row[0];
  f.maskLen = (f.numCols + 7) / 8;
  if (f.maskLen + f.countSize > length) return f;
  f.mask = row + length - f.maskLen;
  f.sound = true;
  return f;
}

/// A fixed-width column of a sound row (Yes/No lives in the null mask).
Value FixedColumn(const RowFrame& f, const ColumnDef& c, bool jet4, const uint8_t* row, size_t length) {
  const bool present = c.number < f.numCols && NullBit(f.mask, f.maskLen, c.number);
  if (c.type == ColumnType::kBoolean) return Value::Boolean(present);
  if (!present) return {};
  const size_t start = f.countSize + c.fixedOffset;
  // Types without a width of their own (text, binary, any other a file
  // may name) take the column's length, as FixedValue reads them.
  const size_t width = FixedSize(c.type) > 0 ? FixedSize(c.type) : c.length;
  if (start + width > length) return {};
  return FixedValue(c, jet4, row + start);
}

}  // namespace

Value DecodeFixedColumn(const TableDef& def, bool jet4, const uint8_t* row, size_t length, size_t column) {
  const RowFrame f = FrameOf(jet4, row, length);
  if (!f.sound) return {};
  return FixedColumn(f, def.columns[column], jet4, row, length);
}

std::vector<Value> DecodeRow(const TableDef& def, bool jet4, const uint8_t* row, size_t length,
                             const LongValueReader& readLong) {
  std::vector<Value> out(def.columns.size());
  const RowFrame f = FrameOf(jet4, row, length);
  if (!f.sound) return out;
  const size_t maskLen = f.maskLen;
  // Offsets of the variable columns; entry varCount is the end of their data.
  std::vector<size_t> varOffsets;
  if (def.varColumns > 0) {
    if (jet4) {
      if (length < maskLen + 2) return out;
      size_t at = length - maskLen - 2;
      size_t varCount = Get16(row + at);
      if (at < 2 * (varCount + 1)) return out;
      for (size_t i = 0; i <= varCount; ++i) varOffsets.push_back(Get16(row + at - 2 * (i + 1)));
    } else {
      size_t at = length - maskLen - 1;
      size_t varCount = row[at];
      size_t jumps = (length - 1) / 256;
      if (at < jumps + varCount + 1) return out;
      const uint8_t* jumpTable = row + at - jumps;
      for (size_t i = 0; i <= varCount; ++i) {
        size_t off = row[at - jumps - 1 - i];
        for (size_t j = 0; j < jumps; ++j)
          if (jumpTable[j] <= i) off += 256;
        varOffsets.push_back(off);
      }
    }
  }
  for (size_t k = 0; k < def.columns.size(); ++k) {
    const ColumnDef& c = def.columns[k];
    if (c.fixed() || c.type == ColumnType::kBoolean) {
      out[k] = FixedColumn(f, c, jet4, row, length);
      continue;
    }
    if (!(c.number < f.numCols && NullBit(f.mask, maskLen, c.number))) continue;
    if (size_t(c.varIndex) + 1 >= varOffsets.size()) continue;
    size_t start = varOffsets[c.varIndex];
    size_t end = varOffsets[c.varIndex + 1];
    if (end < start || end > length) continue;
    out[k] = VariableValue(c, jet4, row + start, end - start, readLong);
  }
  return out;
}

bool Value::IsNumber() const {
  switch (kind) {
    case Kind::kBoolean: case Kind::kByte: case Kind::kInteger: case Kind::kLong:
    case Kind::kCurrency: case Kind::kSingle: case Kind::kDouble: case Kind::kDateTime:
      return true;
    default:
      return false;
  }
}

std::string Value::AsText() const {
  char buf[64];
  switch (kind) {
    case Kind::kNull: return "";
    case Kind::kBoolean: return integer ? "True" : "False";
    case Kind::kByte: case Kind::kInteger: case Kind::kLong: return std::to_string(integer);
    case Kind::kCurrency: {
      std::snprintf(buf, sizeof buf, "%.4f", double(integer) / 10000.0);
      std::string s = buf;
      while (!s.empty() && s.back() == '0') s.pop_back();
      if (!s.empty() && s.back() == '.') s.pop_back();
      return s;
    }
    case Kind::kSingle: std::snprintf(buf, sizeof buf, "%.7g", real); return buf;
    case Kind::kDouble: case Kind::kDateTime: std::snprintf(buf, sizeof buf, "%.15g", real); return buf;
    default: return text;
  }
}

int64_t Value::AsInteger() const {
  switch (kind) {
    case Kind::kNull: return 0;
    case Kind::kSingle: case Kind::kDouble: case Kind::kDateTime: return std::llrint(real);
    case Kind::kCurrency: return std::llrint(double(integer) / 10000.0);
    case Kind::kText: case Kind::kMemo: {
      char* end = nullptr;
      double d = std::strtod(text.c_str(), &end);
      while (end && *end == ' ') ++end;
      // The whole text must be the number: "12x" is no number.
      if (text.empty() || end == text.c_str() || *end != '\0') ThrowConversion();
      return std::llrint(d);
    }
    case Kind::kBinary: case Kind::kOle: case Kind::kGuid: case Kind::kNumeric: ThrowConversion();
    default: return integer;
  }
}

Value CoerceTo(const Value& v, const ColumnDef& c) {
  if (v.IsNull()) return v;
  auto ranged = [&](int64_t lo, int64_t hi, Value::Kind k) {
    int64_t n = v.AsInteger();
    if (n < lo || n > hi) throw RunTimeError(6, "Overflow");
    Value x;
    x.kind = k;
    x.integer = n;
    return x;
  };
  switch (c.type) {
    case ColumnType::kBoolean: return Value::Boolean(v.AsInteger() != 0);
    case ColumnType::kByte: return ranged(0, 255, Value::Kind::kByte);
    case ColumnType::kInteger: return ranged(-32768, 32767, Value::Kind::kInteger);
    case ColumnType::kLong: return ranged(std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max(),
                                          Value::Kind::kLong);
    case ColumnType::kCurrency: {
      Value x;
      x.kind = Value::Kind::kCurrency;
      x.integer = v.kind == Value::Kind::kCurrency ? v.integer
                  : (v.kind == Value::Kind::kDouble || v.kind == Value::Kind::kSingle)
                      ? std::llrint(v.real * 10000.0)
                      : ranged(INT64_MIN / 10000, INT64_MAX / 10000, Value::Kind::kCurrency).integer * 10000;
      return x;
    }
    case ColumnType::kSingle: case ColumnType::kDouble: case ColumnType::kDateTime: {
      Value x;
      x.kind = c.type == ColumnType::kSingle ? Value::Kind::kSingle
               : c.type == ColumnType::kDouble ? Value::Kind::kDouble : Value::Kind::kDateTime;
      if (v.kind == Value::Kind::kDouble || v.kind == Value::Kind::kSingle || v.kind == Value::Kind::kDateTime)
        x.real = v.real;
      else if (v.kind == Value::Kind::kText || v.kind == Value::Kind::kMemo) {
        char* end = nullptr;
        x.real = std::strtod(v.text.c_str(), &end);
        if (end == v.text.c_str()) ThrowConversion();
      } else
        x.real = double(v.AsInteger());
      return x;
    }
    case ColumnType::kText: return Value::Text(v.AsText());
    case ColumnType::kMemo: return Value::Memo(v.AsText());
    case ColumnType::kGuid: case ColumnType::kNumeric: case ColumnType::kBinary: case ColumnType::kOle: {
      Value x = v;
      x.kind = c.type == ColumnType::kOle ? Value::Kind::kOle
               : c.type == ColumnType::kGuid ? Value::Kind::kGuid
               : c.type == ColumnType::kNumeric ? Value::Kind::kNumeric : Value::Kind::kBinary;
      return x;
    }
    default: ThrowConversion();
  }
}

Bytes EncodeRow(const TableDef& def, const std::vector<Value>& values, const LongValueWriter& writeLong) {
  size_t numCols = def.maxColumns;
  for (const auto& c : def.columns) numCols = std::max<size_t>(numCols, c.number + 1u);
  size_t fixedSize = 0;
  size_t varCount = 0;
  for (const auto& c : def.columns) {
    if (c.type == ColumnType::kBoolean) continue;
    if (c.fixed())
      fixedSize = std::max<size_t>(fixedSize, c.fixedOffset + FixedSize(c.type));
    else
      varCount = std::max<size_t>(varCount, c.varIndex + 1u);
  }
  Bytes row(2 + fixedSize, 0);
  Put16(row.data(), uint16_t(numCols));
  Bytes mask((numCols + 7) / 8, 0);
  auto setBit = [&](uint16_t n) { mask[n / 8] |= uint8_t(1u << (n % 8)); };
  std::vector<Bytes> varData(varCount);
  std::vector<bool> varPresent(varCount, false);
  for (size_t k = 0; k < def.columns.size(); ++k) {
    const ColumnDef& c = def.columns[k];
    Value v = CoerceTo(k < values.size() ? values[k] : Value::Null(), c);
    if (c.type == ColumnType::kBoolean) {
      if (!v.IsNull() && v.integer) setBit(c.number);
      continue;
    }
    if (v.IsNull()) continue;
    setBit(c.number);
    if (c.fixed()) {
      uint8_t* p = row.data() + 2 + c.fixedOffset;  // a type without a width may end the fixed part
      switch (c.type) {
        case ColumnType::kByte: p[0] = uint8_t(v.integer); break;
        case ColumnType::kInteger: Put16(p, uint16_t(v.integer)); break;
        case ColumnType::kLong: case ColumnType::kComplex: Put32(p, uint32_t(v.integer)); break;
        case ColumnType::kCurrency: Put64(p, uint64_t(v.integer)); break;
        case ColumnType::kSingle: {
          float f = float(v.real);
          uint32_t bits;
          std::memcpy(&bits, &f, 4);
          Put32(p, bits);
          break;
        }
        case ColumnType::kDouble: case ColumnType::kDateTime: PutDouble(p, v.real); break;
        default: {
          size_t n = std::min<size_t>(v.text.size(), FixedSize(c.type));
          std::memcpy(p, v.text.data(), n);
          break;
        }
      }
      continue;
    }
    Bytes data;
    bool compress = c.miscFlags & column_flag::kCompressedUnicode;
    if (c.type == ColumnType::kText) {
      if (Utf8ToUtf16(v.text).size() > size_t(c.length / 2)) ThrowFieldTooSmall();
      data = EncodeJet4Text(v.text, compress);
    } else if (c.type == ColumnType::kMemo) {
      // Only memo values of at most 1024 characters may use the compressed form.
      data = writeLong(EncodeJet4Text(v.text, compress && Utf8ToUtf16(v.text).size() <= 1024));
    } else if (c.type == ColumnType::kOle) {
      data = writeLong(Bytes(v.text.begin(), v.text.end()));
    } else {
      if (c.length && v.text.size() > c.length) ThrowFieldTooSmall();
      data.assign(v.text.begin(), v.text.end());
    }
    varData[c.varIndex] = std::move(data);
    varPresent[c.varIndex] = true;
  }
  if (def.varColumns == 0 && varCount == 0) {
    row.insert(row.end(), mask.begin(), mask.end());
    return row;
  }
  std::vector<uint16_t> offsets(varCount);
  for (size_t i = 0; i < varCount; ++i) {
    offsets[i] = uint16_t(row.size());
    row.insert(row.end(), varData[i].begin(), varData[i].end());
  }
  uint16_t eod = uint16_t(row.size());
  uint8_t two[2];
  Put16(two, eod);
  row.insert(row.end(), two, two + 2);
  for (size_t i = varCount; i-- > 0;) {
    Put16(two, offsets[i]);
    row.insert(row.end(), two, two + 2);
  }
  Put16(two, uint16_t(varCount));
  row.insert(row.end(), two, two + 2);
  row.insert(row.end(), mask.begin(), mask.end());
  return row;
}

}  // namespace bw::jet
