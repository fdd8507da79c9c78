// The record editor of the ADI frame: Open, Save with its overwrite question,
// Prior/Next at the ends, RPL without the changed flag, Del, New and Done.
#include <gtest/gtest.h>

#include <cstdlib>

#include "adi/adi.h"
#include "adi/lir_test_support.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

using test::NamedRecord;

struct Editor : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  test::TempDir dir;

  void SetUp() override { p.ProgramFolder = dir.path() / "program"; }

  /// A file of `names.size()` records written directly, byte by byte.
  std::string MakeFile(const std::string& file, std::initializer_list<std::string> names) {
    std::string bytes;
    for (const auto& n : names) {
      std::string rec(256, '\0');
      std::string padded = n + std::string(32 - n.size(), ' ');
      rec.replace(224, 32, padded);
      bytes += rec;
    }
    return dir.Write(file, bytes).string();
  }
  void Open(const std::string& path) {
    t.host.openAnswers.push_back(path);
    cmdADIOpen_Click(p);
  }
};

TEST_F(Editor, OpenAsksInTheHomeFolderLoadsAndSetsTheButtons) {
  std::string file = MakeFile("tv.lir", {"ACME/TV:POWER", "ACME/TV:MUTE", "ACME/TV:VOL+"});
  ShowADIOptions(p);
  p.Lir.Changed = true;
  Open(file);
  ASSERT_EQ(t.host.openRequests.size(), 1u);
  EXPECT_EQ(t.host.openRequests[0].filter, "LIR Files (*.lir)|*.lir");
  const char* home = std::getenv("HOME");
  ASSERT_NE(home, nullptr);
  EXPECT_EQ(t.host.openRequests[0].startPath, (std::filesystem::path(home) / "*.lir").string());

  const MainForm& f = p.F;
  EXPECT_EQ(f.ADIFileName.text, file);
  EXPECT_EQ(f.adiFsize.caption, "3");
  EXPECT_EQ(f.ADIRecnmb.text, "1");
  EXPECT_EQ(f.ADIFileDevice.text, "ACME/TV");
  EXPECT_EQ(f.AdiFileKey.text, "POWER");
  EXPECT_FALSE(p.Lir.Changed);
  for (const Button* b : {&f.cmdADIxqt, &f.cmdADIsave, &f.CmdADIadd, &f.cmdadiDelete, &f.cmdADIrpl, &f.cmdADINext,
                          &f.cmdADIprior})
    EXPECT_TRUE(b->enabled) << b->caption;
  for (const Button* b : {&f.cmdADInxtKey, &f.cmdadiall, &f.cmdAdiNew, &f.cmdADIOpen})
    EXPECT_FALSE(b->enabled) << b->caption;
}

TEST_F(Editor, CancelledOpenChangesNothing) {
  p.F.ADIFileName.text = "NEW";
  cmdADIOpen_Click(p);
  EXPECT_EQ(p.F.ADIFileName.text, "NEW");
  EXPECT_TRUE(p.F.cmdADIOpen.enabled);
}

TEST_F(Editor, PriorOnTheFirstAndNextOnTheLastDoNothing) {
  Open(MakeFile("tv.lir", {"A:ONE", "A:TWO"}));
  cmdADIprior_Click(p);
  EXPECT_EQ(p.Lir.Current, 1);
  EXPECT_EQ(p.F.AdiFileKey.text, "ONE");
  cmdADINext_Click(p);
  EXPECT_EQ(p.Lir.Current, 2);
  EXPECT_EQ(p.F.ADIRecnmb.text, "2");
  EXPECT_EQ(p.F.AdiFileKey.text, "TWO");
  cmdADINext_Click(p);
  EXPECT_EQ(p.Lir.Current, 2);
  cmdADIprior_Click(p);
  EXPECT_EQ(p.Lir.Current, 1);
  EXPECT_EQ(p.F.ADIRecnmb.text, "1");
  EXPECT_EQ(p.F.AdiFileKey.text, "ONE");
}

