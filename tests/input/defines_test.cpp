// DEFINES directives: the separator choice, duplicates and replacement, the
// kind of each definition (including the one-letter lookup rule) and the
// scaling of raw duration lists.
#include <gtest/gtest.h>

#include "input/defines.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

struct DefinesTest : ::testing::Test {
  test::TestProgram t;
  const DefineEntry& Entry(const std::string& name) { return t.p.Defines[LookupDefine(t.p, name)]; }
  /// Defines "NAME = text" and gives the kind it was classified as.
  int16_t KindOf(const std::string& line) {
    DefineSymbol(t.p, line, true);
    return Entry(line.substr(0, line.find(" = "))).Kind;
  }
};

TEST_F(DefinesTest, AsAndEqualsBothDefineANumber) {
  DefineSymbol(t.p, "X AS 5", false);
  DefineSymbol(t.p, "y = 7", false);
  EXPECT_EQ(Entry("X").Kind, 1);
  EXPECT_EQ(Entry("X").Value, 5);
  EXPECT_EQ(Entry("Y").Name, "Y");
  EXPECT_EQ(Entry("Y").Value, 7);
  EXPECT_TRUE(t.host.messages.empty());
}

TEST_F(DefinesTest, DuplicateIsRefusedUnlessReplacingIsAllowed) {
  DefineSymbol(t.p, "X = 5", false);
  DefineSymbol(t.p, "x = 6", false);
  EXPECT_EQ(t.host.messages, std::vector<std::string>{"Duplicate Definition for label X"});
  EXPECT_EQ(Entry("X").Value, 5);
  DefineSymbol(t.p, "X = 6", true);
  EXPECT_EQ(Entry("X").Value, 6);
  EXPECT_EQ(t.p.Defines.UpperBound(), 1);  // replaced in place
}

TEST_F(DefinesTest, LineWithoutSeparatorIsBadlyFormed) {
  DefineSymbol(t.p, "X 5", false);
  DefineSymbol(t.p, "XAS5", false);  // "AS" needs its blanks
  EXPECT_EQ(t.host.messages, (std::vector<std::string>{"Badly formed DEFINES directive, 'X 5'",
                                                      "Badly formed DEFINES directive, 'XAS5'"}));
  EXPECT_EQ(t.p.Defines.UpperBound(), 0);
}

TEST_F(DefinesTest, AsWinsOverEqualsAndMatchesIgnoringCase) {
  DefineSymbol(t.p, "A = B AS 3", false);
  EXPECT_EQ(LookupDefine(t.p, "A"), 0);
  EXPECT_EQ(Entry("A = B").Value, 3);
  DefineSymbol(t.p, "lead as 9", false);
  EXPECT_EQ(Entry("LEAD").Value, 9);
  DefineSymbol(t.p, "BASE = 4", false);  // contains "AS" but no " AS "
  EXPECT_EQ(Entry("BASE").Value, 4);
}

TEST_F(DefinesTest, LookupIgnoresCaseAndFailsToHarmlessEntryZero) {
  DefineSymbol(t.p, "Code = Device", false);
  EXPECT_EQ(LookupDefine(t.p, "code"), 1);
  EXPECT_EQ(Entry("CODE").Text, "Device");  // the text keeps its case
  EXPECT_EQ(LookupDefine(t.p, "RC5"), 0);
  EXPECT_EQ(t.p.Defines[0].Name, "");
  EXPECT_EQ(t.p.Defines[0].Kind, 0);
}

TEST_F(DefinesTest, PerKeyVariablesNumbersFrameLengths) {
  EXPECT_EQ(KindOf("D = DEVICE"), 4);
  EXPECT_EQ(KindOf("F = function"), 4);
  EXPECT_EQ(KindOf("E = Extension"), 4);
  EXPECT_EQ(KindOf("N = 2.5"), 1);
  EXPECT_EQ(Entry("N").Value, 2.5);
  EXPECT_EQ(KindOf("GAP = ^108000"), 6);
  EXPECT_EQ(Entry("GAP").Value, 108000);
}

TEST_F(DefinesTest, RawDataIsNormalisedByTheTimeBase) {
  t.p.Protocol.TimeBase = 1;
  EXPECT_EQ(KindOf("LEAD = [9000 -4500]"), 5);
  EXPECT_EQ(Entry("LEAD").Text, "9000 -4500");
  t.p.Protocol.TimeBase = 560;
  DefineSymbol(t.p, "LEAD = [16 -8]", true);
  EXPECT_EQ(Entry("LEAD").Text, "8960 -4480");  // 16 * 560, -8 * 560
  // 560 is not below the time base; 559 * 560 = 313040; names stay
  EXPECT_EQ(ScaleRawData(t.p, "560  -559 GAP 0.5"), "560 -313040 GAP 280");
}

TEST_F(DefinesTest, ExpressionKindFollowsOneLetterNames) {
  DefineSymbol(t.p, "A = 1", false);
  EXPECT_EQ(KindOf("S = A+1"), 2);
  DefineSymbol(t.p, "D = DEVICE", false);
  EXPECT_EQ(KindOf("V = D*2"), 3);
  EXPECT_EQ(KindOf("W = V+S"), 3);  // V is itself over variables
}

TEST_F(DefinesTest, MultiLetterNameIsJudgedByItsLetters) {
  DefineSymbol(t.p, "CODE = FUNCTION", false);
  EXPECT_EQ(KindOf("K = CODE+1"), 2);  // C, O, D, E are no names of their own
  DefineSymbol(t.p, "M = DEVICE", false);
  EXPECT_EQ(KindOf("L = MAX-1"), 3);  // MAX is unknown, but its M is a variable
}

TEST_F(DefinesTest, HexPrefixSkipsItsXButNotTheLettersBehind) {
  DefineSymbol(t.p, "X = DEVICE", false);
  DefineSymbol(t.p, "B = DEVICE", false);
  EXPECT_EQ(KindOf("Q = 0X5+1"), 2);  // the X after a 0 belongs to the number
  EXPECT_EQ(KindOf("R = 1X"), 3);     // here X is a name
  EXPECT_EQ(KindOf("T = 0X1B"), 3);   // B ends the digits and is read as a name
}

}  // namespace
}  // namespace bw
