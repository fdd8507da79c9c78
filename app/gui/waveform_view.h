// The waveform of the details dialog: paints the picture that the core lays
// out from DrawWaveform, with the view's own zoom and scroll on top of the
// dialog's scale options. The mouse wheel zooms about the pointer (with Shift
// it scrolls), dragging scrolls, and the keys do both (arrows, Page Up/Down,
// Home/End, + and -, 0 for the scale's own view). It computes nothing about
// the signal.
#pragma once

#include <QWidget>

#include "details/details.h"
#include "shell/program.h"

namespace bw::gui {

class WaveformView : public QWidget {
  Q_OBJECT

 public:
  explicit WaveformView(const Program& p, QWidget* parent = nullptr);
  QSize sizeHint() const override { return {640, 170}; }
  QSize minimumSizeHint() const override { return {320, 120}; }

  const WaveformViewport& viewport() const { return viewport_; }
  /// Back to the scale option's own view (zoom 1, no scroll).
  void ResetView();
  /// Repaints when what it would draw has changed; true then.
  bool Refresh();

 signals:
  /// "Save Picture..." chosen from the context menu.
  void savePictureRequested();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  /// Where x lies across the plot: 0 at its left edge, 1 at its right.
  double PlotFraction(double x) const;
  double PlotWidth() const;
  void Changed();

  const Program& p_;
  WaveformViewport viewport_;
  WaveformGeometry drawn_;
  bool dragging_ = false;
  double dragX_ = 0;
};

}  // namespace bw::gui
