// Cutting tokens off a line, counting fields, squeezing out blanks, cleaning
// file names and reading comment-free lines.
#include <gtest/gtest.h>

#include "input/subroutines.h"
#include "runtime/run_time_error.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

/// The tokens GetToken cuts off one after the other until the text is empty.
std::vector<std::string> Tokens(std::string text, const std::string& separator) {
  std::vector<std::string> tokens;
  while (!text.empty()) tokens.push_back(GetToken(text, separator));
  return tokens;
}

TEST(GetToken, CutsAtTheSeparatorAndTrimsBothSides) {
  std::string text = "MANUFACTURER = Sony";
  EXPECT_EQ(GetToken(text, "="), "MANUFACTURER");
  EXPECT_EQ(text, "Sony");
  std::string blank = "a   b\t c";
  EXPECT_EQ(GetToken(blank, ""), "a");  // empty separator means one blank; runs collapse
  EXPECT_EQ(blank, "b\t c");
  EXPECT_EQ(GetToken(blank), "b\t");  // tabs are not blanks
  std::string empty;
  EXPECT_EQ(GetToken(empty), "");
}

TEST(GetToken, QuotesProtectSeparatorsAndVanish) {
  std::string text = "\"A B\" C";
  EXPECT_EQ(GetToken(text), "A B");
  EXPECT_EQ(text, "C");
  EXPECT_EQ(Tokens("x\"y,z\"w,next", ","), (std::vector<std::string>{"xy,zw", "next"}));
  EXPECT_EQ(Tokens("\"a,b,c", ","), std::vector<std::string>{"a,b,c"});  // unclosed: protects the rest
  EXPECT_EQ(Tokens("\"p AS q\" AS r", " AS "), (std::vector<std::string>{"p AS q", "r"}));
}

TEST(GetToken, EmptyFieldsBetweenNonBlankSeparators) {
  EXPECT_EQ(Tokens("a,,b", ","), (std::vector<std::string>{"a", "", "b"}));
  EXPECT_EQ(Tokens("KEY:", ":"), std::vector<std::string>{"KEY"});
}

TEST(GetToken, MultiCharacterSeparatorMatchesIgnoringCase) {
  EXPECT_EQ(Tokens("x AS y", " AS "), (std::vector<std::string>{"x", "y"}));
  EXPECT_EQ(Tokens("x as y", " AS "), (std::vector<std::string>{"x", "y"}));
  EXPECT_EQ(Tokens("BASE AS 5", " AS "), (std::vector<std::string>{"BASE", "5"}));
}

TEST(CountFields, OnePlusTheSeparatorCountCaseSensitive) {
  EXPECT_EQ(CountFields("", ','), 1);
  EXPECT_EQ(CountFields("a,b,,c", ','), 4);
  EXPECT_EQ(CountFields("xXx", 'x'), 3);
  EXPECT_EQ(CountFields(std::string(32766, ','), ','), 32767);
  try {
    CountFields(std::string(32767, ','), ',');
    FAIL() << "no error";
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 6);
  }
}

TEST(CleanFileName, RemovesOnlyTheNarrowSet) {
  EXPECT_EQ(CleanFileName("A/B:C?"), "ABC");
  EXPECT_EQ(CleanFileName("a\\b*c<d>e|f"), "abcdef");
  EXPECT_EQ(CleanFileName("\"TV\" 1.cde"), "\"TV\" 1.cde");  // the double quote survives
}

TEST(RemoveBlanks, UpperCasesAndDropsEveryBlankButNotTabs) {
  EXPECT_EQ(RemoveBlanks(" num base = hex "), "NUMBASE=HEX");
  EXPECT_EQ(RemoveBlanks("a\tb c"), "A\tBC");
}

TEST(FileExists, TrueForReadableFilesOnly) {
  test::TempDir dir;
  EXPECT_TRUE(FileExists(dir.Write("x.dvc", "")));
  EXPECT_FALSE(FileExists(dir.path() / "y.dvc"));
  EXPECT_FALSE(FileExists(dir.path()));
}

TEST(ReadCleanLine, CutsCommentsAsTheFileFormatsExpect) {
  test::TempDir dir;
  TextFileReader file(dir.Write("c.dvc", "KEY1 = 5 ' note\r\n'all\r\n;all\r\nKEY ; x\r\n ;indented\r\na'b'c"));
  std::vector<std::string> lines;
  std::string line;
  while (ReadCleanLine(file, line)) lines.push_back(line);
  // a blank before ";" keeps the line: it is not a comment line for this routine
  EXPECT_EQ(lines, (std::vector<std::string>{"KEY1 = 5 ", "", "", "KEY ; x", " ;indented", "a"}));
  EXPECT_EQ(file.LineNumber(), 6);
}

}  // namespace
}  // namespace bw
