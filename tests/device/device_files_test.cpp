// Device files loaded end to end from a temporary Device Library: header, switch settings, number base and
// byte order from their line on, key lines, RAW devices, protocol statements and the exact messages.
#include <gtest/gtest.h>

#include "input/defines.h"
#include "input/device_file.h"
#include "runtime/run_time_error.h"
#include "runtime/text.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

using V = std::vector<int32_t>;
using Strings = std::vector<std::string>;

struct DeviceFiles : test::LibraryTest {
  DeviceFiles() {
    // TestNEC: repeat 2, time base 560, ONE 560/-1680, ZERO 560/-560; X is a form symbol devices may set.
    WriteLibrary("testnec.irp",
                 "PROTOCOL = TestNEC\r\nREPEAT = 2\r\nTIMEBASE = 560\r\nONE = 1,-3\r\n"
                 "ZERO = 1,-1\r\nFORM = D:8,F:8,X:4\r\n");
    WriteLibrary("plain.irp", "PROTOCOL = Plain\r\nFORM = D:8,F:8\r\n");  // no repeat count
  }
  /// Writes "<name>.dvc" and loads it under the upper-cased name the device list shows.
  void Load(const std::string& name, const std::string& text) {
    WriteLibrary(name + ".dvc", text);
    LoadDeviceFile(p, UCase(name));
  }
  /// A device on TestNEC with the given header lines and key lines.
  void LoadKeys(const std::string& header, const std::string& keys) {
    Load("dev", "PROTOCOL = TestNEC\r\n" + header + "[KEYCODES]\r\n" + keys);
  }
  double Value(const std::string& name) { return p.Defines[LookupDefine(p, name)].Value; }
  static std::string Codes(const std::vector<KeyCode>& list) {
    std::string text;
    for (const KeyCode& c : list)
      text += " " + (c.Name.empty() ? "" : c.Name + ":") + std::to_string(c.DeviceCode) + "/" +
              std::to_string(c.FunctionCode) + "/" + std::to_string(c.RepeatCount);
    return text;
  }
  /// Each key as "Label=" + raw text + codes " [NAME:]device/function/repeat", then " ;" + the codes of a
  /// second list of its own.
  Strings Keys() {
    Strings keys;
    for (int i = 1; i <= p.Keys.UpperBound(); ++i) {
      const KeyEntry& k = p.Keys[i];
      keys.push_back(k.Label + "=" + k.RawText + Codes(k.FirstCodes) +
                     (k.HasSecondCodes ? " ;" + Codes(k.SecondCodes) : ""));
    }
    return keys;
  }
};

TEST_F(DeviceFiles, HeaderFillsTheWindowAndLoadsTheProtocolOrRaw) {
  p.Keys.entries.push_back(KeyEntry{});
  p.F.txtcertify.text = "old";
  LoadDeviceFile(p, "NOWHERE");  // a missing file ends silently with everything cleared
  EXPECT_EQ(p.Keys.UpperBound() + p.F.txtcertify.text.size() + t.host.messages.size(), 0u);
  Load("Acme tv", "; Acme television\r\nManufacturer = Acme\r\nDevice = Tv\r\nModel = tv 100 ' the big one\r\n"
       "Certified = JS 2001; checked;ok\r\nProtocol = TestNEC\r\nDevice Code = 4\r\n[ keycodes ]\r\nPower = 12\r\n");
  EXPECT_EQ(p.F.MFG.text + "|" + p.F.Device.text + "|" + p.F.Model.text + "|" + p.Protocol.ProtocolName + "|" +
                p.F.txtcertify.text, "ACME|TV|TV 100|TESTNEC|JS 2001\r\nchecked\r\nok");
  EXPECT_EQ(Keys(), Strings{"Power= 4/12/2"});
  // Protocol statements in the header add to the loaded protocol; a form symbol may be given a value; unknown
  // words pass. Time base 560: 2 and -2 count in units; 600 is not below it and leaves the protocol's 560.
  LoadKeys("FREQUENCY = 40000\r\nDEFINE X = 5\r\nDEFINE = Y AS 6\r\nONE = 2,-2\r\nZERO = 600,-2\r\n"
           "COLOUR = red\r\nREPEAT 3\r\nFORM = D:8,SUB:4,F:8\r\nMODULATION = nonsense\r\n", "A = 1\r\n");
  EXPECT_EQ((V{p.Protocol.Frequency, int32_t(Value("X")), int32_t(Value("Y")), p.Protocol.OneMark,
               p.Protocol.OneSpace, p.Protocol.ZeroMark, p.Protocol.ZeroSpace}),
            (V{40000, 5, 6, 1120, -1120, 560, -1120}));
  EXPECT_EQ(Keys(), Strings{"A= 0/1/3"}) << "REPEAT written with a blank";
  EXPECT_EQ(p.Protocol.FormOnce, "D:8,SUB:4,F:8");
  EXPECT_NE(LookupDefine(p, "SUB"), 0);
  Load("dev", "FORMAT = Nowhere\r\n[KEYCODES]\r\nA = 1\r\nB = 2\r\n");  // reported once, keys still read
  EXPECT_EQ(t.host.messages, (Strings{"Modulation Paramaeter NONSENSE is Not recognized, PWM assumed",
                                      "Format Nowhere is not in Device Library"}));
  EXPECT_EQ(p.Keys.UpperBound(), 2);
  // a RAW device's keys keep their text, and RAW is listed once
  p.F.format.AddItem("NEC");
  Load("raw", "FORMAT = raw\r\n[KEYCODES]\r\nA = 9000 -4500 560 -560\r\n");
  EXPECT_EQ(p.F.format.items, (Strings{"RAW", "NEC"}));
  EXPECT_EQ(p.F.format.text, "RAW");
  EXPECT_EQ(Keys(), Strings{"A=9000 -4500 560 -560"});
  Load("raw", "FORMAT = RAW\r\n[KEYCODES]\r\nA = 1\r\n");
  EXPECT_EQ(p.F.format.items.size(), 2u);
}

