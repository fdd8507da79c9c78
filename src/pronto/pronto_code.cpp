// Pronto code text: frequency words, carrier-cycle counts, the two record
// writers and the code text of the details dialog.
#include "pronto/pronto_code.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "details/details.h"
#include "input/subroutines.h"
#include "pronto/db_access.h"
#include "runtime/numbers.h"
#include "runtime/run_time_error.h"
#include "runtime/text.h"

namespace bw {

namespace {

/// The uncorrected Pronto word of a carrier: Pronto time units per carrier cycle.
int16_t RawFrequencyWord(int32_t frequency) {
  const double units = static_cast<double>(frequency) * kProntoClock;
  if (units == 0) ThrowDivisionByZero();
  return CInt(1000000.0 / units);
}

/// The downward correction of a frequency word. These steps calibrate the codes
/// this tool writes against the receivers it was tuned on; every database ever
/// written relies on them, so they cannot change.
int16_t CorrectFrequencyWord(int16_t w) {
  if (w > 248) return static_cast<int16_t>(w - 9);
  if (w > 220) return static_cast<int16_t>(w - 8);
  if (w > 192) return static_cast<int16_t>(w - 7);
  if (w > 165) return static_cast<int16_t>(w - 6);
  if (w > 137) return static_cast<int16_t>(w - 5);
  if (w > 110) return static_cast<int16_t>(w - 4);
  if (w > 82) return static_cast<int16_t>(w - 3);
  if (w > 55) return static_cast<int16_t>(w - 2);
  if (w > 27) return static_cast<int16_t>(w - 1);
  return w;
}

/// One number of the code text as a word: four upper-case hexadecimal digits of
/// its low 16 bits, or at least four decimal digits; then a blank.
std::string RenderWord(double value, bool hex) {
  if (!hex) return Format(value, "0000 ");
  static constexpr char kDigits[] = "0123456789ABCDEF";
  const auto bits = static_cast<uint16_t>(static_cast<int64_t>(RoundHalfEven(value)) & 0xFFFF);
  std::string word(4, '0');
  for (int i = 3, v = bits; i >= 0; --i, v >>= 4) word[static_cast<std::size_t>(i)] = kDigits[v & 0xF];
  return word + " ";
}

/// The next blank-separated number of `text` as one word.
std::string NextWord(std::string& text, bool hex) { return RenderWord(Val(GetToken(text)), hex); }

}  // namespace

// ---- frequency ----

int16_t ProntoFrequencyWord(int32_t frequency) {
  if (frequency <= 0) return 0;
  return CorrectFrequencyWord(RawFrequencyWord(frequency));
}

float ProntoActualCarrier(int32_t frequency) {
  const int16_t w = RawFrequencyWord(frequency);
  if (w == 0) ThrowDivisionByZero();
  return static_cast<float>(1000000.0 / (static_cast<double>(w) * kProntoClock));
}

// ---- record writers ----

void ProntoWriteCode(Program& p, int32_t argument) {
  IRCodeRecord& r = p.IRCode;
  const BurstSequence& b = p.Burst;
  MainForm& f = p.F;

  r.KeyCode1 = b.BurstDeviceCode;
  r.KeyCode2 = b.BurstFunctionCode;
  r.FullText = b.BurstDescription;
  r.Label = b.BurstLabel;
  if (r.Label.empty()) r.Label = Format(p.CurrentFunctionCode, "000");
  f.status.text = "Function=" + r.Label + " (" + Format(r.KeyCode2, "0") + "," + Format(r.KeyCode1, "0") + ")";
  r.FormatText = "0x0000";
  p.host->DoEvents();

  // Microseconds per carrier cycle of the carrier the word really encodes.
  const float period = 1000000.0f / ProntoActualCarrier(p.Protocol.Frequency);
  r.CarrierWord = ProntoFrequencyWord(p.Protocol.Frequency);
  r.OnceCount = CInt(b.OnceCount / 2.0);
  r.RepeatCount = CInt(b.RepeatPartCount / 2.0);

  r.BurstText.clear();
  for (int i = 1; i <= b.TotalCount; ++i) {
    const double magnitude = std::fabs(static_cast<double>(b.BurstDurations(i)));
    r.BurstText += Format(magnitude / static_cast<double>(period), "0") + " ";
  }

  if (f.Check1.value == 1) ShowEntryDetails(p, r.FullText);
  StoreIRCode(p);
}

void ProntoWriteBiphaseCode(Program& p, int key, const std::string& protocolName) {
  IRCodeRecord& r = p.IRCode;
  MainForm& f = p.F;
  const KeyEntry& entry = p.Keys[key];
  const int16_t n = CInt(static_cast<double>(entry.FirstCodes.size()));

  r.Label = entry.Label;
  r.OnceCount = n;
  // Predefined codes: 5000 + entries - 1 for RC5, 6000 + entries - 1 for the rest.
  const int32_t base = protocolName == "RC5" ? 5000 : 6000;
  r.FormatText = "0x" + Format(base + n - 1, "0");
  r.RepeatCount = 0;
  r.CarrierWord = 0;
  r.BurstText.clear();

  for (int j = 1; j <= n; ++j) {
    const KeyCode& code = entry.FirstCodes[static_cast<std::size_t>(j - 1)];
    const std::string pair = Format(code.DeviceCode, "(0") + "," + Format(code.FunctionCode, "0)");
    if (j == 1) {
      r.FullText = f.DvcMfglist.text + "-" + f.Model.text + " " + pair;
    } else {
      r.FullText += "-" + pair;
    }
    r.KeyCode1 = code.DeviceCode;
    r.KeyCode2 = code.FunctionCode;
    r.BurstText += Format(r.KeyCode1, "00") + " " + Format(r.KeyCode2, "00") + " ";
  }
  r.BurstText = Trim(r.BurstText);

  if (r.Label.empty()) r.Label = Format(p.CurrentFunctionCode, "000");
  f.status.text = "Function=" + r.Label + " (" + Format(r.KeyCode2, "0") + "," + Format(r.KeyCode1, "0") + ")";
  StoreIRCode(p);
}

void ProntoWriteEntry(Program& p, int key, int32_t argument) {
  const std::string& name = p.Protocol.ProtocolName;
  if (name == "RC5" || name == "RC6") {
    ProntoWriteBiphaseCode(p, key, name);
  } else {
    ProntoWriteCode(p, argument);
  }
}

void StoreIRCode(Program& p) {
  if (p.IRCodeSink) {
    p.IRCodeSink(p);
    return;
  }
  AddIRCode(p, p.IRCode, p.F.Model.text, p.F.DvcTypeList.text, p.F.DvcMfglist.text);
}

// ---- code text for the details dialog ----

void ShowProntoText(Program& p) {
  DetailsForm& d = p.DBG;
  const bool hex = d.HexOPT.value == 1;
  d.Text1.text.clear();

  std::string text = "0000 ";
  const double onceCount = Val(d.lblOnceCount.caption);
  const double repeatCount = Val(d.lblRepeatCount.caption);
  text += RenderWord(ProntoFrequencyWord(p.Protocol.Frequency), hex);
  text += RenderWord(onceCount, hex);
  text += RenderWord(repeatCount, hex);
  text += "\r\n";

  std::string burst = p.IRCode.BurstText;
  const int32_t words = Mul32(Add32(CLng(onceCount), CLng(repeatCount)), 2);
  for (int32_t i = 1; i <= words; ++i) text += NextWord(burst, hex);
  d.Text1.text = text;
}

void ShowBurstDurations(Program& p) {
  const BurstSequence& b = p.Burst;
  std::string text;
  for (int i = 1; i <= b.TotalCount; ++i) {
    const int32_t d = b.BurstDurations(i);
    text += Format(d, "0000 ");
    // A long gap ends a paragraph, so frames stand apart.
    if (std::abs(static_cast<int64_t>(d)) > 9999) text += "\r\n\r\n";
  }
  p.DBG.Text1.text = text;
}

// ---- panel ----

void ShowProntoOutput(Program& p) {
  MainForm& f = p.F;
  f.DBI.visible = true;
  f.Check1.enabled = true;
  f.Slnk.visible = false;
  f.ADI.visible = false;
  f.status.visible = false;
}

}  // namespace bw
