// The .lir harness: the input is a short script of editor commands and a .lir
// file. Its first byte says how many of the next bytes (0 to 15) are commands;
// the rest is the file, opened through the editor's Open. Each command byte
// picks Next, Prior, Replace (with the table's last record), Delete, Save and
// reopen, a jump to the record its high bits name, Add, or New. A RunTimeError
// is the program's answer to a bad file or index and is fine; anything else
// escaping, a sanitizer report or a hang is a finding.
#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string>

#include "adi/adi.h"
#include "text_host.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace bw;
  if (size == 0) return 0;
  const std::size_t commandCount = std::min<std::size_t>(data[0] % 16, size - 1);
  const uint8_t* commands = data + 1;
  const std::filesystem::path file = fuzz::ScratchFolder("lir") / "edit.lir";
  {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(data + 1 + commandCount),
              static_cast<std::streamsize>(size - 1 - commandCount));
  }

  fuzz::TextHost host;
  Program p;
  host.program = &p;
  host.dialogFile = file.string();
  p.host = &host;
  p.ProgramFolder = fuzz::ScratchFolder("lir");
  p.FormatADI = true;
  try {
    cmdADIOpen_Click(p);
  } catch (const RunTimeError&) {
    return 0;
  }
  for (std::size_t i = 0; i < commandCount; ++i) {
    try {
      switch (commands[i] % 8) {
        case 0: cmdADINext_Click(p); break;
        case 1: cmdADIprior_Click(p); break;
        case 2:
          if (p.Lir.UpperBound() >= 1) p.CurrentLirRecord = p.Lir.records.back();
          cmdADIrpl_Click(p);
          break;
        case 3: cmdadiDelete_Click(p); break;
        case 4:
          cmdADIsave_Click(p);
          cmdADIOpen_Click(p);
          break;
        case 5:
          p.Lir.Current = static_cast<int16_t>(commands[i] >> 3);
          ShowLirRecord(p);
          break;
        case 6: AddLirRecord(p); break;
        default: cmdAdiNew_Click(p); break;
      }
    } catch (const RunTimeError&) {
      // shown by the front end; the editor stays open
    }
  }
  return 0;
}
