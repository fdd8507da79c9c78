// The two Pronto record writers and the code text: what each puts into the
// record it hands on, the status line, the details dialog, and the words shown
// in decimal and hexadecimal.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "details/details.h"
#include "pronto/pronto_code.h"
#include "runtime/run_time_error.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

/// 38 kHz: word 109 encodes 38028.87 Hz, one cycle is 26.295813 us. So
/// 9000 us -> 342.26 -> 342, 4500 -> 171.13 -> 171, 560 -> 21.30 -> 21,
/// 1680 -> 63.89 -> 64.
struct ProntoWriter : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  std::vector<IRCodeRecord> stored;

  void SetUp() override {
    p.F.DvcMfglist.text = "ACME";
    p.F.DvcTypeList.text = "TV";
    p.F.Model.text = "TV100";
    p.Protocol.Frequency = 38000;
    p.Protocol.ProtocolName = "NEC";
    p.IRCodeSink = [this](Program& q) { stored.push_back(q.IRCode); };
  }

  void SetBurst(const std::vector<int32_t>& durations, int onceCount) {
    BurstSequence& b = p.Burst;
    for (std::size_t i = 0; i < durations.size(); ++i) b.BurstDurations(static_cast<int>(i) + 1) = durations[i];
    b.OnceCount = static_cast<int16_t>(onceCount);
    b.RepeatPartCount = static_cast<int16_t>(static_cast<int>(durations.size()) - onceCount);
    b.TotalCount = static_cast<int16_t>(durations.size());
  }

  void SetKey(const std::string& label, std::vector<std::pair<int32_t, int32_t>> codes) {
    KeyEntry key;
    key.Label = label;
    for (auto [first, second] : codes) key.FirstCodes.push_back(KeyCode{"", first, second, 1});
    p.Keys.entries.push_back(key);
  }
};

TEST_F(ProntoWriter, PulseRecordHoldsCycleCountsAndCorrectedWord) {
  p.Burst.BurstLabel = "POWER";
  p.Burst.BurstDeviceCode = 5;
  p.Burst.BurstFunctionCode = 12;
  p.Burst.BurstDescription = "ACME-TV100 (5,12)";
  SetBurst({9000, -4500, 560, -1680, 560}, 5);

  ProntoWriteCode(p, 5);

  ASSERT_EQ(stored.size(), 1u);
  const IRCodeRecord& r = stored[0];
  EXPECT_EQ(r.KeyCode1, 5);
  EXPECT_EQ(r.KeyCode2, 12);
  EXPECT_EQ(r.Label, "POWER");
  EXPECT_EQ(r.FullText, "ACME-TV100 (5,12)");
  EXPECT_EQ(r.FormatText, "0x0000");
  EXPECT_EQ(r.CarrierWord, 106);
  EXPECT_EQ(r.OnceCount, 2);  // 5 / 2 = 2.5, half to even
  EXPECT_EQ(r.RepeatCount, 0);
  EXPECT_EQ(r.BurstText, "342 171 21 64 21 ");  // ends in a blank
  EXPECT_EQ(p.F.status.text, "Function=POWER (12,5)");
  EXPECT_EQ(t.host.doEventsCalls, 1);
  EXPECT_EQ(t.host.detailsShown, 0);
}

TEST_F(ProntoWriter, OddCountsRoundHalfToEven) {
  // 7 once entries -> 3.5 -> 4; 5 repeat entries -> 2.5 -> 2.
  SetBurst({560, -560, 560, -560, 560, -560, 560, 9000, -4500, 560, -560, 560}, 7);
  ProntoWriteCode(p, 0);
  ASSERT_EQ(stored.size(), 1u);
  EXPECT_EQ(stored[0].OnceCount, 4);
  EXPECT_EQ(stored[0].RepeatCount, 2);
}

TEST_F(ProntoWriter, EmptyLabelBecomesThreeDigitFunctionCode) {
  p.CurrentFunctionCode = 7;
  SetBurst({560, -560}, 2);
  ProntoWriteCode(p, 0);
  ASSERT_EQ(stored.size(), 1u);
  EXPECT_EQ(stored[0].Label, "007");
  EXPECT_EQ(p.F.status.text, "Function=007 (0,0)");
}

TEST_F(ProntoWriter, ShowDetailsWaitsBeforeStoringAndShowsHexWords) {
  p.F.Check1.value = 1;
  p.DBG.HexOPT.value = 1;
  p.Burst.BurstLabel = "POWER";
  SetBurst({9000, -4500, 560, -1680, 560}, 5);
  // The writer lets events through once before the dialog; then Next.
  t.host.Click([] {});
  t.host.Click([this] {
    EXPECT_TRUE(stored.empty()) << "stored before the user answered";
    Next_Click(p);
  });

  ProntoWriteCode(p, 0);

  EXPECT_EQ(t.host.detailsShown, 1);
  ASSERT_EQ(stored.size(), 1u);
  // Header: 0000, word 106 = 006A, once 2, repeat 0; then (2 + 0) x 2 words:
  // 342 = 0156, 171 = 00AB, 21 = 0015, 64 = 0040.
  EXPECT_EQ(p.DBG.Text1.text, "0000 006A 0002 0000 \r\n0156 00AB 0015 0040 ");
}

