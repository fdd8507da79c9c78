// The database run: its refusals in their order, an ordinary run through the
// real generator into a template copy (Process disabled while it works, the
// sequence numbers restarting per run), the Xantech sweep over sixteen models
// with the device codes of the switch table, and a database error mid-run.
#include <string>

#include "dbrun/dbrun_support.h"
#include "input/device_file.h"
#include "pronto/pronto_code.h"
#include "shell/command.h"
#include "shell/startup.h"

namespace bw::dbrun {
namespace {

// Time base 560; lead-in 9000 / -4500, eight device bits, eight function bits, a stop mark.
const char* const kNec =
    "PROTOCOL = TestNEC\r\n"
    "FREQUENCY = 38000\r\n"
    "TIMEBASE = 560\r\n"
    "ONE = 1,-3\r\n"
    "ZERO = 1,-1\r\n"
    "DEFINE LEAD = [9000 -4500]\r\n"
    "DEFINE STOP = [1]\r\n"
    "FORM = LEAD,D:8,F:8,STOP\r\n";

const char* const kXantech =
    "PROTOCOL = Xantech\r\n"
    "FREQUENCY = 40000\r\n"
    "TIMEBASE = 500\r\n"
    "ONE = 1,-3\r\n"
    "ZERO = 1,-1\r\n"
    "DEFINE LEAD = [4000 -2000]\r\n"
    "DEFINE STOP = [1]\r\n"
    "FORM = LEAD,D:8,F:8,STOP\r\n";

const char* const kAcmeTv =
    "MANUFACTURER = Acme\r\n"
    "DEVICE = TV\r\n"
    "MODEL = TV 100\r\n"
    "PROTOCOL = TestNEC\r\n"
    "DEVICECODE = 4\r\n"
    "[KEYCODES]\r\n"
    "Power = 12\r\n"
    "Vol Up = 16\r\n"
    "Mute = 13\r\n";

std::string XantechDevice(const std::string& protocol, const std::string& switches) {
  return "MANUFACTURER = Xantech\r\n"
         "DEVICE = Controller\r\n"
         "MODEL = RC68\r\n"
         "PROTOCOL = " + protocol + "\r\n"
         "DEVICECODE = " + switches + "\r\n"
         "[KEYCODES]\r\n"
         "Zone 1 = 1\r\n"
         "Zone 2 = 2\r\n";
}

// The loader shows manufacturer, type and model upper-cased; the entries'
// descriptions and the stored names carry them so.

// The switch table of the device files: the first digit gives the low four
// bits, the second the high four, each through its own bit order.
const int kFirstSwitch[16] = {0, 2, 8, 10, 4, 6, 12, 14, 1, 3, 9, 11, 5, 7, 13, 15};
const int kSecondSwitch[16] = {0, 64, 32, 96, 128, 192, 160, 224, 16, 80, 48, 112, 144, 208, 176, 240};
const char kHex[] = "0123456789ABCDEF";

struct GenerationRun : DatabaseTest {
  void SetUp() override {
    DatabaseTest::SetUp();
    dir.Write("program/Device Library/testnec.irp", kNec);
    dir.Write("program/Device Library/xantech.irp", kXantech);
    dir.Write("program/Device Library/Acme TV.dvc", kAcmeTv);
    dir.Write("program/Device Library/RC68 sweep 1.dvc", XantechDevice("Xantech", "*/3"));
    dir.Write("program/Device Library/RC68 sweep 2.dvc", XantechDevice("Xantech", "5/*"));
    dir.Write("program/Device Library/RC68 nec.dvc", XantechDevice("TestNEC", "*/3"));
    p.DeviceLibraryPath = (p.ProgramFolder / "Device Library").string();
    ListProtocolNames(p);
    ShowProntoOutput(p);
  }
  void Load(const std::string& device) {
    LoadDeviceFile(p, device);
    ASSERT_GT(p.Keys.UpperBound(), 0) << device << " must load";
    ASSERT_FALSE(p.F.format.text.empty()) << device << " must select its protocol";
  }
  void OpenDatabase() {
    Open(Fresh());
    ASSERT_TRUE(p.DatabaseOpen);
  }
  Rows Codes() { return Read("IR Codes", {"DeviceID", "ButtonID", "FunctionID", "Label", "FullText"}); }
};

// ---- refusals ----

TEST_F(GenerationRun, WithoutADatabaseNothingRunsEvenWithEveryFieldFilled) {
  Load("Acme TV");
  xqtcmd_Click(p);
  EXPECT_EQ(t.host.messages, std::vector<std::string>{"No Data base has been selected, Please open a data Base"});
  EXPECT_TRUE(p.F.xqtcmd.enabled);
  EXPECT_EQ(t.host.doEventsCalls, 0);
}

TEST_F(GenerationRun, OnlyTheFirstMissingFieldIsReportedInTheirOrder) {
  Load("Acme TV");
  OpenDatabase();
  p.ButtonSequence = 5;
  const std::string mfg = p.F.MFG.text, model = p.F.Model.text, type = p.F.Device.text;

  p.F.MFG.text.clear();
  p.F.Model.text.clear();
  xqtcmd_Click(p);
  p.F.MFG.text = mfg;
  p.F.Device.text.clear();
  xqtcmd_Click(p);  // Model and Device empty: the model is named
  p.F.Model.text = model;
  xqtcmd_Click(p);
  p.F.Device.text = type;
  p.F.format.text.clear();
  xqtcmd_Click(p);
  EXPECT_EQ(t.host.messages,
            (std::vector<std::string>{"Please Enter the name of the Manufacturer",
                                      "Please Enter the name of the Device Model",
                                      "Please Enter the name of the Device Type", "Please Select the IR Protocol"}));
  EXPECT_TRUE(p.F.xqtcmd.enabled);
  EXPECT_EQ(p.ButtonSequence, 5) << "a refused run leaves the counter";
  EXPECT_TRUE(Read("Devices", {"Model"}).empty());
}

// ---- an ordinary run ----

TEST_F(GenerationRun, WritesEveryKeyUnderOneDeviceWithProcessDisabledMeanwhile) {
  Load("Acme TV");
  OpenDatabase();
  bool enabledDuringRun = true;
  t.host.Click([&] { enabledDuringRun = p.F.xqtcmd.enabled; });
  xqtcmd_Click(p);
  EXPECT_TRUE(t.host.messages.empty()) << t.host.LastMessage();
  EXPECT_FALSE(enabledDuringRun);
  EXPECT_TRUE(p.F.xqtcmd.enabled);
  EXPECT_EQ(Read("Manufacturers", {"name", "id"}), (Rows{{"ACME", "1"}}));
  EXPECT_EQ(Read("Device Types", {"name", "DeviceTypeid"}), (Rows{{"TV", "1"}}));
  EXPECT_EQ(Read("Devices", {"DeviceID", "Model", "ManufacturerID", "DeviceTypeid"}),
            (Rows{{"1000", "TV 100", "1", "1"}}));
  // ButtonID is the key's function code, FunctionID the running sequence number.
  EXPECT_EQ(Codes(), (Rows{{"1000", "12", "1", "Power", "ACME-TV 100 (4,12)"},
                           {"1000", "16", "2", "Vol Up", "ACME-TV 100 (4,16)"},
                           {"1000", "13", "3", "Mute", "ACME-TV 100 (4,13)"}}));
  // The lists are filled again after the run.
  EXPECT_EQ(p.F.DvcModelList.items, std::vector<std::string>{"TV 100"});
  EXPECT_EQ(p.F.DvcMfglist.items, std::vector<std::string>{"ACME"});
}

TEST_F(GenerationRun, ASecondRunStartsTheSequenceAgainAtOne) {
  Load("Acme TV");
  OpenDatabase();
  xqtcmd_Click(p);
  xqtcmd_Click(p);
  // The stored FunctionIDs (1..3) never equal the device code 4 the update path
  // compares them with, so the second run adds rows, numbered from 1 again.
  Rows codes = Codes();
  ASSERT_EQ(codes.size(), 6u);
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(codes[std::size_t(i)][2], std::to_string(i % 3 + 1)) << "row " << i;
    EXPECT_EQ(codes[std::size_t(i)][0], "1000") << "row " << i;
  }
  EXPECT_EQ(Read("Devices", {"Model"}).size(), 1u);
}

TEST_F(GenerationRun, ADatabaseErrorEndsTheRunAndLeavesProcessDisabled) {
  Load("Acme TV");
  OpenDatabase();
  p.Database->Close();  // the engine refuses every further access
  bool ok = RunCommand(p, [&] { xqtcmd_Click(p); });
  EXPECT_FALSE(ok);
  ASSERT_EQ(t.host.messages.size(), 1u);
  EXPECT_EQ(t.host.messages[0].rfind("Run-time error '", 0), 0u) << t.host.messages[0];
  EXPECT_FALSE(p.F.xqtcmd.enabled);
}

// ---- the Xantech sweep ----

TEST_F(GenerationRun, SweepOfTheFirstSwitchMakesSixteenModelsAndKeepsCounting) {
  Load("RC68 sweep 1");
  ASSERT_EQ(p.F.format.text, "XANTECH");
  OpenDatabase();
  std::string modelSeenFirst;
  size_t rowsWhenSeen = 99;
  t.host.Click([&] {
    modelSeenFirst = p.F.Model.text;
    rowsWhenSeen = Read("IR Codes", {"Label"}).size();
  });
  xqtcmd_Click(p);
  EXPECT_TRUE(t.host.messages.empty()) << t.host.LastMessage();
  // The window is shown the new name before the model's keys are written.
  EXPECT_EQ(modelSeenFirst, "RC68-0/3");
  EXPECT_EQ(rowsWhenSeen, 0u);

  Rows devices = Read("Devices", {"DeviceID", "Model"});
  ASSERT_EQ(devices.size(), 16u);
  Rows codes = Codes();
  ASSERT_EQ(codes.size(), 32u);
  for (int v = 0; v < 16; ++v) {
    const std::string model = std::string("RC68-") + kHex[v] + "/3";
    EXPECT_EQ(devices[std::size_t(v)], (std::vector<std::string>{std::to_string(1000 + v), model}));
    const int deviceCode = kFirstSwitch[v] + kSecondSwitch[3];
    for (int key = 1; key <= 2; ++key) {
      const auto& row = codes[std::size_t(2 * v + key - 1)];
      EXPECT_EQ(row[0], std::to_string(1000 + v));
      EXPECT_EQ(row[2], std::to_string(2 * v + key)) << "FunctionID keeps counting over the models";
      EXPECT_EQ(row[4], "XANTECH-" + model + " (" + std::to_string(deviceCode) + "," + std::to_string(key) + ")");
    }
  }
  EXPECT_EQ(p.F.Model.text, "RC68-F/3");
  EXPECT_EQ(p.ButtonSequence, 32);
  EXPECT_TRUE(p.F.xqtcmd.enabled);
  ASSERT_EQ(p.F.DvcModelList.items.size(), 16u);
  EXPECT_EQ(p.F.DvcModelList.items[10], "RC68-A/3");
}

TEST_F(GenerationRun, SweepOfTheSecondSwitchContinuesFromTheCurrentSequenceNumber) {
  Load("RC68 sweep 2");
  OpenDatabase();
  p.ButtonSequence = 7;
  xqtcmd_Click(p);
  Rows devices = Read("Devices", {"Model"});
  ASSERT_EQ(devices.size(), 16u);
  EXPECT_EQ(devices[0][0], "RC68-5/0");
  EXPECT_EQ(devices[11][0], "RC68-5/B");
  Rows codes = Codes();
  ASSERT_EQ(codes.size(), 32u);
  EXPECT_EQ(codes[0][2], "8") << "the sweep does not reset the sequence";
  EXPECT_EQ(codes[31][2], "39");
  // Model B: first switch 5 -> 6, second switch B -> 112.
  EXPECT_EQ(codes[22][4], "XANTECH-RC68-5/B (118,1)");
  EXPECT_EQ(codes[22][4], "XANTECH-RC68-5/B (" + std::to_string(kFirstSwitch[5] + kSecondSwitch[11]) + ",1)");
}

TEST_F(GenerationRun, AnOpenSwitchWithAnotherProtocolIsOneOrdinaryDevice) {
  Load("RC68 nec");
  OpenDatabase();
  xqtcmd_Click(p);
  EXPECT_EQ(Read("Devices", {"Model"}), (Rows{{"RC68"}}));
  Rows codes = Codes();
  ASSERT_EQ(codes.size(), 2u);
  EXPECT_EQ(codes[0][4], "XANTECH-RC68 (0,1)") << "the loader's device code 0 is used as it is";
}

TEST_F(GenerationRun, ASweepSelectorOtherThanOneOrTwoEndsTheSweepAtOnce) {
  Load("RC68 sweep 1");
  OpenDatabase();
  p.F.xqtcmd.enabled = false;
  p.XantechSweep = 3;
  RunXantechSweep(p);
  EXPECT_FALSE(p.F.xqtcmd.enabled);
  EXPECT_EQ(p.F.Model.text, "RC68");
  EXPECT_TRUE(Read("Devices", {"Model"}).empty());
}

}  // namespace
}  // namespace bw::dbrun
