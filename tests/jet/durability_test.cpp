// A kill at any moment leaves a file that opens and reads, holding every row
// whose Update returned and no half-written row: checked with writes stopped
// by the test hook after each possible number of page writes, and with a
// child process killed in the middle of a long run of inserts.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "jet/database.h"
#include "jet/page_file.h"
#include "mdbtools.h"

using namespace bw::jet;

namespace {

std::vector<NewTable> LogTable() {
  return {{"Log", {{"Seq", ColumnType::kLong}, {"Triple", ColumnType::kLong}, {"Text", ColumnType::kText, 100},
                   {"Body", ColumnType::kMemo}}}};
}

std::string BodyFor(int seq) { return std::string(size_t(80 + seq % 300), char('a' + seq % 26)); }

void AppendEntry(Recordset& rs, int seq) {
  rs.AddNew();
  rs.SetField("Seq", Value::Long(seq));
  rs.SetField("Triple", Value::Long(seq * 3));
  rs.SetField("Text", Value::Text("entry " + std::to_string(seq)));
  rs.SetField("Body", Value::Memo(BodyFor(seq)));
  rs.Update();
}

/// Checks the file holds entries 0..n-1 in order, each complete, and returns n.
int CheckEntries(const std::string& file) {
  auto db = Database::Open(file, false, true);
  auto rs = db->OpenRecordset("Log");
  int n = 0;
  while (!rs->Eof()) {
    EXPECT_EQ(rs->Field("Seq").integer, n);
    EXPECT_EQ(rs->Field("Triple").integer, 3 * n);
    EXPECT_EQ(rs->Field("Text").text, "entry " + std::to_string(n));
    EXPECT_EQ(rs->Field("Body").text, BodyFor(n));
    rs->MoveNext();
    ++n;
  }
  // mdbtools reads the same rows.
  auto theirs = jettest::MdbExport(file, "Log");
  EXPECT_EQ(int(theirs.size()), n) << file;
  if (!theirs.empty())
    EXPECT_EQ(theirs.back(), std::to_string(n - 1) + "," + std::to_string(3 * (n - 1)) + ",\"entry " +
                                 std::to_string(n - 1) + "\",\"" + BodyFor(n - 1) + "\"");
  return n;
}

}  // namespace

TEST(Durability, WritesStoppedAfterAnyPageWriteLeaveAReadableFile) {
  ASSERT_TRUE(jettest::HaveMdbTools());
  auto dir = jettest::TempDir("stop");
  auto pristine = (dir / "pristine.mdb").string();
  Database::Create(pristine, LogTable())->Close();
  for (int stopAfter = 0; stopAfter < 120; stopAfter += 1) {
    auto file = (dir / ("f" + std::to_string(stopAfter) + ".mdb")).string();
    std::filesystem::copy_file(pristine, file);
    int completed = 0;
    {
      auto db = Database::Open(file, true, false);
      auto rs = db->OpenRecordset("Log");
      PageFile::StopWritesAfter(stopAfter);
      try {
        for (;; ++completed) AppendEntry(*rs, completed);
      } catch (const WriteStopped&) {
      }
      PageFile::StopWritesAfter(-1);
    }
    int found = CheckEntries(file);
    // Every Update that returned is there; the interrupted one may be too.
    EXPECT_GE(found, completed) << "stopped after " << stopAfter << " writes";
    EXPECT_LE(found, completed + 1) << "stopped after " << stopAfter << " writes";
    std::filesystem::remove(file);
  }
}

TEST(Durability, ChildKilledInTheMiddleOfInsertsLeavesEveryReturnedUpdate) {
  ASSERT_TRUE(jettest::HaveMdbTools());
  auto file = (jettest::TempDir("kill") / "k.mdb").string();
  Database::Create(file, LogTable())->Close();
  int pipes[2];
  ASSERT_EQ(pipe(pipes), 0);
  pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    close(pipes[0]);
    try {
      auto db = Database::Open(file, true, false);
      auto rs = db->OpenRecordset("Log");
      for (int i = 0; i < 1000000; ++i) {
        AppendEntry(*rs, i);
        int32_t done = i + 1;
        if (write(pipes[1], &done, sizeof done) != sizeof done) _exit(3);
      }
    } catch (...) {
      _exit(2);
    }
    _exit(0);
  }
  close(pipes[1]);
  int32_t reported = 0, got = 0;
  // Let it get well into the run (several hundred pages), then kill it.
  while (reported < 3000 && read(pipes[0], &got, sizeof got) == sizeof got) reported = got;
  std::this_thread::sleep_for(std::chrono::milliseconds(3));
  kill(child, SIGKILL);
  int status = 0;
  waitpid(child, &status, 0);
  while (read(pipes[0], &got, sizeof got) == sizeof got) reported = got;
  close(pipes[0]);
  ASSERT_TRUE(WIFSIGNALED(status)) << "child ended on its own: " << status;
  int found = CheckEntries(file);
  EXPECT_GE(found, reported);
  EXPECT_LE(found, reported + 1);
  // The lock died with the child: the file opens for writing again.
  auto db = Database::Open(file, true, false);
  auto rs = db->OpenRecordset("Log");
  AppendEntry(*rs, found);
  rs->Close();
  db->Close();
  EXPECT_EQ(CheckEntries(file), found + 1);
}
