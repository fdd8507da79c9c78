// The two Pronto record writers and the code text: the record each hands on,
// the status line, and the code text in decimal and hexadecimal words.
#include <gtest/gtest.h>

#include <vector>

#include "pronto/pronto_code.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

/// 38 kHz: word 109 encodes 38028.87 Hz, a cycle is 26.2958 us; so 9000 us ->
/// 342.26 -> 342, 4500 -> 171, 560 -> 21.30 -> 21, 1680 -> 63.89 -> 64.
struct ProntoWriter : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  std::vector<IRCodeRecord> stored;

  void SetUp() override {
    p.F.DvcMfglist.text = "ACME";
    p.F.Model.text = "TV100";
    p.Protocol.Frequency = 38000;
    p.IRCodeSink = [this](Program& q) { stored.push_back(q.IRCode); };
  }
  void SetBurst(std::vector<int32_t> durations, int onceCount) {
    for (std::size_t i = 0; i < durations.size(); ++i) p.Burst.BurstDurations(int(i) + 1) = durations[i];
    p.Burst.OnceCount = int16_t(onceCount);
    p.Burst.RepeatPartCount = int16_t(durations.size() - onceCount);
    p.Burst.TotalCount = int16_t(durations.size());
  }
  void AddKey(const std::string& label, std::vector<std::pair<int32_t, int32_t>> codes) {
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
  EXPECT_EQ(r.BurstText, "342 171 21 64 21 ");
  EXPECT_EQ(p.F.status.text, "Function=POWER (12,5)");
  EXPECT_EQ(t.host.doEventsCalls, 1);

  // 7 once entries -> 3.5 -> 4; an empty label becomes the function code as "007".
  p.CurrentFunctionCode = 7;
  p.Burst.BurstLabel.clear();
  SetBurst({560, -560, 560, -560, 560, -560, 560, 9000, -4500, 560, -560, 560}, 7);
  ProntoWriteCode(p, 5);
  ASSERT_EQ(stored.size(), 2u);
  EXPECT_EQ(stored[1].OnceCount, 4);
  EXPECT_EQ(stored[1].RepeatCount, 2);  // 5 / 2
  EXPECT_EQ(stored[1].Label, "007");
}

TEST_F(ProntoWriter, CodeTextReadsCountsFromTheLabelsAndListsDurations) {
  p.IRCode.BurstText = "342 70000 ";
  p.DBG.lblOnceCount.caption = "1";
  p.DBG.lblRepeatCount.caption = "1";
  ShowProntoText(p);  // words past the end of the burst text read as 0
  EXPECT_EQ(p.DBG.Text1.text, "0000 0106 0001 0001 \r\n0342 70000 0000 0000 ");
  p.DBG.HexOPT.value = 1;
  ShowProntoText(p);  // 70000 = 0x11170: the low 16 bits
  EXPECT_EQ(p.DBG.Text1.text, "0000 006A 0001 0001 \r\n0156 1170 0000 0000 ");
  SetBurst({-4500, 9999, -10000, 560}, 4);
  ShowBurstDurations(p);
  EXPECT_EQ(p.DBG.Text1.text, "-4500 9999 -10000 \r\n\r\n0560 ");
}

TEST_F(ProntoWriter, BiphaseKeysArePredefinedCodesWithoutDetails) {
  AddKey("POWER", {{0, 12}});
  AddKey("PLAY", {{5, 12}, {5, 13}});
  AddKey("", {{1, 2}});
  p.F.Check1.value = 1;
  p.CurrentFunctionCode = 9;
  ProntoWriteBiphaseCode(p, 1, "RC6");
  ProntoWriteBiphaseCode(p, 2, "RC5");
  EXPECT_EQ(p.F.status.text, "Function=PLAY (13,5)");
  ProntoWriteBiphaseCode(p, 3, "RC5X");
  ASSERT_EQ(stored.size(), 3u);
  EXPECT_EQ(t.host.detailsShown, 0);

  const IRCodeRecord& rc6 = stored[0];
  EXPECT_EQ(rc6.FormatText + "|" + rc6.BurstText + "|" + rc6.FullText, "0x6000|00 12|ACME-TV100 (0,12)");
  EXPECT_EQ(rc6.OnceCount, 1);
  EXPECT_EQ(rc6.RepeatCount, 0);
  EXPECT_EQ(rc6.CarrierWord, 0);

  EXPECT_EQ(stored[1].FormatText, "0x5001");
  EXPECT_EQ(stored[1].BurstText, "05 12 05 13");
  EXPECT_EQ(stored[1].FullText, "ACME-TV100 (5,12)-(5,13)");
  EXPECT_EQ(stored[1].KeyCode2, 13);

  EXPECT_EQ(stored[2].FormatText, "0x6000");  // any name but RC5
  EXPECT_EQ(stored[2].Label, "009");
}

}  // namespace
}  // namespace bw
