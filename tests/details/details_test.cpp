// The details dialog model: the values shown for an entry, the wait that only
// Next, Skip or Finish end, what Skip means for each writer, and the waveform
// geometry (one frame wide at x1, more time at x1/2 and x1/4, the offset).
#include <gtest/gtest.h>

#include <memory>

#include "adi/lir_test_support.h"
#include "details/details.h"
#include "pronto/pronto_code.h"
#include "runtime/run_time_error.h"
#include "slinke/slinke.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

struct Details : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  void SetUp() override {
    p.F.DvcMfglist.text = "Acme";
    p.F.DvcTypeList.text = "TV";
    p.F.Model.text = "TV100";
    p.Protocol.Frequency = 38000;
    p.Burst.BurstLabel = "Power";
    p.Burst.BurstDeviceCode = 4;
    p.Burst.BurstFunctionCode = 12;
    test::SetBurst(p, {9000, -4500, 560, -40000, 9000, -2250, 560}, 4);
    test::SetKeys(p, {"Power"});
  }
  /// Presses `handler` once the dialog waits; events the writer lets through before pass by.
  void PressWhenShown(void (*handler)(Program&)) {
    auto step = std::make_shared<std::function<void()>>();
    *step = [this, handler, step] {
      if (t.host.detailsShown > 0 && p.DBG.Next.enabled) handler(p);
      else t.host.Click(*step);
    };
    t.host.Click(*step);
  }
};

TEST_F(Details, ShowsTheEntryAndWaitsUntilNext) {
  p.FormatPronto = false;
  p.FormatADI = true;
  t.host.Click([] {});
  PressWhenShown(Next_Click);
  ShowEntryDetails(p, "ACME/TV100:POWER");
  const DetailsForm& d = p.DBG;
  std::vector<std::string> shown;
  for (const Label* l : {&d.lblManufacturer, &d.lblType, &d.lblModel, &d.lblTitle, &d.lblDeviceCode,
                         &d.lblFunctionCode, &d.lblCarrier, &d.lblOnceCount, &d.lblRepeatCount, &d.lblKeyLabel,
                         &d.lblBurstPairCount})
    shown.push_back(l->caption);
  // 38000 shown as stored with the old unit; 7 durations are 3 pairs and a last mark.
  EXPECT_EQ(shown, std::vector<std::string>({"Acme", "TV", "TV100", "ACME/TV100:POWER", "4", "12", "38000.00 KHZ",
                                             "4", "3", "Power", "4"}));
  EXPECT_EQ(d.BurstList.items, std::vector<std::string>({"9000", "-4500", "560", "-40000", "9000", "-2250", "560"}));
  EXPECT_EQ(d.Text1.text, "9000 -4500 0560 -40000 \r\n\r\n9000 -2250 0560 ") << "ADI lists the durations";
  EXPECT_EQ(t.host.doEventsCalls, 2);
  EXPECT_EQ(p.AdiKeyChoice, 1);
}

TEST_F(Details, SkipDuringAProntoOrSlinkeRunStillWritesTheEntry) {
  int stored = 0;
  p.IRCodeSink = [&stored](Program&) { ++stored; };
  p.F.Check1.value = 1;
  p.AdiKeyChoice = 1;
  PressWhenShown(Skip_Click);
  ProntoWriteCode(p, 0);
  EXPECT_EQ(stored, 1);
  EXPECT_EQ(p.AdiKeyChoice, 1) << "only ADI reads the choice";
  // Pronto counts pairs: 4 once durations are 2, 3 repeat durations 1.5 -> 2 (half to
  // even); the code text (38 kHz: word 106) is built from these labels.
  EXPECT_EQ(p.DBG.Text1.text.substr(0, 22), "0000 0106 0002 0002 \r\n");
  p.DBG.HexOPT.value = 1;
  HexOPT_Click(p);
  EXPECT_EQ(p.DBG.Text1.text.substr(0, 22), "0000 006A 0002 0002 \r\n");

  p.FormatPronto = false;
  p.FormatSlinkTxOnly = true;
  test::SetBurst(p, {900, -900});
  PressWhenShown(Skip_Click);
  WriteSlinkRawEntry(p, 1, "Power");
  EXPECT_EQ(t.host.detailsShown, 2);
  EXPECT_EQ(p.SlinkText, "\r\n900 -900 :Power\r\n");
  EXPECT_EQ(p.DBG.Text1.text, "0900 -0900 ");
}

