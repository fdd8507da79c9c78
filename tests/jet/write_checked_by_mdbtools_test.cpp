// Files we write, checked by an independent reader: mdbtools must see a Jet 4
// file, our tables and column types, and exactly the rows we put in, after
// long memos, thousands of rows, rows that grow and rows that are deleted.
#include <gtest/gtest.h>

#include <algorithm>

#include "jet/database.h"
#include "jet/jet_errors.h"
#include "mdbtools.h"

using namespace bw::jet;

namespace {

std::vector<NewTable> SampleTables() {
  using T = ColumnType;
  return {{"Things",
           {{"Small", T::kInteger}, {"Big", T::kLong}, {"Name", T::kText, 50}, {"Notes", T::kMemo},
            {"Flag", T::kBoolean}, {"Ratio", T::kDouble}, {"Tiny", T::kByte}}}};
}

std::string Repeat(const std::string& s, size_t n) {
  std::string out;
  while (n--) out += s;
  return out;
}

void AddThing(Recordset& rs, int16_t small, int32_t big, const std::string& name, const std::string& notes) {
  rs.AddNew();
  rs.SetField("Small", Value::Integer(small));
  rs.SetField("Big", Value::Long(big));
  rs.SetField("Name", Value::Text(name));
  if (!notes.empty()) rs.SetField("Notes", Value::Memo(notes));
  rs.SetField("Flag", Value::Boolean(small % 2 == 0));
  rs.SetField("Ratio", Value::Double(small / 4.0));
  rs.SetField("Tiny", Value::Byte(uint8_t(small & 0xFF)));
  rs.Update();
}

/// The line mdb-export prints for such a row, written out from the values.
std::string ExpectedLine(int16_t small, int32_t big, const std::string& name, const std::string& notes) {
  char ratio[32];
  std::snprintf(ratio, sizeof ratio, "%g", small / 4.0);
  return std::to_string(small) + "," + std::to_string(big) + "," + jettest::EscapeText(name) + "," +
         (notes.empty() ? "" : jettest::EscapeText(notes)) + "," + (small % 2 == 0 ? "1" : "0") + "," + ratio + "," +
         std::to_string(small & 0xFF);
}

std::vector<std::string> Sorted(std::vector<std::string> v) {
  std::sort(v.begin(), v.end());
  return v;
}

}  // namespace

TEST(WriteCheckedByMdbTools, NewDatabaseIsJet4WithOurTablesAndTypes) {
  ASSERT_TRUE(jettest::HaveMdbTools());
  auto file = (jettest::TempDir("types") / "t.mdb").string();
  Database::Create(file, SampleTables())->Close();
  EXPECT_EQ(jettest::Shell("mdb-ver " + jettest::Quote(file)), "JET4\n");
  auto tables = jettest::SplitLines(jettest::Shell("mdb-tables -S -1 " + jettest::Quote(file)));
  EXPECT_EQ(tables, (std::vector<std::string>{"MSysObjects", "MSysACEs", "MSysQueries", "MSysRelationships",
                                              "Things"}));
  std::string schema = jettest::Shell("mdb-schema -T Things " + jettest::Quote(file) + " 2>/dev/null");
  for (const char* expected : {"[Small]\t\t\tInteger", "[Big]\t\t\tLong Integer", "[Name]\t\t\tText (50)",
                               "[Notes]\t\t\tMemo/Hyperlink (255)", "[Flag]\t\t\tBoolean", "[Ratio]\t\t\tDouble",
                               "[Tiny]\t\t\tByte"})
    EXPECT_NE(schema.find(expected), std::string::npos) << expected << " in\n" << schema;
  // The catalog holds the containers Jet and Access keep.
  auto catalog = jettest::Shell("mdb-export " + jettest::Quote(file) + " MSysObjects");
  for (const char* name : {"\"Tables\",3", "\"Databases\",3", "\"Relationships\",3", "\"MSysDb\",2", "\"Forms\",3",
                           "\"Things\",1"})
    EXPECT_NE(catalog.find(name), std::string::npos) << name;
}

