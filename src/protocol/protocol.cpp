#include "protocol/protocol.h"

#include <filesystem>

#include "input/defines.h"
#include "input/subroutines.h"
#include "runtime/files.h"
#include "runtime/numbers.h"
#include "runtime/text.h"

namespace bw {

namespace {

/// A protocol line taken apart into its keyword (blanks removed, upper case) and value.
struct Statement {
  std::string keyword;
  std::string value;
};

/// Splits at the first "=": the usual "KEYWORD = value" form.
Statement SplitAtEquals(const std::string& line) {
  std::string rest = line;
  std::string keyword = RemoveBlanks(GetToken(rest, "="));
  return {keyword, rest};
}

/// Splits at the first blank: the "KEYWORD value" form.
Statement SplitAtBlank(const std::string& line) {
  std::string rest = line;
  std::string keyword = RemoveBlanks(GetToken(rest, " "));
  return {keyword, rest};
}

bool NamesProtocol(const std::string& keyword) { return keyword == "FORMAT" || keyword == "PROTOCOL"; }

/// The protocols the file's FORMAT/PROTOCOL lines name (blanks removed, upper case), in file order.
std::vector<std::string> NamedProtocols(const std::filesystem::path& path) {
  TextFileReader reader(path);
  std::vector<std::string> names;
  std::string line;
  while (ReadCleanLine(reader, line)) {
    if (line.find_first_not_of(' ') == std::string::npos) continue;  // blank
    Statement s = SplitAtEquals(line);
    if (!NamesProtocol(s.keyword)) s = SplitAtBlank(line);
    if (NamesProtocol(s.keyword)) names.push_back(RemoveBlanks(s.value));
  }
  return names;
}

/// The first protocol file in listing order that names `wanted`; empty when none
/// does. Files are read once per state of the folder, and only as far as needed.
std::string FindProtocolFile(Program& p, const std::string& wanted) {
  const std::filesystem::path folder = p.DeviceLibraryPath;
  // A change between these two calls leaves the index tagged with the older
  // generation, so it is read afresh next time.
  const uint64_t generation = p.Library.Check(folder);
  ProtocolFileIndex& index = p.ProtocolFiles;
  if (index.generation != generation) {
    index = ProtocolFileIndex{};
    index.generation = generation;
  }
  if (auto it = index.firstFile.find(wanted); it != index.firstFile.end()) return it->second;
  const std::vector<std::string>& files = p.Library.List(folder, ".irp");
  while (index.filesRead < files.size()) {
    const std::string& file = files[index.filesRead];
    const std::vector<std::string> names = NamedProtocols(folder / file);
    ++index.filesRead;
    bool found = false;
    for (const std::string& name : names) {
      index.firstFile.emplace(name, file);
      found = found || name == wanted;
    }
    if (found) return file;
  }
  return {};
}

/// Reads "mark , space" leniently: each the longest leading number, else 0.
void ReadTimePair(const std::string& value, float& mark, float& space) {
  std::string rest = value;
  mark = static_cast<float>(Val(GetToken(rest, ",")));
  space = static_cast<float>(Val(rest));
}

// Fixed texts of the loader's messages. The misspellings are what users of the
// protocol files have always seen and searched for; they stay as they are.
constexpr const char* kModulationList = "PWM PPM BI-PHASE RC5 RC6";
constexpr const char* kBitOrderList = "LSB MSB";

}  // namespace

// ---- finding and loading a protocol file ----

bool ProtocolInLibrary(Program& p, const std::string& name) { return !FindProtocolFile(p, RemoveBlanks(name)).empty(); }

bool LoadProtocol(Program& p, const std::string& name) {
  const std::string file = FindProtocolFile(p, RemoveBlanks(name));
  if (file.empty()) return false;

  // A file loaded before without a message, in the folder as it still is, is
  // not read again: what it left behind is put back.
  auto& loads = p.ProtocolFiles.loads;
  if (auto kept = loads.find(file); kept != loads.end()) {
    const KeptProtocolLoad& k = kept->second;
    p.Protocol = k.protocol;
    p.Defines = k.defines;
    if (k.modulationText) p.LastModulationText = *k.modulationText;
    if (k.bitOrderText) p.LastBitOrderText = *k.bitOrderText;
    for (const std::string& protocolName : k.protocolNames) SelectProtocolInList(p, protocolName);
    return true;
  }

  const std::filesystem::path found = std::filesystem::path(p.DeviceLibraryPath) / file;
  const uint64_t messagesBefore = p.MessagesShown;
  KeptProtocolLoad k;
  p.Defines.Clear();
  ProtocolScratch scratch;
  ResetProtocol(p, scratch);
  {
    SourceScope scope(p, found.string());
    TextFileReader reader(found);
    std::string line;
    while (ReadCleanLine(reader, line)) {
      if (line.find_first_not_of(' ') == std::string::npos) continue;  // blank
      p.Source.line = reader.LineNumber();
      Statement s = SplitAtEquals(line);
      if (!ParseProtocolLine(p, s.keyword, s.value, scratch)) {
        s = SplitAtBlank(line);
        if (!ParseProtocolLine(p, s.keyword, s.value, scratch)) {
          p.Message("Bad Command in Protocol File " + line);
          continue;
        }
      }
      // The statements that change more than the record and the symbols.
      if (s.keyword == "PROTOCOL") k.protocolNames.push_back(s.value);
      if (s.keyword == "MODULATION") k.modulationText = p.LastModulationText;
      if (s.keyword == "BITORDER" || s.keyword == "FIRSTBIT") k.bitOrderText = p.LastBitOrderText;
    }
    ScaleProtocolTimes(p, scratch);
    CompileProtocolForm(p);
  }
  if (p.MessagesShown == messagesBefore) {
    k.protocol = p.Protocol;
    k.defines = p.Defines;
    loads.emplace(file, std::move(k));
  }
  return true;
}

void ResetProtocol(Program& p, ProtocolScratch& scratch) {
  p.Protocol = ProtocolRecord{};
  p.Protocol.Modulation = "PWM";
  p.Protocol.BitOrder = "LSB";
  scratch = ProtocolScratch{};
}

// ---- statements ----

bool ParseProtocolLine(Program& p, const std::string& keyword, const std::string& value,
                       ProtocolScratch& scratch) {
  if (keyword == "DEVICE" || keyword == "FUNCTION" || keyword == "TOLERANCE" || keyword == "INTERMESSAGE" ||
      keyword == "NAME")
    return true;  // accepted; nothing reads them (NAME never fills ProtocolTitle)
  if (keyword == "PROTOCOL") {
    p.Protocol.ProtocolName = UCase(value);
    SelectProtocolInList(p, value);
    return true;
  }
  return ParseProtocolKeyword(p, keyword, value, scratch, false);
}

bool ParseProtocolKeyword(Program& p, const std::string& keyword, const std::string& value,
                          ProtocolScratch& scratch, bool acceptUnknown) {
  ProtocolRecord& r = p.Protocol;
  if (keyword == "MODULATION") {
    // A substring test: any part of the list passes as it stands ("M", "PHASE", "").
    p.LastModulationText = RemoveBlanks(value);
    if (Contains(kModulationList, p.LastModulationText)) {
      r.Modulation = p.LastModulationText;
    } else {
      p.Message("Modulation Paramaeter " + p.LastModulationText + " is Not recognized, PWM assumed");
      r.Modulation = "PWM";
    }
  } else if (keyword == "BITORDER" || keyword == "FIRSTBIT") {
    p.LastBitOrderText = RemoveBlanks(value);
    if (Contains(kBitOrderList, p.LastBitOrderText)) {
      r.BitOrder = p.LastBitOrderText;
    } else {
      p.Message("Bit Order Paramaeter " + p.LastBitOrderText + " is Not recognized, LSB assumed");
      r.BitOrder = "LSB";
    }
  } else if (keyword == "FORM") {
    std::string rest = value;
    r.FormOnce = UCase(GetToken(rest, ";"));
    r.FormRepeat = UCase(rest);
  } else if (keyword == "ONE") {
    ReadTimePair(value, scratch.OneMark, scratch.OneSpace);
  } else if (keyword == "ZERO") {
    ReadTimePair(value, scratch.ZeroMark, scratch.ZeroSpace);
  } else if (keyword == "FREQUENCY") {
    r.Frequency = CLng(Val(value));
  } else if (keyword == "REPEAT") {
    r.RepeatCount = CInt(Val(value));
  } else if (keyword == "TIMEBASE") {
    r.TimeBase = CInt(Val(value));
  } else if (keyword == "DEFINE" || keyword == "DEFAULT") {
    DefineSymbol(p, value, false);
  } else if (keyword == "CERTIFIED" || keyword.empty()) {
    // accepted and ignored ("= ..." lines have an empty keyword)
  } else {
    return acceptUnknown;
  }
  return true;
}

// ---- after the file was read ----

int32_t ScaleProtocolTime(float number, int16_t timeBase, int32_t unused) {
  if (timeBase == 0) timeBase = 1;
  // ONE and ZERO are written in time-base units; a number that is not below the
  // time base would be a microsecond value and is deliberately not used.
  if (number < static_cast<float>(timeBase)) return CLng(static_cast<double>(number * static_cast<float>(timeBase)));
  return unused;
}

void ScaleProtocolTimes(Program& p, const ProtocolScratch& scratch) {
  ProtocolRecord& r = p.Protocol;
  if (r.TimeBase == 0) r.TimeBase = 1;
  r.OneMark = ScaleProtocolTime(scratch.OneMark, r.TimeBase, 0);
  r.OneSpace = ScaleProtocolTime(scratch.OneSpace, r.TimeBase, 0);
  r.ZeroMark = ScaleProtocolTime(scratch.ZeroMark, r.TimeBase, 0);
  r.ZeroSpace = ScaleProtocolTime(scratch.ZeroSpace, r.TimeBase, 0);
}

void RegisterFormSymbols(Program& p, const std::string& form) {
  std::string rest = form;
  while (!rest.empty()) {
    std::string item = GetToken(rest, ",");
    std::string symbol;
    std::size_t colon = item.find(':');
    if (colon != std::string::npos) {
      symbol = Trim(UCase(item.substr(0, colon)));
      if (!symbol.empty() && (symbol[0] == '-' || symbol[0] == '+')) symbol.erase(0, 1);
      if (IsNumeric(symbol)) continue;  // a constant, not a name
    } else {
      if (item == "_" || item == "*" || item == "R*" || item == "R_") continue;
      symbol = UCase(item);
    }
    // Empty items and inline raw lists ("[9000 -4500]") name nothing.
    if (symbol.empty() || symbol[0] == '[') continue;
    if (LookupDefine(p, symbol) == 0) p.Defines.entries.push_back(DefineEntry{symbol, "", 0, define_kind::kNumber});
  }
}

/// Binds `text` ("DEVICE" or "FUNCTION") to `name` unless some entry already stands for it.
static void BindPerKeyVariable(Program& p, const std::string& text, const std::string& name) {
  bool bound = false;
  for (int i = 1; i <= p.Defines.UpperBound(); ++i)
    if (UCase(p.Defines[i].Text) == text) bound = true;
  if (bound) return;
  int index = LookupDefine(p, name);
  if (index != 0) {
    p.Defines[index].Text = text;
    p.Defines[index].Kind = define_kind::kPerKeyVariable;
  } else {
    p.Defines.entries.push_back(DefineEntry{name, text, 0, define_kind::kPerKeyVariable});
  }
}

void CompileProtocolForm(Program& p) {
  const ProtocolRecord& r = p.Protocol;
  if (r.FormOnce.empty() && r.FormRepeat.empty()) {
    p.Message("No form has beeen specified for " + r.ProtocolName + " Protocol");
  } else {
    if (!r.FormOnce.empty()) RegisterFormSymbols(p, r.FormOnce);
    if (!r.FormRepeat.empty() && r.FormRepeat != r.FormOnce) RegisterFormSymbols(p, r.FormRepeat);
  }
  // Unless the protocol bound the codes to names of its own, forms call them D and F.
  BindPerKeyVariable(p, "DEVICE", "D");
  BindPerKeyVariable(p, "FUNCTION", "F");
}

void SelectProtocolInList(Program& p, const std::string& name) {
  const int index = p.F.format.FindFirst(RemoveBlanks(name), RemoveBlanks);
  if (index >= 0) p.F.format.Select(index);
}

}  // namespace bw
