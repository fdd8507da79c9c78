// Start-up: the main window's start state, the output-format list, library
// discovery upward from the program folder, the protocol and device lists, and
// the quit path.
#pragma once

#include <string>

#include "shell/program.h"

namespace bw {

/// Sizes, centres and captions F; overlaps the three output frames.
void Form_Load(Program& p, int screenWidthTwips = 19200, int screenHeightTwips = 14400);
/// False when no Device Library was found (the message was shown and Quit asked).
bool InitializeProgram(Program& p);
/// Form_Load, InitializeProgram, the second ListDeviceFiles, Check1 cleared, F shown.
bool StartProgram(Program& p);
void ListDeviceFiles(Program& p);
void ListProtocolNames(Program& p);
/// Path up to its last separator ("" when none); a trailing separator is removed from `path` first.
std::string ParentFolder(std::string& path);
bool FolderExists(const std::string& path);
void quit_Click(Program& p);
void Form_QueryUnload(Program& p);
void Timer1_Timer(Program& p);
void Check1_Click(Program& p);

}  // namespace bw