TEST(WriteCheckedByMdbTools, MemosInlineOnOneLvalPageAndChainedAcrossPages) {
  ASSERT_TRUE(jettest::HaveMdbTools());
  auto file = (jettest::TempDir("memo") / "m.mdb").string();
  // 40 characters stay in the row; 900 go to a shared LVAL page; 6000
  // characters outside Latin-1 (UCS-2, 12000 bytes) need a chain of three pages.
  const std::string inlineMemo = Repeat("abcd", 10);
  const std::string pageMemo = Repeat("0000 006D 0022 0002 ", 45);
  const std::string chainMemo = Repeat("\xD0\x9C\xD0\xB8\xD1\x80", 2000);  // "Мир" x 2000
  const std::string quoted = "say \"hi\"\ttab";
  {
    auto db = Database::Create(file, SampleTables());
    auto rs = db->OpenRecordset("Things");
    AddThing(*rs, 1, 100000, "inline", inlineMemo);
    AddThing(*rs, 2, -5, "page", pageMemo);
    AddThing(*rs, 3, 2147483647, "chain", chainMemo);
    AddThing(*rs, -32768, 0, quoted, "");
    rs->Close();
  }
  std::vector<std::string> expected = {ExpectedLine(1, 100000, "inline", inlineMemo),
                                       ExpectedLine(2, -5, "page", pageMemo),
                                       ExpectedLine(3, 2147483647, "chain", chainMemo),
                                       ExpectedLine(-32768, 0, quoted, "")};
  EXPECT_EQ(jettest::MdbExport(file, "Things"), expected);
  auto db = Database::Open(file, false, true);
  EXPECT_EQ(jettest::OurExport(*db, "Things"), expected);
  auto rs = db->OpenRecordset("Things");
  rs->MoveLast();
  EXPECT_TRUE(rs->Field("Notes").IsNull());
}

TEST(WriteCheckedByMdbTools, ThousandsOfRowsGrowthAndDeletesAcrossManyPages) {
  ASSERT_TRUE(jettest::HaveMdbTools());
  auto file = (jettest::TempDir("many") / "many.mdb").string();
  // Rows of about 130 bytes (text outside Latin-1 is not compressed): 20000
  // of them fill over 600 pages, more than an inline page map can describe,
  // so both the table's and the file's maps must turn indirect.
  const int kRows = 20000;
  const std::string wide = Repeat("\xCE\xB1", 40);  // Greek alpha x 40 = 80 bytes UCS-2
  std::vector<std::string> expected;
  {
    auto db = Database::Create(file, SampleTables());
    auto rs = db->OpenRecordset("Things");
    for (int i = 0; i < kRows; ++i) {
      std::string notes = Repeat(wide, 9);  // 360 characters, stored outside the row
      AddThing(*rs, int16_t(i), i * 1000, wide + std::to_string(i), i % 97 == 0 ? notes : "");
    }
    rs->Close();
    // Grow a row on a full page so it must move, shrink another, delete a few.
    rs = db->OpenRecordset("Things");
    rs->MoveFirst();
    rs->Edit();
    rs->SetField("Name", Value::Text(Repeat("\xCE\xB2", 50)));
    rs->SetField("Notes", Value::Memo(Repeat("grown ", 8)));
    rs->Update();
    for (int i = 0; i < 10; ++i) rs->MoveNext();  // row 10
    rs->Delete();
    rs->MoveNext();  // row 11
    rs->Edit();
    rs->SetField("Name", Value::Text("x"));
    rs->Update();
    rs->MoveLast();
    rs->Delete();
    EXPECT_EQ(rs->RecordCount(), kRows - 2);
    rs->Close();
  }
  for (int i = 0; i < kRows; ++i) {
    if (i == 10 || i == kRows - 1) continue;
    std::string name = i == 0 ? Repeat("\xCE\xB2", 50) : i == 11 ? "x" : wide + std::to_string(i);
    std::string notes = i == 0 ? Repeat("grown ", 8) : i % 97 == 0 ? Repeat(wide, 9) : "";
    expected.push_back(ExpectedLine(int16_t(i), i * 1000, name, notes));
  }
  auto theirs = jettest::MdbExport(file, "Things");
  EXPECT_EQ(theirs.size(), expected.size());
  EXPECT_EQ(Sorted(theirs), Sorted(expected));
  auto db = Database::Open(file, false, true);
  // Our table order keeps the grown row first, where its pointer is.
  EXPECT_EQ(jettest::OurExport(*db, "Things"), expected);
  EXPECT_EQ(db->GetTable("Things").def().rowCount, uint32_t(kRows - 2));
  EXPECT_GT(db->file().pageCount(), 600u);
}

TEST(WriteCheckedByMdbTools, PasswordOfTheTemplateIsNeededToOpen) {
  auto file = (jettest::TempDir("pwd") / "p.mdb").string();
  Database::Create(file, SampleTables(), "3f8c1d7e05b62")->Close();
  for (const char* connect : {"", "; pwd=3F8C1D7E05B62", "; pwd=3f8c1d7e05b6"}) {
    try {
      Database::Open(file, true, false, connect);
      ADD_FAILURE() << "opened with '" << connect << "'";
    } catch (const bw::RunTimeError& e) {
      EXPECT_EQ(e.number(), 3031);
      EXPECT_EQ(e.description(), "Not a valid password.");
    }
  }
  auto db = Database::Open(file, true, false, "; pwd=3f8c1d7e05b62");
  EXPECT_EQ(db->TableNames(), std::vector<std::string>{"Things"});
}
