// The IR database through the real engine on real files made from the
// template: identifier allocation, the model-only device match, the update
// path that compares "FunctionID" with KeyCode1, the trapped error text, the
// upper-cased lists, and what mdbtools reads back.
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>

#include "jet/database.h"
#include "pronto/db_access.h"
#include "runtime/run_time_error.h"
#include "support/scripted_host.h"

using namespace bw;
using bw::jet::Value;

namespace {

std::string Template() { return std::string(BW_BIN_DIR) + "/Empty_RCIR.mdb"; }

/// A fresh copy of the template in the test's folder.
std::string NewDatabase(const test::TempDir& dir, const std::string& name = "ir.mdb") {
  auto to = dir.path() / name;
  std::filesystem::copy_file(Template(), to);
  return to.string();
}

IRCodeRecord Code(int32_t key1, int32_t key2, const std::string& label) {
  IRCodeRecord r;
  r.KeyCode1 = key1;
  r.KeyCode2 = key2;
  r.Label = label;
  r.FullText = label + " full";
  r.FormatText = "0x0000";
  r.CarrierWord = 109;
  r.OnceCount = 34;
  r.RepeatCount = 2;
  r.BurstText = "0000 006D 0022 0002 0155 00AA 0015 0040 0015 0015 ";
  return r;
}

/// (column values as text) of every row of a table, in table order.
std::vector<std::vector<std::string>> Rows(Program& p, const std::string& table, std::vector<std::string> columns) {
  std::vector<std::vector<std::string>> out;
  auto rs = p.Database->OpenRecordset(table);
  while (!rs->Eof()) {
    std::vector<std::string> row;
    for (const auto& c : columns) row.push_back(rs->Field(c).AsText());
    out.push_back(row);
    rs->MoveNext();
  }
  return out;
}

using Table = std::vector<std::vector<std::string>>;

void AddDeviceRow(Program& p, int32_t id, const std::string& model) {
  auto rs = p.Database->OpenRecordset("Devices");
  rs->AddNew();
  rs->SetField("DeviceID", Value::Long(id));
  rs->SetField("DeviceTypeid", Value::Integer(1));
  rs->SetField("IManufacturerID", Value::Integer(0));
  rs->SetField("ManufacturerID", Value::Integer(1));
  rs->SetField("Model", Value::Text(model));
  rs->SetField("RecordType", Value::Integer(300));
  rs->Update();
}

std::string Shell(const std::string& cmd) {
  std::string out;
  FILE* f = popen(cmd.c_str(), "r");
  if (!f) return out;
  std::array<char, 4096> buf;
  size_t n;
  while ((n = fread(buf.data(), 1, buf.size(), f)) > 0) out.append(buf.data(), n);
  pclose(f);
  return out;
}

}  // namespace

class IRDatabase : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(std::filesystem::exists(Template())) << "build the empty_template target"; }
  test::TestProgram t;
  test::TempDir dir;
};

TEST_F(IRDatabase, FirstIdentifiersAre1And1000AndMdbToolsReadsTheRows) {
  auto file = NewDatabase(dir);
  OpenIRDatabase(t.p, file);
  EXPECT_TRUE(t.p.DatabaseOpen);
  EXPECT_TRUE(t.p.F.DvcMfglist.items.empty());
  IRCodeRecord power = Code(5, 12, "Power");
  power.BurstText = std::string(600, '7') + " ";  // longer than a row keeps inline
  AddIRCode(t.p, power, "KV-27", "TV", "Sony");
  EXPECT_EQ(Rows(t.p, "Manufacturers", {"name", "id", "RecordType"}), (Table{{"Sony", "1", "300"}}));
  EXPECT_EQ(Rows(t.p, "Device Types", {"name", "DeviceTypeid", "RecordType"}), (Table{{"TV", "1", "300"}}));
  EXPECT_EQ(Rows(t.p, "Devices", {"DeviceID", "DeviceTypeid", "IManufacturerID", "ManufacturerID", "Model"}),
            (Table{{"1000", "1", "0", "1", "KV-27"}}));
  EXPECT_EQ(t.p.ButtonSequence, 1);
  CloseIRDatabase(t.p);
  EXPECT_FALSE(t.p.DatabaseOpen);
  std::string csv = Shell("mdb-export -H '" + file + "' 'IR Codes'");
  EXPECT_EQ(csv, "1000,12,1,\"Power\",\"Power full\",\"0x0000\",109,34,2,\"" + power.BurstText + "\",300\n");
  EXPECT_EQ(Shell("mdb-ver '" + file + "'"), "JET4\n");
}

