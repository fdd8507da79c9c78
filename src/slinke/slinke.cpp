// The Slink-e code file writer. A run builds the whole ".cde" text in
// SlinkText and writes it in one piece at the end, so a run that stops on an
// encoding error or a run-time error leaves no partly written file behind.
#include "slinke/slinke.h"

#include <cmath>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "details/details.h"
#include "generate/generate.h"
#include "input/defines.h"
#include "input/equation.h"
#include "input/subroutines.h"
#include "pronto/db_access.h"
#include "protocol/protocol.h"
#include "runtime/files.h"
#include "runtime/numbers.h"
#include "runtime/run_time_error.h"
#include "runtime/text.h"

namespace bw {

namespace {

constexpr const char* kCrLf = "\r\n";

/// Folder of the written files, beside the program.
constexpr const char* kSlinkeFolder = "Slinke Library";

/// Timing lists that name themselves (directly or through other names) would
/// recurse for ever; the old program ran out of stack there, and so do we, as
/// a run-time error instead of a crash.
constexpr int kMaxTimingDepth = 256;
constexpr int kOutOfStackSpace = 28;

/// Hourglass from construction; the arrow comes back whatever way the command ends.
class BusyCursor {
 public:
  explicit BusyCursor(Program& p) : p_(p) {}
  ~BusyCursor() { p_.host->SetBusy(false); }
  void On() { p_.host->SetBusy(true); }
  BusyCursor(const BusyCursor&) = delete;
  BusyCursor& operator=(const BusyCursor&) = delete;

 private:
  Program& p_;
};

/// Puts the protocol record and the symbol table back when it ends, also after
/// a run-time error: a key of another protocol must not leave that protocol
/// behind for the keys after it.
class SavedProtocol {
 public:
  explicit SavedProtocol(Program& p) : p_(p), protocol_(p.Protocol), defines_(p.Defines) {}
  ~SavedProtocol() {
    p_.Protocol = std::move(protocol_);
    p_.Defines = std::move(defines_);
  }
  SavedProtocol(const SavedProtocol&) = delete;
  SavedProtocol& operator=(const SavedProtocol&) = delete;

