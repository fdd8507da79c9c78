// The window's menu commands over the core: LIRC remote files imported into
// the Device Library in use (the device list refreshed afterwards) and the
// loaded device exported in one of the export formats. Each answers with the
// line the status bar shows.
#pragma once

#include <string>
#include <vector>

#include "shell/program.h"
#include "shell/window_guide.h"

namespace bw {

/// Imports every remote of `files` into the Device Library, then lists the
/// device files again. The report's text counts what came in; `details` has
/// one line per remote (why one was refused).
struct ImportReport {
  RunReport report;
  std::string details;
  int imported = 0;
};
ImportReport ImportLircRemotes(Program& p, const std::vector<std::string>& files);

/// Writes the loaded device in export format `format` (a name of
/// ExportFormats()) into `path`. Messages go through the host.
RunReport ExportLoadedDevice(Program& p, const std::string& format, const std::string& path);

}  // namespace bw
