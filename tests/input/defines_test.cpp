// DEFINES directives: the separator choice, duplicates and replacement, the
// kind of each definition (including the one-letter lookup rule) and the
// scaling of raw duration lists.
#include <gtest/gtest.h>

#include "input/defines.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

using test::TestProgram;

const DefineEntry& Entry(const Program& p, const std::string& name) { return p.Defines[LookupDefine(p, name)]; }

TEST(DefineSymbol, AsAndEqualsBothDefineANumber) {
  TestProgram t;
  DefineSymbol(t.p, "X AS 5", false);
  DefineSymbol(t.p, "y = 7", false);
  EXPECT_EQ(Entry(t.p, "X").Kind, 1);
  EXPECT_EQ(Entry(t.p, "X").Value, 5);
  EXPECT_EQ(Entry(t.p, "Y").Name, "Y");
  EXPECT_EQ(Entry(t.p, "Y").Kind, 1);
  EXPECT_EQ(Entry(t.p, "Y").Value, 7);
  EXPECT_TRUE(t.host.messages.empty());
}

TEST(DefineSymbol, DuplicateIsRefusedUnlessReplacingIsAllowed) {
  TestProgram t;
  DefineSymbol(t.p, "X = 5", false);
  DefineSymbol(t.p, "x = 6", false);
  ASSERT_EQ(t.host.messages.size(), 1u);
  EXPECT_EQ(t.host.messages[0], "Duplicate Definition for label X");
  EXPECT_EQ(Entry(t.p, "X").Value, 5);
  EXPECT_EQ(Entry(t.p, "X").Text, "5");

  DefineSymbol(t.p, "X = 6", true);
  EXPECT_EQ(t.host.messages.size(), 1u);
  EXPECT_EQ(Entry(t.p, "X").Value, 6);
  EXPECT_EQ(t.p.Defines.UpperBound(), 1);  // replaced in place, not added
}

TEST(DefineSymbol, LineWithoutSeparatorIsBadlyFormed) {
  TestProgram t;
  DefineSymbol(t.p, "X 5", false);
  ASSERT_EQ(t.host.messages.size(), 1u);
  EXPECT_EQ(t.host.messages[0], "Badly formed DEFINES directive, 'X 5'");
  EXPECT_EQ(t.p.Defines.UpperBound(), 0);
  // "AS" without blanks around it is no separator either
  DefineSymbol(t.p, "XAS5", false);
  EXPECT_EQ(t.host.LastMessage(), "Badly formed DEFINES directive, 'XAS5'");
}

TEST(DefineSymbol, AsWinsOverEqualsAndMatchesIgnoringCase) {
  TestProgram t;
  DefineSymbol(t.p, "A = B AS 3", false);
  EXPECT_EQ(LookupDefine(t.p, "A"), 0);
  EXPECT_EQ(Entry(t.p, "A = B").Value, 3);
  DefineSymbol(t.p, "lead as 9", false);
  EXPECT_EQ(Entry(t.p, "LEAD").Value, 9);
  // a name that merely contains "AS" splits at "="
  DefineSymbol(t.p, "BASE = 4", false);
  EXPECT_EQ(Entry(t.p, "BASE").Value, 4);
}

TEST(DefineSymbol, TextKeepsItsCase) {
  TestProgram t;
  DefineSymbol(t.p, "Code = Device", false);
  EXPECT_EQ(Entry(t.p, "CODE").Text, "Device");
  EXPECT_EQ(Entry(t.p, "CODE").Kind, 4);
}

TEST(LookupDefine, IgnoresCaseAndFailsToHarmlessEntryZero) {
  TestProgram t;
  DefineSymbol(t.p, "SONY = 1", false);
  DefineSymbol(t.p, "NEC = 2", false);
  EXPECT_EQ(LookupDefine(t.p, "sony"), 1);
  EXPECT_EQ(LookupDefine(t.p, "Nec"), 2);
  EXPECT_EQ(LookupDefine(t.p, "RC5"), 0);
  const DefineEntry& none = t.p.Defines[0];
  EXPECT_EQ(none.Name, "");
  EXPECT_EQ(none.Text, "");
  EXPECT_EQ(none.Value, 0);
  EXPECT_EQ(none.Kind, 0);
}

