// The expression evaluator: precedence and left grouping, the narrow 16-bit
// arithmetic, the hexadecimal quirk, one-letter names, the ignored "&" and the
// trap that turns a failed evaluation into 0.
#include <gtest/gtest.h>

#include "input/defines.h"
#include "input/equation.h"
#include "runtime/run_time_error.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

struct EvaluatorTest : ::testing::Test {
  test::TestProgram t;
  void Define(const std::string& line) { DefineSymbol(t.p, line, true); }
  /// Value of `text` stored under the name EXPR.
  int32_t Eval(const std::string& text, bool useStoredValues = true) {
    Define("EXPR = " + text);
    return EvaluateDefine(t.p, LookupDefine(t.p, "EXPR"), "EXPR", useStoredValues);
  }
};

TEST_F(EvaluatorTest, PrecedenceAndLeftGrouping) {
  EXPECT_EQ(Eval("2+3*4"), 14);
  EXPECT_EQ(Eval("(2+3)*4"), 20);
  EXPECT_EQ(Eval("2*3@2"), 18);  // power before product
  EXPECT_EQ(Eval("1|2+4"), 7);   // sum before or
  EXPECT_EQ(Eval("2@3@2"), 64);  // (2^3)^2, not 2^9
  EXPECT_EQ(Eval("8-2-1"), 5);
  EXPECT_EQ(Eval("1|2^3"), 0);   // (1|2) xor 3
  EXPECT_EQ(Eval("7/2"), 3);
  Define("N = -7");
  EXPECT_EQ(Eval("N/2"), -3);    // truncated toward zero
}

TEST_F(EvaluatorTest, OneLetterNamesStoredOrRecursive) {
  Define("F = 5");
  EXPECT_EQ(Eval("F+1"), 6);
  EXPECT_EQ(Eval("Q+1"), 1);  // undefined letter is 0
  Define("A = 2");
  EXPECT_EQ(Eval("AF"), 2);   // two operands; the second is dropped
  Define("B = A+1");          // an expression keeps Value 0
  EXPECT_EQ(Eval("B*2", true), 0);
  EXPECT_EQ(Eval("B*2", false), 6);
  Define("C = C+1");  // each level adds one until the deepest fails and counts 0
  EXPECT_GT(EvaluateDefine(t.p, LookupDefine(t.p, "C"), "C", false), 0);
}

TEST_F(EvaluatorTest, HexNumbersTakeOnlyDecimalDigits) {
  EXPECT_EQ(Eval("0X10"), 16);
  Define("F = 5");
  EXPECT_EQ(Eval("0X1F"), 1);  // F is a second operand and is dropped
  EXPECT_EQ(Eval("0X1+F"), 6);
}

TEST_F(EvaluatorTest, TildeIsTheMagnitudeOfTheComplement) {
  EXPECT_EQ(Eval("~5"), 6);
  EXPECT_EQ(Eval("~0"), 1);
  Define("M = -3");
  EXPECT_EQ(Eval("~M"), 2);
  EXPECT_EQ(Eval("~2*3"), 9);  // (~2)*3
  EXPECT_EQ(Eval("2*~3"), 8);
}

TEST_F(EvaluatorTest, AmpersandIsPassedOver) {
  EXPECT_EQ(Eval("3 & 5"), 3);
  EXPECT_EQ(Eval("6&3+1"), 6);  // 6, then 3+1 as a dropped operand
}

TEST_F(EvaluatorTest, FailedEvaluationsGiveZero) {
  EXPECT_EQ(Eval("200*200"), 0);
  EXPECT_EQ(Eval("32767+0"), 32767);
  EXPECT_EQ(Eval("32768+0"), 0);  // the number itself overflows 16 bits
  EXPECT_EQ(Eval("5/0"), 0);
  EXPECT_EQ(Eval("2@14"), 16384);
  EXPECT_EQ(Eval("2@15"), 0);
  EXPECT_EQ(Eval("-7/2"), 0);  // no unary minus
  EXPECT_EQ(Eval("5)"), 0);
  EXPECT_EQ(EvaluateDefine(t.p, 0, "NOPE", true), 0);
}

TEST_F(EvaluatorTest, WholeNumbersAndVariablesAreReadAt32Bits) {
  EXPECT_EQ(Eval("32768"), 32768);  // numeric text is read whole, not scanned
  EXPECT_EQ(Eval("2.5"), 2);
  t.p.CurrentDeviceCode = 100000;
  t.p.CurrentFunctionCode = -5;
  EXPECT_EQ(Eval("DEVICE"), 100000);
  EXPECT_EQ(Eval("function"), -5);
}

TEST(ApplyOperator, ActsOnTheTopOfTheStacks) {
  std::vector<std::string> ops{"", "-"};
  std::vector<double> values{0, 10, 2.5};  // 2.5 rounds to 2
  ApplyOperator(ops, values);
  EXPECT_EQ(ops.size(), 1u);
  EXPECT_EQ(values, (std::vector<double>{0, 8}));
  ops = {"", "&"};
  values = {0, 6, 3};
  ApplyOperator(ops, values);
  EXPECT_EQ(values, (std::vector<double>{0, 2}));  // "&" works when applied directly
  ops = {"", "~"};
  values = {0, -100000};  // unary, on 32 bits
  ApplyOperator(ops, values);
  EXPECT_EQ(values, (std::vector<double>{0, 99999}));
  EXPECT_EQ(OperatorPrecedence("@"), 10);
  EXPECT_EQ(OperatorPrecedence("("), 0);
}

TEST(ApplyOperator, ErrorsAreRunTimeErrors) {
  std::vector<std::string> ops{"", "*"};
  std::vector<double> values{0, 200, 200};
  try {
    ApplyOperator(ops, values);
    FAIL() << "no error";
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 6);
  }
  ops = {"", "/"};
  values = {0, 1, 0};
  try {
    ApplyOperator(ops, values);
    FAIL() << "no error";
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 11);
  }
}

}  // namespace
}  // namespace bw
