// DEFINES directives (separators, duplicates, kinds, raw list scaling) and the evaluator: precedence,
// 16-bit narrowing, the hex, "~" and "&" quirks, one-letter names and failures that give 0.
#include <gtest/gtest.h>

#include "input/defines.h"
#include "input/equation.h"
#include "runtime/run_time_error.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

struct DefinesTest : ::testing::Test {
  test::TestProgram t;
  const DefineEntry& Entry(const std::string& name) { return t.p.Defines[LookupDefine(t.p, name)]; }
  void Define(const std::string& line, bool replace = false) { DefineSymbol(t.p, line, replace); }
  /// Defines "NAME = text" and gives the kind it was classified as.
  int16_t KindOf(const std::string& line) {
    Define(line, true);
    return Entry(line.substr(0, line.find(" = "))).Kind;
  }
};

TEST_F(DefinesTest, AsWinsOverEqualsAndBothDefineANumber) {
  for (const char* line : {"X AS 5", "y = 7", "A = B AS 3", "lead as 9", "BASE = 4"}) Define(line);
  EXPECT_EQ(Entry("X").Kind, 1);
  EXPECT_EQ(Entry("Y").Name, "Y");
  EXPECT_EQ(LookupDefine(t.p, "A"), 0);
  // BASE contains "AS" but no " AS "
  EXPECT_EQ((std::vector<double>{Entry("X").Value, Entry("Y").Value, Entry("A = B").Value, Entry("LEAD").Value,
                                 Entry("BASE").Value}), (std::vector<double>{5, 7, 3, 9, 4}));
  EXPECT_TRUE(t.host.messages.empty());
  // lookup ignores case, keeps the text's case and fails to the harmless entry 0
  Define("Code = Device");
  EXPECT_EQ(LookupDefine(t.p, "code"), 6);
  EXPECT_EQ(Entry("CODE").Text, "Device");
  EXPECT_EQ(LookupDefine(t.p, "RC5"), 0);
  EXPECT_EQ(t.p.Defines[0].Name + std::to_string(t.p.Defines[0].Kind), "0");
}

TEST_F(DefinesTest, DuplicateIsRefusedUnlessReplacingAndNoSeparatorIsBadlyFormed) {
  for (const char* line : {"X = 5", "x = 6", "X 5", "XAS5"}) Define(line);  // "AS" needs its blanks
  EXPECT_EQ(t.host.messages,
            (std::vector<std::string>{"Duplicate Definition for label X", "Badly formed DEFINES directive, 'X 5'",
                                      "Badly formed DEFINES directive, 'XAS5'"}));
  EXPECT_EQ(Entry("X").Value, 5);
  Define("X = 6", true);
  EXPECT_EQ(Entry("X").Value, 6);
  EXPECT_EQ(t.p.Defines.UpperBound(), 1);  // replaced in place
}

TEST_F(DefinesTest, KindsOfPerKeyVariablesNumbersFrameLengthsAndExpressions) {
  Define("CODE = FUNCTION");
  EXPECT_EQ(KindOf("K = CODE+1"), 2);  // judged by its letters C, O, D, E, none of them a name yet
  for (const char* line : {"A = 1", "D = DEVICE", "M = DEVICE", "X = DEVICE", "B = DEVICE"}) Define(line);
  const std::vector<std::pair<std::string, int16_t>> rows = {
      {"D = DEVICE", 4}, {"F = function", 4}, {"E = Extension", 4}, {"N = 2.5", 1}, {"GAP = ^108000", 6},
      {"S = A+1", 2}, {"V = D*2", 3},
      {"W = V+S", 3},     // V is itself over variables
      {"L = MAX-1", 3},   // MAX is unknown, but its M is a variable
      {"Q = 0X5+1", 2},   // the X after a 0 belongs to the number
      {"R = 1X", 3},      // here X is a name
      {"T = 0X1B", 3},    // B ends the digits and is read as a name
  };
  for (const auto& [line, kind] : rows) EXPECT_EQ(KindOf(line), kind) << line;
  EXPECT_EQ(Entry("N").Value, 2.5);
  EXPECT_EQ(Entry("GAP").Value, 108000);
}

TEST_F(DefinesTest, RawDataIsNormalisedByTheTimeBase) {
  t.p.Protocol.TimeBase = 1;
  EXPECT_EQ(KindOf("LEAD = [9000 -4500]"), 5);
  EXPECT_EQ(Entry("LEAD").Text, "9000 -4500");
  t.p.Protocol.TimeBase = 560;
  Define("LEAD = [16 -8]", true);
  EXPECT_EQ(Entry("LEAD").Text, "8960 -4480");  // 16 * 560, -8 * 560
  // 560 is not below the time base; 559 * 560 = 313040; names stay
  EXPECT_EQ(ScaleRawData(t.p, "560  -559 GAP 0.5"), "560 -313040 GAP 280");
}

