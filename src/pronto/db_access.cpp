#include "pronto/db_access.h"

#include "jet/database.h"
#include "jet/jet_errors.h"
#include "jet/recordset.h"
#include "pronto/ir_lookup.h"
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

/// The "IR Codes" columns a key's write sets (all but DeviceID and RecordType),
/// through `set(column, value)`: a recordset's field or a row being built.
template <class Setter>
void PutCodeFields(const IRCodeRecord& r, int16_t sequence, Setter set) {
  set("ButtonID", Value::Long(r.KeyCode2));
  set("FunctionID", Value::Integer(sequence));
  set("Label", Value::Text(r.Label));
  set("FullText", Value::Memo(r.FullText));
  set("Details", Value::Text(r.FormatText));
  set("Carrier", Value::Integer(r.CarrierWord));
  set("OnceCounter", Value::Integer(r.OnceCount));
  set("RepeatCounter", Value::Integer(r.RepeatCount));
  set("IRcode", Value::Memo(r.BurstText));
}

void PutCodeFields(Recordset& rs, const IRCodeRecord& r, int16_t sequence) {
  PutCodeFields(r, sequence, [&](const char* column, const Value& v) { rs.SetField(column, v); });
}

}  // namespace

void OpenIRDatabase(Program& p, const std::string& path) {
  std::shared_ptr<jet::Database> db =
      jet::Database::Open(path, true, false, std::string("; pwd=") + kIRDatabasePassword);
  p.Database = std::move(db);
  p.DatabaseIndex.reset();
  p.DatabaseOpen = true;
  FillDatabaseLists(p);
  // The database is held exclusively: what is read now stays true until we write.
  BuildIRDatabaseIndex(p);
  p.ButtonSequence = 0;
}

