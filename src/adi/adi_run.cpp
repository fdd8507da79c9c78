// The ADI generation run: panel set-up, the start checks, the run over the
// device's keys, and the per-key step that waits for Add, Next Key or All Keys.
#include <string>

#include "adi/adi.h"
#include "details/details.h"
#include "generate/generate.h"
#include "input/subroutines.h"
#include "runtime/numbers.h"
#include "runtime/text.h"

namespace bw {

namespace {

/// Hourglass on for the life of the object, arrow again at the end (also after an error).
class BusyCursor {
 public:
  explicit BusyCursor(Program& p) : p_(p) { p_.host->SetBusy(true); }
  ~BusyCursor() { p_.host->SetBusy(false); }
  BusyCursor(const BusyCursor&) = delete;
  BusyCursor& operator=(const BusyCursor&) = delete;

 private:
  Program& p_;
};

/// The frame after a run, also when it ended with an error: nothing waits any
/// more, so "Add", "Next Key " and "All Keys" go off (an "Add" now would append
/// the last key a second time); a new run may start; and the table now holds
/// what the run added, so the editor commands are on as after "Open ".
void SetButtonsAfterRun(MainForm& f) {
  f.cmdADIxqt.enabled = true;
  f.cmdADInxtKey.enabled = false;
  f.cmdadiall.enabled = false;
  f.CmdADIadd.enabled = false;
  f.cmdADIsave.enabled = true;
  f.cmdADIrpl.enabled = true;
  f.cmdadiDelete.enabled = true;
  f.cmdADINext.enabled = true;
  f.cmdADIprior.enabled = true;
}

class AfterRun {
 public:
  explicit AfterRun(Program& p) : p_(p) {}
  ~AfterRun() { SetButtonsAfterRun(p_.F); }
  AfterRun(const AfterRun&) = delete;
  AfterRun& operator=(const AfterRun&) = delete;

 private:
  Program& p_;
};

}  // namespace

// ---- the run ----

void ShowADIOptions(Program& p) {
  MainForm& f = p.F;
  f.Slnk.visible = false;
  f.DBI.visible = false;
  f.ADI.visible = true;
  p.FormatADI = true;
  p.FormatPronto = false;
  p.FormatSlinkTxOnly = false;
  p.FormatSlinkTxRx = false;
  for (Button* b : {&f.cmdADIxqt, &f.cmdADInxtKey, &f.cmdadiall, &f.cmdADIsave, &f.CmdADIadd, &f.cmdADIrpl,
                    &f.cmdadiDelete, &f.cmdADINext, &f.cmdADIprior})
    b->enabled = false;
  f.cmdAdiNew.enabled = true;
  f.cmdADIOpen.enabled = true;
  // The Slink-e panel takes Skip off the details dialog; here it decides
  // whether an entry is added, so it comes back.
  p.DBG.Skip.visible = true;
}

void cmdADIxqt_Click(Program& p) {
  MainForm& f = p.F;
  if (f.Autogen.value == 0) {
    if (f.Lex.listIndex == -1) {
      p.host->MsgBox("No Device File has been selected,\r\nand not set to Auto Generate", MsgBoxStyle::OKOnly);
      p.host->SetBusy(false);
      return;
    }
  } else if (f.format.text.empty()) {
    p.host->MsgBox("Auto Generate Selected and No Format has been selected", MsgBoxStyle::OKOnly);
    p.host->SetBusy(false);
    return;
  }
  BusyCursor busy(p);
  RunADIOutput(p);
}

void RunADIOutput(Program& p) {
  MainForm& f = p.F;
  f.cmdADIxqt.enabled = false;
  f.cmdADInxtKey.enabled = true;
  f.cmdadiall.enabled = true;
  f.CmdADIadd.enabled = true;
  // "All Keys" holds for the run it was pressed in; a new run asks again.
  p.AdiKeyChoice = 0;
  AfterRun restore(p);
  GenerateKeys(p, f.format.text, ParseNumber(f.DC.text), CInt(ParseNumber(f.FFC.text)),
               CInt(ParseNumber(f.LFC.text)));
}

void WriteADIEntry(Program& p, int key, int32_t argument) {
  if (!EncodeLirRecord(p, key)) return;  // too complex: the key is not offered
  p.LirRecordGenerated = true;
  if (p.F.Check1.value == 1) {
    const LirRecord& r = p.CurrentLirRecord;
    ShowEntryDetails(p, Trim(FromCp1252(std::string_view(r.Name.data(), r.Name.size()))));
    if (p.AdiKeyChoice >= 1) AddLirRecord(p);
    return;
  }
  if (p.AdiKeyChoice == 2) {
    AddLirRecord(p);
    return;
  }
  p.AdiKeyChoice = 0;
  p.AdiWaitingAtKey = true;
  struct EndWait {
    Program& p;
    ~EndWait() { p.AdiWaitingAtKey = false; }
  } endWait{p};
  while (p.AdiKeyChoice == 0 && !p.QuitRequested) p.host->DoEvents();
  // "Add" has added the record itself and set 1; only "All Keys" leaves the adding to this step.
  if (p.AdiKeyChoice == 2) AddLirRecord(p);
}

void AddLirRecord(Program& p) {
  LirTable& t = p.Lir;
  int16_t number = CInt(t.UpperBound() + 1);
  t.records.push_back(p.CurrentLirRecord);
  ++p.EntriesWritten;
  // The new record becomes the current one, so that the number shown and the
  // record that Prior, Next, RPL and Del work on agree.
  t.Current = number;
  p.F.ADIRecnmb.text = Format(number, "0");
  p.F.adiFsize.caption = Format(t.UpperBound(), "0");
  ShowLirRecord(p);
  t.Changed = true;
}

void CmdADIadd_Click(Program& p) {
  AddLirRecord(p);
  p.AdiKeyChoice = 1;
}

void cmdADInxtKey_Click(Program& p) { p.AdiKeyChoice = 1; }

void cmdadiall_Click(Program& p) { p.AdiKeyChoice = 2; }

}  // namespace bw
