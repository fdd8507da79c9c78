// The library harness: the input is one protocol file and one device file,
// split at the first NUL byte (without one, the device file is empty). They are
// written as a Device Library of two files beside a program folder, the program
// starts on it, and the device is loaded through the device list and generated
// for every output: Pronto records (shown as code text), both Slink-e files and
// an ADI table saved to a .lir file, each entry passing the details dialog.
// A RunTimeError is the program's answer to a bad file and is fine; anything
// else escaping, a sanitizer report or a hang is a finding.
#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>

#include "adi/adi.h"
#include "generate/generate.h"
#include "pronto/pronto_code.h"
#include "input/subroutines.h"
#include "runtime/numbers.h"
#include "shell/commands.h"
#include "shell/startup.h"
#include "slinke/slinke.h"
#include "text_host.h"

namespace {

namespace fs = std::filesystem;

void WriteFile(const fs::path& path, std::string_view text) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

/// The run of one output (index into the output list) as the buttons start it.
void RunOutput(bw::Program& p, int output) {
  using namespace bw;
  switch (output) {
    case 0:
      p.IRCodeSink = [](Program& q) {
        q.DBG.lblOnceCount.caption = std::to_string(q.IRCode.OnceCount);
        q.DBG.lblRepeatCount.caption = std::to_string(q.IRCode.RepeatCount);
        ShowProntoText(q);
      };
      GenerateKeys(p, p.F.format.text, ParseNumber(p.F.DC.text), CInt(ParseNumber(p.F.FFC.text)),
                   CInt(ParseNumber(p.F.LFC.text)));
      break;
    case 1:
    case 2:
      cmdSlinkXqt_Click(p);
      break;
    default:
      cmdAdiNew_Click(p);
      cmdADIxqt_Click(p);
      cmdADIsave_Click(p);
      break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace bw;
  const fs::path& home = fuzz::ScratchFolder("library");
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::size_t split = input.find('\0');
  std::error_code ec;
  fs::remove_all(home, ec);
  fs::create_directories(home / "Device Library");
  WriteFile(home / "Device Library" / "Fuzz.irp", input.substr(0, split));
  WriteFile(home / "Device Library" / "Fuzz Device.dvc",
            split == std::string_view::npos ? std::string_view() : input.substr(split + 1));

  for (int output = 0; output < 4; ++output) {
    fuzz::TextHost host;
    Program p;
    host.program = &p;
    host.dialogFile = (home / "out.lir").string();
    p.host = &host;
    p.ProgramFolder = home;
    try {
      if (!StartProgram(p)) return 0;
      p.F.Output.listIndex = output;
      Output_Click(p);
      if (p.F.Lex.items.empty()) return 0;
      p.F.Lex.listIndex = 0;
      Lex_Click(p);
      p.F.Check1.value = 1;
      RunOutput(p, output);
    } catch (const RunTimeError&) {
      // shown as "Run-time error 'N':" by the front end; the command ends
    }
  }
  return 0;
}
