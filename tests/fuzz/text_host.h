// The host of the text harnesses: a person who presses on through everything.
// Questions are answered Yes (so overwrites and replacements happen), file
// dialogs name a fixed file in the harness's scratch folder, the details dialog
// gets a look (scale, scroll, hex, waveform) and "Next" on its first entry and
// "Finish" on the second, and an ADI run waiting for a key gets "Add"; a wait
// for anything else would spin until libFuzzer calls it a hang. Every message
// is counted, none kept.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "adi/adi.h"
#include "details/details.h"
#include "runtime/run_time_error.h"
#include "shell/program.h"

namespace bw::fuzz {

class TextHost : public Host {
 public:
  Program* program = nullptr;
  std::string dialogFile;
  int messages = 0;
  int detailsSeen = 0;

  MsgBoxResult MsgBox(const std::string&, MsgBoxStyle style) override {
    ++messages;
    return style == MsgBoxStyle::OKOnly ? MsgBoxResult::OK : MsgBoxResult::Yes;
  }
  std::string OpenFileDialog(const std::string&, const std::string&) override { return dialogFile; }
  std::string SaveFileDialog(const std::string&, const std::string&) override { return dialogFile; }
  void DoEvents() override {
    Program& p = *program;
    if (p.DBG.Next.enabled) {
      // The first entry is looked at, the second ends the dialog: the rest of
      // the run goes on unseen, which keeps each input quick.
      if (detailsSeen++ == 0) {
        LookAtDetails(p);
        Next_Click(p);
      } else {
        Finish_Click(p);
      }
    } else if (p.FormatADI && p.AdiKeyChoice == 0 && p.F.CmdADIadd.enabled) {
      CmdADIadd_Click(p);
    }
  }
  void ShowDetails() override {}
  void HideDetails() override {}
  void SetBusy(bool) override {}
  void Quit() override { program->QuitRequested = true; }

 private:
  /// What a person does in the details dialog before pressing Next; the view
  /// would draw the waveform after each of these.
  static void LookAtDetails(Program& p) {
    try {
      for (int scale = 0; scale < 3; ++scale) {
        Option1_Click(p, scale);
        DrawWaveform(p);
      }
      Command1_Click(p);
      DrawWaveform(p);
      p.DBG.HexOPT.value = 1 - p.DBG.HexOPT.value;
      HexOPT_Click(p);
    } catch (const RunTimeError&) {
      // The front end reports it and the dialog stays open.
    }
  }
};

/// A folder of this process for the files a harness writes, removed at exit.
inline const std::filesystem::path& ScratchFolder(const char* name) {
  static const std::filesystem::path folder = [name] {
    std::error_code ec;
    std::filesystem::path base =
        std::filesystem::is_directory("/dev/shm", ec) ? "/dev/shm" : std::filesystem::temp_directory_path();
    std::filesystem::path dir = base / ("bw-fuzz-" + std::string(name) + "-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    std::atexit([] {
      std::error_code ignored;
      std::filesystem::remove_all(ScratchFolder(nullptr), ignored);
    });
    return dir;
  }();
  return folder;
}

}  // namespace bw::fuzz
