#include "library/library_support.h"

#include <algorithm>
#include <cstdlib>

#include <gtest/gtest.h>

#include "generate/generate.h"
#include "input/subroutines.h"
#include "shell/commands.h"
#include "shell/startup.h"

namespace bw::test::library {

std::string BundledLibraryPath() { return BW_SOURCE_DIR "/Device Library"; }

LibraryRun::LibraryRun() {
  p.ProgramFolder = BW_BIN_DIR;
  p.DeviceLibraryPath = BundledLibraryPath();
  ListProtocolNames(p);
  ListDeviceFiles(p);
}

bool LibraryRun::Load(const std::string& listedName) {
  const auto& items = p.F.Lex.items;
  auto found = std::find(items.begin(), items.end(), listedName);
  if (found == items.end()) return false;
  p.F.Lex.listIndex = static_cast<int>(found - items.begin());
  Lex_Click(p);
  // Every sample device loads quietly and fills the window's device fields.
  EXPECT_TRUE(t.host.messages.empty()) << listedName << ": " << t.host.LastMessage();
  EXPECT_EQ(p.F.Label5.caption, "Device Selected") << listedName;
  EXPECT_FALSE(p.F.MFG.text.empty() || p.F.Model.text.empty() || p.F.Device.text.empty()) << listedName;
  return true;
}

void LibraryRun::GeneratePronto() {
  keys.clear();
  p.FormatPronto = true;
  p.FormatSlinkTxOnly = p.FormatSlinkTxRx = p.FormatADI = false;
  p.IRCodeSink = [this](Program& q) {
    KeyCapture c{q.Burst.BurstLabel, q.IRCode, {}, {}};
    for (int i = 1; i <= q.Burst.OnceCount; ++i) c.once.push_back(q.Burst.BurstDurations(i));
    for (int i = 1; i <= q.Burst.RepeatPartCount; ++i)
      c.repeat.push_back(q.Burst.BurstDurations(q.Burst.OnceCount + i));
    keys.push_back(std::move(c));
  };
  GenerateKeys(p, p.F.format.text, ParseNumber(p.F.DC.text), static_cast<int16_t>(ParseNumber(p.F.FFC.text)),
               static_cast<int16_t>(ParseNumber(p.F.LFC.text)));
  EXPECT_TRUE(t.host.messages.empty()) << t.host.LastMessage();
  EXPECT_EQ(static_cast<int>(keys.size()), p.Keys.UpperBound()) << "one record per key";
}

const KeyCapture& LibraryRun::Key(const std::string& label) const {
  static const KeyCapture kMissing;
  for (const KeyCapture& c : keys)
    if (c.label == label) return c;
  ADD_FAILURE() << "no record was written for the key " << label;
  return kMissing;
}

bool WithinTolerance(double measured, double published) {
  return std::abs(measured - published) <= std::max(0.01 * std::abs(published), 1.0);
}

bool WithinFrameTolerance(double measured, double published) {
  return std::abs(measured - published) <= 0.001 * std::abs(published);
}

Steps operator+(Steps a, const Steps& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

void ReadBack(const std::vector<int32_t>& d, const BitCell& cell, const Steps& steps, const std::string& name) {
  std::size_t next = 0;
  int64_t elapsed = 0, frameStart = 0;
  auto where = [&] { return name + ", duration " + std::to_string(next); };
  auto take = [&]() -> int32_t {
    EXPECT_LT(next, d.size()) << name << ": the waveform ends before the published frame does";
    if (next == d.size()) return 0;
    elapsed += std::abs(static_cast<int64_t>(d[next]));
    return d[next++];
  };
  for (const Step& s : steps) {
    if (s.op == 'M' || s.op == 'S') {
      int32_t v = take();
      EXPECT_TRUE((s.op == 'M' ? v > 0 : v < 0) && WithinTolerance(std::abs(v), s.us))
          << where() << ": " << v << " us, published " << (s.op == 'M' ? "burst " : "space ") << s.us << " us";
    } else if (s.op == '[') {
      frameStart = elapsed;
    } else if (s.op == ']') {
      EXPECT_LT(take(), 0) << where() << ": a frame ends in a space";
      EXPECT_TRUE(WithinFrameTolerance(static_cast<double>(elapsed - frameStart), s.us))
          << where() << ": the frame ends after " << elapsed - frameStart << " us, published " << s.us << " us";
      frameStart = elapsed;
    } else {
      uint32_t value = 0;
      for (int i = 0; i < s.bits; ++i) {
        bool byMark = s.op == 'L' && i + 1 == s.bits;
        int32_t mark = take(), space = byMark ? 0 : take();
        auto is = [&](double m, double sp) {
          return mark > 0 && WithinTolerance(mark, m) && (byMark || (space < 0 && WithinTolerance(-space, sp)));
        };
        bool one = is(cell.oneMark, cell.oneSpace);
        EXPECT_TRUE(one || is(cell.zeroMark, cell.zeroSpace))
            << where() << ": " << mark << " / " << space << " us is neither a published zero nor a published one";
        if (one) value |= 1u << i;
      }
      EXPECT_EQ(value, s.value) << where() << ": the " << s.bits << " bits read back";
    }
  }
  EXPECT_EQ(next, d.size()) << name << ": durations beyond the published frames";
}

std::vector<int> SampleHalfBits(const std::vector<int32_t>& durations, double offset, double half, int count) {
  std::vector<int> levels;
  for (int k = 0; k < count; ++k) {
    double t = offset + (k + 0.5) * half, start = 0;
    int level = -1;  // before and after the list the carrier is off
    for (int32_t d : durations) {
      if (t >= start && t < start + std::abs(d)) {
        level = d > 0 ? 1 : -1;
        break;
      }
      start += std::abs(d);
    }
    levels.push_back(level);
  }
  return levels;
}

}  // namespace bw::test::library
