// The waveform of the details dialog: which stretch of the burst sequence is
// in view, its carrier-on blocks and the ticks of its time axis.
//
// Scale: at "x1" the view is exactly one frame wide, the frame being the once
// part (or, when there is none, the repeated part). Protocols differ a lot in
// frame length (a NEC frame runs about 100 ms, a Sony one about 25 ms); sizing
// the view to the sequence's own frame makes every protocol fill the view at x1
// without a table of protocol widths or a special case for Sony. "x1/2" and
// "x1/4" squeeze the time axis by 2 and 4, so the same view then shows two or
// four frames' worth of time: the repeated part comes into sight beside the
// once part. The view's zoom divides that width further.
//
// Offset: each unit of WaveformOffset moves the view along by 1/100 of the
// scale's width, so "Adjust Suffix Display" (5 units) moves it by 5 %. The
// offset keeps growing with every press; the view takes it modulo the stretch
// of starting points that still show a quarter of the view's worth of signal,
// so presses walk along the sequence and then begin again from its start.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "details/details.h"

namespace bw {

namespace {

/// View width for an entry without durations: 100 ms, a long frame.
constexpr double kEmptyViewMicroseconds = 100000.0;
/// WaveformOffset units per view width.
constexpr double kOffsetUnitsPerView = 100.0;
/// Share of the view that must still show signal, whatever offset and scroll say.
constexpr double kMinimumSignalShare = 0.25;

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

/// The parts of the sequence and the view's width before the viewport's zoom.
struct Extent {
  int onceCount = 0, repeatCount = 0;
  double onceEnd = 0, total = 0;
  double scaleWidth = 0;  ///< microseconds across the view at zoom 1
};

Extent Measure(const Program& p) {
  const BurstSequence& b = p.Burst;
  Extent e;
  e.onceCount = std::clamp<int>(b.OnceCount, 0, DurationList::kCapacity);
  e.repeatCount = std::clamp<int>(b.RepeatPartCount, 0, DurationList::kCapacity - e.onceCount);
  e.onceEnd = PartLength(b.BurstDurations, 1, e.onceCount);
  e.total = e.onceEnd + PartLength(b.BurstDurations, e.onceCount + 1, e.onceCount + e.repeatCount);
  double frame = e.onceCount > 0 ? e.onceEnd : e.total;
  if (frame <= 0) frame = kEmptyViewMicroseconds;
  e.scaleWidth = frame / HorizontalScale(p.DBG);
  return e;
}

/// The latest left edge that still leaves signal in view.
double LastStart(const Extent& e, double width) {
  return std::max(0.0, e.total - kMinimumSignalShare * std::min(e.total, width));
}

/// The left edge for `view`: the offset's start (wrapped), plus the scroll, kept on the signal.
double ViewStart(const Program& p, const Extent& e, const WaveformViewport& view) {
  const double width = e.scaleWidth / view.zoom;
  const double last = LastStart(e, width);
  double offsetStart = 0;
  if (last > 0) {
    offsetStart = std::fmod(p.WaveformOffset * e.scaleWidth / kOffsetUnitsPerView, last);
    if (offsetStart < 0) offsetStart += last;
  }
  return std::clamp(offsetStart + view.scroll, 0.0, last);
}

/// Sets view.scroll so that the view starts at `start` (or as near as allowed).
void StartAt(const Program& p, const Extent& e, WaveformViewport& view, double start) {
  view.scroll = 0;
  const double base = ViewStart(p, e, view);
  const double last = LastStart(e, e.scaleWidth / view.zoom);
  view.scroll = std::clamp(start, 0.0, last) - base;
}

std::string TickLabel(double microseconds, double step) {
  int decimals = step >= 1000 ? 0 : step >= 100 ? 1 : step >= 10 ? 2 : 3;
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", decimals, microseconds / 1000.0);
  std::string s = text;
  return s == "-0" ? "0" : s;
}

}  // namespace

WaveformGeometry DrawWaveform(const Program& p, const WaveformViewport& view) {
  const Extent e = Measure(p);
  WaveformGeometry g;
  g.width = e.scaleWidth / view.zoom;
  g.start = ViewStart(p, e, view);
  g.onceEnd = e.onceEnd;
  g.total = e.total;
  const DurationList& list = p.Burst.BurstDurations;
  double t = 0;
  for (int i = 1; i <= e.onceCount + e.repeatCount; ++i) {
    const double length = std::abs(static_cast<double>(list(i)));
    if (list(i) > 0 && t + length > g.start && t < g.start + g.width) g.marks.push_back({t, t + length, i > e.onceCount});
    t += length;
  }
  g.ticks = TimeTicks(g.start, g.width);
  return g;
}

void ScrollWaveform(const Program& p, WaveformViewport& view, double fraction) {
  const Extent e = Measure(p);
  const double width = e.scaleWidth / view.zoom;
  StartAt(p, e, view, ViewStart(p, e, view) + fraction * width);
}

void ZoomWaveform(const Program& p, WaveformViewport& view, double factor, double anchor) {
  const Extent e = Measure(p);
  const double before = e.scaleWidth / view.zoom;
  const double anchorTime = ViewStart(p, e, view) + anchor * before;
  view.zoom = std::clamp(view.zoom * factor, kWaveformMinZoom, kWaveformMaxZoom);
  StartAt(p, e, view, anchorTime - anchor * e.scaleWidth / view.zoom);
}

std::vector<TimeTick> TimeTicks(double start, double width, int maxTicks) {
  std::vector<TimeTick> ticks;
  if (!(width > 0) || maxTicks < 1) return ticks;
  double step = 1;
  static const double kSteps[] = {1, 2, 5};
  for (double decade = 1; decade < 1e9; decade *= 10) {
    bool found = false;
    for (double s : kSteps) {
      if (width / (s * decade) <= maxTicks) {
        step = s * decade;
        found = true;
        break;
      }
    }
    if (found) break;
  }
  // Counted in whole steps, so that labels never pick up rounding drift.
  for (long long n = static_cast<long long>(std::ceil(start / step - 1e-9)); n * step <= start + width + 1e-9; ++n)
    ticks.push_back({n * step, TickLabel(n * step, step)});
  return ticks;
}

}  // namespace bw