TEST(ClassifyDefine, PerKeyVariablesNumbersFrameLengths) {
  TestProgram t;
  DefineSymbol(t.p, "D = DEVICE", false);
  DefineSymbol(t.p, "F = function", false);
  DefineSymbol(t.p, "E = Extension", false);
  DefineSymbol(t.p, "N = 2.5", false);
  DefineSymbol(t.p, "H = &H10", false);
  DefineSymbol(t.p, "GAP = ^108000", false);
  EXPECT_EQ(Entry(t.p, "D").Kind, 4);
  EXPECT_EQ(Entry(t.p, "F").Kind, 4);
  EXPECT_EQ(Entry(t.p, "E").Kind, 4);
  EXPECT_EQ(Entry(t.p, "N").Kind, 1);
  EXPECT_EQ(Entry(t.p, "N").Value, 2.5);
  EXPECT_EQ(Entry(t.p, "H").Value, 16);
  EXPECT_EQ(Entry(t.p, "GAP").Kind, 6);
  EXPECT_EQ(Entry(t.p, "GAP").Value, 108000);
}

TEST(ClassifyDefine, RawDataIsNormalisedByTheTimeBase) {
  TestProgram t;
  t.p.Protocol.TimeBase = 1;
  DefineSymbol(t.p, "LEAD = [9000 -4500]", false);
  EXPECT_EQ(Entry(t.p, "LEAD").Kind, 5);
  EXPECT_EQ(Entry(t.p, "LEAD").Text, "9000 -4500");

  t.p.Protocol.TimeBase = 560;
  DefineSymbol(t.p, "LEAD = [16 -8]", true);
  EXPECT_EQ(Entry(t.p, "LEAD").Text, "8960 -4480");  // 16 * 560, -8 * 560
}

TEST(ClassifyDefine, ExpressionKindFollowsOneLetterNames) {
  TestProgram t;
  DefineSymbol(t.p, "A = 1", false);
  DefineSymbol(t.p, "S = A+1", false);  // A is a number: a plain expression
  DefineSymbol(t.p, "D = DEVICE", false);
  DefineSymbol(t.p, "V = D*2", false);  // D is a per-key variable
  DefineSymbol(t.p, "W = V+S", false);  // V is itself over variables
  EXPECT_EQ(Entry(t.p, "S").Kind, 2);
  EXPECT_EQ(Entry(t.p, "V").Kind, 3);
  EXPECT_EQ(Entry(t.p, "W").Kind, 3);
}

TEST(ClassifyDefine, MultiLetterNamesAreJudgedByTheirLetters) {
  TestProgram t;
  DefineSymbol(t.p, "CODE = FUNCTION", false);
  DefineSymbol(t.p, "K = CODE+1", false);  // C, O, D, E are not defined: kind 2
  EXPECT_EQ(Entry(t.p, "K").Kind, 2);
  DefineSymbol(t.p, "M = DEVICE", false);
  DefineSymbol(t.p, "L = MAX-1", false);  // MAX is unknown, but its M is a variable
  EXPECT_EQ(Entry(t.p, "L").Kind, 3);
}

TEST(ClassifyDefine, HexPrefixSkipsItsXButNotTheLettersBehind) {
  TestProgram t;
  DefineSymbol(t.p, "X = DEVICE", false);
  DefineSymbol(t.p, "Q = 0X5+1", false);  // the X after a 0 belongs to the number
  DefineSymbol(t.p, "R = 1X", false);     // here X is a name
  EXPECT_EQ(Entry(t.p, "Q").Kind, 2);
  EXPECT_EQ(Entry(t.p, "R").Kind, 3);
  DefineSymbol(t.p, "B = DEVICE", false);
  DefineSymbol(t.p, "T = 0X1B", false);  // B ends the digits and is read as a name
  EXPECT_EQ(Entry(t.p, "T").Kind, 3);
}

TEST(ScaleRawData, SmallNumbersCountInTimeBaseUnits) {
  TestProgram t;
  t.p.Protocol.TimeBase = 560;
  EXPECT_EQ(ScaleRawData(t.p, "16   -8"), "8960 -4480");
  EXPECT_EQ(ScaleRawData(t.p, "560 -559 GAP"), "560 -313040 GAP");  // 559 * 560 = 313040
  EXPECT_EQ(ScaleRawData(t.p, "0.5 -1.25"), "280 -700");
  EXPECT_EQ(ScaleRawData(t.p, ""), "");
}

}  // namespace
}  // namespace bw
