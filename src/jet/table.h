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
// Every index of the table changes with its rows, in one place: a write
// computes every index key first and refuses (3022, 3058, or a key this engine
// cannot make) before it changes anything; then the row, its index entries and
// the counts follow. Each write is one group of the page file: when any part
// fails (a full disk, a field too small), the file is put back as it was.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "jet/index_tree.h"
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
  /// Visits every live row in table order with its value in one fixed-width
  /// column: one pass over the data pages that decodes nothing else, for
  /// building lookups.
  void ScanFixedColumn(int column, const std::function<void(RowId, const Value&)>& visit);
  /// Counts the row writes begun on this table (insert, update, delete), so a
  /// reader keeping facts about its rows can tell whether they still hold.
  uint64_t changeCount() const { return changeCount_; }

  // ---- write rows ----
  /// Throws 3027 when this table cannot be written (read-only open, Jet 3 file).
  void CheckWritable() const;
  RowId Insert(const std::vector<Value>& values);
  void Update(RowId id, const std::vector<Value>& values);
  void Delete(RowId id);

  // ---- indexes ----
  /// The name of physical index `i` (its first named index).
  std::string IndexName(size_t i) const;
  /// The key of physical index `i` for a row's values; nothing when the index
  /// keeps no entry for it (all-null key of an index that ignores nulls).
  /// Throws 3027 naming table and index when no exact key can be made.
  std::optional<Bytes> IndexKey(size_t i, const std::vector<Value>& values) const;
  /// The tree of physical index `i`.
  IndexTree Index(size_t i);

 private:
  void Reload();
  std::vector<std::optional<Bytes>> Keys(const std::vector<Value>& values) const;
  /// Throws 3058 for a null in a primary or required index, 3022 for a key a
  /// unique index already holds (`old`: the row's keys before an update).
  void RefuseBrokenIndexes(const std::vector<Value>& values, const std::vector<std::optional<Bytes>>& keys,
                           const std::vector<std::optional<Bytes>>* old);
  /// Runs a write as one group of page writes: all stay, or the file and
  /// this table's state are put back and the error goes on.
  void AllOrNothing(const std::function<void()>& write);
  /// The row-level parts of Update and Delete (indexes not touched).
  void Rewrite(RowId id, const std::vector<Value>& values);
  void Erase(RowId id);
  std::vector<Value> Coerced(const std::vector<Value>& values) const;
  void AddEntries(const std::vector<std::optional<Bytes>>& keys, RowId id);
  void RemoveEntries(const std::vector<std::optional<Bytes>>& keys, RowId id);
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
