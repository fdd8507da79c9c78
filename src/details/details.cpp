// The details dialog model: filling DBG for one entry, its code text per
// output format, the wait for Next / Skip / Finish and the dialog's buttons.
#include <string>

#include "details/details.h"
#include "pronto/pronto_code.h"
#include "runtime/numbers.h"
#include "runtime/run_time_error.h"

namespace bw {

void ShowEntryDetails(Program& p, const std::string& title) {
  DetailsForm& d = p.DBG;
  const MainForm& f = p.F;
  const BurstSequence& b = p.Burst;
  d.loaded = true;

  // The database combo texts: the names the Pronto writer stores the entry
  // under (the key generator copies MFG, Device and Model into them), with the
  // model from the main window's Model box as the writers use it.
  d.lblManufacturer.caption = f.DvcMfglist.text;
  d.lblType.caption = f.DvcTypeList.text;
  d.lblModel.caption = f.Model.text;
  d.lblTitle.caption = title;
  d.lblDeviceCode.caption = Format(b.BurstDeviceCode, "0");
  d.lblFunctionCode.caption = Format(b.BurstFunctionCode, "0");
  // Shown as stored, in Hz, under the old "KHZ" caption.
  d.lblCarrier.caption = Format(p.Protocol.Frequency, "0.00") + " KHZ";
  if (p.FormatPronto) {
    // Pronto counts burst pairs; its code text reads these two labels back.
    d.lblOnceCount.caption = Format(p.IRCode.OnceCount, "0");
    d.lblRepeatCount.caption = Format(p.IRCode.RepeatCount, "0");
  } else {
    d.lblOnceCount.caption = Format(b.OnceCount, "0");
    d.lblRepeatCount.caption = Format(b.RepeatPartCount, "0");
  }
  d.lblKeyLabel.caption = b.BurstLabel;
  d.lblProtocol.caption = p.Protocol.ProtocolName;
  // A pair is a mark and the gap after it; a sequence ending on a mark has a last, half pair.
  d.lblBurstPairCount.caption = Format((b.TotalCount + 1) / 2, "0");
  ++d.entryCounter;

  ShowEntryText(p);
  d.BurstList.Clear();
  for (int i = 1; i <= b.TotalCount; ++i) d.BurstList.AddItem(Format(b.BurstDurations(i), "0"));
  d.Next.enabled = true;
  d.visible = true;
  p.host->ShowDetails();
  // The waveform is drawn by the view from DrawWaveform(p) whenever it shows the model.

  // Next, Skip and Finish each disable the button and so end the wait.
  while (d.Next.enabled && !p.QuitRequested) p.host->DoEvents();
}

void ShowEntryText(Program& p) {
  if (p.FormatPronto) {
    ShowProntoText(p);
  } else {
    // ADI and both Slink-e variants list the raw durations.
    ShowBurstDurations(p);
  }
}

void Next_Click(Program& p) {
  p.DBG.Next.enabled = false;
  if (p.FormatADI) p.AdiKeyChoice = 1;
}

void Skip_Click(Program& p) {
  p.DBG.Next.enabled = false;
  if (p.FormatADI) p.AdiKeyChoice = 0;
}

void Finish_Click(Program& p) {
  p.F.Check1.value = 0;
  p.DBG.Next.enabled = false;
  p.DBG.visible = false;
  p.host->HideDetails();
  if (p.FormatADI) p.AdiKeyChoice = 2;
  p.host->DoEvents();
}

void Command1_Click(Program& p) { p.WaveformOffset = Add16(p.WaveformOffset, 5); }

void Option1_Click(Program& p, int index) {
  if (index < 0 || index >= static_cast<int>(p.DBG.Option1.size())) ThrowSubscriptOutOfRange();
  for (std::size_t i = 0; i < p.DBG.Option1.size(); ++i) p.DBG.Option1[i].value = static_cast<int>(i) == index;
}

void HexOPT_Click(Program& p) { ShowEntryText(p); }

}  // namespace bw