 private:
  Program& p_;
  ProtocolRecord protocol_;
  DefinesTable defines_;
};

/// The items of a form (cut at "," the way every form reader cuts them).
std::string FirstFormItem(std::string form) { return GetToken(form, ","); }

std::string LastFormItem(std::string form) {
  std::string item;
  while (!form.empty()) item = GetToken(form, ",");
  return item;
}

/// Text between the first and the last character ("[9000 -4500]" -> "9000 -4500").
std::string InsideBrackets(const std::string& item) {
  return item.size() >= 2 ? item.substr(1, item.size() - 2) : std::string();
}

/// The symbol-table entry that a form item such as "LEAD:0" names (entry 0 when none).
const DefineEntry& EntryOfItem(const Program& p, std::string item) {
  const std::string name = GetToken(item, ":");
  return p.Defines[LookupDefine(p, name)];
}

/// A mark and a space as the frame shows them: two numbers joined by a blank.
std::string TimingPair(int32_t mark, int32_t space) { return Format(mark, "0") + " " + Format(space, "0"); }

/// One-bit or zero-bit time of a pair text such as "560 -1690": both numbers made positive.
int16_t PairTime(std::string text) {
  const int16_t first = CInt(std::fabs(Val(GetToken(text))));
  const int16_t second = CInt(std::fabs(Val(GetToken(text))));
  return Add16(first, second);
}

std::string ExpandTimingTextAt(Program& p, std::string text, int depth) {
  if (depth > kMaxTimingDepth) throw RunTimeError(kOutOfStackSpace, "Out of stack space");
  std::string result;
  while (!text.empty()) {
    const std::string token = GetToken(text);
    if (!token.empty() && token[0] == '^') {
      result += token;
    } else if (IsNumeric(token)) {
      const double value = NumericValue(token);
      // Small numbers count in time-base units, large ones are microseconds already.
      result += std::fabs(value) >= p.Protocol.TimeBase ? GeneralNumber(value)
                                                          : GeneralNumber(value * p.Protocol.TimeBase);
    } else {
      const std::string inner = p.Defines[LookupDefine(p, token)].Text;
      result += ExpandTimingTextAt(p, inner, depth + 1);
    }
    result += " ";
  }
  return Trim(result);
}

}  // namespace

/// Merges the repeat form into the once form: the Slink-e file has one form per key.
void MergeSlinkForms(ProtocolRecord& r) {
  std::string& first = r.FormOnce;
  std::string& second = r.FormRepeat;
  if (first.empty()) {
    if (!second.empty()) {
      first = second;
      second.clear();
    }
    return;
  }
  if (second.empty()) return;
  if (first != second) {
    if (first.back() == ']' && second.front() == '[') {
      // Two bracketed timing lists become one.
      first = first.substr(0, first.size() - 1) + " " + second.substr(1);
    } else {
      first += "," + second;
    }
  }
  second.clear();
}

// ---- the option frame ----

void SelectSlinkTxOnly(Program& p) {
  p.FormatSlinkTxOnly = true;
  p.FormatSlinkTxRx = false;
  ShowSlinkOptions(p);
}

void SelectSlinkTxRx(Program& p) {
  p.FormatSlinkTxOnly = false;
  p.FormatSlinkTxRx = true;
  ShowSlinkOptions(p);
}

void ShowSlinkOptions(Program& p) {
  MainForm& f = p.F;
  f.Slnk.visible = true;
  f.ADI.visible = false;
  f.DBI.visible = false;
  f.Check1.enabled = true;
  // Every Slink-e entry is written whatever the user presses; only the ADI run
  // honours Skip, so the dialog does not offer it here.
  p.DBG.Skip.visible = false;
  p.FormatPronto = false;
  p.FormatADI = false;
}

void FillSlinkFields(Program& p) {
  MainForm& f = p.F;
  const ProtocolRecord& r = p.Protocol;
  f.txtcarrier.text = Format(r.Frequency, "0.00");
  f.TxtZero.text = TimingPair(r.ZeroMark, r.ZeroSpace);
  f.TxtOne.text = TimingPair(r.OneMark, r.OneSpace);
  f.TxtRpt.text = Format(r.RepeatCount, "0");
  f.ADIdescr.text = f.MFG.text + "-" + f.Model.text;

  // Start and stop differ on purpose: a named start is shown as its definition
  // reads, only the stop is expanded (so that a "^" frame length shows up there).
  const std::string first = FirstFormItem(r.FormOnce);
  if (!first.empty() && first[0] == '[') {
    f.TxtStart.text = ExpandTimingText(p, InsideBrackets(first));
  } else if (Contains(first, ":")) {
    f.TxtStart.text = EntryOfItem(p, first).Text;
  } else {
    f.TxtStart.text.clear();
  }

  const std::string last = LastFormItem(r.FormOnce);
  if (!last.empty() && last[0] == '[') {
    f.txtStop.text = ExpandTimingText(p, InsideBrackets(last));
  } else if (Contains(last, ":")) {
    f.txtStop.text = ExpandTimingText(p, EntryOfItem(p, last).Text);
  } else {
    f.txtStop.text.clear();
  }
}

std::string ExpandTimingText(Program& p, const std::string& text) { return ExpandTimingTextAt(p, text, 0); }

// ---- commands ----

void cmdSlinkXqt_Click(Program& p) {
  MainForm& f = p.F;
  BusyCursor cursor(p);
  if (f.Autogen.value == 0) {
    if (f.Lex.listIndex == -1) {
      p.host->MsgBox("No Device File has been selected,\r\nand not set to Auto Generate", MsgBoxStyle::OKOnly);
      return;
    }
  } else if (f.format.text.empty()) {
    p.host->MsgBox("Auto Generate Selected and No Format has been selected", MsgBoxStyle::OKOnly);
    return;
  }
  cursor.On();
  RunSlinkOutput(p);
}

void CmdSlinkDone_Click(Program& p) {
  // Unloading the main window closes an open database and ends the program.
  if (p.DatabaseOpen) CloseIRDatabase(p);
  p.F.visible = false;
  p.QuitRequested = true;
  p.host->Quit();
}

// ---- the run ----

void RunSlinkOutput(Program& p) {
  MainForm& f = p.F;
  if (f.txtdescr.text.empty()) f.txtdescr.text = f.MFG.text + "-" + f.Model.text;
  f.SlinkEntryCount.text.clear();
  f.slinkkeyname.text.clear();
  p.SlinkFileName = CleanFileName(f.txtdescr.text);

  const std::filesystem::path folder = p.ProgramFolder / kSlinkeFolder;
  std::error_code ec;
  if (!std::filesystem::is_directory(folder, ec)) {
    std::filesystem::create_directory(folder, ec);
    if (ec) ThrowPathFileAccessError();
  }

  // The "(RC5)" mark tells the Slink-e software the code is bi-phase; RC6 files
  // have always carried it too.
  p.SlinkText.clear();
  const std::string& name = p.Protocol.ProtocolName;
  const std::string description = Trim(f.txtdescr.text);
  if (name != "RC5" && name != "RC6") {
    p.SlinkText += "Desc=" + description + kCrLf;
  } else {
    p.SlinkText += "Desc=" + description + "(RC5)" + kCrLf;
  }
  // Both variants start with these two lines; a Tx/Rx file has its own
  // "type=ir" below them.
  p.SlinkText += std::string("type=irtxonly") + kCrLf + "sleep=0" + kCrLf;

  // The merged form stays in the protocol record; the Tx-only run reloads the
  // protocol at its end, the Tx/Rx run leaves it until the next load.
  MergeSlinkForms(p.Protocol);

  if (p.FormatSlinkTxRx) {
    WriteSlinkProtocolFile(p);
    return;
  }

  p.SlinkText += "carrier=" + f.txtcarrier.text + kCrLf;
  f.SlinkEntryCount.text = "0";
  f.xqtcmd.enabled = false;
  GenerateKeys(p, f.format.text, ParseNumber(f.DC.text), CInt(ParseNumber(f.FFC.text)),
               CInt(ParseNumber(f.LFC.text)));
  SaveSlinkFile(p, p.SlinkFileName);
  f.xqtcmd.enabled = true;
  LoadProtocol(p, p.Protocol.ProtocolName);
}

void WriteSlinkRawEntry(Program& p, int key, const std::string& label) {
  MainForm& f = p.F;
  const BurstSequence& b = p.Burst;
  // The empty line separates entries from each other and from the header.
  p.SlinkText += kCrLf;
  std::string line;
  for (int i = 1; i <= b.TotalCount; ++i) line += Format(b.BurstDurations(i), "0") + " ";
  p.SlinkText += line + ":" + label + kCrLf;
  ++p.EntriesWritten;

  f.slinkkeyname.text = label;
  f.SlinkEntryCount.text = Format(Val(f.SlinkEntryCount.text) + 1, "0");
  p.host->DoEvents();
  if (f.Check1.value == 1) ShowEntryDetails(p, b.BurstDescription);
}

void SaveSlinkFile(Program& p, const std::string& name) {
  const std::filesystem::path path = p.ProgramFolder / kSlinkeFolder / (name + ".cde");
  // The Slink-e software reads ANSI text.
  WriteTextFile(path, ToCp1252(p.SlinkText + kCrLf));
  p.SlinkText.clear();
}

// ---- the transmit/receive variant ----

void WriteSlinkProtocolFile(Program& p) {
  MainForm& f = p.F;
  f.xqtcmd.enabled = false;
  p.SlinkError = false;
  std::string trailingSymbol;

  std::string& t = p.SlinkText;
  t += std::string("type=ir") + kCrLf;
  t += std::string("group=") + kCrLf;
  t += "carrier=" + f.txtcarrier.text + kCrLf;
  t += "repeat=" + f.TxtRpt.text + kCrLf;
  t += std::string("pause=") + kCrLf;
  t += "zero=" + f.TxtZero.text + kCrLf;
  t += "one=" + f.TxtOne.text + kCrLf;
  t += "start=" + f.TxtStart.text + kCrLf;

  int32_t averageBitTime = 0;
  const std::string body = BuildSlinkCodeList(p, averageBitTime, trailingSymbol);
  // A key the format cannot express: no file, and the Process button stays off.
  if (p.SlinkError) return;

  AdjustSlinkStop(p, averageBitTime);
  t += "stop=" + f.txtStop.text + kCrLf;
  t += std::string("prefix=") + kCrLf;
  t += std::string("suffix=") + kCrLf;
  t += kCrLf;
  t += body;
  SaveSlinkFile(p, p.SlinkFileName);
  p.EntriesWritten += p.Keys.UpperBound();
  f.xqtcmd.enabled = true;
}

std::string BuildSlinkCodeList(Program& p, int32_t& averageBitTime, std::string& trailingSymbol) {
  MainForm& f = p.F;
  std::string body;
  int32_t totalBitTime = 0;
  const int keyCount = p.Keys.UpperBound();

  for (int i = 1; i <= keyCount; ++i) {
    const KeyEntry& key = p.Keys[i];
    f.SlinkEntryCount.text = Format(i, "0");
    f.slinkkeyname.text = key.Label;

    // Only the first code of a list is written. A key without first codes takes
    // the repeat form, which the run has always emptied by now.
    KeyCode code;
    std::string form;
    if (!key.FirstCodes.empty()) {
      code = key.FirstCodes.front();
      form = p.Protocol.FormOnce;
    } else {
      if (key.SecondCodes.empty()) ThrowSubscriptOutOfRange();
      code = key.SecondCodes.front();
      form = p.Protocol.FormRepeat;
    }
    p.CurrentFunctionCode = code.FunctionCode;
    p.CurrentDeviceCode = code.DeviceCode;
    // A code without a name of its own speaks the device's protocol.
    const std::string protocolName = code.Name.empty() ? p.Protocol.ProtocolName : UCase(code.Name);

    for (const std::string& option : key.Options) DefineSymbol(p, option, true);

    if (protocolName == p.Protocol.ProtocolName) {
      body += EncodeFormBits(p, form, totalBitTime, trailingSymbol) + ":" + key.Label + kCrLf;
    } else {
      SavedProtocol saved(p);
      if (LoadProtocol(p, protocolName)) {
        // Such a line has always gone out without ":" and label.
        body += EncodeFormBits(p, form, totalBitTime, trailingSymbol) + kCrLf;
      } else {
        p.Message("Protocol " + protocolName + " Not in Device Library");
      }
    }
    if (p.SlinkError) return body;
  }

  if (keyCount == 0) ThrowDivisionByZero();
  averageBitTime = CLng(static_cast<double>(totalBitTime) / keyCount);
  return body;
}

std::string EncodeFormBits(Program& p, std::string form, int32_t& totalBitTime, std::string& trailingSymbol) {
  for (int i = 1; i <= p.Defines.UpperBound(); ++i) {
    DefineEntry& e = p.Defines[i];
    if (e.Kind != define_kind::kPerKeyVariable) continue;
    if (e.Text == "DEVICE") e.Value = p.CurrentDeviceCode;
    else if (e.Text == "FUNCTION") e.Value = p.CurrentFunctionCode;
    else if (e.Text == "EXTENSION") e.Value = p.CurrentExtension;
  }

  std::string bits;
  double value = 0;
  while (!form.empty()) {
    std::string item = GetToken(form, ",");
    bool inverted = false;
    if (!item.empty() && (item[0] == '-' || item[0] == '~')) {
      inverted = true;
      item.erase(0, 1);
    }
    const std::string name = GetToken(item, ":");
    const std::string& bitCountText = item;

    if (IsNumeric(name)) {
      value = CLng(NumericValue(name));
    } else {
      const int16_t index = LookupDefine(p, name);
      const int16_t kind = p.Defines[index].Kind;
      if (kind >= define_kind::kNumber && kind <= define_kind::kPerKeyVariable) {
        value = EvaluateDefine(p, index, name, true);
      } else if (kind == define_kind::kRawData || kind == define_kind::kFrameLength) {
        if (!form.empty()) {
          // The file's own stop timing can only close a frame, not sit inside one.
          p.Message(kind == define_kind::kRawData ? "Nirvis CDJ format can not handle embedded raw data"
                                                  : "Nirvis CDJ format can not handle embedded timing");
          p.SlinkError = true;
          return bits;
        }
        trailingSymbol = name;
      }
      // Any other kind (an unknown name is entry 0, kind 0) keeps the value of the item before.
    }

    const int16_t bitCount = CInt(Val(bitCountText));
    if (inverted) value = std::pow(2.0, bitCount) - 1 - value;
    bits += ValueToBits(p, value, bitCount, totalBitTime, p.Protocol.BitOrder);
  }
  return bits;
}

std::string ValueToBits(Program& p, double value, int16_t bitCount, int32_t& bitTime, const std::string& order) {
  const int16_t oneTime = PairTime(p.F.TxtOne.text);
  const int16_t zeroTime = PairTime(p.F.TxtZero.text);
  const bool msbFirst = order == "MSB";
  std::string bits;
  for (int k = bitCount; k >= 1; --k) {
    // Not masked: a value too big for the field sets the top bit and more below it.
    const double weight = std::pow(2.0, k - 1);
    std::string bit;
    if (value >= weight) {
      bit = "1";
      value -= weight;
      bitTime = Add32(bitTime, oneTime);
    } else {
      bit = "0";
      bitTime = Add32(bitTime, zeroTime);
    }
    bits = msbFirst ? bits + bit : bit + bits;
  }
  return bits;
}

void AdjustSlinkStop(Program& p, int32_t averageBitTime) {
  MainForm& f = p.F;
  if (f.txtStop.text.empty()) return;

  // What the frame holds before the stop: the lead-in and the average data bits.
  double base = averageBitTime;
  std::string start = f.TxtStart.text;
  while (!start.empty()) base += std::fabs(Val(GetToken(start)));

  std::string stop = f.txtStop.text;
  std::string result;
  while (!stop.empty()) {
    const std::string token = GetToken(stop);
    if (!token.empty() && token[0] == '^') {
      // "^n" pads the frame to n microseconds with a gap.
      result += "-" + GeneralNumber(std::fabs(Val(token.substr(1))) - base) + " ";
    } else {
      result += token + " ";
    }
  }
  f.txtStop.text = Trim(result);
}

}  // namespace bw
