// The IR database on template copies: identifier allocation, the model-only
// device match, the update path comparing "FunctionID" with KeyCode1, the
// trapped error text, upper-cased lists, and what mdbtools reads back.
#include <functional>

#include "dbrun/dbrun_support.h"
#include "jet/mdbtools.h"

namespace bw::dbrun {
namespace {

using jettest::JetNumber;
using jettest::Shell;

/// A code as the Pronto writer hands it on.
IRCodeRecord Code(int32_t key1, int32_t key2, const std::string& label) {
  return {key1, key2, label, label + " full", "0x0000", 109, 34, 2, "0000 006D 0022 0002 0155 00AA 0015 0040 "};
}

struct IRDatabase : DatabaseTest {
  /// A "Devices" row written directly, as the program itself never would for a known model.
  void AddDeviceRow(int32_t id, const std::string& model) {
    auto rs = p.Database->OpenRecordset("Devices");
    rs->AddNew();
    rs->SetField("DeviceID", jet::Value::Long(id));
    rs->SetField("Model", jet::Value::Text(model));
    rs->Update();
  }
  void Add(int32_t key1, int32_t key2, const std::string& label, const std::string& model,
           const std::string& maker = "Acme") {
    IRCodeRecord r = Code(key1, key2, label);
    AddIRCode(p, r, model, "TV", maker);
  }
};

TEST_F(IRDatabase, FirstIdentifiersAre1And1000AndMdbToolsReadsTheRows) {
  auto file = Fresh();
  OpenIRDatabase(p, file);
  EXPECT_TRUE(p.DatabaseOpen && p.F.DvcMfglist.items.empty());
  IRCodeRecord power = Code(5, 12, "Power");
  power.BurstText = std::string(600, '7') + " ";  // longer than a row keeps inline
  AddIRCode(p, power, "KV-27", "TV", "Sony");
  EXPECT_EQ(Read("Manufacturers", {"name", "id", "RecordType"}), (Rows{{"Sony", "1", "300"}}));
  EXPECT_EQ(Read("Device Types", {"name", "DeviceTypeid", "RecordType"}), (Rows{{"TV", "1", "300"}}));
  EXPECT_EQ(Read("Devices", {"DeviceID", "DeviceTypeid", "IManufacturerID", "ManufacturerID", "Model"}),
            (Rows{{"1000", "1", "0", "1", "KV-27"}}));
  EXPECT_EQ(p.ButtonSequence, 1);
  CloseIRDatabase(p);
  EXPECT_FALSE(p.DatabaseOpen);
  EXPECT_EQ(Shell("mdb-export -H '" + file + "' 'IR Codes'"),
            "1000,12,1,\"Power\",\"Power full\",\"0x0000\",109,34,2,\"" + power.BurstText + "\",300\n");
  EXPECT_EQ(Shell("mdb-ver '" + file + "'"), "JET4\n");
}

TEST_F(IRDatabase, NewDeviceFollowsTheLastRowAndTheLastRowOfAModelWins) {
  OpenIRDatabase(p, Fresh());
  AddDeviceRow(2000, "Early");
  AddDeviceRow(1005, "rm-100");
  EXPECT_EQ(GetDeviceID(p, "Newcomer", "VCR", "JVC", false), 1006);
  EXPECT_EQ(GetDeviceID(p, "NEWCOMER", "x", "y", true), 1006);
  EXPECT_EQ(GetDeviceID(p, "Ghost", "VCR", "JVC", true), 0) << "lookup only: nothing is added";
  AddDeviceRow(1007, "RM-100");
  // The model matches whatever the manufacturer; no manufacturer is made for it.
  Add(0, 1, "Play", "Rm-100", "Other Brand");
  EXPECT_EQ(Read("IR Codes", {"DeviceID", "Label"}), (Rows{{"1007", "Play"}}));
  EXPECT_EQ(Read("Devices", {"Model"}).size(), 4u);
  EXPECT_EQ(Read("Manufacturers", {"name"}), (Rows{{"JVC"}}));
}

TEST_F(IRDatabase, NamesMatchWithoutCaseKeepFirstSpellingAndListsShowUpperCase) {
  OpenIRDatabase(p, Fresh());
  EXPECT_EQ(std::vector<int>({GetManufacturerID(p, "Acme"), GetManufacturerID(p, "Zenith"),
                              GetManufacturerID(p, "ACME"), GetDeviceTypeID(p, "tv"), GetDeviceTypeID(p, "TV")}),
            std::vector<int>({1, 2, 1, 1, 1}));
  AddDeviceRow(1000, "abc");
  AddDeviceRow(1001, "abc");
  EXPECT_EQ(Read("Manufacturers", {"name", "id"}), (Rows{{"Acme", "1"}, {"Zenith", "2"}}));
  FillDatabaseLists(p);
  EXPECT_EQ(p.F.DvcMfglist.items, (std::vector<std::string>{"ACME", "ZENITH"}));
  EXPECT_EQ(p.F.DvcTypeList.items, (std::vector<std::string>{"TV"}));
  EXPECT_EQ(p.F.DvcModelList.items, (std::vector<std::string>{"ABC", "ABC"}));  // duplicates stay
}

TEST_F(IRDatabase, RowIsUpdatedOnlyWhenItsSequenceNumberEqualsKeyCode1) {
  OpenIRDatabase(p, Fresh());
  Add(1, 7, "Mute", "M");  // new row, FunctionID 1
  IRCodeRecord r = Code(1, 7, "Mute");
  r.BurstText = "0000 0001 ";
  AddIRCode(p, r, "M", "TV", "Acme");  // FunctionID 1 = KeyCode1 1: updated, now FunctionID 2
  EXPECT_EQ(Read("IR Codes", {"FunctionID", "IRcode", "RecordType"}), (Rows{{"2", "0000 0001 ", "300"}}));
  Add(1, 7, "Mute", "M");  // FunctionID 2 != 1: a further row
  Add(3, 7, "MUTE", "m");  // labels compare without case
  EXPECT_EQ(Read("IR Codes", {"FunctionID", "Label"}), (Rows{{"2", "Mute"}, {"4", "MUTE"}}));
  EXPECT_EQ(p.ButtonSequence, 4);
}

TEST_F(IRDatabase, TiedRowsAreUpdatedInTableOrderThroughDeletesAndOtherWriters) {
  OpenIRDatabase(p, Fresh());
  Add(1, 7, "Mute", "M");  // the first row: device 1000, FunctionID 1
  for (const char* label : {"MUTE", "mute"}) {  // two more with the same key, written past AddIRCode
    auto rs = p.Database->OpenRecordset("IR Codes");
    rs->AddNew();
    rs->SetField("DeviceID", jet::Value::Long(1000));
    rs->SetField("ButtonID", jet::Value::Long(7));
    rs->SetField("FunctionID", jet::Value::Integer(1));
    rs->SetField("Label", jet::Value::Text(label));
    rs->Update();
  }
  auto deleteFirst = [&] {
    auto rs = p.Database->OpenRecordset("IR Codes");
    rs->Delete();
  };
  // Before each store: an action and the sequence number to start from.
  struct Store {
    std::function<void()> before;
    int16_t sequence;
    std::string label, burst;
  };
  const std::vector<Store> stores = {
      {[] {}, 0, "mUTE", "x1 "},      // the first tied row, which keeps FunctionID 1
      {deleteFirst, 1, "MUTE", "x2 "},  // the next tied row; FunctionID 2 takes it out of the tie
      {[] {}, 0, "mUTE", "x3 "},      // the last tied row
      {[] {}, 1, "Mute", "x4 "},      // the same row again (still FunctionID 1)
      {[] {}, 2, "mute", "x5 "},      // no row left with FunctionID 1: a new one
  };
  for (const Store& s : stores) {
    s.before();
    p.ButtonSequence = s.sequence;
    IRCodeRecord r = Code(1, 7, s.label);
    r.BurstText = s.burst;
    AddIRCode(p, r, "M", "TV", "Acme");
  }
  EXPECT_EQ(Read("IR Codes", {"Label", "FunctionID", "IRcode"}),
            (Rows{{"MUTE", "2", "x2 "}, {"Mute", "2", "x4 "}, {"mute", "3", "x5 "}}));
}

TEST_F(IRDatabase, ARowMovedOffItsFullPageIsStillTheOneAStoreUpdates) {
  OpenIRDatabase(p, Fresh());
  for (int k = 1; k <= 60; ++k) Add(k, k, "K" + std::to_string(k), "M");  // FunctionID k; the first page fills
  {
    auto rs = p.Database->OpenRecordset("IR Codes");  // the first row grows past its page's free space
    rs->Edit();
    rs->SetField("Details", jet::Value::Text(std::string(250, 'd')));
    rs->Update();
  }
  p.ButtonSequence = 0;
  IRCodeRecord r = Code(1, 1, "k1");
  r.BurstText = "moved ";
  AddIRCode(p, r, "M", "TV", "Acme");
  const Rows rows = Read("IR Codes", {"Label", "IRcode"});
  ASSERT_EQ(rows.size(), 60u);
  EXPECT_EQ(rows[0], (std::vector<std::string>{"k1", "moved "}));
}

TEST_F(IRDatabase, OpeningAnotherDatabaseRestartsTheSequenceAndReleasesTheFirst) {
  OpenIRDatabase(p, Fresh("one.mdb"));
  Add(100, 1, "A", "X");
  Add(100, 2, "B", "X");
  OpenIRDatabase(p, Fresh("two.mdb"));
  EXPECT_EQ(p.ButtonSequence, 0);
  Add(100, 1, "A", "X");
  EXPECT_EQ(Read("IR Codes", {"FunctionID"}), (Rows{{"1"}}));
  test::TestProgram other;
  OpenIRDatabase(other.p, (dir.path() / "one.mdb").string());
  EXPECT_EQ(other.p.Database->OpenRecordset("IR Codes")->RecordCount(), 2);
}

TEST_F(IRDatabase, BothTwinsTrapErrorsUnderTheDeviceTypeName) {
  // A database with the password but without the two name tables.
  auto file = (dir.path() / "bare.mdb").string();
  jet::Database::Create(file, {{"Devices", {{"DeviceID", jet::ColumnType::kLong}}}}, kIRDatabasePassword)->Close();
  p.Database = jet::Database::Open(file, true, false, std::string("; pwd=") + kIRDatabasePassword);
  auto missing = [](const std::string& table) {
    return "Error in GetDeviceTypeID\r\nThe Microsoft Jet database engine cannot find the input table or query '" +
           table + "'.  Make sure it exists and that its name is spelled correctly.";
  };
  EXPECT_EQ(GetDeviceTypeID(p, "TV"), 0);
  EXPECT_EQ(GetManufacturerID(p, "Acme"), 0);
  EXPECT_EQ(t.host.messages, (std::vector<std::string>{missing("Device Types"), missing("Manufacturers")}));
  EXPECT_EQ(t.host.styles.back(), MsgBoxStyle::OKOnly);
  EXPECT_EQ(JetNumber([&] { FillDatabaseLists(p); }), 3078) << "no trap elsewhere: the engine error reaches the caller";
}

TEST_F(IRDatabase, OpenFailuresAreJetErrors) {
  EXPECT_EQ(JetNumber([&] { OpenIRDatabase(p, (dir.path() / "missing.mdb").string()); }), 3024);
  auto file = Fresh();
  test::TestProgram holder;
  OpenIRDatabase(holder.p, file);
  EXPECT_EQ(JetNumber([&] { OpenIRDatabase(p, file); }), 3045);
  EXPECT_FALSE(p.DatabaseOpen);
  // A database without a password opens with it; the missing table then fails.
  auto plain = (dir.path() / "nopwd.mdb").string();
  jet::Database::Create(plain, {{"Manufacturers", {{"name", jet::ColumnType::kText, 255}}}})->Close();
  EXPECT_EQ(JetNumber([&] { OpenIRDatabase(p, plain); }), 3078);
}

TEST_F(IRDatabase, ThousandsOfCodesOverManyPagesAreAllReadBackByMdbTools) {
  auto file = Fresh();
  OpenIRDatabase(p, file);
  for (int i = 0; i < 3000; ++i) {
    IRCodeRecord r = Code(0, i, "Key " + std::to_string(i));
    r.BurstText = std::string(300, char('0' + i % 10)) + " ";
    AddIRCode(p, r, "Model " + std::to_string(i / 50), "TV", "Maker " + std::to_string(i / 500));
  }
  CloseIRDatabase(p);
  EXPECT_EQ(Shell("mdb-export -H '" + file + "' 'IR Codes' | wc -l"), "3000\n");
  EXPECT_EQ(Shell("mdb-export -H '" + file + "' Devices | tail -1"), "1059,1,0,6,\"Model 59\",300\n");
}

}  // namespace
}  // namespace bw::dbrun
