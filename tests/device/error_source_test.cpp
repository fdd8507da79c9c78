// A run-time error that ends a load remembers the innermost file being read and
// its line, so that a front end can name both after the readers have been left.
#include <gtest/gtest.h>

#include "input/device_file.h"
#include "runtime/run_time_error.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

TEST(ErrorSource, NamesTheInnermostFileAndLineAndIsEmptyAfterACleanLoad) {
  struct Case { std::string protocol, device, file; int line, keysLoaded; };
  const std::vector<Case> cases = {
      // the key line that does not fit 32 bits
      {"PROTOCOL = P\r\nFORM = D:8,F:8\r\n",
       "PROTOCOL = P\r\n' comment\r\n[KEYCODES]\r\nONE = 1\r\nBIG = 0x80000000\r\nTWO = 2\r\n", "dev.dvc", 5, 1},
      // inside the protocol the device loads: the protocol file is named, not the device
      {"PROTOCOL = P\r\nFORM = D:8,F:8\r\nFREQUENCY = 3000000000\r\n",
       "MODEL = x\r\nPROTOCOL = P\r\n[KEYCODES]\r\nK = 1\r\n", "p.irp", 3, 0},
  };
  for (const Case& c : cases) {
    test::TestProgram t;
    test::TempDir dir;
    t.p.DeviceLibraryPath = (dir.path() / "Device Library").string();
    dir.Write("Device Library/p.irp", c.protocol);
    dir.Write("Device Library/dev.dvc", c.device);
    EXPECT_EQ(test::ErrorNumber([&] { LoadDeviceFile(t.p, "DEV"); }), err::kOverflow) << c.file;
    EXPECT_EQ(t.p.ErrorSource.file, (dir.path() / "Device Library" / c.file).string());
    EXPECT_EQ(t.p.ErrorSource.line, c.line) << c.file;
    EXPECT_TRUE(t.p.Source.file.empty()) << "the reader's own source is gone with it";
    EXPECT_EQ(t.p.Keys.UpperBound(), c.keysLoaded) << "the load stopped at the bad line";
  }
  // A load that only shows a message leaves no error source.
  test::TestProgram t;
  test::TempDir dir;
  t.p.DeviceLibraryPath = (dir.path() / "Device Library").string();
  dir.Write("Device Library/dev.dvc", "PROTOCOL = NOTHERE\r\n[KEYCODES]\r\nK = 1\r\n");
  LoadDeviceFile(t.p, "DEV");
  EXPECT_EQ(t.host.messages, std::vector<std::string>{"Format NOTHERE is not in Device Library"});
  EXPECT_TRUE(t.p.ErrorSource.file.empty() && t.p.ErrorSource.line == 0);
}

}  // namespace
}  // namespace bw
