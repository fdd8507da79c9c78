// The line and number helpers of the file readers: tokens, field counts, blanks,
// file names, comment-free lines, decimal and hexadecimal number text.
#include <gtest/gtest.h>

#include "input/subroutines.h"
#include "runtime/run_time_error.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

using Strings = std::vector<std::string>;

/// The tokens GetToken cuts off one after the other until the text is empty.
Strings Tokens(std::string text, const std::string& separator = " ") {
  Strings tokens;
  while (!text.empty()) tokens.push_back(GetToken(text, separator));
  return tokens;
}

TEST(GetToken, SeparatorsQuotesEmptyFieldsAndCase) {
  std::string text = "MANUFACTURER = Sony";
  EXPECT_EQ(GetToken(text, "="), "MANUFACTURER");
  EXPECT_EQ(text, "Sony");
  std::string empty;
  EXPECT_EQ(GetToken(empty), "");
  // "" is one blank, runs of blanks collapse and tabs are no blanks; quotes protect separators and vanish,
  // an unclosed one protects the rest; a long separator matches ignoring case
  const std::vector<std::tuple<std::string, std::string, Strings>> rows = {
      {"a   b\t c", "", {"a", "b\t", "c"}}, {"b\t c", " ", {"b\t", "c"}}, {"\"A B\" C", " ", {"A B", "C"}},
      {"x\"y,z\"w,next", ",", {"xy,zw", "next"}}, {"\"a,b,c", ",", {"a,b,c"}},
      {"\"p AS q\" AS r", " AS ", {"p AS q", "r"}}, {"a,,b", ",", {"a", "", "b"}},
      {"KEY:", ":", {"KEY"}}, {"x as y", " AS ", {"x", "y"}}, {"BASE AS 5", " AS ", {"BASE", "5"}},
  };
  for (const auto& [line, separator, tokens] : rows) EXPECT_EQ(Tokens(line, separator), tokens) << line;
}

TEST(CountFields, OnePlusTheSeparatorCountCaseSensitive) {
  EXPECT_EQ(CountFields("", ','), 1);
  EXPECT_EQ(CountFields("a,b,,c", ','), 4);
  EXPECT_EQ(CountFields("xXx", 'x'), 3);
  EXPECT_EQ(CountFields(std::string(32766, ','), ','), 32767);
  EXPECT_EQ(test::ErrorText([] { CountFields(std::string(32767, ','), ','); }), "6 Overflow");
}

TEST(CleanNames, FileNamesLoseOnlyTheNarrowSetAndBlanksGoButNotTabs) {
  EXPECT_EQ(CleanFileName("A/B:C?a\\b*c<d>e|f"), "ABCabcdef");
  EXPECT_EQ(CleanFileName("\"TV\" 1.cde"), "\"TV\" 1.cde");  // the double quote survives
  EXPECT_EQ(RemoveBlanks(" num base = hex "), "NUMBASE=HEX");
  EXPECT_EQ(RemoveBlanks("a\tb c"), "A\tBC");
}

TEST(FileExists, TrueForReadableFilesOnly) {
  test::TempDir dir;
  EXPECT_TRUE(FileExists(dir.Write("x.dvc", "")));
  EXPECT_FALSE(FileExists(dir.path() / "y.dvc") || FileExists(dir.path()));
}

TEST(ReadCleanLine, CutsCommentsAsTheFileFormatsExpect) {
  test::TempDir dir;
  TextFileReader file(dir.Write("c.dvc", "KEY1 = 5 ' note\r\n'all\r\n;all\r\nKEY ; x\r\n ;indented\r\na'b'c"));
  Strings lines;
  std::string line;
  while (ReadCleanLine(file, line)) lines.push_back(line);
  // a blank before ";" keeps the line: it is not a comment line for this routine
  EXPECT_EQ(lines, (Strings{"KEY1 = 5 ", "", "", "KEY ; x", " ;indented", "a"}));
  EXPECT_EQ(file.LineNumber(), 6);
}

TEST(ParseNumber, HexPrefixFlagDecimalReadingAndHalfEven) {
  const std::vector<std::tuple<std::string, bool, int32_t>> rows = {
      // the decimal reading stops at the letter; with the flag "0" and "x" are zero digits; the prefix
      // counts only at the very start
      {"0x1F", false, 31}, {"0X1f", false, 31}, {"1F", true, 31}, {"1F", false, 1}, {"0x1F", true, 31},
      {" 0x1F", false, 0}, {"abc", false, 0}, {"  -17 rest", false, -17}, {"2.5", false, 2}, {"3.5", false, 4},
      {"-2.5", false, -2}, {"2147483647", false, 2147483647},
  };
  for (const auto& [text, hex, value] : rows) EXPECT_EQ(ParseNumber(text, hex), value) << text << " " << hex;
  EXPECT_EQ(test::ErrorText([] { ParseNumber("2147483648"); }), "6 Overflow");
  EXPECT_EQ(test::ErrorText([] { ParseNumber("0x80000000"); }), "6 Overflow");
}

TEST(HexToLong, NonDigitsCountZeroButKeepTheirPlaceAndBeyondTheTopIsOverflow) {
  const std::vector<std::pair<std::string, int32_t>> rows = {
      // leading zeros beyond eight places are harmless; a two-byte character takes one place
      {"", 0}, {"7FFFFFFF", 2147483647}, {"00000000001", 1}, {"1G", 16}, {"G1", 1}, {"1 0", 256}, {"1\xC3\xA9", 16},
  };
  for (const auto& [text, value] : rows) EXPECT_EQ(HexToLong(text), value) << text;
  EXPECT_EQ(test::ErrorText([] { HexToLong("80000000"); }), "6 Overflow");
  EXPECT_EQ(test::ErrorText([] { HexToLong("100000000"); }), "6 Overflow");
}

TEST(HexDigits, ReadEitherCaseWriteLowerCase) {
  std::vector<int> values;
  for (const char* digit : {"9", "A", "f", "G", ""}) values.push_back(HexDigitValue(digit));
  EXPECT_EQ(values, (std::vector<int>{9, 10, 15, 0, 0}));
  EXPECT_EQ(HexDigitChar(9) + HexDigitChar(11) + HexDigitChar(16) + HexDigitChar(-1), "9b");
}

}  // namespace
}  // namespace bw
