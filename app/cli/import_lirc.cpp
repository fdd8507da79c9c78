#include "import_lirc.h"

#include <filesystem>
#include <iostream>

#include "lirc/lirc_import.h"

namespace bw::cli {

int ImportLircCommand(const std::vector<std::string>& args, bool yes, const std::function<std::string()>& library) {
  std::vector<std::string> files;
  std::string to;
  lirc::ImportOptions options;
  options.overwrite = yes;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a == "--to" || a == "--remote") {
      if (i + 1 >= args.size()) {
        std::cerr << "burstwright-cli: " << a << " needs a value\n";
        return 2;
      }
      (a == "--to" ? to : options.remote) = args[++i];
    } else if (a == "--yes") {
      options.overwrite = true;
    } else if (a.rfind("--", 0) == 0) {
      std::cerr << "burstwright-cli: unknown option " << a << "\n";
      return 2;
    } else {
      files.push_back(a);
    }
  }
  if (files.empty()) {
    std::cerr << "burstwright-cli: import-lirc needs at least one lircd.conf FILE\n";
    return 2;
  }
  if (to.empty()) {
    to = library();
    if (to.empty()) return 3;
  }
  std::error_code ec;
  std::filesystem::create_directories(to, ec);
  if (!std::filesystem::is_directory(to)) {
    std::cerr << to << ": not a folder that can be written into\n";
    return 3;
  }
  bool refused = false;
  for (const lirc::ImportResult& r : lirc::ImportLircFiles(files, to, options)) {
    std::cout << r.Line() << "\n";
    refused = refused || !r.Imported();
  }
  return refused ? 1 : 0;
}

}  // namespace bw::cli
