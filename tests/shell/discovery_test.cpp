// Start-up: the window's start state, the Device Library found by walking up
// from the program folder (and the end of the walk at the root), the protocol
// and device lists filled from a real library folder, and the quit path.
#include <gtest/gtest.h>

#include "shell/startup.h"
#include "support/scripted_host.h"
#include "version.h"

namespace bw {
namespace {

namespace fs = std::filesystem;

// ---- folders ----

TEST(ParentFolder, CutsAtTheLastSeparatorAfterDroppingATrailingOne) {
  std::string path = "/a/b/";
  EXPECT_EQ(ParentFolder(path), "/a");
  EXPECT_EQ(path, "/a/b") << "the trailing separator is removed from the argument itself";
  path = "/a/b";
  EXPECT_EQ(ParentFolder(path), "/a");
}

TEST(ParentFolder, WalkFromAnyPathEndsAfterTheRoot) {
  std::string path = "/a";
  EXPECT_EQ(ParentFolder(path), "/") << "the root is a folder to try";
  path = "/";
  EXPECT_EQ(ParentFolder(path), "");
  path = "";
  EXPECT_EQ(ParentFolder(path), "");
  path = "relative";
  EXPECT_EQ(ParentFolder(path), "");

  std::vector<std::string> chain;
  for (std::string base = "/x/y/z/"; !base.empty(); base = ParentFolder(base)) {
    chain.push_back(base);
    ASSERT_LT(chain.size(), 10u) << "the walk must end";
  }
  EXPECT_EQ(chain, (std::vector<std::string>{"/x/y/z/", "/x/y", "/x", "/"}));
}

TEST(FolderExists, AnswersForFoldersOnly) {
  test::TempDir dir;
  auto file = dir.Write("file.txt", "x");
  EXPECT_TRUE(FolderExists(dir.path().string()));
  EXPECT_TRUE(FolderExists(dir.path().string() + "/"));
  EXPECT_TRUE(FolderExists("/"));
  EXPECT_FALSE(FolderExists(file.string()));
  EXPECT_FALSE(FolderExists((dir.path() / "missing").string()));
  EXPECT_FALSE(FolderExists(""));
}

// ---- start-up ----

struct Startup : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  test::TempDir dir;

