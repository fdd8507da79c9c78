// make_template OUTPUT.mdb: writes the empty IR database that new databases
// are copied from: an Access 2000 file with the tables "Manufacturers",
// "Device Types", "Devices" and "IR Codes", locked with the program's
// database password. Replaces OUTPUT when it exists.
#include <cstdio>
#include <filesystem>
#include <string>

#include "jet/database.h"
#include "pronto/db_access.h"
#include "runtime/path_problems.h"
#include "runtime/run_time_error.h"

namespace {

using bw::jet::ColumnType;
using bw::jet::NewTable;

std::vector<NewTable> IrTables() {
  using T = ColumnType;
  return {
      {"Manufacturers", {{"name", T::kText, 255}, {"id", T::kInteger}, {"RecordType", T::kInteger}}},
      {"Device Types", {{"name", T::kText, 255}, {"DeviceTypeid", T::kInteger}, {"RecordType", T::kInteger}}},
      {"Devices",
       {{"DeviceID", T::kLong},
        {"DeviceTypeid", T::kInteger},
        {"IManufacturerID", T::kInteger},
        {"ManufacturerID", T::kInteger},
        {"Model", T::kText, 255},
        {"RecordType", T::kInteger}}},
      {"IR Codes",
       {{"DeviceID", T::kLong},
        {"ButtonID", T::kLong},
        {"FunctionID", T::kInteger},
        {"Label", T::kText, 255},
        {"FullText", T::kMemo},
        {"Details", T::kText, 255},
        {"Carrier", T::kInteger},
        {"OnceCounter", T::kInteger},
        {"RepeatCounter", T::kInteger},
        {"IRcode", T::kMemo},
        {"RecordType", T::kInteger}}},
  };
}

}  // namespace

int main(int argc, char** argv) {
  const char* const usage = "usage: make_template OUTPUT.mdb\n";
  if (argc == 2 && (std::string(argv[1]) == "--help" || std::string(argv[1]) == "-h")) {
    std::fputs(usage, stdout);
    return 0;
  }
  // An option is never a database name: "--help" must not become a file.
  if (argc != 2 || argv[1][0] == '-') {
    std::fputs(usage, stderr);
    return 2;
  }
  std::string out = argv[1];
  if (const std::string problem = bw::NewFileProblem(out); !problem.empty()) {
    std::fprintf(stderr, "make_template: can not write %s: %s\n", out.c_str(), problem.c_str());
    return 1;
  }
  std::string temp = out + ".new";
  try {
    std::filesystem::remove(temp);
    auto db = bw::jet::Database::Create(temp, IrTables(), bw::kIRDatabasePassword);
    db->Close();
    std::filesystem::rename(temp, out);
  } catch (const bw::RunTimeError& e) {
    std::fprintf(stderr, "make_template: %s: %s\n", out.c_str(), e.description().c_str());
    return 1;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "make_template: %s: %s\n", out.c_str(), e.what());
    return 1;
  }
  return 0;
}
