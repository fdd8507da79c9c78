#include "jet/tdef.h"

#include <algorithm>
#include <stdexcept>

#include "jet/jet_errors.h"

namespace bw::jet {
namespace {

// Every Jet 4 table definition carries this number in its header and in each
// column entry; Access writes it and expects it back.
constexpr uint32_t kJet4TableMagic = 0x0659;
constexpr size_t kJet4ColumnEntry = 25;
constexpr size_t kJet3ColumnEntry = 18;
// Jet 4 index descriptions: per physical index a 12-byte count entry after the
// header and a 52-byte entry after the column names, per named index a 28-byte
// entry; their fields lie at fixed offsets.
constexpr size_t kJet4IndexCountEntry = 12;
constexpr size_t kJet4RealIndexEntry = 52;
constexpr size_t kJet4LogicalIndexEntry = 28;
constexpr size_t kIndexColumnSlots = 10;
// Both Access and other Jet 4 writers open every physical index entry with
// this number; its meaning is unknown, readers ignore it.
constexpr uint32_t kRealIndexLead = 0x0783;
constexpr uint8_t kAscending = 0x01;

/// The definition's bytes with continuation pages joined (their 8-byte headers dropped).
Bytes JoinDefinition(PageFile& file, uint32_t first, std::vector<uint32_t>& pages) {
  Bytes out;
  uint32_t pg = first;
  while (pg != 0) {
    if (std::find(pages.begin(), pages.end(), pg) != pages.end()) ThrowCorrupt(file.path());
    const Bytes& p = file.Page(pg);
    if (p[0] != page_type::kTableDefinition) ThrowCorrupt(file.path());
    pages.push_back(pg);
    if (out.empty())
      out.assign(p.begin(), p.end());
    else
      out.insert(out.end(), p.begin() + 8, p.end());
    pg = Get32(&p[4]);
  }
  return out;
}

}  // namespace

uint16_t FixedSize(ColumnType type) {
  switch (type) {
    case ColumnType::kBoolean: return 0;
    case ColumnType::kByte: return 1;
    case ColumnType::kInteger: return 2;
    case ColumnType::kLong: return 4;
    case ColumnType::kCurrency: return 8;
    case ColumnType::kSingle: return 4;
    case ColumnType::kDouble: return 8;
    case ColumnType::kDateTime: return 8;
    case ColumnType::kGuid: return 16;
    case ColumnType::kNumeric: return 17;
    case ColumnType::kComplex: return 4;
    default: return 0;
  }
}

TableDef ReadTableDef(PageFile& file, uint32_t page) {
  TableDef def;
  def.page = page;
  Bytes b = JoinDefinition(file, page, def.pages);
  const bool j4 = file.jet4();
  auto need = [&](size_t end) {
    if (end > b.size()) ThrowCorrupt(file.path());
  };
  size_t pos;
  uint16_t numColumns;
  if (j4) {
    need(63);
    def.rowCount = Get32(&b[16]);
    def.tableType = b[40];
    def.maxColumns = Get16(&b[41]);
    def.varColumns = Get16(&b[43]);
    numColumns = Get16(&b[45]);
    def.logicalIndexCount = Get32(&b[47]);
    def.realIndexCount = Get32(&b[51]);
    def.ownedPagesMap = RowId::FromPacked(Get32(&b[55]));
    def.freePagesMap = RowId::FromPacked(Get32(&b[59]));
    pos = 63 + kJet4IndexCountEntry * size_t(def.realIndexCount);
  } else {
    need(43);
    def.rowCount = Get32(&b[12]);
    def.tableType = b[20];
    def.maxColumns = Get16(&b[21]);
    def.varColumns = Get16(&b[23]);
    numColumns = Get16(&b[25]);
    def.logicalIndexCount = Get32(&b[27]);
    def.realIndexCount = Get32(&b[31]);
    def.ownedPagesMap = RowId::FromPacked(Get32(&b[35]));
    def.freePagesMap = RowId::FromPacked(Get32(&b[39]));
    pos = 43 + 8 * size_t(def.realIndexCount);
  }
  // Access allows 255 columns to a table (deleted ones included until compacted).
  if (def.realIndexCount > 1000 || def.logicalIndexCount > 1000 || numColumns > 255) ThrowCorrupt(file.path());
  const size_t entry = j4 ? kJet4ColumnEntry : kJet3ColumnEntry;
  need(pos + entry * numColumns);
  for (uint16_t i = 0; i < numColumns; ++i, pos += entry) {
    const uint8_t* c = &b[pos];
    ColumnDef col;
    col.type = ColumnType(c[0]);
    if (j4) {
      col.number = Get16(c + 5);
      col.varIndex = Get16(c + 7);
      col.misc = Get16(c + 11);
      col.flags = c[15];
      col.miscFlags = c[16];
      col.fixedOffset = Get16(c + 21);
      col.length = Get16(c + 23);
    } else {
      col.number = Get16(c + 1);
      col.varIndex = Get16(c + 3);
      col.misc = Get16(c + 9);
      col.flags = c[13];
      col.fixedOffset = Get16(c + 14);
      col.length = Get16(c + 16);
    }
    def.columns.push_back(col);
  }
  for (auto& col : def.columns) {
    if (j4) {
      need(pos + 2);
      uint16_t n = Get16(&b[pos]);
      need(pos + 2 + n);
      col.name = DecodeJet4Text(&b[pos + 2], n);
      pos += 2 + n;
    } else {
      need(pos + 1);
      uint8_t n = b[pos];
      need(pos + 1 + n);
      col.name = DecodeCp1252(&b[pos + 1], n);
      pos += 1 + n;
    }
  }
  if (j4) {
    for (uint32_t i = 0; i < def.realIndexCount; ++i, pos += kJet4RealIndexEntry) {
      need(pos + kJet4RealIndexEntry);
      const uint8_t* e = &b[pos];
      RealIndex ix;
      for (size_t k = 0; k < kIndexColumnSlots; ++k) {
        uint16_t number = Get16(e + 4 + 3 * k);
        if (number != 0xFFFF) ix.columns.push_back({number, e[6 + 3 * k] == kAscending});
      }
      ix.usageMap = RowId::FromPacked(Get32(e + 34));
      ix.rootPage = Get32(e + 38);
      ix.flags = e[46];
      ix.countOffset = 63 + kJet4IndexCountEntry * i + 4;
      ix.distinctKeys = Get32(&b[ix.countOffset]);
      def.indexes.push_back(ix);
    }
    for (uint32_t i = 0; i < def.logicalIndexCount; ++i, pos += kJet4LogicalIndexEntry) {
      need(pos + kJet4LogicalIndexEntry);
      const uint8_t* e = &b[pos];
      LogicalIndex li;
      li.number = Get32(e + 4);
      li.realIndex = Get32(e + 8);
      li.type = e[23];
      if (li.realIndex >= def.realIndexCount) ThrowCorrupt(file.path());
      def.logicalIndexes.push_back(li);
    }
    for (auto& li : def.logicalIndexes) {
      need(pos + 2);
      uint16_t n = Get16(&b[pos]);
      need(pos + 2 + n);
      li.name = DecodeJet4Text(&b[pos + 2], n);
      pos += 2 + n;
    }
  }
  std::stable_sort(def.columns.begin(), def.columns.end(),
                   [](const ColumnDef& a, const ColumnDef& c) { return a.number < c.number; });
  for (const auto& ix : def.indexes)
    for (const auto& c : ix.columns)
      if (def.ColumnPosition(c.columnNumber) < 0) ThrowCorrupt(file.path());
  return def;
}

int TableDef::ColumnPosition(uint16_t number) const {
  for (size_t i = 0; i < columns.size(); ++i)
    if (columns[i].number == number) return int(i);
  return -1;
}

void WriteCounts(PageFile& file, const TableDef& def) {
  // Offsets count in the joined definition: each continuation page adds its
  // bytes after an 8-byte header.
  const size_t pageSize = file.pageSize();
  std::vector<Bytes> pages;
  std::vector<bool> touched(def.pages.size(), false);
  for (uint32_t p : def.pages) pages.push_back(file.Page(p));
  auto put = [&](size_t offset, uint32_t value) {
    size_t k = 0;
    while (offset >= pageSize) {
      offset -= pageSize;
      offset += 8;
      ++k;
    }
    if (k >= pages.size() || offset + 4 > pageSize) ThrowCorrupt(file.path());
    // A field split over two pages does not occur: counts lie near the start.
    Put32(&pages[k][offset], value);
    touched[k] = true;
  };
  put(file.jet4() ? 16 : 12, def.rowCount);
  if (file.jet4())
    for (const auto& ix : def.indexes) put(ix.countOffset, ix.distinctKeys);
  for (size_t k = 0; k < pages.size(); ++k)
    if (touched[k] && pages[k] != file.Page(def.pages[k])) file.WritePage(def.pages[k], pages[k]);
}

Bytes BuildJet4TableDef(const std::vector<NewColumn>& columns, bool systemTable, RowId ownedPagesMap,
                        RowId freePagesMap, uint32_t rowCount, const std::vector<NewIndex>& indexes,
                        std::vector<ColumnDef>* laidOut) {
  std::vector<ColumnDef> cols;
  uint16_t fixedOffset = 0, varIndex = 0;
  for (size_t i = 0; i < columns.size(); ++i) {
    const NewColumn& nc = columns[i];
    ColumnDef c;
    c.name = nc.name;
    c.type = nc.type;
    c.number = uint16_t(i);
    c.flags = column_flag::kNullable;
    uint16_t size = FixedSize(nc.type);
    bool isFixed = size > 0 || nc.type == ColumnType::kBoolean;
    if (isFixed) {
      c.flags |= column_flag::kFixed;
      // A fixed column notes how many variable columns come before it.
      c.varIndex = varIndex;
      c.fixedOffset = fixedOffset;
      c.length = size;
      fixedOffset = uint16_t(fixedOffset + size);
    } else {
      c.varIndex = varIndex++;
      if (nc.type == ColumnType::kText) c.length = uint16_t(nc.length * 2);
      else if (nc.type == ColumnType::kBinary) c.length = nc.length;
      else c.length = 0;
    }
    if (nc.type == ColumnType::kText || nc.type == ColumnType::kMemo) c.miscFlags = column_flag::kCompressedUnicode;
    c.misc = nc.type == ColumnType::kNumeric ? 0 : 0x409;
    cols.push_back(c);
  }
  Bytes b(4096, 0);
  b[0] = page_type::kTableDefinition;
  b[1] = 0x01;
  Put32(&b[12], kJet4TableMagic);
  Put32(&b[16], rowCount);
  b[24] = 0x01;  // lets Access hand out autonumbers
  b[40] = systemTable ? 0x53 : 0x4E;
  Put16(&b[41], uint16_t(cols.size()));
  Put16(&b[43], varIndex);
  Put16(&b[45], uint16_t(cols.size()));
  Put32(&b[47], uint32_t(indexes.size()));
  Put32(&b[51], uint32_t(indexes.size()));
  Put32(&b[55], ownedPagesMap.Packed());
  Put32(&b[59], freePagesMap.Packed());
  size_t pos = 63 + kJet4IndexCountEntry * indexes.size();
  for (const auto& c : cols) {
    uint8_t* e = &b[pos];
    e[0] = uint8_t(c.type);
    Put32(e + 1, kJet4TableMagic);
    Put16(e + 5, c.number);
    Put16(e + 7, c.varIndex);
    Put16(e + 9, c.number);
    Put16(e + 11, c.misc);
    e[15] = c.flags;
    e[16] = c.miscFlags;
    Put16(e + 21, c.fixedOffset);
    Put16(e + 23, c.length);
    pos += kJet4ColumnEntry;
  }
  auto putName = [&](const std::string& name) {
    std::u16string u = Utf8ToUtf16(name);
    if (pos + 2 + 2 * u.size() + 2 > b.size()) throw std::logic_error("table definition longer than one page");
    Put16(&b[pos], uint16_t(2 * u.size()));
    pos += 2;
    for (char16_t ch : u) {
      Put16(&b[pos], ch);
      pos += 2;
    }
  };
  for (const auto& c : cols) putName(c.name);
  if (pos + (kJet4RealIndexEntry + kJet4LogicalIndexEntry) * indexes.size() > b.size())
    throw std::logic_error("table definition longer than one page");
  for (const auto& ix : indexes) {
    uint8_t* e = &b[pos];
    Put32(e, kRealIndexLead);
    for (size_t k = 0; k < kIndexColumnSlots; ++k) {
      bool used = k < ix.columns.size();
      Put16(e + 4 + 3 * k, used ? ix.columns[k].columnNumber : 0xFFFF);
      e[6 + 3 * k] = used && ix.columns[k].ascending ? kAscending : 0;
    }
    Put32(e + 34, ix.usageMap.Packed());
    Put32(e + 38, ix.rootPage);
    e[46] = ix.flags;
    pos += kJet4RealIndexEntry;
  }
  std::vector<size_t> byName(indexes.size());
  for (size_t i = 0; i < byName.size(); ++i) byName[i] = i;
  std::stable_sort(byName.begin(), byName.end(),
                   [&](size_t x, size_t y) { return UpperName(indexes[x].name) < UpperName(indexes[y].name); });
  for (size_t i : byName) {
    uint8_t* e = &b[pos];
    Put32(e, kJet4TableMagic);
    Put32(e + 4, uint32_t(i));
    Put32(e + 8, uint32_t(i));
    Put32(e + 13, 0xFFFFFFFF);  // no foreign key
    e[23] = indexes[i].primaryKey ? 1 : 0;
    pos += kJet4LogicalIndexEntry;
  }
  for (size_t i : byName) putName(indexes[i].name);
  // End of the (empty) list of variable-column usage maps.
  Put16(&b[pos], 0xFFFF);
  pos += 2;
  Put32(&b[8], uint32_t(pos - 8));
  Put16(&b[2], uint16_t(4096 - pos));
  if (laidOut) *laidOut = cols;
  return b;
}

}  // namespace bw::jet
