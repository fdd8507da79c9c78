// Writes the engine must refuse with a clear Jet error instead of damaging a
// file: Jet 3 files, tables whose indexes it cannot keep, read-only opens,
// and files another open holds exclusively (in this process or another).
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "jet/database.h"
#include "mdbtools.h"
#include "support_paths.h"
#include "runtime/run_time_error.h"
#include <functional>

using namespace bw::jet;

namespace {

std::string CopySample(const std::string& name, const std::string& dir) {
  auto to = jettest::TempDir(dir) / name;
  std::filesystem::copy_file(jettest::AccessSamples() + "/" + name, to);
  std::filesystem::permissions(to, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  return to.string();
}

int ErrorNumber(const std::function<void()>& f, std::string* text = nullptr) {
  try {
    f();
  } catch (const bw::RunTimeError& e) {
    if (text) *text = e.description();
    return e.number();
  }
  return 0;
}

}  // namespace

TEST(WriteRefusals, Jet3FileIsReadButNeverWritten) {
  auto file = CopySample("testV1997.mdb", "jet3");
  auto before = jettest::Shell("md5sum < " + jettest::Quote(file));
  {
    auto db = Database::Open(file, true, false);
    auto rs = db->OpenRecordset("Table3");
    std::string text;
    EXPECT_EQ(ErrorNumber([&] { rs->AddNew(); }, &text), 3027);
    EXPECT_NE(text.find("Jet 3"), std::string::npos) << text;
    auto rs1 = db->OpenRecordset("Table1");
    EXPECT_EQ(ErrorNumber([&] { rs1->Edit(); }), 3027);
    EXPECT_EQ(ErrorNumber([&] { rs1->Delete(); }), 3027);
  }
  EXPECT_EQ(jettest::Shell("md5sum < " + jettest::Quote(file)), before);
}

TEST(WriteRefusals, TableWithIndexesIsNotWrittenButOthersAre) {
  auto file = CopySample("indexTestV2000.mdb", "index");
  auto db = Database::Open(file, true, false);
  auto rs = db->OpenRecordset("Table1");
  std::string text;
  EXPECT_EQ(ErrorNumber([&] { rs->AddNew(); }, &text), 3027);
  EXPECT_NE(text.find("indexes"), std::string::npos) << text;
  EXPECT_EQ(ErrorNumber([&] { rs->Delete(); }), 3027);
  EXPECT_EQ(rs->RecordCount(), 4);
}

TEST(WriteRefusals, ExclusiveOpenLocksOutOtherOpensAndProcesses) {
  auto file = (jettest::TempDir("lock") / "l.mdb").string();
  Database::Create(file, {{"T", {{"A", ColumnType::kLong}}}})->Close();
  auto holder = Database::Open(file, true, false);
  std::string text;
  EXPECT_EQ(ErrorNumber([&] { Database::Open(file, false, true); }, &text), 3045);
  EXPECT_EQ(text, "Could not use '" + file + "'; file already in use.");
  pid_t child = fork();
  if (child == 0) _exit(ErrorNumber([&] { Database::Open(file, true, false); }) == 3045 ? 0 : 1);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "another process opened the locked file";
  holder->Close();
  // Shared opens share; an exclusive open then waits its turn.
  auto reader1 = Database::Open(file, false, true);
  auto reader2 = Database::Open(file, false, true);
  EXPECT_EQ(ErrorNumber([&] { Database::Open(file, true, false); }), 3045);
}

TEST(WriteRefusals, ReadOnlyOpenAndClosedObjects) {
  auto file = (jettest::TempDir("ro") / "r.mdb").string();
  Database::Create(file, {{"T", {{"A", ColumnType::kLong}, {"B", ColumnType::kText, 3}}}})->Close();
  auto db = Database::Open(file, false, true);
  auto rs = db->OpenRecordset("T");
  EXPECT_EQ(ErrorNumber([&] { rs->AddNew(); }), 3027);
  db->Close();
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
