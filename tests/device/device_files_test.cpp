// Device files written to a temporary Device Library and loaded end to end: the
// header into the window's fields, the device code (numbers and switch
// settings), number base and byte order from their line on, the key lines with
// their code lists, names, repeats and options, RAW devices, protocol
// statements in a device header, and the messages with their exact texts.
#include <gtest/gtest.h>

#include <cctype>

#include "input/defines.h"
#include "input/device_file.h"
#include "runtime/run_time_error.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

// TestNEC: repeat 2, time base 560, ONE 560/-1680, ZERO 560/-560; X is a form
// symbol that devices give a value.
const char* const kTestNec =
    "PROTOCOL = TestNEC\r\n"
    "FREQUENCY = 38000\r\n"
    "REPEAT = 2\r\n"
    "TIMEBASE = 560\r\n"
    "ONE = 1,-3\r\n"
    "ZERO = 1,-1\r\n"
    "FORM = D:8,F:8,X:4\r\n";
// Plain: no repeat count of its own.
const char* const kPlain = "PROTOCOL = Plain\r\nFORM = D:8,F:8\r\n";

struct DeviceFiles : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  test::TempDir dir;

  void SetUp() override {
    dir.Write("Device Library/testnec.irp", kTestNec);
    dir.Write("Device Library/plain.irp", kPlain);
    p.DeviceLibraryPath = (dir.path() / "Device Library").string();
  }
  /// Writes "<name>.dvc" and loads it under the upper-cased name the device list shows.
  void Load(const std::string& name, const std::string& text) {
    dir.Write("Device Library/" + name + ".dvc", text);
    LoadDeviceFile(p, Upper(name));
  }
  /// A device on TestNEC with the given header lines and key lines.
  void LoadKeys(const std::string& header, const std::string& keys) {
    Load("dev", "PROTOCOL = TestNEC\r\n" + header + "[KEYCODES]\r\n" + keys);
  }
  const KeyCode& First(int key, int code = 0) { return p.Keys[key].FirstCodes.at(static_cast<std::size_t>(code)); }
  static std::string Upper(std::string s) {
    for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
  }
};

// ---- header ----

TEST_F(DeviceFiles, HeaderFillsTheWindowAndLoadsTheProtocol) {
  Load("Acme tv",
       "; Acme television\r\n"
       "Manufacturer = Acme\r\n"
       "Device = Tv\r\n"
       "Model = tv 100 ' the big one\r\n"
       "Certified = JS 2001; checked;ok\r\n"
       "Protocol = TestNEC\r\n"
       "Device Code = 4\r\n"
       "[ keycodes ]\r\n"
       "Power = 12\r\n");
  EXPECT_TRUE(t.host.messages.empty());
  EXPECT_EQ(p.F.MFG.text, "ACME");
  EXPECT_EQ(p.F.Device.text, "TV");
  EXPECT_EQ(p.F.Model.text, "TV 100");
  EXPECT_EQ(p.F.txtcertify.text, "JS 2001\r\nchecked\r\nok");
  EXPECT_EQ(p.Protocol.ProtocolName, "TESTNEC");
  ASSERT_EQ(p.Keys.UpperBound(), 1);
  EXPECT_EQ(p.Keys[1].Label, "Power");
  EXPECT_EQ(First(1).DeviceCode, 4);
  EXPECT_EQ(First(1).FunctionCode, 12);
}

TEST_F(DeviceFiles, DeviceNameIsMatchedIgnoringCase) {
  dir.Write("Device Library/Sony TV.dvc", "PROTOCOL = Plain\r\n[KEYCODES]\r\nA = 1\r\n");
  LoadDeviceFile(p, "SONY TV");
  EXPECT_EQ(p.Keys.UpperBound(), 1);
}

TEST_F(DeviceFiles, MissingFileEndsSilentlyWithEverythingCleared) {
  p.Keys.entries.push_back(KeyEntry{});
  p.F.MFG.text = "OLD";
  p.F.txtcertify.text = "old";
  LoadDeviceFile(p, "NOWHERE");
  EXPECT_EQ(p.Keys.UpperBound(), 0);
  EXPECT_EQ(p.F.MFG.text, "");
  EXPECT_EQ(p.F.txtcertify.text, "");
  EXPECT_TRUE(t.host.messages.empty());
}

