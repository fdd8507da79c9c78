// The bundled Device Library as the program meets it: found by the start-up
// search from the build folder, every protocol and device file read without a
// single message, and the device-file features the sample devices stand for.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "library/library_run.h"
#include "protocol/protocol.h"
#include "shell/commands.h"
#include "shell/startup.h"

namespace bw::test::library {
namespace {

const std::vector<std::string> kProtocols = {"DENON",   "JVC",    "NEC",    "NEC16",  "PANASONIC",
                                             "RC5",     "RC6",    "SAMSUNG", "SHARP", "SONY12",
                                             "SONY15",  "SONY20", "XANTECH"};

const std::vector<std::string> kDevices = {
    "DENON AV RECEIVER", "EPSON PROJECTOR", "JVC VCR",        "PANASONIC DVD PLAYER", "PHILIPS TV 17PT1563",
    "PHILIPS TV 26PFL5604H", "RGB LED CONTROLLER", "SAMSUNG TV", "SHARP TV",          "SONY DVD PLAYER",
    "SONY TV",           "TOSHIBA TV",      "XANTECH RC68",   "XANTECH RC68 A3",      "YAMAHA RECEIVER"};

TEST(BundledLibrary, StartUpFindsItAboveTheBuildFolderAndListsEveryFile) {
  TestProgram t;
  t.p.ProgramFolder = BW_BIN_DIR;
  ASSERT_TRUE(InitializeProgram(t.p)) << "messages: " << t.host.LastMessage();
  EXPECT_TRUE(std::filesystem::equivalent(t.p.DeviceLibraryPath, BundledLibraryPath()));
  EXPECT_TRUE(t.host.messages.empty()) << t.host.LastMessage();

  std::vector<std::string> protocols = t.p.F.format.items;
  std::sort(protocols.begin(), protocols.end());
  EXPECT_EQ(protocols, kProtocols);
  std::vector<std::string> devices = t.p.F.Lex.items;
  std::sort(devices.begin(), devices.end());
  EXPECT_EQ(devices, kDevices);
}

/// Files in the bundled library with this extension.
int CountFiles(const std::string& extension) {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(BundledLibraryPath())) {
    if (entry.path().extension() == extension) ++count;
  }
  return count;
}

TEST(BundledLibrary, EveryProtocolLoadsWithoutAMessageAndUsesItsBitCells) {
  LibraryRun run;
  // Every protocol file names itself, so each one is in the list once.
  ASSERT_EQ(static_cast<int>(run.p.F.format.items.size()), CountFiles(".irp"));
  for (const std::string& name : run.p.F.format.items) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(LoadProtocol(run.p, name));
    const ProtocolRecord& r = run.p.Protocol;
    EXPECT_EQ(r.ProtocolName, name);
    EXPECT_FALSE(r.FormOnce.empty());
    EXPECT_FALSE(r.FormRepeat.empty()) << "every sample protocol says what a held key repeats";
    EXPECT_GT(r.Frequency, 0);
    // ONE and ZERO numbers at or above the time base would be dropped to 0:
    // every sample protocol must get real bit cells out of them.
    EXPECT_NE(r.OneMark, 0);
    EXPECT_NE(r.OneSpace, 0);
    EXPECT_NE(r.ZeroMark, 0);
    EXPECT_NE(r.ZeroSpace, 0);
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
    EXPECT_TRUE(run.t.host.messages.empty()) << run.t.host.LastMessage();
    EXPECT_GE(run.p.Keys.UpperBound(), 7);
    EXPECT_FALSE(run.p.F.MFG.text.empty());
    EXPECT_FALSE(run.p.F.Model.text.empty());
    EXPECT_FALSE(run.p.F.Device.text.empty());
    EXPECT_FALSE(run.p.F.format.text.empty());
    EXPECT_EQ(run.p.F.Label5.caption, "Device Selected");
  }
}

/// The key of the loaded device with this label.
const KeyEntry* FindKey(const Program& p, const std::string& label) {
  for (int k = 1; k <= p.Keys.UpperBound(); ++k) {
    if (p.Keys[k].Label == label) return &p.Keys[k];
  }
  ADD_FAILURE() << "no key " << label;
  return nullptr;
}

