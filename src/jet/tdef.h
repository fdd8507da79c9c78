// Table definitions (TDEF pages): a table's columns, its row count, its index
// descriptions and the row ids of its two usage maps (owned pages, pages with
// free space). Reads both Jet 3 and Jet 4 layouts, including definitions that
// continue over several pages; builds the Jet 4 layout for new tables.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "jet/format.h"
#include "jet/page_file.h"

namespace bw::jet {

struct ColumnDef {
  std::string name;
  ColumnType type = ColumnType::kText;
  uint16_t number = 0;       ///< position in the row's null mask (deleted columns count)
  uint16_t varIndex = 0;     ///< slot in the row's variable-column offset table
  uint16_t fixedOffset = 0;  ///< offset of a fixed column's bytes after the column count
  uint16_t length = 0;       ///< bytes (Text: 2 per character in Jet 4; 0 for Memo/OLE)
  uint8_t flags = 0;         ///< column_flag bits
  uint8_t miscFlags = 0;     ///< Jet 4: kCompressedUnicode
  uint16_t misc = 0;         ///< sort order for text, precision/scale for numeric
  bool fixed() const { return flags & column_flag::kFixed; }
};

/// One column of an index: the column's number and its direction.
struct IndexColumn {
  uint16_t columnNumber = 0;
  bool ascending = true;
};

/// Index flag bits of a physical index.
namespace index_flag {
inline constexpr uint8_t kUnique = 0x01;
inline constexpr uint8_t kIgnoreNulls = 0x02;
inline constexpr uint8_t kRequired = 0x08;
/// Set in every index Access and Jet 4 write.
inline constexpr uint8_t kJet4 = 0x80;
}  // namespace index_flag

/// A physical index: the tree of index pages that one or more logical indexes
/// (the named ones) share.
struct RealIndex {
  std::vector<IndexColumn> columns;
  RowId usageMap;               ///< map of the index's pages
  uint32_t rootPage = 0;
  uint8_t flags = 0;            ///< index_flag bits
  uint32_t distinctKeys = 0;    ///< as stored in the definition
  size_t countOffset = 0;       ///< where distinctKeys lies in the joined definition
  bool unique() const { return flags & index_flag::kUnique; }
  bool ignoreNulls() const { return flags & index_flag::kIgnoreNulls; }
};

/// A named index; `realIndex` says which physical index holds its entries.
struct LogicalIndex {
  std::string name;
  uint32_t number = 0;
  uint32_t realIndex = 0;
  uint8_t type = 0;  ///< 1 primary key, 2 foreign key, 0 other
};

struct TableDef {
  uint32_t page = 0;                ///< first TDEF page; also the table's object id
  std::vector<uint32_t> pages;      ///< all TDEF pages in order
  uint32_t rowCount = 0;
  uint8_t tableType = 0x4E;         ///< 0x4E user table, 0x53 system table
  uint16_t maxColumns = 0;          ///< columns a row holds (deleted ones included)
  uint16_t varColumns = 0;
  uint32_t logicalIndexCount = 0;
  uint32_t realIndexCount = 0;
  RowId ownedPagesMap;
  RowId freePagesMap;
  std::vector<ColumnDef> columns;   ///< ordered by column number
  std::vector<RealIndex> indexes;
  std::vector<LogicalIndex> logicalIndexes;
  /// Index into `columns` of the column numbered `number`, or -1.
  int ColumnPosition(uint16_t number) const;
};

/// Reads the definition that starts at `page`. Throws 3049 when the page is
/// not a table definition.
TableDef ReadTableDef(PageFile& file, uint32_t page);

/// Writes the definition's row count and the distinct-key count of every
/// index (each page of the definition it touches once).
void WriteCounts(PageFile& file, const TableDef& def);

/// A column of a table to be created; number, offsets and flags are derived.
struct NewColumn {
  std::string name;
  ColumnType type;
  uint16_t length = 0;  ///< Text: characters; Binary: bytes; others: ignored
  bool nullable = true;
};

/// An index of a table to be created.
struct NewIndex {
  std::string name;
  std::vector<IndexColumn> columns;  ///< column numbers are positions in the NewColumn list
  uint8_t flags = index_flag::kJet4;
  bool primaryKey = false;
  RowId usageMap;         ///< the (empty) map of its pages
  uint32_t rootPage = 0;  ///< an empty leaf page
};

/// Lays out columns (fixed offsets, variable slots) and builds a Jet 4 TDEF
/// page. Indexes are numbered in the given order; the named entries are
/// listed by name, as Access lists them.
Bytes BuildJet4TableDef(const std::vector<NewColumn>& columns, bool systemTable, RowId ownedPagesMap,
                        RowId freePagesMap, uint32_t rowCount, const std::vector<NewIndex>& indexes = {},
                        std::vector<ColumnDef>* laidOut = nullptr);

/// Bytes a fixed column of this type takes in a row (0 for variable ones).
uint16_t FixedSize(ColumnType type);

}  // namespace bw::jet
