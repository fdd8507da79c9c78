// The key generator over a device loaded from a temporary Device Library:
// which durations each kind of key produces, which writer receives it, and the
// refusals and errors that end or skip work.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "generate/generate.h"
#include "input/defines.h"
#include "input/device_file.h"
#include "pronto/pronto_code.h"
#include "shell/command.h"
#include "test_library.h"

namespace bw {
namespace {

using test::AcmeBits;
using test::BurstHead;
using test::BurstRange;
using test::Join;

const std::vector<int32_t> kLead{8960, -4480};
const std::vector<int32_t> kTail{560};

struct GenerateKeysTest : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  test::TempDir library;
  std::vector<IRCodeRecord> stored;

  void SetUp() override {
    test::WriteTestLibrary(library, p);
    p.IRCodeSink = [this](Program& q) { stored.push_back(q.IRCode); };
  }
  void Load(const std::string& device) {
    LoadDeviceFile(p, device);
    ASSERT_GT(p.Keys.UpperBound(), 0) << device << " did not load";
  }
  bool Run() { return GenerateKeys(p, p.F.format.text, 5, 0, 0); }
  /// Builds one key as GenerateKeys does, without handing it on (the
  /// descriptions use the manufacturer as GenerateKeys copies it first).
  void Build(int key) {
    p.F.DvcMfglist.text = p.F.MFG.text;
    ResetBurstSequence(p);
    BuildKeySequence(p, key);
  }
};

TEST_F(GenerateKeysTest, SingleCodeKeyIsOnceFormThenRepeatForm) {
  Load("ACMETV");
  Build(1);  // POWER = 12, device 5
  const BurstSequence& b = p.Burst;
  EXPECT_EQ(b.BurstLabel, "POWER");
  EXPECT_EQ(b.OnceCount, 35);
  EXPECT_EQ(b.RepeatPartCount, 10);
  EXPECT_EQ(b.TotalCount, 45);
  // 5 and 12 sent LSB first in 8 bits; the repeat part sends 12 in 4 bits.
  EXPECT_EQ(BurstHead(p, 45),
            Join({kLead, AcmeBits("10100000"), AcmeBits("00110000"), kTail, kLead, AcmeBits("0011")}));
  EXPECT_EQ(BurstRange(p, 46, 46), std::vector<int32_t>{0});
  EXPECT_EQ(b.BurstDeviceCode, 5);
  EXPECT_EQ(b.BurstFunctionCode, 12);
  EXPECT_EQ(b.BurstDescription, "ACME-TV100 (5,12)");
}

TEST_F(GenerateKeysTest, SecondCodeListBuildsTheRepeatedPart) {
  Load("ACMETV");
  Build(2);  // MUTE = 13 ; 14
  const BurstSequence& b = p.Burst;
  EXPECT_EQ(b.OnceCount, 35);
  EXPECT_EQ(b.RepeatPartCount, 10);
  EXPECT_EQ(BurstHead(p, 45),
            Join({kLead, AcmeBits("10100000"), AcmeBits("10110000"), kTail, kLead, AcmeBits("0111")}));
  // The repeat list starts its own description; its codes are the last built.
  EXPECT_EQ(b.BurstDescription, "ACME-TV100 (5,14)");
  EXPECT_EQ(b.BurstFunctionCode, 14);
}

TEST_F(GenerateKeysTest, MultiCodeKeyAppendsEntriesAndDescriptions) {
  Load("ACMETV");
  Build(3);  // PLAY = 20/21
  const BurstSequence& b = p.Burst;
  EXPECT_EQ(b.OnceCount, 70);
  EXPECT_EQ(b.RepeatPartCount, 10);
  EXPECT_EQ(BurstHead(p, 80), Join({kLead, AcmeBits("10100000"), AcmeBits("00101000"), kTail, kLead,
                                     AcmeBits("10100000"), AcmeBits("10101000"), kTail, kLead, AcmeBits("1010")}));
  EXPECT_EQ(b.BurstDescription, "ACME-TV100 (5,20)-(5,21)");
}

TEST_F(GenerateKeysTest, CodeNamingAnotherProtocolUsesItThenRestoresTheDevices) {
  Load("ACMETV");
  Build(4);  // AUX = (OTHER):1,2
  const BurstSequence& b = p.Burst;
  // OTHER sends 2 in 4 bits LSB first: 0,1,0,0 with its own 500/-500, 500/-1500.
  EXPECT_EQ(b.OnceCount, 8);
  EXPECT_EQ(BurstHead(p, 8), (std::vector<int32_t>{500, -500, 500, -1500, 500, -500, 500, -500}));
  // The default repeated part is ACME32's again, LEAD included (its symbols are back).
  EXPECT_EQ(b.RepeatPartCount, 10);
  EXPECT_EQ(BurstRange(p, 9, 18), Join({kLead, AcmeBits("0100")}));
  EXPECT_EQ(p.Protocol.ProtocolName, "ACME32");
  EXPECT_EQ(p.Protocol.Frequency, 38000);
  EXPECT_GT(LookupDefine(p, "LEAD"), 0);
  EXPECT_TRUE(t.host.messages.empty());
}

TEST_F(GenerateKeysTest, UnknownCodeProtocolIsReportedAndAddsNothing) {
  Load("ACMETV");
  Build(5);  // GHOST = (NOPE):1,3
  ASSERT_EQ(t.host.messages.size(), 1u);
  EXPECT_EQ(t.host.messages[0], "Protocol NOPE Not in Device Library");
  EXPECT_EQ(p.Burst.OnceCount, 0);
  // The key's repeated part is still built from the device's protocol.
  EXPECT_EQ(p.Burst.RepeatPartCount, 10);
  EXPECT_EQ(BurstHead(p, 10), Join({kLead, AcmeBits("1100")}));
  EXPECT_EQ(p.Protocol.ProtocolName, "ACME32");
}

TEST_F(GenerateKeysTest, KeyOptionRedefinesASymbolForThatKey) {
  Load("ACMETV");
  Build(6);  // INPUT = 7,LEAD=[20 -10]: 20 and 10 time-base units of 560
  EXPECT_EQ(BurstHead(p, 35),
            Join({{11200, -5600}, AcmeBits("10100000"), AcmeBits("11100000"), kTail}));
  EXPECT_TRUE(t.host.messages.empty());
}

TEST_F(GenerateKeysTest, ProntoRunStoresEveryKeyWithThirtyEightKilohertzWords) {
  Load("ACMETV");
  p.F.status.text = "busy";
  p.DBG.entryCounter = 3;
  EXPECT_TRUE(Run());
  ASSERT_EQ(stored.size(), 6u);
  EXPECT_EQ(p.F.DvcMfglist.text, "ACME");
  EXPECT_EQ(p.F.DvcTypeList.text, "TV");
  EXPECT_EQ(p.F.DvcModelList.text, "TV100");
  EXPECT_EQ(p.DBG.entryCounter, 0);
  EXPECT_EQ(p.F.status.text, "");

  const IRCodeRecord& power = stored[0];
  EXPECT_EQ(power.Label, "POWER");
  EXPECT_EQ(power.FullText, "ACME-TV100 (5,12)");
  EXPECT_EQ(power.KeyCode1, 5);
  EXPECT_EQ(power.KeyCode2, 12);
  EXPECT_EQ(power.CarrierWord, 106);
  EXPECT_EQ(power.OnceCount, 18);   // 35 / 2 = 17.5 -> 18
  EXPECT_EQ(power.RepeatCount, 5);  // 10 / 2
  // One cycle is 26.2958 us: 8960 -> 341, 4480 -> 170, 560 -> 21, 1680 -> 64.
  EXPECT_EQ(power.BurstText,
            "341 170 "
            "21 64 21 21 21 64 21 21 21 21 21 21 21 21 21 21 "
            "21 21 21 21 21 64 21 64 21 21 21 21 21 21 21 21 "
            "21 "
            "341 170 21 21 21 21 21 64 21 64 ");
  // A code of another protocol is still stored under the device's carrier.
  EXPECT_EQ(stored[3].Label, "AUX");
  EXPECT_EQ(stored[3].CarrierWord, 106);
  EXPECT_EQ(stored[3].BurstText.substr(0, 12), "19 19 19 57 ");

  // The code text of the first key, as the details dialog shows it in HEX.
  p.IRCode = power;
  p.DBG.HexOPT.value = 1;
  p.DBG.lblOnceCount.caption = "18";
  p.DBG.lblRepeatCount.caption = "5";
  ShowProntoText(p);
  EXPECT_EQ(p.DBG.Text1.text.substr(0, 42), "0000 006A 0012 0005 \r\n0155 00AA 0015 0040 ");
}

TEST_F(GenerateKeysTest, RawDeviceWithProntoIsRefusedOnce) {
  Load("ACMERAW");
  ASSERT_EQ(p.F.format.text, "RAW");
  p.F.status.text = "busy";
  EXPECT_FALSE(Run());
  ASSERT_EQ(t.host.messages.size(), 1u);
  EXPECT_EQ(t.host.messages[0], "Raw format only permitted for Slink Option, not for Pronto or ADI");
  EXPECT_TRUE(stored.empty());
  EXPECT_EQ(p.F.status.text, "busy");  // the run returns at once
}

TEST_F(GenerateKeysTest, RawKeyForSlinkTxOnlyIsBuiltButNotTotalled) {
  Load("ACMERAW");
  p.FormatPronto = false;
  p.FormatSlinkTxOnly = true;
  EXPECT_TRUE(Run());
  EXPECT_TRUE(t.host.messages.empty());
  EXPECT_EQ(p.Burst.OnceCount, 4);
  EXPECT_EQ(p.Burst.RepeatPartCount, 0);
  EXPECT_EQ(p.Burst.TotalCount, 0);
  EXPECT_EQ(BurstHead(p, 5), (std::vector<int32_t>{9000, -4500, 560, -560, 0}));
  // Raw keys are not handed to the Slink-e writer by the generator.
  EXPECT_TRUE(p.SlinkText.empty());
}

TEST_F(GenerateKeysTest, MoreThanThousandDurationsEndTheRunWithError9) {
  Load("ACMEBIG");
  bool completed = RunCommand(p, [this] { Run(); });
  EXPECT_FALSE(completed);
  ASSERT_EQ(t.host.messages.size(), 1u);
  EXPECT_EQ(t.host.messages[0], "Run-time error '9':\r\n\r\nSubscript out of range");
  // POWER was stored; BIG and the keys after it were not.
  ASSERT_EQ(stored.size(), 1u);
  EXPECT_EQ(stored[0].Label, "POWER");
}

TEST_F(GenerateKeysTest, AutoGenerateBuildsTheRangeWithoutWriting) {
  Load("ACMETV");
  p.F.Autogen.value = 1;
  p.F.RPT.value = true;
  p.F.Ot.value = false;
  EXPECT_TRUE(GenerateKeys(p, "ACME32", 5, 7, 8));
  EXPECT_TRUE(stored.empty());
  const BurstSequence& b = p.Burst;
  EXPECT_EQ(b.BurstLabel, "Function: 008");
  EXPECT_EQ(b.BurstDescription, "ACME-TV100 (5,8)");
  EXPECT_EQ(b.BurstFunctionCode, 8);
  EXPECT_EQ(p.CurrentDeviceCode, 5);
  // With "Repeat" chosen the whole once form is the repeated part.
  EXPECT_EQ(b.OnceCount, 0);
  EXPECT_EQ(b.RepeatPartCount, 35);
  EXPECT_EQ(b.TotalCount, 35);
  EXPECT_EQ(BurstHead(p, 35), Join({kLead, AcmeBits("10100000"), AcmeBits("00010000"), kTail}));
}

TEST_F(GenerateKeysTest, AutoGenerateOnceOptionHasNoRepeatedPart) {
  Load("ACMETV");
  p.F.Autogen.value = 1;
  p.F.Ot.value = true;
  p.F.RPT.value = false;
  EXPECT_TRUE(GenerateKeys(p, "ACME32", 3, 7, 7));
  EXPECT_EQ(p.Burst.BurstLabel, "Function: 007");
  EXPECT_EQ(p.Burst.OnceCount, 35);
  EXPECT_EQ(p.Burst.RepeatPartCount, 0);
  EXPECT_EQ(p.Burst.TotalCount, 35);
}

TEST_F(GenerateKeysTest, RecognizeOptionMarksBuiltEntriesForAdi) {
  Load("ACMETV");
  p.FormatPronto = false;
  p.FormatADI = true;
  p.F.ADIoptTX.value = true;
  Build(1);
  EXPECT_FALSE(p.Burst.MarkedForRecognize);
  p.F.ADIoptTX.value = false;
  p.F.ADIoptRX.value = true;
  Build(1);
  EXPECT_TRUE(p.Burst.MarkedForRecognize);
  // A reset clears the mark.
  ResetBurstSequence(p);
  EXPECT_FALSE(p.Burst.MarkedForRecognize);
}

// ---- dispatch ----

struct Dispatch : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  std::vector<IRCodeRecord> stored;

