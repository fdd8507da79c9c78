// The key generator over devices in a temporary Device Library: the durations
// each kind of key produces, which writer receives it, and the refusals and
// errors that skip a code or end the run.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "generate/generate.h"
#include "input/defines.h"
#include "input/device_file.h"
#include "shell/command.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

using Durations = std::vector<int32_t>;

/// ACME32: time base 560, ONE 560/-1680, ZERO 560/-560, LSB first; once part
/// LEAD 8960/-4480, D:8, F:8, a 560 trailer (35 durations); repeat LEAD, F:4.
constexpr const char* kAcme32 =
    "PROTOCOL = ACME32\r\nFREQUENCY = 38000\r\nTIMEBASE = 560\r\nONE = 1,-3\r\nZERO = 1,-1\r\n"
    "DEFINE LEAD = [16 -8]\r\nDEFINE TAIL = [1]\r\nFORM = LEAD,D:8,F:8,TAIL;LEAD,F:4\r\n";
/// OTHER: time base 100, ONE 500/-1500, ZERO 500/-500, form F:4.
constexpr const char* kOther =
    "PROTOCOL = OTHER\r\nFREQUENCY = 40000\r\nTIMEBASE = 100\r\nONE = 5,-15\r\nZERO = 5,-5\r\nFORM = F:4\r\n";
constexpr const char* kHeader = "MANUFACTURER = Acme\r\nDEVICE = Tv\r\nMODEL = Tv100\r\n";

const Durations kLead{8960, -4480};
const Durations kTail{560};

/// ACME32 durations of bits written in the order sent.
Durations Bits(const std::string& sent) {
  Durations out;
  for (char c : sent) out.insert(out.end(), {560, c == '1' ? -1680 : -560});
  return out;
}
Durations Join(std::initializer_list<Durations> parts) {
  Durations out;
  for (const Durations& part : parts) out.insert(out.end(), part.begin(), part.end());
  return out;
}

struct GenerateKeysTest : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  test::TempDir library;
  std::vector<IRCodeRecord> stored;

  void SetUp() override {
    library.Write("Acme32.irp", kAcme32);
    library.Write("Other.irp", kOther);
    p.DeviceLibraryPath = library.path().string();
    p.IRCodeSink = [this](Program& q) { stored.push_back(q.IRCode); };
  }
  void Load(const std::string& protocolAndKeys) {
    library.Write("Dev.dvc", kHeader + protocolAndKeys);
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
};

TEST_F(GenerateKeysTest, KeysBuildOnceEntriesThenTheRepeatedPart) {
  Load("PROTOCOL = ACME32\r\nDEVICECODE = 5\r\n[KEYCODES]\r\nPOWER = 12\r\nMUTE = 13 ; 14\r\nPLAY = 20/21\r\n"
       "INPUT = 7,LEAD=[20 -10]\r\n");
  const BurstSequence& b = p.Burst;
  // Device 5 and function 12 LSB first; the default repeat part sends 12 in 4 bits.
  EXPECT_EQ(Built(1, 46), Join({kLead, Bits("10100000"), Bits("00110000"), kTail, kLead, Bits("0011"), {0}}));
  EXPECT_EQ(b.BurstLabel, "POWER");
  EXPECT_EQ(b.OnceCount, 35);
  EXPECT_EQ(b.RepeatPartCount, 10);
  EXPECT_EQ(b.TotalCount, 45);
  EXPECT_EQ(b.BurstDescription, "ACME-TV100 (5,12)");
  // A second code list is the repeated part, and its first entry starts the description anew.
  EXPECT_EQ(Built(2, 45), Join({kLead, Bits("10100000"), Bits("10110000"), kTail, kLead, Bits("0111")}));
  EXPECT_EQ(b.BurstDescription, "ACME-TV100 (5,14)");
  // Codes of one list follow each other; the default repeat uses the last function code.
  EXPECT_EQ(Built(3, 80), Join({kLead, Bits("10100000"), Bits("00101000"), kTail, kLead, Bits("10100000"),
                                Bits("10101000"), kTail, kLead, Bits("1010")}));
  EXPECT_EQ(b.OnceCount, 70);
  EXPECT_EQ(b.BurstDescription, "ACME-TV100 (5,20)-(5,21)");
  // A key option redefines LEAD (20 and 10 units of 560) for that key.
  EXPECT_EQ(Built(4, 35), Join({{11200, -5600}, Bits("10100000"), Bits("11100000"), kTail}));
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
  EXPECT_EQ(Built(1, 18), Join({{500, -500, 500, -1500, 500, -500, 500, -500}, kLead, Bits("0100")}));
  EXPECT_EQ(p.Burst.OnceCount, 8);
  EXPECT_EQ(p.Protocol.ProtocolName, "ACME32");
  EXPECT_EQ(p.F.format.text, "ACME32");
  EXPECT_TRUE(t.host.messages.empty());

  EXPECT_EQ(Built(2, 10), Join({kLead, Bits("1100")}));
  EXPECT_EQ(p.Burst.OnceCount, 0);
  EXPECT_EQ(t.host.messages, std::vector<std::string>{"Protocol NOPE Not in Device Library"});
}

