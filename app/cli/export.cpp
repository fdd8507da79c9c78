// burstwright-cli export: the loaded device through the core's export writers,
// to stdout or to one file written only once all of it is built.
#include "export.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "export/export.h"
#include "runtime/path_problems.h"

namespace bw::cli {

ExportRequest ParseExportRequest(const std::vector<std::string>& args) {
  ExportRequest r;
  std::vector<std::string> positional;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a == "--format" || a == "--out") {
      if (i + 1 >= args.size()) return {.error = a + " needs a value"};
      (a == "--format" ? r.format : r.out) = args[++i];
    } else if (a.rfind("--", 0) == 0) {
      return {.error = "unknown option " + a};
    } else {
      positional.push_back(a);
    }
  }
  if (positional.size() != 1) return {.error = "export takes one DEVICE"};
  r.device = positional[0];
  std::string names;
  for (const ExportFormat& f : ExportFormats()) {
    if (f.name == r.format) return r;
    names += (names.empty() ? "" : ", ") + f.name;
  }
  r.error = r.format.empty() ? "export needs --format (" + names + ")"
                             : "unknown export format " + r.format + " (" + names + ")";
  return r;
}

bool RunExport(Program& p, const ExportRequest& request) {
  if (request.out.empty()) return ExportDevice(p, request.format, std::cout);
  const std::filesystem::path path = std::filesystem::absolute(request.out);
  if (const std::string problem = NewFileProblem(path); !problem.empty()) {
    p.Message("Can not write " + path.string() + ": " + problem);
    return false;
  }
  std::ostringstream text;
  if (!ExportDevice(p, request.format, text)) return false;
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << text.str();
  file.close();
  if (!file) {
    p.Message("Can not write " + path.string() + ": the write failed");
    return false;
  }
  return true;
}

}  // namespace bw::cli
