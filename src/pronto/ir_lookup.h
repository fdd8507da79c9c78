// Lookup structures over the IR database's "Devices" and "IR Codes" tables,
// so that storing a key costs a hash lookup instead of a walk of the table.
//
// What they promise: every answer is the row the walk in table order would
// stop at (the first matching code row, the last device row of a model).
// They are built by reading a table once and kept in step with each write the
// IR database layer makes; a write from anywhere else (a delete command
// walking a recordset) changes the table's change count, and the structure is
// built again before its next use. A table whose columns are not the ones
// expected (a missing column, a code column that is no whole number, a key
// column kept on long-value pages) gets no structure: its callers walk it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "jet/row_codec.h"
#include "jet/table.h"

namespace bw {

namespace jet {
class Database;
}

/// The table a lookup was built over and that table's change count then: the
/// lookup holds while both stay the same.
class TableSync {
 public:
  /// True when built over `table` and no write has happened since behind our back.
  bool Current(const jet::Table& table) const { return table_ == &table && changeCount_ == table.changeCount(); }
  /// Records that the structure matches the table as it is now.
  void Synced(const jet::Table& table) {
    table_ = &table;
    changeCount_ = table.changeCount();
  }

 protected:
  void Forget() { table_ = nullptr; }

 private:
  const jet::Table* table_ = nullptr;
  uint64_t changeCount_ = 0;
};

/// "IR Codes": rows by device, and within a device by (label, button,
/// function), in table order. Opening reads only the device column of each
/// row; a device's texts are read the first time that device is asked for,
/// so storing one device into a large table reads the texts of its rows only.
class CodeRowIndex : public TableSync {
 public:
  /// Reads the table; false when it cannot be served (then nothing is kept).
  bool Build(jet::Table& table);
  /// The first row in table order whose upper-cased label, button and function
  /// texts equal the given ones and whose device id is `device`.
  std::optional<jet::RowId> Find(jet::Table& table, const std::string& label, const std::string& button,
                                 const std::string& function, int64_t device);
  /// Notes a row written with `values` (the row as stored).
  void Add(jet::RowId id, const std::vector<jet::Value>& values);
  void Remove(jet::RowId id, const std::vector<jet::Value>& values);

 private:
  /// One device's rows: packed ids in table order, and once its texts have
  /// been read, the rows by key hash (a hash may be shared: rows are checked
  /// on lookup).
  struct DeviceRows {
    std::vector<uint32_t> rows;
    bool keyed = false;
    std::unordered_multimap<uint64_t, uint32_t> byKey;
  };
  uint64_t KeyOf(const std::vector<jet::Value>& values) const;
  bool Matches(const std::vector<jet::Value>& values, const std::string& label, const std::string& button,
               const std::string& function, int64_t device) const;

  int label_ = -1, button_ = -1, function_ = -1, device_ = -1;
  std::unordered_map<int64_t, DeviceRows> devices_;
};

/// "Devices": rows by upper-cased model, and every row, in table order.
class DeviceRowIndex : public TableSync {
 public:
  bool Build(jet::Table& table);
  /// The last row in table order whose upper-cased model is `model`.
  std::optional<jet::RowId> LastOfModel(const std::string& model) const;
  /// The last row of the table.
  std::optional<jet::RowId> Last() const;
  void Add(jet::RowId id, const std::vector<jet::Value>& values);
  int deviceColumn() const { return device_; }

 private:
  int model_ = -1, device_ = -1;
  std::unordered_map<std::string, std::set<uint32_t>> byModel_;
  std::set<uint32_t> all_;
};

/// Both structures, tied to the one open database they describe.
struct IRDatabaseIndex {
  std::weak_ptr<jet::Database> database;
  CodeRowIndex codes;
  DeviceRowIndex devices;
};

}  // namespace bw
