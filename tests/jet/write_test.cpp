// Files we write, checked by mdbtools: a Jet 4 file with our tables and types,
// exactly the rows we put in, and after writes stopped at any page or a killed
// writer, every row whose Update returned and no half-written row.
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <thread>

#include "jet/page_file.h"
#include "mdbtools.h"

using namespace bw::jet;
using jettest::MdbExport;

namespace {

std::vector<NewTable> Things() {
  using T = ColumnType;
  return {{"Things", {{"Small", T::kInteger}, {"Big", T::kLong}, {"Name", T::kText, 50}, {"Notes", T::kMemo},
                      {"Flag", T::kBoolean}, {"Ratio", T::kDouble}, {"Tiny", T::kByte}}}};
}

std::string Repeat(const std::string& s, size_t n) { return n ? s + Repeat(s, n - 1) : ""; }

const std::string kAlpha40 = Repeat("\xCE\xB1", 40);  // text outside Latin-1 is stored uncompressed
using Row = std::vector<Value>;

Row Make(int16_t small, int32_t big, const std::string& name, const std::string& notes) {
  return {Value::Integer(small), Value::Long(big), Value::Text(name), notes.empty() ? Value() : Value::Memo(notes),
          Value::Boolean(small % 2 == 0), Value::Double(small / 4.0), Value::Byte(uint8_t(small & 0xFF))};
}

/// Row i of a long run: about 130 bytes, every third with a memo outside the row.
Row Nth(int i) {
  return Make(int16_t(i), i * 1000, kAlpha40 + std::to_string(i), i % 3 ? "" : Repeat(kAlpha40, 1 + i % 9));
}

void Add(Recordset& rs, const Row& row) {
  rs.AddNew();
  auto names = rs.FieldNames();
  for (size_t c = 0; c < row.size(); ++c)
    if (!row[c].IsNull()) rs.SetField(names[c], row[c]);
  rs.Update();
}

/// Checks mdbtools and we read rows 0..n-1 of the long run, complete, and returns n.
int CheckRun(const std::string& file) {
  auto theirs = MdbExport(file, "Things");
  std::vector<std::string> expected;
  for (int i = 0; i < int(theirs.size()); ++i) expected.push_back(jettest::ExportLine(Nth(i)));
  EXPECT_EQ(theirs, expected) << file;
  auto db = Database::Open(file, false, true);
  EXPECT_EQ(jettest::OurExport(*db, "Things"), expected) << file;
  return int(expected.size());
}

struct Write : ::testing::Test {
  bw::test::TempDir dir;
  std::string file = (dir.path() / "t.mdb").string();
  void SetUp() override { ASSERT_TRUE(jettest::HaveMdbTools()) << "mdbtools is a required test dependency"; }
};

}  // namespace

TEST_F(Write, NewDatabaseIsJet4WithOurTablesTypesAndCatalog) {
  Database::Create(file, Things())->Close();
  EXPECT_EQ(jettest::Shell("mdb-ver " + jettest::Quote(file)), "JET4\n");
  EXPECT_EQ(jettest::SplitLines(jettest::Shell("mdb-tables -S -1 " + jettest::Quote(file))),
            (std::vector<std::string>{"MSysObjects", "MSysACEs", "MSysQueries", "MSysRelationships", "Things"}));
  std::string schema = jettest::Shell("mdb-schema -T Things " + jettest::Quote(file) + " 2>/dev/null");
  for (const char* expected : {"[Small]\t\t\tInteger", "[Big]\t\t\tLong Integer", "[Name]\t\t\tText (50)",
                               "[Notes]\t\t\tMemo/Hyperlink (255)", "[Flag]\t\t\tBoolean", "[Ratio]\t\t\tDouble",
                               "[Tiny]\t\t\tByte"})
    EXPECT_NE(schema.find(expected), std::string::npos) << expected << " in\n" << schema;
  auto catalog = jettest::Shell("mdb-export " + jettest::Quote(file) + " MSysObjects");
  for (const char* name : {"\"Tables\",3", "\"Databases\",3", "\"Relationships\",3", "\"MSysDb\",2", "\"Forms\",3",
                           "\"Things\",1"})
    EXPECT_NE(catalog.find(name), std::string::npos) << name;
}

TEST_F(Write, PageZeroIsTheOneAccess2000WritesIntoANewFile) {
  auto firstPage = [](const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::string page(4096, '\0');
    in.read(page.data(), 4096);
    return page;
  };
  // Without a password ours is an empty Access 2000 file's page 0 byte for byte
  // (the same creation date); the password of the template changes only its bytes.
  Database::Create(file, Things())->Close();
  const std::string access = firstPage(jettest::AccessSamples() + "/empty.mdb");
  EXPECT_EQ(firstPage(file), access);
  std::string templ = firstPage(std::string(BW_BIN_DIR) + "/Empty_RCIR.mdb");
  EXPECT_NE(templ, access);
  templ.replace(0x42, 40, access, 0x42, 40);  // the 40 bytes of the masked password
  EXPECT_EQ(templ, access);
}

