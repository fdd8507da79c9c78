#include "jet/index_check.h"

#include <algorithm>
#include <map>

#include "runtime/run_time_error.h"

namespace bw::jet {
namespace {

struct Walk {
  PageFile& file;
  std::string where;
  std::vector<std::string>& findings;
  std::map<int, std::vector<IndexPage>> levels;  // pages of each depth, left to right
  std::map<uint32_t, uint32_t> parent;
  int leafDepth = -1;

  void Fail(const std::string& what) { findings.push_back(where + ": " + what); }

  /// Walks the subtree; returns its last entry (empty key when it has none).
  IndexEntry Visit(uint32_t number, int depth) {
    if (depth > 32) {
      Fail("the page tree is deeper than 32 levels");
      return {};
    }
    IndexPage page = ReadIndexPage(file, number);
    levels[depth].push_back(page);
    if (page.leaf) {
      if (leafDepth >= 0 && leafDepth != depth) Fail("leaf page " + std::to_string(number) + " at another depth");
      leafDepth = depth;
      return page.entries.empty() ? IndexEntry{} : page.entries.back();
    }
    if (page.entries.empty() && page.tail == 0) Fail("node page " + std::to_string(number) + " has no children");
    IndexEntry last;
    for (const auto& e : page.entries) {
      parent[e.child] = number;
      IndexEntry got = Visit(e.child, depth + 1);
      if (!got.SameKeyAndRow(e))
        Fail("node page " + std::to_string(number) + " names an entry that is not the last of child " +
             std::to_string(e.child));
      last = e;
    }
    if (page.tail != 0) parent[page.tail] = number, last = Visit(page.tail, depth + 1);
    return last;
  }

  /// Leaves are chained all along their level, node pages only to siblings under one parent.
  void CheckChains() {
    for (const auto& level : levels) {
      const auto& pages = level.second;  // a name the lambda below can take (older clang cannot take a binding)
      for (size_t i = 0; i < pages.size(); ++i) {
        auto sibling = [&](size_t j) { return pages[i].leaf || parent[pages[j].number] == parent[pages[i].number]; };
        uint32_t prev = i == 0 || !sibling(i - 1) ? 0 : pages[i - 1].number;
        uint32_t next = i + 1 == pages.size() || !sibling(i + 1) ? 0 : pages[i + 1].number;
        if (pages[i].prev != prev || pages[i].next != next)
          Fail("page " + std::to_string(pages[i].number) + " is chained to " + std::to_string(pages[i].prev) + "/" +
               std::to_string(pages[i].next) + " instead of " + std::to_string(prev) + "/" + std::to_string(next));
      }
    }
  }
};

}  // namespace

IndexCheck CheckIndexes(Table& table, bool counts) {
  IndexCheck out;
  const TableDef& def = table.def();
  std::vector<RowId> rows = table.RowIds();
  if (counts && def.rowCount != rows.size())
    out.findings.push_back(table.name() + ": the definition says " + std::to_string(def.rowCount) + " rows, " +
                           std::to_string(rows.size()) + " are there");
  for (size_t i = 0; i < def.indexes.size(); ++i) {
    const std::string where = table.name() + "." + table.IndexName(i);
    std::vector<IndexEntry> expected;
    std::vector<uint32_t> keyless;  // rows whose key the engine cannot make: only their entry's row is checked
    for (RowId id : rows) {
      try {
        if (auto key = table.IndexKey(i, table.ReadRow(id))) expected.push_back(IndexEntry{*key, id.Packed(), 0});
      } catch (const RunTimeError&) {
        keyless.push_back(id.Packed());
      }
    }
    if (!keyless.empty()) out.unchecked.push_back(where);
    std::sort(expected.begin(), expected.end());
    IndexTree tree = table.Index(i);
    Walk walk{tree.file(), where, out.findings, {}, {}, -1};
    walk.Visit(def.indexes[i].rootPage, 0);
    walk.CheckChains();
    std::vector<IndexEntry> entries = tree.Entries();
    out.entries += entries.size();
    if (!std::is_sorted(entries.begin(), entries.end())) out.findings.push_back(where + ": entries out of order");
    size_t distinct = 0;
    for (size_t k = 0; k < entries.size(); ++k) {
      bool repeat = k > 0 && entries[k].key == entries[k - 1].key;
      if (!repeat) ++distinct;
      if (repeat && def.indexes[i].unique()) out.findings.push_back(where + ": equal keys in a unique index");
    }
    std::sort(keyless.begin(), keyless.end());
    std::vector<IndexEntry> known;
    std::vector<uint32_t> other;
    for (const auto& e : entries) {
      if (std::binary_search(keyless.begin(), keyless.end(), e.pointer)) other.push_back(e.pointer);
      else known.push_back(e);
    }
    std::sort(other.begin(), other.end());
    bool same = other == keyless && known.size() == expected.size() &&
                std::equal(known.begin(), known.end(), expected.begin(),
                           [](const IndexEntry& a, const IndexEntry& b) { return a.SameKeyAndRow(b); });
    if (!same)
      out.findings.push_back(where + ": " + std::to_string(entries.size()) + " entries do not match the " +
                             std::to_string(expected.size()) + " the rows make");
    if (counts && distinct != def.indexes[i].distinctKeys)
      out.findings.push_back(where + ": " + std::to_string(distinct) + " distinct keys, the definition says " +
                             std::to_string(def.indexes[i].distinctKeys));
  }
  return out;
}

}  // namespace bw::jet