TEST_F(IRDatabase, NewDeviceFollowsTheLastRowNotTheLargestId) {
  OpenIRDatabase(t.p, NewDatabase(dir));
  AddDeviceRow(t.p, 2000, "Early");
  AddDeviceRow(t.p, 1005, "Late");
  EXPECT_EQ(GetDeviceID(t.p, "Newcomer", "VCR", "JVC", false), 1006);
  EXPECT_EQ(GetDeviceID(t.p, "NEWCOMER", "x", "y", true), 1006);
  // Lookup only: an unknown model gives 0 and adds nothing.
  EXPECT_EQ(GetDeviceID(t.p, "Ghost", "VCR", "JVC", true), 0);
  EXPECT_EQ(Rows(t.p, "Devices", {"Model"}).size(), 3u);
}

TEST_F(IRDatabase, SameModelOfTwoManufacturersIsOneDeviceTheLastRowWins) {
  OpenIRDatabase(t.p, NewDatabase(dir));
  AddDeviceRow(t.p, 1000, "RM-100");
  AddDeviceRow(t.p, 1001, "rm-100");
  IRCodeRecord a = Code(0, 1, "Play"), b = Code(0, 2, "Stop");
  AddIRCode(t.p, a, "RM-100", "Audio", "Acme");
  AddIRCode(t.p, b, "Rm-100", "Audio", "Other Brand");
  EXPECT_EQ(Rows(t.p, "IR Codes", {"DeviceID", "Label"}), (Table{{"1001", "Play"}, {"1001", "Stop"}}));
  // Neither manufacturer was needed: the device existed.
  EXPECT_TRUE(Rows(t.p, "Manufacturers", {"name"}).empty());
}

TEST_F(IRDatabase, NamesMatchWithoutCaseKeepFirstSpellingAndListsShowUpperCase) {
  auto file = NewDatabase(dir);
  OpenIRDatabase(t.p, file);
  EXPECT_EQ(GetManufacturerID(t.p, "Acme"), 1);
  EXPECT_EQ(GetManufacturerID(t.p, "Zenith"), 2);
  EXPECT_EQ(GetManufacturerID(t.p, "ACME"), 1);
  EXPECT_EQ(GetDeviceTypeID(t.p, "tv"), 1);
  EXPECT_EQ(GetDeviceTypeID(t.p, "TV"), 1);
  AddDeviceRow(t.p, 1000, "abc");
  AddDeviceRow(t.p, 1001, "abc");
  EXPECT_EQ(Rows(t.p, "Manufacturers", {"name", "id"}), (Table{{"Acme", "1"}, {"Zenith", "2"}}));
  FillDatabaseLists(t.p);
  EXPECT_EQ(t.p.F.DvcMfglist.items, (std::vector<std::string>{"ACME", "ZENITH"}));
  EXPECT_EQ(t.p.F.DvcTypeList.items, (std::vector<std::string>{"TV"}));
  EXPECT_EQ(t.p.F.DvcModelList.items, (std::vector<std::string>{"ABC", "ABC"}));  // duplicates stay
}

TEST_F(IRDatabase, RowIsUpdatedOnlyWhenItsSequenceNumberEqualsKeyCode1) {
  OpenIRDatabase(t.p, NewDatabase(dir));
  IRCodeRecord r = Code(1, 7, "Mute");
  AddIRCode(t.p, r, "M", "TV", "Acme");  // new row, FunctionID 1
  r.BurstText = "0000 0001 ";
  AddIRCode(t.p, r, "M", "TV", "Acme");  // FunctionID 1 = KeyCode1 1: updated, now FunctionID 2
  EXPECT_EQ(Rows(t.p, "IR Codes", {"FunctionID", "IRcode", "RecordType"}), (Table{{"2", "0000 0001 ", "300"}}));
  AddIRCode(t.p, r, "M", "TV", "Acme");  // FunctionID 2 != 1: a further row
  EXPECT_EQ(Rows(t.p, "IR Codes", {"FunctionID"}), (Table{{"2"}, {"3"}}));
  IRCodeRecord lower = r;
  lower.KeyCode1 = 3;
  lower.Label = "MUTE";  // labels compare without case
  AddIRCode(t.p, lower, "m", "TV", "Acme");
  EXPECT_EQ(Rows(t.p, "IR Codes", {"FunctionID", "Label"}), (Table{{"2", "Mute"}, {"4", "MUTE"}}));
  EXPECT_EQ(t.p.ButtonSequence, 4);
}

