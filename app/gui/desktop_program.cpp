#include "desktop_program.h"

#include "shell/startup.h"

namespace bw::gui {

DesktopProgram::DesktopProgram() {
  p_.host = &host_;
  host_.Attach(&window_, &details_);
  // The window's design: the auto-generation frames appear only once "Auto
  // Generate" is checked (its handler shows and hides them from then on).
  p_.F.Frame2.visible = false;
  p_.F.Frame4.visible = false;
  // The widgets start from the model's defaults before anything reads them back.
  host_.ShowModel();
}

bool DesktopProgram::Start(const std::filesystem::path& programFolder, const std::string& commandLine) {
  p_.ProgramFolder = programFolder;
  p_.CommandLine = commandLine;
  bool started = false;
  host_.Dispatch([this, &started] { started = StartProgram(p_); });
  if (!started || host_.quitting()) return false;
  host_.ShowModel();
  return true;
}

}  // namespace bw::gui
