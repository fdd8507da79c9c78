// burstwright-cli export DEVICE --format FORMAT [--out FILE]: the command's own
// arguments and its writing, apart from the rest of the command line.
#pragma once

#include <string>
#include <vector>

#include "shell/program.h"

namespace bw::cli {

/// What `export` was asked for; `error` names a usage fault when there is one.
struct ExportRequest {
  std::string device{}, format{}, out{}, error{};
};

ExportRequest ParseExportRequest(const std::vector<std::string>& args);

/// Writes the loaded device as asked: into FILE, or to stdout without --out. A
/// file that cannot be written is reported with its path. False when nothing was written.
bool RunExport(Program& p, const ExportRequest& request);

}  // namespace bw::cli
