// Reading files Access itself wrote: every table of every sample file must
// give exactly the rows mdb-export prints, in Jet 3 and Jet 4, with deleted
// rows, moved (overflow) rows, compressed text and long values.
#include <gtest/gtest.h>

#include <algorithm>

#include "jet/database.h"
#include "jet/jet_errors.h"
#include "mdbtools.h"
#include "support_paths.h"

using namespace bw::jet;

namespace {

std::vector<std::string> SampleFiles() {
  std::vector<std::string> files;
  for (const auto& e : std::filesystem::directory_iterator(jettest::AccessSamples()))
    if (e.path().extension() == ".mdb") files.push_back(e.path().string());
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

TEST(ReadAccessFiles, EveryTableOfEverySampleMatchesMdbExport) {
  ASSERT_TRUE(jettest::HaveMdbTools());
  auto files = SampleFiles();
  ASSERT_GE(files.size(), 10u);
  int tablesCompared = 0;
  for (const auto& file : files) {
    auto db = Database::Open(file, false, true);
    for (const auto& table : db->TableNames(true)) {
      if (table == "MSysAccessObjects") continue;  // a column type mdbtools cannot print
      auto theirs = jettest::MdbExport(file, table);
      auto ours = jettest::OurExport(*db, table);
      // A moved row is printed where its pointer is by us (table order) but
      // where its bytes are by mdbtools; the rows themselves must be equal.
      std::sort(theirs.begin(), theirs.end());
      std::sort(ours.begin(), ours.end());
      EXPECT_EQ(ours, theirs) << file << " table " << table;
      ++tablesCompared;
    }
  }
  EXPECT_GE(tablesCompared, 50);
}

TEST(ReadAccessFiles, TableOrderFollowsPagesThenRows) {
  // testV2000's Table1 has its "abcdefg" row first, testV1997's has it second:
  // table order is storage order, not key order.
  auto db4 = Database::Open(jettest::AccessSamples() + "/testV2000.mdb", false, true);
  auto rs = db4->OpenRecordset("Table1");
  EXPECT_EQ(rs->RecordCount(), 2);
  EXPECT_EQ(rs->Field("A").text, "abcdefg");
  rs->MoveLast();
  EXPECT_EQ(rs->Field("a").text, "a");  // field names are not case-sensitive
  auto db3 = Database::Open(jettest::AccessSamples() + "/testV1997.mdb", false, true);
  auto rs3 = db3->OpenRecordset("Table1");
  EXPECT_EQ(rs3->Field("A").text, "a");
  EXPECT_EQ(rs3->Field("D").kind, Value::Kind::kInteger);
  rs3->MoveNext();
  EXPECT_EQ(rs3->Field("E").integer, 333333333);
  EXPECT_EQ(rs3->Field("I").integer != 0, true);
}

TEST(ReadAccessFiles, DeletedAndMovedRowsAreSkippedOrFollowed) {
  auto db = Database::Open(jettest::AccessSamples() + "/overflowTestV2000.mdb", false, true);
  auto rs = db->OpenRecordset("Table1");
  // 7 live rows; two of them sit on other pages behind overflow pointers and
  // appear in table order at the pointer: row3 comes third.
  EXPECT_EQ(rs->RecordCount(), 7);
  rs->MoveNext();
  rs->MoveNext();
  EXPECT_EQ(rs->Field("data3").text, "row3col3");
  EXPECT_EQ(rs->Field("data9").text, "row3col9");
  EXPECT_TRUE(rs->Field("data1").IsNull());
}

TEST(ReadAccessFiles, ErrorsUseJetNumbersAndTexts) {
  auto expectError = [](auto&& f, int number, const std::string& text) {
    try {
      f();
      ADD_FAILURE() << "no error, expected " << number;
    } catch (const bw::RunTimeError& e) {
      EXPECT_EQ(e.number(), number);
      EXPECT_EQ(e.description(), text);
    }
  };
  std::string missing = "/nonexistent/folder/none.mdb";
  expectError([&] { Database::Open(missing, true, false); }, 3024, "Could not find file '" + missing + "'.");
  std::string notAccess = jettest::AccessSamples() + "/README.md";
  expectError([&] { Database::Open(notAccess, false, true); }, 3343,
              "Unrecognized database format '" + notAccess + "'.");
  auto db = Database::Open(jettest::AccessSamples() + "/testV2000.mdb", false, true);
  expectError([&] { db->OpenRecordset("NoSuchTable"); }, 3078,
              "The Microsoft Jet database engine cannot find the input table or query 'NoSuchTable'.  Make sure "
              "it exists and that its name is spelled correctly.");
  auto rs = db->OpenRecordset("Table3");  // empty table
  EXPECT_TRUE(rs->Eof());
  EXPECT_EQ(rs->RecordCount(), 0);
  expectError([&] { rs->Field("a"); }, 3021, "No current record.");
  expectError([&] { rs->MoveFirst(); }, 3021, "No current record.");
  auto rs1 = db->OpenRecordset("Table1");
  expectError([&] { rs1->Field("nope"); }, 3265, "Item not found in this collection.");
  // Read-only open: no writes.
  expectError([&] { rs1->AddNew(); }, 3027, "Cannot update.  Database or object is read-only.");
}