TEST_F(ProntoWriter, CodeTextInDecimalReadsCountsFromTheDialogLabels) {
  p.IRCode.BurstText = "342 171 21 64 21 21 ";
  p.DBG.HexOPT.value = 0;
  p.DBG.lblOnceCount.caption = "1";
  p.DBG.lblRepeatCount.caption = "1";
  ShowProntoText(p);
  EXPECT_EQ(p.DBG.Text1.text, "0000 0106 0001 0001 \r\n0342 0171 0021 0064 ");
}

TEST_F(ProntoWriter, HexWordsKeepOnlyTheLowSixteenBits) {
  // 70000 = 0x11170; the word shows 1170. Counts beyond the burst text read as 0.
  p.IRCode.BurstText = "70000 ";
  p.DBG.HexOPT.value = 1;
  p.DBG.lblOnceCount.caption = "1";
  p.DBG.lblRepeatCount.caption = "0";
  ShowProntoText(p);
  EXPECT_EQ(p.DBG.Text1.text, "0000 006A 0001 0000 \r\n1170 0000 ");
}

TEST_F(ProntoWriter, BurstListingBreaksAfterLongDurations) {
  SetBurst({9000, -4500, 560, 9999, -10000, 560}, 6);
  ShowBurstDurations(p);
  EXPECT_EQ(p.DBG.Text1.text, "9000 -4500 0560 9999 -10000 \r\n\r\n0560 ");
}

TEST_F(ProntoWriter, BiphaseRc6SingleEntryIsPredefinedCode) {
  SetKey("POWER", {{0, 12}});
  p.F.Check1.value = 1;  // never shown for bi-phase codes
  ProntoWriteBiphaseCode(p, 1, "RC6");
  ASSERT_EQ(stored.size(), 1u);
  const IRCodeRecord& r = stored[0];
  EXPECT_EQ(r.FormatText, "0x6000");
  EXPECT_EQ(r.OnceCount, 1);
  EXPECT_EQ(r.RepeatCount, 0);
  EXPECT_EQ(r.CarrierWord, 0);
  EXPECT_EQ(r.BurstText, "00 12");
  EXPECT_EQ(r.FullText, "ACME-TV100 (0,12)");
  EXPECT_EQ(r.Label, "POWER");
  EXPECT_EQ(p.F.status.text, "Function=POWER (12,0)");
  EXPECT_EQ(t.host.detailsShown, 0);
}

TEST_F(ProntoWriter, BiphaseRc5TwoEntriesCountUpFromBase) {
  SetKey("PLAY", {{5, 12}, {5, 13}});
  ProntoWriteBiphaseCode(p, 1, "RC5");
  ASSERT_EQ(stored.size(), 1u);
  const IRCodeRecord& r = stored[0];
  EXPECT_EQ(r.FormatText, "0x5001");
  EXPECT_EQ(r.OnceCount, 2);
  EXPECT_EQ(r.BurstText, "05 12 05 13");
  EXPECT_EQ(r.FullText, "ACME-TV100 (5,12)-(5,13)");
  EXPECT_EQ(r.KeyCode1, 5);
  EXPECT_EQ(r.KeyCode2, 13);
  EXPECT_EQ(p.F.status.text, "Function=PLAY (13,5)");
}

TEST_F(ProntoWriter, BiphaseAnyOtherNameUsesRc6Base) {
  SetKey("", {{1, 2}});
  p.CurrentFunctionCode = 9;
  ProntoWriteBiphaseCode(p, 1, "RC5X");
  ASSERT_EQ(stored.size(), 1u);
  EXPECT_EQ(stored[0].FormatText, "0x6000");
  EXPECT_EQ(stored[0].Label, "009");
}

TEST_F(ProntoWriter, BiphaseKeyOutsideTheTableIsSubscriptError) {
  SetKey("POWER", {{0, 12}});
  try {
    ProntoWriteBiphaseCode(p, 2, "RC6");
    FAIL() << "no error";
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), err::kSubscriptOutOfRange);
  }
  EXPECT_TRUE(stored.empty());
}

TEST(ProntoPanel, ShowsDatabaseFrameOnly) {
  test::TestProgram t;
  MainForm& f = t.p.F;
  f.DBI.visible = false;
  f.Check1.enabled = false;
  ShowProntoOutput(t.p);
  EXPECT_TRUE(f.DBI.visible);
  EXPECT_TRUE(f.Check1.enabled);
  EXPECT_FALSE(f.Slnk.visible);
  EXPECT_FALSE(f.ADI.visible);
  EXPECT_FALSE(f.status.visible);
}

}  // namespace
}  // namespace bw
