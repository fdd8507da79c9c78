// Checked integer arithmetic, half-to-even conversions, lenient number reading
// and the small formatter. See numbers.h.
#include "runtime/numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "runtime/run_time_error.h"

namespace bw {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsSpace(char c) { return c == ' '; }
char Upper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }

int16_t Checked16(int64_t v) {
  if (v < std::numeric_limits<int16_t>::min() || v > std::numeric_limits<int16_t>::max()) ThrowOverflow();
  return static_cast<int16_t>(v);
}

int32_t Checked32(int64_t v) {
  if (v < std::numeric_limits<int32_t>::min() || v > std::numeric_limits<int32_t>::max()) ThrowOverflow();
  return static_cast<int32_t>(v);
}

// The value of the "&H" / "&O" digits starting at `pos` (just behind the letter).
// `count` receives the number of digits taken. Like the old run time, up to four
// hexadecimal digits (or six octal) are a 16-bit value and more are 32-bit, so
// "&HFFFF" is -1 and "&H8000" is -32768. Beyond 32 bits is Overflow.
double RadixValue(std::string_view text, std::size_t pos, int radix, std::size_t& count) {
  uint64_t value = 0;
  count = 0;
  for (std::size_t i = pos; i < text.size(); ++i) {
    const char c = Upper(text[i]);
    int digit;
    if (IsDigit(c)) {
      digit = c - '0';
    } else if (radix == 16 && c >= 'A' && c <= 'F') {
      digit = c - 'A' + 10;
    } else {
      break;
    }
    if (digit >= radix) break;
    value = value * static_cast<uint64_t>(radix) + static_cast<uint64_t>(digit);
    if (value > 0xFFFFFFFFull) ThrowOverflow();
    ++count;
  }
  if (value <= 0xFFFF && count > 0 && value > 0x7FFF) return static_cast<double>(static_cast<int16_t>(value));
  if (value > 0x7FFFFFFF) return static_cast<double>(static_cast<int32_t>(static_cast<uint32_t>(value)));
  return static_cast<double>(value);
}

// Length of the decimal number (sign, digits, one point, exponent E or D) that
// starts at `pos`, and whether it held at least one mantissa digit.
std::size_t DecimalLength(std::string_view text, std::size_t pos, bool& hasDigits) {
  std::size_t i = pos;
  hasDigits = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
  while (i < text.size() && IsDigit(text[i])) {
    ++i;
    hasDigits = true;
  }
  if (i < text.size() && text[i] == '.') {
    ++i;
    while (i < text.size() && IsDigit(text[i])) {
      ++i;
      hasDigits = true;
    }
  }
  if (!hasDigits) return 0;
  if (i < text.size() && (Upper(text[i]) == 'E' || Upper(text[i]) == 'D')) {
    std::size_t j = i + 1;
    if (j < text.size() && (text[j] == '+' || text[j] == '-')) ++j;
    if (j < text.size() && IsDigit(text[j])) {
      while (j < text.size() && IsDigit(text[j])) ++j;
      i = j;
    }
  }
  return i - pos;
}

// Converts a decimal number text (as measured by DecimalLength) to a double.
double DecimalValue(std::string_view number) {
  // Up to 15 digits without a point or exponent are a whole number that a
  // double holds exactly: the same value strtod gives, sign of zero included.
  const bool negative = !number.empty() && number[0] == '-';
  const std::string_view digits = number.substr(!number.empty() && (number[0] == '-' || number[0] == '+'));
  if (!digits.empty() && digits.size() <= 15 &&
      std::all_of(digits.begin(), digits.end(), [](char c) { return IsDigit(c); })) {
    int64_t whole = 0;
    for (const char c : digits) whole = whole * 10 + (c - '0');
    return negative ? -static_cast<double>(whole) : static_cast<double>(whole);
  }
  std::string s(number);
  for (char& c : s)
    if (c == 'D' || c == 'd') c = 'E';
  const double v = std::strtod(s.c_str(), nullptr);
  if (std::isinf(v)) ThrowOverflow();
  return v;
}

