#include "pronto/db_access.h"

#include "jet/database.h"
#include "jet/recordset.h"
#include "runtime/run_time_error.h"
#include "runtime/text.h"

namespace bw {
namespace {

using jet::Recordset;
using jet::Value;

// Every row the program writes carries this record type.
constexpr int16_t kRecordType = 300;
// The first device of an empty "Devices" table gets this id.
constexpr int32_t kFirstDeviceID = 1000;

jet::Database& Db(Program& p) {
  if (!p.Database) throw RunTimeError(91, "Object variable or With block variable not set");
  return *p.Database;
}

/// The id after the Long `last`: one past the largest Long is an overflow.
int32_t NextId(int64_t last) {
  int64_t next = int64_t(int32_t(last)) + 1;
  if (next > INT32_MAX) ThrowOverflow();
  return int32_t(next);
}

/// ButtonSequence is a 16-bit counter: one past 32767 is an overflow.
void NextButtonSequence(Program& p) {
  if (p.ButtonSequence == INT16_MAX) ThrowOverflow();
  ++p.ButtonSequence;
  ++p.EntriesWritten;
}

void FillList(Program& p, const std::string& table, const std::string& column, ComboBox& list) {
  auto rs = Db(p).OpenRecordset(table);
  list.Clear();
  if (rs->RecordCount() > 0) {
    rs->MoveFirst();
    while (!rs->Eof()) {
      list.AddItem(UCase(rs->Field(column).AsText()));
      rs->MoveNext();
    }
  }
  rs->Close();
}

/// The twin lookups on "Device Types" and "Manufacturers": find by upper-cased
/// name, else add a row with the last row's id + 1 (1 for an empty table).
int16_t FindOrAddNamed(Program& p, const std::string& table, const std::string& idColumn, const std::string& name) {
  try {
    auto rs = Db(p).OpenRecordset(table);
    const std::string wanted = UCase(name);
    if (rs->RecordCount() > 0) {
      rs->MoveFirst();
      while (!rs->Eof()) {
        if (UCase(rs->Field("name").AsText()) == wanted) {
          int16_t id = int16_t(rs->Field(idColumn).AsInteger());
          rs->Close();
          return id;
        }
        rs->MoveNext();
      }
    }
    int32_t newId = 1;
    if (rs->RecordCount() > 0) {
      rs->MoveFirst();
      rs->MoveLast();
      newId = NextId(rs->Field(idColumn).AsInteger());
      if (newId > INT16_MAX) ThrowOverflow();
    }
    rs->AddNew();
    rs->SetField(idColumn, Value::Integer(int16_t(newId)));
    rs->SetField("name", Value::Text(name));
    rs->SetField("RecordType", Value::Integer(kRecordType));
    rs->Update();
    rs->Close();
    return int16_t(newId);
  } catch (const RunTimeError& e) {
    // Both twins report under the device-type name.
    p.Message("Error in GetDeviceTypeID\r\n" + e.description());
    return 0;
  }
}

void PutCodeFields(Recordset& rs, const IRCodeRecord& r, int16_t sequence) {
  rs.SetField("ButtonID", Value::Long(r.KeyCode2));
  rs.SetField("FunctionID", Value::Integer(sequence));
  rs.SetField("Label", Value::Text(r.Label));
  rs.SetField("FullText", Value::Memo(r.FullText));
  rs.SetField("Details", Value::Text(r.FormatText));
  rs.SetField("Carrier", Value::Integer(r.CarrierWord));
  rs.SetField("OnceCounter", Value::Integer(r.OnceCount));
  rs.SetField("RepeatCounter", Value::Integer(r.RepeatCount));
  rs.SetField("IRcode", Value::Memo(r.BurstText));
}

}  // namespace

void OpenIRDatabase(Program& p, const std::string& path) {
  std::shared_ptr<jet::Database> db =
      jet::Database::Open(path, true, false, std::string("; pwd=") + kIRDatabasePassword);
  p.Database = std::move(db);
  p.DatabaseOpen = true;
  FillDatabaseLists(p);
  p.ButtonSequence = 0;
}

void CloseIRDatabase(Program& p) {
  if (p.Database) p.Database->Close();
  p.Database.reset();
  p.DatabaseOpen = false;
}

void FillDatabaseLists(Program& p) {
  FillList(p, "Manufacturers", "name", p.F.DvcMfglist);
  FillList(p, "Device Types", "name", p.F.DvcTypeList);
  FillList(p, "Devices", "Model", p.F.DvcModelList);
}

int16_t GetManufacturerID(Program& p, const std::string& name) { return FindOrAddNamed(p, "Manufacturers", "id", name); }

int16_t GetDeviceTypeID(Program& p, const std::string& name) {
  return FindOrAddNamed(p, "Device Types", "DeviceTypeid", name);
}

int32_t GetDeviceID(Program& p, const std::string& model, const std::string& type, const std::string& manufacturer,
                    bool lookupOnly) {
  auto rs = Db(p).OpenRecordset("Devices");
  const std::string wanted = UCase(model);
  bool found = false;
  int32_t id = 0;
  // Only the model is compared, and the last matching row wins.
  if (rs->RecordCount() > 0) {
    rs->MoveFirst();
    while (!rs->Eof()) {
      if (UCase(rs->Field("Model").AsText()) == wanted) {
        id = int32_t(rs->Field("DeviceID").AsInteger());
        found = true;
      }
      rs->MoveNext();
    }
  }
  if (found) {
    rs->Close();
    return id;
  }
  if (lookupOnly) {
    rs->Close();
    return 0;
  }
  int16_t typeId = GetDeviceTypeID(p, type);
  int16_t manufacturerId = GetManufacturerID(p, manufacturer);
  int32_t newId = kFirstDeviceID;
  if (rs->RecordCount() > 0) {
    rs->MoveLast();
    newId = NextId(rs->Field("DeviceID").AsInteger());
  }
  rs->AddNew();
  rs->SetField("DeviceID", Value::Long(newId));
  rs->SetField("DeviceTypeid", Value::Integer(typeId));
  rs->SetField("IManufacturerID", Value::Integer(0));
  rs->SetField("ManufacturerID", Value::Integer(manufacturerId));
  rs->SetField("Model", Value::Text(model));
  rs->SetField("RecordType", Value::Integer(kRecordType));
  rs->Update();
  rs->SetBookmark(rs->LastModified());
  id = int32_t(rs->Field("DeviceID").AsInteger());
  rs->Close();
  return id;
}

void AddIRCode(Program& p, IRCodeRecord& record, const std::string& model, const std::string& type,
               const std::string& manufacturer) {
  auto rs = Db(p).OpenRecordset("IR Codes");
  if (rs->RecordCount() > 0) {
    rs->MoveFirst();
    const std::string label = UCase(record.Label);
    const std::string button = std::to_string(record.KeyCode2);
    // "FunctionID" holds the sequence number the program wrote, yet it is
    // compared with KeyCode1: a row is updated only when the two happen to agree.
    const std::string function = std::to_string(record.KeyCode1);
    while (!rs->Eof()) {
      if (UCase(rs->Field("Label").AsText()) == label && UCase(rs->Field("ButtonID").AsText()) == button &&
          UCase(rs->Field("FunctionID").AsText()) == function &&
          rs->Field("DeviceID").AsInteger() == GetDeviceID(p, model, type, manufacturer, false)) {
        rs->Edit();
        NextButtonSequence(p);
        PutCodeFields(*rs, record, p.ButtonSequence);
        rs->Update();
        return;
      }
      rs->MoveNext();
    }
  }
  rs->Close();
  int32_t device = GetDeviceID(p, model, type, manufacturer, false);
  rs = Db(p).OpenRecordset("IR Codes");
  if (rs->RecordCount() > 0) rs->MoveLast();
  rs->AddNew();
  NextButtonSequence(p);
  rs->SetField("DeviceID", Value::Long(device));
  PutCodeFields(*rs, record, p.ButtonSequence);
  rs->SetField("RecordType", Value::Integer(kRecordType));
  rs->Update();
  rs->Close();
}

}  // namespace bw
