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

/// One point of the waveform trace: x in view units, y 0 (carrier off) or 1 (on).
struct WavePoint {
  double x = 0;
  double y = 0;
};
/// The trace of the current burst sequence: the once part and the repeat part as
/// separate polylines, already scaled by Option1 and shifted by WaveformOffset.
struct WaveformGeometry {
  std::vector<WavePoint> once;
  std::vector<WavePoint> repeat;
  double viewWidth = 0;  ///< x extent of the drawing area in view units
};
/// Pure: the view calls it whenever it shows the dialog (after ShowEntryDetails,
/// Option1 and Command1), so those only change the state it reads.
WaveformGeometry DrawWaveform(const Program& p);

}  // namespace bw
