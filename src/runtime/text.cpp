// Upper-casing, space-only trimming and the Windows-1252 conversions. See text.h.
#include "runtime/text.h"

#include <array>
#include <cstdint>

namespace bw {

namespace {

// Windows-1252 bytes 0x80..0x9F. The five bytes the code page leaves undefined
// map to the control character of the same number, as Windows itself does.
constexpr std::array<char32_t, 32> kCp1252High = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  // 80-87
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,  // 88-8F
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  // 90-97
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,  // 98-9F
};

void AppendUtf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (cp >> 18));
    out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

// Decodes one UTF-8 sequence at `pos`. Returns its length (0 when the bytes
// there are not a valid sequence) and the code point in `cp`.
std::size_t DecodeUtf8(std::string_view s, std::size_t pos, char32_t& cp) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(s[i]); };
  const unsigned char b0 = byte(pos);
  if (b0 < 0x80) {
    cp = b0;
    return 1;
  }
  std::size_t length;
  char32_t min;
  if ((b0 & 0xE0) == 0xC0) {
    length = 2;
    cp = b0 & 0x1F;
    min = 0x80;
  } else if ((b0 & 0xF0) == 0xE0) {
    length = 3;
    cp = b0 & 0x0F;
    min = 0x800;
  } else if ((b0 & 0xF8) == 0xF0) {
    length = 4;
    cp = b0 & 0x07;
    min = 0x10000;
  } else {
    return 0;
  }
  if (pos + length > s.size()) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    const unsigned char b = byte(pos + i);
    if ((b & 0xC0) != 0x80) return 0;
    cp = (cp << 6) | (b & 0x3F);
  }
  if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return 0;
  return length;
}

}  // namespace

std::string UCase(std::string_view text) {
  std::string out(text);
  // Plain ASCII is changed in place; the first other byte hands the rest to the decoder.
  std::size_t i = 0;
  for (; i < out.size(); ++i) {
    const char c = out[i];
    if (static_cast<unsigned char>(c) >= 0x80) break;
    if (c >= 'a' && c <= 'z') out[i] = static_cast<char>(c - 'a' + 'A');
  }
  if (i == out.size()) return out;
  out.resize(i);
  for (; i < text.size();) {
    const char c = text[i];
    if (c >= 'a' && c <= 'z') {
      out += static_cast<char>(c - 'a' + 'A');
      ++i;
      continue;
    }
    char32_t cp = 0;
    const std::size_t length = DecodeUtf8(text, i, cp);
    if (length == 0) {  // not UTF-8: the byte passes through
      out += c;
      ++i;
      continue;
    }
    // Latin-1 small letters à..þ (except ÷) have their capital 0x20 below.
    if (length == 2 && cp >= 0xE0 && cp <= 0xFE && cp != 0xF7) {
      AppendUtf8(out, cp - 0x20);
    } else {
      out.append(text.substr(i, length));
    }
    i += length;
  }
  return out;
}

std::string LTrim(std::string_view text) {
  std::size_t b = 0;
  while (b < text.size() && text[b] == ' ') ++b;
  return std::string(text.substr(b));
}

std::string RTrim(std::string_view text) {
  std::size_t e = text.size();
  while (e > 0 && text[e - 1] == ' ') --e;
  return std::string(text.substr(0, e));
}

std::string Trim(std::string_view text) {
  std::size_t b = 0, e = text.size();
  while (b < e && text[b] == ' ') ++b;
  while (e > b && text[e - 1] == ' ') --e;
  return std::string(text.substr(b, e - b));
}

std::string FromCp1252(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size());
  for (const char c : bytes) {
    const auto b = static_cast<unsigned char>(c);
    if (b < 0x80) {
      out += c;
    } else if (b < 0xA0) {
      AppendUtf8(out, kCp1252High[b - 0x80]);
    } else {
      AppendUtf8(out, b);
    }
  }
  return out;
}

std::string ToCp1252(std::string_view utf8) {
  std::string out;
  out.reserve(utf8.size());
  for (std::size_t i = 0; i < utf8.size();) {
    char32_t cp = 0;
    const std::size_t length = DecodeUtf8(utf8, i, cp);
    if (length == 0) {
      out += '?';
      ++i;
      continue;
    }
    i += length;
    if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF)) {
      out += static_cast<char>(cp);
      continue;
    }
    char mapped = '?';
    for (std::size_t k = 0; k < kCp1252High.size(); ++k) {
      if (kCp1252High[k] == cp) {
        mapped = static_cast<char>(0x80 + k);
        break;
      }
    }
    out += mapped;
  }
  return out;
}

bool IsValidUtf8(std::string_view bytes) {
  for (std::size_t i = 0; i < bytes.size();) {
    if (static_cast<unsigned char>(bytes[i]) < 0x80) {
      ++i;
      continue;
    }
    char32_t cp = 0;
    const std::size_t length = DecodeUtf8(bytes, i, cp);
    if (length == 0) return false;
    i += length;
  }
  return true;
}

}  // namespace bw
