// The key generator over devices in a temporary Device Library: the durations of
// each kind of key, the writer that gets them, the refusals and errors; and the
// main window commands that prepare a run over the bundled library.
#include <gtest/gtest.h>

#include "details/details.h"
#include "generate/generate.h"
#include "input/device_file.h"
#include "shell/command.h"
#include "shell/commands.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

using Durations = std::vector<int32_t>;

/// ACME32 durations: "L" the lead-in, "T" the trailer, 0 and 1 bits in the order sent.
Durations Acme(const std::string& sent) {
  Durations out;
  for (char c : sent) {
    if (c == 'L') out.insert(out.end(), {8960, -4480});
    else if (c == 'T') out.push_back(560);
    else if (c != ' ') out.insert(out.end(), {560, c == '1' ? -1680 : -560});
  }
  return out;
}
Durations operator+(Durations a, const Durations& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

struct GenerateKeysTest : test::LibraryTest {
  std::vector<IRCodeRecord> stored;

  void SetUp() override {
    // ACME32: time base 560, ONE 560/-1680, ZERO 560/-560, LSB first; once part
    // LEAD 8960/-4480, D:8, F:8, a 560 trailer (35 durations); repeat LEAD, F:4.
    WriteLibrary("Acme32.irp",
                 "PROTOCOL = ACME32\r\nFREQUENCY = 38000\r\nTIMEBASE = 560\r\nONE = 1,-3\r\n"
                 "ZERO = 1,-1\r\nDEFINE LEAD = [16 -8]\r\nDEFINE TAIL = [1]\r\nFORM = LEAD,D:8,F:8,TAIL;LEAD,F:4\r\n");
    // OTHER: time base 100, ONE 500/-1500, ZERO 500/-500, form F:4.
    WriteLibrary("Other.irp",
                 "PROTOCOL = OTHER\r\nFREQUENCY = 40000\r\nTIMEBASE = 100\r\nONE = 5,-15\r\n"
                 "ZERO = 5,-5\r\nFORM = F:4\r\n");
    p.IRCodeSink = [this](Program& q) { stored.push_back(q.IRCode); };
  }
  void Load(const std::string& protocolAndKeys) {
    WriteLibrary("Dev.dvc", "MANUFACTURER = Acme\r\nDEVICE = Tv\r\nMODEL = Tv100\r\n" + protocolAndKeys);
    LoadDeviceFile(p, "DEV");
    p.F.DvcMfglist.text = p.F.MFG.text;  // as GenerateKeys copies it
  }
  Durations Built(int key, int count) {
    ResetBurstSequence(p);
    BuildKeySequence(p, key);
    Durations out;
    for (int i = 1; i <= count; ++i) out.push_back(p.Burst.BurstDurations(i));
    return out;
  }
  std::string Counts() const {
    return std::to_string(p.Burst.OnceCount) + "+" + std::to_string(p.Burst.RepeatPartCount) + "=" +
           std::to_string(p.Burst.TotalCount);
  }
  std::string ClickOutput(int index) {
    p.F.Output.listIndex = index;
    Output_Click(p);
    return std::string(p.FormatPronto ? "P" : "-") + (p.FormatSlinkTxOnly ? "T" : "-") +
           (p.FormatSlinkTxRx ? "R" : "-") + (p.FormatADI ? "A" : "-");
  }
};

TEST_F(GenerateKeysTest, KeysBuildOnceEntriesThenTheRepeatedPart) {
  Load("PROTOCOL = ACME32\r\nDEVICECODE = 5\r\n[KEYCODES]\r\nPOWER = 12\r\nMUTE = 13 ; 14\r\nPLAY = 20/21\r\n"
       "INPUT = 7,LEAD=[20 -10]\r\n");
  const BurstSequence& b = p.Burst;
  // Device 5 and function 12; the default repeat part sends 12 in 4 bits (and nothing after it).
  EXPECT_EQ(Built(1, 46), Acme("L 10100000 00110000 T L 0011") + Durations{0});
  EXPECT_EQ(b.BurstLabel + " " + b.BurstDescription + " " + Counts(), "POWER ACME-TV100 (5,12) 35+10=45");
  // A second code list is the repeated part, and its first entry starts the description anew.
  EXPECT_EQ(Built(2, 45), Acme("L 10100000 10110000 T L 0111"));
  EXPECT_EQ(b.BurstDescription, "ACME-TV100 (5,14)");
  // Codes of one list follow each other; the default repeat uses the last function code.
  EXPECT_EQ(Built(3, 80), Acme("L 10100000 00101000 T L 10100000 10101000 T L 1010"));
  EXPECT_EQ(b.BurstDescription + " " + Counts(), "ACME-TV100 (5,20)-(5,21) 70+10=80");
  // A key option redefines LEAD (20 and 10 units of 560) for that key.
  EXPECT_EQ(Built(4, 35), Durations({11200, -5600}) + Acme("10100000 11100000 T"));
  EXPECT_TRUE(t.host.messages.empty());
  // Built for ADI "Recognize": the entry is marked for that writer.
  EXPECT_FALSE(b.MarkedForRecognize);
  p.FormatADI = true;
  p.F.ADIoptRX.value = true;
  Built(1, 0);
  EXPECT_TRUE(b.MarkedForRecognize);
}

TEST_F(GenerateKeysTest, CodeOfAnotherProtocolUsesItAndUnknownOneAddsNothing) {
  p.F.format.items = {"ACME32", "OTHER"};
  Load("PROTOCOL = ACME32\r\nDEVICECODE = 5\r\n[KEYCODES]\r\nAUX = (OTHER):1,2\r\nGHOST = (NOPE):1,3\r\n");
  // OTHER sends 2 as 0,1,0,0; the repeated part is ACME32's again, LEAD included.
  EXPECT_EQ(Built(1, 18), Durations({500, -500, 500, -1500, 500, -500, 500, -500}) + Acme("L 0100"));
  EXPECT_EQ(Counts() + " " + p.Protocol.ProtocolName + " " + p.F.format.text, "8+10=18 ACME32 ACME32");
  EXPECT_EQ(Built(2, 10), Acme("L 1100"));
  EXPECT_EQ(Counts(), "0+10=10");
  // The one message is the second key's.
  EXPECT_EQ(t.host.messages, std::vector<std::string>{"Protocol NOPE Not in Device Library"});
}

TEST_F(GenerateKeysTest, RawDeviceIsRefusedForProntoAndBuiltOnlyForSlinkTxOnly) {
  Load("PROTOCOL = RAW\r\n[KEYCODES]\r\nPOWER = 9000 -4500 560 -560\r\n");
  p.F.status.text = "busy";
  EXPECT_FALSE(GenerateKeys(p, "RAW", 0, 0, 0));
  EXPECT_EQ(t.host.messages,
            std::vector<std::string>{"Raw format only permitted for Slink Option, not for Pronto or ADI"});
  EXPECT_EQ(p.F.status.text, "busy");
  p.FormatPronto = false;
  p.FormatSlinkTxOnly = true;
  EXPECT_TRUE(GenerateKeys(p, "RAW", 0, 0, 0));
  EXPECT_EQ(t.host.messages.size(), 1u);
  EXPECT_EQ(Counts(), "4+0=0");  // the total is left from the reset
  EXPECT_EQ(p.Burst.BurstDurations(4), -560);
  EXPECT_TRUE(p.SlinkText.empty());  // not handed to the Slink-e writer
}

TEST_F(GenerateKeysTest, MoreThanThousandDurationsEndTheRunWithError9) {
  // BIG: two codes of 18 frames of 35 durations, 1260 in all.
  Load("PROTOCOL = ACME32\r\nDEVICECODE = 5\r\n[KEYCODES]\r\nPOWER = 12\r\nBIG = 5,12,18/5,13,18\r\nLAST = 14\r\n");
  EXPECT_FALSE(RunCommand(p, [this] { GenerateKeys(p, "ACME32", 5, 0, 0); }));
  EXPECT_EQ(t.host.messages, std::vector<std::string>{"Run-time error '9':\r\n\r\nSubscript out of range"});
  ASSERT_EQ(stored.size(), 1u);
  EXPECT_EQ(stored[0].Label, "POWER");
}

TEST_F(GenerateKeysTest, AutoGenerateBuildsTheRangeWithoutWriting) {
  Load("PROTOCOL = ACME32\r\n[KEYCODES]\r\n");
  p.F.Autogen.value = 1;
  p.F.RPT.value = true;
  EXPECT_TRUE(GenerateKeys(p, "ACME32", 5, 7, 8));
  EXPECT_TRUE(stored.empty());
  // "Repeat": all of it is the repeated part; the fourth bit of 8 is at 26 (F starts at 19).
  EXPECT_EQ(p.Burst.BurstLabel + " " + p.Burst.BurstDescription + " " + Counts(),
            "Function: 008 ACME-TV100 (5,8) 0+35=35");
  EXPECT_EQ(p.Burst.BurstDurations(26), -1680);
}

TEST_F(GenerateKeysTest, DispatchPicksTheWriterByFormatAndExactProtocolName) {
  p.Keys.entries.push_back(KeyEntry{"POWER", "", false, 0, {KeyCode{"", 0, 12, 1}}, {}, {}});
  p.Protocol.Frequency = 36000;
  std::string formats;
  for (std::string name : {"RC5", "RC6", "RC5X", "rc5"}) {
    p.Protocol.ProtocolName = name;
    DispatchEntry(p, 1, 0);
    formats += stored.back().FormatText;
  }
  EXPECT_EQ(formats, "0x50000x60000x00000x0000");
  p.FormatPronto = false;
  p.FormatSlinkTxRx = true;  // Tx/Rx alone: no writer
  DispatchEntry(p, 1, 0);
  EXPECT_EQ(stored.size(), 4u);
  EXPECT_TRUE(p.SlinkText.empty() && t.host.messages.empty());
}

TEST_F(GenerateKeysTest, AutogenAndOutputClicksSwapFlagsAndPanels) {
  p.F.RPT.value = true;
  p.F.Autogen.value = 1;
  Autogen_Click(p);
  EXPECT_TRUE(p.F.Ot.value && !p.F.RPT.value && p.F.Frame2.visible && p.F.Frame4.visible);
  EXPECT_FALSE(p.F.Lex.visible || p.F.Label5.visible);
  p.F.Autogen.value = 0;
  Autogen_Click(p);
  EXPECT_FALSE(p.F.Frame2.visible || p.F.Frame4.visible);
  EXPECT_TRUE(p.F.Lex.visible && p.F.Label5.visible);

  p.F.Output.items = {"Philips Pronto", "Nirvis TX Only", "Nirvis Tx/Rx", "ADI Leopard", "Something else",
                      "pronto tx only"};
  EXPECT_EQ(ClickOutput(3), "---A");
  EXPECT_TRUE(p.F.ADI.visible && !p.F.DBI.visible);
  EXPECT_EQ(ClickOutput(1), "-T--");
  EXPECT_TRUE(p.F.Slnk.visible && !p.F.ADI.visible);
  EXPECT_EQ(ClickOutput(2), "--R-");
  EXPECT_EQ(ClickOutput(0), "P---");
  EXPECT_TRUE(p.F.DBI.visible && p.F.Check1.enabled);
  EXPECT_FALSE(p.F.Slnk.visible || p.F.ADI.visible || p.F.status.visible);
  // No match changes nothing; "PRONTO" is tested before "ONLY".
  std::string flags;
  for (int entry : {1, 4, 5}) flags += ClickOutput(entry);
  EXPECT_EQ(flags, "-T---T--P---");
}

TEST_F(GenerateKeysTest, BundledToshibaTvPowerIsThePublishedNecFrameInProntoHex) {
  p.DeviceLibraryPath = BW_SOURCE_DIR "/Device Library";
  p.F.Lex.items = {"TOSHIBA TV"};
  p.F.Autogen.value = 1;
  p.F.txtdescr.text = "typed";
  p.F.Lex.listIndex = 0;
  Lex_Click(p);  // clears the description first, so it is always the device's own
  EXPECT_EQ(p.Protocol.ProtocolName + " " + p.F.txtdescr.text + " " + p.F.ADIdescr.text + " " +
                std::to_string(p.F.Autogen.value), "NEC TOSHIBA-CT-90325 TOSHIBA-CT-90325 0");
  // Show the first key in HEX, then Finish: the rest go through unseen.
  p.F.Check1.value = 1;
  p.DBG.HexOPT.value = 1;
  t.host.Click([] {});
  t.host.Click([this] { Finish_Click(p); });
  p.F.status.text = "busy";
  p.DBG.entryCounter = 7;
  EXPECT_TRUE(GenerateKeys(p, p.F.format.text, 64, 0, 0));
  EXPECT_EQ(static_cast<int>(stored.size()), p.Keys.UpperBound());
  EXPECT_EQ(p.F.DvcMfglist.text + "/" + p.F.DvcTypeList.text + "/" + p.F.DvcModelList.text, "TOSHIBA/TV/CT-90325");
  EXPECT_EQ(p.F.status.text, "");
  // The entry counter reset, then the one entry shown.
  EXPECT_EQ((std::vector<int>{p.DBG.entryCounter, t.host.detailsShown}), (std::vector<int>{1, 1}));
  // Device 64, function 18, each with its complement, LSB first, in 26.3 us cycles:
  // 9000/4500 -> 0156 00AB, 562/562 -> 0015 0015, 562/1686 -> 0015 0040; stop 562
  // and the pad to 108 ms, 39986 -> 05F1; repeat 9000/2250/562 and 96188 -> 0E4A.
  std::string bits;
  for (char c : std::string("00000010111111010100100010110111")) bits += c == '1' ? "0015 0040 " : "0015 0015 ";
  EXPECT_EQ(p.DBG.Text1.text, "0000 006A 0022 0002 \r\n0156 00AB " + bits + "0015 05F1 0156 0056 0015 0E4A ");
  EXPECT_TRUE(t.host.messages.empty());
}

}  // namespace
}  // namespace bw