TEST_F(Editor, ReplaceOverwritesTheCurrentRecordWithoutSettingChanged) {
  Open(MakeFile("tv.lir", {"A:ONE", "A:TWO"}));
  cmdADINext_Click(p);
  p.CurrentLirRecord = NamedRecord("B:NEW", 120);
  cmdADIrpl_Click(p);
  EXPECT_EQ(test::NameOf(p.Lir.records[2]).substr(0, 5), "B:NEW");
  EXPECT_EQ(p.Lir.records[2].CarrierByte, 120);
  EXPECT_EQ(test::NameOf(p.Lir.records[1]).substr(0, 5), "A:ONE");
  EXPECT_EQ(p.F.AdiFileKey.text, "NEW");
  EXPECT_FALSE(p.Lir.Changed);
}

TEST_F(Editor, DeleteShiftsLaterRecordsDownAndKeepsTheNumber) {
  Open(MakeFile("tv.lir", {"A:ONE", "A:TWO", "A:THREE"}));
  cmdADINext_Click(p);
  cmdadiDelete_Click(p);
  ASSERT_EQ(p.Lir.UpperBound(), 2);
  EXPECT_EQ(p.Lir.Current, 2);
  EXPECT_EQ(p.F.AdiFileKey.text, "THREE");
  EXPECT_EQ(p.F.adiFsize.caption, "2");
  EXPECT_TRUE(p.Lir.Changed);
  // Deleting the last record makes the new last one current.
  cmdadiDelete_Click(p);
  ASSERT_EQ(p.Lir.UpperBound(), 1);
  EXPECT_EQ(p.Lir.Current, 1);
  EXPECT_EQ(p.F.ADIRecnmb.text, "1");
  EXPECT_EQ(p.F.AdiFileKey.text, "ONE");
}

TEST_F(Editor, DeletingTheOnlyRecordLeavesAnEmptyTableAtNumberZero) {
  Open(MakeFile("tv.lir", {"A:ONE"}));
  cmdadiDelete_Click(p);
  EXPECT_EQ(p.Lir.UpperBound(), 0);
  EXPECT_EQ(p.Lir.Current, 0);
  EXPECT_EQ(p.F.ADIRecnmb.text, "0");
  EXPECT_EQ(p.F.adiFsize.caption, "0");
  EXPECT_EQ(p.F.AdiFileKey.text, "??????????");
  EXPECT_TRUE(p.Lir.Changed);
}

TEST_F(Editor, SavingANewTableAsksInTheAdiLibraryAndCreatesIt) {
  cmdAdiNew_Click(p);
  p.CurrentLirRecord = NamedRecord("A:ONE", 120);
  AddLirRecord(p);
  auto folder = p.ProgramFolder / "ADI Library";
  ASSERT_FALSE(std::filesystem::exists(folder));
  t.host.saveAnswers.push_back((folder / "mine").string());
  cmdADIsave_Click(p);
  ASSERT_EQ(t.host.saveRequests.size(), 1u);
  EXPECT_EQ(t.host.saveRequests[0].filter, "LIR Files (*.lir)|*.lir");
  EXPECT_EQ(t.host.saveRequests[0].startPath, (folder / "*.lir").string());
  EXPECT_TRUE(std::filesystem::is_directory(folder));
  EXPECT_EQ(p.F.ADIFileName.text, (folder / "mine.lir").string()) << "a name without extension gets .lir";
  EXPECT_EQ(test::ReadFileBytes(folder / "mine.lir").size(), 256u);
  EXPECT_TRUE(t.host.messages.empty()) << "a new file needs no question";
}

