#include "library/library_run.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "generate/generate.h"
#include "input/subroutines.h"
#include "shell/commands.h"
#include "shell/startup.h"

namespace bw::test::library {

std::string BundledLibraryPath() { return BW_SOURCE_DIR "/Device Library"; }

LibraryRun::LibraryRun() {
  p.ProgramFolder = BW_BIN_DIR;
  p.DeviceLibraryPath = BundledLibraryPath();
  ListProtocolNames(p);
  ListDeviceFiles(p);
}

bool LibraryRun::Load(const std::string& listedName) {
  const auto& items = p.F.Lex.items;
  auto found = std::find(items.begin(), items.end(), listedName);
  if (found == items.end()) return false;
  p.F.Lex.listIndex = static_cast<int>(found - items.begin());
  Lex_Click(p);
  return true;
}

void LibraryRun::GeneratePronto() {
  keys.clear();
  p.FormatPronto = true;
  p.FormatSlinkTxOnly = p.FormatSlinkTxRx = p.FormatADI = false;
  p.IRCodeSink = [this](Program& q) {
    KeyCapture c;
    c.label = q.Burst.BurstLabel;
    c.record = q.IRCode;
    for (int i = 1; i <= q.Burst.OnceCount; ++i) c.once.push_back(q.Burst.BurstDurations(i));
    for (int i = 1; i <= q.Burst.RepeatPartCount; ++i)
      c.repeat.push_back(q.Burst.BurstDurations(q.Burst.OnceCount + i));
    keys.push_back(std::move(c));
  };
  GenerateKeys(p, p.F.format.text, ParseNumber(p.F.DC.text), static_cast<int16_t>(ParseNumber(p.F.FFC.text)),
               static_cast<int16_t>(ParseNumber(p.F.LFC.text)));
}

const KeyCapture& LibraryRun::Key(const std::string& label) const {
  static const KeyCapture kMissing;
  for (const KeyCapture& c : keys) {
    if (c.label == label) return c;
  }
  ADD_FAILURE() << "no record was written for the key " << label;
  return kMissing;
}

}  // namespace bw::test::library
