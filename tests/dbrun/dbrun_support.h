// Set-up shared by the IR database and database-frame tests: a program whose
// folder holds the real template, databases made from it, rows read back as text.
#pragma once

#include <algorithm>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "jet/database.h"
#include "jet/index_check.h"
#include "pronto/db_access.h"
#include "pronto/db_run.h"
#include "support/scripted_host.h"

namespace bw::dbrun {

using Rows = std::vector<std::vector<std::string>>;

/// The built template, or the one BW_TEST_TEMPLATE names (the same tests run
/// again on templates with indexes that other writers made).
inline std::filesystem::path TemplatePath() {
  const char* other = std::getenv("BW_TEST_TEMPLATE");
  return other && *other ? std::filesystem::path(other) : std::filesystem::path(BW_BIN_DIR) / "Empty_RCIR.mdb";
}

struct DatabaseTest : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  test::TempDir dir;
  void SetUp() override {
    ASSERT_TRUE(std::filesystem::exists(TemplatePath())) << "build the empty_template target";
    p.ProgramFolder = dir.path() / "program";
    std::filesystem::create_directories(p.ProgramFolder);
    std::filesystem::copy_file(TemplatePath(), p.ProgramFolder / "Empty_RCIR.mdb");
    // As start-up leaves them: no database, nothing to delete.
    p.F.DBmfgDEL.enabled = p.F.DBtypDEL.enabled = p.F.DBdvcDel.enabled = false;
  }
  /// Whatever a test did, every index of the open database matches its rows.
  /// BW_TEST_KEEP_DB=FOLDER keeps the databases a test made there, for other readers.
  void TearDown() override {
    if (p.Database && p.Database->IsOpen()) {
      // The IR tables this test's file has: other tables of Access-made files keep
      // Access's own distinct-key counts, which need not match.
      const std::vector<std::string> present = p.Database->TableNames();
      for (const char* table : {"Manufacturers", "Device Types", "Devices", "IR Codes"})
        if (std::find(present.begin(), present.end(), table) != present.end())
          EXPECT_EQ(jet::CheckIndexes(p.Database->GetTable(table), true).findings, std::vector<std::string>{})
              << table;
    }
    const char* keep = std::getenv("BW_TEST_KEEP_DB");
    if (!keep || !*keep) return;
    if (p.Database) p.Database->Close();
    std::string test = ::testing::UnitTest::GetInstance()->current_test_info()->name();
    for (const auto& e : std::filesystem::recursive_directory_iterator(dir.path()))
      if (e.path().extension() == ".mdb")
        std::filesystem::copy_file(e.path(), std::filesystem::path(keep) / (test + "-" + e.path().filename().string()),
                                   std::filesystem::copy_options::overwrite_existing);
  }
  /// A fresh copy of the template at dir/name.
  std::string Fresh(const std::string& name = "ir.mdb") {
    auto to = dir.path() / name;
    std::filesystem::copy_file(TemplatePath(), to);
    return to.string();
  }
  /// "Open" with the file dialog answering `path`.
  void Open(const std::string& path) {
    t.host.openAnswers.push_back(path);
    LoadDB_Click(p);
  }
  /// A "Devices" row written directly, as the program itself never would for a known model.
  void AddDeviceRow(int32_t id, const std::string& model) {
    auto rs = p.Database->OpenRecordset("Devices");
    rs->AddNew();
    rs->SetField("DeviceID", jet::Value::Long(id));
    rs->SetField("Model", jet::Value::Text(model));
    rs->Update();
  }
  /// The named columns of every row of `table`, in table order, as text.
  Rows Read(const std::string& table, const std::vector<std::string>& columns) {
    Rows out;
    auto rs = p.Database->OpenRecordset(table);
    for (; !rs->Eof(); rs->MoveNext()) {
      out.emplace_back();
      for (const auto& c : columns) out.back().push_back(rs->Field(c).AsText());
    }
    return out;
  }
};

}  // namespace bw::dbrun
