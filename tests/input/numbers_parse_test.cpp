// Number text as the file formats write it: decimal with lenient reading,
// "0x" and flagged hexadecimal, and the hexadecimal digit helpers.
#include <gtest/gtest.h>

#include "input/subroutines.h"
#include "runtime/run_time_error.h"

namespace bw {
namespace {

int ErrorNumberOf(void (*action)()) {
  try {
    action();
  } catch (const RunTimeError& e) {
    return e.number();
  }
  return 0;
}

TEST(ParseNumber, HexPrefixFlagAndDecimalReading) {
  EXPECT_EQ(ParseNumber("0x1F"), 31);
  EXPECT_EQ(ParseNumber("0X1f"), 31);
  EXPECT_EQ(ParseNumber("1F"), 1);  // the decimal reading stops at the letter
  EXPECT_EQ(ParseNumber("1F", true), 31);
  EXPECT_EQ(ParseNumber("0x1F", true), 31);  // with the flag "0" and "x" are zero digits
  EXPECT_EQ(ParseNumber(" 0x1F"), 0);        // the prefix counts only at the very start
  EXPECT_EQ(ParseNumber("abc"), 0);
  EXPECT_EQ(ParseNumber("  -17 rest"), -17);
}

TEST(ParseNumber, HalvesRoundToEvenAndThe32BitRangeIsChecked) {
  EXPECT_EQ(ParseNumber("2.5"), 2);
  EXPECT_EQ(ParseNumber("3.5"), 4);
  EXPECT_EQ(ParseNumber("-2.5"), -2);
  EXPECT_EQ(ParseNumber("2147483647"), 2147483647);
  EXPECT_EQ(ErrorNumberOf([] { ParseNumber("2147483648"); }), 6);
  EXPECT_EQ(ErrorNumberOf([] { ParseNumber("0x80000000"); }), 6);
}

TEST(HexToLong, NonDigitsCountZeroButKeepTheirPlace) {
  EXPECT_EQ(HexToLong(""), 0);
  EXPECT_EQ(HexToLong("7FFFFFFF"), 2147483647);
  EXPECT_EQ(HexToLong("00000000001"), 1);  // leading zeros beyond eight places are harmless
  EXPECT_EQ(HexToLong("1G"), 16);
  EXPECT_EQ(HexToLong("G1"), 1);
  EXPECT_EQ(HexToLong("1 0"), 256);
  EXPECT_EQ(HexToLong("1\xC3\xA9"), 16);  // a two-byte character takes one place
}

TEST(HexToLong, BeyondTheTopIsOverflow) {
  try {
    HexToLong("80000000");
    FAIL() << "no error";
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 6);
    EXPECT_EQ(e.description(), "Overflow");
  }
  EXPECT_EQ(ErrorNumberOf([] { HexToLong("100000000"); }), 6);
}

TEST(HexDigits, ReadEitherCaseWriteLowerCase) {
  EXPECT_EQ(HexDigitValue("9"), 9);
  EXPECT_EQ(HexDigitValue("A"), 10);
  EXPECT_EQ(HexDigitValue("f"), 15);
  EXPECT_EQ(HexDigitValue("G"), 0);
  EXPECT_EQ(HexDigitValue(""), 0);
  EXPECT_EQ(HexDigitChar(9), "9");
  EXPECT_EQ(HexDigitChar(11), "b");
  EXPECT_EQ(HexDigitChar(16), "");
  EXPECT_EQ(HexDigitChar(-1), "");
}

}  // namespace
}  // namespace bw
