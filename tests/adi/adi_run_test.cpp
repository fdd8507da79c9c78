// The ADI run's per-key step and its buttons, pressed through the scripted
// host while the run waits: Add, Next Key, All Keys, and the details dialog's
// Next, Skip and Finish. Keys are handed to the writer one by one as the key
// generator does.
#include <gtest/gtest.h>

#include "adi/adi.h"
#include "adi/lir_test_support.h"
#include "details/details.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

struct AdiRun : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;

  void SetUp() override {
    ShowADIOptions(p);
    cmdAdiNew_Click(p);
    p.Protocol.Frequency = 38000;
    p.F.MFG.text = "Acme";
    p.F.Model.text = "TV";
    test::SetKeys(p, {"One", "Two", "Three", "Four"});
  }
  /// Hands keys first..last to the writer; key k is a single mark of k * 40 µs.
  void WriteKeys(int first, int last) {
    for (int k = first; k <= last; ++k) {
      test::SetBurst(p, {k * 40});
      p.Burst.BurstLabel = p.Keys[k].Label;
      WriteADIEntry(p, k, 0);
    }
  }
  std::vector<std::string> AddedKeys() const {
    std::vector<std::string> keys;
    for (int i = 1; i <= p.Lir.UpperBound(); ++i) {
      std::string name = test::NameOf(p.Lir.records[static_cast<std::size_t>(i)]);
      keys.push_back(name.substr(8, name.find(' ') - 8));  // after "ACME/TV:"
    }
    return keys;
  }
  void Press(void (*handler)(Program&)) {
    t.host.Click([this, handler] { handler(p); });
  }
};

TEST_F(AdiRun, AllKeysAddsTheWaitingKeyAndEveryLaterOneWithoutWaiting) {
  Press(cmdADInxtKey_Click);  // key 1 skipped
  Press(cmdadiall_Click);     // key 2 and all after it
  WriteKeys(1, 4);
  EXPECT_EQ(AddedKeys(), std::vector<std::string>({"TWO", "THREE", "FOUR"}));
  EXPECT_EQ(t.host.doEventsCalls, 2) << "keys 3 and 4 must not wait";
  EXPECT_EQ(p.Lir.records[2].PulseBytes[0], 128 + 3 + 2) << "key 3, 120 us: (120 + 39) / 40 = 3 units, + 2";
}

TEST_F(AdiRun, AddDuringTheWaitAddsExactlyOneRecord) {
  Press(CmdADIadd_Click);
  Press(CmdADIadd_Click);
  WriteKeys(1, 2);
  EXPECT_EQ(AddedKeys(), std::vector<std::string>({"ONE", "TWO"}));
  EXPECT_EQ(p.F.adiFsize.caption, "2");
  EXPECT_TRUE(p.Lir.Changed);
}

TEST_F(AdiRun, TheRunWaitsUntilAButtonIsPressed) {
  t.host.Click([] {});  // events without a choice
  t.host.Click([] {});
  Press(cmdADInxtKey_Click);
  WriteKeys(1, 1);
  EXPECT_EQ(t.host.doEventsCalls, 3);
  EXPECT_EQ(p.Lir.UpperBound(), 0);
  EXPECT_EQ(p.F.AdiNewKey.text, "One");
}

TEST_F(AdiRun, TooComplexKeyIsNotOffered) {
  test::SetBurst(p, std::vector<int32_t>(201, 560));
  WriteADIEntry(p, 1, 0);
  EXPECT_EQ(t.host.doEventsCalls, 0);
  EXPECT_EQ(t.host.LastMessage(), "This IR Command is too complex for the ADI format");
  EXPECT_EQ(p.Lir.UpperBound(), 0);
}

TEST_F(AdiRun, DetailsNextAddsAndSkipDoesNot) {
  p.F.Check1.value = 1;
  t.host.Click([this] { Next_Click(p); });
  t.host.Click([this] { Skip_Click(p); });
  t.host.Click([this] { Next_Click(p); });
  WriteKeys(1, 3);
  EXPECT_EQ(AddedKeys(), std::vector<std::string>({"ONE", "THREE"}));
  EXPECT_EQ(t.host.detailsShown, 3);
  EXPECT_EQ(p.DBG.lblTitle.caption, "ACME/TV:THREE") << "the record's name is the dialog title";
}

TEST_F(AdiRun, FinishAddsTheShownEntryAndAllLaterOnesWithoutShowingThem) {
  p.F.Check1.value = 1;
  t.host.Click([this] { Next_Click(p); });
  t.host.Click([this] { Finish_Click(p); });
  WriteKeys(1, 4);
  EXPECT_EQ(AddedKeys(), std::vector<std::string>({"ONE", "TWO", "THREE", "FOUR"}));
  EXPECT_EQ(t.host.detailsShown, 2);
  EXPECT_EQ(t.host.detailsHidden, 1);
  EXPECT_EQ(p.F.Check1.value, 0);
  EXPECT_EQ(p.AdiKeyChoice, 2);
}

TEST_F(AdiRun, OptionsPanelSelectsAdiAndLeavesOnlyNewAndOpen) {
  test::TestProgram fresh;
  ShowADIOptions(fresh.p);
  const MainForm& f = fresh.p.F;
  EXPECT_TRUE(fresh.p.FormatADI);
  EXPECT_FALSE(fresh.p.FormatPronto || fresh.p.FormatSlinkTxOnly || fresh.p.FormatSlinkTxRx);
  EXPECT_TRUE(f.ADI.visible);
  EXPECT_FALSE(f.Slnk.visible || f.DBI.visible);
  for (const Button* b : {&f.cmdADIxqt, &f.cmdADInxtKey, &f.cmdadiall, &f.cmdADIsave, &f.CmdADIadd, &f.cmdADIrpl,
                          &f.cmdadiDelete, &f.cmdADINext, &f.cmdADIprior})
    EXPECT_FALSE(b->enabled) << b->caption;
  EXPECT_TRUE(f.cmdAdiNew.enabled);
  EXPECT_TRUE(f.cmdADIOpen.enabled);
}

TEST_F(AdiRun, StartRefusesWithoutDeviceOrWithoutFormat) {
  p.F.Lex.listIndex = -1;
  cmdADIxqt_Click(p);
  EXPECT_EQ(t.host.LastMessage(), "No Device File has been selected,\r\nand not set to Auto Generate");
  p.F.Autogen.value = 1;
  p.F.format.text = "";
  cmdADIxqt_Click(p);
  EXPECT_EQ(t.host.LastMessage(), "Auto Generate Selected and No Format has been selected");
  EXPECT_EQ(t.host.messages.size(), 2u);
  EXPECT_TRUE(p.F.cmdADIxqt.enabled) << "no run was started";
  EXPECT_FALSE(t.host.busy);
}

}  // namespace
}  // namespace bw
