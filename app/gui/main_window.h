// The main window F: one widget per control of the form model, laid out in
// group boxes (device list, device description, output choice, and the three
// output panels that share one place). It shows the model and forwards input;
// every decision is the core's.
#pragma once

#include <QMainWindow>

#include "form_binder.h"
#include "shell/program.h"

class QLabel;
class QTimer;
class QWidget;

namespace bw::gui {

class QtHost;

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  MainWindow(Program& p, QtHost& host);

  /// Model -> widgets (caption, controls, the timer). True when anything changed.
  bool ShowModel();
  /// Widgets -> model.
  void TakeInput();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  QWidget* BuildDeviceList();
  QWidget* BuildDescription();
  QWidget* BuildOutputChoice();
  QWidget* BuildDatabaseFrame();
  QWidget* BuildSlinkFrame();
  QWidget* BuildAdiFrame();
  QWidget* BuildBottomRow();

  Program& p_;
  QtHost& host_;
  FormBinder binder_;
  QTimer* timer1_ = nullptr;
  /// Repeats the status text while the status box itself is hidden.
  QLabel* statusEcho_ = nullptr;
  bool placed_ = false;
};

}  // namespace bw::gui
