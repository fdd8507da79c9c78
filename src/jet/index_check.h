// Index checking: reads every index of a table through its pages and compares
// it with the table's rows, the way a second reader would find a fault: page
// tree shape (node entries name their child's last entry, pages of a level
// chained left to right, leaves all at one depth), key order, uniqueness, and
// exactly one entry per row holding the key its values make.
#pragma once

#include <string>
#include <vector>

#include "jet/table.h"

namespace bw::jet {

struct IndexCheck {
  /// What is wrong, one line each ("Devices.PrimaryKey: ..."); empty when consistent.
  std::vector<std::string> findings;
  /// Indexes with rows whose keys the engine cannot make: for those rows only
  /// that one entry points to each is checked, not the key bytes.
  std::vector<std::string> unchecked;
  /// Entries read, over all indexes checked.
  size_t entries = 0;
};

/// Checks every index of `table`. `counts`: also require the row count and
/// each index's distinct-key count in the definition to match (Access itself
/// leaves them stale in some files).
IndexCheck CheckIndexes(Table& table, bool counts);

}  // namespace bw::jet
