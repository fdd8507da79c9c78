// A strict JSON reader for checking what the command line prints: RFC 8259
// grammar (no trailing commas, no comments, no bare words, escapes checked),
// the whole text must be one value with nothing but white space around it.
// Numbers are kept as doubles; a test compares durations as whole numbers.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace bw::clitest {

struct JsonError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Json {
  enum class Kind { kNull, kBool, kNumber, kString, kArray, kObject };
  Kind kind = Kind::kNull;
  bool boolean = false;
  double number = 0;
  std::string text;
  std::vector<Json> items;
  /// Members in their written order (duplicates are refused when read).
  std::vector<std::pair<std::string, Json>> members;

  /// The member `name`; JsonError when this is not an object or has none.
  const Json& operator[](const std::string& name) const;
  const Json& operator[](std::size_t index) const;
  /// Member names in written order.
  std::vector<std::string> Keys() const;
  /// An array of numbers as whole numbers; JsonError for anything else.
  std::vector<long long> Integers() const;
};

/// Reads `text`; JsonError with the offset for anything malformed.
Json ParseJson(const std::string& text);

}  // namespace bw::clitest
