#include "shell/command.h"

#include "runtime/run_time_error.h"

namespace bw {

bool RunCommand(Program& p, const std::function<void()>& handler) {
  try {
    handler();
    return true;
  } catch (const RunTimeError& e) {
    p.host->SetBusy(false);
    p.host->MsgBox(RunTimeErrorMessage(e), MsgBoxStyle::OKOnly);
    return false;
  }
}

}  // namespace bw