TEST_F(GenerateKeysTest, RawDeviceIsRefusedForProntoAndBuiltOnlyForSlinkTxOnly) {
  Load("PROTOCOL = RAW\r\n[KEYCODES]\r\nPOWER = 9000 -4500 560 -560\r\n");
  ASSERT_EQ(p.F.format.text, "RAW");
  p.F.status.text = "busy";
  EXPECT_FALSE(GenerateKeys(p, "RAW", 0, 0, 0));
  EXPECT_EQ(t.host.messages,
            std::vector<std::string>{"Raw format only permitted for Slink Option, not for Pronto or ADI"});
  EXPECT_EQ(p.F.status.text, "busy");

  p.FormatPronto = false;
  p.FormatSlinkTxOnly = true;
  EXPECT_TRUE(GenerateKeys(p, "RAW", 0, 0, 0));
  EXPECT_EQ(t.host.messages.size(), 1u);
  EXPECT_EQ(p.Burst.OnceCount, 4);
  EXPECT_EQ(p.Burst.RepeatPartCount, 0);
  EXPECT_EQ(p.Burst.TotalCount, 0);  // left from the reset
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
  const BurstSequence& b = p.Burst;
  EXPECT_EQ(b.BurstLabel, "Function: 008");
  EXPECT_EQ(b.BurstDescription, "ACME-TV100 (5,8)");
  EXPECT_EQ(b.OnceCount, 0);  // "Repeat": all of it is the repeated part
  EXPECT_EQ(b.RepeatPartCount, 35);
  EXPECT_EQ(b.BurstDurations(26), -1680);  // the fourth bit of 8 (F starts at 19)
}

TEST_F(GenerateKeysTest, DispatchPicksTheWriterByFormatAndExactProtocolName) {
  p.Keys.entries.push_back(KeyEntry{"POWER", "", false, 0, {KeyCode{"", 0, 12, 1}}, {}, {}});
  p.Protocol.Frequency = 36000;
  for (std::string name : {"RC5", "RC6", "RC5X", "rc5"}) {
    p.Protocol.ProtocolName = name;
    DispatchEntry(p, 1, 0);
  }
  ASSERT_EQ(stored.size(), 4u);
  EXPECT_EQ(stored[0].FormatText + stored[1].FormatText + stored[2].FormatText + stored[3].FormatText,
            "0x50000x60000x00000x0000");

  p.FormatPronto = false;
  p.FormatSlinkTxRx = true;  // Tx/Rx alone: no writer
  DispatchEntry(p, 1, 0);
  EXPECT_EQ(stored.size(), 4u);
  EXPECT_TRUE(p.SlinkText.empty() && t.host.messages.empty());
}

}  // namespace
}  // namespace bw
