// The details dialog model: the values shown for an entry, the wait that only Next,
// Skip or Finish end, what Skip means for each writer, and the waveform geometry.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
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

/// The window and the marks in it as one line: "start+width: a-b a-b r:a-b".
std::string Shown(const WaveformGeometry& g) {
  std::string s = std::to_string(int(g.start)) + "+" + std::to_string(int(g.width)) + ":";
  for (const MarkBlock& m : g.marks)
    s += std::string(" ") + (m.repeat ? "r" : "") + std::to_string(int(m.start)) + "-" + std::to_string(int(m.end));
  return s;
}

TEST_F(Details, ScalesShowOneTwoOrFourFramesAndAdjustWalksAlongThenStartsAgain) {
  // NEC-like: a 108 ms once frame, then a 108 ms repeat frame.
  test::SetBurst(p, {9000, -4500, 560, -93940, 9000, -2250, 560, -96190}, 4);
  EXPECT_EQ(Shown(DrawWaveform(p)), "0+108000: 0-9000 13500-14060");
  Option1_Click(p, 1);
  EXPECT_EQ(Shown(DrawWaveform(p)), "0+216000: 0-9000 13500-14060 r108000-117000 r119250-119810");
  Option1_Click(p, 2);
  EXPECT_FALSE(p.DBG.Option1[0].value || p.DBG.Option1[1].value);
  EXPECT_EQ(DrawWaveform(p).width, 432000);
  Option1_Click(p, 0);
  // Each press moves 5 % of the scale's width (5.4 ms); starts wrap at 189 ms,
  // the last start that leaves a quarter of the view on the signal.
  Command1_Click(p);
  EXPECT_EQ(Shown(DrawWaveform(p)), "5400+108000: 0-9000 13500-14060 r108000-117000");
  p.WaveformOffset = 175;
  EXPECT_EQ(DrawWaveform(p).start, 0) << "35 presses: back at the start";
  for (int16_t offset = 0; offset <= 32765; offset = int16_t(offset + 5)) {
    p.WaveformOffset = offset;
    for (int scale = 0; scale < 3; ++scale) {
      Option1_Click(p, scale);
      WaveformGeometry g = DrawWaveform(p);
      ASSERT_TRUE(g.start >= 0 && g.start + 0.25 * std::min(g.width, g.total) <= g.total + 1e-6)
          << "offset " << offset << " scale " << scale << " shows no signal from " << g.start;
    }
    if (offset == 32765) break;
  }
  EXPECT_EQ(test::ErrorNumber([&] { Command1_Click(p); }), 6) << "the offset itself still overflows at the top";

  test::SetBurst(p, {2400, -600, 1200, -600, 600, -19600}, 0);  // Sony-like: a 25 ms repeated part only
  p.WaveformOffset = 0;
  Option1_Click(p, 0);
  EXPECT_EQ(Shown(DrawWaveform(p)), "0+25000: r0-2400 r3000-4200 r4800-5400");
  test::SetBurst(p, {}, 0);
  EXPECT_EQ(Shown(DrawWaveform(p)), "0+100000:") << "nothing to draw: an empty 100 ms view";
}

TEST_F(Details, ZoomKeepsThePointUnderTheMouseAndScrollStaysOnTheSignal) {
  test::SetBurst(p, {9000, -4500, 560, -93940, 9000, -2250, 560, -96190}, 4);
  WaveformViewport v;
  ZoomWaveform(p, v, 2, 0.5);  // 54 ms stays in the middle
  EXPECT_EQ(Shown(DrawWaveform(p, v)), "27000+54000:");
  ZoomWaveform(p, v, 2, 0);  // left edge stays
  EXPECT_EQ(Shown(DrawWaveform(p, v)), "27000+27000:");
  ScrollWaveform(p, v, -5);
  EXPECT_EQ(Shown(DrawWaveform(p, v)), "0+27000: 0-9000 13500-14060");
  ScrollWaveform(p, v, 100);
  EXPECT_EQ(DrawWaveform(p, v).start, 216000 - 27000 / 4) << "a quarter of the view still on the signal";
  ZoomWaveform(p, v, 1e6);
  EXPECT_EQ(v.zoom, kWaveformMaxZoom);
  ZoomWaveform(p, v, 1e-6);
  EXPECT_EQ(v.zoom, kWaveformMinZoom);
}

TEST_F(Details, TimeTicksUseAOneTwoFiveStepInMilliseconds) {
  struct Case {
    double start, width;
    std::string labels;
  } cases[] = {
      {0, 108000, "0 20 40 60 80 100"},
      {500, 1000, "0.6 0.8 1.0 1.2 1.4"},
      {27000, 54000, "30 40 50 60 70 80"},
      {0, 7, "0.000 0.001 0.002 0.003 0.004 0.005 0.006 0.007"},
      {0, 0, ""},
  };
  for (const Case& c : cases) {
    std::string labels;
    for (const TimeTick& t : TimeTicks(c.start, c.width)) labels += (labels.empty() ? "" : " ") + t.label;
    EXPECT_EQ(labels, c.labels) << c.start << "+" << c.width;
  }
}

TEST_F(Details, PictureDrawsMarksAsBlocksInPlaceAndEscapesItsSvgText) {
  test::SetBurst(p, {9000, -4500, 560, -93940, 9000, -2250, 560, -96190}, 4);
  // 1200 px of plot for 108 ms: 90 us a pixel, from x = 12.
  WaveformPicture picture = LayOutWaveform(DrawWaveform(p), 1224, 300, "A&B <TV>");
  std::vector<std::pair<double, double>> blocks;
  for (const PictureItem& item : picture.items)
    if (item.kind == PictureItem::Kind::Rect && item.y2 - item.y1 > 40 && item.colour.b == 0xbf)
      blocks.emplace_back(item.x1, std::round(item.x2 * 100) / 100);
  EXPECT_EQ(blocks, (std::vector<std::pair<double, double>>{{12, 112}, {162, 168.22}}));
  std::string svg = WaveformSvg(picture);
  EXPECT_NE(svg.find(">A&amp;B &lt;TV&gt;</text>"), std::string::npos);
  EXPECT_EQ(svg.rfind("</svg>\n"), svg.size() - 7);
}

}  // namespace
}  // namespace bw
