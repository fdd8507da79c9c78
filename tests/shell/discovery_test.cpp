// Start-up: the window's start state, the Device Library found by walking up
// from the program folder (and the end of the walk at the root), the protocol
// and device lists filled from a real library folder, and the quit path.
#include <gtest/gtest.h>

#include <regex>

#include "shell/startup.h"
#include "support/scripted_host.h"
#include "version.h"

namespace bw {
namespace {

namespace fs = std::filesystem;

TEST(Folders, ParentFolderDropsATrailingSeparatorAndEndsAfterTheRoot) {
  std::string path = "/a/b/";
  EXPECT_EQ(ParentFolder(path), "/a");
  EXPECT_EQ(path, "/a/b") << "the trailing separator is removed from the argument itself";
  path = "relative";
  EXPECT_EQ(ParentFolder(path), "");

  std::vector<std::string> chain;
  for (std::string base = "/x/y"; !base.empty(); base = ParentFolder(base)) {
    chain.push_back(base);
    ASSERT_LT(chain.size(), 10u) << "the walk must end";
  }
  EXPECT_EQ(chain, (std::vector<std::string>{"/x/y", "/x", "/"})) << "the root is tried last";
}

TEST(Folders, FolderExistsAnswersForFoldersOnly) {
  test::TempDir dir;
  auto file = dir.Write("file.txt", "x");
  EXPECT_TRUE(FolderExists(dir.path().string() + "/") && FolderExists("/"));
  EXPECT_FALSE(FolderExists(file.string()) || FolderExists((dir.path() / "missing").string()) || FolderExists(""));
}

struct Startup : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  test::TempDir dir;

