// The ".lir" record editor of the ADI frame: open and save a file, step through
// its records, replace or delete the current one, start a new table, and Done.
#include <cstdlib>
#include <filesystem>
#include <string>

#include "adi/adi.h"
#include "input/subroutines.h"
#include "pronto/db_access.h"
#include "runtime/numbers.h"
#include "runtime/run_time_error.h"

namespace bw {

namespace {

const char* const kLirFilter = "LIR Files (*.lir)|*.lir";

/// Where "Open " starts looking: the user's home folder.
std::string HomeFolder() {
  const char* home = std::getenv("HOME");
  return (home && *home) ? std::string(home) : std::string("/");
}

void ShowCurrentNumber(Program& p) { p.F.ADIRecnmb.text = Format(p.Lir.Current, "0"); }

/// The save command ("Save", and "Done" for a changed table). False when the
/// user cancelled or declined, so nothing was written.
bool SaveLirFile(Program& p) {
  std::string name = p.F.ADIFileName.text;
  // A table that never had a file (empty name) is saved like a "NEW" one.
  if (name == "NEW" || name.empty()) {
    std::filesystem::path folder = p.ProgramFolder / "ADI Library";
    std::error_code ec;
    if (!std::filesystem::is_directory(folder, ec)) std::filesystem::create_directories(folder, ec);
    name = p.host->SaveFileDialog(kLirFilter, (folder / "*.lir").string());
    if (name.empty()) return false;
    // The dialog's one option here: a name typed without an extension gets ".lir".
    if (std::filesystem::path(name).extension().empty()) name += ".lir";
    p.F.ADIFileName.text = name;
  }
  if (FileExists(name)) {
    MsgBoxResult answer =
        p.host->MsgBox(name + " Already exists" + "\r\n" + "Do you wish to write Over it?", MsgBoxStyle::YesNoCancel);
    if (answer != MsgBoxResult::Yes) return false;
  }
  WriteLirFile(p, name);
  p.Lir.Changed = false;
  return true;
}

}  // namespace

// ---- the editor ----

void cmdADIOpen_Click(Program& p) {
  std::string path = p.host->OpenFileDialog(kLirFilter, (std::filesystem::path(HomeFolder()) / "*.lir").string());
  if (path.empty()) return;
  MainForm& f = p.F;
  f.ADIFileName.text = path;
  for (Button* b : {&f.cmdADIxqt, &f.cmdADIsave, &f.CmdADIadd, &f.cmdadiDelete, &f.cmdADIrpl, &f.cmdADINext,
                    &f.cmdADIprior})
    b->enabled = true;
  for (Button* b : {&f.cmdADInxtKey, &f.cmdadiall, &f.cmdAdiNew, &f.cmdADIOpen}) b->enabled = false;
  ReadLirFile(p, path);
  if (const std::string warning = LirPartialRecordWarning(path); !warning.empty()) p.Message(warning);
  f.adiFsize.caption = Format(p.Lir.UpperBound(), "0");
  f.ADIRecnmb.text = "1";
  ShowLirRecord(p);
  p.Lir.Changed = false;
}

void cmdADIsave_Click(Program& p) { SaveLirFile(p); }

void cmdADIprior_Click(Program& p) {
  if (p.Lir.Current > 1) {
    p.Lir.Current = Sub16(p.Lir.Current, 1);
    ShowCurrentNumber(p);
    ShowLirRecord(p);
  }
}

void cmdADINext_Click(Program& p) {
  if (p.Lir.Current != p.Lir.UpperBound()) {
    p.Lir.Current = Add16(p.Lir.Current, 1);
    ShowCurrentNumber(p);
    ShowLirRecord(p);
  }
}

void cmdADIrpl_Click(Program& p) {
  LirTable& t = p.Lir;
  if (t.Current < 0 || t.Current > t.UpperBound()) ThrowSubscriptOutOfRange();
  t.records[static_cast<std::size_t>(t.Current)] = p.CurrentLirRecord;
  ShowLirRecord(p);
  // Deliberately leaves the changed flag alone.
}

void cmdadiDelete_Click(Program& p) {
  LirTable& t = p.Lir;
  if (t.UpperBound() < 2) {
    t.records.assign(1, LirRecord{});
    t.Current = 0;
  } else {
    // Records behind the current one move down; a current number past the end
    // moves nothing and the last record goes.
    for (int i = t.Current; i < t.UpperBound(); ++i)
      t.records[static_cast<std::size_t>(i)] = t.records[static_cast<std::size_t>(i) + 1];
    t.records.pop_back();
    if (t.Current > t.UpperBound()) t.Current = CInt(t.UpperBound());
  }
  ShowCurrentNumber(p);
  p.F.adiFsize.caption = Format(t.UpperBound(), "0");
  ShowLirRecord(p);
  t.Changed = true;
}

void cmdAdiNew_Click(Program& p) {
  MainForm& f = p.F;
  f.ADIFileName.text = "NEW";
  f.cmdADIxqt.enabled = true;
  f.cmdADIsave.enabled = true;
  for (Button* b : {&f.cmdADInxtKey, &f.cmdadiall, &f.cmdAdiNew, &f.cmdADIOpen}) b->enabled = false;
  // A fresh table for the run to fill.
  p.Lir = LirTable{};
  f.ADIRecnmb.text = "0";
  f.adiFsize.caption = "0";
  f.ADIFileDevice.text.clear();
  f.AdiFileKey.text.clear();
}

void cmdADIdone_Click(Program& p) {
  if (p.DatabaseOpen) CloseIRDatabase(p);
  if (p.Lir.Changed) SaveLirFile(p);
  p.host->Quit();
}

}  // namespace bw
