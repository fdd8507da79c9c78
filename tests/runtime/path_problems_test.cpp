// What is wrong with a path: each kind of bad path, named in the answer; good paths get "".
#include <gtest/gtest.h>

#include "runtime/path_problems.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

TEST(PathProblems, EachBadPathIsNamedWithWhatIsWrong) {
  test::TempDir dir;
  const std::string d = dir.path().string();
  dir.Write("text.mdb", "not a database");
  dir.Write("empty.mdb", "");
  dir.Write("short.mdb", std::string("\0\1\0\0Standard Jet DB\0", 20) + std::string(1000, '\0'));
  dir.Write("jet.mdb", std::string("\0\1\0\0Standard Jet DB\0", 20) + std::string(4076, '\0'));
  dir.Write("sub/a.lir", "");
  using Check = std::string (*)(const std::filesystem::path&);
  const std::vector<std::tuple<Check, std::string, std::string>> cases = {
      {ExistingFileProblem, "sub", d + "/sub is a folder, not a file"},
      {ExistingFileProblem, "nope.lir", d + "/nope.lir does not exist"},
      {ExistingFileProblem, "gone/a.lir", "the folder " + d + "/gone does not exist"},
      {ExistingFileProblem, "text.mdb/a.lir", d + "/text.mdb is a file, not a folder"},
      {ExistingFileProblem, "sub/a.lir", ""},
      {NewFileProblem, "sub", d + "/sub is a folder, not a file"},
      {NewFileProblem, "gone/deeper/a.lir", "the folder " + d + "/gone/deeper does not exist"},
      {NewFileProblem, "sub/new.lir", ""},
      {FolderProblem, "text.mdb", d + "/text.mdb is a file, not a folder"},
      {FolderProblem, "gone", d + "/gone does not exist"},
      {FolderProblem, "sub", ""},
      {AccessDatabaseProblem, "empty.mdb", d + "/empty.mdb is empty, not an Access database"},
      {AccessDatabaseProblem, "text.mdb",
       d + "/text.mdb is not an Access database (it does not begin with an Access file header)"},
      {AccessDatabaseProblem, "short.mdb", d + "/short.mdb is 1020 bytes long, too short for an Access database"},
      {AccessDatabaseProblem, "jet.mdb", ""},
  };
  for (const auto& [check, path, answer] : cases) EXPECT_EQ(check(dir.path() / path), answer) << path;
  EXPECT_EQ(NewFileProblem("bare.lir"), "") << "a bare name is made in the current folder";
}

}  // namespace
}  // namespace bw
