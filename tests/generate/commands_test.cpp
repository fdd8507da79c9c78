// The main window commands that prepare a run, over the bundled Device
// Library: loading the clicked device, auto-generation, the output format.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "details/details.h"
#include "generate/generate.h"
#include "shell/commands.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

struct Commands : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;

  void SetUp() override {
    p.DeviceLibraryPath = std::string(BW_SOURCE_DIR) + "/Device Library";
    p.F.Lex.items = {"TOSHIBA TV"};
    p.F.Output.items = {"Philips Pronto", "Nirvis TX Only", "Nirvis Tx/Rx", "ADI Leopard"};
  }
  std::string ClickOutput(int index) {
    p.F.Output.listIndex = index;
    Output_Click(p);
    return std::string(p.FormatPronto ? "P" : "-") + (p.FormatSlinkTxOnly ? "T" : "-") +
           (p.FormatSlinkTxRx ? "R" : "-") + (p.FormatADI ? "A" : "-");
  }
};

TEST_F(Commands, LexClickLoadsTheDeviceAndDescribesIt) {
  p.F.Autogen.value = 1;
  p.F.txtdescr.text = "typed";
  p.F.Lex.listIndex = 0;
  Lex_Click(p);
  EXPECT_EQ(p.Protocol.ProtocolName, "NEC");
  // The description is cleared before the load, so it is always the device's own.
  EXPECT_EQ(p.F.txtdescr.text, "TOSHIBA-CT-90325");
  EXPECT_EQ(p.F.ADIdescr.text, "TOSHIBA-CT-90325");
  EXPECT_EQ(p.F.Autogen.value, 0);
  EXPECT_EQ(p.F.Label5.caption, "Device Selected");
  EXPECT_TRUE(t.host.messages.empty());
}

TEST_F(Commands, AutogenSwapsTheRangeFramesForTheDeviceList) {
  p.F.RPT.value = true;
  p.F.Autogen.value = 1;
  Autogen_Click(p);
  EXPECT_TRUE(p.F.Ot.value && !p.F.RPT.value && p.F.Frame2.visible && p.F.Frame4.visible);
  EXPECT_FALSE(p.F.Lex.visible || p.F.Label5.visible);
  p.F.Autogen.value = 0;
  Autogen_Click(p);
  EXPECT_FALSE(p.F.Frame2.visible || p.F.Frame4.visible);
  EXPECT_TRUE(p.F.Lex.visible && p.F.Label5.visible);
}

TEST_F(Commands, EachOutputEntrySetsExactlyItsFlagAndPanel) {
  EXPECT_EQ(ClickOutput(3), "---A");
  EXPECT_TRUE(p.F.ADI.visible && !p.F.DBI.visible);
  EXPECT_EQ(ClickOutput(1), "-T--");
  EXPECT_TRUE(p.F.Slnk.visible && !p.F.ADI.visible);
  EXPECT_EQ(ClickOutput(2), "--R-");
  EXPECT_EQ(ClickOutput(0), "P---");
  EXPECT_TRUE(p.F.DBI.visible && p.F.Check1.enabled);
  EXPECT_FALSE(p.F.Slnk.visible || p.F.ADI.visible || p.F.status.visible);
  // No match changes nothing; "PRONTO" is tested before "ONLY".
  p.F.Output.items.insert(p.F.Output.items.end(), {"Something else", "pronto tx only"});
  EXPECT_EQ(ClickOutput(1), "-T--");
  EXPECT_EQ(ClickOutput(4), "-T--");
  EXPECT_EQ(ClickOutput(5), "P---");
}

TEST_F(Commands, ToshibaTvPowerIsThePublishedNecFrameInProntoHex) {
  ClickOutput(0);
  p.F.Lex.listIndex = 0;
  Lex_Click(p);
  int stored = 0;
  p.IRCodeSink = [&stored](Program&) { ++stored; };
  // Show the first key in HEX, then Finish: the rest go through unseen.
  p.F.Check1.value = 1;
  p.DBG.HexOPT.value = 1;
  t.host.Click([] {});
  t.host.Click([this] { Finish_Click(p); });
  p.F.status.text = "busy";
  p.DBG.entryCounter = 7;
  EXPECT_TRUE(GenerateKeys(p, p.F.format.text, 64, 0, 0));
  EXPECT_EQ(stored, p.Keys.UpperBound());
  EXPECT_EQ(p.F.DvcMfglist.text + "/" + p.F.DvcTypeList.text + "/" + p.F.DvcModelList.text, "TOSHIBA/TV/CT-90325");
  EXPECT_EQ(p.F.status.text, "");
  EXPECT_EQ(p.DBG.entryCounter, 1);  // reset, then the one entry shown
  EXPECT_EQ(t.host.detailsShown, 1);
  // POWER: device 64 and function 18, each followed by its complement, LSB
  // first. Lead 9000/4500 -> 342/171 (0156 00AB); a zero 562/562 -> 0015 0015,
  // a one 562/1686 -> 0015 0040; stop 562, then the pad to 108 ms:
  // 108000 - 68014 = 39986 us -> 1521 (05F1). Repeat 9000/2250/562 and its pad
  // 96188 -> 0156 0056 0015 0E4A. 68 durations -> 34 pairs, 4 -> 2.
  std::string bits;
  for (char c : std::string("00000010111111010100100010110111")) bits += c == '1' ? "0015 0040 " : "0015 0015 ";
  EXPECT_EQ(p.DBG.Text1.text, "0000 006A 0022 0002 \r\n0156 00AB " + bits + "0015 05F1 0156 0056 0015 0E4A ");
  EXPECT_TRUE(t.host.messages.empty());
}

}  // namespace
}  // namespace bw