void CloseIRDatabase(Program& p) {
  if (p.Database) p.Database->Close();
  p.Database.reset();
  p.DatabaseIndex.reset();
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

namespace {

/// GetDeviceID as a walk of "Devices": for a table the lookup structure cannot serve.
int32_t WalkGetDeviceID(Program& p, const std::string& model, const std::string& type,
                        const std::string& manufacturer, bool lookupOnly) {
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

/// AddIRCode as a walk of "IR Codes": for a table the lookup structure cannot serve.
void WalkAddIRCode(Program& p, IRCodeRecord& record, const std::string& model, const std::string& type,
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


/// The lookup structures of the current database (made afresh for another one).
IRDatabaseIndex& Index(Program& p) {
  if (!p.DatabaseIndex || p.DatabaseIndex->database.lock() != p.Database) {
    p.DatabaseIndex = std::make_shared<IRDatabaseIndex>();
    p.DatabaseIndex->database = p.Database;
  }
  return *p.DatabaseIndex;
}

/// The structure over `table`, built again when a write went past it; null
/// when the table cannot be served by one.
template <typename Structure>
Structure* Usable(Structure& structure, jet::Table& table) {
  if (structure.Current(table) || structure.Build(table)) return &structure;
  return nullptr;
}

/// A recordset's AddNew/Edit buffer: values set by column name are converted
/// to the column's type, as SetField does.
class RowBuffer {
 public:
  RowBuffer(jet::Table& table, std::vector<Value> values) : table_(table), values_(std::move(values)) {}
  void Set(const std::string& column, const Value& value) {
    int k = table_.ColumnIndex(column);
    if (k < 0) jet::ThrowItemNotFound();
    values_[size_t(k)] = jet::CoerceTo(value, table_.def().columns[size_t(k)]);
  }
  const std::vector<Value>& values() const { return values_; }

 private:
  jet::Table& table_;
  std::vector<Value> values_;
};

void PutCodeFields(RowBuffer& row, const IRCodeRecord& r, int16_t sequence) {
  PutCodeFields(r, sequence, [&](const char* column, const Value& v) { row.Set(column, v); });
}

}  // namespace

void BuildIRDatabaseIndex(Program& p) {
  p.DatabaseIndex.reset();
  if (!p.Database) return;
  IRDatabaseIndex& index = Index(p);
  try {
    index.devices.Build(p.Database->GetTable("Devices"));
    index.codes.Build(p.Database->GetTable("IR Codes"));
  } catch (const RunTimeError&) {
    // A missing table is reported by the command that needs it.
  }
}

int32_t GetDeviceID(Program& p, const std::string& model, const std::string& type, const std::string& manufacturer,
                    bool lookupOnly) {
  jet::Table& table = Db(p).GetTable("Devices");
  DeviceRowIndex* devices = Usable(Index(p).devices, table);
  if (!devices) return WalkGetDeviceID(p, model, type, manufacturer, lookupOnly);
  const int column = devices->deviceColumn();
  // Only the model is compared, and the last matching row wins.
  if (auto row = devices->LastOfModel(UCase(model)))
    return int32_t(table.ReadRow(*row, false)[size_t(column)].AsInteger());
  if (lookupOnly) return 0;
  int16_t typeId = GetDeviceTypeID(p, type);
  int16_t manufacturerId = GetManufacturerID(p, manufacturer);
  int32_t newId = kFirstDeviceID;
  if (auto last = devices->Last()) newId = int32_t(table.ReadRow(*last, false)[size_t(column)].AsInteger()) + 1;
  table.CheckWritable();
  RowBuffer row(table, std::vector<Value>(table.def().columns.size(), Value::Null()));
  row.Set("DeviceID", Value::Long(newId));
  row.Set("DeviceTypeid", Value::Integer(typeId));
  row.Set("IManufacturerID", Value::Integer(0));
  row.Set("ManufacturerID", Value::Integer(manufacturerId));
  row.Set("Model", Value::Text(model));
  row.Set("RecordType", Value::Integer(kRecordType));
  const jet::RowId id = table.Insert(row.values());
  const std::vector<Value> stored = table.ReadRow(id, false);
  devices->Add(id, stored);
  devices->Synced(table);
  return int32_t(stored[size_t(column)].AsInteger());
}

void AddIRCode(Program& p, IRCodeRecord& record, const std::string& model, const std::string& type,
               const std::string& manufacturer) {
  jet::Table& table = Db(p).GetTable("IR Codes");
  CodeRowIndex* codes = Usable(Index(p).codes, table);
  if (!codes) return WalkAddIRCode(p, record, model, type, manufacturer);
  // The walk asks for the device at its first row with the same label, button
  // and function, and otherwise after the walk: either way once before any
  // code row is written, and later asks give the same id.
  const int64_t device = GetDeviceID(p, model, type, manufacturer, false);
  // GetDeviceID writes only other tables; "IR Codes" is as it was.
  const std::string label = UCase(record.Label);
  const std::string button = std::to_string(record.KeyCode2);
  // "FunctionID" holds the sequence number the program wrote, yet it is
  // compared with KeyCode1: a row is updated only when the two happen to agree.
  const std::string function = std::to_string(record.KeyCode1);
  if (auto found = codes->Find(table, label, button, function, device)) {
    table.CheckWritable();
    std::vector<Value> before = table.ReadRow(*found);
    RowBuffer row(table, before);
    NextButtonSequence(p);
    PutCodeFields(row, record, p.ButtonSequence);
    table.Update(*found, row.values());
    codes->Remove(*found, before);
    codes->Add(*found, table.ReadRow(*found, false));
    codes->Synced(table);
    return;
  }
  table.CheckWritable();
  RowBuffer row(table, std::vector<Value>(table.def().columns.size(), Value::Null()));
  NextButtonSequence(p);
  row.Set("DeviceID", Value::Long(int32_t(device)));
  PutCodeFields(row, record, p.ButtonSequence);
  row.Set("RecordType", Value::Integer(kRecordType));
  const jet::RowId id = table.Insert(row.values());
  codes->Add(id, table.ReadRow(id, false));
  codes->Synced(table);
}

}  // namespace bw
