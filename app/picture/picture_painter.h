// Paints a WaveformPicture with Qt: the one painting routine behind the
// details dialog's drawing, its PNG export and the command line's PNG plot.
#pragma once

#include <string>

#include "details/details.h"

class QPainter;

namespace bw::picture {

/// Paints every item of `picture` in order, at the painter's origin.
void PaintPicture(QPainter& painter, const WaveformPicture& picture);
/// Paints `picture` into a PNG file. Works without a window: when no Qt
/// application runs yet, an offscreen one is started for the fonts. Empty on
/// success, else the reason, naming the file.
std::string SavePng(const WaveformPicture& picture, const std::string& path);

}  // namespace bw::picture
