// The database: opens an Access .mdb file (Jet 3 read-only, Jet 4 read and
// write), finds tables through the catalog MSysObjects, and creates new Jet 4
// databases holding Access's system tables plus given user tables. The entry
// point of the engine: everything else is reached through a Database.
//
// What it promises: one open database holds an OS lock on its file for as long
// as it is open (exclusive opens exclude every other open); Close() puts every
// write that returned on the disk. Errors are RunTimeErrors with Jet's numbers
// and texts.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "jet/page_file.h"
#include "jet/recordset.h"
#include "jet/table.h"
#include "jet/tdef.h"

namespace bw::jet {

/// A user table for Database::Create.
struct NewTable {
  std::string name;
  std::vector<NewColumn> columns;
  std::vector<NewIndex> indexes = {};  ///< column numbers are positions in `columns`
};

/// One catalog entry (a row of MSysObjects).
struct CatalogEntry {
  int32_t id = 0;
  int32_t parentId = 0;
  std::string name;
  int16_t type = 0;  ///< 1 local table, 3 container, ...
  int32_t flags = 0;
  bool IsSystem() const { return (flags & 0x80000002) != 0 || UpperName(name).rfind("MSYS", 0) == 0; }
};

class Database {
 public:
  // ---- open and close ----
  /// Opens `path` the way DAO's OpenDatabase does: `connect` may carry
  /// "; pwd=secret". Errors: 3024, 3031, 3045, 3051, 3343, 3049.
  static std::unique_ptr<Database> Open(const std::string& path, bool exclusive, bool readOnly,
                                        const std::string& connect = "");
  /// Creates a new Jet 4 database with the system tables and `tables` (left
  /// open, exclusively). `password` empty: no database password.
  static std::unique_ptr<Database> Create(const std::string& path, const std::vector<NewTable>& tables,
                                          const std::string& password = "");
  ~Database();
  void Close();
  bool IsOpen() const { return file_ != nullptr; }

  // ---- tables ----
  /// A table-type recordset in table order. Throws 3078 for a missing table.
  std::unique_ptr<Recordset> OpenRecordset(const std::string& tableName);
  /// The table object (shared by every recordset on it).
  Table& GetTable(const std::string& tableName);
  /// Names of the local tables in catalog order.
  std::vector<std::string> TableNames(bool includeSystem = false);
  const std::vector<CatalogEntry>& Catalog();

  // ---- engine internals used by the layers below ----
  PageFile& file();
  /// Appends a page and marks it used in the database's free-page map.
  uint32_t AllocatePage(const Bytes& page);
  /// Marks a page free in the database's free-page map (its bytes stay).
  void FreePage(uint32_t page);

 private:
  Database() = default;
  void LoadCatalog();

  std::unique_ptr<PageFile> file_;
  bool catalogLoaded_ = false;
  std::vector<CatalogEntry> catalog_;
  std::map<uint32_t, std::unique_ptr<Table>> tables_;
};

}  // namespace bw::jet
