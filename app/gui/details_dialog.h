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
  /// Escape and the close box do nothing while the run waits for a button.
  void reject() override;

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  Program& p_;
  QtHost& host_;
  FormBinder binder_;
  WaveformView* waveform_ = nullptr;
  QLabel* entryNumber_ = nullptr;
  WaveformGeometry drawn_;
  bool placed_ = false;
};

}  // namespace bw::gui
