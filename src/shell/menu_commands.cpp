#include "shell/menu_commands.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "export/export.h"
#include "lirc/lirc_import.h"
#include "shell/startup.h"

namespace bw {

namespace {

std::string Count(int n, const char* one, const char* many) { return std::to_string(n) + " " + (n == 1 ? one : many); }

}  // namespace

ImportReport ImportLircRemotes(Program& p, const std::vector<std::string>& files) {
  ImportReport r;
  const std::filesystem::path library = p.DeviceLibraryPath;
  int refused = 0;
  for (const lirc::ImportResult& result : lirc::ImportLircFiles(files, library)) {
    r.details += result.Line() + "\n";
    result.Imported() ? ++r.imported : ++refused;
  }
  ListDeviceFiles(p);
  r.report.keys = r.imported;
  r.report.folder = library.string();
  r.report.text = "Imported " + Count(r.imported, "remote", "remotes") + " into \xE2\x80\xA6/" +
                  library.filename().string();
  if (refused > 0) r.report.text += ", " + Count(refused, "remote", "remotes") + " not imported";
  return r;
}

RunReport ExportLoadedDevice(Program& p, const std::string& format, const std::string& path) {
  RunReport r;
  std::string title = format;
  for (const ExportFormat& f : ExportFormats())
    if (f.name == format) title = f.title;
  std::ostringstream text;
  if (!ExportDevice(p, format, text)) {
    r.text = "Exported nothing as " + title;
    return r;
  }
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << text.str();
  file.close();
  if (!file) {
    p.Message("Can not write " + path + ": the write failed");
    r.text = "Exported nothing: " + path + " could not be written";
    return r;
  }
  const std::filesystem::path written = path;
  r.keys = p.Keys.UpperBound();  // the export writes every key of the device
  r.folder = written.parent_path().string();
  r.text = "Exported " + Count(static_cast<int>(r.keys), "key", "keys") + " as " + title + " to \xE2\x80\xA6/" +
           written.filename().string();
  return r;
}

}  // namespace bw
