// The details dialog model: one generated entry's values, its code text in
// decimal or hexadecimal, and its waveform as polyline geometry; the run waits
// here until Next, Skip or Finish.
#pragma once

#include <string>
#include <vector>

#include "shell/program.h"

namespace bw {

/// Fills DBG, shows it and waits (through host DoEvents) until Next/Skip/Finish.
void ShowEntryDetails(Program& p, const std::string& title);
void ShowEntryText(Program& p);
void Next_Click(Program& p);
void Skip_Click(Program& p);
void Finish_Click(Program& p);
/// WaveformOffset + 5 (Overflow at the top); the view then redraws from DrawWaveform.
void Command1_Click(Program& p);
/// Selects scale `index` (0 "x1", 1 "x1/2", 2 "x1/4") and clears the other two.
void Option1_Click(Program& p, int index);
/// Refills the code text; the front end has stored the box's new value first.
void HexOPT_Click(Program& p);

// ---- the waveform ----

/// What the drawing adds to the dialog's scale options: a zoom and a scroll of
/// its own. Both belong to the view and start afresh with every entry.
struct WaveformViewport {
  double zoom = 1.0;    ///< 1: the scale option's width; 2: half as much time across
  double scroll = 0.0;  ///< microseconds added to the start that the offset gives
};
/// Zoom limits: a quarter of the scale's width out, down to single durations in.
constexpr double kWaveformMinZoom = 0.25;
constexpr double kWaveformMaxZoom = 256.0;

/// One carrier-on stretch of the sequence, in microseconds from its start.
struct MarkBlock {
  double start = 0;
  double end = 0;
  bool repeat = false;  ///< in the repeated part (else in the part sent once)
};
/// A labelled tick of the time axis.
struct TimeTick {
  double time = 0;    ///< microseconds
  std::string label;  ///< milliseconds, as few decimals as the tick step needs
};
/// What the waveform shows: the time window, the parts and the marks in it.
struct WaveformGeometry {
  double start = 0;    ///< microseconds at the left edge
  double width = 0;    ///< microseconds across the view
  double onceEnd = 0;  ///< where the repeated part begins
  double total = 0;    ///< where the sequence ends
  std::vector<MarkBlock> marks;  ///< only those that reach into the window
  std::vector<TimeTick> ticks;
};
/// Pure: the view calls it whenever it paints, so Option1 and Command1 only
/// change the state it reads.
WaveformGeometry DrawWaveform(const Program& p, const WaveformViewport& view = {});
/// Moves the view by `fraction` of its width (negative: back), kept on the signal.
void ScrollWaveform(const Program& p, WaveformViewport& view, double fraction);
/// Zooms by `factor` keeping the time under `anchor` (0 left edge .. 1 right edge) in place.
void ZoomWaveform(const Program& p, WaveformViewport& view, double factor, double anchor = 0.5);
/// Ticks at a 1-2-5 step giving at most `maxTicks` across [start, start + width].
std::vector<TimeTick> TimeTicks(double start, double width, int maxTicks = 8);

// ---- the waveform as a picture ----

struct PictureColour {
  unsigned char r = 0, g = 0, b = 0;
};
/// One drawing step in pixels: a filled rectangle, a line, or a text whose
/// anchor point is its baseline's left end, middle or right end.
struct PictureItem {
  enum class Kind { Rect, Line, Text } kind = Kind::Rect;
  double x1 = 0, y1 = 0, x2 = 0, y2 = 0;  ///< rect corners, line ends; a text's anchor is (x1, y1)
  PictureColour colour;
  double lineWidth = 1;
  bool dashed = false;
  std::string text;
  double textSize = 12;  ///< pixels
  bool bold = false;
  enum class Align { Left, Centre, Right } align = Align::Left;
};
/// The whole picture, in drawing order; every front end paints exactly this.
struct WaveformPicture {
  double width = 0, height = 0;
  std::vector<PictureItem> items;
};
/// Lays the geometry out on a width x height canvas, with `title` above it when given.
WaveformPicture LayOutWaveform(const WaveformGeometry& g, double width, double height,
                               const std::string& title = {});
/// The picture as a self-contained SVG document.
std::string WaveformSvg(const WaveformPicture& picture);
/// "SONY TV - POWER - SONY12 - 40 kHz": what an exported picture is of.
std::string WaveformTitle(const Program& p);
/// A file name for the picture, made of device and key label (no extension).
std::string WaveformFileName(const Program& p);

}  // namespace bw
