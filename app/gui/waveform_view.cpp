#include "waveform_view.h"

#include <QPainter>
#include <QPainterPath>

#include "details/details.h"

namespace bw::gui {

namespace {

const QColor kBackground(0xfb, 0xfc, 0xfe);
const QColor kGrid(0xe3, 0xe8, 0xef);
const QColor kBaseline(0xb8, 0xc2, 0xcf);
const QColor kOnce(0x1f, 0x5f, 0xbf);
const QColor kRepeat(0xd9, 0x5d, 0x10);
const QColor kLegendText(0x4a, 0x55, 0x68);

/// Grid lines across the view: tenths of its width.
constexpr int kGridDivisions = 10;

}  // namespace

WaveformView::WaveformView(const Program& p, QWidget* parent) : QWidget(parent), p_(p) {
  setObjectName(QStringLiteral("Shape1"));
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
  setAttribute(Qt::WA_OpaquePaintEvent);
}

void WaveformView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing, true);
  const QRectF all = rect();
  painter.fillRect(all, kBackground);

  const double marginX = 8, legendHeight = 18, marginBottom = 10;
  const QRectF plot(marginX, legendHeight + 6, all.width() - 2 * marginX,
                    all.height() - legendHeight - 6 - marginBottom);

  painter.setPen(QPen(kGrid, 1));
  for (int i = 0; i <= kGridDivisions; ++i) {
    double x = plot.left() + plot.width() * i / kGridDivisions;
    painter.drawLine(QPointF(x, plot.top()), QPointF(x, plot.bottom()));
  }
  painter.setPen(QPen(kBaseline, 1, Qt::DashLine));
  painter.drawLine(plot.bottomLeft(), plot.bottomRight());
  painter.drawLine(plot.topLeft(), plot.topRight());

  const WaveformGeometry g = DrawWaveform(p_);
  if (g.viewWidth > 0) {
    painter.save();
    painter.setClipRect(plot.adjusted(-1, -2, 1, 2));
    auto stroke = [&](const std::vector<WavePoint>& line, const QColor& colour) {
      if (line.size() < 2) return;
      QPainterPath path;
      for (std::size_t i = 0; i < line.size(); ++i) {
        QPointF at(plot.left() + line[i].x / g.viewWidth * plot.width(),
                   plot.bottom() - line[i].y * plot.height());
        if (i == 0) path.moveTo(at);
        else path.lineTo(at);
      }
      painter.setPen(QPen(colour, 1.6, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
      painter.drawPath(path);
    };
    stroke(g.once, kOnce);
    stroke(g.repeat, kRepeat);
    painter.restore();
  }

  // Legend: which colour is which part.
  QFont small = font();
  small.setPointSizeF(small.pointSizeF() * 0.9);
  painter.setFont(small);
  double x = plot.left();
  auto legend = [&](const QColor& colour, const QString& text) {
    painter.setPen(QPen(colour, 3));
    painter.drawLine(QPointF(x, legendHeight / 2 + 2), QPointF(x + 18, legendHeight / 2 + 2));
    painter.setPen(kLegendText);
    QRectF textRect(x + 24, 0, 200, legendHeight + 4);
    painter.drawText(textRect, Qt::AlignVCenter | Qt::AlignLeft, text);
    x += 24 + painter.fontMetrics().horizontalAdvance(text) + 18;
  };
  legend(kOnce, QStringLiteral("sent once"));
  legend(kRepeat, QStringLiteral("repeated"));
}

}  // namespace bw::gui
