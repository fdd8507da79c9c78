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

using test::TestProgram;

struct EvaluatorTest : ::testing::Test {
  TestProgram t;
  void Define(const std::string& line) { DefineSymbol(t.p, line, true); }
  /// Value of `text` stored under the name EXPR.
  int32_t Eval(const std::string& text, bool useStoredValues = true) {
    Define("EXPR = " + text);
    return EvaluateDefine(t.p, LookupDefine(t.p, "EXPR"), "EXPR", useStoredValues);
  }
};

TEST_F(EvaluatorTest, PrecedenceAndParentheses) {
  EXPECT_EQ(Eval("2+3*4"), 14);
  EXPECT_EQ(Eval("(2+3)*4"), 20);
  EXPECT_EQ(Eval("2*3@2"), 18);   // power before product
  EXPECT_EQ(Eval("1|2+4"), 7);    // sum before or
  EXPECT_EQ(Eval("6^3"), 5);
  EXPECT_EQ(Eval(" 2 + 3 "), 5);
}

TEST_F(EvaluatorTest, EqualPrecedenceGroupsFromTheLeft) {
  EXPECT_EQ(Eval("2@3@2"), 64);  // (2^3)^2, not 2^9
  EXPECT_EQ(Eval("8-2-1"), 5);
  EXPECT_EQ(Eval("1|2^3"), 0);   // (1|2)^3 = 3^3
  EXPECT_EQ(Eval("16/4/2"), 2);
}

TEST_F(EvaluatorTest, QuotientTruncatesTowardZero) {
  EXPECT_EQ(Eval("7/2"), 3);
  Define("N = -7");
  EXPECT_EQ(Eval("N/2"), -3);
}

TEST_F(EvaluatorTest, OneLetterNamesUseStoredValues) {
  Define("F = 5");
  EXPECT_EQ(Eval("F+1"), 6);
  EXPECT_EQ(Eval("Q+1"), 1);  // undefined letter is 0
  Define("A = 2");
  Define("B = 3");
  EXPECT_EQ(Eval("AB"), 2);  // two operands; the second is dropped
}

TEST_F(EvaluatorTest, RecursiveEvaluationWhenStoredValuesAreNotUsed) {
  Define("A = 2");
  Define("B = A+1");  // an expression keeps Value 0
  EXPECT_EQ(Eval("B*2", true), 0);
  EXPECT_EQ(Eval("B*2", false), 6);
}

TEST_F(EvaluatorTest, SelfReferenceEndsWithoutCrashing) {
  Define("A = A+1");
  // each level adds one until the deepest level fails and counts 0
  const int32_t value = EvaluateDefine(t.p, LookupDefine(t.p, "A"), "A", false);
  EXPECT_GT(value, 0);
}

TEST_F(EvaluatorTest, HexNumbersTakeOnlyDecimalDigits) {
  EXPECT_EQ(Eval("0X10"), 16);
  Define("F = 5");
  EXPECT_EQ(Eval("0X1F"), 1);     // F is a second operand and is dropped
  EXPECT_EQ(Eval("0X1+F"), 6);
  EXPECT_EQ(Eval("0X7FFF"), 7);   // the F's end the number
}

TEST_F(EvaluatorTest, TildeIsTheMagnitudeOfTheComplement) {
  EXPECT_EQ(Eval("~5"), 6);
  EXPECT_EQ(Eval("~0"), 1);
  Define("M = -3");
  EXPECT_EQ(Eval("~M"), 2);
  EXPECT_EQ(Eval("~2*3"), 9);   // (~2)*3
  EXPECT_EQ(Eval("2*~3"), 8);
}

TEST_F(EvaluatorTest, AmpersandIsPassedOver) {
  EXPECT_EQ(Eval("3 & 5"), 3);
  EXPECT_EQ(Eval("6&3+1"), 6);  // 6, then 3+1 as a dropped operand
}

