// The key generator: builds each key's burst sequence from the protocol's forms
// and the key's codes, then hands it to the one writer the format flags select.
#include "generate/generate.h"

#include <string>
#include <utility>

#include "input/defines.h"
#include "input/subroutines.h"
#include "protocol/protocol.h"
#include "runtime/numbers.h"

namespace bw {

namespace {

/// Which part of the burst sequence an entry builder extends.
enum class BurstPart { Once, Repeat };

/// "(5,12)": a code pair as it appears in entry descriptions.
std::string CodePair(int32_t deviceCode, int32_t functionCode) {
  return Format(deviceCode, "(0") + "," + Format(functionCode, "0)");
}

/// Puts the protocol record and the symbol table back as they were when the
/// object was made, unless nothing was switched. A key code may name another
/// protocol; loading it replaces both, and the rest of the key (and the run)
/// must see the device's own protocol again, also after an error. Loading also
/// selects the other name in the `format` list, which later runs read, so the
/// list's selection comes back too.
class ProtocolSwitch {
 public:
  explicit ProtocolSwitch(Program& p) : p_(p) {}
  ~ProtocolSwitch() {
    if (!switched_) return;
    p_.Protocol = std::move(savedProtocol_);
    p_.Defines = std::move(savedDefines_);
    p_.F.format.listIndex = savedFormatIndex_;
    p_.F.format.text = std::move(savedFormatText_);
  }
  ProtocolSwitch(const ProtocolSwitch&) = delete;
  ProtocolSwitch& operator=(const ProtocolSwitch&) = delete;

  /// Loads `name` when it is not the current protocol. False (after the message)
  /// when the library has no file for it.
  bool To(const std::string& name) {
    if (name == p_.Protocol.ProtocolName) return true;
    savedProtocol_ = p_.Protocol;
    savedDefines_ = p_.Defines;
    savedFormatIndex_ = p_.F.format.listIndex;
    savedFormatText_ = p_.F.format.text;
    switched_ = true;
    if (LoadProtocol(p_, name)) return true;
    p_.Message("Protocol " + name + " Not in Device Library");
    return false;
  }