TEST_F(DeviceFiles, UnknownProtocolIsReportedOnceAndKeysAreStillRead) {
  Load("dev", "FORMAT = Nowhere\r\n[KEYCODES]\r\nA = 1\r\nB = 2\r\n");
  ASSERT_EQ(t.host.messages.size(), 1u);
  EXPECT_EQ(t.host.messages[0], "Format Nowhere is not in Device Library");
  EXPECT_EQ(p.Keys.UpperBound(), 2);
}

// ---- device codes ----

TEST_F(DeviceFiles, SwitchSettingsGiveTheWiredDeviceCode) {
  // 3 -> bits 0,1 -> 2 + 8 = 10; 5 -> bits 0,2 -> 64 + 128 = 192.
  LoadKeys("DEVICECODE = 3/5\r\n", "A = 1\r\n");
  EXPECT_EQ(First(1).DeviceCode, 202);
  EXPECT_FALSE(p.SwitchWildcard);
  // 5 -> bits 0,2 -> 2 + 4 = 6; 3 -> bits 0,1 -> 64 + 32 = 96.
  LoadKeys("DEVICECODE = 5/3\r\n", "A = 1\r\n");
  EXPECT_EQ(First(1).DeviceCode, 102);
}

TEST_F(DeviceFiles, EverySwitchPositionMapsThroughItsOwnTable) {
  const int first[16] = {0, 2, 8, 10, 4, 6, 12, 14, 1, 3, 9, 11, 5, 7, 13, 15};
  const int second[16] = {0, 64, 32, 96, 128, 192, 160, 224, 16, 80, 48, 112, 144, 208, 176, 240};
  const char* digits[16] = {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "A", "b", "C", "d", "E", "f"};
  for (int i = 0; i < 16; ++i) {
    EXPECT_EQ(DecodeSwitchSettings(p, digits[i], "0"), first[i]) << digits[i];
    EXPECT_EQ(DecodeSwitchSettings(p, "0", digits[i]), second[i]) << digits[i];
  }
  EXPECT_EQ(DecodeSwitchSettings(p, "G", "1"), 64) << "a non-digit adds nothing";
}

TEST_F(DeviceFiles, OneVaryingSwitchLeavesCodeZeroAndSetsUpTheSweep) {
  LoadKeys("DEVICECODE = */5\r\n", "A = 1\r\n");
  EXPECT_EQ(First(1).DeviceCode, 0);
  EXPECT_TRUE(p.SwitchWildcard);
  EXPECT_EQ(p.VaryingSwitch, 1);
  EXPECT_EQ(p.Switch1Setting, 0);
  EXPECT_EQ(p.Switch2Setting, 5);
  EXPECT_EQ(p.XantechSweep, 1);
  EXPECT_EQ(p.XantechCode1, 0);
  EXPECT_EQ(p.XantechCode2, 5);

  LoadKeys("DEVICECODE = 12/*\r\n", "A = 1\r\n");
  EXPECT_EQ(p.VaryingSwitch, 2);
  EXPECT_EQ(p.Switch1Setting, 12);
  EXPECT_EQ(p.Switch2Setting, 0);
  EXPECT_EQ(p.XantechSweep, 2);
  EXPECT_EQ(p.XantechCode1, 12);

  LoadKeys("DEVICECODE = 1/2\r\n", "A = 1\r\n");
  EXPECT_FALSE(p.SwitchWildcard);
  EXPECT_EQ(p.XantechSweep, 0) << "a new device does not inherit the sweep";
}

TEST_F(DeviceFiles, LetterBesideAVaryingSwitchIsATypeMismatch) {
  try {
    LoadKeys("DEVICECODE = */A\r\n", "A = 1\r\n");
    FAIL() << "expected a run-time error";
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 13);
  }
}

