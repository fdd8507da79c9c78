// Device files written to a temporary Device Library and loaded end to end: the
// header into the window's fields, device codes from numbers and switch
// settings, number base and byte order from their line on, key lines with their
// code lists, names, repeats and options, RAW devices, protocol statements in a
// device header, and the messages with their exact texts.
#include <gtest/gtest.h>

#include <cctype>

#include "input/defines.h"
#include "input/device_file.h"
#include "runtime/run_time_error.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

// TestNEC: repeat 2, time base 560, ONE 560/-1680, ZERO 560/-560; X is a form
// symbol that devices give a value. Plain has no repeat count.
const char* const kTestNec =
    "PROTOCOL = TestNEC\r\nREPEAT = 2\r\nTIMEBASE = 560\r\nONE = 1,-3\r\nZERO = 1,-1\r\nFORM = D:8,F:8,X:4\r\n";
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
  void Load(std::string name, const std::string& text) {
    dir.Write("Device Library/" + name + ".dvc", text);
    for (char& c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    LoadDeviceFile(p, name);
  }
  /// A device on TestNEC with the given header lines and key lines.
  void LoadKeys(const std::string& header, const std::string& keys) {
    Load("dev", "PROTOCOL = TestNEC\r\n" + header + "[KEYCODES]\r\n" + keys);
  }
  const KeyCode& First(int key, int code = 0) { return p.Keys[key].FirstCodes.at(static_cast<std::size_t>(code)); }
  /// Device code, function code and repeat count of a key's first-list code.
  std::vector<int32_t> Codes(int key, int code = 0) {
    const KeyCode& c = First(key, code);
    return {c.DeviceCode, c.FunctionCode, c.RepeatCount};
  }
  using V = std::vector<int32_t>;
};

// ---- header ----

TEST_F(DeviceFiles, HeaderFillsTheWindowAndLoadsTheProtocol) {
  Load("Acme tv",
       "; Acme television\r\nManufacturer = Acme\r\nDevice = Tv\r\nModel = tv 100 ' the big one\r\n"
       "Certified = JS 2001; checked;ok\r\nProtocol = TestNEC\r\nDevice Code = 4\r\n"
       "[ keycodes ]\r\nPower = 12\r\n");
  EXPECT_TRUE(t.host.messages.empty());
  EXPECT_EQ(p.F.MFG.text, "ACME");
  EXPECT_EQ(p.F.Device.text, "TV");
  EXPECT_EQ(p.F.Model.text, "TV 100");
  EXPECT_EQ(p.F.txtcertify.text, "JS 2001\r\nchecked\r\nok");
  EXPECT_EQ(p.Protocol.ProtocolName, "TESTNEC");
  ASSERT_EQ(p.Keys.UpperBound(), 1);
  EXPECT_EQ(p.Keys[1].Label, "Power");
  EXPECT_EQ(Codes(1), (V{4, 12, 2}));
}

TEST_F(DeviceFiles, MissingFileEndsSilentlyWithEverythingCleared) {
  p.Keys.entries.push_back(KeyEntry{});
  p.F.txtcertify.text = "old";
  LoadDeviceFile(p, "NOWHERE");
  EXPECT_EQ(p.Keys.UpperBound() + p.F.txtcertify.text.size() + t.host.messages.size(), 0u);
}

TEST_F(DeviceFiles, UnknownProtocolIsReportedOnceAndKeysAreStillRead) {
  Load("dev", "FORMAT = Nowhere\r\n[KEYCODES]\r\nA = 1\r\nB = 2\r\n");
  EXPECT_EQ(t.host.messages, std::vector<std::string>{"Format Nowhere is not in Device Library"});
  EXPECT_EQ(p.Keys.UpperBound(), 2);
}

// ---- device codes ----

