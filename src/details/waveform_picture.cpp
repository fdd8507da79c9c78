// The waveform as a picture: the geometry laid out in pixels (bands for the
// part sent once and the repeated part, carrier-on blocks, a time axis in
// milliseconds, a legend) as a list of rectangles, lines and texts. The
// desktop window, its picture export and the command line's plot all paint
// this same list; the SVG form is written here, without any toolkit.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>

#include "details/details.h"
#include "input/subroutines.h"
#include "runtime/numbers.h"
#include "runtime/text.h"

namespace bw {

namespace {

constexpr PictureColour kBackground{0xfb, 0xfc, 0xfe};
constexpr PictureColour kOnceBand{0xea, 0xf1, 0xfb};
constexpr PictureColour kRepeatBand{0xfd, 0xf0, 0xe6};
constexpr PictureColour kGrid{0xdf, 0xe4, 0xeb};
constexpr PictureColour kBaseline{0x8a, 0x96, 0xa6};
constexpr PictureColour kOnce{0x1f, 0x5f, 0xbf};
constexpr PictureColour kRepeat{0xd9, 0x5d, 0x10};
constexpr PictureColour kText{0x33, 0x3d, 0x4d};
constexpr PictureColour kFaintText{0x6b, 0x76, 0x86};

constexpr double kMargin = 12;
constexpr double kTitleHeight = 22;
constexpr double kLegendHeight = 20;
constexpr double kAxisHeight = 34;
constexpr double kSmallText = 11;

class Canvas {
 public:
  explicit Canvas(WaveformPicture& picture) : picture_(picture) {}
  void Rect(double x1, double y1, double x2, double y2, PictureColour c) {
    PictureItem item;
    item.kind = PictureItem::Kind::Rect;
    item.x1 = x1, item.y1 = y1, item.x2 = x2, item.y2 = y2, item.colour = c;
    picture_.items.push_back(item);
  }
  void Line(double x1, double y1, double x2, double y2, PictureColour c, double width = 1, bool dashed = false) {
    PictureItem item;
    item.kind = PictureItem::Kind::Line;
    item.x1 = x1, item.y1 = y1, item.x2 = x2, item.y2 = y2, item.colour = c;
    item.lineWidth = width;
    item.dashed = dashed;
    picture_.items.push_back(item);
  }
  void Text(double x, double y, const std::string& text, PictureColour c, double size,
            PictureItem::Align align = PictureItem::Align::Left, bool bold = false) {
    PictureItem item;
    item.kind = PictureItem::Kind::Text;
    item.x1 = x, item.y1 = y, item.colour = c, item.text = text, item.textSize = size, item.align = align;
    item.bold = bold;
    picture_.items.push_back(item);
  }

 private:
  WaveformPicture& picture_;
};

/// Rough advance of a text in a proportional sans face: enough to space a legend.
double TextWidth(const std::string& text, double size) { return 0.56 * size * static_cast<double>(text.size()); }

std::string Hex(PictureColour c) {
  char text[8];
  std::snprintf(text, sizeof text, "#%02x%02x%02x", c.r, c.g, c.b);
  return text;
}

std::string XmlEscaped(const std::string& text) {
  std::string out;
  for (char ch : text) {
    switch (ch) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      default: out += ch;
    }
  }
  return out;
}

std::string Number(double v) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f", v);
  std::string s = text;
  while (!s.empty() && s.back() == '0') s.pop_back();
  if (!s.empty() && s.back() == '.') s.pop_back();
  return s == "-0" ? "0" : s;
}

}  // namespace