TEST(BundledLibrary, SampleDevicesCoverTheDeviceFileFeatures) {
  LibraryRun run;
  Program& p = run.p;

  // NUMBERBASE = HEX: the Epson codes are hexadecimal, device code 5583 hex.
  ASSERT_TRUE(run.Load("EPSON PROJECTOR"));
  const KeyEntry* key = FindKey(p, "MENU");
  ASSERT_NE(key, nullptr);
  EXPECT_EQ(key->FirstCodes.at(0).FunctionCode, 0x9A);
  EXPECT_EQ(key->FirstCodes.at(0).DeviceCode, 0x5583);
  // A multi-code key: power pressed twice.
  key = FindKey(p, "POWER OFF");
  ASSERT_NE(key, nullptr);
  ASSERT_EQ(key->FirstCodes.size(), 2u);
  EXPECT_EQ(key->FirstCodes[1].FunctionCode, 0x90);
  EXPECT_FALSE(key->HasSecondCodes);

  // A second code list: skip when pressed, search while held.
  ASSERT_TRUE(run.Load("PANASONIC DVD PLAYER"));
  key = FindKey(p, "SKIP FWD");
  ASSERT_NE(key, nullptr);
  EXPECT_TRUE(key->HasSecondCodes);
  EXPECT_EQ(key->FirstCodes.at(0).FunctionCode, 74);
  EXPECT_EQ(key->SecondCodes.at(0).FunctionCode, 5);
  EXPECT_EQ(key->SecondCodes.at(0).DeviceCode, 176);

  // A key option: the RC5 toggle bit.
  ASSERT_TRUE(run.Load("PHILIPS TV 17PT1563"));
  key = FindKey(p, "POWER T1");
  ASSERT_NE(key, nullptr);
  EXPECT_EQ(key->Options, std::vector<std::string>{"T=1"});
  EXPECT_EQ(key->FirstCodes.at(0).FunctionCode, 12);

  // Keys naming another protocol, for both lists.
  ASSERT_TRUE(run.Load("SONY TV"));
  key = FindKey(p, "MEMORY STICK");
  ASSERT_NE(key, nullptr);
  EXPECT_EQ(key->FirstCodes.at(0).Name, "SONY15");
  EXPECT_EQ(key->FirstCodes.at(0).DeviceCode, 151);
  EXPECT_EQ(key->SecondCodes.at(0).Name, "SONY15");
  EXPECT_EQ(p.Protocol.ProtocolName, "SONY12") << "the device's own protocol stays loaded";

  // Switch settings with one open switch: the first sweeps, the second stays 3.
  ASSERT_TRUE(run.Load("XANTECH RC68"));
  EXPECT_TRUE(p.SwitchWildcard);
  EXPECT_EQ(p.VaryingSwitch, 1);
  EXPECT_EQ(p.Switch2Setting, 3);
  EXPECT_EQ(p.F.format.text, "XANTECH");
  // Both switches set: A gives 9 in the low bits, 3 gives 96 in the high bits.
  ASSERT_TRUE(run.Load("XANTECH RC68 A3"));
  EXPECT_FALSE(p.SwitchWildcard);
  EXPECT_EQ(FindKey(p, "ALL OFF")->FirstCodes.at(0).DeviceCode, 105);

  // The raw device: RAW heads the protocol list and the keys keep their text.
  ASSERT_TRUE(run.Load("RGB LED CONTROLLER"));
  EXPECT_EQ(p.F.format.text, "RAW");
  EXPECT_EQ(p.F.format.items.front(), "RAW");
  key = FindKey(p, "ON");
  ASSERT_NE(key, nullptr);
  EXPECT_EQ(key->RawText.substr(0, 21), "9000 -4500 560 -560 5");
  EXPECT_TRUE(key->FirstCodes.empty());
  EXPECT_TRUE(run.t.host.messages.empty()) << run.t.host.LastMessage();
}

}  // namespace
}  // namespace bw::test::library