double LastX(const std::vector<WavePoint>& line) { return line.empty() ? -1 : line.back().x; }

TEST_F(Details, NecAndSonyFramesFillTheViewAtX1AndSmallerScalesShowMore) {
  // NEC: a 108 ms once frame, then a 108 ms repeat frame. Sony: a 25 ms repeated part only.
  std::vector<int32_t> nec = {9000, -4500};
  for (int bit = 0; bit < 32; ++bit) nec.insert(nec.end(), {560, bit % 2 ? -1690 : -560});
  nec.insert(nec.end(), {560, -(108000 - 13500 - 16 * 1120 - 16 * 2250 - 560)});
  int necOnce = static_cast<int>(nec.size());
  nec.insert(nec.end(), {9000, -2250, 560, -96190});
  test::SetBurst(p, nec, necOnce);
  WaveformGeometry g = DrawWaveform(p);
  EXPECT_EQ(g.viewWidth, 108000);
  EXPECT_EQ(LastX(g.once), 108000);
  EXPECT_EQ(LastX(g.repeat), 216000);
  Option1_Click(p, 1);
  g = DrawWaveform(p);
  EXPECT_EQ(g.viewWidth, 108000);
  EXPECT_EQ(LastX(g.repeat), 108000) << "x1/2: the repeat frame comes into view";
  Option1_Click(p, 2);
  EXPECT_FALSE(p.DBG.Option1[0].value || p.DBG.Option1[1].value);
  g = DrawWaveform(p);
  EXPECT_EQ(g.once[2].x, 2250) << "the 9 ms lead-in drawn at a quarter";
  EXPECT_EQ(LastX(g.repeat), 54000);

  test::SetBurst(p, {100, -200, 300, 400}, 3);  // a step trace, still at x1/4
  std::vector<std::pair<double, double>> once;
  for (const auto& pt : DrawWaveform(p).once) once.emplace_back(pt.x, pt.y);
  EXPECT_EQ(once, (std::vector<std::pair<double, double>>{
                      {0, 0}, {0, 1}, {25, 1}, {25, 0}, {75, 0}, {75, 1}, {150, 1}, {150, 0}}));
  Option1_Click(p, 0);
  std::vector<int32_t> sony = {2400};
  for (int bit = 0; bit < 12; ++bit) sony.insert(sony.end(), {-600, bit % 3 ? 600 : 1200});
  sony.push_back(-(25000 - 2400 - 4 * 1800 - 8 * 1200));
  test::SetBurst(p, sony, 0);
  g = DrawWaveform(p);
  EXPECT_TRUE(g.once.empty());
  EXPECT_EQ(g.viewWidth, 25000);
  EXPECT_EQ(LastX(g.repeat), 25000);
}

TEST_F(Details, AdjustSuffixMovesTheViewFivePercentAndOverflowsAtTheTop) {
  test::SetBurst(p, {1000, -1000, 500, -7500});
  Command1_Click(p);
  WaveformGeometry g = DrawWaveform(p);
  EXPECT_EQ(g.once.front().x, -500);
  EXPECT_EQ(LastX(g.once), 9500);
  Option1_Click(p, 1);
  EXPECT_EQ(LastX(DrawWaveform(p).once), 4500) << "the shift is in view units at any scale";
  p.WaveformOffset = 32763;
  EXPECT_EQ(test::ErrorNumber([&] { Command1_Click(p); }), 6);
}

}  // namespace
}  // namespace bw
