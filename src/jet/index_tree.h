// Index trees: the pages that keep one index's entries in key order. Leaf
// pages (type 0x04) hold an entry per row: the key bytes and a 4-byte row
// pointer (3-byte big-endian page, 1-byte row). Node pages (type 0x03) hold
// an entry per child but the last: the child's last entry followed by the
// child's page number (big-endian); the last child is the node's "tail". Pages
// of one level are chained by previous/next pointers. A page marks where each
// entry ends in a bitmap, and may store a prefix shared by all its entries
// only once.
//
// The root page keeps its number for the life of the index (the table
// definition names it): when the root splits, its halves move to new pages
// and the root becomes a node above them.
//
// What a change promises: new pages are written before any page points to
// them; a failing write leaves the rest to the page file's undo of the whole
// record write.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "jet/format.h"
#include "jet/page_file.h"

namespace bw::jet {

/// One entry of an index page. `pointer` is the row pointer of a leaf entry,
/// and on a node page the row pointer of the child's last entry.
struct IndexEntry {
  Bytes key;
  uint32_t pointer = 0;  ///< page << 8 | row
  uint32_t child = 0;    ///< node pages only
  /// Key order, equal keys in row order.
  bool operator<(const IndexEntry& o) const;
  bool SameKeyAndRow(const IndexEntry& o) const { return key == o.key && pointer == o.pointer; }
};

/// A decoded index page.
struct IndexPage {
  uint32_t number = 0;
  bool leaf = true;
  uint32_t prev = 0, next = 0, tail = 0;
  std::vector<IndexEntry> entries;
};

/// Decodes an index page; throws 3049 when it is no index page or its entries
/// do not fit their own page.
IndexPage ReadIndexPage(PageFile& file, uint32_t number);
/// Encodes a page; empty when its entries do not fit one page even with a
/// shared prefix.
Bytes BuildIndexPage(const IndexPage& page, uint32_t tableDefPage, size_t pageSize);
/// An empty leaf, as a new index's root.
Bytes EmptyIndexLeaf(uint32_t tableDefPage, size_t pageSize);

class IndexTree {
 public:
  /// Appends a page for the index and returns its number (it also records
  /// the page in the index's usage map); frees a page the index no longer uses.
  using Allocate = std::function<uint32_t(const Bytes&)>;
  using Release = std::function<void(uint32_t)>;

  IndexTree(PageFile& file, uint32_t tableDefPage, uint32_t rootPage, Allocate allocate, Release release);

  PageFile& file() const { return file_; }

  // ---- read ----
  /// Every leaf entry in order, along the leaf chain from the first leaf.
  std::vector<IndexEntry> Entries();
  /// True when some entry has exactly this key.
  bool HasKey(const Bytes& key);

  // ---- write ----
  /// Adds an entry. Returns true when no entry had an equal key before.
  bool Insert(const Bytes& key, uint32_t rowPointer);
  /// Removes the entry; returns true when no entry with an equal key remains.
  /// Throws 3049 when the entry is not there (the index does not match the rows).
  bool Remove(const Bytes& key, uint32_t rowPointer);

 private:
  /// Inserts below `page`; returns the pages that now stand where it stood.
  std::vector<IndexPage> InsertBelow(uint32_t page, const IndexEntry& entry, int depth);
  /// Removes below `page`; returns the pages that now stand where it stood (none: it is gone).
  std::vector<IndexPage> RemoveBelow(uint32_t page, const IndexEntry& entry, bool& found, int depth);
  void ReplaceChild(IndexPage& node, size_t slot, bool viaTail, const std::vector<IndexPage>& parts, int depth);
  std::vector<IndexPage> Store(IndexPage page, bool appending, int depth);
  /// The leaf that holds the first entry not below `probe`, and that entry's position.
  IndexPage FindLeaf(const IndexEntry& probe, size_t& position);
  std::vector<IndexPage> SplitPage(IndexPage page, bool appending);
  void Write(const IndexPage& page);
  void Relink(uint32_t page, bool setPrev, uint32_t value);
  IndexEntry LastEntryBelow(const IndexPage& page, int depth);

  PageFile& file_;
  uint32_t tdef_;
  uint32_t root_;
  Allocate allocate_;
  Release release_;
};

}  // namespace bw::jet
