// The Host: everything that needs a person or a window system. The core calls
// it for message boxes, file dialogs, event processing while it waits, the
// details dialog, the busy cursor and quitting. QtHost implements it with real
// widgets; tests use a scripted host that records messages and plays clicks.
#pragma once

#include <string>
#include <vector>

namespace bw {

enum class MsgBoxStyle { OKOnly, YesNo, YesNoCancel };
enum class MsgBoxResult { OK, Yes, No, Cancel };

class Host {
 public:
  virtual ~Host() = default;
  /// A modal message box titled "Burstwright". CR LF inside `text` breaks lines.
  virtual MsgBoxResult MsgBox(const std::string& text, MsgBoxStyle style = MsgBoxStyle::OKOnly) = 0;
  /// File dialogs: `filter` as "MDB Files (*.mdb)|*.mdb"; `startPath` a folder or
  /// folder/pattern. Cancel gives "".
  virtual std::string OpenFileDialog(const std::string& filter, const std::string& startPath) = 0;
  virtual std::string SaveFileDialog(const std::string& filter, const std::string& startPath) = 0;
  /// Processes pending events once: shows the model, delivers user input.
  virtual void DoEvents() = 0;
  /// The details dialog DBG: show (filled from the model) and put away.
  virtual void ShowDetails() = 0;
  virtual void HideDetails() = 0;
  /// Hourglass on or off.
  virtual void SetBusy(bool busy) = 0;
  /// Ends the program (the front end closes its windows and leaves its loop).
  virtual void Quit() = 0;
};

/// A host without a person: message texts are kept in `messages`, a plain
/// message is answered OK and a question `answer`; dialogs are cancelled and
/// everything else does nothing. For batch work (imports, benchmarks, fuzzing).
class RecordingHost : public Host {
 public:
  explicit RecordingHost(MsgBoxResult answer = MsgBoxResult::OK) : answer_(answer) {}
  std::vector<std::string> messages;
  MsgBoxResult MsgBox(const std::string& text, MsgBoxStyle style) override {
    messages.push_back(text);
    return style == MsgBoxStyle::OKOnly ? MsgBoxResult::OK : answer_;
  }
  std::string OpenFileDialog(const std::string&, const std::string&) override { return {}; }
  std::string SaveFileDialog(const std::string&, const std::string&) override { return {}; }
  void DoEvents() override {}
  void ShowDetails() override {}
  void HideDetails() override {}
  void SetBusy(bool) override {}
  void Quit() override {}

 private:
  MsgBoxResult answer_;
};

}  // namespace bw
