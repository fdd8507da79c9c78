#include "jet/index_tree.h"

#include <algorithm>
#include <stdexcept>

#include "jet/jet_errors.h"

namespace bw::jet {
namespace {

// Jet 4 index page layout; fixed by the file format.
constexpr size_t kFreeSpace = 2;
constexpr size_t kOwner = 4;
constexpr size_t kPrev = 12;
constexpr size_t kNext = 16;
constexpr size_t kTail = 20;
constexpr size_t kPrefixLength = 24;
constexpr size_t kBitmap = 0x1B;
constexpr size_t kEntries = 0x1E0;
constexpr size_t kPointer = 4;
// Trees deeper than this do not occur (each level multiplies the entries by
// at least ten); deeper means the pages loop.
constexpr int kMaxDepth = 32;

void PutBig32(Bytes& out, uint32_t v) {
  for (int s = 24; s >= 0; s -= 8) out.push_back(uint8_t(v >> s));
}
uint32_t GetBig32(const uint8_t* p) { return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3]; }

Bytes EntryBytes(const IndexEntry& e, bool leaf) {
  Bytes b = e.key;
  PutBig32(b, e.pointer);
  if (!leaf) PutBig32(b, e.child);
  return b;
}

}  // namespace

bool IndexEntry::operator<(const IndexEntry& o) const {
  if (key != o.key) return std::lexicographical_compare(key.begin(), key.end(), o.key.begin(), o.key.end());
  return pointer < o.pointer;
}

IndexPage ReadIndexPage(PageFile& file, uint32_t number) {
  const Bytes& p = file.Page(number);
  const size_t size = file.pageSize();
  if ((p[0] != page_type::kIndexLeaf && p[0] != page_type::kIndexNode) || size <= kEntries) ThrowCorrupt(file.path());
  IndexPage page;
  page.number = number;
  page.leaf = p[0] == page_type::kIndexLeaf;
  page.prev = Get32(&p[kPrev]);
  page.next = Get32(&p[kNext]);
  page.tail = Get32(&p[kTail]);
  const size_t prefix = Get16(&p[kPrefixLength]);
  const size_t tailBytes = page.leaf ? kPointer : 2 * kPointer;
  Bytes first;
  size_t start = 0;
  for (size_t bit = 1; bit <= size - kEntries; ++bit) {
    if (!((p[kBitmap + bit / 8] >> (bit % 8)) & 1)) continue;
    Bytes whole;
    if (page.entries.empty()) {
      whole.assign(p.begin() + long(kEntries), p.begin() + long(kEntries + bit));
      if (prefix > whole.size()) ThrowCorrupt(file.path());
      first = whole;
    } else {
      whole.assign(first.begin(), first.begin() + long(prefix));
      whole.insert(whole.end(), p.begin() + long(kEntries + start), p.begin() + long(kEntries + bit));
    }
    if (whole.size() < tailBytes + 1) ThrowCorrupt(file.path());
    IndexEntry e;
    size_t keyLength = whole.size() - tailBytes;
    e.key.assign(whole.begin(), whole.begin() + long(keyLength));
    e.pointer = GetBig32(&whole[keyLength]);
    if (!page.leaf) e.child = GetBig32(&whole[keyLength + kPointer]);
    page.entries.push_back(std::move(e));
    start = bit;
  }
  return page;
}

Bytes BuildIndexPage(const IndexPage& page, uint32_t tableDefPage, size_t pageSize) {
  const size_t room = pageSize - kEntries;
  std::vector<Bytes> whole;
  size_t total = 0, shortestKey = SIZE_MAX;
  for (const auto& e : page.entries) {
    whole.push_back(EntryBytes(e, page.leaf));
    total += whole.back().size();
    shortestKey = std::min(shortestKey, e.key.size());
  }
  // A shared prefix is stored only when the entries do not fit without it,
  // and never reaches into the pointers.
  size_t prefix = 0;
  if (total > room && whole.size() > 1) {
    prefix = shortestKey;
    for (const auto& w : whole)
      prefix = std::min<size_t>(prefix, size_t(std::mismatch(w.begin(), w.begin() + long(prefix), whole[0].begin()).first -
                                               w.begin()));
    total -= prefix * (whole.size() - 1);
  }
  if (total > room) return {};
  Bytes p(pageSize, 0);
  p[0] = page.leaf ? page_type::kIndexLeaf : page_type::kIndexNode;
  p[1] = 0x01;
  Put16(&p[kFreeSpace], uint16_t(room - total));
  Put32(&p[kOwner], tableDefPage);
  Put32(&p[kPrev], page.prev);
  Put32(&p[kNext], page.next);
  Put32(&p[kTail], page.tail);
  Put16(&p[kPrefixLength], uint16_t(prefix));
  size_t at = 0;
  for (size_t i = 0; i < whole.size(); ++i) {
    size_t skip = i == 0 ? 0 : prefix;
    std::copy(whole[i].begin() + long(skip), whole[i].end(), p.begin() + long(kEntries + at));
    at += whole[i].size() - skip;
    p[kBitmap + at / 8] |= uint8_t(1u << (at % 8));
  }
  return p;
}

