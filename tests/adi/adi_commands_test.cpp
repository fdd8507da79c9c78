// The ADI frame's commands with buttons pressed through the scripted host while
// a run waits (Add, Next Key, All Keys, the details dialog's Next/Skip/Finish),
// the record editor, and a whole run over a device from a Device Library.
#include <gtest/gtest.h>

#include "adi/adi.h"
#include "adi/lir_test_support.h"
#include "details/details.h"
#include "input/device_file.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

struct Adi : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  test::TempDir dir;

  void SetUp() override {
    p.ProgramFolder = dir.path();
    ShowADIOptions(p);
    cmdAdiNew_Click(p);
    p.Protocol.Frequency = 38000;
    p.F.MFG.text = "Acme";
    p.F.Model.text = "TV";
    test::SetKeys(p, {"One", "Two", "Three", "Four"});
  }
  void Press(void (*handler)(Program&)) {
    t.host.Click([this, handler] { handler(p); });
  }
  /// Hands keys 1..last to the writer as the key generator does; key k is a k * 40 µs mark.
  void WriteKeys(int last) {
    for (int k = 1; k <= last; ++k) {
      test::SetBurst(p, {k * 40});
      WriteADIEntry(p, k, 0);
    }
  }
  /// Key parts of the table's names ("ACME/TV:" cut off).
  std::vector<std::string> Added() const {
    std::vector<std::string> keys;
    for (int i = 1; i <= p.Lir.UpperBound(); ++i) {
      std::string name = test::NameOf(p.Lir.records[i]);
      keys.push_back(name.substr(8, name.find(' ') - 8));
    }
    return keys;
  }
  std::string File(std::initializer_list<std::string> names) {
    std::string bytes;
    for (const auto& n : names) bytes += std::string(224, '\0') + n + std::string(32 - n.size(), ' ');
    return dir.Write("tv.lir", bytes).string();
  }
  void Open(const std::string& path) {
    t.host.openAnswers.push_back(path);
    cmdADIOpen_Click(p);
  }
};

TEST_F(Adi, AllKeysAddsTheWaitingKeyAndEveryLaterOneWithoutWaiting) {
  Press(cmdADInxtKey_Click);
  Press(cmdadiall_Click);
  WriteKeys(4);
  EXPECT_EQ(Added(), std::vector<std::string>({"TWO", "THREE", "FOUR"}));
  EXPECT_EQ(t.host.doEventsCalls, 2) << "keys 3 and 4 must not wait";
  EXPECT_EQ(p.Lir.records[2].PulseBytes[0], 128 + 3 + 2) << "key 3: (120 + 39) / 40 = 3 units";
}

TEST_F(Adi, AddDuringTheWaitAddsExactlyOneRecord) {
  t.host.Click([] {});  // an event that chooses nothing: still waiting
  Press(CmdADIadd_Click);
  Press(CmdADIadd_Click);
  WriteKeys(2);
  EXPECT_EQ(Added(), std::vector<std::string>({"ONE", "TWO"}));
  EXPECT_EQ(p.F.adiFsize.caption, "2");
  EXPECT_EQ(p.F.ADIRecnmb.text, "2");
  EXPECT_TRUE(p.Lir.Changed);
}

TEST_F(Adi, DetailsNextAddsSkipDoesNotAndFinishAddsTheRestUnseen) {
  p.F.Check1.value = 1;
  t.host.Click([this] { Next_Click(p); });
  t.host.Click([this] { Skip_Click(p); });
  t.host.Click([this] { Finish_Click(p); });
  WriteKeys(4);
  EXPECT_EQ(Added(), std::vector<std::string>({"ONE", "THREE", "FOUR"}));
  EXPECT_EQ(t.host.detailsShown, 3);
  EXPECT_EQ(t.host.detailsHidden, 1);
  EXPECT_EQ(p.F.Check1.value, 0);
  EXPECT_EQ(p.DBG.lblTitle.caption, "ACME/TV:THREE") << "the record's name titles the dialog";
}

