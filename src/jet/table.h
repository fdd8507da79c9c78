// A table: its rows in table order (the order of its data pages, then of the
// rows on each page) and the row-level writes: insert, update, delete.
//
// What it promises about writes: long values and moved rows are written
// before the row that points to them, a new page is written before any usage
// map names it, and the row count in the table definition is written last.
// So a kill between two writes leaves at most an unreachable page or an
// unreferenced long value, never a row that points into nothing. A row is
// always written by one whole-page write: it is never half in the file.
//
// Tables with indexes are read but never written: the engine does not keep
// index pages, so writing would leave the indexes out of step with the rows.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "jet/row_codec.h"
#include "jet/tdef.h"

namespace bw::jet {

class Database;

class Table {
 public:
  Table(Database& db, std::string name, TableDef def);

  const std::string& name() const { return name_; }
  const TableDef& def() const { return def_; }
  /// Index into def().columns of the column named `name` (any case), or -1.
  int ColumnIndex(const std::string& name) const;

  // ---- read rows ----
  /// Ids of the live rows in table order. A row that was moved to another
  /// page keeps the id of the place that points to it.
  std::vector<RowId> RowIds();
  /// The row's values, one per column. Throws 3167 for a deleted row.
  /// Without `longValues`, memo and OLE columns come back empty and their
  /// pages are not read (for lookups over the short columns).
  std::vector<Value> ReadRow(RowId id, bool longValues = true);
  /// Counts the row writes begun on this table (insert, update, delete), so a
  /// reader keeping facts about its rows can tell whether they still hold.
  uint64_t changeCount() const { return changeCount_; }

  // ---- write rows ----
  /// Throws 3027 when this table cannot be written (read-only open, Jet 3
  /// file, table with indexes).
  void CheckWritable() const;
  RowId Insert(const std::vector<Value>& values);
  void Update(RowId id, const std::vector<Value>& values);
  void Delete(RowId id);

 private:
  RowId Resolve(RowId id);
  Bytes ReadLongValue(const uint8_t* header);
  Bytes StoreLongValue(const Bytes& payload);
  /// Puts bytes as a new slot on the last data page (or a new page); returns where.
  RowId PlaceRow(const Bytes& bytes, uint16_t flags);
  const std::vector<uint32_t>& OwnedPages();
  void AddOwnedPage(uint32_t page, bool dataPage);

  Database& db_;
  std::string name_;
  TableDef def_;
  std::unordered_map<std::string, int> columnIndex_;
  bool ownedLoaded_ = false;
  std::vector<uint32_t> owned_;
  uint32_t lastDataPage_ = 0;
  uint32_t lastLvalPage_ = 0;
  uint64_t changeCount_ = 0;
};

/// Largest long value kept inside its row; longer ones go to LVAL pages.
inline constexpr size_t kMaxInlineLongValue = 64;

}  // namespace bw::jet
