// The symbol table and the expansion of form text into durations. See defines.h.
#include "input/defines.h"

#include <cmath>
#include <cstdlib>
#include <vector>

#include "input/equation.h"
#include "input/subroutines.h"
#include "runtime/numbers.h"
#include "runtime/run_time_error.h"
#include "runtime/text.h"

namespace bw {

namespace {

bool IsLetter(char c) { return c >= 'A' && c <= 'Z'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

int32_t Magnitude(int32_t value) { return value < 0 ? Sub32(0, value) : value; }

/// Appends one duration and counts it into the frame.
void AppendDuration(Program& p, int32_t value, DurationList& out) {
  out.Count = Add16(out.Count, 1);
  out(out.Count) = value;
  p.FrameTime = Add32(p.FrameTime, Magnitude(value));
}

/// Pads the frame to `length` microseconds from raw data. After a mark a new
/// space is appended. A trailing space s is replaced by FrameTime - length - s
/// while s is still counted in FrameTime, so the frame comes out `length` minus
/// twice |s| long; files written over the years depend on that arithmetic.
void PadFrameFromRawData(Program& p, int32_t length, DurationList& out) {
  const int32_t last = out(out.Count);
  if (last > 0) {
    out.Count = Add16(out.Count, 1);
    out(out.Count) = Sub32(p.FrameTime, length);
  } else {
    out(out.Count) = Sub32(Sub32(p.FrameTime, length), last);
  }
  p.FrameTime = 0;
}

/// Blank-separated tokens of raw data. Unlike GetToken this keeps double quotes,
/// which mark a number that is taken as written.
std::vector<std::string> RawTokens(const std::string& text) {
  std::vector<std::string> tokens;
  std::string current;
  for (const char c : text) {
    if (c == ' ') {
      if (!current.empty()) tokens.push_back(current);
      current.clear();
    } else {
      current += c;
    }
  }
  if (!current.empty()) tokens.push_back(current);
  return tokens;
}

}  // namespace

int16_t LookupDefine(const Program& p, std::string_view name) {
  const std::string wanted = UCase(name);
  const DefinesTable& table = p.Defines;
  for (int i = 1; i <= table.UpperBound(); ++i)
    if (table[i].Name == wanted) return static_cast<int16_t>(i);
  return 0;
}

void DefineSymbol(Program& p, std::string line, bool allowReplace) {
  // " AS " wins over "=" when the line holds both.
  std::string separator;
  if (Contains(UCase(line), " AS ")) {
    separator = " AS ";
  } else if (Contains(line, "=")) {
    separator = "=";
  } else {
    p.Message("Badly formed DEFINES directive, '" + line + "'");
    return;
  }
  const std::string name = UCase(GetToken(line, separator));
  if (LookupDefine(p, name) != 0) {
    if (!allowReplace) {
      p.Message("Duplicate Definition for label " + name);
      return;
    }
  } else {
    p.Defines.entries.push_back(DefineEntry{name, UCase(Trim(line)), 0, define_kind::kNone});
  }
  const int index = LookupDefine(p, name);
  p.Defines[index].Text = line;
  p.Defines[index].Kind = ClassifyDefine(p, index);
}

int16_t ClassifyDefine(Program& p, int index) {
  DefineEntry& entry = p.Defines[index];
  const std::string text = UCase(entry.Text);
  int16_t kind;
  if (text == "DEVICE" || text == "FUNCTION" || text == "EXTENSION") {
    kind = define_kind::kPerKeyVariable;
  } else if (IsNumeric(text)) {
    kind = define_kind::kNumber;
    entry.Value = NumericValue(text);
  } else if (text.size() >= 2 && text.front() == '[' && text.back() == ']') {
    kind = define_kind::kRawData;
    entry.Text = ScaleRawData(p, text.substr(1, text.size() - 2));
  } else if (!text.empty() && text.front() == '^') {
    kind = define_kind::kFrameLength;
    entry.Value = Val(std::string_view(text).substr(1));
  } else {
    // Only one-letter names are looked at: a multi-letter name in the text is
    // judged by the one-letter names its letters happen to form.
    kind = define_kind::kExpression;
    for (std::size_t i = 0; i < text.size();) {
      const char c = text[i];
      if (IsDigit(c)) {
        if (c == '0' && i + 1 < text.size() && text[i + 1] == 'X') i += 2;
        else ++i;
        while (i < text.size() && IsDigit(text[i])) ++i;
        continue;
      }
      if (IsLetter(c)) {
        const int16_t k = p.Defines[LookupDefine(p, std::string(1, c))].Kind;
        if (k == define_kind::kVariableExpression || k == define_kind::kPerKeyVariable) {
          kind = define_kind::kVariableExpression;
          break;
        }
      }
      ++i;
    }
  }
  p.Defines[index].Kind = kind;
  return kind;
}

std::string ScaleRawData(Program& p, const std::string& text) {
  std::string_view rest = text;
  std::string out;
  const double timeBase = p.Protocol.TimeBase;
  while (!rest.empty()) {
    std::string token = GetToken(rest);
    if (IsNumeric(token)) {
      const double value = NumericValue(token);
      if (std::fabs(value) < timeBase) token = GeneralNumber(value * timeBase);
    }
    if (!out.empty()) out += ' ';
    out += token;
  }
  return out;
}

void ExpandForm(Program& p, const std::string& form, DurationList& out, int repeats) {
  if (p.Protocol.TimeBase == 0) p.Protocol.TimeBase = 1;
  for (DefineEntry& entry : p.Defines.entries) {
    if (entry.Kind != define_kind::kPerKeyVariable) continue;
    if (entry.Text == "DEVICE") entry.Value = p.CurrentDeviceCode;
    else if (entry.Text == "FUNCTION") entry.Value = p.CurrentFunctionCode;
    else if (entry.Text == "EXTENSION") entry.Value = p.CurrentExtension;
  }
  out.Clear();

  for (int round = 1; round <= repeats; ++round) {
    p.FrameTime = 0;
    std::string items = form;
    while (!items.empty()) {
      std::string item = GetToken(items, ",");
      if (!item.empty() && item.front() == '[') {
        EmitRawData(p, item.size() >= 2 ? item.substr(1, item.size() - 2) : std::string(), out);
        continue;
      }
      bool inverted = false;
      if (!item.empty() && (item.front() == '-' || item.front() == '~')) {
        inverted = true;
        item.erase(0, 1);
      }
      const std::string name = GetToken(item, ":");
      const std::string& bitCount = item;
      if (IsNumeric(name)) {
        EmitBits(p, CLng(NumericValue(name)), bitCount, inverted, out);
      } else {
        EmitSymbol(p, name, bitCount, inverted, out);
      }
    }
  }

  // Pulse-position codes are sent as merged marks and spaces, except in the
  // Slink-e files, which keep every bit's pair.
  if (p.Protocol.Modulation == "PPM" && !(p.FormatSlinkTxOnly || p.FormatSlinkTxRx)) MergeSameSign(out);
}

void EmitBits(Program& p, int32_t value, const std::string& bitCountText, bool inverted, DurationList& out) {
  const int16_t n = CInt(Val(bitCountText));
  if (n < 1) return;
  const bool msbFirst = p.Protocol.BitOrder == "MSB";  // exact: "msb" sends LSB first
  for (int i = 1; i <= n; ++i) {
    const int bit = msbFirst ? n - i : i - 1;
    // The mask is a 32-bit value: bit 31 and above do not fit and stop with Overflow.
    const int32_t mask = CLng(std::pow(2.0, bit));
    bool set = (value & mask) != 0;
    if (inverted) set = !set;
    if (set) AppendPair(p, p.Protocol.OneMark, p.Protocol.OneSpace, out);
    else AppendPair(p, p.Protocol.ZeroMark, p.Protocol.ZeroSpace, out);
  }
}

void AppendPair(Program& p, int32_t mark, int32_t space, DurationList& out) {
  AppendDuration(p, mark, out);
  AppendDuration(p, space, out);
}

void EmitSymbol(Program& p, const std::string& name, const std::string& bitCountText, bool inverted,
                DurationList& out) {
  const int index = LookupDefine(p, name);
  const DefineEntry& entry = p.Defines[index];
  switch (entry.Kind) {
    case define_kind::kNumber:
    case define_kind::kExpression:
    case define_kind::kVariableExpression:
    case define_kind::kPerKeyVariable:
      EmitBits(p, EvaluateDefine(p, index, name, true), bitCountText, inverted, out);
      break;
    case define_kind::kRawData:
      EmitRawData(p, std::string(entry.Text), out);
      break;
    case define_kind::kFrameLength: {
      const int32_t length = CLng(entry.Value);
      // A trailing space is overwritten without taking its own length back out
      // of FrameTime, so the frame comes out one space short of `length`.
      if (out(out.Count) > 0) out.Count = Add16(out.Count, 1);
      out(out.Count) = Sub32(p.FrameTime, length);
      p.FrameTime = 0;
      break;
    }
    default:
      break;  // no definition: nothing is sent
  }
}

void EmitRawData(Program& p, const std::string& text, DurationList& out) {
  for (const std::string& token : RawTokens(text)) {
    if (token.front() == '^') {
      PadFrameFromRawData(p, CLng(Val(std::string_view(token).substr(1))), out);
      continue;
    }
    if (token.front() == '"') {
      // A quoted number is a duration as written, never scaled by the time base.
      const std::string inner = token.size() >= 2 ? token.substr(1, token.size() - 2) : std::string();
      AppendDuration(p, CLng(Val(inner)), out);
      continue;
    }
    if (IsNumeric(token)) {
      int32_t value = CLng(NumericValue(token));
      if (Magnitude(value) < p.Protocol.TimeBase) value = Mul32(value, p.Protocol.TimeBase);
      AppendDuration(p, value, out);
      continue;
    }
    const int index = LookupDefine(p, token);
    if (index == 0) p.Message("Name " + token + " Is not defined in the Defines Tables");
    const DefineEntry& entry = p.Defines[index];
    switch (entry.Kind) {
      case define_kind::kNone:
        p.Message("Name " + token + " has no defined value");
        AppendDuration(p, 0, out);
        break;
      case define_kind::kNumber:
      case define_kind::kPerKeyVariable:
        AppendDuration(p, CLng(entry.Value), out);
        break;
      case define_kind::kRawData:
        p.Message("Raw data may not be embedded in raw data");
        AppendDuration(p, 0, out);
        break;
      case define_kind::kFrameLength:
        PadFrameFromRawData(p, CLng(entry.Value), out);
        break;
      default:
        p.Message("Name " + token + " type=" + std::to_string(entry.Kind) + " has no defined meaning");
        AppendDuration(p, 0, out);
        break;
    }
  }
}

void MergeSameSign(DurationList& list) {
  int start = 2;
  if (list(1) < 0) {
    list(1) = list(2);
    start = 3;
  }
  // A zero counts with the spaces: only "is it a mark" decides whether two
  // neighbours merge.
  int w = 1;
  for (int k = start; k <= list.Count; ++k) {
    const int32_t value = list(k);
    if ((list(w) > 0) != (value > 0)) {
      ++w;
      list(w) = value;
    } else {
      list(w) = Add32(list(w), value);
    }
  }
  for (int k = w + 1; k <= DurationList::kCapacity; ++k) list(k) = 0;
  list.Count = static_cast<int16_t>(w);
}

}  // namespace bw
