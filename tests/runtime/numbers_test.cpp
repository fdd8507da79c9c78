// Integer conversions, checked arithmetic, lenient reading, the numeric test
// and the formatter.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "runtime/numbers.h"
#include "runtime/run_time_error.h"

namespace bw {
namespace {

int ErrorNumberOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const RunTimeError& e) {
    return e.number();
  }
  return 0;
}

TEST(Conversions, HalvesGoToTheEvenNeighbour) {
  EXPECT_EQ(CInt(2.5), 2);
  EXPECT_EQ(CInt(3.5), 4);
  EXPECT_EQ(CInt(-2.5), -2);
  EXPECT_EQ(CInt(2.5000001), 3);
  EXPECT_EQ(CLng(0.5), 0);
  EXPECT_EQ(CLng(1.5), 2);
  EXPECT_EQ(RoundHalfEven(4.5), 4.0);
}

TEST(Conversions, RangeEndsAreKeptAndBeyondIsOverflow) {
  EXPECT_EQ(CInt(-32768), -32768);
  EXPECT_EQ(CInt(32767.4), 32767);
  EXPECT_EQ(ErrorNumberOf([] { CInt(32767.5); }), 6);  // rounds to the even 32768
  EXPECT_EQ(CLng(-2147483648.0), INT32_MIN);
  EXPECT_EQ(ErrorNumberOf([] { CLng(2147483648.0); }), 6);
  EXPECT_EQ(ErrorNumberOf([] { CLng(NAN); }), 6);
}

TEST(CheckedArithmetic, StopsAtTheRangeInsteadOfWrapping) {
  EXPECT_EQ(Add16(32766, 1), 32767);
  EXPECT_EQ(ErrorNumberOf([] { Add16(32767, 1); }), 6);
  EXPECT_EQ(ErrorNumberOf([] { Sub16(-32768, 1); }), 6);
  EXPECT_EQ(ErrorNumberOf([] { Mul16(200, 200); }), 6);
  EXPECT_EQ(Add32(2147483646, 1), 2147483647);
  EXPECT_EQ(ErrorNumberOf([] { Add32(2147483647, 1); }), 6);
  EXPECT_EQ(ErrorNumberOf([] { Sub32(INT32_MIN, 1); }), 6);
  EXPECT_EQ(Mul32(65536, 32767), 2147418112);
  EXPECT_EQ(ErrorNumberOf([] { Mul32(65536, 32768); }), 6);
  EXPECT_EQ(ErrorNumberOf([] { Mul32(INT64_MAX, 2); }), 6);
}

TEST(Val, TakesTheLongestLeadingNumberElseZero) {
  EXPECT_EQ(Val("  42abc"), 42);
  EXPECT_EQ(Val("-12.5x"), -12.5);
  EXPECT_EQ(Val("1.2.3"), 1.2);
  EXPECT_EQ(Val(".5"), 0.5);
  EXPECT_EQ(Val("2d2"), 200);
  EXPECT_EQ(Val("3E+"), 3);  // an exponent letter without digits is not part of it
  EXPECT_EQ(Val("abc"), 0);
  EXPECT_EQ(Val("-"), 0);
  EXPECT_EQ(Val("\t5"), 0);  // a tab is not a blank
}

TEST(Val, HexAndOctalPrefixes) {
  EXPECT_EQ(Val("&h10zz"), 16);
  EXPECT_EQ(Val("&O18"), 1);  // 8 is not an octal digit
  // Up to four hexadecimal digits are a 16-bit value, more are 32-bit.
  EXPECT_EQ(Val("&HFFFF"), -1);
  EXPECT_EQ(Val("&H8000"), -32768);
  EXPECT_EQ(Val("&H10000"), 65536);
  EXPECT_EQ(Val("&HFFFFFFFF"), -1);
}

TEST(IsNumeric, SignDigitsOnePointExponentOrRadixPrefix) {
  for (const char* yes : {"5", "  -5  ", "+1.25", "1.", ".5", "1e-5", "2D3", "&H1f", "&O777"})
    EXPECT_TRUE(IsNumeric(yes)) << yes;
  for (const char* no : {"", "   ", ".", "-", "1.2.3", "1E", "1,000", "$5", "5 5", "\t5", "0x1F", "&H",
                         "&HG", "&O8", "[9000 -4500]", "^108000"})
    EXPECT_FALSE(IsNumeric(no)) << no;
}

TEST(NumericValue, ReadsNumericTextAndRefusesTheRest) {
  EXPECT_EQ(NumericValue(" 12.5 "), 12.5);
  EXPECT_EQ(NumericValue("-3E2"), -300);
  EXPECT_EQ(ErrorNumberOf([] { NumericValue("12x"); }), 13);
}

TEST(Format, PatternsPadRoundAndPlaceTheSign) {
  EXPECT_EQ(Format(12345, "000"), "12345");  // the width is a minimum
  EXPECT_EQ(Format(7, "00"), "07");
  EXPECT_EQ(Format(-7, "000"), "-007");
  EXPECT_EQ(Format(106, "0000 "), "0106 ");
  EXPECT_EQ(Format(-560, "0000 "), "-0560 ");
  EXPECT_EQ(Format(5, "(0"), "(5");
  EXPECT_EQ(Format(-12, "0)"), "-12)");
  // halves go away from zero, unlike the conversions
  EXPECT_EQ(Format(2.5, "0"), "3");
  EXPECT_EQ(Format(-2.5, "0"), "-3");
  EXPECT_EQ(Format(9.5, "0"), "10");
  EXPECT_EQ(Format(-0.4, "0"), "0");
}

TEST(Format, TwoDecimals) {
  EXPECT_EQ(Format(38000, "0.00"), "38000.00");
  EXPECT_EQ(Format(0.125, "0.00"), "0.13");
  // 2.675 is stored a little below itself; read to 15 digits it is 2.675 and rounds up
  EXPECT_EQ(Format(2.675, "0.00"), "2.68");
  EXPECT_EQ(Format(0.005, "0.00"), "0.01");
  EXPECT_EQ(Format(9.999, "0.00"), "10.00");
  EXPECT_EQ(Format(-1.5, "0.00"), "-1.50");
}

TEST(GeneralNumber, WholeNumbersHaveNoPoint) {
  EXPECT_EQ(GeneralNumber(108000), "108000");
  EXPECT_EQ(GeneralNumber(-2.25), "-2.25");
  EXPECT_EQ(GeneralNumber(1.0 / 3.0), "0.333333333333333");
  EXPECT_EQ(GeneralNumber(1e20), "1E+20");
}

}  // namespace
}  // namespace bw