TEST_F(DeviceFiles, SwitchSettingsMapThroughTheirOwnTables) {
  // 3 -> bits 0,1 -> 2 + 8 = 10; 5 -> bits 0,2 -> 64 + 128 = 192.
  LoadKeys("DEVICECODE = 3/5\r\n", "A = 1\r\n");
  EXPECT_EQ(First(1).DeviceCode, 202);
  EXPECT_FALSE(p.SwitchWildcard);
  EXPECT_EQ(DecodeSwitchSettings(p, "5", "3"), 102);  // 2 + 4, 64 + 32
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
  EXPECT_EQ((V{p.VaryingSwitch, p.Switch1Setting, p.Switch2Setting}), (V{1, 0, 5}));
  EXPECT_EQ((V{p.XantechSweep, p.XantechCode1, p.XantechCode2}), (V{1, 0, 5}));

  LoadKeys("DEVICECODE = 12/*\r\n", "A = 1\r\n");
  EXPECT_EQ((V{p.VaryingSwitch, p.Switch1Setting, p.Switch2Setting}), (V{2, 12, 0}));
  EXPECT_EQ((V{p.XantechSweep, p.XantechCode1, p.XantechCode2}), (V{2, 12, 0}));

  LoadKeys("DEVICECODE = 1/2\r\n", "A = 1\r\n");
  EXPECT_FALSE(p.SwitchWildcard);
  EXPECT_EQ(p.XantechSweep, 0) << "a new device does not inherit the sweep";

  try {
    LoadKeys("DEVICECODE = */A\r\n", "A = 1\r\n");
    FAIL() << "a letter beside a varying switch is not a decimal number";
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
       "DEVICECODE = */*\r\nDEFINE X = 3\r\n[KEYCODES]\r\nA = 1\r\n");
  EXPECT_EQ(t.host.messages, std::vector<std::string>{"Varying both switch settings will produce 256 device "
                                                      "sets, Not Permitted\r\nLoading of device File aborted"});
  EXPECT_EQ(p.F.MFG.text + p.F.Device.text + p.F.Model.text, "");
  EXPECT_EQ(p.F.txtcertify.text, "yes") << "the certification stays";
  EXPECT_EQ((V{p.F.Lex.listIndex, p.F.format.listIndex}), (V{-1, -1}));
  EXPECT_EQ(p.F.format.text, "");
  EXPECT_EQ(p.Keys.UpperBound(), 0) << "nothing after the abort is read";
  EXPECT_EQ(p.Defines[LookupDefine(p, "X")].Value, 0);
  EXPECT_EQ(p.Protocol.ProtocolName, "TESTNEC") << "the protocol loaded before the abort stays";
}

// ---- number base and byte order take effect from their line on ----

TEST_F(DeviceFiles, HexBaseReadsCodesButNotRepeatCounts) {
  LoadKeys("DEVICECODE = 10\r\nNUMBERBASE = hex\r\n", "POWER = 0C\r\nMUTE = 0x0C\r\nVOL = 1,10,12\r\n");
  EXPECT_EQ(Codes(1), (V{10, 12, 2})) << "the device code above NUMBERBASE is decimal";
  EXPECT_EQ(First(2).FunctionCode, 12);
  EXPECT_EQ(Codes(3), (V{1, 16, 12})) << "repeat counts are always decimal";

  LoadKeys("NUMBERBASE = HEX\r\nDEVICECODE = 10\r\n", "POWER = 0C\r\n");
  EXPECT_EQ(First(1).DeviceCode, 16);
  LoadKeys("NUMBERBASE = DEC\r\n", "POWER = 0C\r\nMUTE = 0x0C\r\n");
  EXPECT_EQ(First(1).FunctionCode, 0) << "decimal reading stops at the letter";
  EXPECT_EQ(First(2).FunctionCode, 12);
}

TEST_F(DeviceFiles, BigEndianSwapsTheBytesOfLargeCodes) {
  LoadKeys("DEVICECODE = 0x1234\r\nBIGENDIAN = true\r\n",
           "A = 0x1234\r\nB = 0x12\r\nC = 0x5678,0xABCD\r\n");
  EXPECT_EQ(Codes(1), (V{0x3412, 0x3412, 2})) << "the device's own code is swapped where it is used";
  EXPECT_EQ(First(2).FunctionCode, 18);
  EXPECT_EQ(Codes(3), (V{0x7856, 0xCDAB, 2}));
  LoadKeys("BIGENDIAN = yes\r\n", "A = 0x1234\r\n");
  EXPECT_EQ(First(1).FunctionCode, 0x1234) << "only TRUE turns it on";
  EXPECT_EQ(SwapCodeBytes(0x123456, true), 0x5600 + 0x1234) << "bytes above the second stay in place";
  EXPECT_EQ(SwapCodeBytes(256, true), 1);
}

// ---- key lines ----

TEST_F(DeviceFiles, CodeFieldsGiveDeviceFunctionAndRepeat) {
  LoadKeys("DEVICECODE = 7\r\n", "VOL UP = 1,16,3\r\nVOL DOWN = 17\r\nCH = 2,18\r\n");
  EXPECT_EQ(p.Keys[1].Label, "VOL UP");
  EXPECT_EQ(Codes(1), (V{1, 16, 3}));
  EXPECT_EQ(Codes(2), (V{7, 17, 2})) << "the device's code and the protocol's repeat count";
  EXPECT_EQ(Codes(3), (V{2, 18, 2}));
  Load("dev", "PROTOCOL = Plain\r\n[KEYCODES]\r\nA = 5,6,0\r\n");
  EXPECT_EQ(First(1).RepeatCount, 1) << "no repeat count anywhere gives 1";
}

TEST_F(DeviceFiles, SemicolonStartsTheSecondListAndSlashesSendSeveralCodes) {
  LoadKeys("DEVICECODE = 9\r\n", "MUTE = 13 ; 14\r\nPOWER = 13\r\nPLAY = 5/6 ; 7/8\r\n");
  EXPECT_TRUE(p.Keys[1].HasSecondCodes);
  EXPECT_EQ(p.Keys[1].SecondCodes.at(0).FunctionCode, 14);
  EXPECT_FALSE(p.Keys[2].HasSecondCodes);
  EXPECT_EQ(p.Keys[2].SecondCodes.at(0).FunctionCode, 13) << "a copy of the first list";
  ASSERT_EQ(p.Keys[3].FirstCodes.size(), 2u);
  EXPECT_EQ(Codes(3, 1), (V{9, 6, 2}));
  ASSERT_EQ(p.Keys[3].SecondCodes.size(), 2u);
  EXPECT_EQ(p.Keys[3].SecondCodes[1].FunctionCode, 8);
}