TEST_F(Editor, CancelledSaveDialogWritesNothing) {
  cmdAdiNew_Click(p);
  AddLirRecord(p);
  cmdADIsave_Click(p);
  EXPECT_EQ(p.F.ADIFileName.text, "NEW");
  EXPECT_TRUE(p.Lir.Changed);
  EXPECT_TRUE(std::filesystem::is_empty(p.ProgramFolder / "ADI Library"));
}

TEST_F(Editor, OverwritingAnExistingFileNeedsYes) {
  std::string file = MakeFile("tv.lir", {"A:ONE", "A:TWO"});
  Open(file);
  cmdadiDelete_Click(p);  // now only "A:TWO", changed
  for (MsgBoxResult answer : {MsgBoxResult::No, MsgBoxResult::Cancel}) {
    t.host.answers.push_back(answer);
    cmdADIsave_Click(p);
    EXPECT_EQ(t.host.LastMessage(), file + " Already exists\r\nDo you wish to write Over it?");
    EXPECT_EQ(t.host.styles.back(), MsgBoxStyle::YesNoCancel);
    EXPECT_EQ(test::ReadFileBytes(file).substr(224, 5), "A:ONE") << "nothing written";
    EXPECT_TRUE(p.Lir.Changed);
  }
  t.host.answers.push_back(MsgBoxResult::Yes);
  cmdADIsave_Click(p);
  std::string bytes = test::ReadFileBytes(file);
  EXPECT_EQ(bytes.substr(224, 5), "A:TWO");
  EXPECT_EQ(bytes.size(), 512u) << "the old second record stays behind the new first";
  EXPECT_TRUE(t.host.saveRequests.empty()) << "a named file is saved without a dialog";
}

TEST_F(Editor, NewStartsAnEmptyNamelessTable) {
  ShowADIOptions(p);
  p.Lir.records.push_back(NamedRecord("A:OLD"));
  cmdAdiNew_Click(p);
  const MainForm& f = p.F;
  EXPECT_EQ(f.ADIFileName.text, "NEW");
  EXPECT_EQ(p.Lir.UpperBound(), 0);
  EXPECT_TRUE(f.cmdADIxqt.enabled);
  EXPECT_TRUE(f.cmdADIsave.enabled);
  for (const Button* b : {&f.cmdADInxtKey, &f.cmdadiall, &f.cmdAdiNew, &f.cmdADIOpen})
    EXPECT_FALSE(b->enabled) << b->caption;
}

TEST_F(Editor, DoneSavesAChangedTableThenQuits) {
  std::string file = MakeFile("tv.lir", {"A:ONE"});
  Open(file);
  cmdADIdone_Click(p);
  EXPECT_TRUE(t.host.messages.empty()) << "an unchanged table is not saved";
  EXPECT_TRUE(t.host.quitCalled);

  t.host.quitCalled = false;
  p.CurrentLirRecord = NamedRecord("A:TWO");
  AddLirRecord(p);
  t.host.answers.push_back(MsgBoxResult::Yes);
  cmdADIdone_Click(p);
  EXPECT_EQ(test::ReadFileBytes(file).size(), 512u);
  EXPECT_TRUE(t.host.quitCalled);
}

TEST_F(Editor, AddAppendsTheGeneratedRecordAndShowsIt) {
  Open(MakeFile("tv.lir", {"A:ONE"}));
  p.CurrentLirRecord = NamedRecord("B/X:TWO");
  CmdADIadd_Click(p);
  ASSERT_EQ(p.Lir.UpperBound(), 2);
  EXPECT_EQ(test::NameOf(p.Lir.records[2]).substr(0, 7), "B/X:TWO");
  EXPECT_EQ(p.F.ADIRecnmb.text, "2");
  EXPECT_EQ(p.F.adiFsize.caption, "2");
  EXPECT_EQ(p.F.ADIFileDevice.text, "B/X");
  EXPECT_TRUE(p.Lir.Changed);
  EXPECT_EQ(p.AdiKeyChoice, 1);
}

}  // namespace
}  // namespace bw