TEST_F(IRDatabase, OpeningAnotherDatabaseRestartsTheSequence) {
  OpenIRDatabase(t.p, NewDatabase(dir, "one.mdb"));
  IRCodeRecord a = Code(100, 1, "A"), b = Code(100, 2, "B");
  AddIRCode(t.p, a, "X", "TV", "Acme");
  AddIRCode(t.p, b, "X", "TV", "Acme");
  EXPECT_EQ(t.p.ButtonSequence, 2);
  OpenIRDatabase(t.p, NewDatabase(dir, "two.mdb"));
  EXPECT_EQ(t.p.ButtonSequence, 0);
  AddIRCode(t.p, a, "X", "TV", "Acme");
  EXPECT_EQ(Rows(t.p, "IR Codes", {"FunctionID"}), (Table{{"1"}}));
  // The first database was let go when the second replaced it: it opens again.
  test::TestProgram other;
  OpenIRDatabase(other.p, (dir.path() / "one.mdb").string());
  EXPECT_EQ(Rows(other.p, "IR Codes", {"FunctionID"}), (Table{{"1"}, {"2"}}));
}

TEST_F(IRDatabase, BothTwinsTrapErrorsUnderTheDeviceTypeName) {
  // A database with the password but without the two name tables.
  auto file = (dir.path() / "bare.mdb").string();
  jet::Database::Create(file, {{"Devices", {{"DeviceID", jet::ColumnType::kLong}}}}, kIRDatabasePassword)->Close();
  t.p.Database = jet::Database::Open(file, true, false, std::string("; pwd=") + kIRDatabasePassword);
  const std::string missing = "The Microsoft Jet database engine cannot find the input table or query '";
  const std::string tail = "'.  Make sure it exists and that its name is spelled correctly.";
  EXPECT_EQ(GetDeviceTypeID(t.p, "TV"), 0);
  EXPECT_EQ(t.host.LastMessage(), "Error in GetDeviceTypeID\r\n" + missing + "Device Types" + tail);
  EXPECT_EQ(GetManufacturerID(t.p, "Acme"), 0);
  EXPECT_EQ(t.host.LastMessage(), "Error in GetDeviceTypeID\r\n" + missing + "Manufacturers" + tail);
  EXPECT_EQ(t.host.styles.back(), MsgBoxStyle::OKOnly);
  // Other operations have no trap: the engine error reaches the caller.
  try {
    FillDatabaseLists(t.p);
    ADD_FAILURE() << "no error";
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 3078);
  }
}

TEST_F(IRDatabase, OpenFailuresAreJetErrors) {
  auto expectNumber = [&](const std::string& path, int number) {
    try {
      OpenIRDatabase(t.p, path);
      ADD_FAILURE() << "opened " << path;
    } catch (const RunTimeError& e) {
      EXPECT_EQ(e.number(), number) << e.description();
    }
  };
  expectNumber((dir.path() / "missing.mdb").string(), 3024);
  auto file = NewDatabase(dir);
  test::TestProgram holder;
  OpenIRDatabase(holder.p, file);
  expectNumber(file, 3045);  // held exclusively by the other program
  EXPECT_FALSE(t.p.DatabaseOpen);
  auto plain = (dir.path() / "nopwd.mdb").string();
  jet::Database::Create(plain, {{"Manufacturers", {{"name", jet::ColumnType::kText, 255}}}})->Close();
  // A database without a password opens with it; a missing table then fails.
  expectNumber(plain, 3078);
}

TEST_F(IRDatabase, ThousandsOfCodesTakeSecondsAndMdbToolsCountsThem) {
  auto file = NewDatabase(dir);
  OpenIRDatabase(t.p, file);
  const int kCodes = 3000;
  auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < kCodes; ++i) {
    IRCodeRecord r = Code(0, i, "Key " + std::to_string(i));
    r.BurstText = std::string(300, char('0' + i % 10)) + " ";
    AddIRCode(t.p, r, "Model " + std::to_string(i / 50), "TV", "Maker " + std::to_string(i / 500));
  }
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::printf("%d AddIRCode calls: %.2f s\n", kCodes, seconds);
  EXPECT_LT(seconds, 60.0);
  CloseIRDatabase(t.p);
  std::string count = Shell("mdb-export -H '" + file + "' 'IR Codes' | wc -l");
  EXPECT_EQ(std::stoi(count), kCodes);
  EXPECT_EQ(Shell("mdb-export -H '" + file + "' Devices | tail -1"), "1059,1,0,6,\"Model 59\",300\n");
}
