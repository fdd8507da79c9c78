// The Pronto frequency word (1 000 000 / (f x 0.241246) rounded half to even,
// lowered by the calibration steps), the two record writers (the record each
// hands on, the status line) and the code text in decimal and hexadecimal words.
#include <gtest/gtest.h>

#include "adi/lir_test_support.h"
#include "pronto/pronto_code.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

TEST(ProntoFrequencyWord, CorrectedWordsBandEdgesAndErrors) {
  // 38000 -> 109.08 -> 109 - 3; 40000 -> 103.63 -> 104 - 3; 36000 -> 115.14 -> 115 - 4; then
  // frequencies giving the raw words 27, 28, 248 and 249 (1e6 / (w x 0.241246)).
  std::vector<int> words;
  for (int32_t f : {38000, 40000, 36000, 153524, 148041, 16714, 16647, 0, -38000})
    words.push_back(ProntoFrequencyWord(f));
  EXPECT_EQ(words, (std::vector<int>{106, 101, 111, 27, 27, 240, 240, 0, 0}));
  EXPECT_EQ(test::ErrorNumber([] { ProntoFrequencyWord(100); }), err::kOverflow);  // 41451
  EXPECT_NEAR(ProntoActualCarrier(38000), 38028.87f, 0.01f);  // 1e6 / (109 x 0.241246)
  EXPECT_EQ(test::ErrorNumber([] { ProntoActualCarrier(0); }), err::kDivisionByZero);
  EXPECT_EQ(test::ErrorNumber([] { ProntoActualCarrier(10000000); }), err::kDivisionByZero);  // 0.41: word 0
}

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
  void AddKey(const std::string& label, std::vector<std::pair<int32_t, int32_t>> codes) {
    KeyEntry key;
    key.Label = label;
    for (auto [first, second] : codes) key.FirstCodes.push_back(KeyCode{"", first, second, 1});
    p.Keys.entries.push_back(key);
  }
  /// Format word, carrier word, pair counts and the code text of a stored record.
  static std::string Words(const IRCodeRecord& r) {
    return r.FormatText + " " + std::to_string(r.CarrierWord) + " " + std::to_string(r.OnceCount) + " " +
           std::to_string(r.RepeatCount) + " |" + r.BurstText + "|";
  }
};

TEST_F(ProntoWriter, PulseRecordHoldsCycleCountsAndCorrectedWord) {
  p.Burst.BurstLabel = "POWER";
  p.Burst.BurstDeviceCode = 5;
  p.Burst.BurstFunctionCode = 12;
  p.Burst.BurstDescription = "ACME-TV100 (5,12)";
  test::SetBurst(p, {9000, -4500, 560, -1680, 560});
  ProntoWriteCode(p, 5);
  ASSERT_EQ(stored.size(), 1u);
  const IRCodeRecord& r = stored[0];
  EXPECT_EQ(std::to_string(r.KeyCode1) + " " + std::to_string(r.KeyCode2) + " " + r.Label + " " + r.FullText,
            "5 12 POWER ACME-TV100 (5,12)");
  EXPECT_EQ(Words(r), "0x0000 106 2 0 |342 171 21 64 21 |");  // 5 / 2 = 2.5, half to even
  EXPECT_EQ(p.F.status.text, "Function=POWER (12,5)");
  EXPECT_EQ(t.host.doEventsCalls, 1);

  // 7 once entries -> 3.5 -> 4, 5 repeat -> 2; an empty label becomes the function code as "007".
  p.CurrentFunctionCode = 7;
  p.Burst.BurstLabel.clear();
  test::SetBurst(p, {560, -560, 560, -560, 560, -560, 560, 9000, -4500, 560, -560, 560}, 7);
  ProntoWriteCode(p, 5);
  ASSERT_EQ(stored.size(), 2u);
  EXPECT_EQ(std::to_string(stored[1].OnceCount) + " " + std::to_string(stored[1].RepeatCount) + " " + stored[1].Label,
            "4 2 007");
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
  test::SetBurst(p, {-4500, 9999, -10000, 560});
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
  EXPECT_EQ(Words(stored[0]) + stored[0].FullText, "0x6000 0 1 0 |00 12|ACME-TV100 (0,12)");
  EXPECT_EQ(stored[1].FormatText + "|" + stored[1].BurstText + "|" + stored[1].FullText + "|" +
                std::to_string(stored[1].KeyCode2), "0x5001|05 12 05 13|ACME-TV100 (5,12)-(5,13)|13");
  EXPECT_EQ(stored[2].FormatText + " " + stored[2].Label, "0x6000 009");  // any name but RC5
}

}  // namespace
}  // namespace bw
