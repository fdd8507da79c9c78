// The bundled Device Library as the program meets it: found by the start-up
// search from the build folder, with every protocol and device listed. Each
// device's quiet load and its timing are checked in protocol_timing_test.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "library/library_support.h"
#include "shell/startup.h"

namespace bw::test::library {
namespace {

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

}  // namespace
}  // namespace bw::test::library
