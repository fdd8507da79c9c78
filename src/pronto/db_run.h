// The IR database commands of the main window's database frame: the
// generation run that writes the loaded device (or, for a Xantech device with
// one varying switch, sixteen devices) into the open database as Pronto codes,
// opening, closing and creating databases from the template, showing a model's
// owner, and deleting manufacturers, device types and models together with
// their devices and IR codes.
#pragma once

#include <cstdint>
#include <string>

#include "shell/program.h"

namespace bw {

// ---- the generation run ----
/// The "Process" button of the database frame.
void xqtcmd_Click(Program& p);
/// Checks the open database and the description fields, then writes the device.
void GenerateIRDatabase(Program& p);
/// Sixteen models "RC68-x/y", one per setting of the varying Xantech switch.
void RunXantechSweep(Program& p);

// ---- open, close, create ----
/// "Open" while no database is open, "Close" while one is.
void LoadDB_Click(Program& p);
/// A new database from the template "Empty_RCIR.mdb" (nothing while one is open).
void NewDB_Click(Program& p);

// ---- the lists ----
/// Puts the selected model's device type and manufacturer into the other two lists.
void DvcModelList_Click(Program& p);

// ---- deleting ----
void DBmfgDEL_Click(Program& p);
void DBtypDEL_Click(Program& p);
void DBdvcDel_Click(Program& p);
/// Deletes every manufacturer row named `name` (any case) and all its devices.
void DeleteManufacturer(Program& p, const std::string& name);
/// Deletes every device type row named `name` (any case) and all its devices.
void DeleteDeviceType(Program& p, const std::string& name);

/// How DeleteDevice picks the devices it removes.
enum class DeleteDeviceMode { ByModel, ByManufacturer, ByDeviceType };
/// ByModel deletes the models named `model`; the two others every device whose
/// manufacturer or device type identifier is `id`. IR codes of each go too.
void DeleteDevice(Program& p, DeleteDeviceMode mode, const std::string& model, int32_t id = 0);
/// Deletes every "Devices" row of this model (any case), refills the model
/// list, then deletes the IR codes of the last such device.
void DeleteModel(Program& p, const std::string& model);

}  // namespace bw
