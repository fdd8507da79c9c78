// The desktop program as one object: the Program, its Qt host and the two
// windows, wired together, and the start-up that main() runs. The Qt test
// suite and the screenshot driver start the very same object.
#pragma once

#include <filesystem>
#include <string>

#include "details_dialog.h"
#include "main_window.h"
#include "qt_host.h"
#include "shell/program.h"

namespace bw::gui {

class DesktopProgram {
 public:
  DesktopProgram();
  DesktopProgram(const DesktopProgram&) = delete;
  DesktopProgram& operator=(const DesktopProgram&) = delete;

  /// The core's start-up from `programFolder` (template, output folders, and
  /// where the Device Library search begins). False when start-up ended the
  /// program (no Device Library); the message has been shown then.
  bool Start(const std::filesystem::path& programFolder, const std::string& commandLine);

  Program& program() { return p_; }
  QtHost& host() { return host_; }
  MainWindow& window() { return window_; }
  DetailsDialog& details() { return details_; }

 private:
  Program p_;
  QtHost host_{p_};
  MainWindow window_{p_, host_};
  DetailsDialog details_{p_, host_, &window_};
};

}  // namespace bw::gui
