// Cutting tokens off a line, counting fields, squeezing out blanks, cleaning
// file names and reading comment-free lines.
#include <gtest/gtest.h>

#include "input/subroutines.h"
#include "runtime/run_time_error.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

using test::TempDir;

TEST(GetToken, SplitsAtTheGivenSeparatorAndTrimsBothSides) {
  std::string text = "MANUFACTURER = Sony";
  EXPECT_EQ(GetToken(text, "="), "MANUFACTURER");
  EXPECT_EQ(text, "Sony");
}

TEST(GetToken, DefaultSeparatorIsOneBlankAndRunsOfBlanksCollapse) {
  std::string text = "a   b  c";
  EXPECT_EQ(GetToken(text), "a");
  EXPECT_EQ(text, "b  c");
  EXPECT_EQ(GetToken(text, ""), "b");  // an empty separator means the blank too
  EXPECT_EQ(GetToken(text), "c");
  EXPECT_EQ(text, "");
  EXPECT_EQ(GetToken(text), "");
}

TEST(GetToken, QuotesProtectBlanksAndVanish) {
  std::string text = "\"A B\" C";
  EXPECT_EQ(GetToken(text), "A B");
  EXPECT_EQ(text, "C");
}

TEST(GetToken, QuotesInsideATokenAlsoVanish) {
  std::string text = "x\"y,z\"w,next";
  EXPECT_EQ(GetToken(text, ","), "xy,zw");
  EXPECT_EQ(text, "next");
}

TEST(GetToken, UnclosedQuoteProtectsTheRestOfTheLine) {
  std::string text = "\"a,b,c";
  EXPECT_EQ(GetToken(text, ","), "a,b,c");
  EXPECT_EQ(text, "");
}

TEST(GetToken, EmptyFieldsBetweenNonBlankSeparators) {
  std::string text = "a,,b";
  EXPECT_EQ(GetToken(text, ","), "a");
  EXPECT_EQ(text, ",b");
  EXPECT_EQ(GetToken(text, ","), "");
  EXPECT_EQ(text, "b");
  EXPECT_EQ(GetToken(text, ","), "b");
  EXPECT_EQ(text, "");
}

TEST(GetToken, MultiCharacterSeparatorMatchesIgnoringCase) {
  std::string upper = "x AS y";
  EXPECT_EQ(GetToken(upper, " AS "), "x");
  EXPECT_EQ(upper, "y");
  std::string lower = "x as y";
  EXPECT_EQ(GetToken(lower, " AS "), "x");
  EXPECT_EQ(lower, "y");
  // a name that merely contains the letters is not split
  std::string word = "BASE AS 5";
  EXPECT_EQ(GetToken(word, " AS "), "BASE");
  EXPECT_EQ(word, "5");
}

TEST(GetToken, QuotedMultiCharacterSeparatorIsKeptWhole) {
  // Inside quotes the separator's characters go into the token one by one.
  std::string text = "\"p AS q\" AS r";
  EXPECT_EQ(GetToken(text, " AS "), "p AS q");
  EXPECT_EQ(text, "r");
}

TEST(GetToken, TabsAreNotBlanks) {
  std::string text = "\ta\t b";
  EXPECT_EQ(GetToken(text), "\ta\t");
  EXPECT_EQ(text, "b");
}

TEST(GetToken, SeparatorAtTheEndLeavesEmptyRest) {
  std::string text = "KEY:";
  EXPECT_EQ(GetToken(text, ":"), "KEY");
  EXPECT_EQ(text, "");
}

TEST(CountFields, OnePlusTheSeparatorCount) {
  EXPECT_EQ(CountFields("", ','), 1);
  EXPECT_EQ(CountFields("a", ','), 1);
  EXPECT_EQ(CountFields("a,b,,c", ','), 4);
  EXPECT_EQ(CountFields("a;b", ','), 1);
  EXPECT_EQ(CountFields("xXx", 'x'), 3);  // case-sensitive: only the two small x count
}

TEST(CountFields, MoreThan32767FieldsOverflow) {
  const std::string separators32766(32766, ',');
  EXPECT_EQ(CountFields(separators32766, ','), 32767);
  const std::string separators32767(32767, ',');
  try {
    CountFields(separators32767, ',');
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
  EXPECT_EQ(RemoveBlanks("   "), "");
}

TEST(FileExists, TrueForReadableFilesOnly) {
  TempDir dir;
  EXPECT_TRUE(FileExists(dir.Write("x.dvc", "")));
  EXPECT_FALSE(FileExists(dir.path() / "y.dvc"));
  EXPECT_FALSE(FileExists(dir.path()));
}

TEST(ReadCleanLine, CutsCommentsAsTheFileFormatsExpect) {
  TempDir dir;
  const auto path = dir.Write("c.dvc",
                              "KEY1 = 5 ' note\r\n"
                              "'all\r\n"
                              ";all\r\n"
                              "KEY ; x\r\n"
                              " ;indented\r\n"
                              "a'b'c\n"
                              "plain");
  TextFileReader file(path);
  std::string line;
  ASSERT_TRUE(ReadCleanLine(file, line));
  EXPECT_EQ(line, "KEY1 = 5 ");
  ASSERT_TRUE(ReadCleanLine(file, line));
  EXPECT_EQ(line, "");
  ASSERT_TRUE(ReadCleanLine(file, line));
  EXPECT_EQ(line, "");
  ASSERT_TRUE(ReadCleanLine(file, line));
  EXPECT_EQ(line, "KEY ; x");
  ASSERT_TRUE(ReadCleanLine(file, line));
  EXPECT_EQ(line, " ;indented");  // a blank first: not a comment line here
  ASSERT_TRUE(ReadCleanLine(file, line));
  EXPECT_EQ(line, "a");
  ASSERT_TRUE(ReadCleanLine(file, line));
  EXPECT_EQ(line, "plain");
  EXPECT_EQ(file.LineNumber(), 7);
  EXPECT_FALSE(ReadCleanLine(file, line));
}

}  // namespace
}  // namespace bw
