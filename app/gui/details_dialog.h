// The details dialog DBG, "IR Database Entry Details": the entry's values,
// its code text (decimal or HEX words) beside the list of its durations, the
// waveform with its scale options, and Next / Skip / Finish. Non-modal and kept
// alive; while the core waits for one of the three buttons the rest of the
// program stays usable.
#pragma once

#include <vector>

#include <QDialog>

#include "details/details.h"
#include "form_binder.h"
#include "shell/program.h"

class QLabel;

namespace bw::gui {

class QtHost;
class WaveformView;

class DetailsDialog : public QDialog {
  Q_OBJECT

 public:
  DetailsDialog(Program& p, QtHost& host, QWidget* parent = nullptr);

  /// Model -> widgets. True when anything changed.
  bool ShowModel();
  void TakeInput();
  /// Centres the dialog on the screen the first time it is shown.
  void PlaceOnFirstShow();

 public slots:
  /// Escape and the close box end a waiting run's wait as "Finish" does.
  void reject() override;
  /// The shown entry's waveform, as it is in view, into a PNG or SVG file.
  void SavePicture();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  Program& p_;
  QtHost& host_;
  FormBinder binder_;
  WaveformView* waveform_ = nullptr;
  QLabel* entryNumber_ = nullptr;
  int shownEntry_ = -1;
  bool placed_ = false;
};

}  // namespace bw::gui
