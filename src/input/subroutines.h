// The text helpers every reader and writer leans on: cutting tokens off a line,
// reading number text leniently, hexadecimal digits, squeezing out blanks,
// cleaning file names and reading comment-free lines. They keep no state and
// show no messages; out-of-range numbers are run-time errors (Overflow).
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "runtime/files.h"

namespace bw {

/// Cuts the first token off `text` (which keeps what follows the separator,
/// trimmed). The separator (default one blank) is matched ignoring case and may
/// be several characters long; double quotes protect separators and vanish.
std::string GetToken(std::string& text, std::string_view separator = " ");
/// The same cut on a view: `rest` is moved past the separator (and its blanks)
/// without copying what follows, so cutting a whole line costs its length.
std::string GetToken(std::string_view& rest, std::string_view separator = " ");
/// "0x.." or the hexadecimal flag read hexadecimal digits; otherwise the longest
/// leading decimal number, rounded half to even; text without a number gives 0.
int32_t ParseNumber(std::string_view text, bool hexadecimal = false);
/// 1 + the number of `separator` characters in `text`.
int16_t CountFields(std::string_view text, char separator);
/// "0".."9", "A".."F" (any case) give 0..15; anything else gives 0.
int16_t HexDigitValue(std::string_view character);
/// Hexadecimal digits read from the right; a non-digit counts 0 but keeps its place.
int32_t HexToLong(std::string_view digits);
/// 0..9 -> "0".."9", 10..15 -> "a".."f" (lower case), else "".
std::string HexDigitChar(int value);
/// Removes the characters / \ : * ? < > | ; everything else stays.
std::string CleanFileName(std::string_view text);
/// True when the file can be opened for reading.
bool FileExists(const std::filesystem::path& path);
/// Upper case with every blank removed (tabs stay).
std::string RemoveBlanks(std::string_view text);
/// Next line without its comment: "'" after the first column cuts the rest, a
/// line starting with "'" or ";" becomes empty. False at the end of the file.
bool ReadCleanLine(TextFileReader& file, std::string& line);

}  // namespace bw
