// Files Access wrote read as mdb-export prints them (Jet 3 and 4, deleted and
// moved rows, compressed text, long values); errors carry Jet's numbers and
// texts; writes that could damage a file are refused.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

#include "mdbtools.h"

using namespace bw::jet;
using jettest::AccessSamples;
using jettest::ErrorText;
using jettest::ErrorNumber;

TEST(ReadAccessFiles, EveryTableOfEverySampleMatchesMdbExport) {
  ASSERT_TRUE(jettest::HaveMdbTools()) << "mdbtools is a required test dependency";
  std::vector<std::string> files;
  for (const auto& e : std::filesystem::directory_iterator(AccessSamples()))
    if (e.path().extension() == ".mdb") files.push_back(e.path().string());
  ASSERT_GE(files.size(), 10u);
  int tablesCompared = 0;
  for (const auto& file : files) {
    auto db = Database::Open(file, false, true);
    for (const auto& table : db->TableNames(true)) {
      if (table == "MSysAccessObjects") continue;  // a column type mdbtools cannot print
      auto theirs = jettest::MdbExport(file, table), ours = jettest::OurExport(*db, table);
      // mdbtools prints a moved row where its bytes are, we where its pointer is.
      std::sort(theirs.begin(), theirs.end());
      std::sort(ours.begin(), ours.end());
      EXPECT_EQ(ours, theirs) << file << " table " << table;
      ++tablesCompared;
    }
  }
  EXPECT_GE(tablesCompared, 50);
}

TEST(ReadAccessFiles, TableOrderIsStorageOrderMovedRowsAtTheirPointer) {
  for (auto [sample, first] : {std::pair{"/testV2000.mdb", "abcdefg"}, {"/testV1997.mdb", "a"}}) {
    auto db = Database::Open(AccessSamples() + sample, false, true);
    EXPECT_EQ(db->OpenRecordset("Table1")->Field("a").text, first) << sample;  // field names ignore case
  }
  // 7 live rows, two behind overflow pointers on other pages: row3 comes third.
  auto db = Database::Open(AccessSamples() + "/overflowTestV2000.mdb", false, true);
  auto rs = db->OpenRecordset("Table1");
  rs->MoveNext();
  rs->MoveNext();
  EXPECT_EQ(rs->Field("DATA3").text + rs->Field("data9").text, "row3col3row3col9");
}

TEST(ReadAccessFiles, ErrorsUseJetNumbersAndTexts) {
  std::string missing = "/nonexistent/folder/none.mdb", notAccess = AccessSamples() + "/README.md";
  EXPECT_EQ(ErrorText([&] { Database::Open(missing, true, false); }), "3024 Could not find file '" + missing + "'.");
  EXPECT_EQ(ErrorText([&] { Database::Open(notAccess, false, true); }),
            "3343 Unrecognized database format '" + notAccess + "'.");
  auto db = Database::Open(AccessSamples() + "/testV2000.mdb", false, true);
  EXPECT_EQ(ErrorText([&] { db->OpenRecordset("NoSuchTable"); }),
            "3078 The Microsoft Jet database engine cannot find the input table or query 'NoSuchTable'.  Make sure "
            "it exists and that its name is spelled correctly.");
  auto rs = db->OpenRecordset("Table3");  // empty table
  EXPECT_EQ(rs->RecordCount(), 0);
  EXPECT_EQ(ErrorText([&] { rs->Field("a"); }), "3021 No current record.");
  EXPECT_EQ(ErrorText([&] { rs->MoveFirst(); }), "3021 No current record.");
  auto rs1 = db->OpenRecordset("Table1");
  EXPECT_EQ(ErrorText([&] { rs1->Field("nope"); }), "3265 Item not found in this collection.");
  EXPECT_EQ(ErrorText([&] { rs1->AddNew(); }), "3027 Cannot update.  Database or object is read-only.");
}

