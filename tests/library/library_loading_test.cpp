// The bundled Device Library as the program meets it: found by the start-up
// search from the build folder, every protocol and device file read without a
// message, and the device-file features the waveform tests cannot see.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "library/library_support.h"
#include "protocol/protocol.h"
#include "shell/startup.h"

namespace bw::test::library {
namespace {

/// Files in the bundled library with this extension.
int CountFiles(const std::string& extension) {
  std::filesystem::directory_iterator files(BundledLibraryPath());
  auto matches = [&](const auto& file) { return file.path().extension() == extension; };
  return static_cast<int>(std::count_if(begin(files), end(files), matches));
}

std::vector<std::string> Sorted(std::vector<std::string> items) {
  std::sort(items.begin(), items.end());
  return items;
}

TEST(BundledLibrary, StartUpFindsItAboveTheBuildFolderAndListsEveryFile) {
  TestProgram t;
  t.p.ProgramFolder = BW_BIN_DIR;
  ASSERT_TRUE(InitializeProgram(t.p)) << "messages: " << t.host.LastMessage();
  EXPECT_TRUE(std::filesystem::equivalent(t.p.DeviceLibraryPath, BundledLibraryPath()));
  EXPECT_TRUE(t.host.messages.empty()) << t.host.LastMessage();
  EXPECT_EQ(Sorted(t.p.F.format.items),
            (std::vector<std::string>{"DENON", "JVC", "NEC", "NEC16", "PANASONIC", "RC5", "RC6", "SAMSUNG",
                                      "SHARP", "SONY12", "SONY15", "SONY20", "XANTECH"}));
  EXPECT_EQ(Sorted(t.p.F.Lex.items),
            (std::vector<std::string>{"DENON AV RECEIVER", "EPSON PROJECTOR", "JVC VCR", "PANASONIC DVD PLAYER",
                                      "PHILIPS TV 17PT1563", "PHILIPS TV 26PFL5604H", "RGB LED CONTROLLER",
                                      "SAMSUNG TV", "SHARP TV", "SONY DVD PLAYER", "SONY TV", "TOSHIBA TV",
                                      "XANTECH RC68", "XANTECH RC68 A3", "YAMAHA RECEIVER"}));
}

TEST(BundledLibrary, EveryProtocolLoadsWithoutAMessageAndGetsRealBitCells) {
  LibraryRun run;
  ASSERT_EQ(static_cast<int>(run.p.F.format.items.size()), CountFiles(".irp"));
  for (const std::string& name : run.p.F.format.items) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(LoadProtocol(run.p, name));
    const ProtocolRecord& r = run.p.Protocol;
    EXPECT_EQ(r.ProtocolName, name);
    EXPECT_FALSE(r.FormOnce.empty() || r.FormRepeat.empty());
    EXPECT_GT(r.Frequency, 0);
    // ONE and ZERO numbers at or above the time base would be dropped to 0.
    EXPECT_TRUE(r.OneMark && r.OneSpace && r.ZeroMark && r.ZeroSpace);
    EXPECT_TRUE(run.t.host.messages.empty()) << run.t.host.LastMessage();
  }
}

TEST(BundledLibrary, EveryDeviceLoadsThroughLexClickWithoutAMessage) {
  LibraryRun run;
  const std::vector<std::string> listed = run.p.F.Lex.items;
  ASSERT_EQ(static_cast<int>(listed.size()), CountFiles(".dvc"));
  for (const std::string& device : listed) {
    SCOPED_TRACE(device);
    ASSERT_TRUE(run.Load(device));
    const MainForm& f = run.p.F;
    EXPECT_TRUE(run.t.host.messages.empty()) << run.t.host.LastMessage();
    EXPECT_GE(run.p.Keys.UpperBound(), 7);
    EXPECT_FALSE(f.MFG.text.empty() || f.Model.text.empty() || f.Device.text.empty() || f.format.text.empty());
    EXPECT_EQ(f.Label5.caption, "Device Selected");
  }
}

TEST(BundledLibrary, DeviceSettingsBeyondTheKeyCodes) {
  LibraryRun run;
  Program& p = run.p;
  // Keys naming another protocol leave the device's own protocol loaded.
  ASSERT_TRUE(run.Load("SONY TV"));
  EXPECT_EQ(p.Protocol.ProtocolName, "SONY12");
  // Switch settings with one open switch: the first sweeps, the second stays 3.
  ASSERT_TRUE(run.Load("XANTECH RC68"));
  EXPECT_TRUE(p.SwitchWildcard);
  EXPECT_EQ(p.VaryingSwitch, 1);
  EXPECT_EQ(p.Switch2Setting, 3);
  EXPECT_EQ(p.F.format.text, "XANTECH");
  ASSERT_TRUE(run.Load("XANTECH RC68 A3"));
  EXPECT_FALSE(p.SwitchWildcard);
  // The raw device: RAW heads the protocol list and is selected.
  ASSERT_TRUE(run.Load("RGB LED CONTROLLER"));
  EXPECT_EQ(p.F.format.text, "RAW");
  EXPECT_EQ(p.F.format.items.front(), "RAW");
  EXPECT_TRUE(run.t.host.messages.empty()) << run.t.host.LastMessage();
}

}  // namespace
}  // namespace bw::test::library
