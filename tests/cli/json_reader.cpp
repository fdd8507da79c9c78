#include "cli/json_reader.h"

#include <cmath>
#include <cstdlib>

namespace bw::clitest {

namespace {

class Reader {
 public:
  explicit Reader(const std::string& text) : s_(text) {}

  Json Document() {
    Json v = Value();
    Space();
    if (i_ != s_.size()) Fail("text after the value");
    return v;
  }

 private:
  [[noreturn]] void Fail(const std::string& what) const {
    throw JsonError(what + " at offset " + std::to_string(i_));
  }
  void Space() {
    while (i_ < s_.size() && (s_[i_] == ' ' || s_[i_] == '\t' || s_[i_] == '\n' || s_[i_] == '\r')) ++i_;
  }
  bool Take(char c) {
    Space();
    if (i_ < s_.size() && s_[i_] == c) {
      ++i_;
      return true;
    }
    return false;
  }
  void Expect(char c) {
    if (!Take(c)) Fail(std::string("expected '") + c + "'");
  }
  void Word(const char* word) {
    for (const char* w = word; *w; ++w, ++i_)
      if (i_ >= s_.size() || s_[i_] != *w) Fail(std::string("expected ") + word);
  }

  Json Value() {
    Space();
    if (i_ >= s_.size()) Fail("unexpected end");
    Json v;
    char c = s_[i_];
    if (c == '{') {
      v.kind = Json::Kind::kObject;
      ++i_;
      if (Take('}')) return v;
      do {
        Space();
        if (i_ >= s_.size() || s_[i_] != '"') Fail("expected a member name");
        std::string name = String();
        for (const auto& m : v.members)
          if (m.first == name) Fail("member " + name + " twice");
        Expect(':');
        v.members.emplace_back(name, Value());
      } while (Take(','));
      Expect('}');
    } else if (c == '[') {
      v.kind = Json::Kind::kArray;
      ++i_;
      if (Take(']')) return v;
      do v.items.push_back(Value());
      while (Take(','));
      Expect(']');
    } else if (c == '"') {
      v.kind = Json::Kind::kString;
      v.text = String();
    } else if (c == 't') {
      Word("true");
      v.kind = Json::Kind::kBool;
      v.boolean = true;
    } else if (c == 'f') {
      Word("false");
      v.kind = Json::Kind::kBool;
    } else if (c == 'n') {
      Word("null");
    } else {
      v.kind = Json::Kind::kNumber;
      v.number = Number();
    }
    return v;
  }

  double Number() {
    const std::size_t start = i_;
    auto digits = [&] {
      std::size_t from = i_;
      while (i_ < s_.size() && s_[i_] >= '0' && s_[i_] <= '9') ++i_;
      if (i_ == from) Fail("expected a digit");
    };
    if (s_[i_] == '-') ++i_;
    if (i_ < s_.size() && s_[i_] == '0') ++i_;  // no leading zeros
    else digits();
    if (i_ < s_.size() && s_[i_] == '.') {
      ++i_;
      digits();
    }
    if (i_ < s_.size() && (s_[i_] == 'e' || s_[i_] == 'E')) {
      ++i_;
      if (i_ < s_.size() && (s_[i_] == '+' || s_[i_] == '-')) ++i_;
      digits();
    }
    return std::strtod(s_.substr(start, i_ - start).c_str(), nullptr);
  }

  std::string String() {
    ++i_;  // the opening quote
    std::string out;
    while (true) {
      if (i_ >= s_.size()) Fail("unclosed string");
      unsigned char c = static_cast<unsigned char>(s_[i_++]);
      if (c == '"') return out;
      if (c < 0x20) Fail("control character in a string");
      if (c != '\\') {
        out += static_cast<char>(c);
        continue;
      }
      if (i_ >= s_.size()) Fail("unclosed escape");
      char e = s_[i_++];
      switch (e) {
        case '"': out += '"'; break;
        case '\\': out += '\\'; break;
        case '/': out += '/'; break;
        case 'b': out += '\b'; break;
        case 'f': out += '\f'; break;
        case 'n': out += '\n'; break;
        case 'r': out += '\r'; break;
        case 't': out += '\t'; break;
        case 'u': {
          if (i_ + 4 > s_.size()) Fail("short \\u escape");
          unsigned code = 0;
          for (int k = 0; k < 4; ++k) {
            char h = s_[i_++];
            code *= 16;
            if (h >= '0' && h <= '9') code += unsigned(h - '0');
            else if (h >= 'a' && h <= 'f') code += unsigned(h - 'a' + 10);
            else if (h >= 'A' && h <= 'F') code += unsigned(h - 'A' + 10);
            else Fail("bad \\u escape");
          }
          // The program escapes control characters only; those are one byte.
          if (code < 0x80) out += static_cast<char>(code);
          else Fail("\\u escape above 7F is not expected here");
          break;
        }
        default: Fail(std::string("bad escape \\") + e);
      }
    }
  }

  const std::string& s_;
  std::size_t i_ = 0;
};

}  // namespace

const Json& Json::operator[](const std::string& name) const {
  if (kind != Kind::kObject) throw JsonError("not an object, looking for " + name);
  for (const auto& m : members)
    if (m.first == name) return m.second;
  throw JsonError("no member " + name);
}

const Json& Json::operator[](std::size_t index) const {
  if (kind != Kind::kArray || index >= items.size()) throw JsonError("no item " + std::to_string(index));
  return items[index];
}

std::vector<std::string> Json::Keys() const {
  std::vector<std::string> keys;
  for (const auto& m : members) keys.push_back(m.first);
  return keys;
}

std::vector<long long> Json::Integers() const {
  if (kind != Kind::kArray) throw JsonError("not an array");
  std::vector<long long> out;
  for (const Json& item : items) {
    if (item.kind != Kind::kNumber || std::floor(item.number) != item.number) throw JsonError("not a whole number");
    out.push_back(static_cast<long long>(item.number));
  }
  return out;
}

Json ParseJson(const std::string& text) { return Reader(text).Document(); }

}  // namespace bw::clitest
