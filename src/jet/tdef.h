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

struct TableDef {
  uint32_t page = 0;                ///< first TDEF page; also the table's object id
  std::vector<uint32_t> pages;      ///< all TDEF pages in order
  uint32_t rowCount = 0;
  uint8_t tableType = 0x4E;         ///< 0x4E user table, 0x53 system table
  uint16_t maxColumns = 0;          ///< columns a row holds (deleted ones included)
  uint16_t varColumns = 0;
  uint32_t logicalIndexes = 0;
  uint32_t realIndexes = 0;
  RowId ownedPagesMap;
  RowId freePagesMap;
  std::vector<ColumnDef> columns;   ///< ordered by column number
};

/// Reads the definition that starts at `page`. Throws 3049 when the page is
/// not a table definition.
TableDef ReadTableDef(PageFile& file, uint32_t page);

/// Writes the definition's row count into its first page.
void WriteRowCount(PageFile& file, const TableDef& def);

/// A column of a table to be created; number, offsets and flags are derived.
struct NewColumn {
  std::string name;
  ColumnType type;
  uint16_t length = 0;  ///< Text: characters; Binary: bytes; others: ignored
  bool nullable = true;
};

/// Lays out columns (fixed offsets, variable slots) and builds a Jet 4 TDEF
/// page for a table without indexes.
Bytes BuildJet4TableDef(const std::vector<NewColumn>& columns, bool systemTable, RowId ownedPagesMap,
                        RowId freePagesMap, uint32_t rowCount, std::vector<ColumnDef>* laidOut = nullptr);

/// Bytes a fixed column of this type takes in a row (0 for variable ones).
uint16_t FixedSize(ColumnType type);

}  // namespace bw::jet
