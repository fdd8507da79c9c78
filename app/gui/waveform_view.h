// The waveform of the details dialog: strokes the geometry that the core's
// DrawWaveform computes, the part sent once and the repeated part in two
// colours, over a light grid. It draws; it computes nothing about the signal.
#pragma once

#include <QWidget>

#include "shell/program.h"

namespace bw::gui {

class WaveformView : public QWidget {
  Q_OBJECT

 public:
  explicit WaveformView(const Program& p, QWidget* parent = nullptr);
  QSize sizeHint() const override { return {640, 150}; }
  QSize minimumSizeHint() const override { return {320, 110}; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  const Program& p_;
};

}  // namespace bw::gui
