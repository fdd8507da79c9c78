// A Host for tests: records every message and dialog request, answers from
// queues, and plays one scripted click per DoEvents so that nested waits (the
// details dialog, the ADI per-key wait) can be driven without a window system.
// Beside it, what every suite shares: temporary folders and a program over one,
// files read whole, run-time errors as text, durations joined as sent.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <deque>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "runtime/run_time_error.h"
#include "shell/host.h"
#include "shell/program.h"

namespace bw::test {

/// Thrown when the core waits for a click that the script does not have.
struct ScriptExhausted : std::logic_error {
  ScriptExhausted() : std::logic_error("the core waited for a click that the test did not script") {}
};

class ScriptedHost : public Host {
 public:
  struct Dialog {
    std::string filter;
    std::string startPath;
  };

  std::vector<std::string> messages;            ///< every MsgBox text, in order
  std::vector<MsgBoxStyle> styles;              ///< the style of each
  std::deque<MsgBoxResult> answers;             ///< for Yes/No boxes; empty queue answers No
  std::deque<std::string> openAnswers;          ///< paths for OpenFileDialog ("" = cancel)
  std::deque<std::string> saveAnswers;          ///< paths for SaveFileDialog
  std::vector<Dialog> openRequests, saveRequests;
  std::deque<std::function<void()>> clicks;     ///< played one per DoEvents
  int doEventsCalls = 0;
  /// DoEvents calls allowed with an empty click queue before a wait counts as stuck.
  int idleLimit = 10000;
  int idleCalls = 0;
  bool busy = false;
  int busyOnCount = 0;
  bool quitCalled = false;
  int detailsShown = 0;
  int detailsHidden = 0;

  MsgBoxResult MsgBox(const std::string& text, MsgBoxStyle style) override;
  std::string OpenFileDialog(const std::string& filter, const std::string& startPath) override;
  std::string SaveFileDialog(const std::string& filter, const std::string& startPath) override;
  void DoEvents() override;
  void ShowDetails() override { ++detailsShown; }
  void HideDetails() override { ++detailsHidden; }
  void SetBusy(bool on) override {
    busy = on;
    if (on) ++busyOnCount;
  }
  void Quit() override { quitCalled = true; }

  /// Queues a click to be played by a later DoEvents.
  void Click(std::function<void()> action) { clicks.push_back(std::move(action)); }
  /// The last message ("" when there was none).
  std::string LastMessage() const { return messages.empty() ? std::string() : messages.back(); }
};

/// A fresh Program wired to a scripted host.
struct TestProgram {
  ScriptedHost host;
  Program p;
  TestProgram() { p.host = &host; }
};

/// A temporary folder removed at the end of the test.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::filesystem::path& path() const { return path_; }
  /// Writes `text` (as given, no line-end conversion) to path()/relative, creating folders.
  std::filesystem::path Write(const std::string& relative, const std::string& text) const;

 private:
  std::filesystem::path path_;
};

/// A program whose folder is a temporary one, with a "Device Library" there that the test writes.
struct LibraryTest : ::testing::Test {
  TestProgram t;
  Program& p = t.p;
  TempDir dir;
  LibraryTest() {
    p.ProgramFolder = dir.path();
    p.DeviceLibraryPath = (dir.path() / "Device Library").string();
  }
  /// Writes `file` of the library.
  std::filesystem::path WriteLibrary(const std::string& file, const std::string& text) const {
    return dir.Write("Device Library/" + file, text);
  }
};

/// Whole file as bytes.
std::string ReadFileBytes(const std::filesystem::path& path);

/// "number description" of the run-time error that `f` raises ("" when none).
inline std::string ErrorText(const std::function<void()>& f) {
  try {
    f();
  } catch (const RunTimeError& e) {
    return std::to_string(e.number()) + " " + e.description();
  }
  return "";
}
/// The number of the run-time error that `f` raises (0 when none).
inline int ErrorNumber(const std::function<void()>& f) { return std::atoi(ErrorText(f).c_str()); }

/// Durations as a transmitter sends them: neighbours of one sign added, zero lengths dropped.
template <class Out = int64_t, class In>
std::vector<Out> Joined(const std::vector<In>& durations) {
  std::vector<Out> out;
  for (Out d : durations)
    if (d != 0 && !out.empty() && (out.back() > 0) == (d > 0)) out.back() += d;
    else if (d != 0) out.push_back(d);
  return out;
}

}  // namespace bw::test
