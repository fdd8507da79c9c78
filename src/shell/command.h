// The one wrapper every command handler runs in: a run-time error ends the
// command, is shown as "Run-time error 'N':" + blank line + description, and
// never ends the program.
#pragma once

#include <functional>

#include "shell/program.h"

namespace bw {

/// Runs `handler`; a RunTimeError it throws is shown through the host. Returns
/// false when the command ended with an error. The busy cursor is switched off.
bool RunCommand(Program& p, const std::function<void()>& handler);

}  // namespace bw
