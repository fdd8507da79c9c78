// The waveform of the details dialog as geometry: the burst sequence as two
// step polylines (the part sent once, then the repeated part) that the view
// only has to stroke.
//
// Scale: at "x1" the view is exactly one frame wide, the frame being the once
// part (or, when there is none, the repeated part). Protocols differ a lot in
// frame length (a NEC frame runs about 100 ms, a Sony one about 25 ms); sizing
// the view to the sequence's own frame makes every protocol fill the view at x1
// without a table of protocol widths or a special case for Sony. "x1/2" and
// "x1/4" squeeze the time axis by 2 and 4, so the same view then shows two or
// four frames' worth of time: the repeated part comes into sight beside the
// once part.
//
// Offset: each unit of WaveformOffset moves the view along by 1/100 of its
// width, so "Adjust Suffix Display" (5 units) moves it by 5 % at any scale.
#include <algorithm>
#include <cstdlib>

#include "details/details.h"

namespace bw {

namespace {

/// View width for an entry without durations: 100 ms, a long frame.
constexpr double kEmptyViewMicroseconds = 100000.0;
/// WaveformOffset units per view width.
constexpr double kOffsetUnitsPerView = 100.0;

double HorizontalScale(const DetailsForm& d) {
  if (d.Option1[1].value) return 0.5;
  if (d.Option1[2].value) return 0.25;
  return 1.0;
}

/// Sum of |duration| over positions first..last.
double PartLength(const DurationList& list, int first, int last) {
  double total = 0;
  for (int i = first; i <= last; ++i) total += std::abs(static_cast<double>(list(i)));
  return total;
}

void AddPoint(std::vector<WavePoint>& line, double x, double y) {
  if (!line.empty() && line.back().x == x && line.back().y == y) return;
  line.push_back({x, y});
}

}  // namespace

WaveformGeometry DrawWaveform(const Program& p) {
  const BurstSequence& b = p.Burst;
  const DurationList& list = b.BurstDurations;
  int onceCount = std::clamp<int>(b.OnceCount, 0, DurationList::kCapacity);
  int repeatCount = std::clamp<int>(b.RepeatPartCount, 0, DurationList::kCapacity - onceCount);

  double frame = onceCount > 0 ? PartLength(list, 1, onceCount) : PartLength(list, 1, repeatCount);
  if (frame <= 0) frame = kEmptyViewMicroseconds;

  WaveformGeometry g;
  g.viewWidth = frame;
  double scale = HorizontalScale(p.DBG);
  double shift = p.WaveformOffset * frame / kOffsetUnitsPerView;
  auto viewX = [&](double microseconds) { return microseconds * scale - shift; };

  double t = 0;
  auto trace = [&](std::vector<WavePoint>& line, int first, int last) {
    if (first > last) return;
    AddPoint(line, viewX(t), 0);
    double level = 0;
    for (int i = first; i <= last; ++i) {
      int32_t d = list(i);
      level = d > 0 ? 1 : 0;
      AddPoint(line, viewX(t), level);
      t += std::abs(static_cast<double>(d));
      AddPoint(line, viewX(t), level);
    }
    AddPoint(line, viewX(t), 0);
  };
  trace(g.once, 1, onceCount);
  trace(g.repeat, onceCount + 1, onceCount + repeatCount);
  return g;
}

}  // namespace bw
