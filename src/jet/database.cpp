#include "jet/database.h"

#include "jet/data_page.h"
#include "jet/jet_errors.h"
#include "jet/usage_map.h"

namespace bw::jet {
namespace {

// The catalog's table definition is always on page 2.
constexpr uint32_t kCatalogPage = 2;
// The database's free-page map is row 0 of page 1.
constexpr RowId kFreePageMap{1, 0};
constexpr int16_t kTypeLocalTable = 1;

/// The value of "pwd=" in a DAO connect string (keys are not case-sensitive).
std::string PasswordFromConnect(const std::string& connect) {
  size_t i = 0;
  while (i <= connect.size()) {
    size_t end = connect.find(';', i);
    if (end == std::string::npos) end = connect.size();
    std::string part = connect.substr(i, end - i);
    size_t eq = part.find('=');
    if (eq != std::string::npos) {
      std::string key = part.substr(0, eq);
      size_t a = key.find_first_not_of(' ');
      size_t b = key.find_last_not_of(' ');
      key = a == std::string::npos ? "" : UpperName(key.substr(a, b - a + 1));
      if (key == "PWD") return part.substr(eq + 1);
    }
    i = end + 1;
  }
  return "";
}

}  // namespace

std::unique_ptr<Database> Database::Open(const std::string& path, bool exclusive, bool readOnly,
                                         const std::string& connect) {
  std::unique_ptr<Database> db(new Database());
  db->file_ = PageFile::Open(path, exclusive, readOnly);
  if (!db->file_->PasswordMatches(PasswordFromConnect(connect))) ThrowNotValidPassword();
  db->LoadCatalog();
  return db;
}

Database::~Database() {
  try {
    Close();
  } catch (...) {
  }
}

void Database::Close() {
  tables_.clear();
  if (file_) file_->Close();
  file_.reset();
}

PageFile& Database::file() {
  if (!file_) ThrowObjectInvalid();
  return *file_;
}

uint32_t Database::AllocatePage(const Bytes& page) {
  PageFile& f = file();
  uint32_t n = f.AppendPage(page);
  UsageMap(f, kFreePageMap, true).Set(n, false, nullptr);
  return n;
}

void Database::FreePage(uint32_t page) { UsageMap(file(), kFreePageMap, true).Set(page, true, nullptr); }

void Database::LoadCatalog() {
  catalog_.clear();
  PageFile& f = file();
  TableDef def = ReadTableDef(f, kCatalogPage);
  auto catalogTable = std::make_unique<Table>(*this, "MSysObjects", def);
  Table& t = *catalogTable;
  int cId = t.ColumnIndex("Id"), cParent = t.ColumnIndex("ParentId"), cName = t.ColumnIndex("Name"),
      cType = t.ColumnIndex("Type"), cFlags = t.ColumnIndex("Flags");
  if (cId < 0 || cName < 0 || cType < 0) ThrowCorrupt(f.path());
  for (RowId id : t.RowIds()) {
    const auto& row = t.ReadRow(id);
    CatalogEntry e;
    e.id = int32_t(row[size_t(cId)].integer);
    e.parentId = cParent >= 0 ? int32_t(row[size_t(cParent)].integer) : 0;
    e.name = row[size_t(cName)].text;
    e.type = int16_t(row[size_t(cType)].integer);
    e.flags = cFlags >= 0 ? int32_t(row[size_t(cFlags)].integer) : 0;
    catalog_.push_back(e);
  }
  tables_[kCatalogPage] = std::move(catalogTable);
  catalogLoaded_ = true;
}

const std::vector<CatalogEntry>& Database::Catalog() {
  if (!catalogLoaded_) LoadCatalog();
  return catalog_;
}

std::vector<std::string> Database::TableNames(bool includeSystem) {
  std::vector<std::string> names;
  for (const auto& e : Catalog())
    if (e.type == kTypeLocalTable && (includeSystem || !e.IsSystem())) names.push_back(e.name);
  return names;
}

Table& Database::GetTable(const std::string& tableName) {
  PageFile& f = file();
  std::string want = UpperName(tableName);
  for (const auto& e : Catalog()) {
    if (e.type != kTypeLocalTable || UpperName(e.name) != want) continue;
    uint32_t page = uint32_t(e.id) & 0x00FFFFFF;
    auto it = tables_.find(page);
    if (it == tables_.end())
      it = tables_.emplace(page, std::make_unique<Table>(*this, e.name, ReadTableDef(f, page))).first;
    return *it->second;
  }
  ThrowTableNotFound(tableName);
}

std::unique_ptr<Recordset> Database::OpenRecordset(const std::string& tableName) {
  return std::make_unique<Recordset>(GetTable(tableName));
}

}  // namespace bw::jet
