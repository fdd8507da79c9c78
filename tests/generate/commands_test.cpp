// The main window commands that prepare a run: loading the clicked device,
// switching auto-generation on and off, and choosing the output format.
#include <gtest/gtest.h>

#include <string>

#include "input/defines.h"
#include "shell/commands.h"
#include "test_library.h"

namespace bw {
namespace {

struct Commands : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  test::TempDir library;

  void SetUp() override {
    test::WriteTestLibrary(library, p);
    p.F.Lex.items = {"ACMEBIG", "ACMERAW", "ACMETV"};
    p.F.Output.items = {"Philips Pronto", "Nirvis TX Only", "Nirvis Tx/Rx", "ADI Leopard"};
  }
  void ClickOutput(int index) {
    p.F.Output.listIndex = index;
    Output_Click(p);
  }
  std::string Flags() const {
    return std::string(p.FormatPronto ? "P" : "-") + (p.FormatSlinkTxOnly ? "T" : "-") +
           (p.FormatSlinkTxRx ? "R" : "-") + (p.FormatADI ? "A" : "-");
  }
};

TEST_F(Commands, LexClickLoadsTheDeviceAndFillsTheDescriptions) {
  p.Defines.entries.push_back(DefineEntry{"STALE", "1", 1, 1});
  p.F.Autogen.value = 1;
  p.F.Lex.listIndex = 2;
  Lex_Click(p);
  EXPECT_EQ(p.F.MFG.text, "ACME");
  EXPECT_EQ(p.F.Model.text, "TV100");
  EXPECT_EQ(p.Keys.UpperBound(), 6);
  EXPECT_EQ(p.Protocol.ProtocolName, "ACME32");
  EXPECT_EQ(LookupDefine(p, "STALE"), 0);
  EXPECT_EQ(p.F.txtdescr.text, "ACME-TV100");
  EXPECT_EQ(p.F.ADIdescr.text, "ACME-TV100");
  EXPECT_EQ(p.F.Autogen.value, 0);
  EXPECT_EQ(p.F.Label5.caption, "Device Selected");
  EXPECT_TRUE(t.host.messages.empty());
}

TEST_F(Commands, LexClickReplacesTheDescriptionOfTheDeviceBefore) {
  p.F.Lex.listIndex = 2;
  Lex_Click(p);
  p.F.txtdescr.text = "Living room TV";
  p.F.Lex.listIndex = 1;
  Lex_Click(p);
  EXPECT_EQ(p.F.txtdescr.text, "ACME-RAW1");
  EXPECT_EQ(p.F.format.text, "RAW");
}

TEST_F(Commands, LexClickWithoutSelectionDoesNothing) {
  p.F.Lex.listIndex = -1;
  p.F.Label5.caption = "Select Device";
  p.F.txtdescr.text = "kept";
  Lex_Click(p);
  EXPECT_EQ(p.F.Label5.caption, "Select Device");
  EXPECT_EQ(p.F.txtdescr.text, "kept");
  EXPECT_EQ(p.Keys.UpperBound(), 0);
}

TEST_F(Commands, AutogenSwapsTheRangeFramesForTheDeviceList) {
  p.F.RPT.value = true;
  p.F.Autogen.value = 1;
  Autogen_Click(p);
  EXPECT_TRUE(p.F.Ot.value);
  EXPECT_FALSE(p.F.RPT.value);
  EXPECT_TRUE(p.F.Frame2.visible);
  EXPECT_TRUE(p.F.Frame4.visible);
  EXPECT_FALSE(p.F.Lex.visible);
  EXPECT_FALSE(p.F.Label5.visible);

  p.F.Autogen.value = 0;
  Autogen_Click(p);
  EXPECT_FALSE(p.F.Frame2.visible);
  EXPECT_FALSE(p.F.Frame4.visible);
  EXPECT_TRUE(p.F.Lex.visible);
  EXPECT_TRUE(p.F.Label5.visible);
}

TEST_F(Commands, EachOutputEntrySetsExactlyItsFlag) {
  ClickOutput(3);
  EXPECT_EQ(Flags(), "---A");
  EXPECT_TRUE(p.F.ADI.visible);
  EXPECT_FALSE(p.F.DBI.visible);

  ClickOutput(1);
  EXPECT_EQ(Flags(), "-T--");
  EXPECT_TRUE(p.F.Slnk.visible);
  EXPECT_FALSE(p.F.ADI.visible);

  ClickOutput(2);
  EXPECT_EQ(Flags(), "--R-");

  ClickOutput(0);
  EXPECT_EQ(Flags(), "P---");
  EXPECT_TRUE(p.F.DBI.visible);
  EXPECT_FALSE(p.F.Slnk.visible);
  EXPECT_FALSE(p.F.ADI.visible);
}

TEST_F(Commands, OutputEntryMatchingNothingChangesNothing) {
  ClickOutput(1);
  p.F.Output.items.push_back("Something else");
  ClickOutput(4);
  EXPECT_EQ(Flags(), "-T--");
  // An entry naming two formats goes to the first test that matches.
  p.F.Output.items.push_back("pronto tx only");
  ClickOutput(5);
  EXPECT_EQ(Flags(), "P---");
}

}  // namespace
}  // namespace bw
