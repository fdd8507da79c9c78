// Imported LIRC remotes driven through the program's own path: the device
// chosen in the device list and loaded by Lex_Click, keys built for an output
// as a run builds them, durations compared once neighbours of one kind are
// joined (a transmitter sends them as one).
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "lirc/lirc_import.h"
#include "support/scripted_host.h"

namespace bw::test::lirc {

using Durations = std::vector<int64_t>;

/// A scratch Device Library that remotes are imported into.
struct ImportedLibrary {
  TempDir dir;
  std::vector<bw::lirc::ImportResult> results;

  /// Imports `text` written as dir/<brand>/<name> (the folder names the manufacturer).
  const std::vector<bw::lirc::ImportResult>& Import(const std::string& text, const std::string& name = "test.conf",
                                                    const bw::lirc::ImportOptions& options = {});
  std::filesystem::path Library() const { return dir.path() / "library"; }
  /// label -> joined durations of every key of `device` (as listed): the part
  /// sent once for the Pronto output, the whole entry for the Slink-e one.
  /// `held` gets the repeated parts.
  std::map<std::string, Durations> Keys(const std::string& device, bool slinke, std::vector<std::string>* messages = nullptr,
                                        std::map<std::string, Durations>* held = nullptr) const;
};

}  // namespace bw::test::lirc
