// A run-time error that ends a load remembers where it arose: the innermost
// file being read and its line, so that a front end can name both after the
// readers have been left.
#include <gtest/gtest.h>

#include "input/device_file.h"
#include "runtime/run_time_error.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

struct ErrorSource : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  test::TempDir dir;

  void SetUp() override { p.DeviceLibraryPath = (dir.path() / "Device Library").string(); }
  std::filesystem::path Library(const std::string& file, const std::string& text) {
    return dir.Write("Device Library/" + file, text);
  }
  /// The error number LoadDeviceFile ended with (0 when it did not throw).
  int LoadFailsWith(const std::string& name) {
    try {
      LoadDeviceFile(p, name);
    } catch (const RunTimeError& e) {
      return e.number();
    }
    return 0;
  }
};

TEST_F(ErrorSource, OverflowInAKeyLineNamesTheDeviceFileAndThatLine) {
  Library("p.irp", "PROTOCOL = P\r\nFORM = D:8,F:8\r\n");
  auto device = Library("dev.dvc", "PROTOCOL = P\r\n' the next code does not fit 32 bits\r\n[KEYCODES]\r\n"
                                   "ONE = 1\r\nBIG = 0x80000000\r\nTWO = 2\r\n");
  EXPECT_EQ(LoadFailsWith("DEV"), err::kOverflow);
  EXPECT_EQ(p.ErrorSource.file, device.string());
  EXPECT_EQ(p.ErrorSource.line, 5);
  EXPECT_TRUE(p.Source.file.empty()) << "the reader's own source is gone with it";
  EXPECT_EQ(p.Keys.UpperBound(), 1) << "the load stopped at the bad line";
}

TEST_F(ErrorSource, OverflowInsideTheProtocolNamesTheProtocolFileNotTheDevice) {
  auto protocol = Library("p.irp", "PROTOCOL = P\r\nFORM = D:8,F:8\r\nFREQUENCY = 3000000000\r\n");
  Library("dev.dvc", "MODEL = x\r\nPROTOCOL = P\r\n[KEYCODES]\r\nK = 1\r\n");
  EXPECT_EQ(LoadFailsWith("DEV"), err::kOverflow);
  EXPECT_EQ(p.ErrorSource.file, protocol.string());
  EXPECT_EQ(p.ErrorSource.line, 3);
}

TEST_F(ErrorSource, ALoadWithoutErrorLeavesItEmpty) {
  Library("p.irp", "PROTOCOL = P\r\nFORM = D:8,F:8\r\nFREQUENCY = 38000\r\n");
  Library("dev.dvc", "PROTOCOL = NOTHERE\r\n[KEYCODES]\r\nK = 1\r\n");
  EXPECT_EQ(LoadFailsWith("DEV"), 0);
  EXPECT_EQ(t.host.messages, std::vector<std::string>{"Format NOTHERE is not in Device Library"});
  EXPECT_TRUE(p.ErrorSource.file.empty());
  EXPECT_EQ(p.ErrorSource.line, 0);
}

}  // namespace
}  // namespace bw