Bytes EmptyIndexLeaf(uint32_t tableDefPage, size_t pageSize) {
  return BuildIndexPage(IndexPage{}, tableDefPage, pageSize);
}

IndexTree::IndexTree(PageFile& file, uint32_t tableDefPage, uint32_t rootPage, Allocate allocate, Release release)
    : file_(file), tdef_(tableDefPage), root_(rootPage), allocate_(std::move(allocate)), release_(std::move(release)) {}

void IndexTree::Write(const IndexPage& page) {
  Bytes b = BuildIndexPage(page, tdef_, file_.pageSize());
  // Split parts always fit; an entry too long for a node page comes only from
  // a damaged page.
  if (b.empty()) ThrowCorrupt(file_.path());
  file_.WritePage(page.number, b);
}

void IndexTree::Relink(uint32_t page, bool setPrev, uint32_t value) {
  if (page == 0) return;
  Bytes b = file_.Page(page);
  if (b[0] != page_type::kIndexLeaf && b[0] != page_type::kIndexNode) ThrowCorrupt(file_.path());
  Put32(&b[setPrev ? kPrev : kNext], value);
  file_.WritePage(page, b);
}

namespace {
/// The child a search for `probe` follows: the first entry not below it, else the tail.
size_t ChildSlot(const IndexPage& node, const IndexEntry& probe) {
  return size_t(std::lower_bound(node.entries.begin(), node.entries.end(), probe) - node.entries.begin());
}
uint32_t ChildAt(const IndexPage& node, size_t slot, const std::string& path) {
  if (slot < node.entries.size()) return node.entries[slot].child;
  if (node.tail != 0) return node.tail;
  if (node.entries.empty()) ThrowCorrupt(path);
  return node.entries.back().child;
}
}  // namespace

IndexPage IndexTree::FindLeaf(const IndexEntry& probe, size_t& position) {
  IndexPage page = ReadIndexPage(file_, root_);
  for (int depth = 0; !page.leaf; ++depth) {
    if (depth > kMaxDepth) ThrowCorrupt(file_.path());
    page = ReadIndexPage(file_, ChildAt(page, ChildSlot(page, probe), file_.path()));
  }
  position = size_t(std::lower_bound(page.entries.begin(), page.entries.end(), probe) - page.entries.begin());
  for (uint32_t guard = 0; position == page.entries.size() && page.next != 0; ++guard) {
    if (guard > file_.pageCount()) ThrowCorrupt(file_.path());
    page = ReadIndexPage(file_, page.next);
    position = 0;
  }
  return page;
}

std::vector<IndexEntry> IndexTree::Entries() {
  IndexPage page = ReadIndexPage(file_, root_);
  for (int depth = 0; !page.leaf; ++depth) {
    if (depth > kMaxDepth) ThrowCorrupt(file_.path());
    page = ReadIndexPage(file_, ChildAt(page, 0, file_.path()));
  }
  std::vector<IndexEntry> out;
  for (uint32_t guard = 0;; ++guard) {
    if (guard > file_.pageCount()) ThrowCorrupt(file_.path());
    out.insert(out.end(), page.entries.begin(), page.entries.end());
    if (page.next == 0) break;
    page = ReadIndexPage(file_, page.next);
    if (!page.leaf) ThrowCorrupt(file_.path());
  }
  return out;
}

bool IndexTree::HasKey(const Bytes& key) {
  size_t at;
  IndexPage leaf = FindLeaf(IndexEntry{key, 0, 0}, at);
  return at < leaf.entries.size() && leaf.entries[at].key == key;
}

IndexEntry IndexTree::LastEntryBelow(const IndexPage& start, int depth) {
  IndexPage page = start;
  for (; !page.leaf; ++depth) {
    if (depth > kMaxDepth) ThrowCorrupt(file_.path());
    page = ReadIndexPage(file_, ChildAt(page, page.entries.size(), file_.path()));
  }
  if (page.entries.empty()) ThrowCorrupt(file_.path());
  return page.entries.back();
}

