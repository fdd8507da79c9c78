// The details dialog model: the values shown for an entry, the wait that only Next,
// Skip or Finish end, what Skip means for each writer, and the waveform geometry.
#include <gtest/gtest.h>

#include <memory>

#include "adi/lir_test_support.h"
#include "details/details.h"
#include "pronto/pronto_code.h"
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
    std::weak_ptr<std::function<void()>> self = step;  // only the queued click owns it
    *step = [this, handler, self] {
      if (t.host.detailsShown > 0 && p.DBG.Next.enabled) handler(p);
      else if (auto again = self.lock()) t.host.Click([again] { (*again)(); });
    };
    t.host.Click([step] { (*step)(); });
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
  EXPECT_EQ((std::vector<int>{t.host.doEventsCalls, p.AdiKeyChoice}), (std::vector<int>{2, 1}));
}

TEST_F(Details, SkipDuringAProntoOrSlinkeRunStillWritesTheEntry) {
  int stored = 0;
  p.IRCodeSink = [&stored](Program&) { ++stored; };
  p.F.Check1.value = 1;
  p.AdiKeyChoice = 1;
  PressWhenShown(Skip_Click);
  ProntoWriteCode(p, 0);
  EXPECT_EQ((std::vector<int>{stored, p.AdiKeyChoice}), (std::vector<int>{1, 1})) << "only ADI reads the choice";
  // 4 once durations are 2 pairs, 3 repeat 1.5 -> 2 (half to even); 38 kHz is word 106.
  std::string header = p.DBG.Text1.text.substr(0, 22);
  p.DBG.HexOPT.value = 1;
  HexOPT_Click(p);
  EXPECT_EQ(header + p.DBG.Text1.text.substr(0, 22), "0000 0106 0002 0002 \r\n0000 006A 0002 0002 \r\n");

  p.FormatPronto = false;
  p.FormatSlinkTxOnly = true;
  test::SetBurst(p, {900, -900});
  PressWhenShown(Skip_Click);
  WriteSlinkRawEntry(p, 1, "Power");
  EXPECT_EQ(t.host.detailsShown, 2);
  EXPECT_EQ(p.SlinkText + "|" + p.DBG.Text1.text, "\r\n900 -900 :Power\r\n|0900 -0900 ");
}

double LastX(const std::vector<WavePoint>& line) { return line.empty() ? -1 : line.back().x; }
/// The view width and where the once and the repeat traces end (-1: no trace).
std::vector<double> Ends(const WaveformGeometry& g) { return {g.viewWidth, LastX(g.once), LastX(g.repeat)}; }

TEST_F(Details, FramesFillTheViewAtX1SmallerScalesShowMoreAndAdjustShiftsIt) {
  // NEC-like: a 108 ms once frame, then a 108 ms repeat frame.
  test::SetBurst(p, {9000, -4500, 560, -93940, 9000, -2250, 560, -96190}, 4);
  EXPECT_EQ(Ends(DrawWaveform(p)), (std::vector<double>{108000, 108000, 216000}));
  Option1_Click(p, 1);
  EXPECT_EQ(Ends(DrawWaveform(p)), (std::vector<double>{108000, 54000, 108000})) << "x1/2: the repeat comes into view";
  Option1_Click(p, 2);
  EXPECT_FALSE(p.DBG.Option1[0].value || p.DBG.Option1[1].value);
  EXPECT_EQ(Ends(DrawWaveform(p)), (std::vector<double>{108000, 27000, 54000}));
  EXPECT_EQ(DrawWaveform(p).once[2].x, 2250) << "the 9 ms lead-in drawn at a quarter";

  test::SetBurst(p, {100, -200, 300, 400}, 3);  // a step trace, still at x1/4
  std::vector<std::pair<double, double>> once;
  for (const auto& pt : DrawWaveform(p).once) once.emplace_back(pt.x, pt.y);
  EXPECT_EQ(once, (std::vector<std::pair<double, double>>{
                      {0, 0}, {0, 1}, {25, 1}, {25, 0}, {75, 0}, {75, 1}, {150, 1}, {150, 0}}));
  Option1_Click(p, 0);
  test::SetBurst(p, {2400, -600, 1200, -600, 600, -19600}, 0);  // Sony-like: a 25 ms repeated part only
  EXPECT_EQ(Ends(DrawWaveform(p)), (std::vector<double>{25000, -1, 25000}));

  // Adjust moves the view 5% of a frame, in view units at any scale, and overflows at the top.
  test::SetBurst(p, {1000, -1000, 500, -7500});
  Command1_Click(p);
  EXPECT_EQ((std::vector<double>{DrawWaveform(p).once.front().x, LastX(DrawWaveform(p).once)}),
            (std::vector<double>{-500, 9500}));
  Option1_Click(p, 1);
  EXPECT_EQ(LastX(DrawWaveform(p).once), 4500);
  p.WaveformOffset = 32763;
  EXPECT_EQ(test::ErrorNumber([&] { Command1_Click(p); }), 6);
}

}  // namespace
}  // namespace bw
