// The text helpers of every reader and writer. See subroutines.h.
#include "input/subroutines.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "runtime/numbers.h"
#include "runtime/run_time_error.h"
#include "runtime/text.h"

namespace bw {

namespace {

// Length in bytes of the UTF-8 character that begins with `lead` (1 for a stray byte).
std::size_t CharacterLength(std::string_view text, std::size_t pos) {
  const auto lead = static_cast<unsigned char>(text[pos]);
  std::size_t length = 1;
  if ((lead & 0xE0) == 0xC0) length = 2;
  else if ((lead & 0xF0) == 0xE0) length = 3;
  else if ((lead & 0xF8) == 0xF0) length = 4;
  if (pos + length > text.size()) return 1;
  for (std::size_t i = 1; i < length; ++i)
    if ((static_cast<unsigned char>(text[pos + i]) & 0xC0) != 0x80) return 1;
  return length;
}

bool StartsWithIgnoringCase(std::string_view text, std::size_t pos, std::string_view part) {
  if (pos + part.size() > text.size()) return false;
  return UCase(text.substr(pos, part.size())) == UCase(part);
}

bool IsAscii(std::string_view text) {
  for (const char c : text)
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  return true;
}

char AsciiUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
char AsciiLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// The view without its leading and trailing blanks.
std::string_view TrimBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return std::string_view();
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace

std::string GetToken(std::string_view& rest, std::string_view separator) {
  const std::string_view sep = separator.empty() ? std::string_view(" ") : separator;
  if (rest.empty()) return std::string();

  // An ASCII separator can only match ASCII text, so it is compared byte by
  // byte; any other goes through the full upper-casing.
  const bool asciiSeparator = IsAscii(sep);
  // One byte that is neither a letter nor a quote matches only itself: up to the
  // first such byte or quote, the token is the text as it stands.
  if (sep.size() == 1 && asciiSeparator && sep[0] != '"' && AsciiUpper(sep[0]) == AsciiLower(sep[0])) {
    std::size_t i = 0;
    while (i < rest.size() && rest[i] != sep[0] && rest[i] != '"') ++i;
    if (i == rest.size()) {
      std::string result = Trim(rest);
      rest = std::string_view();
      return result;
    }
    if (rest[i] == sep[0]) {
      std::string result = Trim(rest.substr(0, i));
      rest = TrimBlanks(rest.substr(i + 1));
      return result;
    }
  }
  const auto separatorAt = [&](std::size_t i) {
    if (!asciiSeparator) return StartsWithIgnoringCase(rest, i, sep);
    if (i + sep.size() > rest.size()) return false;
    for (std::size_t k = 0; k < sep.size(); ++k)
      if (AsciiUpper(rest[i + k]) != AsciiUpper(sep[k])) return false;
    return true;
  };
  std::string token;
  bool insideQuotes = false;
  for (std::size_t i = 0; i < rest.size(); ++i) {
    const char c = rest[i];
    if (c == '"') {
      insideQuotes = !insideQuotes;  // the quote itself is never part of the token
    } else if (separatorAt(i)) {
      if (!insideQuotes) {
        std::string result = Trim(token);
        rest = TrimBlanks(rest.substr(i + sep.size()));
        return result;
      }
      token += c;  // a protected separator: only its first character is taken here
    } else {
      token += c;
    }
  }
  rest = std::string_view();
  return Trim(token);
}

std::string GetToken(std::string& text, std::string_view separator) {
  std::string_view rest(text);
  std::string token = GetToken(rest, separator);
  // The rest is a part of `text`: cut around it in place.
  const std::size_t start = rest.empty() ? 0 : static_cast<std::size_t>(rest.data() - text.data());
  const std::size_t length = rest.size();
  text.erase(start + length);
  text.erase(0, start);
  return token;
}

int32_t ParseNumber(std::string_view text, bool hexadecimal) {
  if (hexadecimal) return HexToLong(text);
  if (text.size() >= 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) return HexToLong(text.substr(2));
  // The decimal reading stops at the first character that cannot continue a number.
  return CLng(Val(text));
}

int16_t CountFields(std::string_view text, char separator) {
  int16_t count = 1;
  for (const char c : text)
    if (c == separator) count = Add16(count, 1);
  return count;
}

int16_t HexDigitValue(std::string_view character) {
  if (character.empty()) return 0;
  const char c = character[0];
  if (c >= '0' && c <= '9') return static_cast<int16_t>(c - '0');
  if (c >= 'A' && c <= 'F') return static_cast<int16_t>(c - 'A' + 10);
  if (c >= 'a' && c <= 'f') return static_cast<int16_t>(c - 'a' + 10);
  return 0;
}

int32_t HexToLong(std::string_view digits) {
  // Split into characters first: a character that is not a digit still takes one place.
  std::vector<std::string_view> characters;
  for (std::size_t i = 0; i < digits.size();) {
    const std::size_t length = CharacterLength(digits, i);
    characters.push_back(digits.substr(i, length));
    i += length;
  }
  int32_t sum = 0;
  int place = 0;
  for (auto it = characters.rbegin(); it != characters.rend(); ++it, ++place) {
    // Summed in floating point and brought back to 32 bits at every step, so a
    // sum beyond 2147483647 stops with Overflow.
    sum = CLng(static_cast<double>(sum) + HexDigitValue(*it) * std::pow(16.0, place));
  }
  return sum;
}

std::string HexDigitChar(int value) {
  // Lower case on purpose: the hexadecimal text written out is lower case
  // while the reading side accepts either.
  static constexpr char kDigits[] = "0123456789abcdef";
  if (value < 0 || value > 15) return std::string();
  return std::string(1, kDigits[value]);
}

std::string CleanFileName(std::string_view text) {
  static constexpr std::string_view kRemoved = "/\\:*?<>|";
  std::string out;
  out.reserve(text.size());
  for (const char c : text)
    if (kRemoved.find(c) == std::string_view::npos) out += c;
  return out;
}

bool FileExists(const std::filesystem::path& path) {
  // Opened without waiting, so a pipe answers at once.
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) return false;
  struct stat info {};
  const bool folder = ::fstat(fd, &info) == 0 && S_ISDIR(info.st_mode);
  ::close(fd);
  return !folder;
}

std::string RemoveBlanks(std::string_view text) {
  std::string out = UCase(text);
  out.erase(std::remove(out.begin(), out.end(), ' '), out.end());
  return out;
}

bool ReadCleanLine(TextFileReader& file, std::string& line) {
  if (!file.ReadLine(line)) {
    line.clear();
    return false;
  }
  const std::size_t apostrophe = line.find('\'');
  if (apostrophe != std::string::npos && apostrophe > 0) line.erase(apostrophe);
  if (!line.empty() && (line[0] == '\'' || line[0] == ';')) line.clear();
  return true;
}

}  // namespace bw