TEST_F(DeviceFiles, BothSwitchesVaryingAbortsTheLoad) {
  p.F.Lex.AddItem("DEV");
  p.F.Lex.listIndex = 0;
  p.F.format.AddItem("TESTNEC");
  Load("dev",
       "MANUFACTURER = Acme\r\nDEVICE = TV\r\nMODEL = 100\r\nCERTIFIED = yes\r\nPROTOCOL = TestNEC\r\n"
       "DEVICECODE = */*\r\n"
       "DEFINE X = 3\r\n"
       "[KEYCODES]\r\nA = 1\r\n");
  ASSERT_EQ(t.host.messages.size(), 1u);
  EXPECT_EQ(t.host.messages[0],
            "Varying both switch settings will produce 256 device sets, Not Permitted\r\n"
            "Loading of device File aborted");
  EXPECT_EQ(p.F.MFG.text, "");
  EXPECT_EQ(p.F.Device.text, "");
  EXPECT_EQ(p.F.Model.text, "");
  EXPECT_EQ(p.F.txtcertify.text, "yes") << "the certification stays";
  EXPECT_EQ(p.F.Lex.listIndex, -1);
  EXPECT_EQ(p.F.format.listIndex, -1);
  EXPECT_EQ(p.F.format.text, "");
  EXPECT_EQ(p.Keys.UpperBound(), 0) << "nothing after the abort is read";
  EXPECT_EQ(p.Defines[LookupDefine(p, "X")].Value, 0) << "the DEFINE behind the abort is not read";
  EXPECT_EQ(p.Protocol.ProtocolName, "TESTNEC") << "the protocol loaded before the abort stays";
}

// ---- number base and byte order ----

TEST_F(DeviceFiles, HexBaseReadsCodesFromItsLineOn) {
  LoadKeys("DEVICECODE = 10\r\nNUMBERBASE = hex\r\n", "POWER = 0C\r\nMUTE = 0x0C\r\nVOL = 1,10,12\r\n");
  EXPECT_EQ(First(1).DeviceCode, 10) << "the device code above NUMBERBASE is decimal";
  EXPECT_EQ(First(1).FunctionCode, 12);
  EXPECT_EQ(First(2).FunctionCode, 12);
  EXPECT_EQ(First(3).DeviceCode, 1);
  EXPECT_EQ(First(3).FunctionCode, 16);
  EXPECT_EQ(First(3).RepeatCount, 12) << "repeat counts are always decimal";

  LoadKeys("NUMBERBASE = HEX\r\nDEVICECODE = 10\r\n", "POWER = 0C\r\n");
  EXPECT_EQ(First(1).DeviceCode, 16);
}

TEST_F(DeviceFiles, DecimalBaseStopsAtTheFirstLetter) {
  LoadKeys("DEVICECODE = 4\r\nNUMBERBASE = DEC\r\n", "POWER = 0C\r\nMUTE = 0x0C\r\n");
  EXPECT_EQ(First(1).FunctionCode, 0);
  EXPECT_EQ(First(2).FunctionCode, 12);
}

TEST_F(DeviceFiles, BigEndianSwapsTheBytesOfLargeCodes) {
  LoadKeys("BIGENDIAN = true\r\nDEVICECODE = 0x1234\r\n", "A = 0x1234\r\nB = 0x12\r\nC = 0x5678,0xABCD\r\n");
  EXPECT_EQ(First(1).FunctionCode, 0x3412);
  EXPECT_EQ(First(1).DeviceCode, 0x3412) << "the device's own code is swapped too";
  EXPECT_EQ(First(2).FunctionCode, 18);
  EXPECT_EQ(First(3).DeviceCode, 0x7856);
  EXPECT_EQ(First(3).FunctionCode, 0xCDAB);
}

TEST_F(DeviceFiles, ByteOrderTakesEffectFromItsLineOn) {
  Load("dev", "PROTOCOL = TestNEC\r\n[KEYCODES]\r\nA = 0x1234\r\n");
  EXPECT_EQ(First(1).FunctionCode, 0x1234);
  LoadKeys("BIGENDIAN = yes\r\n", "A = 0x1234\r\n");
  EXPECT_EQ(First(1).FunctionCode, 0x1234) << "only TRUE turns it on";
}

TEST_F(DeviceFiles, SwapCodeBytesKeepsTheHighBytes) {
  EXPECT_EQ(SwapCodeBytes(0x123456, true), 0x5600 + 0x1234);
  EXPECT_EQ(SwapCodeBytes(255, true), 255);
  EXPECT_EQ(SwapCodeBytes(256, true), 1);
  EXPECT_EQ(SwapCodeBytes(0x1234, false), 0x1234);
}

// ---- key lines ----

