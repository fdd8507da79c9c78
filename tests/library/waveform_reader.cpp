#include "library/waveform_reader.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include <gtest/gtest.h>

namespace bw::test::library {

bool WithinTolerance(double measured, double published) {
  return std::abs(measured - published) <= std::max(0.01 * std::abs(published), 1.0);
}

bool WithinFrameTolerance(double measured, double published) {
  return std::abs(measured - published) <= 0.001 * std::abs(published);
}

WaveformReader::WaveformReader(std::vector<int32_t> durations, std::string name)
    : durations_(std::move(durations)), name_(std::move(name)) {}

std::string WaveformReader::Where() const { return name_ + ", duration " + std::to_string(next_); }

int32_t WaveformReader::Take(const std::string& what) {
  if (AtEnd()) {
    ADD_FAILURE() << Where() << ": the waveform ends where " << what << " should follow";
    return 0;
  }
  int32_t d = durations_[next_++];
  elapsed_ += std::abs(static_cast<int64_t>(d));
  return d;
}

void WaveformReader::Mark(double published, const std::string& what) {
  int32_t d = Take(what);
  EXPECT_TRUE(d > 0 && WithinTolerance(d, published))
      << Where() << ": " << what << " is " << d << " us, published burst " << published << " us";
}

void WaveformReader::Space(double published, const std::string& what) {
  int32_t d = Take(what);
  EXPECT_TRUE(d < 0 && WithinTolerance(-d, published))
      << Where() << ": " << what << " is " << d << " us, published space " << published << " us";
}

void WaveformReader::StartFrame() { frameStart_ = elapsed_; }

void WaveformReader::EndFrame(double period, const std::string& what) {
  int32_t d = Take(what);
  EXPECT_LT(d, 0) << Where() << ": " << what << " must be a space";
  EXPECT_TRUE(WithinFrameTolerance(static_cast<double>(elapsed_ - frameStart_), period))
      << Where() << ": " << what << " ends the frame after " << elapsed_ - frameStart_ << " us, published "
      << period << " us";
  frameStart_ = elapsed_;
}

uint32_t WaveformReader::Bits(int n, const BitCell& cell, bool msbFirst) {
  uint32_t value = 0;
  for (int i = 0; i < n; ++i) {
    int32_t mark = Take("a bit");
    int32_t space = Take("a bit's space");
    bool zero = mark > 0 && space < 0 && WithinTolerance(mark, cell.zeroMark) && WithinTolerance(-space, cell.zeroSpace);
    bool one = mark > 0 && space < 0 && WithinTolerance(mark, cell.oneMark) && WithinTolerance(-space, cell.oneSpace);
    EXPECT_TRUE(zero || one) << Where() << ": " << mark << " / " << space
                             << " us is neither a published zero nor a published one";
    if (one) value |= 1u << (msbFirst ? n - 1 - i : i);
  }
  return value;
}

uint32_t WaveformReader::BitByMark(const BitCell& cell) {
  int32_t mark = Take("a bit");
  bool zero = mark > 0 && WithinTolerance(mark, cell.zeroMark);
  bool one = mark > 0 && WithinTolerance(mark, cell.oneMark);
  EXPECT_TRUE(zero || one) << Where() << ": a burst of " << mark << " us is neither a zero nor a one";
  return one ? 1u : 0u;
}

std::vector<int> SampleHalfBits(const std::vector<int32_t>& durations, double offset, double half, int count) {
  std::vector<int> levels;
  for (int k = 0; k < count; ++k) {
    double t = offset + (k + 0.5) * half;
    int level = -1;  // before the list and after its end the carrier is off
    double start = 0;
    for (int32_t d : durations) {
      double end = start + std::abs(d);
      if (t >= start && t < end) {
        level = d > 0 ? 1 : -1;
        break;
      }
      start = end;
    }
    levels.push_back(level);
  }
  return levels;
}

bool IsWholeUnits(int32_t duration, double unit, int maxUnits) {
  for (int k = 1; k <= maxUnits; ++k) {
    if (WithinTolerance(std::abs(duration), k * unit)) return true;
  }
  return false;
}

}  // namespace bw::test::library