WaveformPicture LayOutWaveform(const WaveformGeometry& g, double width, double height, const std::string& title) {
  WaveformPicture picture;
  picture.width = width;
  picture.height = height;
  Canvas c(picture);
  c.Rect(0, 0, width, height, kBackground);

  double top = kMargin / 2;
  if (!title.empty()) {
    c.Text(kMargin, top + 15, title, kText, 13, PictureItem::Align::Left, true);
    top += kTitleHeight;
  }
  // Legend: which colour is which part.
  double x = kMargin;
  const double legendY = top + kLegendHeight / 2;
  for (auto [colour, text] : {std::pair{kOnce, "sent once"}, std::pair{kRepeat, "repeated"}}) {
    c.Rect(x, legendY - 5, x + 14, legendY + 5, colour);
    c.Text(x + 20, legendY + 4, text, kFaintText, kSmallText);
    x += 20 + TextWidth(text, kSmallText) + 18;
  }
  c.Text(width - kMargin, legendY + 4, "time in ms", kFaintText, kSmallText, PictureItem::Align::Right);
  top += kLegendHeight + 4;

  const double left = kMargin, right = width - kMargin;
  const double bottom = std::max(top + 10, height - kAxisHeight);
  if (!(g.width > 0) || right <= left) return picture;
  const double scale = (right - left) / g.width;
  auto X = [&](double t) { return std::clamp(left + (t - g.start) * scale, left, right); };

  // Bands: where the once part and the repeated part lie.
  if (g.onceEnd > 0) c.Rect(X(0), top, X(g.onceEnd), bottom, kOnceBand);
  if (g.total > g.onceEnd) c.Rect(X(g.onceEnd), top, X(g.total), bottom, kRepeatBand);

  // Grid and ticks.
  for (const TimeTick& tick : g.ticks) {
    const double tx = X(tick.time);
    c.Line(tx, top, tx, bottom, kGrid);
    c.Line(tx, bottom, tx, bottom + 5, kBaseline);
    PictureItem::Align align = PictureItem::Align::Centre;
    if (tx - left < 12) align = PictureItem::Align::Left;
    if (right - tx < 12) align = PictureItem::Align::Right;
    c.Text(tx, bottom + 18, tick.label, kText, kSmallText, align);
  }

  // Carrier-on blocks; a block narrower than a pixel still shows as one.
  const double markTop = top + (bottom - top) * 0.22;
  for (const MarkBlock& m : g.marks) {
    double x1 = X(m.start), x2 = X(m.end);
    if (x2 - x1 < 1) x2 = std::min(right, x1 + 1);
    c.Rect(x1, markTop, x2, bottom, m.repeat ? kRepeat : kOnce);
  }
  // The carrier-off level, and where the repeated part begins.
  c.Line(left, bottom, right, bottom, kBaseline);
  if (g.onceEnd > 0 && g.total > g.onceEnd && g.onceEnd >= g.start && g.onceEnd <= g.start + g.width) {
    const double bx = X(g.onceEnd);
    c.Line(bx, top, bx, bottom, kRepeat, 1.2, true);
    c.Text(bx + 4, top + 12, "repeat", kRepeat, kSmallText);
  }
  if (g.start >= g.total && g.total > 0) {
    c.Text((left + right) / 2, (top + bottom) / 2, "end of signal", kFaintText, kSmallText,
           PictureItem::Align::Centre);
  }
  return picture;
}

std::string WaveformSvg(const WaveformPicture& picture) {
  std::ostringstream out;
  out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << Number(picture.width) << "\" height=\""
      << Number(picture.height) << "\" viewBox=\"0 0 " << Number(picture.width) << " " << Number(picture.height)
      << "\" font-family=\"DejaVu Sans, Arial, sans-serif\">\n";
  for (const PictureItem& item : picture.items) {
    switch (item.kind) {
      case PictureItem::Kind::Rect:
        out << "<rect x=\"" << Number(item.x1) << "\" y=\"" << Number(item.y1) << "\" width=\""
            << Number(item.x2 - item.x1) << "\" height=\"" << Number(item.y2 - item.y1) << "\" fill=\""
            << Hex(item.colour) << "\"/>\n";
        break;
      case PictureItem::Kind::Line:
        out << "<line x1=\"" << Number(item.x1) << "\" y1=\"" << Number(item.y1) << "\" x2=\"" << Number(item.x2)
            << "\" y2=\"" << Number(item.y2) << "\" stroke=\"" << Hex(item.colour) << "\" stroke-width=\""
            << Number(item.lineWidth) << "\"" << (item.dashed ? " stroke-dasharray=\"4 3\"" : "") << "/>\n";
        break;
      case PictureItem::Kind::Text: {
        const char* anchor = item.align == PictureItem::Align::Left    ? "start"
                             : item.align == PictureItem::Align::Right ? "end"
                                                                       : "middle";
        out << "<text x=\"" << Number(item.x1) << "\" y=\"" << Number(item.y1) << "\" font-size=\""
            << Number(item.textSize) << "\" fill=\"" << Hex(item.colour) << "\" text-anchor=\"" << anchor << "\""
            << (item.bold ? " font-weight=\"bold\"" : "") << ">" << XmlEscaped(item.text) << "</text>\n";
        break;
      }
    }
  }
  out << "</svg>\n";
  return out.str();
}

std::string WaveformTitle(const Program& p) {
  const MainForm& f = p.F;
  std::string device = Trim(f.MFG.text + " " + f.Model.text);
  std::string title = device.empty() ? std::string() : device + " - ";
  title += p.Burst.BurstLabel.empty() ? std::string("(no key)") : p.Burst.BurstLabel;
  if (!p.Protocol.ProtocolName.empty()) title += " - " + p.Protocol.ProtocolName;
  // Frequencies are kept in hertz (some old protocol files give kilohertz).
  const double f_hz = p.Protocol.Frequency;
  if (f_hz >= 1000) title += " - " + Number(std::round(f_hz / 100.0) / 10.0) + " kHz";
  else if (f_hz > 0) title += " - " + Number(f_hz) + " kHz";
  return title;
}

std::string WaveformFileName(const Program& p) {
  std::string device = Trim(p.F.MFG.text + " " + p.F.Model.text);
  std::string name = Trim(device + (device.empty() ? "" : " ") + p.Burst.BurstLabel);
  name = CleanFileName(name);
  return name.empty() ? std::string("waveform") : name;
}

}  // namespace bw
