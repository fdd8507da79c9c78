#include "lirc/lirc_support.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "generate/generate.h"
#include "shell/commands.h"
#include "shell/startup.h"
#include "slinke/slinke.h"

namespace bw::test::lirc {

const std::vector<bw::lirc::ImportResult>& ImportedLibrary::Import(const std::string& text, const std::string& name,
                                                                   const bw::lirc::ImportOptions& options) {
  std::filesystem::create_directories(Library());
  const std::filesystem::path file = dir.Write("acme/" + name, text);
  results = bw::lirc::ImportLircFiles({file.string()}, Library(), options);
  return results;
}

std::map<std::string, Durations> ImportedLibrary::Keys(const std::string& device, bool slinke,
                                                      std::vector<std::string>* messages,
                                                      std::map<std::string, Durations>* held) const {
  TestProgram t;
  Program& p = t.p;
  p.DeviceLibraryPath = Library().string();
  ListProtocolNames(p);
  ListDeviceFiles(p);
  std::map<std::string, Durations> keys;
  const auto& items = p.F.Lex.items;
  auto found = std::find(items.begin(), items.end(), device);
  EXPECT_NE(found, items.end()) << device << " is not in the device list";
  if (found == items.end()) return keys;
  p.F.Lex.listIndex = static_cast<int>(found - items.begin());
  p.FormatPronto = !slinke;
  p.FormatSlinkTxOnly = slinke;
  Lex_Click(p);
  if (slinke) MergeSlinkForms(p.Protocol);
  for (int k = 1; k <= p.Keys.UpperBound(); ++k) {
    ResetBurstSequence(p);
    BuildKeySequence(p, k);
    const BurstSequence& b = p.Burst;
    std::vector<int32_t> d;
    for (int i = 1; i <= (slinke ? b.TotalCount : b.OnceCount); ++i) d.push_back(b.BurstDurations(i));
    keys[b.BurstLabel] = Joined(d);
    if (held) {
      std::vector<int32_t> r;
      for (int i = 1; i <= b.RepeatPartCount; ++i) r.push_back(b.BurstDurations(b.OnceCount + i));
      (*held)[b.BurstLabel] = Joined(r);
    }
  }
  if (messages) *messages = t.host.messages;
  else EXPECT_TRUE(t.host.messages.empty()) << t.host.messages.front();
  return keys;
}

}  // namespace bw::test::lirc
