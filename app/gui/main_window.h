// The main window F: one widget per control of the form model, laid out in
// group boxes (device list, device description, output choice, and the three
// output panels that share one place). It shows the model and forwards input;
// every decision is the core's.
#pragma once

#include <QMainWindow>

#include <functional>
#include <string>

#include "form_binder.h"
#include "shell/program.h"
#include "shell/window_guide.h"

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

  // ---- the menu commands (also reachable from tests) ----
  void ImportLircRemotes();
  void ExportDevice();
  void ShowAbout();

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
  void BuildMenus();
  void BuildStatusBar();

  /// `run` with its status line: what it wrote and where, or why nothing.
  std::function<void()> Reported(RunOutput output, std::function<void()> run);
  void ShowReport(const RunReport& report);
  /// A core command that opens a file dialog in `folder` (created first) offering `name`.
  std::function<void()> InFolder(const char* folder, std::function<std::string()> name,
                                 std::function<void()> command);

  Program& p_;
  QtHost& host_;
  FormBinder binder_;
  QTimer* timer1_ = nullptr;
  /// Repeats the status text while the status box itself is hidden.
  QLabel* statusEcho_ = nullptr;
  /// The status bar: the last run's line and its output folder as a link.
  QLabel* runReport_ = nullptr;
  QLabel* outputFolder_ = nullptr;
  bool placed_ = false;
};

}  // namespace bw::gui