  fs::path Library() const { return dir.path() / "Device Library"; }
  void WriteLibrary(const std::string& file, const std::string& text) { dir.Write("Device Library/" + file, text); }
};

// ---- discovery ----

TEST_F(Startup, NearestLibraryAtOrAboveTheProgramFolderIsUsed) {
  fs::create_directories(Library());
  fs::create_directories(dir.path() / "build" / "bin");
  fs::create_directories(dir.path() / "build" / "Device Library x");
  fs::create_directories(dir.path() / "app" / "Device Library");

  p.ProgramFolder = dir.path();
  ASSERT_TRUE(InitializeProgram(p));
  EXPECT_EQ(p.DeviceLibraryPath, Library().string());
  p.ProgramFolder = dir.path() / "build" / "bin" / "";
  ASSERT_TRUE(InitializeProgram(p));
  EXPECT_EQ(p.DeviceLibraryPath, Library().string()) << "two levels up";
  p.ProgramFolder = dir.path() / "app";
  ASSERT_TRUE(InitializeProgram(p));
  EXPECT_EQ(p.DeviceLibraryPath, (dir.path() / "app" / "Device Library").string());
  EXPECT_TRUE(t.host.messages.empty());
}

TEST_F(Startup, NoLibraryUpToTheRootEndsTheProgram) {
  ASSERT_FALSE(fs::exists("/Device Library")) << "this machine has a library at its root";
  ASSERT_FALSE(fs::exists(dir.path().parent_path() / "Device Library"));
  fs::create_directories(dir.path() / "a" / "b");
  for (fs::path start : {dir.path() / "a" / "b", fs::path("/")}) {
    test::TestProgram fresh;
    fresh.p.ProgramFolder = start;
    EXPECT_FALSE(InitializeProgram(fresh.p));
    EXPECT_EQ(fresh.host.messages, std::vector<std::string>{"Can not locate Device Library"}) << start;
    EXPECT_EQ(fresh.host.styles.at(0), MsgBoxStyle::OKOnly);
    EXPECT_TRUE(fresh.host.quitCalled);
    EXPECT_FALSE(fresh.p.F.visible) << "no window stays";
  }
}

// ---- start state and lists ----

TEST_F(Startup, InitializeSetsTheStartStateOfTheWindow) {
  fs::create_directories(Library());
  p.ProgramFolder = dir.path();
  p.CommandLine = "-x /snapshot";
  MainForm& f = p.F;
  // A window left in another state must come back to the start state.
  f.DC.text = f.Model.text = "1";
  f.Output.AddItem("stale");
  f.Slnk.visible = true;
  p.FormatPronto = false;
  p.FormatADI = true;
  f.Lex.listIndex = 3;
  f.LoadDB.caption = "Close";
  p.DatabaseOpen = true;
  f.DvcMfglist.AddItem("Sony");
  p.LastModulationText = "PPM";
  p.Keys.entries.push_back(KeyEntry{});

  ASSERT_TRUE(InitializeProgram(p));
  EXPECT_TRUE(p.SnapMode);
  EXPECT_EQ(f.DC.text + f.Model.text, "");
  EXPECT_EQ(f.Output.items,
            (std::vector<std::string>{"Philips Pronto", "Nirvis TX Only", "Nirvis Tx/Rx", "ADI Leopard"}));
  EXPECT_EQ(f.Output.listIndex, 0);
  EXPECT_FALSE(f.Slnk.visible);
  EXPECT_TRUE(p.FormatPronto);
  EXPECT_FALSE(p.FormatSlinkTxOnly || p.FormatSlinkTxRx || p.FormatADI) << "exactly one format flag";
  EXPECT_EQ(f.Label5.caption + "/" + f.LoadDB.caption, "Select Device/Open");
  EXPECT_EQ(f.Lex.listIndex, -1);
  EXPECT_FALSE(p.DatabaseOpen);
  EXPECT_TRUE(f.DvcMfglist.items.empty());
  EXPECT_FALSE(f.DBmfgDEL.enabled || f.DBtypDEL.enabled || f.DBdvcDel.enabled);
  EXPECT_EQ(p.LastModulationText, "PWM");
  EXPECT_EQ(p.Keys.UpperBound(), 0);

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

TEST_F(Startup, StartProgramListsDevicesUpperCasedAndShowsTheWindow) {
  WriteLibrary("sony tv.dvc", "");
  WriteLibrary("Acme.DVC", "");
  WriteLibrary("notes.txt", "");
  p.ProgramFolder = dir.path();
  p.F.Check1.value = 1;
  p.F.DBI.left = 120;
  ASSERT_TRUE(StartProgram(p));
  EXPECT_EQ(p.F.Lex.items, (std::vector<std::string>{"ACME", "SONY TV"})) << "listed once although listed twice";
  EXPECT_EQ(p.F.Check1.value, 0);
  EXPECT_TRUE(p.F.visible);
  EXPECT_EQ(p.F.Slnk.left + p.F.ADI.left, 240) << "the three panels overlap";

  fs::remove(Library() / "sony tv.dvc");
  fs::remove(Library() / "Acme.DVC");
  ListDeviceFiles(p);
  EXPECT_TRUE(p.F.Lex.items.empty()) << "an empty library is no error";
}

TEST_F(Startup, FormLoadSizesCentresAndCaptions) {
  Form_Load(p, 19200, 14400);
  EXPECT_EQ(p.F.width, 8900);
  EXPECT_EQ(p.F.left, 5150);                        // (19200 - 8900) / 2
  EXPECT_EQ(p.F.top, (14400 - p.F.height) / 2);
  // The numbers come from the build; the frame around them is fixed, without blanks in the numbers.
  EXPECT_TRUE(std::regex_match(p.F.caption, std::regex(R"(Pronto Burstwright Version\(\d+\.\d+ R\d+\))")))
      << p.F.caption;
  EXPECT_NE(p.F.caption.find("(" + std::to_string(version::kMajor) + "."), std::string::npos);
}

// ---- quitting ----

TEST_F(Startup, QuitAndClosingTheWindowCloseTheDatabaseAndEndTheProgram) {
  p.DatabaseOpen = true;
  p.F.visible = true;
  quit_Click(p);
  EXPECT_FALSE(p.DatabaseOpen);
  EXPECT_TRUE(t.host.quitCalled && p.QuitRequested);
  EXPECT_FALSE(p.F.visible);

  test::TestProgram other;
  Form_QueryUnload(other.p);
  EXPECT_TRUE(other.host.quitCalled && other.p.QuitRequested);
}

}  // namespace
}  // namespace bw
