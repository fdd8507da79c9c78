#include "input/device_file.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

#include "input/defines.h"
#include "input/subroutines.h"
#include "protocol/protocol.h"
#include "runtime/files.h"
#include "runtime/numbers.h"
#include "runtime/text.h"

namespace bw {

namespace {

/// What one load has read so far that later lines depend on.
struct DeviceReaderState {
  bool hexadecimal = false;    ///< NUMBERBASE = HEX, from its line on
  bool bigEndian = false;      ///< BIGENDIAN = TRUE, from its line on
  bool inKeySection = false;   ///< after "[KEYCODES]"
  int32_t defaultDeviceCode = 0;
};

/// Bit positions that a switch position's bits 0..3 take in the device code. The
/// two switches are wired differently; both permutations are fixed by the hardware.
constexpr int kFirstSwitchBits[4] = {1, 3, 2, 0};
constexpr int kSecondSwitchBits[4] = {6, 5, 7, 4};

int32_t PermuteSwitchBits(int position, const int (&bits)[4]) {
  if (position < 0 || position > 15) return 0;
  int32_t code = 0;
  for (int bit = 0; bit < 4; ++bit)
    if (position >> bit & 1) code |= int32_t{1} << bits[bit];
  return code;
}

/// The device code of two fixed switch positions (0..15 each; others add nothing).
int32_t SwitchPositionsCode(int first, int second) {
  return PermuteSwitchBits(first, kFirstSwitchBits) + PermuteSwitchBits(second, kSecondSwitchBits);
}

/// A single hexadecimal digit's value; -1 for anything else (it adds nothing).
int SwitchPosition(const std::string& text) {
  if (text.size() != 1) return -1;
  char c = text[0];
  if ((c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f')) return HexDigitValue(text);
  return -1;
}

/// A fixed setting beside a varying one is read as a decimal integer; a letter
/// there is a type mismatch.
int16_t DecimalSetting(const std::string& text) { return CInt(NumericValue(text)); }

/// Cuts `text` at every `separator`, keeping empty pieces and the pieces as written.
std::vector<std::string> SplitKeepingEmpty(const std::string& text, char separator) {
  std::vector<std::string> pieces;
  std::size_t start = 0;
  for (;;) {
    std::size_t at = text.find(separator, start);
    pieces.push_back(text.substr(start, at == std::string::npos ? std::string::npos : at - start));
    if (at == std::string::npos) return pieces;
    start = at + 1;
  }
}

/// Reads the "/"-separated code items of one code list.
void ReadCodeList(Program& p, std::string_view list, const DeviceReaderState& s, std::vector<KeyCode>& codes) {
  // Sized once, so a long list never holds its codes twice while growing.
  if (!list.empty()) codes.reserve(static_cast<std::size_t>(std::count(list.begin(), list.end(), '/')) + 1);
  while (!list.empty()) codes.push_back(ParseKeyCode(p, GetToken(list, "/"), s.hexadecimal, s.bigEndian,
                                                     s.defaultDeviceCode));
}

void ReadKeyLine(Program& p, std::string line, const DeviceReaderState& s) {
  KeyEntry key;
  key.Line = p.Source.line;
  key.Label = GetToken(line, "=");
  if (p.F.format.text == "RAW") {
    key.RawText = line;
    p.Keys.entries.push_back(std::move(key));
    return;
  }
  std::string codes = SplitKeyOptions(key, line);
  std::string first = GetToken(codes, ";");
  ReadCodeList(p, first, s, key.FirstCodes);
  ReadCodeList(p, codes, s, key.SecondCodes);
  key.HasSecondCodes = !key.SecondCodes.empty();
  p.Keys.entries.push_back(std::move(key));
}

/// FORMAT / PROTOCOL: RAW devices carry their durations in the key lines; any
/// other name is a protocol of the library.
void ReadFormat(Program& p, const std::string& value) {
  if (UCase(value) == "RAW") {
    // Only one RAW entry is ever kept at the top, however many RAW devices are loaded.
    if (p.F.format.items.empty() || p.F.format.items.front() != "RAW") p.F.format.AddItem("RAW", 0);
    p.F.format.Select(0);
    return;
  }
  if (!LoadProtocol(p, value)) p.Message("Format " + value + " is not in Device Library");
}

/// One protocol statement of a device header; false when the keyword is none.
/// DEFINE/DEFAULT may give a value to a name the protocol already holds (a form
/// symbol, a definition); ONE and ZERO follow the protocol files' unit rule
/// against the current time base and leave the protocol's pair where a number
/// is not used; a FORM registers its symbols and the D/F names.
bool ApplyProtocolStatement(Program& p, const std::string& keyword, const std::string& value) {
  if (keyword == "DEFINE" || keyword == "DEFAULT") {
    DefineSymbol(p, value, true);
    return true;
  }
  ProtocolScratch scratch;
  if (!ParseProtocolKeyword(p, keyword, value, scratch, false)) return false;
  ProtocolRecord& r = p.Protocol;
  if (keyword == "ONE") {
    r.OneMark = ScaleProtocolTime(scratch.OneMark, r.TimeBase, r.OneMark);
    r.OneSpace = ScaleProtocolTime(scratch.OneSpace, r.TimeBase, r.OneSpace);
  } else if (keyword == "ZERO") {
    r.ZeroMark = ScaleProtocolTime(scratch.ZeroMark, r.TimeBase, r.ZeroMark);
    r.ZeroSpace = ScaleProtocolTime(scratch.ZeroSpace, r.TimeBase, r.ZeroSpace);
  } else if (keyword == "FORM") {
    CompileProtocolForm(p);
  }
  return true;
}

/// A header line that is no device keyword adds to or overrides the protocol
/// loaded by FORMAT. As in protocol files it may be written "KEYWORD = value" or
/// "KEYWORD value" (so "DEFINE X = 5" works in both kinds of file); a line that
/// is a protocol statement under neither split is passed over.
void ReadProtocolStatement(Program& p, const std::string& keyword, const std::string& value,
                           const std::string& line) {
  if (ApplyProtocolStatement(p, keyword, value)) return;
  std::string rest = line;
  const std::string blankKeyword = RemoveBlanks(GetToken(rest, " "));
  ApplyProtocolStatement(p, blankKeyword, rest);
}

/// DEVICECODE: a number, or two switch positions "first/second". False aborts the load.
bool ReadDeviceCode(Program& p, std::string value, DeviceReaderState& s) {
  if (value.find('/') == std::string::npos) {
    s.defaultDeviceCode = ParseNumber(value, s.hexadecimal);
    return true;
  }
  std::string first = GetToken(value, "/");
  const std::string& second = value;
  p.SwitchWildcard = first == "*" || second == "*";
  int32_t code = DecodeSwitchSettings(p, first, second);
  if (code < 0) return false;
  s.defaultDeviceCode = code;
  if (p.SwitchWildcard) {
    // One varying switch: the database run sweeps it over its 16 positions.
    p.XantechSweep = p.VaryingSwitch;
    p.XantechCode1 = p.Switch1Setting;
    p.XantechCode2 = p.Switch2Setting;
  }
  return true;
}

/// CERTIFIED: the ";"-separated entries, one per line.
void ReadCertified(Program& p, std::string value) {
  p.F.txtcertify.text.clear();
  bool firstEntry = true;
  while (!value.empty()) {
    if (!firstEntry) p.F.txtcertify.text += "\r\n";
    p.F.txtcertify.text += GetToken(value, ";");
    firstEntry = false;
  }
}

/// One header line; false when the load must stop.
bool ReadHeaderLine(Program& p, const std::string& line, DeviceReaderState& s) {
  std::string value = line;
  const std::string keyword = RemoveBlanks(GetToken(value, "="));
  if (keyword == "MANUFACTURER") p.F.MFG.text = UCase(value);
  else if (keyword == "DEVICE") p.F.Device.text = UCase(value);
  else if (keyword == "MODEL") p.F.Model.text = UCase(value);
  else if (keyword == "FORMAT" || keyword == "PROTOCOL") ReadFormat(p, value);
  else if (keyword == "DEVICECODE") return ReadDeviceCode(p, value, s);
  else if (keyword == "NUMBERBASE") s.hexadecimal = UCase(value) == "HEX";
  else if (keyword == "BIGENDIAN") s.bigEndian = UCase(value) == "TRUE";
  else if (keyword == "CERTIFIED") ReadCertified(p, value);
  else ReadProtocolStatement(p, keyword, value, line);
  return true;
}

/// A refused device code: no device, no protocol choice, no identification.
void AbortDeviceLoad(Program& p) {
  p.F.Lex.listIndex = -1;
  p.F.format.listIndex = -1;
  p.F.format.text.clear();
  p.F.MFG.text.clear();
  p.F.Model.text.clear();
  p.F.Device.text.clear();
}

}  // namespace

// ---- loading a device file ----

void LoadDeviceFile(Program& p, const std::string& name) {
  p.Keys.Clear();
  p.F.MFG.text.clear();
  p.F.Model.text.clear();
  p.F.Device.text.clear();
  p.F.txtcertify.text.clear();
  // A device without switch settings must not inherit the previous device's sweep.
  p.SwitchWildcard = false;
  p.VaryingSwitch = p.Switch1Setting = p.Switch2Setting = 0;
  p.XantechSweep = p.XantechCode1 = p.XantechCode2 = 0;

  std::optional<std::filesystem::path> path = p.Library.Find(p.DeviceLibraryPath, name + ".dvc");
  if (!path || !FileExists(*path)) return;

  SourceScope scope(p, path->string());
  TextFileReader reader(*path);
  DeviceReaderState state;
  std::string line;
  while (ReadCleanLine(reader, line)) {
    if (line.find_first_not_of(' ') == std::string::npos) continue;  // blank
    p.Source.line = reader.LineNumber();
    if (line.find('[') != std::string::npos && RemoveBlanks(line) == "[KEYCODES]") {
      state.inKeySection = true;
    } else if (state.inKeySection) {
      ReadKeyLine(p, std::move(line), state);
    } else if (!ReadHeaderLine(p, line, state)) {
      AbortDeviceLoad(p);
      return;
    }
  }
}

// ---- key lines ----

std::string SplitKeyOptions(KeyEntry& key, const std::string& codes) {
  std::size_t semicolon = codes.find(';');
  // Without an "=" before the ";" there is no option: every field is kept as written.
  if (codes.find('=') >= semicolon) return codes;
  std::string lists = codes.substr(0, semicolon);
  std::string kept;
  bool firstKept = true;
  for (const std::string& field : SplitKeepingEmpty(lists, ',')) {
    if (field.find('=') != std::string::npos) {
      key.Options.push_back(Trim(field));
      key.OptionCount = Add16(key.OptionCount, 1);
    } else {
      if (!firstKept) kept += ',';
      kept += field;
      firstKept = false;
    }
  }
  if (semicolon != std::string::npos) kept += codes.substr(semicolon);
  return kept;
}

KeyCode ParseKeyCode(Program& p, const std::string& item, bool hexadecimal, bool bigEndian,
                     int32_t defaultDeviceCode) {
  KeyCode code;
  std::string rest = item;
  if (rest.find(':') != std::string::npos) {
    std::string name = GetToken(rest, ":");
    if (!name.empty() && name[0] == '(') name = name.size() >= 2 ? name.substr(1, name.size() - 2) : std::string();
    code.Name = UCase(name);
  }
  const int16_t fields = CountFields(rest, ',');
  code.DeviceCode = SwapCodeBytes(ParseNumber(GetToken(rest, ","), hexadecimal), bigEndian);
  code.FunctionCode = SwapCodeBytes(ParseNumber(GetToken(rest, ","), hexadecimal), bigEndian);
  // The repeat count is always decimal, whatever NUMBERBASE says.
  code.RepeatCount = CInt(ParseNumber(GetToken(rest, ",")));
  if (fields == 1) {
    // A lone number is the function code; the device code is the device's own.
    code.FunctionCode = code.DeviceCode;
    code.DeviceCode = SwapCodeBytes(defaultDeviceCode, bigEndian);
  }
  if (code.RepeatCount == 0) code.RepeatCount = p.Protocol.RepeatCount != 0 ? p.Protocol.RepeatCount : int16_t{1};
  return code;
}

int32_t SwapCodeBytes(int32_t value, bool bigEndian) {
  if (!bigEndian || value < 256) return value;
  return Add32(int64_t{value & 0xFF} * 256, (value & ~int32_t{0xFF}) / 256);
}

// ---- switch settings ----

int32_t DecodeSwitchSettings(Program& p, const std::string& first, const std::string& second) {
  const bool firstVaries = first == "*";
  const bool secondVaries = second == "*";
  if (firstVaries && secondVaries) {
    p.Message("Varying both switch settings will produce 256 device sets, Not Permitted\r\n"
              "Loading of device File aborted");
    return -1;
  }
  if (firstVaries) {
    p.VaryingSwitch = 1;
    p.Switch1Setting = 0;
    p.Switch2Setting = DecimalSetting(second);
    return 0;
  }
  if (secondVaries) {
    p.VaryingSwitch = 2;
    p.Switch1Setting = DecimalSetting(first);
    p.Switch2Setting = 0;
    return 0;
  }
  return SwitchPositionsCode(SwitchPosition(first), SwitchPosition(second));
}

}  // namespace bw