TEST_F(Adi, OptionsPanelAndStartChecks) {
  test::TestProgram fresh;
  fresh.p.DBG.Skip.visible = false;  // as the Slink-e panel leaves it
  ShowADIOptions(fresh.p);
  EXPECT_TRUE(fresh.p.DBG.Skip.visible) << "Skip decides what an ADI run adds";
  const MainForm& f = fresh.p.F;
  EXPECT_TRUE(fresh.p.FormatADI && !fresh.p.FormatPronto && f.ADI.visible && !f.Slnk.visible && !f.DBI.visible);
  for (const Button* b : {&f.cmdADIxqt, &f.cmdADInxtKey, &f.cmdadiall, &f.cmdADIsave, &f.CmdADIadd, &f.cmdADIrpl,
                          &f.cmdadiDelete, &f.cmdADINext, &f.cmdADIprior, &f.cmdAdiNew, &f.cmdADIOpen})
    EXPECT_EQ(b->enabled, b == &f.cmdAdiNew || b == &f.cmdADIOpen) << b->caption;
  cmdADIxqt_Click(p);  // no device selected
  p.F.Autogen.value = 1;
  cmdADIxqt_Click(p);  // no format
  EXPECT_EQ(t.host.messages, std::vector<std::string>({"No Device File has been selected,\r\nand not set to Auto Generate",
                                                      "Auto Generate Selected and No Format has been selected"}));
}

TEST_F(Adi, OpenBrowseReplaceAndDelete) {
  std::string file = File({"A:ONE", "A:TWO", "A:THREE"});
  ShowADIOptions(p);
  Open(file);
  EXPECT_EQ(t.host.openRequests.at(0).filter, "LIR Files (*.lir)|*.lir");
  EXPECT_EQ(t.host.openRequests[0].startPath, (std::filesystem::path(std::getenv("HOME")) / "*.lir").string());
  const MainForm& f = p.F;
  EXPECT_EQ(f.adiFsize.caption, "3");
  EXPECT_EQ(f.AdiFileKey.text, "ONE");
  EXPECT_TRUE(f.cmdADIxqt.enabled && f.cmdADIsave.enabled && f.cmdadiDelete.enabled && f.cmdADINext.enabled);
  EXPECT_FALSE(f.cmdAdiNew.enabled || f.cmdADIOpen.enabled || f.cmdadiall.enabled || f.cmdADInxtKey.enabled);

  cmdADIprior_Click(p);  // on the first: nothing
  EXPECT_EQ(p.Lir.Current, 1);
  for (int i = 0; i < 3; ++i) cmdADINext_Click(p);  // the third press is on the last
  EXPECT_EQ(p.Lir.Current, 3);
  EXPECT_EQ(f.ADIRecnmb.text, "3");
  cmdADIprior_Click(p);
  EXPECT_EQ(f.AdiFileKey.text, "TWO");

  p.CurrentLirRecord = test::NamedRecord("B:NEW", 120);
  cmdADIrpl_Click(p);
  EXPECT_EQ(test::NameOf(p.Lir.records[2]).substr(0, 5), "B:NEW");
  EXPECT_EQ(f.AdiFileKey.text, "NEW");
  EXPECT_FALSE(p.Lir.Changed) << "RPL leaves the changed flag alone";

  cmdadiDelete_Click(p);  // record 2: THREE moves down
  EXPECT_EQ(f.AdiFileKey.text, "THREE");
  cmdadiDelete_Click(p);  // the last: the new last becomes current
  EXPECT_EQ(f.ADIRecnmb.text, "1");
  EXPECT_TRUE(p.Lir.Changed);
  cmdadiDelete_Click(p);  // the only one
  EXPECT_EQ(p.Lir.UpperBound(), 0);
  EXPECT_EQ(p.Lir.Current, 0);
  EXPECT_EQ(f.adiFsize.caption, "0");
  EXPECT_EQ(f.AdiFileKey.text, "??????????");
}