// Decimal digits of |value| rounded half away from zero to `decimals` places,
// read from 15 significant digits as the old formatter did (so 2.675 gives 2.68).
void RoundDecimal(double magnitude, int decimals, std::string& whole, std::string& fraction) {
  whole = "0";
  fraction.assign(static_cast<std::size_t>(decimals), '0');
  if (magnitude == 0 || !std::isfinite(magnitude)) return;
  // A whole number below 10^15 has all its digits among the 15 read below and
  // nothing to round: its digits are the answer.
  if (magnitude < 1e15 && magnitude == std::trunc(magnitude)) {
    whole = std::to_string(static_cast<int64_t>(magnitude));
    return;
  }
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.14e", magnitude);
  // buf: d.dddddddddddddde[+-]XX
  std::string digits;
  const char* p = buf;
  for (; *p && *p != 'e'; ++p)
    if (IsDigit(*p)) digits += *p;
  const int exponent = std::atoi(p + 1);
  // value = 0.digits * 10^(exponent + 1); keep exponent + 1 + decimals digits
  int intDigits = exponent + 1;
  const int keep = intDigits + decimals;
  if (keep < 0) return;
  if (keep < static_cast<int>(digits.size())) {
    const bool up = digits[static_cast<std::size_t>(keep)] >= '5';
    digits.resize(static_cast<std::size_t>(keep));
    if (up) {
      int i = keep - 1;
      for (; i >= 0; --i) {
        if (digits[static_cast<std::size_t>(i)] == '9') {
          digits[static_cast<std::size_t>(i)] = '0';
        } else {
          ++digits[static_cast<std::size_t>(i)];
          break;
        }
      }
      if (i < 0) {
        digits.insert(digits.begin(), '1');
        ++intDigits;
      }
    }
  } else {
    digits.append(static_cast<std::size_t>(keep) - digits.size(), '0');
  }
  // digits now holds intDigits + decimals digits (intDigits may be <= 0).
  if (intDigits <= 0) {
    std::string frac(static_cast<std::size_t>(-intDigits), '0');
    frac += digits;
    whole = "0";
    fraction = frac.substr(0, static_cast<std::size_t>(decimals));
    if (fraction.size() < static_cast<std::size_t>(decimals))
      fraction.append(static_cast<std::size_t>(decimals) - fraction.size(), '0');
  } else {
    whole = digits.substr(0, static_cast<std::size_t>(intDigits));
    fraction = digits.substr(static_cast<std::size_t>(intDigits));
  }
}

}  // namespace

// ---- conversions ----

double RoundHalfEven(double value) { return std::nearbyint(value); }

int16_t CInt(double value) {
  if (!std::isfinite(value)) ThrowOverflow();
  const double r = std::nearbyint(value);
  if (r < -32768.0 || r > 32767.0) ThrowOverflow();
  return static_cast<int16_t>(r);
}

int32_t CLng(double value) {
  if (!std::isfinite(value)) ThrowOverflow();
  const double r = std::nearbyint(value);
  if (r < -2147483648.0 || r > 2147483647.0) ThrowOverflow();
  return static_cast<int32_t>(r);
}

// ---- checked arithmetic ----

int16_t Add16(int32_t a, int32_t b) { return Checked16(int64_t{a} + b); }
int16_t Sub16(int32_t a, int32_t b) { return Checked16(int64_t{a} - b); }
int16_t Mul16(int32_t a, int32_t b) { return Checked16(int64_t{a} * b); }

int32_t Add32(int64_t a, int64_t b) {
  int64_t r;
  if (__builtin_add_overflow(a, b, &r)) ThrowOverflow();
  return Checked32(r);
}
int32_t Sub32(int64_t a, int64_t b) {
  int64_t r;
  if (__builtin_sub_overflow(a, b, &r)) ThrowOverflow();
  return Checked32(r);
}
int32_t Mul32(int64_t a, int64_t b) {
  int64_t r;
  if (__builtin_mul_overflow(a, b, &r)) ThrowOverflow();
  return Checked32(r);
}

