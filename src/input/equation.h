// The expression evaluator: the value of a symbol-table entry that holds a
// number, a per-key variable or an infix expression over numbers, one-letter
// names and operators, computed with 16-bit operands. It traps its own
// run-time errors: a failed evaluation gives 0.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "shell/program.h"

namespace bw {

/// Value of entry `index` (its Text); `name` must be defined or the result is 0.
/// With `useStoredValues` letters take their entry's stored Value, otherwise they
/// are evaluated recursively.
int32_t EvaluateDefine(Program& p, int index, const std::string& name, bool useStoredValues);
/// Precedence of a one-character operator.
int OperatorPrecedence(const std::string& op);
/// Applies the top operator of `operators` to `values` (throws on overflow).
void ApplyOperator(std::vector<std::string>& operators, std::vector<double>& values);

}  // namespace bw
