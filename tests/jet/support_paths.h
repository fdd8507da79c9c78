// Where the jet tests find the Access sample files and the built programs.
#pragma once

#include <string>

namespace jettest {

inline std::string AccessSamples() { return std::string(BW_SHARED_DIR) + "/testdata/access"; }
inline std::string BinDir() { return BW_BIN_DIR; }

}  // namespace jettest
