// Text as the program treats it: UTF-8 strings inside, upper-casing that covers
// ASCII and Latin-1, "trim" that removes spaces only (never tabs), and the
// Windows-1252 conversions used for old text files and one-byte name fields.
#pragma once

#include <string>
#include <string_view>

namespace bw {

/// Upper case for ASCII and the Latin-1 letters (é -> É, ÿ stays as is); other text unchanged.
std::string UCase(std::string_view text);
/// Removes leading and trailing spaces (code 32) only.
std::string Trim(std::string_view text);
std::string LTrim(std::string_view text);
std::string RTrim(std::string_view text);
/// True when `text` contains `part` (exact comparison).
inline bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}
/// Decodes Windows-1252 bytes to UTF-8.
std::string FromCp1252(std::string_view bytes);
/// Encodes UTF-8 text as Windows-1252 bytes; characters it lacks become '?'.
std::string ToCp1252(std::string_view utf8);
/// True when the bytes are valid UTF-8.
bool IsValidUtf8(std::string_view bytes);

}  // namespace bw
