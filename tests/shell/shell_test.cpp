// Start-up (the window's start state, the Device Library found by walking up from the program folder, the
// protocol and device lists from a real library folder), the quit path and the command wrapper.
#include <gtest/gtest.h>

#include <regex>

#include "runtime/run_time_error.h"
#include "shell/command.h"
#include "shell/startup.h"
#include "support/scripted_host.h"
#include "version.h"

namespace bw {
namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

struct Startup : test::LibraryTest {
  fs::path Library() const { return dir.path() / "Device Library"; }
};

TEST_F(Startup, NearestLibraryAtOrAboveTheProgramFolderIsUsed) {
  for (fs::path folder : {Library(), dir.path() / "build" / "bin", dir.path() / "build" / "Device Library x",
                          dir.path() / "app" / "Device Library"})
    fs::create_directories(folder);
  const std::pair<fs::path, fs::path> cases[] = {{dir.path(), Library()},
                                                 {dir.path() / "build" / "bin" / "", Library()},  // two levels up
                                                 {dir.path() / "app", dir.path() / "app" / "Device Library"}};
  for (const auto& [start, library] : cases) {
    p.ProgramFolder = start;
    ASSERT_TRUE(InitializeProgram(p)) << start;
    EXPECT_EQ(p.DeviceLibraryPath, library.string());
  }
  EXPECT_TRUE(t.host.messages.empty());
  // the walk: ParentFolder drops a trailing separator and ends after the root
  std::string path = "/a/b/", relative = "relative";
  const std::string parent = ParentFolder(path);
  EXPECT_EQ(parent + "|" + path + "|" + ParentFolder(relative), "/a|/a/b|")
      << "the trailing separator is removed from the argument itself";
  Strings chain;
  for (std::string base = "/x/y"; !base.empty() && chain.size() < 10; base = ParentFolder(base)) chain.push_back(base);
  EXPECT_EQ(chain, (Strings{"/x/y", "/x", "/"})) << "the root is tried last";
  auto file = dir.Write("file.txt", "x");
  EXPECT_TRUE(FolderExists(dir.path().string() + "/") && FolderExists("/"));
  EXPECT_FALSE(FolderExists(file.string()) || FolderExists((dir.path() / "missing").string()) || FolderExists(""));
}

TEST_F(Startup, NoLibraryUpToTheRootEndsTheProgram) {
  ASSERT_FALSE(fs::exists("/Device Library") || fs::exists(dir.path().parent_path() / "Device Library"))
      << "this machine has a library where the walk passes";
  fs::create_directories(dir.path() / "a" / "b");
  for (fs::path start : {dir.path() / "a" / "b", fs::path("/")}) {
    test::TestProgram fresh;
    fresh.p.ProgramFolder = start;
    EXPECT_FALSE(InitializeProgram(fresh.p));
    EXPECT_EQ(fresh.host.messages, Strings{"Can not locate Device Library"}) << start;
    EXPECT_EQ(fresh.host.styles.at(0), MsgBoxStyle::OKOnly);
    EXPECT_TRUE(fresh.host.quitCalled && !fresh.p.F.visible) << "no window stays";
  }
}

TEST_F(Startup, InitializeBringsAnyWindowBackToTheStartState) {
  fs::create_directories(Library());
  p.CommandLine = "-x /snapshot";
  MainForm& f = p.F;
  f.DC.text = f.Model.text = "1";
  f.Output.AddItem("stale");
  f.Slnk.visible = p.FormatADI = p.DatabaseOpen = true;
  p.FormatPronto = false;
  f.Lex.listIndex = 3;
  f.LoadDB.caption = "Close";
  f.DvcMfglist.AddItem("Sony");
  p.LastModulationText = "PPM";
  p.Keys.entries.push_back(KeyEntry{});
  ASSERT_TRUE(InitializeProgram(p));
  EXPECT_EQ(f.Output.items, (Strings{"Philips Pronto", "Nirvis TX Only", "Nirvis Tx/Rx", "ADI Leopard"}));
  EXPECT_EQ(f.DC.text + f.Model.text + "|" + f.Label5.caption + "/" + f.LoadDB.caption + "|" + p.LastModulationText,
            "|Select Device/Open|PWM");
  EXPECT_EQ((std::vector<int>{f.Output.listIndex, f.Lex.listIndex, p.Keys.UpperBound()}), (std::vector<int>{0, -1, 0}));
  EXPECT_TRUE(p.SnapMode && p.FormatPronto && f.DvcMfglist.items.empty());
  EXPECT_FALSE(p.FormatSlinkTxOnly || p.FormatSlinkTxRx || p.FormatADI) << "exactly one format flag";
  EXPECT_FALSE(f.Slnk.visible || p.DatabaseOpen || f.DBmfgDEL.enabled || f.DBtypDEL.enabled || f.DBdvcDel.enabled);
  p.CommandLine = "-x /sna p";
  ASSERT_TRUE(InitializeProgram(p));
  EXPECT_FALSE(p.SnapMode);
}

TEST_F(Startup, ListsComeFromTheLibraryAndStartProgramShowsTheWindow) {
  WriteLibrary("a.irp", "' RC5\r\n\r\nPROTOCOL = rc5\r\nPROTOCOL = other\r\n");
  WriteLibrary("b.IRP", "; comment\r\nFORMAT NEC\r\nFORM = D:8\r\n");
  WriteLibrary("c.irp", "FORM = D:8\r\nFREQUENCY = 38000\r\n");
  WriteLibrary("d.irp", "protocol = Sony 12\r\n");
  for (const char* file : {"e.txt", "sony tv.dvc", "Acme.DVC"}) WriteLibrary(file, "PROTOCOL = Not an irp\r\n");
  p.F.Check1.value = 1;
  p.F.DBI.left = 120;
  ASSERT_TRUE(StartProgram(p));
  EXPECT_EQ(p.F.format.items, (Strings{"RC5", "NEC", "SONY 12"})) << "the first naming line of each file";
  EXPECT_EQ(p.F.Lex.items, (Strings{"ACME", "SONY TV"})) << "listed once although listed twice";
  EXPECT_TRUE(p.F.Check1.value == 0 && p.F.visible);
  EXPECT_EQ(p.F.Slnk.left + p.F.ADI.left, 240) << "the three panels overlap";
  for (const char* file : {"sony tv.dvc", "Acme.DVC"}) fs::remove(Library() / file);
  ListDeviceFiles(p);
  EXPECT_TRUE(p.F.Lex.items.empty()) << "an empty library is no error";
}

TEST_F(Startup, FormLoadSizesCentresAndCaptionsAndQuitEndsTheProgram) {
  Form_Load(p, 19200, 14400);
  EXPECT_EQ((std::vector<int>{p.F.width, p.F.left, p.F.top}), (std::vector<int>{8900, 5150, (14400 - p.F.height) / 2}));
  // The numbers come from the build; the frame around them is fixed, without blanks in the numbers.
  EXPECT_TRUE(std::regex_match(p.F.caption, std::regex(R"(Pronto Burstwright Version\(\d+\.\d+ R\d+\))")))
      << p.F.caption;
  EXPECT_NE(p.F.caption.find("(" + std::to_string(version::kMajor) + "."), std::string::npos);
  // quitting and closing the window close the database and end the program
  p.DatabaseOpen = p.F.visible = true;
  quit_Click(p);
  EXPECT_FALSE(p.DatabaseOpen || p.F.visible);
  EXPECT_TRUE(t.host.quitCalled && p.QuitRequested);
  test::TestProgram other;
  Form_QueryUnload(other.p);
  EXPECT_TRUE(other.host.quitCalled && other.p.QuitRequested);
}

TEST(RunCommand, ShowsNumberBlankLineAndDescriptionAndLeavesOtherExceptionsAlone) {
  test::TestProgram t;
  EXPECT_TRUE(RunCommand(t.p, [] {}));  // and no message: the list below holds only the error's
  t.host.SetBusy(true);
  EXPECT_FALSE(RunCommand(t.p, [] { ThrowOverflow(); }));
  EXPECT_EQ(t.host.messages, std::vector<std::string>{"Run-time error '6':\r\n\r\nOverflow"});
  EXPECT_FALSE(t.host.busy) << "an error must not leave the hourglass on";
  EXPECT_THROW(RunCommand(t.p, [] { throw test::ScriptExhausted(); }), test::ScriptExhausted);
}

}  // namespace
}  // namespace bw
