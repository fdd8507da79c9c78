// Page usage maps: the bitmaps that say which pages a table owns, which of its
// pages have free space, and (the database's own map on page 1) which pages of
// the file are free. A map lives in one row of a data page; it is either
// "inline" (type 0: a start page and a bitmap) or "indirect" (type 1: pointers
// to whole bitmap pages of type 0x05).
//
// What it promises: Set() writes the map's page before it returns; when the
// inline form can no longer describe the pages it turns into the indirect form
// by first writing the new bitmap pages and only then the row that points to
// them, so a kill in between leaves the old, still valid map.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "jet/format.h"
#include "jet/page_file.h"

namespace bw::jet {

class UsageMap {
 public:
  /// Appends a fully built page to the file and returns its number; the
  /// database's allocator, which also keeps the free-page map right.
  using Allocator = std::function<uint32_t(const Bytes&)>;

  /// The map stored in row `where`. `outOfRangeMeansSet`: pages the map does
  /// not cover count as set (true for the database's free-page map).
  UsageMap(PageFile& file, RowId where, bool outOfRangeMeansSet);

  /// True when the page's bit is set.
  bool Has(uint32_t page);
  /// All pages whose bit is set within what the map covers, ascending.
  std::vector<uint32_t> Pages();
  /// Sets or clears one page's bit and writes the map. `allocate` is used
  /// when the map needs bitmap pages of its own (null: the map appends them
  /// itself and marks them as used in its own bits, as the free-page map must).
  void Set(uint32_t page, bool on, const Allocator& allocate);

  RowId where() const { return where_; }

 private:
  struct Location {
    size_t offset;
    size_t length;
  };
  Location Locate();
  /// The first page an inline map covers; 3049 when its window would run
  /// past the last page number there is.
  uint32_t InlineStart(const uint8_t* row, size_t length) const;
  /// Bitmap page `number` of an indirect map (0: none); 3049 when it is not one.
  const Bytes* BitmapPage(uint32_t number);
  uint32_t BitsPerMapPage() const { return uint32_t((file_.pageSize() - 4) * 8); }
  void ConvertToIndirect(const std::vector<uint32_t>& setPages, uint32_t page, bool on, const Allocator& allocate);

  PageFile& file_;
  RowId where_;
  bool outOfRangeMeansSet_;
};

/// Builds the bytes of an inline map row of `length` bytes covering `pages`
/// (all must fit in the window that starts at `start`).
Bytes BuildInlineMap(size_t length, uint32_t start, const std::vector<uint32_t>& pages, bool fillRest);

}  // namespace bw::jet
