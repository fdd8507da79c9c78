// The main window's commands that prepare a run: loading the selected device
// file, switching auto-generation, and choosing the output format.
#include "shell/commands.h"

#include <string>

#include "adi/adi.h"
#include "input/device_file.h"
#include "pronto/pronto_code.h"
#include "runtime/text.h"
#include "slinke/slinke.h"

namespace bw {

void Lex_Click(Program& p) {
  MainForm& f = p.F;
  const std::string name = f.Lex.Text();
  if (name.empty()) return;

  p.Defines.Clear();
  f.txtdescr.text.clear();
  LoadDeviceFile(p, name);

  const std::string description = f.MFG.text + "-" + f.Model.text;
  if (f.txtdescr.text.empty()) f.txtdescr.text = description;
  if (f.ADIdescr.text.empty()) f.ADIdescr.text = description;
  f.Autogen.value = 0;
  f.Label5.caption = "Device Selected";
  FillSlinkFields(p);
}

void Autogen_Click(Program& p) {
  MainForm& f = p.F;
  const bool on = f.Autogen.value == 1;
  if (on) {
    // Ot and RPT are one option group: choosing one clears the other.
    f.Ot.value = true;
    f.RPT.value = false;
  }
  f.Frame2.visible = on;
  f.Frame4.visible = on;
  f.Lex.visible = !on;
  f.Label5.visible = !on;
}

void Output_Click(Program& p) {
  const std::string choice = UCase(p.F.Output.Text());
  if (Contains(choice, "PRONTO")) {
    p.FormatPronto = true;
    p.FormatSlinkTxOnly = false;
    p.FormatSlinkTxRx = false;
    p.FormatADI = false;
    ShowProntoOutput(p);
  } else if (Contains(choice, "ONLY")) {
    SelectSlinkTxOnly(p);
  } else if (Contains(choice, "TX/RX")) {
    SelectSlinkTxRx(p);
  } else if (Contains(choice, "LEOPARD")) {
    p.FormatADI = true;
    p.FormatPronto = false;
    p.FormatSlinkTxOnly = false;
    p.FormatSlinkTxRx = false;
    ShowADIOptions(p);
  }
}

}  // namespace bw
