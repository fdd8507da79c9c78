// A whole ADI run over a device from a Device Library: Start Processing with
// "All Keys", Save into a new file, and the file read back record for record
// with the bytes of one key worked out by hand.
#include <gtest/gtest.h>

#include "adi/adi.h"
#include "adi/lir_test_support.h"
#include "input/device_file.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

// Time base 560: ONE is 560 / -1680, ZERO 560 / -560; the lead-in is 9000 / -4500
// (at or above the time base, so kept in microseconds); the frame is padded to 108 ms.
const char* const kProtocol =
    "PROTOCOL = TestNEC\r\n"
    "FREQUENCY = 38000\r\n"
    "TIMEBASE = 560\r\n"
    "ONE = 1,-3\r\n"
    "ZERO = 1,-1\r\n"
    "DEFINE LEAD = [9000 -4500]\r\n"
    "DEFINE STOP = [1]\r\n"
    "DEFINE GAP = ^108000\r\n"
    "FORM = LEAD,D:8,F:8,STOP,GAP\r\n";

const char* const kDevice =
    "MANUFACTURER = Acme\r\n"
    "DEVICE = TV\r\n"
    "MODEL = TV 100\r\n"
    "PROTOCOL = TestNEC\r\n"
    "DEVICECODE = 4\r\n"
    "[KEYCODES]\r\n"
    "Power = 12\r\n"
    "Vol Up = 16\r\n"
    "Mute = 13\r\n";

struct DeviceRun : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  test::TempDir dir;

  void SetUp() override {
    dir.Write("Device Library/testnec.irp", kProtocol);
    dir.Write("Device Library/Acme TV.dvc", kDevice);
    p.ProgramFolder = dir.path();
    p.DeviceLibraryPath = (dir.path() / "Device Library").string();
    ShowADIOptions(p);
    LoadDeviceFile(p, "Acme TV");
    p.F.Lex.AddItem("ACME TV");
    p.F.Lex.listIndex = 0;
  }
};

/// Pulse bytes of one 8-bit field sent LSB first: a set bit 144 39, a clear bit 144 11.
std::vector<int> FieldBytes(int value) {
  std::vector<int> out;
  for (int bit = 0; bit < 8; ++bit) {
    out.push_back(144);                       // 560: (560 + 39) / 40 = 14, + 2
    out.push_back(value >> bit & 1 ? 39 : 11);  // -1680 -> -41 -> 39; -560 -> -13 -> 11
  }
  return out;
}

TEST_F(DeviceRun, AllKeysWritesEveryKeyAndTheFileReadsBackRecordForRecord) {
  ASSERT_EQ(p.Keys.UpperBound(), 3) << "the device must load";
  cmdAdiNew_Click(p);
  t.host.Click([this] { cmdadiall_Click(p); });
  cmdADIxqt_Click(p);
  ASSERT_EQ(p.Lir.UpperBound(), 3);
  EXPECT_EQ(t.host.doEventsCalls, 1) << "only the first key waits";
  EXPECT_EQ(p.F.adiFsize.caption, "3");

  // Buttons after the run: nothing waits any more, a new run and the editor are available.
  EXPECT_TRUE(p.F.cmdADIxqt.enabled);
  EXPECT_FALSE(p.F.cmdadiall.enabled);
  EXPECT_FALSE(p.F.cmdADInxtKey.enabled);
  EXPECT_TRUE(p.F.cmdADIsave.enabled);

  const LirRecord& power = p.Lir.records[1];
  EXPECT_EQ(power.CarrierByte, 120);
  EXPECT_EQ(test::NameOf(power), "ACME/TV100:POWER" + std::string(16, ' '));
  // Lead-in 9000 -> 254 229, -4500 -> 109; device 4; function 12; stop 144;
  // gap 35340 - 108000 = -72660 -> -1815 units -> 1813 = 14 x 126 + 49.
  std::vector<int> expected = {254, 229, 109};
  for (int b : FieldBytes(4)) expected.push_back(b);
  for (int b : FieldBytes(12)) expected.push_back(b);
  expected.push_back(144);
  for (int i = 0; i < 14; ++i) expected.push_back(126);
  expected.push_back(49);
  EXPECT_EQ(test::PulseStream(power), expected);
  EXPECT_EQ(test::NameOf(p.Lir.records[2]).substr(0, 16), "ACME/TV100:VOLUP");
  EXPECT_EQ(test::NameOf(p.Lir.records[3]).substr(0, 15), "ACME/TV100:MUTE");

  auto file = dir.path() / "ADI Library" / "acme.lir";
  t.host.saveAnswers.push_back(file.string());
  cmdADIsave_Click(p);
  ASSERT_EQ(test::ReadFileBytes(file).size(), 3u * 256u);

  test::TestProgram reader;
  ReadLirFile(reader.p, file);
  ASSERT_EQ(reader.p.Lir.UpperBound(), 3);
  for (int i = 1; i <= 3; ++i) {
    const LirRecord& a = p.Lir.records[static_cast<std::size_t>(i)];
    const LirRecord& b = reader.p.Lir.records[static_cast<std::size_t>(i)];
    EXPECT_EQ(a.CarrierByte, b.CarrierByte) << "record " << i;
    EXPECT_EQ(a.PulseBytes, b.PulseBytes) << "record " << i;
    EXPECT_EQ(a.Reserved, b.Reserved) << "record " << i;
    EXPECT_EQ(a.Name, b.Name) << "record " << i;
  }
}

TEST_F(DeviceRun, NextKeySkipsAndANewRunAsksAgainAfterAllKeys) {
  cmdAdiNew_Click(p);
  t.host.Click([this] { cmdADInxtKey_Click(p); });
  t.host.Click([this] { CmdADIadd_Click(p); });
  t.host.Click([this] { cmdadiall_Click(p); });
  cmdADIxqt_Click(p);
  ASSERT_EQ(p.Lir.UpperBound(), 2);
  EXPECT_EQ(test::NameOf(p.Lir.records[1]).substr(0, 16), "ACME/TV100:VOLUP");
  EXPECT_EQ(test::NameOf(p.Lir.records[2]).substr(0, 15), "ACME/TV100:MUTE");

  // "All Keys" held for that run only: the next run waits at its first key again.
  t.host.Click([this] { cmdADInxtKey_Click(p); });
  t.host.Click([this] { cmdADInxtKey_Click(p); });
  t.host.Click([this] { cmdADInxtKey_Click(p); });
  int before = t.host.doEventsCalls;
  cmdADIxqt_Click(p);
  EXPECT_EQ(t.host.doEventsCalls - before, 3);
  EXPECT_EQ(p.Lir.UpperBound(), 2);
}

}  // namespace
}  // namespace bw