// Splits an overfull page into pages that each fit: in two halves by bytes,
// or, when the entry that overfilled the last leaf came at its very end, with
// only that entry on the new page (rows added in key order then fill pages
// completely). The first part keeps the page's number; the others are
// allocated and chained after it.
std::vector<IndexPage> IndexTree::SplitPage(IndexPage page, bool appending) {
  const size_t pageSize = file_.pageSize();
  std::vector<std::vector<IndexEntry>> parts;
  auto fits = [&](const std::vector<IndexEntry>& es) {
    IndexPage probe;
    probe.leaf = page.leaf;
    probe.entries = es;
    return !BuildIndexPage(probe, tdef_, pageSize).empty();
  };
  // A node's split point moves into the parent, so a node keeps one entry less.
  std::vector<IndexEntry>& es = page.entries;
  if (appending && es.size() > 1 && fits({es.begin(), es.end() - 1})) {
    parts = {{es.begin(), es.end() - 1}, {es.end() - 1, es.end()}};
  } else {
    size_t total = 0, half = 0, cut = 0;
    for (const auto& e : es) total += e.key.size();
    while (cut + 1 < es.size() && half + es[cut].key.size() <= total / 2) half += es[cut++].key.size();
    if (cut == 0) cut = 1;
    parts = {{es.begin(), es.begin() + long(cut)}, {es.begin() + long(cut), es.end()}};
    // Very long keys: pack greedily instead.
    if (!fits(parts[0]) || !fits(parts[1])) {
      parts.clear();
      std::vector<IndexEntry> cur;
      for (const auto& e : es) {
        cur.push_back(e);
        if (!fits(cur)) {
          cur.pop_back();
          if (cur.empty()) ThrowCorrupt(file_.path());  // an entry larger than a page: a damaged one
          parts.push_back(cur);
          cur = {e};
        }
      }
      parts.push_back(cur);
    }
  }
  std::vector<IndexPage> out;
  for (auto& part : parts) {
    IndexPage p;
    p.leaf = page.leaf;
    p.entries = std::move(part);
    out.push_back(std::move(p));
  }
  return out;
}

// Puts the pages that now stand for the child in `slot` (the tail when
// `viaTail`) into the node: an entry for each but the last, which takes the
// child's place. No pages: the child is gone.
void IndexTree::ReplaceChild(IndexPage& node, size_t slot, bool viaTail, const std::vector<IndexPage>& parts,
                             int depth) {
  std::vector<IndexEntry> added;
  for (size_t i = 0; i + 1 < parts.size(); ++i) {
    IndexEntry e = LastEntryBelow(parts[i], depth + 1);
    e.child = parts[i].number;
    added.push_back(e);
  }
  if (viaTail) {
    if (parts.empty()) {
      node.tail = node.entries.empty() ? 0 : node.entries.back().child;
      if (!node.entries.empty()) node.entries.pop_back();
      return;
    }
    node.tail = parts.back().number;
    node.entries.insert(node.entries.end(), added.begin(), added.end());
    return;
  }
  if (parts.empty()) {
    node.entries.erase(node.entries.begin() + long(slot));
    return;
  }
  IndexEntry last = LastEntryBelow(parts.back(), depth + 1);
  last.child = parts.back().number;
  node.entries[slot] = last;
  node.entries.insert(node.entries.begin() + long(slot), added.begin(), added.end());
}

// Writes a changed page, split into as many pages as it needs; returns the
// pages that stand where it stood (the root keeps its number and grows a
// level instead).
std::vector<IndexPage> IndexTree::Store(IndexPage page, bool appending, int depth) {
  if (!BuildIndexPage(page, tdef_, file_.pageSize()).empty()) {
    Write(page);
    return {page};
  }
  const uint32_t number = page.number;
  std::vector<IndexPage> parts = SplitPage(page, appending);
  if (!page.leaf) {
    // Each node part but the last hands its last child to the tail slot; that
    // child's entry goes up into the parent instead.
    for (size_t i = 0; i + 1 < parts.size(); ++i) {
      parts[i].tail = parts[i].entries.back().child;
      parts[i].entries.pop_back();
    }
    parts.back().tail = page.tail;
  }
  const bool isRoot = number == root_;
  // New pages first (their neighbours filled in by a second write), then the
  // chain pointers, then the page that makes them reachable.
  for (size_t i = isRoot ? 0 : 1; i < parts.size(); ++i)
    parts[i].number = allocate_(BuildIndexPage(parts[i], tdef_, file_.pageSize()));
  if (!isRoot) parts[0].number = number;
  for (size_t i = 0; i < parts.size(); ++i) {
    parts[i].prev = i == 0 ? (isRoot ? 0 : page.prev) : parts[i - 1].number;
    parts[i].next = i + 1 < parts.size() ? parts[i + 1].number : (isRoot ? 0 : page.next);
  }
  for (size_t i = parts.size(); i-- > 1;) Write(parts[i]);
  if (!isRoot) {
    Relink(page.next, true, parts.back().number);
    Write(parts[0]);
    return parts;
  }
  Write(parts[0]);
  IndexPage root;
  root.number = root_;
  root.leaf = false;
  ReplaceChild(root, 0, true, parts, depth);
  Write(root);
  return {root};
}

