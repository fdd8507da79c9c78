// The database frame's commands on real files made from the template: Open and
// Close with the caption and the delete buttons, New with its backup and its
// folder, the missing template, a model's owner, and the three deletes with
// their questions, their messages and what they take along.
#include <filesystem>

#include "dbrun/dbrun_support.h"

namespace bw::dbrun {
namespace {

namespace fs = std::filesystem;

const char* const kFilter = "MDB Files (*.mdb)|*.mdb";

/// One stored code; KeyCode1 never equals a FunctionID written here, so every
/// call adds a row.
void Store(Program& p, const std::string& maker, const std::string& type, const std::string& model, int32_t function,
           const std::string& label) {
  IRCodeRecord r;
  r.KeyCode1 = 9999;
  r.KeyCode2 = function;
  r.Label = label;
  r.FullText = maker + "-" + model;
  r.FormatText = "0x0000";
  r.CarrierWord = 109;
  r.OnceCount = 34;
  r.RepeatCount = 2;
  r.BurstText = "0000 006D 0022 0002 ";
  AddIRCode(p, r, model, type, maker);
}

// ---- Open and Close ----

struct OpenClose : DatabaseTest {};

TEST_F(OpenClose, OpenAsksForAnMdbInGeneratedIRDBsAndShowsTheListsInUpperCase) {
  std::string path = Fresh();
  Open(path);
  ASSERT_TRUE(p.DatabaseOpen);
  Store(p, "Acme", "Tv", "tv100", 12, "Power");
  CloseIRDatabase(p);
  p.DatabaseOpen = false;
  p.ButtonSequence = 5;

  Open(path);
  ASSERT_EQ(t.host.openRequests.size(), 2u);
  EXPECT_EQ(t.host.openRequests[1].filter, kFilter);
  EXPECT_EQ(fs::path(t.host.openRequests[1].startPath), p.ProgramFolder / "Generated IRDBs" / "*.mdb");
  EXPECT_TRUE(p.DatabaseOpen);
  EXPECT_EQ(p.F.LoadDB.caption, "Close");
  EXPECT_EQ(p.F.dbname.text, path);
  EXPECT_EQ(p.F.DvcMfglist.items, std::vector<std::string>{"ACME"});
  EXPECT_EQ(p.F.DvcTypeList.items, std::vector<std::string>{"TV"});
  EXPECT_EQ(p.F.DvcModelList.items, std::vector<std::string>{"TV100"});
  EXPECT_TRUE(p.F.DBmfgDEL.enabled && p.F.DBtypDEL.enabled && p.F.DBdvcDel.enabled);
  EXPECT_EQ(p.ButtonSequence, 0);
  EXPECT_TRUE(t.host.messages.empty());
}

TEST_F(OpenClose, CloseEmptiesTheFrameDisablesTheDeletesAndReleasesTheFile) {
  std::string path = Fresh();
  Open(path);
  Store(p, "Acme", "TV", "TV100", 12, "Power");
  FillDatabaseLists(p);
  LoadDB_Click(p);  // now "Close"
  EXPECT_FALSE(p.DatabaseOpen);
  EXPECT_EQ(p.F.LoadDB.caption, "Open");
  EXPECT_TRUE(p.F.DvcMfglist.items.empty());
  EXPECT_TRUE(p.F.DvcTypeList.items.empty());
  EXPECT_TRUE(p.F.DvcModelList.items.empty());
  EXPECT_EQ(p.F.dbname.text, "");
  EXPECT_FALSE(p.F.DBmfgDEL.enabled || p.F.DBtypDEL.enabled || p.F.DBdvcDel.enabled);
  EXPECT_EQ(t.host.openRequests.size(), 1u) << "closing asks for no file";
  // The exclusive lock is gone: another exclusive open succeeds and sees the row.
  auto db = jet::Database::Open(path, true, false, std::string("; pwd=") + kIRDatabasePassword);
  EXPECT_EQ(db->OpenRecordset("IR Codes")->RecordCount(), 1);
}

TEST_F(OpenClose, CancelledDialogChangesNothing) {
  LoadDB_Click(p);  // no answer queued: cancel
  EXPECT_FALSE(p.DatabaseOpen);
  EXPECT_EQ(p.F.LoadDB.caption, "Open");
  EXPECT_EQ(p.F.dbname.text, "");
  EXPECT_TRUE(t.host.messages.empty());
}

TEST_F(OpenClose, AFileThatIsNoDatabaseEndsTheCommandWithoutAMessage) {
  auto junk = t.host.openAnswers.emplace_back((dir.Write("junk.mdb", std::string(4096, 'x'))).string());
  LoadDB_Click(p);
  EXPECT_TRUE(t.host.messages.empty());
  EXPECT_FALSE(p.DatabaseOpen);
  EXPECT_EQ(p.F.LoadDB.caption, "Open");
  EXPECT_FALSE(p.F.DBmfgDEL.enabled);
  EXPECT_EQ(p.F.dbname.text, junk) << "the path is shown before the open is tried";
}

// ---- New ----

struct NewDatabase : DatabaseTest {};

TEST_F(NewDatabase, MakesGeneratedIRDBsCopiesTheTemplateAndOpensIt) {
  fs::path chosen = p.ProgramFolder / "Generated IRDBs" / "Living Room.mdb";
  ASSERT_FALSE(fs::exists(chosen.parent_path()));
  t.host.saveAnswers.push_back(chosen.string());
  NewDB_Click(p);
  ASSERT_EQ(t.host.saveRequests.size(), 1u);
  EXPECT_EQ(t.host.saveRequests[0].filter, kFilter);
  EXPECT_EQ(fs::path(t.host.saveRequests[0].startPath), p.ProgramFolder / "Generated IRDBs" / "*.mdb");
  EXPECT_TRUE(fs::is_directory(chosen.parent_path()));
  EXPECT_EQ(test::ReadFileBytes(chosen).substr(0, 4096), test::ReadFileBytes(TemplatePath()).substr(0, 4096));
  EXPECT_TRUE(p.DatabaseOpen);
  EXPECT_EQ(p.F.LoadDB.caption, "Close");
  EXPECT_EQ(p.F.dbname.text, chosen.string());
  EXPECT_TRUE(p.F.DBmfgDEL.enabled && p.F.DBtypDEL.enabled && p.F.DBdvcDel.enabled);
  EXPECT_TRUE(p.F.DvcModelList.items.empty());
}

TEST_F(NewDatabase, AReplacedFileIsKeptWithItsLastThreeCharactersMadeBak) {
  std::string old = Fresh("TV.mdb");
  Open(old);
  Store(p, "Acme", "TV", "TV100", 12, "Power");
  LoadDB_Click(p);
  const std::string oldBytes = test::ReadFileBytes(old);

  t.host.saveAnswers.push_back(old);
  NewDB_Click(p);
  // "TV.mdb" without "mdb" plus "bak".
  fs::path backup = dir.path() / "TV.bak";
  ASSERT_TRUE(fs::exists(backup));
  EXPECT_EQ(test::ReadFileBytes(backup), oldBytes);
  ASSERT_TRUE(p.DatabaseOpen);
  EXPECT_EQ(Read("IR Codes", {"Label"}).size(), 0u) << "the new file is the empty template";
  // The folder below the program is made even when the file goes elsewhere.
  EXPECT_TRUE(fs::is_directory(p.ProgramFolder / "Generated IRDBs"));
}

TEST_F(NewDatabase, DoesNothingWhileADatabaseIsOpen) {
  Open(Fresh());
  NewDB_Click(p);
  EXPECT_TRUE(t.host.saveRequests.empty());
  EXPECT_TRUE(t.host.messages.empty());
}

TEST_F(NewDatabase, CancelledDialogChangesNothing) {
  NewDB_Click(p);
  EXPECT_FALSE(p.DatabaseOpen);
  EXPECT_EQ(p.F.dbname.text, "");
  EXPECT_FALSE(fs::exists(p.ProgramFolder / "Generated IRDBs"));
}

TEST_F(NewDatabase, MissingTemplateIsReportedThenTheOpenOfTheUnmadeFileFailsQuietly) {
  fs::remove(p.ProgramFolder / "Empty_RCIR.mdb");
  fs::path chosen = dir.path() / "new.mdb";
  t.host.saveAnswers.push_back(chosen.string());
  NewDB_Click(p);
  EXPECT_EQ(t.host.messages, std::vector<std::string>{"Could not locate Empty Data base template"});
  EXPECT_FALSE(fs::exists(chosen));
  EXPECT_FALSE(p.DatabaseOpen);
  EXPECT_EQ(p.F.LoadDB.caption, "Open");
  EXPECT_FALSE(p.F.DBmfgDEL.enabled);
  EXPECT_FALSE(fs::exists(p.ProgramFolder / "Generated IRDBs")) << "nothing is made without a template";
}

// ---- the lists and the deletes ----

// Acme TV100 (TV, 2 codes), Acme AMP1 (Amplifier, 1 code), Zenith Z1 (TV, 2 codes).
// Allocation order: TV 1, Acme 1, Amplifier 2, Zenith 2; devices 1000, 1001, 1002.
struct Deletes : DatabaseTest {
  void SetUp() override {
    DatabaseTest::SetUp();
    Open(Fresh());
    ASSERT_TRUE(p.DatabaseOpen);
    Store(p, "Acme", "TV", "TV100", 12, "Power");
    Store(p, "Acme", "TV", "TV100", 13, "Mute");
    Store(p, "Acme", "Amplifier", "AMP1", 21, "Volume");
    Store(p, "Zenith", "TV", "Z1", 12, "Power");
    Store(p, "Zenith", "TV", "Z1", 16, "Channel");
    FillDatabaseLists(p);
  }
  Rows CodeDevices() { return Read("IR Codes", {"DeviceID", "Label"}); }
};

TEST_F(Deletes, SelectingAModelShowsItsTypeAndManufacturer) {
  p.F.DvcModelList.Select(2);  // Z1
  DvcModelList_Click(p);
  EXPECT_EQ(p.F.DvcTypeList.text, "TV");
  EXPECT_EQ(p.F.DvcMfglist.text, "Zenith");
  p.F.DvcModelList.Select(1);  // AMP1
  DvcModelList_Click(p);
  EXPECT_EQ(p.F.DvcTypeList.text, "Amplifier");
  EXPECT_EQ(p.F.DvcMfglist.text, "Acme");
}

TEST_F(Deletes, EmptySelectionsAreRefusedTheTypeListWithTheManufacturerText) {
  p.F.DvcMfglist.text.clear();
  p.F.DvcTypeList.text.clear();
  p.F.DvcModelList.text.clear();
  DBmfgDEL_Click(p);
  DBtypDEL_Click(p);
  DBdvcDel_Click(p);
  EXPECT_EQ(t.host.messages, (std::vector<std::string>{"No Manufacturer selected, Request Cancelled",
                                                        "No Manufacturer selected, Request Cancelled",
                                                        "No Device selected, Request Cancelled"}));
  EXPECT_EQ(CodeDevices().size(), 5u);
}

TEST_F(Deletes, AnswerNoKeepsEverything) {
  p.F.DvcMfglist.text = "ACME";
  p.F.DvcTypeList.text = "TV";
  t.host.answers = {MsgBoxResult::No, MsgBoxResult::No};
  DBmfgDEL_Click(p);
  DBtypDEL_Click(p);
  EXPECT_EQ(t.host.messages, (std::vector<std::string>{"This will delete all devices of this Manufacturer, Proceed?",
                                                        "This will delete all devices of this type, Proceed?"}));
  EXPECT_EQ(t.host.styles, (std::vector<MsgBoxStyle>{MsgBoxStyle::YesNo, MsgBoxStyle::YesNo}));
  EXPECT_EQ(Read("Manufacturers", {"name"}).size(), 2u);
  EXPECT_EQ(Read("Device Types", {"name"}).size(), 2u);
  EXPECT_EQ(Read("Devices", {"Model"}).size(), 3u);
  EXPECT_EQ(CodeDevices().size(), 5u);
}

TEST_F(Deletes, AManufacturerTakesItsDevicesAndTheirCodesButLeavesTheDeviceTypes) {
  p.F.DvcMfglist.text = "acme";  // any case
  t.host.answers = {MsgBoxResult::Yes};
  DBmfgDEL_Click(p);
  EXPECT_EQ(Read("Manufacturers", {"name", "id"}), (Rows{{"Zenith", "2"}}));
  EXPECT_EQ(Read("Devices", {"DeviceID", "Model"}), (Rows{{"1002", "Z1"}}));
  EXPECT_EQ(CodeDevices(), (Rows{{"1002", "Power"}, {"1002", "Channel"}}));
  EXPECT_EQ(Read("Device Types", {"name"}), (Rows{{"TV"}, {"Amplifier"}}));
  EXPECT_EQ(p.F.DvcMfglist.items, std::vector<std::string>{"ZENITH"});
  EXPECT_EQ(p.F.DvcModelList.items, std::vector<std::string>{"Z1"});
}

TEST_F(Deletes, ADeviceTypeTakesItsDevicesAndTheirCodesButLeavesTheManufacturers) {
  p.F.DvcTypeList.text = "TV";
  t.host.answers = {MsgBoxResult::Yes};
  DBtypDEL_Click(p);
  EXPECT_EQ(Read("Device Types", {"name", "DeviceTypeid"}), (Rows{{"Amplifier", "2"}}));
  EXPECT_EQ(Read("Devices", {"DeviceID", "Model"}), (Rows{{"1001", "AMP1"}}));
  EXPECT_EQ(CodeDevices(), (Rows{{"1001", "Volume"}}));
  EXPECT_EQ(Read("Manufacturers", {"name"}), (Rows{{"Acme"}, {"Zenith"}}));
  EXPECT_EQ(p.F.DvcTypeList.items, std::vector<std::string>{"AMPLIFIER"});
  EXPECT_EQ(p.F.DvcModelList.items, std::vector<std::string>{"AMP1"});
}

TEST_F(Deletes, AModelGoesWithoutAQuestionAndTakesItsCodes) {
  p.F.DvcModelList.text = "tv100";
  DBdvcDel_Click(p);
  EXPECT_TRUE(t.host.messages.empty());
  EXPECT_EQ(Read("Devices", {"DeviceID"}), (Rows{{"1001"}, {"1002"}}));
  EXPECT_EQ(CodeDevices(), (Rows{{"1001", "Volume"}, {"1002", "Power"}, {"1002", "Channel"}}));
  EXPECT_EQ(p.F.DvcModelList.items, (std::vector<std::string>{"AMP1", "Z1"}));
  EXPECT_EQ(Read("Manufacturers", {"name"}).size(), 2u);
}

TEST_F(Deletes, AModelStoredTwiceLosesBothRowsButOnlyTheLastRowsCodes) {
  // A second "Devices" row for the same model; codes stored now go to it,
  // since the last matching row wins.
  {
    auto rs = p.Database->OpenRecordset("Devices");
    rs->AddNew();
    rs->SetField("DeviceID", jet::Value::Long(1005));
    rs->SetField("DeviceTypeid", jet::Value::Integer(1));
    rs->SetField("IManufacturerID", jet::Value::Integer(0));
    rs->SetField("ManufacturerID", jet::Value::Integer(1));
    rs->SetField("Model", jet::Value::Text("Tv100"));
    rs->SetField("RecordType", jet::Value::Integer(300));
    rs->Update();
    rs->Close();
  }
  Store(p, "Acme", "TV", "TV100", 14, "Input");
  p.F.DvcModelList.text = "TV100";
  DBdvcDel_Click(p);
  EXPECT_EQ(Read("Devices", {"DeviceID"}), (Rows{{"1001"}, {"1002"}}));
  EXPECT_EQ(CodeDevices(), (Rows{{"1000", "Power"}, {"1000", "Mute"}, {"1001", "Volume"}, {"1002", "Power"},
                                 {"1002", "Channel"}}));
}

}  // namespace
}  // namespace bw::dbrun