// ---- reading number text ----

double Val(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && IsSpace(text[i])) ++i;
  if (i + 1 < text.size() && text[i] == '&') {
    const char kind = Upper(text[i + 1]);
    std::size_t count = 0;
    if (kind == 'H') return RadixValue(text, i + 2, 16, count);
    if (kind == 'O') return RadixValue(text, i + 2, 8, count);
    return 0;
  }
  bool hasDigits = false;
  const std::size_t length = DecimalLength(text, i, hasDigits);
  if (length == 0) return 0;
  return DecimalValue(text.substr(i, length));
}

bool IsNumeric(std::string_view text) {
  std::size_t begin = 0, end = text.size();
  while (begin < end && IsSpace(text[begin])) ++begin;
  while (end > begin && IsSpace(text[end - 1])) --end;
  const std::string_view t = text.substr(begin, end - begin);
  if (t.empty()) return false;
  if (t.size() >= 2 && t[0] == '&') {
    const char kind = Upper(t[1]);
    if (kind != 'H' && kind != 'O') return false;
    const int radix = kind == 'H' ? 16 : 8;
    std::size_t count = 0;
    for (std::size_t i = 2; i < t.size(); ++i) {
      const char c = Upper(t[i]);
      const bool ok = radix == 16 ? (IsDigit(c) || (c >= 'A' && c <= 'F')) : (c >= '0' && c <= '7');
      if (!ok) return false;
      ++count;
    }
    // More than 32 bits of digits would not fit the value.
    if (count == 0) return false;
    std::size_t significant = 0;
    bool leading = true;
    for (std::size_t i = 2; i < t.size(); ++i) {
      if (leading && t[i] == '0') continue;
      leading = false;
      ++significant;
    }
    if (radix == 16 && significant > 8) return false;
    if (radix == 8 && (significant > 11 || (significant == 11 && t[t.size() - 11] > '3'))) return false;
    return true;
  }
  bool hasDigits = false;
  const std::size_t length = DecimalLength(t, 0, hasDigits);
  return hasDigits && length == t.size();
}

double NumericValue(std::string_view text) {
  if (!IsNumeric(text)) ThrowTypeMismatch();
  return Val(text);
}

// ---- formatting ----

std::string Format(double value, std::string_view pattern) {
  // prefix literal, integer zeros, optional ".zeros", suffix literal
  std::size_t i = 0;
  while (i < pattern.size() && pattern[i] != '0' && pattern[i] != '.') ++i;
  const std::string prefix(pattern.substr(0, i));
  int minWhole = 0;
  while (i < pattern.size() && pattern[i] == '0') {
    ++minWhole;
    ++i;
  }
  int decimals = 0;
  if (i < pattern.size() && pattern[i] == '.') {
    ++i;
    while (i < pattern.size() && pattern[i] == '0') {
      ++decimals;
      ++i;
    }
  }
  const std::string suffix(pattern.substr(i));

  std::string whole, fraction;
  RoundDecimal(std::fabs(value), decimals, whole, fraction);
  const bool isZero = whole.find_first_not_of('0') == std::string::npos &&
                      fraction.find_first_not_of('0') == std::string::npos;
  // strip leading zeros, then pad to the pattern's width
  const std::size_t firstNonZero = whole.find_first_not_of('0');
  whole = firstNonZero == std::string::npos ? std::string() : whole.substr(firstNonZero);
  if (static_cast<int>(whole.size()) < minWhole)
    whole.insert(0, static_cast<std::size_t>(minWhole) - whole.size(), '0');

  std::string out = prefix;
  if (value < 0 && !isZero) out += '-';
  out += whole;
  if (decimals > 0) out += "." + fraction;
  out += suffix;
  return out;
}

std::string GeneralNumber(double value) {
  if (value == 0) return "0";
  if (std::fabs(value) < 1e15 && value == std::trunc(value)) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.0f", value);
    return buf;
  }
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.15G", value);
  return buf;
}

}  // namespace bw