struct WriteRefusals : ::testing::Test {
  bw::test::TempDir dir;
  std::string Make(const std::vector<NewTable>& tables, const std::string& password = "") {
    auto file = (dir.path() / "t.mdb").string();
    Database::Create(file, tables, password)->Close();
    return file;
  }
};

TEST_F(WriteRefusals, Jet3FilesAreReadButNeverWritten) {
  for (auto [sample, why] : {std::pair{"testV1997.mdb", "Jet 3"}}) {
    auto file = (dir.path() / sample).string(), md5 = "md5sum < " + jettest::Quote(file);
    std::filesystem::copy_file(AccessSamples() + "/" + sample, file);
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    auto before = jettest::Shell(md5);
    {
      auto db = Database::Open(file, true, false);
      auto rs = db->OpenRecordset("Table1");
      auto text = ErrorText([&] { rs->AddNew(); });
      EXPECT_EQ(text.rfind("3027 ", 0), 0u) << text;
      EXPECT_NE(text.find(why), std::string::npos) << text;
      EXPECT_EQ(ErrorNumber([&] { rs->Edit(); }), 3027) << sample;
      EXPECT_EQ(ErrorNumber([&] { rs->Delete(); }), 3027) << sample;
    }
    EXPECT_EQ(jettest::Shell(md5), before) << sample;
  }
}

TEST_F(WriteRefusals, ExclusiveOpenLocksOutOtherOpensAndProcesses) {
  auto file = Make({{"T", {{"A", ColumnType::kLong}}}});
  auto holder = Database::Open(file, true, false);
  EXPECT_EQ(ErrorText([&] { Database::Open(file, false, true); }),
            "3045 Could not use '" + file + "'; file already in use.");
  pid_t child = fork();
  if (child == 0) _exit(ErrorNumber([&] { Database::Open(file, true, false); }) == 3045 ? 0 : 1);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "another process opened the locked file";
  holder->Close();
  // Shared opens share; an exclusive open then waits its turn.
  auto reader1 = Database::Open(file, false, true), reader2 = Database::Open(file, false, true);
  EXPECT_EQ(ErrorNumber([&] { Database::Open(file, true, false); }), 3045);
}

TEST_F(WriteRefusals, BadValuesCancelledUpdatesAndClosedObjects) {
  auto file = Make({{"T", {{"A", ColumnType::kLong}, {"B", ColumnType::kText, 3}}}});
  auto w = Database::Open(file, true, false);
  auto rw = w->OpenRecordset("t");  // table names are not case-sensitive
  rw->AddNew();
  EXPECT_EQ(ErrorNumber([&] { rw->SetField("B", Value::Text("four")); rw->Update(); }), 3163);
  rw->CancelUpdate();
  EXPECT_EQ(ErrorNumber([&] { rw->Update(); }), 3020);
  rw->AddNew();
  EXPECT_EQ(ErrorNumber([&] { rw->SetField("A", Value::Text("12x")); }), 3421);
  rw->SetField("A", Value::Text("12"));
  rw->Update();
  EXPECT_TRUE(rw->Eof());  // the new row does not become current
  rw->MoveFirst();
  EXPECT_EQ(rw->Field("A").integer, 12);
  rw->Close();
  EXPECT_EQ(ErrorNumber([&] { rw->MoveFirst(); }), 3420);
}

TEST_F(WriteRefusals, PasswordMustMatchExactly) {
  auto file = Make({{"Things", {{"A", ColumnType::kLong}}}}, "3f8c1d7e05b62");
  for (const char* connect : {"", "; pwd=3F8C1D7E05B62", "; pwd=3f8c1d7e05b6"})
    EXPECT_EQ(ErrorText([&] { Database::Open(file, true, false, connect); }), "3031 Not a valid password.") << connect;
  auto db = Database::Open(file, true, false, "; pwd=3f8c1d7e05b62");
  EXPECT_EQ(db->TableNames(), std::vector<std::string>{"Things"});
}
