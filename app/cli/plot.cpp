#include "plot.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>

#include "details/details.h"
#include "generate/generate.h"
#include "runtime/text.h"
#include "slinke/slinke.h"
#ifdef BURSTWRIGHT_PNG
#include "picture_painter.h"
#endif

namespace bw::cli {

namespace {

/// The picture's size: the details dialog's export size.
constexpr double kWidth = 1200;
constexpr double kHeight = 360;

constexpr int kExitClean = 0;
constexpr int kExitUsage = 2;
constexpr int kExitFailed = 3;

std::string Extension(const std::string& file) { return UCase(std::filesystem::path(file).extension().string()); }

}  // namespace

const char* const kPlotUsage =
    "  plot DEVICE KEY --out FILE.svg|FILE.png [--output FORMAT] [--scale x1|x1/2|x1/4]\n"
    "                                   KEY's waveform as the details dialog draws it\n"
    "                                   (FORMAT as for bursts; scale default x1)\n";

PlotArguments ParsePlotArguments(const std::vector<std::string>& args) {
  static const std::map<std::string, int> kOutputs = {{"pronto", 0}, {"slinke-tx", 1}, {"slinke-txrx", 2}, {"adi", 3}};
  static const std::map<std::string, int> kScales = {{"x1", 0}, {"x1/2", 1}, {"x1/4", 2}};
  PlotArguments a;
  std::vector<std::string> positional;
  for (std::size_t i = 0; i < args.size() && a.problem.empty(); ++i) {
    const std::string& arg = args[i];
    if (arg == "--out" || arg == "--output" || arg == "--scale") {
      if (i + 1 >= args.size()) {
        a.problem = arg + " needs a value";
        break;
      }
      const std::string& value = args[++i];
      if (arg == "--out") {
        a.file = value;
      } else if (arg == "--output") {
        auto it = kOutputs.find(value);
        if (it == kOutputs.end()) a.problem = "unknown output format " + value;
        else a.output = it->second;
      } else {
        auto it = kScales.find(value);
        if (it == kScales.end()) a.problem = "unknown scale " + value;
        else a.scale = it->second;
      }
    } else if (arg.rfind("--", 0) == 0) {
      a.problem = "unknown option " + arg;
    } else {
      positional.push_back(arg);
    }
  }
  if (!a.problem.empty()) return a;
  const std::string ext = Extension(a.file);
  if (positional.size() != 2) a.problem = "plot takes DEVICE and KEY";
  else if (a.file.empty()) a.problem = "plot needs --out FILE.svg or FILE.png";
  else if (ext != ".SVG" && ext != ".PNG") a.problem = a.file + ": the picture file must end in .svg or .png";
  if (positional.size() == 2) {
    a.device = positional[0];
    a.key = positional[1];
  }
  return a;
}

int PlotKey(Program& p, const PlotArguments& a) {
  int key = 0;
  for (int k = 1; k <= p.Keys.UpperBound() && key == 0; ++k)
    if (UCase(Trim(p.Keys[k].Label)) == UCase(Trim(a.key))) key = k;
  if (key == 0) {
    std::cerr << "burstwright-cli: no key " << a.key << " in " << a.device << "\n";
    return kExitUsage;
  }
  // What the writer of that output gets: a Slink-e entry is one list.
  if (p.FormatSlinkTxOnly || p.FormatSlinkTxRx) MergeSlinkForms(p.Protocol);
  ResetBurstSequence(p);
  if (p.F.format.text == "RAW") {
    if (!LoadRawKey(p, key)) return kExitFailed;
    p.Burst.BurstLabel = p.Keys[key].Label;
  } else {
    BuildKeySequence(p, key);
  }
  Option1_Click(p, a.scale);

  const WaveformPicture picture = LayOutWaveform(DrawWaveform(p), kWidth, kHeight, WaveformTitle(p));
  if (Extension(a.file) == ".SVG") {
    std::ofstream out(a.file, std::ios::binary);
    out << WaveformSvg(picture);
    if (!out.flush()) {
      std::cerr << a.file << ": the picture could not be written\n";
      return kExitFailed;
    }
    return kExitClean;
  }
#ifdef BURSTWRIGHT_PNG
  const std::string problem = bw::picture::SavePng(picture, a.file);
  if (!problem.empty()) {
    std::cerr << problem << "\n";
    return kExitFailed;
  }
  return kExitClean;
#else
  std::cerr << a.file << ": this build writes SVG pictures only (PNG needs the Qt build)\n";
  return kExitUsage;
#endif
}

}  // namespace bw::cli