TEST_F(DeviceFiles, SwitchSettingsMapThroughTheirOwnTablesAndMayVaryOneAtATime) {
  // 3 -> bits 0,1 -> 2 + 8 = 10; 5 -> bits 0,2 -> 64 + 128 = 192.
  LoadKeys("DEVICECODE = 3/5\r\n", "A = 1\r\n");
  EXPECT_EQ(Keys(), Strings{"A= 202/1/2"});
  EXPECT_FALSE(p.SwitchWildcard);
  EXPECT_EQ(DecodeSwitchSettings(p, "5", "3"), 102);  // 2 + 4, 64 + 32
  V first, second;
  for (const char* digit : {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "A", "b", "C", "d", "E", "f"}) {
    first.push_back(DecodeSwitchSettings(p, digit, "0"));
    second.push_back(DecodeSwitchSettings(p, "0", digit));
  }
  EXPECT_EQ(first, (V{0, 2, 8, 10, 4, 6, 12, 14, 1, 3, 9, 11, 5, 7, 13, 15}));
  EXPECT_EQ(second, (V{0, 64, 32, 96, 128, 192, 160, 224, 16, 80, 48, 112, 144, 208, 176, 240}));
  EXPECT_EQ(DecodeSwitchSettings(p, "G", "1"), 64) << "a non-digit adds nothing";
  // one varying switch leaves code 0 and sets up the sweep; both abort the load
  auto state = [this] { return V{p.SwitchWildcard, p.VaryingSwitch, p.Switch1Setting, p.Switch2Setting,
                                  p.XantechSweep, p.XantechCode1, p.XantechCode2}; };
  LoadKeys("DEVICECODE = */5\r\n", "A = 1\r\n");
  EXPECT_EQ(Keys(), Strings{"A= 0/1/2"});
  EXPECT_EQ(state(), (V{1, 1, 0, 5, 1, 0, 5}));
  LoadKeys("DEVICECODE = 12/*\r\n", "A = 1\r\n");
  EXPECT_EQ(state(), (V{1, 2, 12, 0, 2, 12, 0}));
  LoadKeys("DEVICECODE = 1/2\r\n", "A = 1\r\n");
  EXPECT_EQ(state()[0] + state()[4], 0) << "a new device does not inherit the sweep";
  // a letter beside a varying switch is not a decimal number
  EXPECT_EQ(test::ErrorNumber([&] { LoadKeys("DEVICECODE = */A\r\n", "A = 1\r\n"); }), 13);
  p.F.Lex.AddItem("DEV");
  p.F.Lex.listIndex = 0;
  p.F.format.AddItem("TESTNEC");
  Load("dev", "MANUFACTURER = Acme\r\nDEVICE = TV\r\nMODEL = 100\r\nCERTIFIED = yes\r\nPROTOCOL = TestNEC\r\n"
              "DEVICECODE = */*\r\nDEFINE X = 3\r\n[KEYCODES]\r\nA = 1\r\n");
  EXPECT_EQ(t.host.messages, Strings{"Varying both switch settings will produce 256 device "
                                     "sets, Not Permitted\r\nLoading of device File aborted"});
  EXPECT_EQ(p.F.MFG.text + p.F.Device.text + p.F.Model.text + p.F.format.text + "|" + p.F.txtcertify.text, "|yes")
      << "only the certification stays";
  EXPECT_EQ((V{p.F.Lex.listIndex, p.F.format.listIndex, p.Keys.UpperBound(), int32_t(Value("X"))}), (V{-1, -1, 0, 0}))
      << "nothing after the abort is read";
  EXPECT_EQ(p.Protocol.ProtocolName, "TESTNEC") << "the protocol loaded before the abort stays";
}