TEST_F(EvaluatorTest, SixteenBitOverflowAndOtherErrorsGiveZero) {
  EXPECT_EQ(Eval("200*200"), 0);
  EXPECT_EQ(Eval("32767+0"), 32767);
  EXPECT_EQ(Eval("32768+0"), 0);  // the number itself overflows 16 bits
  EXPECT_EQ(Eval("32767+1"), 0);
  EXPECT_EQ(Eval("5/0"), 0);
  EXPECT_EQ(Eval("2@14"), 16384);
  EXPECT_EQ(Eval("2@15"), 0);
}

TEST_F(EvaluatorTest, NoUnaryMinusAndNoUnmatchedParenthesis) {
  EXPECT_EQ(Eval("-7/2"), 0);
  EXPECT_EQ(Eval("(-7)"), 0);
  EXPECT_EQ(Eval("5)"), 0);
}

TEST_F(EvaluatorTest, NumericTextIsReadWhole) {
  // A whole numeric text is a number read at 32 bits, not scanned.
  EXPECT_EQ(Eval("32768"), 32768);
  EXPECT_EQ(Eval("2.5"), 2);
  EXPECT_EQ(Eval("3.5"), 4);
}

TEST_F(EvaluatorTest, PerKeyVariablesAreWideAndCaseBlind) {
  t.p.CurrentDeviceCode = 100000;
  t.p.CurrentFunctionCode = -5;
  t.p.CurrentExtension = 7;
  EXPECT_EQ(Eval("DEVICE"), 100000);
  EXPECT_EQ(Eval("function"), -5);
  EXPECT_EQ(Eval("Extension"), 7);
}

TEST_F(EvaluatorTest, UndefinedNameGivesZero) {
  Define("X = 5");
  EXPECT_EQ(EvaluateDefine(t.p, LookupDefine(t.p, "X"), "NOPE", true), 0);
  EXPECT_EQ(EvaluateDefine(t.p, 0, "", true), 0);
}

TEST(OperatorPrecedence, Table) {
  EXPECT_EQ(OperatorPrecedence("~"), 12);
  EXPECT_EQ(OperatorPrecedence("@"), 10);
  EXPECT_EQ(OperatorPrecedence("*"), 8);
  EXPECT_EQ(OperatorPrecedence("/"), 8);
  EXPECT_EQ(OperatorPrecedence("+"), 6);
  EXPECT_EQ(OperatorPrecedence("-"), 6);
  EXPECT_EQ(OperatorPrecedence("^"), 2);
  EXPECT_EQ(OperatorPrecedence("|"), 2);
  EXPECT_EQ(OperatorPrecedence("&"), 2);
  EXPECT_EQ(OperatorPrecedence("("), 0);
  EXPECT_EQ(OperatorPrecedence(""), 0);
}

TEST(ApplyOperator, BinaryOperatorsReplaceTheLeftOperand) {
  std::vector<std::string> ops{"", "-"};
  std::vector<double> values{0, 10, 2.5};  // 2.5 rounds to 2
  ApplyOperator(ops, values);
  EXPECT_EQ(ops.size(), 1u);
  EXPECT_EQ(values, (std::vector<double>{0, 8}));

  ops = {"", "&"};
  values = {0, 6, 3};
  ApplyOperator(ops, values);
  EXPECT_EQ(values, (std::vector<double>{0, 2}));  // meaningful when applied directly

  ops = {"", "("};
  values = {0, 6, 3};
  ApplyOperator(ops, values);
  EXPECT_EQ(values, (std::vector<double>{0, 6}));  // unknown: left operand unchanged
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
  ops = {"", "+"};
  values = {0, 40000, 1};  // the left operand does not fit 16 bits
  EXPECT_THROW(ApplyOperator(ops, values), RunTimeError);
}

TEST(ApplyOperator, TildeIsUnaryOnThirtyTwoBits) {
  std::vector<std::string> ops{"", "~"};
  std::vector<double> values{0, 100000};
  ApplyOperator(ops, values);
  EXPECT_EQ(values, (std::vector<double>{0, 100001}));
  ops = {"", "~"};
  values = {0, -100000};
  ApplyOperator(ops, values);
  EXPECT_EQ(values, (std::vector<double>{0, 99999}));
}

}  // namespace
}  // namespace bw