  fs::path Library() const { return dir.path() / "Device Library"; }
  void WriteLibrary(const std::string& file, const std::string& text) { dir.Write("Device Library/" + file, text); }
};

TEST_F(Startup, LibraryInTheProgramFolderIsUsed) {
  fs::create_directories(Library());
  p.ProgramFolder = dir.path();
  ASSERT_TRUE(InitializeProgram(p));
  EXPECT_EQ(p.DeviceLibraryPath, Library().string());
  EXPECT_TRUE(t.host.messages.empty());
}

TEST_F(Startup, LibraryTwoLevelsUpIsFound) {
  fs::create_directories(Library());
  fs::create_directories(dir.path() / "build" / "bin");
  fs::create_directories(dir.path() / "build" / "Device Library x");
  p.ProgramFolder = dir.path() / "build" / "bin" / "";
  ASSERT_TRUE(InitializeProgram(p));
  EXPECT_EQ(p.DeviceLibraryPath, Library().string());
}

TEST_F(Startup, NearestLibraryWins) {
  fs::create_directories(Library());
  fs::create_directories(dir.path() / "app" / "Device Library");
  p.ProgramFolder = dir.path() / "app";
  ASSERT_TRUE(InitializeProgram(p));
  EXPECT_EQ(p.DeviceLibraryPath, (dir.path() / "app" / "Device Library").string());
}

TEST_F(Startup, NoLibraryUpToTheRootEndsTheProgram) {
  ASSERT_FALSE(fs::exists("/Device Library")) << "this machine has a library at its root";
  ASSERT_FALSE(fs::exists(dir.path().parent_path() / "Device Library"));
  fs::create_directories(dir.path() / "a" / "b");
  p.ProgramFolder = dir.path() / "a" / "b";
  EXPECT_FALSE(InitializeProgram(p));
  ASSERT_EQ(t.host.messages.size(), 1u);
  EXPECT_EQ(t.host.messages[0], "Can not locate Device Library");
  EXPECT_EQ(t.host.styles[0], MsgBoxStyle::OKOnly);
  EXPECT_TRUE(t.host.quitCalled);
  EXPECT_TRUE(p.DeviceLibraryPath.empty());
  EXPECT_FALSE(p.F.visible) << "no window stays";
}

TEST_F(Startup, ProgramAtTheRootWithoutLibraryEnds) {
  ASSERT_FALSE(fs::exists("/Device Library"));
  p.ProgramFolder = "/";
  EXPECT_FALSE(InitializeProgram(p));
  EXPECT_EQ(t.host.LastMessage(), "Can not locate Device Library");
}

TEST_F(Startup, InitializeSetsTheStartStateOfTheWindow) {
  fs::create_directories(Library());
  p.ProgramFolder = dir.path();
  MainForm& f = p.F;
  f.DC.text = "1";
  f.FFC.text = "2";
  f.LFC.text = "3";
  f.Model.text = "M";
  f.Output.AddItem("stale");
  f.DBI.visible = false;
  f.Slnk.visible = true;
  f.ADI.visible = true;
  p.FormatPronto = false;
  p.FormatADI = true;
  f.Lex.listIndex = 3;
  f.Autogen.value = 1;
  f.LoadDB.caption = "Close";
  p.DatabaseOpen = true;
  f.DvcMfglist.AddItem("Sony");
  f.dbname.text = "x.mdb";
  p.LastModulationText = "PPM";
  p.LastBitOrderText = "MSB";
  p.Keys.entries.push_back(KeyEntry{});

  ASSERT_TRUE(InitializeProgram(p));
  EXPECT_EQ(f.DC.text + f.FFC.text + f.LFC.text + f.Model.text, "");
  EXPECT_EQ(f.Output.items,
            (std::vector<std::string>{"Philips Pronto", "Nirvis TX Only", "Nirvis Tx/Rx", "ADI Leopard"}));
  EXPECT_EQ(f.Output.listIndex, 0);
  EXPECT_TRUE(f.DBI.visible);
  EXPECT_FALSE(f.Slnk.visible);
  EXPECT_FALSE(f.ADI.visible);
  EXPECT_TRUE(p.FormatPronto);
  EXPECT_FALSE(p.FormatSlinkTxOnly || p.FormatSlinkTxRx || p.FormatADI) << "exactly one format flag";
  EXPECT_EQ(f.Label5.caption, "Select Device");
  EXPECT_EQ(f.Lex.listIndex, -1);
  EXPECT_EQ(f.Autogen.value, 0);
  EXPECT_EQ(f.LoadDB.caption, "Open");
  EXPECT_FALSE(p.DatabaseOpen);
  EXPECT_TRUE(f.DvcMfglist.items.empty());
  EXPECT_EQ(f.dbname.text, "");
  EXPECT_FALSE(f.DBmfgDEL.enabled || f.DBtypDEL.enabled || f.DBdvcDel.enabled);
  EXPECT_EQ(p.LastModulationText, "PWM");
  EXPECT_EQ(p.LastBitOrderText, "LSB");
  EXPECT_EQ(p.Keys.UpperBound(), 0);
  EXPECT_TRUE(f.visible);
}

TEST_F(Startup, SnapModeComesFromTheCommandLineInAnyCase) {
  fs::create_directories(Library());
  p.ProgramFolder = dir.path();
  p.CommandLine = "-x /snapshot";
  ASSERT_TRUE(InitializeProgram(p));
  EXPECT_TRUE(p.SnapMode);
  p.CommandLine = "-x /sna p";
  ASSERT_TRUE(InitializeProgram(p));
  EXPECT_FALSE(p.SnapMode);
}

TEST_F(Startup, ProtocolNamesComeFromTheFirstNamingLineOfEachFile) {
  WriteLibrary("a.irp", "' RC5\r\n\r\nPROTOCOL = rc5\r\nPROTOCOL = other\r\n");
  WriteLibrary("b.IRP", "; comment\r\nFORMAT NEC\r\nFORM = D:8\r\n");
  WriteLibrary("c.irp", "FORM = D:8\r\nFREQUENCY = 38000\r\n");
  WriteLibrary("d.irp", "protocol = Sony 12\r\n");
  WriteLibrary("e.txt", "PROTOCOL = Not a protocol file\r\n");
  p.ProgramFolder = dir.path();
  ASSERT_TRUE(InitializeProgram(p));
  EXPECT_EQ(p.F.format.items, (std::vector<std::string>{"RC5", "NEC", "SONY 12"}));
}

TEST_F(Startup, DeviceFilesAreListedUpperCasedWithoutExtension) {
  WriteLibrary("sony tv.dvc", "");
  WriteLibrary("Acme.DVC", "");
  WriteLibrary("notes.txt", "");
  p.ProgramFolder = dir.path();
  ASSERT_TRUE(InitializeProgram(p));
  EXPECT_EQ(p.F.Lex.items, (std::vector<std::string>{"ACME", "SONY TV"}));
  EXPECT_EQ(p.F.Lex.listIndex, -1);
}

TEST_F(Startup, EmptyLibraryGivesEmptyLists) {
  fs::create_directories(Library());
  p.ProgramFolder = dir.path();
  ASSERT_TRUE(InitializeProgram(p));
  EXPECT_TRUE(p.F.Lex.items.empty());
  EXPECT_TRUE(p.F.format.items.empty());
  EXPECT_TRUE(t.host.messages.empty());
}

TEST_F(Startup, FormLoadSizesCentresAndCaptions) {
  p.F.DBI.left = 120;
  p.F.Slnk.left = 5000;
  p.F.ADI.left = 9000;
  Form_Load(p, 19200, 14400);
  EXPECT_EQ(p.F.width, 8900);
  EXPECT_EQ(p.F.left, (19200 - 8900) / 2);
  EXPECT_EQ(p.F.top, (14400 - p.F.height) / 2);
  EXPECT_EQ(p.F.caption, "Pronto Burstwright Version(" + std::to_string(version::kMajor) + "." +
                             std::to_string(version::kMinor) + " R" + std::to_string(version::kRevision) + ")");
  EXPECT_EQ(p.F.Slnk.left, 120);
  EXPECT_EQ(p.F.ADI.left, 120);
}

TEST_F(Startup, StartProgramShowsTheWindowWithDetailsOff) {
  WriteLibrary("tv.dvc", "");
  p.ProgramFolder = dir.path();
  p.F.Check1.value = 1;
  ASSERT_TRUE(StartProgram(p));
  EXPECT_EQ(p.F.Check1.value, 0);
  EXPECT_TRUE(p.F.visible);
  EXPECT_EQ(p.F.width, 8900);
  EXPECT_EQ(p.F.Lex.items, std::vector<std::string>{"TV"}) << "listed once although listed twice";
}

// ---- events ----

TEST_F(Startup, QuitClosesAnOpenDatabaseAndEndsTheProgram) {
  p.DatabaseOpen = true;
  p.F.visible = true;
  quit_Click(p);
  EXPECT_FALSE(p.DatabaseOpen);
  EXPECT_TRUE(t.host.quitCalled);
  EXPECT_TRUE(p.QuitRequested);
  EXPECT_FALSE(p.F.visible);
}

TEST_F(Startup, ClosingTheWindowQuitsLikeTheButton) {
  Form_QueryUnload(p);
  EXPECT_TRUE(t.host.quitCalled);
  EXPECT_TRUE(p.QuitRequested);
  EXPECT_TRUE(t.host.messages.empty());
}

TEST_F(Startup, TimerFiresOnceAndCheck1ChangesNothing) {
  p.F.Timer1.enabled = true;
  Timer1_Timer(p);
  EXPECT_FALSE(p.F.Timer1.enabled);
  p.F.Check1.value = 1;
  Check1_Click(p);
  EXPECT_EQ(p.F.Check1.value, 1);
}

}  // namespace
}  // namespace bw