TEST_F(DeviceFiles, NumberBaseAndByteOrderTakeEffectFromTheirLineOn) {
  // the device code above NUMBERBASE is decimal; repeat counts are always decimal
  LoadKeys("DEVICECODE = 10\r\nNUMBERBASE = hex\r\n", "POWER = 0C\r\nMUTE = 0x0C\r\nVOL = 1,10,12\r\n");
  EXPECT_EQ(Keys(), (Strings{"POWER= 10/12/2", "MUTE= 10/12/2", "VOL= 1/16/12"}));
  LoadKeys("NUMBERBASE = HEX\r\nDEVICECODE = 10\r\n", "POWER = 0C\r\n");
  EXPECT_EQ(Keys(), Strings{"POWER= 16/12/2"});
  LoadKeys("NUMBERBASE = DEC\r\n", "POWER = 0C\r\nMUTE = 0x0C\r\n");  // decimal reading stops at the letter
  EXPECT_EQ(Keys(), (Strings{"POWER= 0/0/2", "MUTE= 0/12/2"}));
  // the device's own code is swapped where it is used
  LoadKeys("DEVICECODE = 0x1234\r\nBIGENDIAN = true\r\n", "A = 0x1234\r\nB = 0x12\r\nC = 0x5678,0xABCD\r\n");
  EXPECT_EQ(Keys(), (Strings{"A= 13330/13330/2", "B= 13330/18/2", "C= 30806/52651/2"}));  // 3412, 7856, CDAB hex
  LoadKeys("BIGENDIAN = yes\r\n", "A = 0x1234\r\n");
  EXPECT_EQ(Keys(), Strings{"A= 0/4660/2"}) << "only TRUE turns it on";
  EXPECT_EQ((V{SwapCodeBytes(0x123456, true), SwapCodeBytes(256, true)}), (V{0x5600 + 0x1234, 1}));
}

TEST_F(DeviceFiles, KeyLinesCodesListsOptionsNamesAndComments) {
  // Without a repeat count the protocol's is used; ";" starts the second list (else the first
  // repeats); "/" sends several codes; option fields go before the codes are read; quotes protect "=".
  LoadKeys("DEVICECODE = 9\r\n",
           "VOL UP = 1,16,3\r\nVOL DOWN = 17\r\nCH = 2,18\r\nMUTE = 13 ; 14\r\nPOWER = 13\r\nPLAY = 5/6 ; 7/8\r\n"
           "INPUT = 7,toggle=1\r\nMENU = a=2, 3, b = 4 ; 5\r\n; POWER = 1\r\n\"Vol = up\" = (sub):1,2/rc5:3/4\r\n"
           "TV = 8 ' the set\r\n");
  EXPECT_EQ(Keys(), (Strings{"VOL UP= 1/16/3", "VOL DOWN= 9/17/2", "CH= 2/18/2", "MUTE= 9/13/2 ; 9/14/2",
                             "POWER= 9/13/2", "PLAY= 9/5/2 9/6/2 ; 9/7/2 9/8/2", "INPUT= 9/7/2", "MENU= 9/3/2 ; 9/5/2",
                             "Vol = up= SUB:1/2/2 RC5:9/3/2 9/4/2", "TV= 9/8/2"}));
  EXPECT_EQ(p.Keys[7].OptionCount, 1);
  EXPECT_EQ(p.Keys[7].Options, Strings{"toggle=1"});
  EXPECT_EQ(p.Keys[8].Options, (Strings{"a=2", "b = 4"}));
  KeyEntry key;
  EXPECT_EQ(SplitKeyOptions(key, "1,,x=2;3,y=4"), "1,;3,y=4") << "empty fields and the second list stay";
  Load("dev", "PROTOCOL = Plain\r\n[KEYCODES]\r\nA = 5,6,0\r\n");
  EXPECT_EQ(Keys(), Strings{"A= 5/6/1"}) << "no repeat count anywhere gives 1";
}

}  // namespace
}  // namespace bw
