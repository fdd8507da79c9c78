#include "pronto/db_run.h"

#include <filesystem>
#include <system_error>
#include <vector>

#include "generate/generate.h"
#include "input/device_file.h"
#include "input/subroutines.h"
#include "jet/database.h"
#include "jet/recordset.h"
#include "pronto/db_access.h"
#include "runtime/numbers.h"
#include "runtime/run_time_error.h"

namespace bw {
namespace {

namespace fs = std::filesystem;

// ---- the texts this frame shows ----
constexpr const char* kNoDatabase = "No Data base has been selected, Please open a data Base";
constexpr const char* kNoManufacturer = "Please Enter the name of the Manufacturer";
constexpr const char* kNoModel = "Please Enter the name of the Device Model";
constexpr const char* kNoDeviceType = "Please Enter the name of the Device Type";
constexpr const char* kNoProtocol = "Please Select the IR Protocol";
constexpr const char* kNoTemplate = "Could not locate Empty Data base template";
constexpr const char* kAskDeleteManufacturer = "This will delete all devices of this Manufacturer, Proceed?";
constexpr const char* kAskDeleteType = "This will delete all devices of this type, Proceed?";
// The device-type command reports an empty selection with this text too.
constexpr const char* kNoManufacturerSelected = "No Manufacturer selected, Request Cancelled";
constexpr const char* kNoDeviceSelected = "No Device selected, Request Cancelled";

constexpr const char* kDatabaseFilter = "MDB Files (*.mdb)|*.mdb";
constexpr const char* kTemplateName = "Empty_RCIR.mdb";
constexpr const char* kDatabaseFolder = "Generated IRDBs";
// Every Xantech model of a sweep is named after the two switch settings.
constexpr const char* kXantechModelPrefix = "RC68-";

std::string Upper(const std::string& s) { return jet::UpperName(s); }

/// One switch setting as the upper-case hexadecimal digit written on the switch.
std::string SwitchDigit(int value) {
  static const char kDigits[] = "0123456789ABCDEF";
  if (value < 0 || value > 15) ThrowSubscriptOutOfRange();
  return std::string(1, kDigits[value]);
}

jet::Database& Db(Program& p) {
  if (!p.Database) throw RunTimeError(91, "Object variable or With block variable not set");
  return *p.Database;
}

void SetDeleteButtons(Program& p, bool enabled) {
  p.F.DBmfgDEL.enabled = enabled;
  p.F.DBtypDEL.enabled = enabled;
  p.F.DBdvcDel.enabled = enabled;
}

/// The generator over the device code and function range of the window's fields.
void GenerateFromFields(Program& p) {
  GenerateKeys(p, p.F.format.text, ParseNumber(p.F.DC.text), CInt(ParseNumber(p.F.FFC.text)),
               CInt(ParseNumber(p.F.LFC.text)));
}

/// Rows of `table` named `name` (any case) go, with every device that uses
/// their identifier; the list is refilled from what remains.
void DeleteNamed(Program& p, const std::string& table, const std::string& idColumn, const std::string& name,
                 DeleteDeviceMode devices, ComboBox& list) {
  auto rs = Db(p).OpenRecordset(table);
  const std::string wanted = Upper(name);
  if (rs->RecordCount() > 0) {
    rs->MoveFirst();
    while (!rs->Eof()) {
      if (Upper(rs->Field("name").AsText()) == wanted) {
        int32_t id = int32_t(rs->Field(idColumn).AsInteger());
        rs->Delete();
        DeleteDevice(p, devices, std::string(), id);
      }
      rs->MoveNext();
    }
  }
  list.Clear();
  if (rs->RecordCount() > 0) {
    rs->MoveFirst();
    while (!rs->Eof()) {
      list.AddItem(Upper(rs->Field("name").AsText()));
      rs->MoveNext();
    }
  }
  rs->Close();
}

}  // namespace

// ---- the generation run ----

void xqtcmd_Click(Program& p) { GenerateIRDatabase(p); }

void GenerateIRDatabase(Program& p) {
  MainForm& f = p.F;
  if (!p.DatabaseOpen) {
    p.Message(kNoDatabase);
    return;
  }
  if (f.MFG.text.empty()) {
    p.Message(kNoManufacturer);
    return;
  }
  if (f.Model.text.empty()) {
    p.Message(kNoModel);
    return;
  }
  if (f.Device.text.empty()) {
    p.Message(kNoDeviceType);
    return;
  }
  if (f.format.text.empty()) {
    p.Message(kNoProtocol);
    return;
  }
  f.xqtcmd.enabled = false;

  // A device whose DEVICECODE leaves one switch open ("*/5") is a family of
  // sixteen devices: the open switch is swept, the other keeps its setting.
  if (p.SwitchWildcard) {
    p.XantechSweep = p.VaryingSwitch;
    p.XantechCode1 = p.Switch1Setting;
    p.XantechCode2 = p.Switch2Setting;
  } else {
    p.XantechSweep = 0;
  }

  if (f.format.text == "XANTECH" && p.XantechSweep != 0) {
    RunXantechSweep(p);
    return;
  }
  p.ButtonSequence = 0;
  GenerateFromFields(p);
  f.xqtcmd.enabled = true;
  FillDatabaseLists(p);
}

void RunXantechSweep(Program& p) {
  int16_t* running = nullptr;
  if (p.XantechSweep == 1) running = &p.XantechCode1;
  else if (p.XantechSweep == 2) running = &p.XantechCode2;
  else return;  // no such switch: the run ends with Process still disabled

  // ButtonSequence is not reset: "FunctionID" keeps counting over all sixteen models.
  for (int16_t v = 0; v <= 15; ++v) {
    *running = v;
    const std::string first = SwitchDigit(p.XantechCode1);
    const std::string second = SwitchDigit(p.XantechCode2);
    for (int key = 1; key <= p.Keys.UpperBound(); ++key) {
      KeyEntry& entry = p.Keys[key];
      if (!entry.FirstCodes.empty()) entry.FirstCodes[0].DeviceCode = DecodeSwitchSettings(p, first, second);
    }
    p.F.Model.text = kXantechModelPrefix + first + "/" + second;
    p.host->DoEvents();
    GenerateFromFields(p);
    p.F.xqtcmd.enabled = true;
    FillDatabaseLists(p);
  }
}

// ---- open, close, create ----

void LoadDB_Click(Program& p) {
  MainForm& f = p.F;
  // Engine errors while opening or closing end the command without a report.
  try {
    if (p.DatabaseOpen) {
      CloseIRDatabase(p);
      f.LoadDB.caption = "Open";
      p.DatabaseOpen = false;
      f.DvcMfglist.Clear();
      f.DvcTypeList.Clear();
      f.DvcModelList.Clear();
      f.dbname.text.clear();
      SetDeleteButtons(p, false);
      return;
    }
    std::string path =
        p.host->OpenFileDialog(kDatabaseFilter, (p.ProgramFolder / kDatabaseFolder / "*.mdb").string());
    if (path.empty()) return;
    f.dbname.text = path;
    OpenIRDatabase(p, path);
    f.LoadDB.caption = "Close";
    SetDeleteButtons(p, true);
  } catch (const RunTimeError&) {
  }
}

void NewDB_Click(Program& p) {
  MainForm& f = p.F;
  if (p.DatabaseOpen) return;
  // Every failure from here on (copying, opening) ends the command quietly.
  try {
    std::string path =
        p.host->SaveFileDialog(kDatabaseFilter, (p.ProgramFolder / kDatabaseFolder / "*.mdb").string());
    if (path.empty()) return;
    f.dbname.text = path;
    const fs::path templatePath = p.ProgramFolder / kTemplateName;
    if (FileExists(templatePath)) {
      if (FileExists(path)) {
        // TV.mdb is kept as TV.bak.
        std::string backup = path.size() >= 3 ? path.substr(0, path.size() - 3) + "bak" : std::string("bak");
        fs::copy_file(path, backup, fs::copy_options::overwrite_existing);
        fs::remove(path);
      }
      const fs::path folder = p.ProgramFolder / kDatabaseFolder;
      if (!fs::is_directory(folder)) fs::create_directories(folder);
      fs::copy_file(templatePath, path, fs::copy_options::overwrite_existing);
    } else {
      p.Message(kNoTemplate);
    }
    OpenIRDatabase(p, path);
    f.LoadDB.caption = "Close";
    SetDeleteButtons(p, true);
  } catch (const RunTimeError&) {
  } catch (const fs::filesystem_error&) {
  }
}

// ---- the lists ----

void DvcModelList_Click(Program& p) {
  MainForm& f = p.F;
  if (!p.DatabaseOpen) return;
  const std::string model = Upper(f.DvcModelList.text);
  bool found = false;
  int32_t typeId = 0, manufacturerId = 0;
  auto devices = Db(p).OpenRecordset("Devices");
  while (!devices->Eof()) {
    if (Upper(devices->Field("Model").AsText()) == model) {
      typeId = int32_t(devices->Field("DeviceTypeid").AsInteger());
      manufacturerId = int32_t(devices->Field("ManufacturerID").AsInteger());
      found = true;
    }
    devices->MoveNext();
  }
  devices->Close();
  if (!found) return;

  auto types = Db(p).OpenRecordset("Device Types");
  while (!types->Eof()) {
    if (types->Field("DeviceTypeid").AsInteger() == typeId) f.DvcTypeList.text = types->Field("name").AsText();
    types->MoveNext();
  }
  types->Close();
  auto makers = Db(p).OpenRecordset("Manufacturers");
  while (!makers->Eof()) {
    if (makers->Field("id").AsInteger() == manufacturerId) f.DvcMfglist.text = makers->Field("name").AsText();
    makers->MoveNext();
  }
  makers->Close();
}

// ---- deleting ----

void DBmfgDEL_Click(Program& p) {
  if (p.F.DvcMfglist.text.empty()) {
    p.Message(kNoManufacturerSelected);
    return;
  }
  if (p.host->MsgBox(kAskDeleteManufacturer, MsgBoxStyle::YesNo) != MsgBoxResult::Yes) return;
  DeleteManufacturer(p, p.F.DvcMfglist.text);
}

void DBtypDEL_Click(Program& p) {
  if (p.F.DvcTypeList.text.empty()) {
    p.Message(kNoManufacturerSelected);
    return;
  }
  if (p.host->MsgBox(kAskDeleteType, MsgBoxStyle::YesNo) != MsgBoxResult::Yes) return;
  DeleteDeviceType(p, p.F.DvcTypeList.text);
}

void DBdvcDel_Click(Program& p) {
  if (p.F.DvcModelList.text.empty()) {
    p.Message(kNoDeviceSelected);
    return;
  }
  DeleteDevice(p, DeleteDeviceMode::ByModel, p.F.DvcModelList.text);
}

void DeleteManufacturer(Program& p, const std::string& name) {
  DeleteNamed(p, "Manufacturers", "id", name, DeleteDeviceMode::ByManufacturer, p.F.DvcMfglist);
}

void DeleteDeviceType(Program& p, const std::string& name) {
  DeleteNamed(p, "Device Types", "DeviceTypeid", name, DeleteDeviceMode::ByDeviceType, p.F.DvcTypeList);
}

void DeleteDevice(Program& p, DeleteDeviceMode mode, const std::string& model, int32_t id) {
  if (mode == DeleteDeviceMode::ByModel) {
    DeleteModel(p, model);
    return;
  }
  // The models are gathered first: deleting one removes rows under this walk.
  const std::string column = mode == DeleteDeviceMode::ByManufacturer ? "ManufacturerID" : "DeviceTypeid";
  std::vector<std::string> models;
  auto rs = Db(p).OpenRecordset("Devices");
  while (!rs->Eof()) {
    if (rs->Field(column).AsInteger() == id) models.push_back(rs->Field("Model").AsText());
    rs->MoveNext();
  }
  rs->Close();
  for (const auto& m : models) DeleteModel(p, m);
}

void DeleteModel(Program& p, const std::string& model) {
  const std::string wanted = Upper(model);
  bool found = false;
  int32_t deviceId = 0;
  auto devices = Db(p).OpenRecordset("Devices");
  while (!devices->Eof()) {
    if (Upper(devices->Field("Model").AsText()) == wanted) {
      deviceId = int32_t(devices->Field("DeviceID").AsInteger());
      found = true;
      devices->Delete();
    }
    devices->MoveNext();
  }
  p.F.DvcModelList.Clear();
  if (devices->RecordCount() > 0) {
    devices->MoveFirst();
    while (!devices->Eof()) {
      p.F.DvcModelList.AddItem(Upper(devices->Field("Model").AsText()));
      devices->MoveNext();
    }
  }
  // Only the codes of the last device of that name go; a model stored twice
  // leaves the first one's codes behind.
  auto codes = Db(p).OpenRecordset("IR Codes");
  if (found) {
    while (!codes->Eof()) {
      if (codes->Field("DeviceID").AsInteger() == deviceId) codes->Delete();
      codes->MoveNext();
    }
  }
  codes->Close();
  devices->Close();
}

}  // namespace bw
