// Damaged files: a copy of the template with a few bytes changed is opened,
// read and written to as a database run would. The engine answers with a Jet
// error naming the file, never with a crash, another exception or a read
// outside a page. The cases are faults fuzzing once found in the engine.
#include <fstream>

#include "jet/data_page.h"
#include "mdbtools.h"
#include "pronto/db_access.h"

using namespace bw::jet;

namespace {

const std::string kConnect = std::string("; pwd=") + bw::kIRDatabasePassword;

/// Where the template keeps things, found through the engine's own readers.
struct Layout {
  size_t devicesOwnedMap = 0;   ///< file offset of the row of "Devices"' owned-pages map
  size_t catalogDataPage = 0;   ///< file offset of the first data page of MSysObjects
};

Layout Find(const std::string& file) {
  Layout at;
  auto db = Database::Open(file, false, true, kConnect);
  RowId map = db->GetTable("Devices").def().ownedPagesMap;
  const Bytes& page = db->file().Page(map.page);
  size_t start, length;
  SlotBounds(page, true, map.row, start, length);
  at.devicesOwnedMap = size_t(map.page) * 4096 + start;
  for (uint32_t p = 3; p < db->file().pageCount() && !at.catalogDataPage; ++p) {
    const Bytes& pg = db->file().Page(p);
    if (pg[0] == page_type::kData && PageOwner(pg) == 2) at.catalogDataPage = size_t(p) * 4096;
  }
  return at;
}

/// Sets bytes of the file at `offset` (XOR with `flip` when it is set).
void Poke(const std::string& file, size_t offset, const Bytes& bytes, bool flip = false) {
  std::fstream f(file, std::ios::in | std::ios::out | std::ios::binary);
  for (size_t i = 0; i < bytes.size(); ++i) {
    f.seekg(std::streamoff(offset + i));
    uint8_t b = uint8_t(f.get());
    f.seekp(std::streamoff(offset + i));
    f.put(char(flip ? b ^ bytes[i] : bytes[i]));
  }
}

/// Opens, reads every table and adds a device the way a run does; the error
/// that stopped it ("" when none did).
std::string RunOn(const std::string& file) try {
  return jettest::ErrorText([&] {
    auto db = Database::Open(file, true, false, kConnect);
    for (const auto& name : db->TableNames(true))
      for (auto rs = db->OpenRecordset(name); !rs->Eof(); rs->MoveNext()) rs->Field(rs->FieldNames()[0]);
    auto rs = db->OpenRecordset("Devices");
    rs->AddNew();
    rs->SetField("Model", Value::Text("X1"));
    rs->Update();
  });
} catch (const std::exception& e) {
  return std::string("not a Jet error: ") + e.what();
}

}  // namespace

TEST(DamagedFiles, EndInAJetErrorNamingTheFile) {
  const std::string corrupt = "3049 Cannot open database '%'.  It may not be a database that your application "
                              "recognizes, or the file may be corrupt.";
  const std::string unrecognized = "3343 Unrecognized database format '%'.";
  struct Case {
    const char* what;
    std::function<void(const std::string&, const Layout&)> damage;
    std::string error;
  };
  const Case cases[] = {
      {"intact", [](auto&, auto&) {}, ""},
      // The masked creation date's top byte: a date far past any int (once
      // converted to one regardless).
      {"creation date no date", [](auto& f, auto&) { Poke(f, 0x79, {0x07}, true); }, unrecognized},
      // A usage map whose window starts 4 pages before the last page number,
      // with a bit set on each side of the wrap (once a std::logic_error that
      // ended the program after the device's page was written).
      {"usage map window wraps",
       [](auto& f, auto& at) { Poke(f, at.devicesOwnedMap + 1, {0xFC, 0xFF, 0xFF, 0xFF, 0x11}); }, corrupt},
      // More rows than the page holds (once read 128 KB past the page).
      {"row count past the page", [](auto& f, auto& at) { Poke(f, at.catalogDataPage + 12, {0xFF, 0xFF}); },
       corrupt},
      // Row 1 starting before the end of the row table.
      {"row inside the row table", [](auto& f, auto& at) { Poke(f, at.catalogDataPage + 16, {0x10, 0x00}); },
       corrupt},
      // Row 1 starting after row 0: the two would overlap.
      {"rows overlap", [](auto& f, auto& at) { Poke(f, at.catalogDataPage + 16, {0xFF, 0x0F}); }, corrupt},
  };
  bw::test::TempDir dir;
  for (const auto& c : cases) {
    auto file = (dir.path() / "t.mdb").string();
    std::filesystem::remove(file);
    std::filesystem::copy_file(std::string(BW_BIN_DIR) + "/Empty_RCIR.mdb", file);
    c.damage(file, Find(file));
    std::string expected = c.error;
    if (size_t at = expected.find('%'); at != std::string::npos) expected.replace(at, 1, file);
    EXPECT_EQ(RunOn(file), expected) << c.what;
  }
}
