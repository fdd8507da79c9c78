// The IR database: opening an Access file made from the template with the
// fixed password, filling the manufacturer/type/model lists, finding or
// allocating identifiers, and storing one Pronto code per key.
#pragma once

#include <cstdint>
#include <string>

#include "shell/program.h"

namespace bw {

void OpenIRDatabase(Program& p, const std::string& path);
void CloseIRDatabase(Program& p);
void FillDatabaseLists(Program& p);
int16_t GetManufacturerID(Program& p, const std::string& name);
int16_t GetDeviceTypeID(Program& p, const std::string& name);
int32_t GetDeviceID(Program& p, const std::string& model, const std::string& type, const std::string& manufacturer,
                    bool lookupOnly);
void AddIRCode(Program& p, IRCodeRecord& record, const std::string& model, const std::string& type,
               const std::string& manufacturer);

}  // namespace bw
