// The lircd.conf harness: the input is a lircd.conf file in a folder named for
// its maker. Every remote in it is imported into a scratch Device Library the
// way import-lirc does it: read, each key's press computed, written as our own
// protocol and device files, those loaded and every key generated and compared
// before they are kept; files already there are replaced. A RunTimeError is the
// program's answer to a bad file and is fine; anything else escaping, a
// sanitizer report or a hang is a finding.
#include <cstdint>
#include <fstream>

#include "lirc/lirc_import.h"
#include "runtime/run_time_error.h"
#include "text_host.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  namespace fs = std::filesystem;
  const fs::path& scratch = bw::fuzz::ScratchFolder("lirc");
  std::error_code ec;
  fs::remove_all(scratch / "Device Library", ec);
  fs::create_directories(scratch / "Device Library");
  fs::create_directories(scratch / "Acme");
  const fs::path conf = scratch / "Acme" / "remote.conf";
  {
    std::ofstream out(conf, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  }
  bw::lirc::ImportOptions options;
  options.overwrite = true;
  try {
    for (const auto& result : bw::lirc::ImportLircFiles({conf.string()}, scratch / "Device Library", options))
      (void)result.Line();
  } catch (const bw::RunTimeError&) {
    // reported with the file's name by the command
  }
  return 0;
}
