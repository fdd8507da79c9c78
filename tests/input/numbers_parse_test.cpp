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
  EXPECT_EQ(ParseNumber("abc"), 0);
  EXPECT_EQ(ParseNumber(""), 0);
  EXPECT_EQ(ParseNumber("  42 rest"), 42);
  EXPECT_EQ(ParseNumber("-17"), -17);
}

TEST(ParseNumber, HalvesRoundToEven) {
  EXPECT_EQ(ParseNumber("2.5"), 2);
  EXPECT_EQ(ParseNumber("3.5"), 4);
  EXPECT_EQ(ParseNumber("-2.5"), -2);
  EXPECT_EQ(ParseNumber("2.51"), 3);
}

TEST(ParseNumber, PrefixIsOnlyRecognisedAtTheVeryStart) {
  // A blank before "0x" makes it decimal: 0 followed by a letter.
  EXPECT_EQ(ParseNumber(" 0x1F"), 0);
  // With the flag the prefix is not skipped: "0" and "x" both count as digits 0.
  EXPECT_EQ(ParseNumber("0x1F", true), 31);
  EXPECT_EQ(ParseNumber("0x"), 0);
}

TEST(ParseNumber, BeyondThirtyTwoBitsIsOverflow) {
  EXPECT_EQ(ParseNumber("2147483647"), 2147483647);
  EXPECT_EQ(ErrorNumberOf([] { ParseNumber("2147483648"); }), 6);
  EXPECT_EQ(ErrorNumberOf([] { ParseNumber("0x80000000"); }), 6);
}

TEST(HexToLong, DigitsReadFromTheRight) {
  EXPECT_EQ(HexToLong(""), 0);
  EXPECT_EQ(HexToLong("ff"), 255);
  EXPECT_EQ(HexToLong("7FFFFFFF"), 2147483647);
  EXPECT_EQ(HexToLong("00000000001"), 1);  // leading zeros beyond eight places are harmless
}

TEST(HexToLong, NonDigitsCountZeroButKeepTheirPlace) {
  EXPECT_EQ(HexToLong("1G"), 16);
  EXPECT_EQ(HexToLong("G1"), 1);
  EXPECT_EQ(HexToLong("1 0"), 256);   // the blank is a zero digit in the middle place
  EXPECT_EQ(HexToLong("1\xC3\xA9"), 16);  // a two-byte character still takes one place
}

TEST(HexToLong, EightDigitsWithTopDigitEightOrMoreOverflow) {
  try {
    HexToLong("80000000");
    FAIL() << "no error";
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 6);
    EXPECT_EQ(e.description(), "Overflow");
  }
  EXPECT_EQ(ErrorNumberOf([] { HexToLong("FFFFFFFF"); }), 6);
  EXPECT_EQ(ErrorNumberOf([] { HexToLong("100000000"); }), 6);
}

TEST(HexDigitValue, DigitsAndLettersInEitherCase) {
  EXPECT_EQ(HexDigitValue("0"), 0);
  EXPECT_EQ(HexDigitValue("9"), 9);
  EXPECT_EQ(HexDigitValue("A"), 10);
  EXPECT_EQ(HexDigitValue("f"), 15);
  EXPECT_EQ(HexDigitValue("G"), 0);
  EXPECT_EQ(HexDigitValue("x"), 0);
  EXPECT_EQ(HexDigitValue(""), 0);
}

TEST(HexDigitChar, LowerCaseAndEmptyOutOfRange) {
  EXPECT_EQ(HexDigitChar(0), "0");
  EXPECT_EQ(HexDigitChar(9), "9");
  EXPECT_EQ(HexDigitChar(11), "b");
  EXPECT_EQ(HexDigitChar(15), "f");
  EXPECT_EQ(HexDigitChar(16), "");
  EXPECT_EQ(HexDigitChar(-1), "");
}

}  // namespace
}  // namespace bw
