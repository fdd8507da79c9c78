// QtHost: the Host of the desktop program. Message boxes are QMessageBoxes
// titled "Burstwright", file dialogs are QFileDialogs, DoEvents shows the model
// in both windows and lets Qt deliver pending input, the details dialog is a
// non-modal window that stays alive, and the busy cursor is an application
// override cursor. It also runs every event handler: input into the model,
// the handler inside RunCommand, the model back onto the widgets.
#pragma once

#include <functional>
#include <string>

#include <QElapsedTimer>

#include "shell/host.h"
#include "shell/program.h"

namespace bw::gui {

class MainWindow;
class DetailsDialog;

class QtHost : public Host {
 public:
  explicit QtHost(Program& p) : p_(p) {}

  /// The two windows this host shows; both must be set before any command runs.
  void Attach(MainWindow* main, DetailsDialog* details);

  /// Runs one event handler: user input into the model, the handler inside the
  /// command wrapper, the model onto the widgets. An empty handler only syncs.
  void Dispatch(const std::function<void()>& handler);
  /// Model -> widgets of both windows. True when anything changed.
  bool ShowModel();

  MsgBoxResult MsgBox(const std::string& text, MsgBoxStyle style) override;
  std::string OpenFileDialog(const std::string& filter, const std::string& startPath) override;
  std::string SaveFileDialog(const std::string& filter, const std::string& startPath) override;
  void DoEvents() override;
  void ShowDetails() override;
  void HideDetails() override;
  void SetBusy(bool busy) override;
  void Quit() override;

  bool quitting() const { return quitting_; }

  /// A save dialog with `suggestedName` filled in (for the window's own files).
  std::string SaveFileDialogNamed(const std::string& filter, const std::string& startPath,
                                  const std::string& suggestedName);
  /// The next save dialog a core command opens gets this name filled in.
  void SuggestNextSaveName(const std::string& name) { suggestedName_ = name; }
  /// Message boxes shown so far, and the text of the last one (lines joined).
  int messageCount() const { return messageCount_; }
  const std::string& lastMessage() const { return lastMessage_; }

  /// "MDB Files (*.mdb)|*.mdb" -> "MDB Files (*.mdb)" (pairs of text|patterns).
  static QString QtFilter(const std::string& filter);
  /// The folder a dialog starts in: the path's folder when it ends in a
  /// pattern, the nearest folder that exists, else the home folder.
  static QString StartFolder(const std::string& startPath);

 private:
  std::string FileDialog(bool save, const std::string& filter, const std::string& startPath,
                         const std::string& suggestedName = {});

  Program& p_;
  MainWindow* main_ = nullptr;
  DetailsDialog* details_ = nullptr;
  bool busy_ = false;
  bool quitting_ = false;
  /// Consecutive DoEvents calls that found nothing to show: a wait loop.
  int idleRounds_ = 0;
  std::string suggestedName_;
  int messageCount_ = 0;
  std::string lastMessage_;
};

}  // namespace bw::gui
