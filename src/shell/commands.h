// The main window's commands that prepare a run: loading the selected device
// file, switching auto-generation, and choosing the output format.
#pragma once

#include "shell/program.h"

namespace bw {

void Lex_Click(Program& p);
void Autogen_Click(Program& p);
void Output_Click(Program& p);

}  // namespace bw
