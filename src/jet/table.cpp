#include "jet/table.h"

#include <algorithm>
#include <unordered_set>

#include "jet/data_page.h"
#include "jet/database.h"
#include "jet/index_key.h"
#include "jet/jet_errors.h"
#include "jet/usage_map.h"

namespace bw::jet {
namespace {
// A data page holds at most 256 rows: the row number in a row id is one byte.
constexpr size_t kMaxRowsPerPage = 255;
}  // namespace

Table::Table(Database& db, std::string name, TableDef def) : db_(db), name_(std::move(name)), def_(std::move(def)) {
  for (size_t i = 0; i < def_.columns.size(); ++i) columnIndex_[UpperName(def_.columns[i].name)] = int(i);
}

int Table::ColumnIndex(const std::string& name) const {
  auto it = columnIndex_.find(UpperName(name));
  return it == columnIndex_.end() ? -1 : it->second;
}

const std::vector<uint32_t>& Table::OwnedPages() {
  if (!ownedLoaded_) {
    PageFile& f = db_.file();
    UsageMap map(f, def_.ownedPagesMap, false);
    owned_.clear();
    for (uint32_t p : map.Pages())
      if (p < f.pageCount()) owned_.push_back(p);
    for (uint32_t p : owned_) {
      const Bytes& pg = f.Page(p);
      if (pg[0] != page_type::kData) continue;
      if (PageOwner(pg) == def_.page) lastDataPage_ = std::max(lastDataPage_, p);
      if (PageOwner(pg) == kLvalOwner) lastLvalPage_ = std::max(lastLvalPage_, p);
    }
    ownedLoaded_ = true;
  }
  return owned_;
}

std::vector<RowId> Table::RowIds() {
  PageFile& f = db_.file();
  const bool j4 = f.jet4();
  std::vector<RowId> ids;
  for (uint32_t p : OwnedPages()) {
    const Bytes& pg = f.Page(p);
    if (pg[0] != page_type::kData || PageOwner(pg) != def_.page) continue;
    int n = SlotCount(pg, j4);
    for (int i = 0; i < n; ++i) {
      uint16_t e = SlotEntry(pg, j4, i);
      bool deleted = e & row_flag::kDeleted;
      bool overflow = e & row_flag::kOverflow;
      // Deleted rows have both flags; a moved row's target has only the
      // deleted flag and is reached through its pointer.
      if (deleted) continue;
      (void)overflow;
      ids.push_back(RowId{p, uint8_t(i)});
    }
  }
  return ids;
}

RowId Table::Resolve(RowId id) {
  PageFile& f = db_.file();
  const bool j4 = f.jet4();
  for (int hops = 0; hops < 8; ++hops) {
    if (id.page >= f.pageCount()) ThrowCorrupt(f.path());
    const Bytes& pg = f.Page(id.page);
    if (pg[0] != page_type::kData || id.row >= SlotCount(pg, j4)) ThrowCorrupt(f.path());
    uint16_t e = SlotEntry(pg, j4, id.row);
    if ((e & row_flag::kOverflow) == 0) return id;
    if (e & row_flag::kDeleted) ThrowJet(jet_err::kRecordIsDeleted, "Record is deleted.");
    size_t start, len;
    SlotBounds(pg, j4, id.row, start, len);
    if (len < 4) ThrowCorrupt(f.path());
    id = RowId::FromPacked(Get32(&pg[start]));
  }
  ThrowCorrupt(f.path());
}

std::vector<Value> Table::ReadRow(RowId id, bool longValues) {
  PageFile& f = db_.file();
  const bool j4 = f.jet4();
  {
    const Bytes& pg = f.Page(id.page);
    if (pg[0] != page_type::kData || id.row >= SlotCount(pg, j4)) ThrowCorrupt(f.path());
    uint16_t e = SlotEntry(pg, j4, id.row);
    if ((e & row_flag::kDeleted) && (e & row_flag::kOverflow))
      ThrowJet(jet_err::kRecordIsDeleted, "Record is deleted.");
  }
  RowId at = Resolve(id);
  const Bytes& pg = f.Page(at.page);
  size_t start, len;
  SlotBounds(pg, j4, at.row, start, len);
  Bytes row(pg.begin() + long(start), pg.begin() + long(start + len));
  return DecodeRow(def_, j4, row.data(), row.size(),
                   [this, longValues](const uint8_t* h) { return longValues ? ReadLongValue(h) : Bytes(); });
}

void Table::ScanFixedColumn(int column, const std::function<void(RowId, const Value&)>& visit) {
  PageFile& f = db_.file();
  const bool j4 = f.jet4();
  for (uint32_t p : OwnedPages()) {
    const Bytes* pg = &f.Page(p);
    if ((*pg)[0] != page_type::kData || PageOwner(*pg) != def_.page) continue;
    const int n = SlotCount(*pg, j4);
    for (int i = 0; i < n; ++i) {
      const uint16_t e = SlotEntry(*pg, j4, i);
      if (e & row_flag::kDeleted) continue;
      const RowId id{p, uint8_t(i)};
      // A moved row is read where it went; the page it went to may push this
      // one out of the cache, so this page is looked up again afterwards.
      const RowId at = (e & row_flag::kOverflow) ? Resolve(id) : id;
      const Bytes& rowPage = f.Page(at.page);
      size_t start, len;
      SlotBounds(rowPage, j4, at.row, start, len);
      visit(id, DecodeFixedColumn(def_, j4, rowPage.data() + start, len, size_t(column)));
      if (at.page != p) pg = &f.Page(p);
    }
  }
}

Bytes Table::ReadLongValue(const uint8_t* header) {
  PageFile& f = db_.file();
  const bool j4 = f.jet4();
  uint32_t head = Get32(header);
  size_t total = head & kLongValueLengthMask;
  RowId at = RowId::FromPacked(Get32(header + 4));
  Bytes out;
  bool single = head & kLongValueSinglePage;
  // A chain that comes back to a row it has passed would never end.
  std::unordered_set<uint32_t> passed;
  while (out.size() < total) {
    if (!passed.insert(at.Packed()).second) ThrowCorrupt(f.path());
    if (at.page == 0 || at.page >= f.pageCount()) break;
    const Bytes& pg = f.Page(at.page);
    if (pg[0] != page_type::kData || at.row >= SlotCount(pg, j4)) break;
    size_t start, len;
    SlotBounds(pg, j4, at.row, start, len);
    if (single) {
      out.insert(out.end(), pg.begin() + long(start), pg.begin() + long(start + std::min(len, total)));
      break;
    }
    if (len < 4) break;
    RowId next = RowId::FromPacked(Get32(&pg[start]));
    size_t take = std::min(len - 4, total - out.size());
    out.insert(out.end(), pg.begin() + long(start + 4), pg.begin() + long(start + 4 + take));
    at = next;
  }
  return out;
}

void Table::CheckWritable() const {
  PageFile& f = db_.file();
  if (f.readOnly()) ThrowReadOnly("");
  if (!f.jet4()) ThrowReadOnly("this engine writes Jet 4 (Access 2000-2003) files only; '" + f.path() +
                               "' is a Jet 3 (Access 97) file");
}

void Table::Reload() {
  def_ = ReadTableDef(db_.file(), def_.page);
  ownedLoaded_ = false;
  owned_.clear();
  lastDataPage_ = lastLvalPage_ = 0;
}

std::string Table::IndexName(size_t i) const {
  for (const auto& li : def_.logicalIndexes)
    if (li.realIndex == i) return li.name;
  return "#" + std::to_string(i);
}

std::optional<Bytes> Table::IndexKey(size_t i, const std::vector<Value>& values) const {
  const RealIndex& ix = def_.indexes[i];
  Bytes key;
  bool allNull = true;
  for (const auto& c : ix.columns) {
    int at = def_.ColumnPosition(c.columnNumber);
    const ColumnDef& col = def_.columns[size_t(at)];
    const Value& v = size_t(at) < values.size() ? values[size_t(at)] : Value();
    allNull = allNull && v.IsNull() && col.type != ColumnType::kBoolean;
    if (!AppendColumnKey(key, col.type, v, c.ascending)) {
      std::string what = col.type == ColumnType::kText
                             ? "the text '" + v.text + "' holds a character whose sort weight is not known here"
                             : "its column '" + col.name + "' is of a type whose index keys are not known here";
      ThrowReadOnly("table '" + name_ + "', index '" + IndexName(i) + "': " + what);
    }
  }
  if (allNull && ix.ignoreNulls()) return std::nullopt;
  return key;
}

IndexTree Table::Index(size_t i) {
  PageFile& f = db_.file();
  RowId map = def_.indexes[i].usageMap;
  auto alloc = [this](const Bytes& b) { return db_.AllocatePage(b); };
  return IndexTree(
      f, def_.page, def_.indexes[i].rootPage,
      [this, map, alloc](const Bytes& page) {
        uint32_t n = db_.AllocatePage(page);
        UsageMap(db_.file(), map, false).Set(n, true, alloc);
        return n;
      },
      [this, map, alloc](uint32_t page) {
        UsageMap(db_.file(), map, false).Set(page, false, alloc);
        db_.FreePage(page);
      });
}

std::vector<Value> Table::Coerced(const std::vector<Value>& values) const {
  std::vector<Value> out(def_.columns.size());
  for (size_t k = 0; k < out.size(); ++k) out[k] = CoerceTo(k < values.size() ? values[k] : Value(), def_.columns[k]);
  return out;
}

std::vector<std::optional<Bytes>> Table::Keys(const std::vector<Value>& values) const {
  std::vector<std::optional<Bytes>> keys;
  for (size_t i = 0; i < def_.indexes.size(); ++i) keys.push_back(IndexKey(i, values));
  return keys;
}

void Table::RefuseBrokenIndexes(const std::vector<Value>& values, const std::vector<std::optional<Bytes>>& keys,
                                const std::vector<std::optional<Bytes>>* old) {
  for (size_t i = 0; i < def_.indexes.size(); ++i) {
    const RealIndex& ix = def_.indexes[i];
    bool primary = false;
    for (const auto& li : def_.logicalIndexes) primary = primary || (li.realIndex == i && li.type == 1);
    if (primary || (ix.flags & index_flag::kRequired))
      for (const auto& c : ix.columns) {
        size_t at = size_t(def_.ColumnPosition(c.columnNumber));
        if (values[at].IsNull() && def_.columns[at].type != ColumnType::kBoolean) ThrowNullInIndex();
      }
    if (!ix.unique() || !keys[i]) continue;
    if (old && (*old)[i] == keys[i]) continue;
    if (Index(i).HasKey(*keys[i])) ThrowDuplicateKey();
  }
}

void Table::AddEntries(const std::vector<std::optional<Bytes>>& keys, RowId id) {
  for (size_t i = 0; i < keys.size(); ++i)
    if (keys[i] && Index(i).Insert(*keys[i], id.Packed())) ++def_.indexes[i].distinctKeys;
}

void Table::RemoveEntries(const std::vector<std::optional<Bytes>>& keys, RowId id) {
  for (size_t i = 0; i < keys.size(); ++i)
    if (keys[i] && Index(i).Remove(*keys[i], id.Packed()) && def_.indexes[i].distinctKeys > 0)
      --def_.indexes[i].distinctKeys;
}

void Table::AddOwnedPage(uint32_t page, bool dataPage) {
  PageFile& f = db_.file();
  auto alloc = [this](const Bytes& b) { return db_.AllocatePage(b); };
  UsageMap(f, def_.ownedPagesMap, false).Set(page, true, alloc);
  if (dataPage) {
    UsageMap freeMap(f, def_.freePagesMap, false);
    freeMap.Set(page, true, alloc);
    // The page before it will not be filled any further.
    if (lastDataPage_ != 0 && lastDataPage_ != page) freeMap.Set(lastDataPage_, false, alloc);
  }
  OwnedPages();
  owned_.insert(std::upper_bound(owned_.begin(), owned_.end(), page), page);
}

RowId Table::PlaceRow(const Bytes& bytes, uint16_t flags) {
  PageFile& f = db_.file();
  const size_t maxRow = f.pageSize() - DataPageHeaderSize(true) - 2;
  if (bytes.size() > maxRow) ThrowJet(3047, "Record is too large.");
  OwnedPages();
  if (lastDataPage_ != 0) {
    const Bytes& pg = f.Page(lastDataPage_);
    auto slots = ReadSlots(pg, true);
    if (slots.size() < kMaxRowsPerPage && SpaceNeeded(slots, true) + 2 + bytes.size() <= f.pageSize()) {
      slots.push_back(Slot{flags, bytes});
      f.WritePage(lastDataPage_, BuildDataPage(true, f.pageSize(), def_.page, slots));
      return RowId{lastDataPage_, uint8_t(slots.size() - 1)};
    }
  }
  uint32_t page = db_.AllocatePage(BuildDataPage(true, f.pageSize(), def_.page, {Slot{flags, bytes}}));
  AddOwnedPage(page, true);
  lastDataPage_ = page;
  return RowId{page, 0};
}

Bytes Table::StoreLongValue(const Bytes& payload) {
  PageFile& f = db_.file();
  Bytes field(12, 0);
  if (payload.size() <= kMaxInlineLongValue) {
    Put32(&field[0], uint32_t(payload.size()) | kLongValueInline);
    field.insert(field.end(), payload.begin(), payload.end());
    return field;
  }
  // LVAL pages belong to no usage map of the table (Access keeps them out of
  // it too); the rows that point to them are what keeps them alive.
  const size_t onePage = f.pageSize() - DataPageHeaderSize(true) - 2;
  if (payload.size() <= onePage) {
    RowId at;
    bool placed = false;
    if (lastLvalPage_ != 0) {
      auto slots = ReadSlots(f.Page(lastLvalPage_), true);
      if (slots.size() < kMaxRowsPerPage && SpaceNeeded(slots, true) + 2 + payload.size() <= f.pageSize()) {
        slots.push_back(Slot{0, payload});
        f.WritePage(lastLvalPage_, BuildDataPage(true, f.pageSize(), kLvalOwner, slots));
        at = RowId{lastLvalPage_, uint8_t(slots.size() - 1)};
        placed = true;
      }
    }
    if (!placed) {
      uint32_t page = db_.AllocatePage(BuildDataPage(true, f.pageSize(), kLvalOwner, {Slot{0, payload}}));
      lastLvalPage_ = page;
      at = RowId{page, 0};
    }
    Put32(&field[0], uint32_t(payload.size()) | kLongValueSinglePage);
    Put32(&field[4], at.Packed());
    return field;
  }
  // A chain of pages, one piece each; written from the last piece back so
  // that every page is complete before anything points to it.
  const size_t piece = onePage - 4;
  size_t pieces = (payload.size() + piece - 1) / piece;
  RowId next{0, 0};
  for (size_t k = pieces; k-- > 0;) {
    size_t from = k * piece;
    size_t n = std::min(piece, payload.size() - from);
    Bytes row(4, 0);
    Put32(row.data(), next.Packed());
    row.insert(row.end(), payload.begin() + long(from), payload.begin() + long(from + n));
    uint32_t page = db_.AllocatePage(BuildDataPage(true, f.pageSize(), kLvalOwner, {Slot{0, row}}));
    next = RowId{page, 0};
  }
  Put32(&field[0], uint32_t(payload.size()));
  Put32(&field[4], next.Packed());
  return field;
}

RowId Table::Insert(const std::vector<Value>& values) {
  CheckWritable();
  ++changeCount_;
  PageFile& f = db_.file();
  RowId id;
  AllOrNothing([&] {
    auto coerced = Coerced(values);
    auto keys = Keys(coerced);
    RefuseBrokenIndexes(coerced, keys, nullptr);
    Bytes row = EncodeRow(def_, values, [this](const Bytes& p) { return StoreLongValue(p); });
    id = PlaceRow(row, 0);
    AddEntries(keys, id);
    ++def_.rowCount;
    WriteCounts(f, def_);
  });
  return id;
}

void Table::AllOrNothing(const std::function<void()>& write) {
  PageFile& f = db_.file();
  f.Begin();
  try {
    write();
    f.Commit();
  } catch (...) {
    try {
      f.Rollback();
      Reload();
    } catch (...) {
    }
    throw;
  }
}

void Table::Update(RowId id, const std::vector<Value>& values) {
  CheckWritable();
  ++changeCount_;
  PageFile& f = db_.file();
  AllOrNothing([&] {
    auto oldKeys = Keys(ReadRow(id));
    auto coerced = Coerced(values);
    auto keys = Keys(coerced);
    RefuseBrokenIndexes(coerced, keys, &oldKeys);
    Rewrite(id, values);
    if (keys != oldKeys) {
      std::vector<std::optional<Bytes>> gone(keys.size()), added(keys.size());
      for (size_t i = 0; i < keys.size(); ++i)
        if (keys[i] != oldKeys[i]) gone[i] = oldKeys[i], added[i] = keys[i];
      RemoveEntries(gone, id);
      AddEntries(added, id);
      WriteCounts(f, def_);
    }
  });
}

void Table::Rewrite(RowId id, const std::vector<Value>& values) {
  PageFile& f = db_.file();
  RowId at = Resolve(id);
  Bytes row = EncodeRow(def_, values, [this](const Bytes& p) { return StoreLongValue(p); });
  auto slots = ReadSlots(f.Page(at.page), true);
  slots[at.row].data = row;
  if (SpaceNeeded(slots, true) <= f.pageSize()) {
    f.WritePage(at.page, BuildDataPage(true, f.pageSize(), def_.page, slots));
    return;
  }
  // The row no longer fits its page: it moves, and its place keeps a pointer.
  RowId moved = PlaceRow(row, row_flag::kDeleted);
  auto home = ReadSlots(f.Page(id.page), true);
  Bytes pointer(4);
  Put32(pointer.data(), moved.Packed());
  home[id.row] = Slot{row_flag::kOverflow, pointer};
  if (SpaceNeeded(home, true) > f.pageSize()) ThrowCorrupt(f.path());  // only a damaged page is this full
  f.WritePage(id.page, BuildDataPage(true, f.pageSize(), def_.page, home));
  if (!(at == id)) {
    auto prev = ReadSlots(f.Page(at.page), true);
    prev[at.row] = Slot{uint16_t(row_flag::kDeleted | row_flag::kOverflow), {}};
    f.WritePage(at.page, BuildDataPage(true, f.pageSize(), def_.page, prev));
  }
}

void Table::Delete(RowId id) {
  CheckWritable();
  ++changeCount_;
  PageFile& f = db_.file();
  AllOrNothing([&] {
    auto keys = Keys(ReadRow(id));
    Erase(id);
    RemoveEntries(keys, id);
    if (def_.rowCount > 0) --def_.rowCount;
    WriteCounts(f, def_);
  });
}

void Table::Erase(RowId id) {
  PageFile& f = db_.file();
  RowId at = Resolve(id);
  const uint16_t gone = row_flag::kDeleted | row_flag::kOverflow;
  auto slots = ReadSlots(f.Page(id.page), true);
  if (slots[id.row].flags & gone) {
    if ((slots[id.row].flags & gone) == gone) ThrowJet(jet_err::kRecordIsDeleted, "Record is deleted.");
  }
  slots[id.row] = Slot{gone, {}};
  f.WritePage(id.page, BuildDataPage(true, f.pageSize(), def_.page, slots));
  if (!(at == id)) {
    auto moved = ReadSlots(f.Page(at.page), true);
    moved[at.row] = Slot{gone, {}};
    f.WritePage(at.page, BuildDataPage(true, f.pageSize(), def_.page, moved));
  }
}

}  // namespace bw::jet