TEST_F(Write, EdgeValuesMemosThousandsOfRowsGrowthAndDeletes) {
  // Memos of 40 characters stay in the row, 900 go to a shared LVAL page, 6000
  // outside Latin-1 (12000 bytes) take a chain of three pages. Over 600 pages
  // is more than an inline page map describes: the maps must turn indirect.
  const int kRows = 20000;
  std::vector<Row> rows = {Make(1, 100000, "inline", Repeat("abcd", 10)),
                           Make(2, -5, "page", Repeat("0000 006D 0022 0002 ", 45)),
                           Make(3, 2147483647, "chain", Repeat("\xD0\x9C\xD0\xB8\xD1\x80", 2000)),
                           Make(-32768, 0, "say \"hi\"\ttab", "")};
  for (int i = 4; i < kRows; ++i) rows.push_back(Nth(i));
  {
    auto db = Database::Create(file, Things());
    auto rs = db->OpenRecordset("Things");
    for (const auto& row : rows) Add(*rs, row);
    rs->MoveFirst();  // grow the first row on a full page so it must move
    rs->Edit();
    rs->SetField("Name", rows[0][2] = Value::Text(Repeat("\xCE\xB2", 50)));
    rs->SetField("Notes", rows[0][3] = Value::Memo(Repeat("grown ", 8)));
    rs->Update();
    for (int i = 0; i < 10; ++i) rs->MoveNext();
    rs->Delete();  // row 10
    rs->MoveNext();
    rs->Edit();  // row 11 shrinks
    rs->SetField("Name", rows[11][2] = Value::Text("x"));
    rs->Update();
    rs->MoveLast();
    rs->Delete();
    EXPECT_EQ(rs->RecordCount(), kRows - 2);
  }
  rows.pop_back();
  rows.erase(rows.begin() + 10);
  std::vector<std::string> expected;
  for (const auto& row : rows) expected.push_back(jettest::ExportLine(row));
  auto db = Database::Open(file, false, true);
  EXPECT_EQ(jettest::OurExport(*db, "Things"), expected);  // the grown row stays first, where its pointer is
  EXPECT_EQ(db->GetTable("Things").def().rowCount, uint32_t(kRows - 2));
  EXPECT_GT(db->file().pageCount(), 600u);
  auto theirs = MdbExport(file, "Things");
  std::sort(theirs.begin(), theirs.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(theirs, expected);
}

TEST_F(Write, WritesStoppedAfterAnyPageWriteLeaveEveryReturnedUpdate) {
  auto pristine = (dir.path() / "pristine.mdb").string();
  Database::Create(pristine, Things())->Close();
  for (int stopAfter = 0; stopAfter < 120; ++stopAfter) {
    std::filesystem::copy_file(pristine, file, std::filesystem::copy_options::overwrite_existing);
    int completed = 0;
    {
      auto db = Database::Open(file, true, false);
      auto rs = db->OpenRecordset("Things");
      PageFile::StopWritesAfter(stopAfter);
      try {
        for (;; ++completed) Add(*rs, Nth(completed));
      } catch (const WriteStopped&) {
      }
      PageFile::StopWritesAfter(-1);
    }
    int found = CheckRun(file);  // the interrupted Update may be there too
    EXPECT_TRUE(found == completed || found == completed + 1) << found << " rows, " << stopAfter << " writes";
  }
}

TEST_F(Write, ChildKilledInTheMiddleOfInsertsLeavesEveryReturnedUpdate) {
  Database::Create(file, Things())->Close();
  // Updates that returned, counted where the parent can read them after the kill.
  auto* done = static_cast<std::atomic<int32_t>*>(
      mmap(nullptr, sizeof(std::atomic<int32_t>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  ASSERT_NE(done, MAP_FAILED);
  pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    try {
      auto db = Database::Open(file, true, false);
      auto rs = db->OpenRecordset("Things");
      for (; *done < 1000000; ++*done) Add(*rs, Nth(*done));
    } catch (...) {
    }
    _exit(2);
  }
  // Let it get well into the run (several hundred pages), then kill it.
  int status = 0;
  while (*done < 3000 && waitpid(child, &status, WNOHANG) == 0)
    std::this_thread::sleep_for(std::chrono::microseconds(100));
  std::this_thread::sleep_for(std::chrono::milliseconds(3));
  kill(child, SIGKILL);
  waitpid(child, &status, 0);
  ASSERT_TRUE(WIFSIGNALED(status)) << "child ended on its own: " << status;
  int reported = *done, found = CheckRun(file);
  EXPECT_TRUE(found == reported || found == reported + 1) << found << " rows, " << reported << " reported";
  {  // the lock died with the child: the file opens for writing again
    auto db = Database::Open(file, true, false);
    Add(*db->OpenRecordset("Things"), Nth(found));
  }
  EXPECT_EQ(CheckRun(file), found + 1);
}