TEST_F(DeviceFiles, CodeFieldsGiveDeviceFunctionAndRepeat) {
  LoadKeys("DEVICECODE = 7\r\n", "VOL UP = 1,16,3\r\nVOL DOWN = 17\r\nCH = 2,18\r\n");
  EXPECT_EQ(p.Keys[1].Label, "VOL UP");
  EXPECT_EQ(First(1).DeviceCode, 1);
  EXPECT_EQ(First(1).FunctionCode, 16);
  EXPECT_EQ(First(1).RepeatCount, 3);
  EXPECT_EQ(First(2).DeviceCode, 7);
  EXPECT_EQ(First(2).FunctionCode, 17);
  EXPECT_EQ(First(2).RepeatCount, 2) << "the protocol's repeat count";
  EXPECT_EQ(First(3).DeviceCode, 2);
  EXPECT_EQ(First(3).FunctionCode, 18);
}

TEST_F(DeviceFiles, ProtocolWithoutRepeatCountGivesOne) {
  Load("dev", "PROTOCOL = Plain\r\n[KEYCODES]\r\nA = 5\r\nB = 5,6,0\r\n");
  EXPECT_EQ(First(1).RepeatCount, 1);
  EXPECT_EQ(First(2).RepeatCount, 1);
}

TEST_F(DeviceFiles, SecondCodeListFollowsTheSemicolon) {
  LoadKeys("", "MUTE = 13 ; 14\r\nPOWER = 13\r\nKEY = 5 ; 6/7\r\n");
  ASSERT_EQ(p.Keys[1].FirstCodes.size(), 1u);
  ASSERT_EQ(p.Keys[1].SecondCodes.size(), 1u);
  EXPECT_EQ(First(1).FunctionCode, 13);
  EXPECT_EQ(p.Keys[1].SecondCodes[0].FunctionCode, 14);
  EXPECT_TRUE(p.Keys[1].HasSecondCodes);

  EXPECT_FALSE(p.Keys[2].HasSecondCodes);
  ASSERT_EQ(p.Keys[2].SecondCodes.size(), 1u);
  EXPECT_EQ(p.Keys[2].SecondCodes[0].FunctionCode, 13) << "a copy of the first list";

  ASSERT_EQ(p.Keys[3].SecondCodes.size(), 2u);
  EXPECT_EQ(p.Keys[3].SecondCodes[1].FunctionCode, 7);
}

TEST_F(DeviceFiles, SlashSendsSeveralCodes) {
  LoadKeys("DEVICECODE = 9\r\n", "PLAY = 5/6\r\n");
  ASSERT_EQ(p.Keys[1].FirstCodes.size(), 2u);
  EXPECT_EQ(First(1, 0).FunctionCode, 5);
  EXPECT_EQ(First(1, 1).FunctionCode, 6);
  EXPECT_EQ(First(1, 1).DeviceCode, 9);
}

TEST_F(DeviceFiles, OptionFieldsAreRemovedBeforeTheCodesAreRead) {
  LoadKeys("DEVICECODE = 9\r\n", "INPUT = 7,toggle=1\r\nMENU = a=2, 3, b = 4 ; 5\r\n");
  ASSERT_EQ(p.Keys[1].OptionCount, 1);
  EXPECT_EQ(p.Keys[1].Options, std::vector<std::string>{"toggle=1"});
  ASSERT_EQ(p.Keys[1].FirstCodes.size(), 1u);
  EXPECT_EQ(First(1).FunctionCode, 7) << "7 alone is a single field";
  EXPECT_EQ(First(1).DeviceCode, 9);

  EXPECT_EQ(p.Keys[2].OptionCount, 2);
  EXPECT_EQ(p.Keys[2].Options, (std::vector<std::string>{"a=2", "b = 4"}));
  EXPECT_EQ(First(2).FunctionCode, 3);
  EXPECT_EQ(p.Keys[2].SecondCodes[0].FunctionCode, 5);
}

TEST_F(DeviceFiles, SplitKeyOptionsKeepsTheSecondListAndEmptyFields) {
  KeyEntry key;
  EXPECT_EQ(SplitKeyOptions(key, "1,,x=2;3,y=4"), "1,;3,y=4");
  EXPECT_EQ(key.Options, std::vector<std::string>{"x=2"});
}

