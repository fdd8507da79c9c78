// Database::Create: a new Jet 4 file with Access's system tables (MSysObjects,
// MSysACEs, MSysQueries, MSysRelationships) and the indexes Access gives
// them, the catalog rows of the containers Access and Jet keep, the
// permission rows of the default workgroup, and the given user tables.
#include <cmath>
#include <ctime>

#include "jet/data_page.h"
#include "jet/database.h"
#include "jet/index_tree.h"
#include "jet/jet_errors.h"
#include "jet/usage_map.h"

namespace bw::jet {
namespace {

// The owner and permission entries hold security ids of the default
// workgroup, stored masked; Access 2000 wrote these bytes into a file whose
// header date is kHeaderDate, and the two belong together.
constexpr double kHeaderDate = 38143.546523784724;
const Bytes kEngineSid = {0xA7, 0x31};
const Bytes kAdminSid = {0xA6, 0x33};
const Bytes kUsersSid = {0xA7, 0x33};
const Bytes kCreatorSid = {0xA7, 0x36};
const Bytes kAdminsSid = {
    0xa4, 0xf7, 0x46, 0x67, 0xe1, 0x71, 0x67, 0xee, 0xd7, 0xb1, 0x0f, 0x8f, 0xfe, 0xef, 0x76, 0xff, 0xaa, 0xe3,
    0x66, 0x51, 0x05, 0xbd, 0xd2, 0x9d, 0x4d, 0x4b, 0x39, 0x52, 0xd9, 0xfb, 0x9a, 0x07, 0x66, 0x0c, 0x5b, 0xd2,
    0xd8, 0x7d, 0xdd, 0xb3, 0x1e, 0x65, 0x90, 0x19, 0x00, 0x94, 0x89, 0xc2, 0x3c, 0x25, 0x6a, 0xcf, 0xdb, 0x34,
    0x9a, 0x57, 0xaf, 0x50, 0xc5, 0x14, 0x9a, 0x98, 0x30, 0xe6, 0x2c, 0x35, 0x55, 0x3f, 0x0e, 0x95, 0xcf, 0xb6,
    0xec, 0xb5, 0x70, 0xb2, 0xf0, 0xa9, 0x9b, 0x1c, 0xdb, 0xce, 0x60, 0x74, 0x7b, 0x7b, 0x13, 0xcf, 0x1d, 0xaf,
    0xc3, 0xd6, 0x18, 0x5f, 0x9c, 0x5b, 0xe4, 0xe8, 0x7e, 0x37, 0xed, 0xb3};

/// Properties of the database object: AccessVersion "08.50" (an Access 2000
/// file) and the Build number, in the "MR2" property block format.
Bytes DatabaseProperties() {
  Bytes b = {'M', 'R', '2', 0};
  auto u16 = [&](uint16_t v) { b.push_back(uint8_t(v)); b.push_back(uint8_t(v >> 8)); };
  auto u32 = [&](uint32_t v) { u16(uint16_t(v)); u16(uint16_t(v >> 16)); };
  auto name = [&](const char* s) {
    std::u16string u = Utf8ToUtf16(s);
    u16(uint16_t(2 * u.size()));
    for (char16_t c : u) u16(c);
  };
  // Name chunk: length, type 0x80, then the names.
  size_t start = b.size();
  u32(0);
  u16(0x0080);
  name("AccessVersion");
  name("Build");
  Put32(&b[start], uint32_t(b.size() - start));
  // Value chunk for the database object itself.
  start = b.size();
  u32(0);
  u16(0x0000);
  u32(6);  // block header: length, then an empty object name
  u16(0);
  // AccessVersion: text "08.50".
  std::u16string ver = Utf8ToUtf16("08.50");
  u16(uint16_t(8 + 2 * ver.size()));
  b.push_back(0x00);  // ddl flag
  b.push_back(0x0A);  // type: text
  u16(0);             // name index 0
  u16(uint16_t(2 * ver.size()));
  for (char16_t c : ver) u16(c);
  // Build: long 6620.
  u16(12);
  b.push_back(0x00);
  b.push_back(0x04);  // type: long
  u16(1);             // name index 1
  u16(4);
  u32(6620);
  Put32(&b[start], uint32_t(b.size() - start));
  return b;
}

double OleNow() {
  std::time_t t = std::time(nullptr);
  std::tm local{};
  localtime_r(&t, &local);
  double secs = local.tm_hour * 3600.0 + local.tm_min * 60.0 + local.tm_sec;
  std::tm day = local;
  day.tm_hour = 12;  // noon avoids daylight-saving edges when counting days
  std::time_t noon = timegm(&day);
  return std::floor(double(noon) / 86400.0) + 25569.0 + secs / 86400.0;
}

struct TableSpec {
  std::string name;
  std::vector<NewColumn> columns;
  bool system;
  std::vector<NewIndex> indexes = {};
};

/// An index as Access makes it on a system table; columns by position.
NewIndex SystemIndex(const char* name, std::vector<uint16_t> columns, uint8_t flags, bool primary = false) {
  NewIndex ix;
  ix.name = name;
  for (uint16_t c : columns) ix.columns.push_back({c, true});
  ix.flags = uint8_t(index_flag::kJet4 | flags);
  ix.primaryKey = primary;
  return ix;
}

std::vector<TableSpec> SystemTables() {
  using T = ColumnType;
  return {
      {"MSysObjects",
       {{"Id", T::kLong},          {"ParentId", T::kLong},      {"Name", T::kText, 255},
        {"Type", T::kInteger},     {"DateCreate", T::kDateTime}, {"DateUpdate", T::kDateTime},
        {"Owner", T::kBinary, 510}, {"Flags", T::kLong},         {"Database", T::kMemo},
        {"Connect", T::kMemo},     {"ForeignName", T::kText, 255}, {"RmtInfoShort", T::kBinary, 510},
        {"RmtInfoLong", T::kOle},  {"Lv", T::kOle},              {"LvProp", T::kOle},
        {"LvModule", T::kOle},     {"LvExtra", T::kOle}},
       true,
       // Jet finds objects by these two.
       {SystemIndex("ParentIdName", {1, 2}, index_flag::kUnique),
        SystemIndex("Id", {0}, index_flag::kUnique, true)}},
      {"MSysACEs",
       {{"ObjectId", T::kLong}, {"SID", T::kBinary, 510}, {"ACM", T::kLong}, {"FInheritable", T::kBoolean, 0, false}},
       true,
       {SystemIndex("ObjectId", {0}, index_flag::kRequired)}},
      {"MSysQueries",
       {{"ObjectId", T::kLong}, {"Attribute", T::kByte}, {"Order", T::kBinary, 510}, {"Name1", T::kText, 255},
        {"Name2", T::kText, 255}, {"Expression", T::kMemo}, {"Flag", T::kInteger}, {"LvExtra", T::kLong}},
       true,
       {SystemIndex("ObjectIdAttribute", {0, 1, 2}, index_flag::kUnique, true)}},
      {"MSysRelationships",
       {{"szRelationship", T::kText, 255}, {"grbit", T::kLong}, {"ccolumn", T::kLong}, {"icolumn", T::kLong},
        {"szObject", T::kText, 255}, {"szColumn", T::kText, 255}, {"szReferencedObject", T::kText, 255},
        {"szReferencedColumn", T::kText, 255}},
       true,
       {SystemIndex("szRelationship", {0}, index_flag::kIgnoreNulls),
        SystemIndex("szObject", {4}, index_flag::kIgnoreNulls),
        SystemIndex("szReferencedObject", {6}, index_flag::kIgnoreNulls)}},
  };
}

Value Bin(const Bytes& b) { return Value::Binary(std::string(b.begin(), b.end())); }

}  // namespace

std::unique_ptr<Database> Database::Create(const std::string& path, const std::vector<NewTable>& tables,
                                           const std::string& password) {
  DatabaseHeader header;
  header.creationDate = kHeaderDate;
  header.password = Utf8ToUtf16(password);
  if (header.password.size() > 20) ThrowNotValidPassword();
  std::unique_ptr<Database> db(new Database());
  db->file_ = PageFile::Create(path, header);
  PageFile& f = *db->file_;
  const size_t mapLength = 69;  // one usage-map row: type, start page, 64 bitmap bytes

  // Page 1: the free-page map (every page from 2 on is free so far) and a
  // second, empty map.
  std::vector<uint32_t> free;
  for (uint32_t p = 2; p < (mapLength - 5) * 8; ++p) free.push_back(p);
  f.AppendPage(BuildDataPage(true, f.pageSize(), 1,
                             {Slot{0, BuildInlineMap(mapLength, 0, free, false)}, Slot{0, Bytes(mapLength, 0)}}));

  std::vector<TableSpec> specs = SystemTables();
  for (const auto& t : tables) specs.push_back({t.name, t.columns, false, t.indexes});
  // Pages: the table definitions, one page of usage maps (two per table, then
  // one per index), then each index's empty root leaf.
  const uint32_t firstTdef = 2;
  const uint32_t mapPage = firstTdef + uint32_t(specs.size());
  uint32_t nextRoot = mapPage + 1;
  size_t nextMapRow = 2 * specs.size();
  std::vector<Slot> maps;
  for (size_t i = 0; i < 2 * specs.size(); ++i) maps.push_back(Slot{0, BuildInlineMap(mapLength, 0, {}, false)});
  for (auto& table : specs)
    for (auto& ix : table.indexes) {
      ix.rootPage = nextRoot++;
      ix.usageMap = RowId{mapPage, uint8_t(nextMapRow++)};
      maps.push_back(Slot{0, BuildInlineMap(mapLength, ix.rootPage, {ix.rootPage}, false)});
    }
  for (size_t i = 0; i < specs.size(); ++i) {
    RowId owned{mapPage, uint8_t(2 * i)}, freeSpace{mapPage, uint8_t(2 * i + 1)};
    uint32_t got = db->AllocatePage(
        BuildJet4TableDef(specs[i].columns, specs[i].system, owned, freeSpace, 0, specs[i].indexes));
    if (got != firstTdef + i) ThrowCorrupt(path);
  }
  db->AllocatePage(BuildDataPage(true, f.pageSize(), 0, maps));
  for (size_t i = 0; i < specs.size(); ++i)
    for (const auto& ix : specs[i].indexes)
      if (db->AllocatePage(EmptyIndexLeaf(firstTdef + uint32_t(i), f.pageSize())) != ix.rootPage) ThrowCorrupt(path);

  // The catalog.
  const int32_t kRoot = 0x0F000000, kTables = 0x0F000001, kDatabases = 0x0F000002, kRelationships = 0x0F000003;
  const int32_t kSystemFlag = int32_t(0x80000000u);
  const double now = OleNow();
  Table objects(*db, "MSysObjects", ReadTableDef(f, firstTdef));
  auto object = [&](int32_t id, int32_t parent, const std::string& name, int16_t type, const Bytes& owner,
                    int32_t flags, const Bytes& props) {
    std::vector<Value> row(objects.def().columns.size());
    row[0] = Value::Long(id);
    row[1] = Value::Long(parent);
    row[2] = Value::Text(name);
    row[3] = Value::Integer(type);
    row[4] = Value::Double(now);
    row[5] = Value::Double(now);
    row[6] = Bin(owner);
    row[7] = Value::Long(flags);
    if (!props.empty()) {
      row[14] = Bin(props);
      row[14].kind = Value::Kind::kOle;
    }
    objects.Insert(row);
  };
  object(kTables, kRoot, "Tables", 3, kEngineSid, kSystemFlag, {});
  object(kDatabases, kRoot, "Databases", 3, kEngineSid, kSystemFlag, {});
  object(kRelationships, kRoot, "Relationships", 3, kEngineSid, kSystemFlag, {});
  object(0x10000000, kDatabases, "MSysDb", 2, kAdminSid, kSystemFlag, DatabaseProperties());
  for (size_t i = 0; i < 4; ++i)
    object(int32_t(firstTdef + i), kTables, specs[i].name, 1, kEngineSid, kSystemFlag, {});
  const char* accessContainers[] = {"DataAccessPages", "Forms", "Modules", "Reports", "Scripts", "SysRel"};
  for (int i = 0; i < 6; ++i) object(int32_t(0x80000000u + uint32_t(i)), kRoot, accessContainers[i], 3, kAdminSid, 0, {});
  for (size_t i = 4; i < specs.size(); ++i)
    object(int32_t(firstTdef + i), kTables, specs[i].name, 1, kAdminSid, 0, {});

  // Permissions, as Access 2000 grants them in the default workgroup.
  Table aces(*db, "MSysACEs", ReadTableDef(f, firstTdef + 1));
  auto ace = [&](int32_t id, const Bytes& sid, int32_t acm, bool inheritable) {
    aces.Insert({Value::Long(id), Bin(sid), Value::Long(acm), Value::Boolean(inheritable)});
  };
  for (int i = 0; i < 6; ++i) {
    int32_t id = int32_t(0x80000000u + uint32_t(i));
    ace(id, kUsersSid, 1048575, true);
    ace(id, kAdminsSid, 1048575, true);
    ace(id, kAdminSid, 1048575, true);
    ace(id, kCreatorSid, 1048575, true);
  }
  ace(kTables, kCreatorSid, 983294, true);
  ace(kTables, kUsersSid, 1048319, true);
  ace(kTables, kAdminsSid, 1048319, true);
  ace(kTables, kAdminSid, 1048319, true);
  ace(kDatabases, kAdminSid, 393216, false);
  ace(kRelationships, kCreatorSid, 983294, true);
  ace(kRelationships, kAdminSid, 393217, false);
  ace(kRelationships, kAdminsSid, 1048575, true);
  ace(kRelationships, kUsersSid, 1048575, true);
  ace(0x10000000, kUsersSid, 393230, false);
  ace(0x10000000, kAdminSid, 14, false);
  ace(0x10000000, kAdminsSid, 393230, false);
  ace(2, kAdminsSid, 393300, false);
  ace(2, kAdminSid, 393216, false);
  ace(2, kUsersSid, 20, false);
  ace(3, kAdminsSid, 393300, false);
  ace(3, kAdminSid, 393216, false);
  ace(4, kAdminsSid, 393236, false);
  ace(4, kAdminSid, 393216, false);
  ace(4, kUsersSid, 20, false);
  ace(5, kAdminsSid, 393236, false);
  ace(5, kAdminSid, 917504, false);
  ace(5, kUsersSid, 20, false);
  for (size_t i = 4; i < specs.size(); ++i) {
    ace(int32_t(firstTdef + i), kAdminSid, 1048319, false);
    ace(int32_t(firstTdef + i), kAdminsSid, 1048319, false);
    ace(int32_t(firstTdef + i), kUsersSid, 1048319, false);
  }
  db->LoadCatalog();
  return db;
}

}  // namespace bw::jet