TEST_F(Adi, SaveAsksForANewNameInTheLibraryAndOnlyYesOverwrites) {
  AddLirRecord(p);
  cmdADIsave_Click(p);  // dialog cancelled
  auto library = dir.path() / "ADI Library";
  EXPECT_EQ(t.host.saveRequests.at(0).startPath, (library / "*.lir").string());
  EXPECT_TRUE(std::filesystem::is_directory(library)) << "made when missing";
  EXPECT_EQ(p.F.ADIFileName.text, "NEW");

  std::string file = File({"A:OLD", "A:OLDER"});
  t.host.saveAnswers.push_back(file);
  for (MsgBoxResult answer : {MsgBoxResult::No, MsgBoxResult::Cancel, MsgBoxResult::Yes}) {
    t.host.answers.push_back(answer);
    cmdADIsave_Click(p);
    EXPECT_EQ(t.host.LastMessage(), file + " Already exists\r\nDo you wish to write Over it?");
    EXPECT_EQ(t.host.styles.back(), MsgBoxStyle::YesNoCancel);
    EXPECT_EQ(test::ReadFileBytes(file)[224] == 'A', answer != MsgBoxResult::Yes);
  }
  EXPECT_EQ(test::ReadFileBytes(file).substr(480, 7), "A:OLDER") << "not truncated";
  EXPECT_EQ(t.host.saveRequests.size(), 2u) << "a named table is saved without a dialog";

  AddLirRecord(p);
  t.host.answers.push_back(MsgBoxResult::Yes);
  cmdADIdone_Click(p);  // changed: saved, then quit
  EXPECT_EQ(test::ReadFileBytes(file).substr(480, 7), std::string(7, '\0')) << "the second record written";
  EXPECT_TRUE(t.host.quitCalled);
}

// A device in a temporary Device Library. Time base 560: ONE is 560/-1680,
// ZERO 560/-560; the lead-in 9000/-4500 is kept in microseconds; frames pad to 108 ms.
TEST_F(Adi, RunOverADeviceWritesAFileThatReadsBackRecordForRecord) {
  dir.Write("Device Library/testnec.irp",
            "PROTOCOL = TestNEC\r\nFREQUENCY = 38000\r\nTIMEBASE = 560\r\nONE = 1,-3\r\nZERO = 1,-1\r\n"
            "DEFINE LEAD = [9000 -4500]\r\nDEFINE STOP = [1]\r\nDEFINE GAP = ^108000\r\n"
            "FORM = LEAD,D:8,F:8,STOP,GAP\r\n");
  dir.Write("Device Library/Acme TV.dvc",
            "MANUFACTURER = Acme\r\nDEVICE = TV\r\nMODEL = TV 100\r\nPROTOCOL = TestNEC\r\nDEVICECODE = 4\r\n"
            "[KEYCODES]\r\nPower = 12\r\nVol Up = 16\r\nMute = 13\r\n");
  p.DeviceLibraryPath = (dir.path() / "Device Library").string();
  LoadDeviceFile(p, "Acme TV");
  p.F.Lex.AddItem("ACME TV");
  p.F.Lex.listIndex = 0;
  Press(cmdadiall_Click);
  cmdADIxqt_Click(p);
  ASSERT_EQ(p.Lir.UpperBound(), 3);
  EXPECT_TRUE(p.F.cmdADIxqt.enabled && !p.F.cmdadiall.enabled && !p.F.cmdADInxtKey.enabled) << "after the run";

  const LirRecord& power = p.Lir.records[1];
  EXPECT_EQ(test::NameOf(power), "ACME/TV100:POWER" + std::string(16, ' '));
  // 9000 -> 254 229, -4500 -> 109; each bit 144 then 39 (one) or 11 (zero), LSB
  // first: device 4, function 12; stop 144; the gap 35340 - 108000 = -72660 ->
  // -1815 units -> 1813 = 14 x 126 + 49.
  std::vector<int> expected = {254, 229, 109};
  for (int value : {4, 12})
    for (int bit = 0; bit < 8; ++bit) expected.insert(expected.end(), {144, (value >> bit & 1) ? 39 : 11});
  expected.push_back(144);
  expected.insert(expected.end(), 14, 126);
  expected.push_back(49);
  EXPECT_EQ(test::PulseStream(power), expected);
  EXPECT_EQ(test::NameOf(p.Lir.records[3]).substr(0, 15), "ACME/TV100:MUTE");

  t.host.saveAnswers.push_back((dir.path() / "ADI Library" / "acme.lir").string());
  cmdADIsave_Click(p);
  test::TestProgram reader;
  ReadLirFile(reader.p, dir.path() / "ADI Library" / "acme.lir");
  ASSERT_EQ(reader.p.Lir.UpperBound(), 3);
  for (int i = 1; i <= 3; ++i)
    EXPECT_EQ(std::memcmp(&p.Lir.records[i], &reader.p.Lir.records[i], sizeof(LirRecord)), 0) << "record " << i;
}

}  // namespace
}  // namespace bw
