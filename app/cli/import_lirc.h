// burstwright-cli import-lirc: LIRC remote files into the Device Library.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bw::cli {

/// Runs `import-lirc FILE... [--to DIR] [--remote NAME] [--yes]`. `library`
/// finds the Device Library in use (empty when there is none); it is asked only
/// when --to is not given. Prints one line per remote; returns the exit status
/// (0 all imported, 1 some refused, 2 usage, 3 no folder to write into).
int ImportLircCommand(const std::vector<std::string>& args, bool yes, const std::function<std::string()>& library);

}  // namespace bw::cli
