#include "jet/format.h"

namespace bw::jet {

std::u16string Utf8ToUtf16(std::string_view s) {
  std::u16string out;
  out.reserve(s.size());
  for (size_t i = 0; i < s.size();) {
    uint8_t c = uint8_t(s[i]);
    uint32_t cp;
    size_t n;
    if (c < 0x80) {
      cp = c;
      n = 1;
    } else if ((c >> 5) == 6 && i + 1 < s.size()) {
      cp = ((c & 0x1F) << 6) | (s[i + 1] & 0x3F);
      n = 2;
    } else if ((c >> 4) == 14 && i + 2 < s.size()) {
      cp = ((c & 0x0F) << 12) | ((s[i + 1] & 0x3F) << 6) | (s[i + 2] & 0x3F);
      n = 3;
    } else if ((c >> 3) == 30 && i + 3 < s.size()) {
      cp = ((c & 0x07) << 18) | ((s[i + 1] & 0x3F) << 12) | ((s[i + 2] & 0x3F) << 6) | (s[i + 3] & 0x3F);
      n = 4;
    } else {  // a stray byte: read it as Latin-1
      cp = c;
      n = 1;
    }
    i += n;
    if (cp >= 0x10000) {
      cp -= 0x10000;
      out.push_back(char16_t(0xD800 + (cp >> 10)));
      out.push_back(char16_t(0xDC00 + (cp & 0x3FF)));
    } else {
      out.push_back(char16_t(cp));
    }
  }
  return out;
}

static void AppendUtf8(std::string& out, uint32_t cp) {
  if (cp < 0x80) {
    out.push_back(char(cp));
  } else if (cp < 0x800) {
    out.push_back(char(0xC0 | (cp >> 6)));
    out.push_back(char(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out.push_back(char(0xE0 | (cp >> 12)));
    out.push_back(char(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(char(0x80 | (cp & 0x3F)));
  } else {
    out.push_back(char(0xF0 | (cp >> 18)));
    out.push_back(char(0x80 | ((cp >> 12) & 0x3F)));
    out.push_back(char(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(char(0x80 | (cp & 0x3F)));
  }
}

std::string Utf16ToUtf8(std::u16string_view s) {
  std::string out;
  out.reserve(s.size());
  for (size_t i = 0; i < s.size(); ++i) {
    uint32_t cp = s[i];
    if (cp >= 0xD800 && cp < 0xDC00 && i + 1 < s.size() && s[i + 1] >= 0xDC00 && s[i + 1] < 0xE000) {
      cp = 0x10000 + ((cp - 0xD800) << 10) + (s[i + 1] - 0xDC00);
      ++i;
    }
    AppendUtf8(out, cp);
  }
  return out;
}

std::string DecodeJet4Text(const uint8_t* data, size_t len) {
  std::u16string u;
  if (len >= 2 && data[0] == 0xFF && data[1] == 0xFE) {
    bool compressed = true;
    for (size_t i = 2; i < len;) {
      if (data[i] == 0) {
        compressed = !compressed;
        ++i;
      } else if (compressed) {
        u.push_back(char16_t(data[i]));
        ++i;
      } else {
        if (i + 1 >= len) break;
        u.push_back(char16_t(Get16(data + i)));
        i += 2;
      }
    }
  } else {
    for (size_t i = 0; i + 1 < len; i += 2) u.push_back(char16_t(Get16(data + i)));
  }
  return Utf16ToUtf8(u);
}

Bytes EncodeJet4Text(std::string_view utf8, bool allowCompression) {
  std::u16string u = Utf8ToUtf16(utf8);
  bool compressible = allowCompression && u.size() > 2;
  for (char16_t c : u)
    if (c == 0 || c > 0xFF) compressible = false;
  Bytes out;
  if (compressible) {
    out.reserve(2 + u.size());
    out.push_back(0xFF);
    out.push_back(0xFE);
    for (char16_t c : u) out.push_back(uint8_t(c));
  } else {
    out.resize(u.size() * 2);
    for (size_t i = 0; i < u.size(); ++i) Put16(&out[2 * i], u[i]);
  }
  return out;
}

std::string DecodeCp1252(const uint8_t* data, size_t len) {
  // Code points of 0x80..0x9F in Windows-1252; the rest equals Latin-1.
  static const char16_t k80[32] = {0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                   0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x8D,   0x017D, 0x8F,
                                   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                   0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};
  std::string out;
  for (size_t i = 0; i < len; ++i) {
    uint8_t c = data[i];
    AppendUtf8(out, (c >= 0x80 && c < 0xA0) ? k80[c - 0x80] : c);
  }
  return out;
}

std::string UpperName(std::string_view utf8) {
  std::u16string u = Utf8ToUtf16(utf8);
  for (auto& c : u) {
    if ((c >= 'a' && c <= 'z') || (c >= 0xE0 && c <= 0xFE && c != 0xF7)) c = char16_t(c - 32);
  }
  return Utf16ToUtf8(u);
}

}  // namespace bw::jet
