// The database frame on template copies: Open, Close and New with the frame's
// state, a model's owner, the three deletes and what they take along, and the
// run through the real generator, with its refusals and the Xantech sweep.
#include "dbrun/dbrun_support.h"
#include "input/device_file.h"
#include "pronto/pronto_code.h"
#include "shell/command.h"
#include "shell/startup.h"

namespace bw::dbrun {
namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

struct Commands : DatabaseTest {
  /// One code; KeyCode1 never equals a FunctionID written here, so every call adds a row.
  void Store(const std::string& maker, const std::string& type, const std::string& model, int32_t function,
             const std::string& label) {
    IRCodeRecord r{9999, function, label, maker + "-" + model, "0x0000", 109, 34, 2, "0000 006D 0022 0002 "};
    AddIRCode(p, r, model, type, maker);
  }
  fs::path GeneratedIRDBs() const { return p.ProgramFolder / "Generated IRDBs"; }
  Rows Lists() const { return {p.F.DvcMfglist.items, p.F.DvcTypeList.items, p.F.DvcModelList.items}; }
  /// The frame with a database open or not, showing the file name `shown` and the three lists.
  void ExpectFrame(bool open, const std::string& shown = "", const Rows& lists = Rows(3)) {
    EXPECT_EQ(p.DatabaseOpen, open);
    EXPECT_EQ(p.F.LoadDB.caption, open ? "Close" : "Open");
    EXPECT_EQ(p.F.dbname.text, shown);
    for (const Button* b : {&p.F.DBmfgDEL, &p.F.DBtypDEL, &p.F.DBdvcDel}) EXPECT_EQ(b->enabled, open);
    EXPECT_EQ(Lists(), lists);
  }
};

TEST_F(Commands, OpenShowsUpperCaseListsCloseEmptiesTheFrameAndReleasesTheFile) {
  std::string path = Fresh();
  Open(path);
  Store("Acme", "Tv", "tv100", 12, "Power");
  FillDatabaseLists(p);
  LoadDB_Click(p);  // now "Close"
  ExpectFrame(false);
  EXPECT_EQ(t.host.openRequests.size(), 1u) << "closing asks for no file";
  auto db = jet::Database::Open(path, true, false, std::string("; pwd=") + kIRDatabasePassword);
  EXPECT_EQ(db->OpenRecordset("IR Codes")->RecordCount(), 1) << "the exclusive lock is gone";
  db->Close();

  p.ButtonSequence = 5;
  Open(path);
  ASSERT_EQ(t.host.openRequests.size(), 2u);
  EXPECT_EQ(t.host.openRequests[1].filter, "MDB Files (*.mdb)|*.mdb");
  EXPECT_EQ(fs::path(t.host.openRequests[1].startPath), GeneratedIRDBs() / "*.mdb");
  ExpectFrame(true, path, {{"ACME"}, {"TV"}, {"TV100"}});
  EXPECT_EQ(p.ButtonSequence, 0);
  EXPECT_TRUE(t.host.messages.empty());
}

TEST_F(Commands, CancelledDialogsJunkAndAMissingTemplateLeaveTheFrameClosed) {
  LoadDB_Click(p);  // no answer queued: cancelled
  NewDB_Click(p);
  ExpectFrame(false);
  EXPECT_FALSE(fs::exists(GeneratedIRDBs()));
  auto junk = t.host.openAnswers.emplace_back(dir.Write("junk.mdb", std::string(4096, 'x')).string());
  LoadDB_Click(p);
  ExpectFrame(false, junk);  // the path is shown before the open is tried
  EXPECT_TRUE(t.host.messages.empty());
  fs::remove(p.ProgramFolder / "Empty_RCIR.mdb");
  t.host.saveAnswers.push_back((dir.path() / "new.mdb").string());
  NewDB_Click(p);
  EXPECT_EQ(t.host.messages, Strings{"Could not locate Empty Data base template"});
  EXPECT_FALSE(fs::exists(dir.path() / "new.mdb"));
  ExpectFrame(false, (dir.path() / "new.mdb").string());  // the unmade file fails to open quietly
  EXPECT_FALSE(fs::exists(GeneratedIRDBs())) << "nothing is made without a template";
}

TEST_F(Commands, NewMakesTheFolderOpensATemplateCopyAndKeepsAReplacedFileAsBak) {
  std::string chosen = (dir.path() / "TV.mdb").string();
  t.host.saveAnswers.push_back(chosen);
  NewDB_Click(p);
  ASSERT_EQ(t.host.saveRequests.size(), 1u);
  EXPECT_EQ(t.host.saveRequests[0].filter, "MDB Files (*.mdb)|*.mdb");
  EXPECT_EQ(fs::path(t.host.saveRequests[0].startPath), GeneratedIRDBs() / "*.mdb");
  EXPECT_TRUE(fs::is_directory(GeneratedIRDBs())) << "made even when the file goes elsewhere";
  EXPECT_EQ(test::ReadFileBytes(chosen).substr(0, 4096), test::ReadFileBytes(TemplatePath()).substr(0, 4096));
  ExpectFrame(true, chosen);
  NewDB_Click(p);
  EXPECT_EQ(t.host.saveRequests.size(), 1u) << "New does nothing while a database is open";
  Store("Acme", "TV", "TV100", 12, "Power");
  LoadDB_Click(p);
  const std::string oldBytes = test::ReadFileBytes(chosen);
  t.host.saveAnswers.push_back(chosen);
  NewDB_Click(p);
  EXPECT_EQ(test::ReadFileBytes(dir.path() / "TV.bak"), oldBytes);  // "TV.mdb" less "mdb", plus "bak"
  ASSERT_TRUE(p.DatabaseOpen);
  EXPECT_TRUE(Read("IR Codes", {"Label"}).empty()) << "the new file is the empty template";
  EXPECT_TRUE(t.host.messages.empty());
}

// Acme TV100 (TV, 2 codes), Acme AMP1 (Amplifier, 1 code), Zenith Z1 (TV, 2 codes).
// Allocation order: TV 1, Acme 1, Amplifier 2, Zenith 2; devices 1000, 1001, 1002.
struct Deletes : Commands {
  void SetUp() override {
    Commands::SetUp();
    Open(Fresh());
    Store("Acme", "TV", "TV100", 12, "Power");
    Store("Acme", "TV", "TV100", 13, "Mute");
    Store("Acme", "Amplifier", "AMP1", 21, "Volume");
    Store("Zenith", "TV", "Z1", 12, "Power");
    Store("Zenith", "TV", "Z1", 16, "Channel");
    FillDatabaseLists(p);
  }
  Rows Codes() { return Read("IR Codes", {"DeviceID", "Label"}); }
};

TEST_F(Deletes, SelectingAModelShowsItsOwnerEmptySelectionsAndAnswerNoKeepEverything) {
  p.F.DvcModelList.Select(2);  // Z1: device type 1, manufacturer 2
  DvcModelList_Click(p);
  EXPECT_EQ((Strings{p.F.DvcTypeList.text, p.F.DvcMfglist.text}), (Strings{"TV", "Zenith"}));
  p.F.DvcMfglist.text = p.F.DvcTypeList.text = p.F.DvcModelList.text = "";
  DBmfgDEL_Click(p);
  DBtypDEL_Click(p);  // the type delete checks the manufacturer text
  DBdvcDel_Click(p);
  p.F.DvcMfglist.text = "ACME";
  p.F.DvcTypeList.text = "TV";
  t.host.answers = {MsgBoxResult::No, MsgBoxResult::No};
  DBmfgDEL_Click(p);
  DBtypDEL_Click(p);
  EXPECT_EQ(t.host.messages, (Strings{"No Manufacturer selected, Request Cancelled",
                                      "No Manufacturer selected, Request Cancelled",
                                      "No Device selected, Request Cancelled",
                                      "This will delete all devices of this Manufacturer, Proceed?",
                                      "This will delete all devices of this type, Proceed?"}));
  EXPECT_EQ(std::vector(t.host.styles.begin() + 3, t.host.styles.end()), std::vector(2, MsgBoxStyle::YesNo));
  EXPECT_EQ(Read("Manufacturers", {"name"}).size() + Read("Device Types", {"name"}).size() +
                Read("Devices", {"Model"}).size() + Codes().size(), 12u);
}

TEST_F(Deletes, AManufacturerTakesItsDevicesAndTheirCodesButLeavesTheDeviceTypes) {
  p.F.DvcMfglist.text = "acme";  // any case
  t.host.answers = {MsgBoxResult::Yes};
  DBmfgDEL_Click(p);
  EXPECT_EQ(Read("Manufacturers", {"name", "id"}), (Rows{{"Zenith", "2"}}));
  EXPECT_EQ(Read("Devices", {"DeviceID", "Model"}), (Rows{{"1002", "Z1"}}));
  EXPECT_EQ(Codes(), (Rows{{"1002", "Power"}, {"1002", "Channel"}}));
  EXPECT_EQ(Read("Device Types", {"name"}), (Rows{{"TV"}, {"Amplifier"}}));
  EXPECT_EQ(Lists(), (Rows{{"ZENITH"}, {"TV", "AMPLIFIER"}, {"Z1"}}));
}

TEST_F(Deletes, ADeviceTypeTakesItsDevicesAndTheirCodesButLeavesTheManufacturers) {
  p.F.DvcTypeList.text = "TV";
  t.host.answers = {MsgBoxResult::Yes};
  DBtypDEL_Click(p);
  EXPECT_EQ(Read("Device Types", {"name", "DeviceTypeid"}), (Rows{{"Amplifier", "2"}}));
  EXPECT_EQ(Read("Devices", {"DeviceID", "Model"}), (Rows{{"1001", "AMP1"}}));
  EXPECT_EQ(Codes(), (Rows{{"1001", "Volume"}}));
  EXPECT_EQ(Read("Manufacturers", {"name"}), (Rows{{"Acme"}, {"Zenith"}}));
  EXPECT_EQ(Lists(), (Rows{{"ACME", "ZENITH"}, {"AMPLIFIER"}, {"AMP1"}}));
}

TEST_F(Deletes, AModelGoesWithoutAQuestionWithAllItsRowsButOnlyTheLastRowsCodes) {
  AddDeviceRow(1005, "Tv100");  // a second row of the model: codes now go to it
  Store("Acme", "TV", "TV100", 14, "Input");
  p.F.DvcModelList.text = "tv100";
  DBdvcDel_Click(p);
  EXPECT_TRUE(t.host.messages.empty());
  EXPECT_EQ(Read("Devices", {"DeviceID"}), (Rows{{"1001"}, {"1002"}}));
  EXPECT_EQ(Codes(), (Rows{{"1000", "Power"}, {"1000", "Mute"}, {"1001", "Volume"}, {"1002", "Power"},
                           {"1002", "Channel"}}));
  EXPECT_EQ(Lists(), (Rows{{"ACME", "ZENITH"}, {"TV", "AMPLIFIER"}, {"AMP1", "Z1"}}));
}

// Lead-in, eight device bits, eight function bits, a stop mark.
std::string Protocol(const std::string& name, int frequency, int timebase, const std::string& lead) {
  return "PROTOCOL = " + name + "\r\nFREQUENCY = " + std::to_string(frequency) + "\r\nTIMEBASE = " +
         std::to_string(timebase) + "\r\nONE = 1,-3\r\nZERO = 1,-1\r\nDEFINE LEAD = [" + lead +
         "]\r\nDEFINE STOP = [1]\r\nFORM = LEAD,D:8,F:8,STOP\r\n";
}

std::string Device(const std::string& header, const std::string& protocol, const std::string& code,
                   const std::string& keys) {
  return header + "PROTOCOL = " + protocol + "\r\nDEVICECODE = " + code + "\r\n[KEYCODES]\r\n" + keys;
}

const std::string kAcme = "MANUFACTURER = Acme\r\nDEVICE = TV\r\nMODEL = TV 100\r\n";
const std::string kXantech = "MANUFACTURER = Xantech\r\nDEVICE = Controller\r\nMODEL = RC68\r\n";
const std::string kZones = "Zone 1 = 1\r\nZone 2 = 2\r\n";

// The published switch table: the first digit gives the low four bits, the second the high four.
const int kFirstSwitch[16] = {0, 2, 8, 10, 4, 6, 12, 14, 1, 3, 9, 11, 5, 7, 13, 15};
const int kSecondSwitch[16] = {0, 64, 32, 96, 128, 192, 160, 224, 16, 80, 48, 112, 144, 208, 176, 240};

struct GenerationRun : Commands {
  void SetUp() override {
    Commands::SetUp();
    const std::string lib = "program/Device Library/";
    dir.Write(lib + "testnec.irp", Protocol("TestNEC", 38000, 560, "9000 -4500"));
    dir.Write(lib + "xantech.irp", Protocol("Xantech", 40000, 500, "4000 -2000"));
    dir.Write(lib + "Acme TV.dvc", Device(kAcme, "TestNEC", "4", "Power = 12\r\nVol Up = 16\r\nMute = 13\r\n"));
    dir.Write(lib + "RC68 sweep 1.dvc", Device(kXantech, "Xantech", "*/3", kZones));
    dir.Write(lib + "RC68 sweep 2.dvc", Device(kXantech, "Xantech", "5/*", kZones));
    dir.Write(lib + "RC68 nec.dvc", Device(kXantech, "TestNEC", "*/3", kZones));
    p.DeviceLibraryPath = (p.ProgramFolder / "Device Library").string();
    ListProtocolNames(p);
    ShowProntoOutput(p);
  }
  /// Loads `device` and opens a fresh database `db` ("": none).
  void Load(const std::string& device, const std::string& db = "ir.mdb") {
    LoadDeviceFile(p, device);
    if (!db.empty()) Open(Fresh(db));
    ASSERT_EQ(p.DatabaseOpen, !db.empty());
  }
  Rows Codes() { return Read("IR Codes", {"DeviceID", "ButtonID", "FunctionID", "Label", "FullText"}); }
};

TEST_F(GenerationRun, RefusalsNameTheFirstMissingThingInTheirOrder) {
  Load("Acme TV", "");
  xqtcmd_Click(p);
  EXPECT_EQ(t.host.doEventsCalls, 0);
  Open(Fresh());
  p.ButtonSequence = 5;
  MainForm& f = p.F;
  for (std::vector<std::string*> empty : {std::vector{&f.MFG.text, &f.Model.text}, {&f.Model.text, &f.Device.text},
                                          {&f.Device.text}, {&f.format.text}}) {
    Strings kept;
    for (auto* field : empty) kept.push_back(std::exchange(*field, ""));
    xqtcmd_Click(p);  // only the first empty field is named
    for (size_t i = 0; i < empty.size(); ++i) *empty[i] = kept[i];
  }
  EXPECT_EQ(t.host.messages, (Strings{"No Data base has been selected, Please open a data Base",
                                      "Please Enter the name of the Manufacturer",
                                      "Please Enter the name of the Device Model",
                                      "Please Enter the name of the Device Type", "Please Select the IR Protocol"}));
  EXPECT_TRUE(p.F.xqtcmd.enabled);
  EXPECT_EQ(p.ButtonSequence, 5) << "a refused run leaves the counter";
  EXPECT_TRUE(Read("Devices", {"Model"}).empty());
}

TEST_F(GenerationRun, EveryKeyGoesUnderOneDeviceAndEachRunCountsFromOne) {
  Load("Acme TV");
  bool enabledDuringRun = true;
  t.host.Click([&] { enabledDuringRun = p.F.xqtcmd.enabled; });
  xqtcmd_Click(p);
  EXPECT_TRUE(t.host.messages.empty()) << t.host.LastMessage();
  EXPECT_FALSE(enabledDuringRun);
  EXPECT_TRUE(p.F.xqtcmd.enabled);
  EXPECT_EQ(Read("Manufacturers", {"name", "id"}), (Rows{{"ACME", "1"}}));
  EXPECT_EQ(Read("Device Types", {"name", "DeviceTypeid"}), (Rows{{"TV", "1"}}));
  EXPECT_EQ(Read("Devices", {"DeviceID", "Model", "ManufacturerID", "DeviceTypeid"}),
            (Rows{{"1000", "TV 100", "1", "1"}}));
  EXPECT_EQ(Lists(), (Rows{{"ACME"}, {"TV"}, {"TV 100"}})) << "the lists are filled again";
  // A second run adds rows (the stored FunctionIDs 1..3 never equal the device
  // code 4 the update path compares them with), numbered from 1 again.
  xqtcmd_Click(p);
  // ButtonID is the key's function code, FunctionID the running sequence number.
  const Rows run = {{"1000", "12", "1", "Power", "ACME-TV 100 (4,12)"},
                    {"1000", "16", "2", "Vol Up", "ACME-TV 100 (4,16)"},
                    {"1000", "13", "3", "Mute", "ACME-TV 100 (4,13)"}};
  EXPECT_EQ(Codes(), (Rows{run[0], run[1], run[2], run[0], run[1], run[2]}));
}

TEST_F(GenerationRun, ADatabaseErrorEndsTheRunAndLeavesProcessDisabled) {
  Load("Acme TV");
  p.Database->Close();  // the engine refuses every further access
  EXPECT_FALSE(RunCommand(p, [&] { xqtcmd_Click(p); }));
  ASSERT_EQ(t.host.messages.size(), 1u);
  EXPECT_EQ(t.host.messages[0].rfind("Run-time error '", 0), 0u) << t.host.messages[0];
  EXPECT_FALSE(p.F.xqtcmd.enabled);
}

TEST_F(GenerationRun, SweepOfEitherSwitchMakesSixteenModelsAndKeepsCounting) {
  Load("RC68 sweep 1");
  p.F.xqtcmd.enabled = false;
  p.XantechSweep = 3;  // neither switch: the sweep ends at once
  RunXantechSweep(p);
  EXPECT_FALSE(p.F.xqtcmd.enabled);
  EXPECT_EQ(p.F.Model.text, "RC68");
  EXPECT_TRUE(Read("Devices", {"Model"}).empty());
  for (int sweep : {1, 2}) {
    LoadDB_Click(p);  // closes the database opened before
    Load("RC68 sweep " + std::to_string(sweep), std::to_string(sweep) + ".mdb");
    p.ButtonSequence = 7;
    std::string modelSeenFirst;
    size_t rowsWhenSeen = 99;
    t.host.Click([&] { modelSeenFirst = p.F.Model.text, rowsWhenSeen = Read("IR Codes", {"Label"}).size(); });
    xqtcmd_Click(p);
    EXPECT_TRUE(t.host.messages.empty()) << t.host.LastMessage();
    EXPECT_TRUE(p.F.xqtcmd.enabled);
    // The window shows each name before the model's keys are written.
    EXPECT_EQ(modelSeenFirst, sweep == 1 ? "RC68-0/3" : "RC68-5/0");
    EXPECT_EQ(rowsWhenSeen, 0u);
    Rows devices, codes;
    for (int v = 0; v < 16; ++v) {
      const std::string digit(1, "0123456789ABCDEF"[v]), id = std::to_string(1000 + v);
      const std::string model = sweep == 1 ? "RC68-" + digit + "/3" : "RC68-5/" + digit;
      const int code = sweep == 1 ? kFirstSwitch[v] + kSecondSwitch[3] : kFirstSwitch[5] + kSecondSwitch[v];
      devices.push_back({id, model});
      for (std::string key : {"1", "2"})  // FunctionID keeps counting over the models
        codes.push_back({id, key, std::to_string(7 + 2 * v + std::stoi(key)), "Zone " + key,
                         "XANTECH-" + model + " (" + std::to_string(code) + "," + key + ")"});
    }
    EXPECT_EQ(Read("Devices", {"DeviceID", "Model"}), devices);
    EXPECT_EQ(Codes(), codes);
    EXPECT_EQ(p.F.Model.text, devices.back()[1]);
    EXPECT_EQ(p.ButtonSequence, 39);
    EXPECT_EQ(p.F.DvcModelList.items.at(10), sweep == 1 ? "RC68-A/3" : "RC68-5/A");
  }
  EXPECT_EQ(Codes()[22][4], "XANTECH-RC68-5/B (118,1)");  // first switch 5 -> 6, second B -> 112
}

TEST_F(GenerationRun, AnOpenSwitchWithAnotherProtocolIsOneOrdinaryDevice) {
  Load("RC68 nec");
  xqtcmd_Click(p);
  EXPECT_EQ(Read("Devices", {"Model"}), (Rows{{"RC68"}}));
  // The loader's device code 0 is used as it is.
  EXPECT_EQ(Read("IR Codes", {"FullText"}), (Rows{{"XANTECH-RC68 (0,1)"}, {"XANTECH-RC68 (0,2)"}}));
}

}  // namespace
}  // namespace bw::dbrun
