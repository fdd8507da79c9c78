// The one error type of the program: what the language run time of the old
// tool called a run-time error. Every command handler runs inside a wrapper that
// catches it and shows "Run-time error 'N':" + blank line + description; the
// process never dies from bad input.
#pragma once

#include <stdexcept>
#include <string>

namespace bw {

class RunTimeError : public std::runtime_error {
 public:
  RunTimeError(int number, std::string description)
      : std::runtime_error(description), number_(number), description_(std::move(description)) {}

  /// The error number users know (6 Overflow, 9 Subscript out of range, 3031 ...).
  int number() const { return number_; }
  /// The text shown under the number.
  const std::string& description() const { return description_; }

 private:
  int number_;
  std::string description_;
};

/// Error numbers the program raises itself. Jet errors use the engine's own numbers.
namespace err {
inline constexpr int kOverflow = 6;
inline constexpr int kSubscriptOutOfRange = 9;
inline constexpr int kDivisionByZero = 11;
inline constexpr int kTypeMismatch = 13;
inline constexpr int kBadFileNameOrNumber = 52;
inline constexpr int kFileNotFound = 53;
inline constexpr int kPathFileAccessError = 75;
inline constexpr int kPathNotFound = 76;
}  // namespace err

[[noreturn]] inline void ThrowOverflow() { throw RunTimeError(err::kOverflow, "Overflow"); }
[[noreturn]] inline void ThrowSubscriptOutOfRange() {
  throw RunTimeError(err::kSubscriptOutOfRange, "Subscript out of range");
}
[[noreturn]] inline void ThrowDivisionByZero() {
  throw RunTimeError(err::kDivisionByZero, "Division by zero");
}
[[noreturn]] inline void ThrowTypeMismatch() { throw RunTimeError(err::kTypeMismatch, "Type mismatch"); }
[[noreturn]] inline void ThrowFileNotFound() { throw RunTimeError(err::kFileNotFound, "File not found"); }
[[noreturn]] inline void ThrowPathNotFound() { throw RunTimeError(err::kPathNotFound, "Path not found"); }
[[noreturn]] inline void ThrowPathFileAccessError() {
  throw RunTimeError(err::kPathFileAccessError, "Path/File access error");
}

/// The message text a command wrapper shows for an error that ended a command.
inline std::string RunTimeErrorMessage(const RunTimeError& e) {
  return "Run-time error '" + std::to_string(e.number()) + "':\r\n\r\n" + e.description();
}

}  // namespace bw
