// The expression evaluator: a two-stack operator-precedence scan over the text
// of one symbol-table entry. See equation.h.
#include "input/equation.h"

#include <cmath>
#include <map>
#include <string_view>
#include <utility>

#include "input/defines.h"
#include "runtime/numbers.h"
#include "runtime/run_time_error.h"
#include "runtime/text.h"

namespace bw {

namespace {

// The characters the scanner treats as operators. "&" is not among them, so an
// "&" in an expression is passed over like a blank and the and-operator is
// never applied, although it has a precedence and a meaning.
constexpr std::string_view kOperatorCharacters = "+-*/@*^|~";

// Recursive evaluation of letters (flag false) stops here, as the old run time
// stopped with "Out of stack space"; the trap turns that level into 0.
constexpr int kMaxDepth = 256;
int evaluationDepth = 0;

// Letters evaluated recursively during one outermost evaluation, by entry and
// depth. An entry met again at the same depth has the same value (nothing it
// reads changes meanwhile), so a definition naming itself n times costs n times
// its depth instead of n to the power of its depth: "X = X+X" no longer hangs.
std::map<std::pair<int, int>, int32_t> recursiveValues;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

double& Top(std::vector<double>& values) {
  if (values.empty()) ThrowSubscriptOutOfRange();
  return values.back();
}

struct DepthGuard {
  DepthGuard() {
    if (evaluationDepth >= kMaxDepth) throw RunTimeError(28, "Out of stack space");
    ++evaluationDepth;
  }
  ~DepthGuard() { --evaluationDepth; }
};

int32_t Evaluate(Program& p, int index, const std::string& name, bool useStoredValues) {
  DepthGuard depth;
  if (LookupDefine(p, name) == 0) return 0;
  if (index < 0 || index > p.Defines.UpperBound()) ThrowSubscriptOutOfRange();
  const std::string text = UCase(p.Defines[index].Text);
  if (text == "DEVICE") return p.CurrentDeviceCode;
  if (text == "FUNCTION") return p.CurrentFunctionCode;
  if (text == "EXTENSION") return p.CurrentExtension;
  if (IsNumeric(text)) return CLng(NumericValue(text));

  // Both stacks keep a bottom element: an empty operator and a 0 value.
  std::vector<std::string> operators{std::string()};
  std::vector<double> values{0.0};
  const auto noOperators = [&] { return operators.size() <= 1; };

  for (std::size_t i = 0; i < text.size();) {
    const char c = text[i];
    if (kOperatorCharacters.find(c) != std::string_view::npos) {
      const std::string op(1, c);
      if (noOperators() || operators.back() != "(") {
        // Equal precedence applies the earlier operator first: left grouping.
        while (!noOperators() && OperatorPrecedence(op) <= OperatorPrecedence(operators.back()))
          ApplyOperator(operators, values);
      }
      operators.push_back(op);
      ++i;
    } else if (c == '(') {
      operators.emplace_back("(");
      ++i;
    } else if (c == ')') {
      while (operators.back() != "(") {
        // An unmatched ")" runs the stack dry; the evaluation fails there.
        if (noOperators()) ThrowSubscriptOutOfRange();
        ApplyOperator(operators, values);
      }
      operators.pop_back();
      ++i;
    } else if (IsDigit(c)) {
      // "0X" switches to base 16, but only the ten decimal digits are taken in
      // either base: A to F end the number and are read as one-letter names.
      int base = 10;
      if (c == '0' && i + 1 < text.size() && text[i + 1] == 'X') {
        base = 16;
        i += 2;
      }
      int16_t accumulator = 0;
      while (i < text.size() && IsDigit(text[i])) {
        accumulator = Add16(Mul16(accumulator, base), text[i] - '0');
        ++i;
      }
      values.push_back(accumulator);
    } else if (c >= 'A' && c <= 'Z') {
      // One letter is one name; two letters in a row are two operands.
      const std::string letter(1, c);
      const int found = LookupDefine(p, letter);
      if (useStoredValues) {
        values.push_back(p.Defines[found].Value);
      } else {
        const auto key = std::make_pair(found, evaluationDepth);
        auto known = recursiveValues.find(key);
        if (known == recursiveValues.end())
          known = recursiveValues.emplace(key, EvaluateDefine(p, found, letter, false)).first;
        values.push_back(known->second);
      }
      ++i;
    } else {
      ++i;  // blanks, "&", "." and anything else
    }
  }
  while (!noOperators()) ApplyOperator(operators, values);
  // Element 1 is the first pushed value; anything above it is dropped.
  if (values.size() < 2) ThrowSubscriptOutOfRange();
  return CLng(values[1]);
}

}  // namespace

int32_t EvaluateDefine(Program& p, int index, const std::string& name, bool useStoredValues) {
  if (evaluationDepth == 0) recursiveValues.clear();
  try {
    return Evaluate(p, index, name, useStoredValues);
  } catch (const RunTimeError&) {
    // The evaluation runs under its own error trap: a failed one is worth 0.
    return 0;
  }
}

int OperatorPrecedence(const std::string& op) {
  if (op == "~") return 12;
  if (op == "@") return 10;
  if (op == "*" || op == "/") return 8;
  if (op == "+" || op == "-") return 6;
  if (op == "^" || op == "|" || op == "&") return 2;
  return 0;
}

void ApplyOperator(std::vector<std::string>& operators, std::vector<double>& values) {
  if (operators.empty()) ThrowSubscriptOutOfRange();
  const std::string op = operators.back();
  operators.pop_back();

  if (op == "~") {
    // The absolute value of the 32-bit complement: x + 1 for x >= 0, -x - 1 below.
    const int32_t x = CLng(Top(values));
    Top(values) = x >= 0 ? static_cast<double>(x) + 1 : -static_cast<double>(x) - 1;
    return;
  }

  const int16_t right = CInt(Top(values));
  values.pop_back();
  double& leftSlot = Top(values);
  const int16_t left = CInt(leftSlot);
  int16_t result = left;
  if (op == "+") {
    result = Add16(left, right);
  } else if (op == "-") {
    result = Sub16(left, right);
  } else if (op == "*") {
    result = Mul16(left, right);
  } else if (op == "/") {
    if (right == 0) ThrowDivisionByZero();
    result = CInt(static_cast<double>(left / right));  // truncates toward zero
  } else if (op == "@") {
    result = CInt(std::pow(static_cast<double>(left), static_cast<double>(right)));
  } else if (op == "^") {
    result = static_cast<int16_t>(left ^ right);
  } else if (op == "|") {
    result = static_cast<int16_t>(left | right);
  } else if (op == "&") {
    result = static_cast<int16_t>(left & right);
  }
  leftSlot = result;
}

}  // namespace bw
