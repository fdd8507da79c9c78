// Numbers as the program has always computed them: 16- and 32-bit integers
// whose arithmetic stops with Overflow instead of wrapping, conversions that
// round a half to the even neighbour, lenient reading of number text, the one
// "numeric" test, and the few display formats the program uses.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace bw {

// ---- conversions (round half to even; out of range is Overflow) ----
/// Rounds to a 16-bit integer, a half going to the even neighbour (2.5 -> 2, 3.5 -> 4).
int16_t CInt(double value);
/// Rounds to a 32-bit integer, a half going to the even neighbour.
int32_t CLng(double value);
/// Rounds half to even without a range check (for values known to be in range).
double RoundHalfEven(double value);

// ---- checked arithmetic ----
int16_t Add16(int32_t a, int32_t b);
int16_t Sub16(int32_t a, int32_t b);
int16_t Mul16(int32_t a, int32_t b);
int32_t Add32(int64_t a, int64_t b);
int32_t Sub32(int64_t a, int64_t b);
int32_t Mul32(int64_t a, int64_t b);

// ---- reading number text ----
/// Lenient reading: skips leading blanks, takes the longest leading number
/// (sign, digits, one decimal point, exponent E or D; or an &H / &O number), else 0.
double Val(std::string_view text);
/// The one "numeric" test: after trimming blanks, an optional sign, digits with at
/// most one decimal point (at least one digit), an optional exponent; or &H / &O.
bool IsNumeric(std::string_view text);
/// The value of a text that IsNumeric accepts (Type mismatch, error 13, otherwise).
double NumericValue(std::string_view text);

// ---- formatting ----
/// Formats with one of the patterns the program uses: "0", "00", "000", "0.00",
/// "0000 " (four digits then a blank), "(0" and "0)" (literal around the number).
/// Digits are rounded half away from zero as the old formatter did; a negative
/// value gets its "-" in front of the digits: Format(-7, "000") is "-007".
std::string Format(double value, std::string_view pattern);
/// A number written as general text: whole numbers without a decimal point,
/// others with up to 15 significant digits ("Str"-like without the leading blank).
std::string GeneralNumber(double value);

}  // namespace bw