std::vector<IndexPage> IndexTree::InsertBelow(uint32_t number, const IndexEntry& entry, int depth) {
  if (depth > kMaxDepth) ThrowCorrupt(file_.path());
  IndexPage page = ReadIndexPage(file_, number);
  bool appending = false;
  if (page.leaf) {
    auto at = std::lower_bound(page.entries.begin(), page.entries.end(), entry);
    appending = at == page.entries.end() && page.next == 0;
    page.entries.insert(at, entry);
  } else {
    size_t slot = ChildSlot(page, entry);
    bool viaTail = slot >= page.entries.size() && page.tail != 0;
    if (slot >= page.entries.size() && !viaTail) {  // a node without tail
      if (page.entries.empty()) ThrowCorrupt(file_.path());
      slot = page.entries.size() - 1;
    }
    std::vector<IndexPage> parts = InsertBelow(viaTail ? page.tail : page.entries[slot].child, entry, depth + 1);
    ReplaceChild(page, slot, viaTail, parts, depth);
  }
  return Store(std::move(page), appending, depth);
}

bool IndexTree::Insert(const Bytes& key, uint32_t rowPointer) {
  bool fresh = !HasKey(key);
  InsertBelow(root_, IndexEntry{key, rowPointer, 0}, 0);
  return fresh;
}

std::vector<IndexPage> IndexTree::RemoveBelow(uint32_t number, const IndexEntry& entry, bool& found, int depth) {
  if (depth > kMaxDepth) ThrowCorrupt(file_.path());
  IndexPage page = ReadIndexPage(file_, number);
  const bool isRoot = number == root_;
  if (page.leaf) {
    auto at = std::lower_bound(page.entries.begin(), page.entries.end(), entry);
    if (at == page.entries.end() || !at->SameKeyAndRow(entry)) return {page};
    found = true;
    page.entries.erase(at);
  } else {
    size_t slot = ChildSlot(page, entry);
    bool viaTail = slot >= page.entries.size();
    if (viaTail && page.tail == 0) {
      if (page.entries.empty()) ThrowCorrupt(file_.path());
      slot = page.entries.size() - 1;
      viaTail = false;
    }
    std::vector<IndexPage> parts =
        RemoveBelow(viaTail ? page.tail : page.entries[slot].child, entry, found, depth + 1);
    if (!found) return {page};
    // Only a gone child, or a child that lost its last entry, changes this node.
    if (!parts.empty() && parts.size() == 1 && (viaTail || !page.entries[slot].SameKeyAndRow(entry))) return {page};
    ReplaceChild(page, slot, viaTail, parts, depth);
  }
  if (page.entries.empty() && page.tail == 0 && !isRoot) {
    Relink(page.prev, false, page.next);
    Relink(page.next, true, page.prev);
    release_(number);
    return {};
  }
  if (isRoot && !page.leaf && page.entries.empty()) {
    // A root with a single child takes the child's place (the child is the
    // only page of its level, so it has no neighbours).
    if (page.tail == 0) {
      page = IndexPage{};
      page.number = root_;
    } else {
      uint32_t only = page.tail;
      page = ReadIndexPage(file_, only);
      page.number = root_;
      page.prev = page.next = 0;
      release_(only);
    }
  }
  return Store(std::move(page), false, depth);
}

bool IndexTree::Remove(const Bytes& key, uint32_t rowPointer) {
  bool found = false;
  RemoveBelow(root_, IndexEntry{key, rowPointer, 0}, found, 0);
  if (!found) ThrowCorrupt(file_.path());
  return !HasKey(key);
}

}  // namespace bw::jet
