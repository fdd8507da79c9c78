#include "waveform_view.h"

#include <cmath>

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleOptionFocusRect>
#include <QStylePainter>
#include <QWheelEvent>

#include "picture_painter.h"

namespace bw::gui {

namespace {

/// Side margin of the plot inside the picture (as LayOutWaveform places it).
constexpr double kPlotMargin = 12;
/// One wheel notch or "+" zooms by this factor.
constexpr double kZoomStep = 1.25;
/// One arrow key or wheel notch with Shift scrolls this share of the view.
constexpr double kScrollStep = 0.1;
/// Page Up / Page Down scroll this share, keeping a little of the last view.
constexpr double kPageStep = 0.9;

bool SameGeometry(const WaveformGeometry& a, const WaveformGeometry& b) {
  if (a.start != b.start || a.width != b.width || a.total != b.total || a.onceEnd != b.onceEnd ||
      a.marks.size() != b.marks.size())
    return false;
  for (std::size_t i = 0; i < a.marks.size(); ++i)
    if (a.marks[i].start != b.marks[i].start || a.marks[i].repeat != b.marks[i].repeat) return false;
  return true;
}

}  // namespace

WaveformView::WaveformView(const Program& p, QWidget* parent) : QWidget(parent), p_(p) {
  setObjectName(QStringLiteral("Shape1"));
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setFocusPolicy(Qt::StrongFocus);
  setCursor(Qt::OpenHandCursor);
  setToolTip(QStringLiteral(
      "The entry's signal: carrier-on blocks over time in milliseconds, the part sent once in blue, the "
      "repeated part in orange.\nWheel zooms about the pointer, Shift+wheel or dragging scrolls; keys: "
      "arrows and Page Up/Down scroll, + and - zoom, Home/End go to the start/end, 0 resets.\n"
      "Right-click to save the picture."));
}

void WaveformView::ResetView() {
  viewport_ = {};
  Changed();
}

bool WaveformView::Refresh() {
  WaveformGeometry g = DrawWaveform(p_, viewport_);
  if (SameGeometry(g, drawn_)) return false;
  drawn_ = std::move(g);
  update();
  return true;
}

void WaveformView::Changed() { Refresh(); }

double WaveformView::PlotWidth() const { return qMax(1.0, width() - 2 * kPlotMargin); }

double WaveformView::PlotFraction(double x) const { return qBound(0.0, (x - kPlotMargin) / PlotWidth(), 1.0); }

void WaveformView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing, true);
  drawn_ = DrawWaveform(p_, viewport_);
  bw::picture::PaintPicture(painter, LayOutWaveform(drawn_, width(), height()));
  if (hasFocus()) {
    painter.setPen(QPen(palette().color(QPalette::Highlight), 1, Qt::DotLine));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
  }
}

void WaveformView::wheelEvent(QWheelEvent* event) {
  const QPoint delta = event->angleDelta();
  const bool sideways = delta.x() != 0 || (event->modifiers() & Qt::ShiftModifier);
  const double notches = (sideways ? (delta.x() != 0 ? delta.x() : delta.y()) : delta.y()) / 120.0;
  if (sideways) ScrollWaveform(p_, viewport_, -notches * kScrollStep);
  else ZoomWaveform(p_, viewport_, std::pow(kZoomStep, notches), PlotFraction(event->position().x()));
  Changed();
  event->accept();
}

void WaveformView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return QWidget::mousePressEvent(event);
  dragging_ = true;
  dragX_ = event->position().x();
  setCursor(Qt::ClosedHandCursor);
}

void WaveformView::mouseMoveEvent(QMouseEvent* event) {
  if (!dragging_) return;
  const double x = event->position().x();
  ScrollWaveform(p_, viewport_, -(x - dragX_) / PlotWidth());
  dragX_ = x;
  Changed();
}

void WaveformView::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return QWidget::mouseReleaseEvent(event);
  dragging_ = false;
  setCursor(Qt::OpenHandCursor);
}

void WaveformView::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Left: ScrollWaveform(p_, viewport_, -kScrollStep); break;
    case Qt::Key_Right: ScrollWaveform(p_, viewport_, kScrollStep); break;
    case Qt::Key_PageUp: ScrollWaveform(p_, viewport_, -kPageStep); break;
    case Qt::Key_PageDown: ScrollWaveform(p_, viewport_, kPageStep); break;
    case Qt::Key_Home: ScrollWaveform(p_, viewport_, -1e9); break;
    case Qt::Key_End: ScrollWaveform(p_, viewport_, 1e9); break;
    case Qt::Key_Plus:
    case Qt::Key_Equal: ZoomWaveform(p_, viewport_, kZoomStep); break;
    case Qt::Key_Minus: ZoomWaveform(p_, viewport_, 1 / kZoomStep); break;
    case Qt::Key_0: viewport_ = {}; break;
    default: return QWidget::keyPressEvent(event);
  }
  Changed();
}

void WaveformView::contextMenuEvent(QContextMenuEvent* event) {
  QMenu menu(this);
  menu.addAction(QStringLiteral("Save Picture..."), this, &WaveformView::savePictureRequested);
  menu.addAction(QStringLiteral("Reset View"), this, [this] { ResetView(); });
  menu.exec(event->globalPos());
}

}  // namespace bw::gui
