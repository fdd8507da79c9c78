// burstwright-cli plot: one key's waveform as a picture file, drawn by the
// same layout as the desktop program's details dialog, without a window.
#pragma once

#include <string>
#include <vector>

#include "shell/program.h"

namespace bw::cli {

/// "plot DEVICE KEY [--output FORMAT] [--scale x1|x1/2|x1/4] --out FILE.svg|FILE.png"
struct PlotArguments {
  std::string device, key, file;
  int output = 0;       ///< row of the output list: 0 Pronto .. 3 ADI
  int scale = 0;        ///< Option1 index
  std::string problem;  ///< why the arguments do not parse ("" when they do)
};
PlotArguments ParsePlotArguments(const std::vector<std::string>& args);

/// Builds key `key` (label, any case) of the loaded device and writes the
/// picture. Returns the exit status; the reason of a failure is on stderr.
int PlotKey(Program& p, const PlotArguments& a);

/// The lines of the usage text that describe the command.
extern const char* const kPlotUsage;

}  // namespace bw::cli