TEST_F(DeviceFiles, CodeItemsMayBeNamed) {
  LoadKeys("DEVICECODE = 9\r\n", "A = (sub):1,2/rc5:3/4\r\n");
  ASSERT_EQ(p.Keys[1].FirstCodes.size(), 3u);
  EXPECT_EQ(First(1, 0).Name, "SUB");
  EXPECT_EQ(First(1, 0).DeviceCode, 1);
  EXPECT_EQ(First(1, 0).FunctionCode, 2);
  EXPECT_EQ(First(1, 1).Name, "RC5");
  EXPECT_EQ(First(1, 1).DeviceCode, 9);
  EXPECT_EQ(First(1, 1).FunctionCode, 3);
  EXPECT_EQ(First(1, 2).Name, "") << "an item without a name has none";
}

TEST_F(DeviceFiles, CommentsAndQuotedLabels) {
  LoadKeys("", "; POWER = 1\r\n\"Vol = up\" = 5\r\nKEY = 5 ; 6\r\nTV = 8 ' the set\r\n");
  ASSERT_EQ(p.Keys.UpperBound(), 3);
  EXPECT_EQ(p.Keys[1].Label, "Vol = up") << "quotes protect the separator and vanish";
  EXPECT_TRUE(p.Keys[2].HasSecondCodes) << "a later ';' is not a comment";
  EXPECT_EQ(First(3).FunctionCode, 8);
}

// ---- RAW devices ----

TEST_F(DeviceFiles, RawDeviceKeysKeepTheirText) {
  p.F.format.AddItem("NEC");
  Load("raw", "FORMAT = raw\r\n[KEYCODES]\r\nA = 9000 -4500 560 -560\r\n");
  ASSERT_EQ(p.F.format.items.size(), 2u);
  EXPECT_EQ(p.F.format.items[0], "RAW");
  EXPECT_EQ(p.F.format.text, "RAW");
  ASSERT_EQ(p.Keys.UpperBound(), 1);
  EXPECT_EQ(p.Keys[1].Label, "A");
  EXPECT_EQ(p.Keys[1].RawText, "9000 -4500 560 -560");
  EXPECT_TRUE(p.Keys[1].FirstCodes.empty());

  Load("raw", "FORMAT = RAW\r\n[KEYCODES]\r\nA = 1\r\n");
  EXPECT_EQ(p.F.format.items.size(), 2u) << "RAW is listed once";
}

// ---- protocol statements in a device header ----

TEST_F(DeviceFiles, HeaderProtocolStatementsOverrideTheLoadedProtocol) {
  LoadKeys("FREQUENCY = 40000\r\nDEFINE X = 5\r\nDEFINE = Y AS 6\r\nONE = 2,-2\r\nZERO = 600,-2\r\n"
           "COLOUR = red\r\nREPEAT 3\r\n",
           "A = 1\r\n");
  EXPECT_TRUE(t.host.messages.empty()) << "a form symbol may be given a value; unknown words pass";
  EXPECT_EQ(p.Protocol.Frequency, 40000);
  const DefineEntry& x = p.Defines[LookupDefine(p, "X")];
  EXPECT_EQ(x.Kind, define_kind::kNumber);
  EXPECT_EQ(x.Value, 5);
  EXPECT_EQ(p.Defines[LookupDefine(p, "Y")].Value, 6);
  EXPECT_EQ(p.Protocol.RepeatCount, 3) << "a statement written with a blank";
  EXPECT_EQ(First(1).RepeatCount, 3);
  // Time base 560: 2 and -2 count in units; 600 is not below it and leaves the protocol's 560.
  EXPECT_EQ(p.Protocol.OneMark, 1120);
  EXPECT_EQ(p.Protocol.OneSpace, -1120);
  EXPECT_EQ(p.Protocol.ZeroMark, 560);
  EXPECT_EQ(p.Protocol.ZeroSpace, -1120);
}

TEST_F(DeviceFiles, HeaderFormRegistersItsNames) {
  LoadKeys("FORM = D:8,SUB:4,F:8\r\nMODULATION = nonsense\r\n", "A = 1\r\n");
  EXPECT_EQ(p.Protocol.FormOnce, "D:8,SUB:4,F:8");
  EXPECT_NE(LookupDefine(p, "SUB"), 0);
  ASSERT_EQ(t.host.messages.size(), 1u);
  EXPECT_EQ(t.host.messages[0], "Modulation Paramaeter NONSENSE is Not recognized, PWM assumed");
}

}  // namespace
}  // namespace bw
