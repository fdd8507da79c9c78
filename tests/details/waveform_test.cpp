// Waveform geometry: step polylines for the once and the repeated part, a view
// one frame wide at x1 whatever the protocol, more time in view at x1/2 and
// x1/4, and the offset that "Adjust Suffix Display" moves.
#include <gtest/gtest.h>

#include "details/details.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

void SetBurst(Program& p, const std::vector<int32_t>& durations, int onceCount) {
  p.Burst.BurstDurations.Clear();
  for (std::size_t i = 0; i < durations.size(); ++i) p.Burst.BurstDurations(static_cast<int>(i) + 1) = durations[i];
  p.Burst.OnceCount = static_cast<int16_t>(onceCount);
  p.Burst.RepeatPartCount = static_cast<int16_t>(durations.size() - static_cast<std::size_t>(onceCount));
  p.Burst.TotalCount = static_cast<int16_t>(durations.size());
}

/// An NEC-like frame: lead-in, 32 bits, stop mark, gap up to 108 ms; then the
/// 9000/-2250/560 repeat frame padded to 108 ms.
std::vector<int32_t> NecFrame(int& onceCount) {
  std::vector<int32_t> d = {9000, -4500};
  int32_t used = 13500;
  for (int bit = 0; bit < 32; ++bit) {
    int32_t gap = bit % 2 ? -1690 : -560;
    d.push_back(560);
    d.push_back(gap);
    used += 560 - gap;
  }
  d.push_back(560);
  used += 560;
  d.push_back(-(108000 - used));
  onceCount = static_cast<int>(d.size());
  for (int32_t x : {9000, -2250, 560, -96190}) d.push_back(x);
  return d;
}

double LastX(const std::vector<WavePoint>& line) { return line.empty() ? -1 : line.back().x; }

TEST(Waveform, StepTraceRisesForMarksAndFallsForSpaces) {
  test::TestProgram t;
  SetBurst(t.p, {100, -200, 300}, 3);
  WaveformGeometry g = DrawWaveform(t.p);
  std::vector<std::pair<double, double>> points;
  for (const auto& pt : g.once) points.emplace_back(pt.x, pt.y);
  EXPECT_EQ(points, (std::vector<std::pair<double, double>>{
                        {0, 0}, {0, 1}, {100, 1}, {100, 0}, {300, 0}, {300, 1}, {600, 1}, {600, 0}}));
  EXPECT_TRUE(g.repeat.empty());
  EXPECT_EQ(g.viewWidth, 600);
}

TEST(Waveform, NecAndSonyFramesBothFillTheViewAtFullScale) {
  test::TestProgram nec;
  int onceCount = 0;
  auto d = NecFrame(onceCount);
  SetBurst(nec.p, d, onceCount);
  WaveformGeometry g = DrawWaveform(nec.p);
  EXPECT_EQ(g.viewWidth, 108000);
  EXPECT_EQ(g.once.front().x, 0);
  EXPECT_EQ(LastX(g.once), 108000);
  // The repeat part follows the once part on the same time axis.
  EXPECT_EQ(g.repeat.front().x, 108000);
  EXPECT_EQ(LastX(g.repeat), 216000);

  // Sony: 2400 lead-in, 12 bits of 600 gap + 600/1200 mark, padded to 25 ms;
  // sent as a repeated part only.
  test::TestProgram sony;
  std::vector<int32_t> s = {2400};
  int32_t used = 2400;
  for (int bit = 0; bit < 12; ++bit) {
    s.push_back(-600);
    s.push_back(bit % 3 ? 600 : 1200);
    used += 600 + s.back();
  }
  s.push_back(-(25000 - used));
  SetBurst(sony.p, s, 0);
  g = DrawWaveform(sony.p);
  EXPECT_TRUE(g.once.empty());
  EXPECT_EQ(g.viewWidth, 25000);
  EXPECT_EQ(LastX(g.repeat), 25000);
}

TEST(Waveform, SmallerScalesShowProportionallyMoreTime) {
  test::TestProgram t;
  int onceCount = 0;
  auto d = NecFrame(onceCount);
  SetBurst(t.p, d, onceCount);
  Option1_Click(t.p, 1);
  WaveformGeometry half = DrawWaveform(t.p);
  EXPECT_EQ(half.viewWidth, 108000);
  EXPECT_EQ(LastX(half.once), 54000);
  EXPECT_EQ(LastX(half.repeat), 108000) << "at x1/2 the repeat frame comes into view";
  Option1_Click(t.p, 2);
  WaveformGeometry quarter = DrawWaveform(t.p);
  EXPECT_EQ(LastX(quarter.once), 27000);
  EXPECT_EQ(LastX(quarter.repeat), 54000);
  EXPECT_EQ(quarter.once[2].x, 9000 / 4.0) << "the lead-in mark ends at 9 ms, drawn at a quarter";
}

TEST(Waveform, EachOffsetUnitMovesTheViewByAHundredthOfItsWidth) {
  test::TestProgram t;
  SetBurst(t.p, {1000, -1000, 500, -7500}, 4);
  Command1_Click(t.p);  // 5 units: 5 % of a 10 ms view
  WaveformGeometry g = DrawWaveform(t.p);
  EXPECT_EQ(g.once.front().x, -500);
  EXPECT_EQ(LastX(g.once), 9500);
  Option1_Click(t.p, 1);
  g = DrawWaveform(t.p);
  EXPECT_EQ(g.once.front().x, -500) << "the view moves by view units at any scale";
  EXPECT_EQ(LastX(g.once), 4500);
}

TEST(Waveform, EmptyEntryGivesNoTraceAndAUsableView) {
  test::TestProgram t;
  SetBurst(t.p, {}, 0);
  WaveformGeometry g = DrawWaveform(t.p);
  EXPECT_TRUE(g.once.empty());
  EXPECT_TRUE(g.repeat.empty());
  EXPECT_GT(g.viewWidth, 0);
}

}  // namespace
}  // namespace bw