 private:
  Program& p_;
  bool switched_ = false;
  ProtocolRecord savedProtocol_;
  DefinesTable savedDefines_;
  int savedFormatIndex_ = -1;
  std::string savedFormatText_;
};

/// Builds the k-th (from 1) code entry of a key's once or repeat list and
/// appends its durations after those already in the sequence.
void BuildCodeEntry(Program& p, const KeyCode& code, int k, BurstPart part) {
  BurstSequence& b = p.Burst;
  const MainForm& f = p.F;

  p.CurrentFunctionCode = code.FunctionCode;
  b.BurstFunctionCode = code.FunctionCode;
  p.CurrentDeviceCode = code.DeviceCode;
  b.BurstDeviceCode = code.DeviceCode;

  if (k == 1) {
    b.BurstDescription = f.DvcMfglist.text + "-" + f.Model.text + " " + CodePair(code.DeviceCode, code.FunctionCode);
  } else {
    b.BurstDescription += "-" + CodePair(code.DeviceCode, code.FunctionCode);
  }

  DurationList scratch;
  {
    ProtocolSwitch protocol(p);
    if (!protocol.To(code.Name.empty() ? p.Protocol.ProtocolName : code.Name)) return;
    const ProtocolRecord& r = p.Protocol;
    const std::string& form = (part == BurstPart::Repeat && !r.FormRepeat.empty()) ? r.FormRepeat : r.FormOnce;
    ExpandForm(p, form, scratch, code.RepeatCount);
  }

  // Once entries are all built before the repeated part, so they may ignore it.
  const int start = part == BurstPart::Once ? b.OnceCount : b.OnceCount + b.RepeatPartCount;
  for (int i = 1; i <= scratch.Count; ++i) b.BurstDurations(start + i) = scratch(i);
  if (part == BurstPart::Once) {
    b.OnceCount = Add16(b.OnceCount, scratch.Count);
  } else {
    b.RepeatPartCount = Add16(b.RepeatPartCount, scratch.Count);
  }

  if (p.FormatADI && f.ADIoptRX.value) b.MarkedForRecognize = true;
}

/// Builds every entry of one code list whose repetition count is above 0.
void BuildCodeList(Program& p, const std::vector<KeyCode>& codes, BurstPart part) {
  for (std::size_t i = 0; i < codes.size(); ++i) {
    if (codes[i].RepeatCount > 0) BuildCodeEntry(p, codes[i], static_cast<int>(i) + 1, part);
  }
}

}  // namespace

bool GenerateKeys(Program& p, const std::string& context, int32_t argument, int16_t first, int16_t last) {
  MainForm& f = p.F;
  f.DvcMfglist.text = f.MFG.text;
  f.DvcTypeList.text = f.Device.text;
  f.DvcModelList.text = f.Model.text;
  p.DBG.entryCounter = 0;

  const bool autogen = f.Autogen.value == 1;
  int16_t from = 1;
  int16_t to = CInt(p.Keys.UpperBound());
  if (autogen) {
    from = first;
    to = last;
  }

  // A 16-bit loop counter: stepping past 32767 is an Overflow, as it always was.
  for (int16_t key = from; key <= to; key = Add16(key, 1)) {
    ResetBurstSequence(p);
    if (f.format.text == "RAW") {
      if (!LoadRawKey(p, key)) return false;
      // Raw keys are built only; no writer receives them from here.
    } else if (!autogen) {
      BuildKeySequence(p, key);
      DispatchEntry(p, key, argument);
    } else {
      // Auto-generated entries are built only, too.
      AutoGenerateEntry(p, key, argument);
    }
  }

  f.status.text.clear();
  return true;
}

void ResetBurstSequence(Program& p) { p.Burst = BurstSequence{}; }

bool LoadRawKey(Program& p, int key) {
  if (!p.FormatSlinkTxOnly) {
    p.Message("Raw format only permitted for Slink Option, not for Pronto or ADI");
    return false;
  }
  BurstSequence& b = p.Burst;
  std::string_view text = p.Keys[key].RawText;
  int16_t count = 0;
  while (!text.empty()) {
    std::string token = GetToken(text);
    count = Add16(count, 1);
    b.BurstDurations(count) = CLng(Val(token));
  }
  b.OnceCount = count;
  b.RepeatPartCount = 0;
  // TotalCount stays 0 from the reset: raw keys have always been left that way.
  return true;
}

void BuildKeySequence(Program& p, int key) {
  const KeyEntry& entry = p.Keys[key];
  BurstSequence& b = p.Burst;
  b.BurstLabel = entry.Label;
  b.OnceCount = 0;
  b.RepeatPartCount = 0;
  b.TotalCount = 0;

  for (const std::string& option : entry.Options) DefineSymbol(p, option, true);

  BuildCodeList(p, entry.FirstCodes, BurstPart::Once);

  if (entry.HasSecondCodes) {
    BuildCodeList(p, entry.SecondCodes, BurstPart::Repeat);
  } else if (!p.Protocol.FormRepeat.empty()) {
    DurationList scratch;
    ExpandForm(p, p.Protocol.FormRepeat, scratch, 1);
    for (int i = 1; i <= scratch.Count; ++i) b.BurstDurations(b.OnceCount + i) = scratch(i);
    b.RepeatPartCount = scratch.Count;
  }

  b.TotalCount = Add16(b.OnceCount, b.RepeatPartCount);
}

void AutoGenerateEntry(Program& p, int16_t functionCode, int32_t deviceCode) {
  BurstSequence& b = p.Burst;
  const MainForm& f = p.F;
  b.BurstDescription = f.DvcMfglist.text + "-" + f.Model.text + " " + "(" + Format(deviceCode, "0") + "," +
                       Format(functionCode, "0") + ")";
  b.BurstLabel = "Function: " + Format(functionCode, "000");
  p.CurrentFunctionCode = functionCode;
  b.BurstFunctionCode = functionCode;
  p.CurrentDeviceCode = deviceCode;
  b.BurstDeviceCode = deviceCode;

  ExpandForm(p, p.Protocol.FormOnce, b.BurstDurations, 1);
  b.TotalCount = b.BurstDurations.Count;
  b.OnceCount = b.BurstDurations.Count;

  if (f.RPT.value) {
    b.RepeatPartCount = b.OnceCount;
    b.OnceCount = 0;
  } else if (f.Ot.value) {
    b.RepeatPartCount = 0;
  }
}

void DispatchEntry(Program& p, int key, int32_t argument) {
  if (p.SnapMode) SnapHook();
  EntryWriters::Writer writer = nullptr;
  if (p.FormatSlinkTxOnly) {
    writer = p.Writers.SlinkTxOnly;
  } else if (p.FormatADI) {
    writer = p.Writers.ADI;
  } else if (p.FormatPronto) {
    writer = p.Writers.Pronto;
  }
  // Tx/Rx alone: that writer works from the protocol description, not from
  // per-key bursts, so nothing is written here.
  if (writer != nullptr) writer(p, key, argument);
}

void SnapHook() {}

}  // namespace bw