  void SetUp() override {
    p.IRCodeSink = [this](Program& q) { stored.push_back(q.IRCode); };
    KeyEntry key;
    key.Label = "POWER";
    key.FirstCodes.push_back(KeyCode{"", 0, 12, 1});
    p.Keys.entries.push_back(key);
    p.Protocol.Frequency = 36000;
    p.Burst.BurstLabel = "POWER";
    p.Burst.BurstDurations(1) = 889;
    p.Burst.BurstDurations(2) = -889;
    p.Burst.OnceCount = 2;
    p.Burst.TotalCount = 2;
  }
  std::string FormatTextFor(const std::string& protocol) {
    stored.clear();
    p.Protocol.ProtocolName = protocol;
    DispatchEntry(p, 1, 0);
    return stored.size() == 1 ? stored[0].FormatText : "(" + std::to_string(stored.size()) + " records)";
  }
};

TEST_F(Dispatch, OnlyExactRc5AndRc6TakeTheBiphaseWriter) {
  EXPECT_EQ(FormatTextFor("RC5"), "0x5000");
  EXPECT_EQ(FormatTextFor("RC6"), "0x6000");
  EXPECT_EQ(FormatTextFor("RC5X"), "0x0000");
  EXPECT_EQ(FormatTextFor("rc5"), "0x0000");
  EXPECT_EQ(FormatTextFor("NEC"), "0x0000");
}

TEST_F(Dispatch, SlinkTxRxAloneWritesNothing) {
  p.FormatPronto = false;
  p.FormatSlinkTxRx = true;
  p.SnapMode = true;
  p.Protocol.ProtocolName = "NEC";
  DispatchEntry(p, 1, 0);
  EXPECT_TRUE(stored.empty());
  EXPECT_TRUE(p.SlinkText.empty());
  EXPECT_TRUE(t.host.messages.empty());
  EXPECT_EQ(p.Lir.UpperBound(), 0);
}

}  // namespace
}  // namespace bw