TEST_F(DeviceFiles, OptionFieldsAreRemovedBeforeTheCodesAreRead) {
  LoadKeys("DEVICECODE = 9\r\n", "INPUT = 7,toggle=1\r\nMENU = a=2, 3, b = 4 ; 5\r\n");
  EXPECT_EQ(p.Keys[1].OptionCount, 1);
  EXPECT_EQ(p.Keys[1].Options, std::vector<std::string>{"toggle=1"});
  EXPECT_EQ(Codes(1), (V{9, 7, 2})) << "7 alone is a single field";
  EXPECT_EQ(p.Keys[2].Options, (std::vector<std::string>{"a=2", "b = 4"}));
  EXPECT_EQ(First(2).FunctionCode, 3);
  EXPECT_EQ(p.Keys[2].SecondCodes.at(0).FunctionCode, 5);
  KeyEntry key;
  EXPECT_EQ(SplitKeyOptions(key, "1,,x=2;3,y=4"), "1,;3,y=4") << "empty fields and the second list stay";
}

TEST_F(DeviceFiles, NamesLabelsAndComments) {
  LoadKeys("DEVICECODE = 9\r\n",
           "; POWER = 1\r\n\"Vol = up\" = (sub):1,2/rc5:3/4\r\nTV = 8 ' the set\r\n");
  ASSERT_EQ(p.Keys.UpperBound(), 2);
  EXPECT_EQ(p.Keys[1].Label, "Vol = up") << "quotes protect the separator and vanish";
  EXPECT_EQ(First(1, 0).Name, "SUB");
  EXPECT_EQ(Codes(1, 0), (V{1, 2, 2}));
  EXPECT_EQ(First(1, 1).Name, "RC5");
  EXPECT_EQ(Codes(1, 1), (V{9, 3, 2}));
  EXPECT_EQ(First(1, 2).Name, "") << "an item without a name has none";
  EXPECT_EQ(First(2).FunctionCode, 8);
}

TEST_F(DeviceFiles, RawDeviceKeysKeepTheirTextAndRawIsListedOnce) {
  p.F.format.AddItem("NEC");
  Load("raw", "FORMAT = raw\r\n[KEYCODES]\r\nA = 9000 -4500 560 -560\r\n");
  EXPECT_EQ(p.F.format.items, (std::vector<std::string>{"RAW", "NEC"}));
  EXPECT_EQ(p.F.format.text, "RAW");
  ASSERT_EQ(p.Keys.UpperBound(), 1);
  EXPECT_EQ(p.Keys[1].Label, "A");
  EXPECT_EQ(p.Keys[1].RawText, "9000 -4500 560 -560");
  EXPECT_TRUE(p.Keys[1].FirstCodes.empty());
  Load("raw", "FORMAT = RAW\r\n[KEYCODES]\r\nA = 1\r\n");
  EXPECT_EQ(p.F.format.items.size(), 2u);
}

// ---- protocol statements in a device header ----

TEST_F(DeviceFiles, HeaderProtocolStatementsAddToTheLoadedProtocol) {
  LoadKeys("FREQUENCY = 40000\r\nDEFINE X = 5\r\nDEFINE = Y AS 6\r\nONE = 2,-2\r\nZERO = 600,-2\r\n"
           "COLOUR = red\r\nREPEAT 3\r\nFORM = D:8,SUB:4,F:8\r\nMODULATION = nonsense\r\n",
           "A = 1\r\n");
  EXPECT_EQ(t.host.messages,
            std::vector<std::string>{"Modulation Paramaeter NONSENSE is Not recognized, PWM assumed"})
      << "a form symbol may be given a value; unknown words pass";
  EXPECT_EQ(p.Protocol.Frequency, 40000);
  EXPECT_EQ(p.Defines[LookupDefine(p, "X")].Value, 5);
  EXPECT_EQ(p.Defines[LookupDefine(p, "Y")].Value, 6);
  // Time base 560: 2 and -2 count in units; 600 is not below it and leaves the protocol's 560.
  EXPECT_EQ((V{p.Protocol.OneMark, p.Protocol.OneSpace, p.Protocol.ZeroMark, p.Protocol.ZeroSpace}),
            (V{1120, -1120, 560, -1120}));
  EXPECT_EQ(First(1).RepeatCount, 3) << "REPEAT written with a blank";
  EXPECT_EQ(p.Protocol.FormOnce, "D:8,SUB:4,F:8");
  EXPECT_NE(LookupDefine(p, "SUB"), 0);
}

}  // namespace
}  // namespace bw