struct EvaluatorTest : DefinesTest {
  EvaluatorTest() {
    for (const char* line : {"F = 5", "A = 2", "B = A+1", "N = -7", "M = -3", "C = C+1"}) Define(line);
    t.p.CurrentDeviceCode = 100000;
    t.p.CurrentFunctionCode = -5;
  }
  /// Value of `text` stored under the name EXPR.
  int32_t Eval(const std::string& text, bool useStoredValues = true) {
    Define("EXPR = " + text, true);
    return EvaluateDefine(t.p, LookupDefine(t.p, "EXPR"), "EXPR", useStoredValues);
  }
  void Check(const std::vector<std::pair<std::string, int32_t>>& rows) {
    for (const auto& [text, value] : rows) EXPECT_EQ(Eval(text), value) << text;
  }
};

TEST_F(EvaluatorTest, PrecedenceGroupingAndNames) {
  // Power before product, sum before or, (2^3)^2 not 2^9, (1|2) xor 3, N/2 toward zero; an undefined letter
  // is 0; "AF" is two operands and the second is dropped; an expression's stored Value is 0.
  Check({{"2+3*4", 14}, {"(2+3)*4", 20}, {"8-2-1", 5}, {"7/2", 3}, {"2*3@2", 18}, {"1|2+4", 7}, {"2@3@2", 64},
         {"1|2^3", 0}, {"N/2", -3}, {"F+1", 6}, {"Q+1", 1}, {"AF", 2}, {"B*2", 0}});
  EXPECT_EQ(Eval("B*2", false), 6);
  // each level adds one until the deepest fails and counts 0; a name used three times in its own
  // definition is 0 at every level, in time linear in the depth
  EXPECT_GT(EvaluateDefine(t.p, LookupDefine(t.p, "C"), "C", false), 0);
  Define("G = G+G*G");
  EXPECT_EQ(EvaluateDefine(t.p, LookupDefine(t.p, "G"), "G", false), 0);
}

TEST_F(EvaluatorTest, HexTildeAndAmpersandQuirks) {
  // Hex takes only decimal digits (F is a dropped operand); ~ is the magnitude of the complement; "&" is
  // passed over and 3+1 is a dropped operand.
  Check({{"0X10", 16}, {"0X1F", 1}, {"0X1+F", 6}, {"~5", 6}, {"~0", 1}, {"~M", 2}, {"~2*3", 9}, {"2*~3", 8},
         {"3 & 5", 3}, {"6&3+1", 6}});
}

TEST_F(EvaluatorTest, SixteenBitFailuresGiveZeroButWholeNumbersAndVariablesAre32Bit) {
  // 32768 overflows as an operand but numeric text is read whole; there is no unary minus.
  Check({{"200*200", 0}, {"32767+0", 32767}, {"32768+0", 0}, {"5/0", 0}, {"2@14", 16384}, {"2@15", 0},
         {"-7/2", 0}, {"5)", 0}, {"32768", 32768}, {"2.5", 2}, {"DEVICE", 100000}, {"function", -5}});
  EXPECT_EQ(EvaluateDefine(t.p, 0, "NOPE", true), 0);
}

TEST(ApplyOperator, ActsOnTheTopOfTheStacksAndThrowsRunTimeErrors) {
  auto apply = [](const std::string& op, std::vector<double> values) {
    std::vector<std::string> ops{"", op};
    try {
      ApplyOperator(ops, values);
    } catch (const RunTimeError& e) {
      return std::vector<double>{-1.0 * e.number()};
    }
    EXPECT_EQ(ops.size(), 1u);
    return values;
  };
  using V = std::vector<double>;
  EXPECT_EQ(apply("-", {0, 10, 2.5}), (V{0, 8}));      // 2.5 rounds to 2
  EXPECT_EQ(apply("&", {0, 6, 3}), (V{0, 2}));         // "&" works when applied directly
  EXPECT_EQ(apply("~", {0, -100000}), (V{0, 99999}));  // unary, on 32 bits
  EXPECT_EQ(apply("*", {0, 200, 200}), V{-6});         // overflow
  EXPECT_EQ(apply("/", {0, 1, 0}), V{-11});            // division by zero
}

}  // namespace
}  // namespace bw
