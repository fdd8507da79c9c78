// The device file reader: a ".dvc" file's header (manufacturer, device type,
// model, protocol, device code, number base, byte order, protocol statements)
// into the main window's fields, and its key lines into the key table.
#pragma once

#include <cstdint>
#include <string>

#include "shell/program.h"

namespace bw {

/// Loads Device Library/<name>.dvc (name as listed, any case). A missing file ends silently.
void LoadDeviceFile(Program& p, const std::string& name);
/// Reads one code item "[name:]first[,second[,repeat]]".
KeyCode ParseKeyCode(Program& p, const std::string& item, bool hexadecimal, bool bigEndian,
                     int32_t defaultDeviceCode);
/// Moves the name=value fields of the first code list into `key.Options`; returns the rest.
std::string SplitKeyOptions(KeyEntry& key, const std::string& codes);
/// Exchanges the bytes of a value of 256 or more when `bigEndian` is set.
int32_t SwapCodeBytes(int32_t value, bool bigEndian);
/// Device code from two 16-position switch settings ("3", "A" or "*"); -1 aborts a load.
int32_t DecodeSwitchSettings(Program& p, const std::string& first, const std::string& second);

}  // namespace bw
