// The IR database: opening an Access file made from the template with the
// fixed password, filling the manufacturer/type/model lists, finding or
// allocating identifiers, and storing one Pronto code per key.
#pragma once

#include <cstdint>
#include <string>

#include "shell/program.h"

namespace bw {

/// The password every IR database is locked with (the template is made with
/// it; the program opens databases with "; pwd=" followed by it).
inline constexpr const char* kIRDatabasePassword = "3f8c1d7e05b62";

/// Opens `path` exclusively with the password, keeps it as the current
/// database (replacing any other), fills the lists, resets ButtonSequence.
void OpenIRDatabase(Program& p, const std::string& path);
void CloseIRDatabase(Program& p);
void FillDatabaseLists(Program& p);
/// Reads "Devices" and "IR Codes" once into the lookup structures that let
/// GetDeviceID and AddIRCode answer without walking them.
void BuildIRDatabaseIndex(Program& p);
int16_t GetManufacturerID(Program& p, const std::string& name);
int16_t GetDeviceTypeID(Program& p, const std::string& name);
int32_t GetDeviceID(Program& p, const std::string& model, const std::string& type, const std::string& manufacturer,
                    bool lookupOnly);
void AddIRCode(Program& p, IRCodeRecord& record, const std::string& model, const std::string& type,
               const std::string& manufacturer);

}  // namespace bw
