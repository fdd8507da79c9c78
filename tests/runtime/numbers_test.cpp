// Integer conversions, checked arithmetic, lenient reading, the numeric test and the formatter.
#include <gtest/gtest.h>

#include <cmath>

#include "runtime/numbers.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

using test::ErrorNumber;

TEST(Conversions, HalvesGoToTheEvenNeighbourAndBeyondTheRangeIsOverflow) {
  EXPECT_EQ((std::vector<int>{CInt(2.5), CInt(3.5), CInt(-2.5), CInt(2.5000001), CLng(0.5), CLng(1.5), CInt(-32768),
                              CInt(32767.4), CLng(-2147483648.0)}),
            (std::vector<int>{2, 4, -2, 3, 0, 2, -32768, 32767, INT32_MIN}));
  EXPECT_EQ(RoundHalfEven(4.5), 4.0);
  EXPECT_EQ(ErrorNumber([] { CInt(32767.5); }), 6);  // rounds to the even 32768
  EXPECT_EQ(ErrorNumber([] { CLng(2147483648.0); }), 6);
  EXPECT_EQ(ErrorNumber([] { CLng(NAN); }), 6);
}

TEST(CheckedArithmetic, StopsAtTheRangeInsteadOfWrapping) {
  EXPECT_EQ(Add16(32766, 1), 32767);
  EXPECT_EQ(Add32(2147483646, 1), 2147483647);
  EXPECT_EQ(Mul32(65536, 32767), 2147418112);
  for (const auto& overflow : std::vector<std::function<void()>>{
           [] { Add16(32767, 1); }, [] { Sub16(-32768, 1); }, [] { Mul16(200, 200); }, [] { Add32(2147483647, 1); },
           [] { Sub32(INT32_MIN, 1); }, [] { Mul32(65536, 32768); }, [] { Mul32(INT64_MAX, 2); }})
    EXPECT_EQ(ErrorNumber(overflow), 6);
}

TEST(Val, TakesTheLongestLeadingNumberElseZeroWithHexAndOctalPrefixes) {
  // An exponent letter without digits is not part of the number; a tab is not a blank; 8 is no octal
  // digit; up to four hexadecimal digits are a 16-bit value, more are 32-bit.
  const std::vector<std::pair<std::string, double>> rows = {
      {"  42abc", 42}, {"-12.5x", -12.5}, {"1.2.3", 1.2},   {".5", 0.5},         {"2d2", 200},
      {"3E+", 3},      {"abc", 0},        {"-", 0},         {"\t5", 0},          {"&h10zz", 16},
      {"&O18", 1},     {"&HFFFF", -1},    {"&H8000", -32768}, {"&H10000", 65536}, {"&HFFFFFFFF", -1},
  };
  for (const auto& [text, value] : rows) EXPECT_EQ(Val(text), value) << text;
}

TEST(IsNumeric, SignDigitsOnePointExponentOrRadixPrefix) {
  for (const char* yes : {"5", "  -5  ", "+1.25", "1.", ".5", "1e-5", "2D3", "&H1f", "&O777"})
    EXPECT_TRUE(IsNumeric(yes)) << yes;
  for (const char* no : {"", "   ", ".", "-", "1.2.3", "1E", "1,000", "$5", "5 5", "\t5", "0x1F", "&H",
                         "&HG", "&O8", "[9000 -4500]", "^108000"})
    EXPECT_FALSE(IsNumeric(no)) << no;
  EXPECT_EQ((std::vector<double>{NumericValue(" 12.5 "), NumericValue("-3E2")}), (std::vector<double>{12.5, -300}));
  EXPECT_EQ(ErrorNumber([] { NumericValue("12x"); }), 13);
}

TEST(Format, PatternsPadRoundAndPlaceTheSign) {
  // The width is a minimum; halves go away from zero, unlike the conversions; 2.675 is stored a little
  // below itself, but read to 15 digits it is 2.675 and rounds up.
  const std::vector<std::tuple<double, std::string, std::string>> rows = {
      {12345, "000", "12345"}, {7, "00", "07"},         {-7, "000", "-007"},       {106, "0000 ", "0106 "},
      {-560, "0000 ", "-0560 "}, {5, "(0", "(5"},       {-12, "0)", "-12)"},        {2.5, "0", "3"},
      {-2.5, "0", "-3"},       {9.5, "0", "10"},        {-0.4, "0", "0"},           {38000, "0.00", "38000.00"},
      {0.125, "0.00", "0.13"}, {2.675, "0.00", "2.68"}, {0.005, "0.00", "0.01"},    {9.999, "0.00", "10.00"},
      {-1.5, "0.00", "-1.50"},
  };
  for (const auto& [value, pattern, text] : rows) EXPECT_EQ(Format(value, pattern), text) << value << pattern;
  EXPECT_EQ(GeneralNumber(108000) + " " + GeneralNumber(-2.25) + " " + GeneralNumber(1.0 / 3.0) + " " +
                GeneralNumber(1e20),
            "108000 -2.25 0.333333333333333 1E+20");
}

}  // namespace
}  // namespace bw
