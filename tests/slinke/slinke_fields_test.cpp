// The Slink-e frame and the pieces of a run: set-up, fields pre-filled from the
// protocol, timing lists, the stop gap, the Process checks, bit strings and the
// file itself.
#include <gtest/gtest.h>

#include "slinke/slinke.h"
#include "slinke_test_library.h"

namespace bw::test {
namespace {

void AddDefine(Program& p, const std::string& name, const std::string& text, int16_t kind, double value = 0) {
  p.Defines.entries.push_back(DefineEntry{name, text, value, kind});
}

TEST(SlinkeFrame, ChoosingAVariantShowsTheFrameHidesSkipAndClearsTheOtherFormats) {
  TestProgram t;
  Program& p = t.p;
  p.FormatADI = true;
  p.F.Check1.enabled = false;
  SelectSlinkTxRx(p);
  EXPECT_TRUE(p.FormatSlinkTxRx && !p.FormatSlinkTxOnly && !p.FormatPronto && !p.FormatADI);
  EXPECT_TRUE(p.F.Slnk.visible && !p.F.ADI.visible && !p.F.DBI.visible && p.F.Check1.enabled);
  EXPECT_TRUE(!p.DBG.Skip.visible && p.DBG.Next.visible && p.DBG.Finish.visible);
  SelectSlinkTxOnly(p);
  EXPECT_TRUE(p.FormatSlinkTxOnly && !p.FormatSlinkTxRx);
}

TEST(SlinkeFields, FrameIsFilledFromTheProtocolAndOnlyTheStopIsExpanded) {
  TestProgram t;
  Program& p = t.p;
  ProtocolRecord& r = p.Protocol;
  r.Frequency = 38000;
  r.ZeroMark = 560, r.ZeroSpace = -560, r.OneMark = 560, r.OneSpace = -1690;
  r.RepeatCount = 3;
  r.TimeBase = 560;
  r.FormOnce = "START:0,F:8,STOP:0";
  AddDefine(p, "START", "16 -8 GAP", define_kind::kExpression);
  AddDefine(p, "STOP", "1 GAP", define_kind::kExpression);
  AddDefine(p, "GAP", "^108000", define_kind::kFrameLength, 108000);
  p.F.MFG.text = "ACME";
  p.F.Model.text = "TV1";
  p.F.ADIdescr.text = "typed";
  FillSlinkFields(p);
  EXPECT_EQ(p.F.txtcarrier.text, "38000.00");
  EXPECT_EQ(p.F.TxtZero.text, "560 -560");
  EXPECT_EQ(p.F.TxtOne.text, "560 -1690");
  EXPECT_EQ(p.F.TxtRpt.text, "3");
  EXPECT_EQ(p.F.ADIdescr.text, "ACME-TV1");
  EXPECT_EQ(p.F.TxtStart.text, "16 -8 GAP");
  EXPECT_EQ(p.F.txtStop.text, "560 ^108000");  // 1 is below the time base

  r.FormOnce = "[16 -8 1000],F:8,[1 -70]";
  FillSlinkFields(p);
  EXPECT_EQ(p.F.TxtStart.text, "8960 -4480 1000");
  EXPECT_EQ(p.F.txtStop.text, "560 -39200");

  r.FormOnce = "GAP,F:8,GAP";  // neither bracket nor bit count
  FillSlinkFields(p);
  EXPECT_EQ(p.F.TxtStart.text, "");
  EXPECT_EQ(p.F.txtStop.text, "");
}

TEST(SlinkeTiming, TokensAreScaledKeptOrReplacedByTheirDefinition) {
  TestProgram t;
  Program& p = t.p;
  p.Protocol.TimeBase = 560;
  AddDefine(p, "X", "2 Y", define_kind::kExpression);
  AddDefine(p, "Y", "^5", define_kind::kFrameLength, 5);
  AddDefine(p, "LOOP", "1 LOOP", define_kind::kExpression);
  EXPECT_EQ(ExpandTimingText(p, "^900 X -3 600 560 0.5"), "^900 1120 ^5 -1680 600 560 280");
  EXPECT_EQ(ExpandTimingText(p, "1 NOPE 2"), "560  1120");  // an unknown name is an empty list
  EXPECT_EQ(ErrorNumberOf([&] { ExpandTimingText(p, "LOOP"); }), 28);  // out of stack space, no crash
}

TEST(SlinkeStop, CaretTokenBecomesTheGapThatPadsTheFrame) {
  TestProgram t;
  Program& p = t.p;
  p.F.TxtStart.text = "90 45";
  p.F.txtStop.text = "^900";
  AdjustSlinkStop(p, 540);  // 900 - (540 + 90 + 45)
  EXPECT_EQ(p.F.txtStop.text, "-225");
  AdjustSlinkStop(p, 540);
  EXPECT_EQ(p.F.txtStop.text, "-225");

  p.F.TxtStart.text = " 90.5  -45 ";
  p.F.txtStop.text = " 560  ^-900 ^100 X ";
  AdjustSlinkStop(p, 540);  // base 675.5; a gap shorter than the frame keeps its sign behind the "-"
  EXPECT_EQ(p.F.txtStop.text, "560 -224.5 --575.5 X");
}

TEST(SlinkeProcess, NoDeviceOrNoFormatIsRefusedWithTheArrowBack) {
  SlinkeWorld w;
  SelectSlinkTxOnly(w.p);
  cmdSlinkXqt_Click(w.p);
  w.p.F.Autogen.value = 1;
  cmdSlinkXqt_Click(w.p);
  EXPECT_EQ(w.host.messages, (std::vector<std::string>{"No Device File has been selected,\r\nand not set to Auto Generate",
                                                        "Auto Generate Selected and No Format has been selected"}));
  EXPECT_EQ(w.host.busyOnCount, 0);
  EXPECT_FALSE(w.host.busy);
  EXPECT_FALSE(std::filesystem::exists(w.dir.path() / "Slinke Library"));
}

/// ONE takes 1 + 2 = 3 us and ZERO 1 + 1 = 2 us, so a bit time counts both.
struct SlinkeBits : ::testing::Test {
  TestProgram t;
  Program& p = t.p;
  int32_t bitTime = 0;
  std::string trailing;
  SlinkeBits() {
    p.F.TxtOne.text = "1 -2";
    p.F.TxtZero.text = "1 -1";
    p.Protocol.ProtocolName = "ACME";
    AddDefine(p, "D", "DEVICE", define_kind::kPerKeyVariable);
    AddDefine(p, "F", "FUNCTION", define_kind::kPerKeyVariable);
    AddDefine(p, "E", "F+1", define_kind::kVariableExpression);
    AddDefine(p, "LEAD", "9000 -4500", define_kind::kRawData);
    AddDefine(p, "GAP", "^40000", define_kind::kFrameLength, 40000);
    p.CurrentDeviceCode = 3;
    p.CurrentFunctionCode = 10;  // 1010
  }
};

TEST_F(SlinkeBits, FieldTextFollowsTheOrderAndIsNotMasked) {
  EXPECT_EQ(ValueToBits(p, 6, 3, bitTime, "MSB"), "110");
  EXPECT_EQ(ValueToBits(p, 6, 3, bitTime, "LSB"), "011");
  EXPECT_EQ(ValueToBits(p, 6, 3, bitTime, "msb"), "011");  // exact comparison
  EXPECT_EQ(bitTime, 3 * (3 + 3 + 2));
  EXPECT_EQ(ValueToBits(p, 5, 2, bitTime, "MSB"), "11");    // 5 >= 2 leaves 3, 3 >= 1
  EXPECT_EQ(ValueToBits(p, -1, 2, bitTime, "MSB"), "00");
  p.F.TxtOne.text = "-2.5 3.5x";                            // 2 + 4, half to even
  bitTime = 0;
  EXPECT_EQ(ValueToBits(p, 1, 1, bitTime, "MSB"), "1");
  EXPECT_EQ(bitTime, 6);
  p.F.TxtZero.text = "20000 -20000";                         // a 16-bit sum
  EXPECT_EQ(ErrorNumberOf([&] { ValueToBits(p, 1, 1, bitTime, "MSB"); }), 6);
}

TEST_F(SlinkeBits, FormItemsTakeCodesExpressionsLiteralsAndInversion) {
  // D = 3 "11", F = 10 "0101", E = F + 1 = 11 "1101", 5:3 "101", -F:4 = 15 - 10 "1010".
  EXPECT_EQ(EncodeFormBits(p, "D:2,F:4,E:4,5:3,-F:4", bitTime, trailing), "1101011101101" "1010");
  EXPECT_EQ(bitTime, 11 * 3 + 6 * 2);
  EXPECT_EQ(p.Defines[2].Value, 10);
  // Unknown and bracketed items keep the value before them; without a bit count they send nothing.
  EXPECT_EQ(EncodeFormBits(p, "[90 -45],F:4,NOPE:4,~7:3", bitTime, trailing), "01010101000");
  EXPECT_EQ(EncodeFormBits(p, "F:4,GAP:0", bitTime, trailing), "0101");
  EXPECT_EQ(trailing, "GAP");
  EXPECT_EQ(EncodeFormBits(p, "F:4,LEAD", bitTime, trailing), "0101");
  EXPECT_EQ(trailing, "LEAD");
  EXPECT_TRUE(t.host.messages.empty());
  EXPECT_FALSE(p.SlinkError);
}

TEST_F(SlinkeBits, CodeListUsesTheFirstCodeKeyOptionsAndAveragesHalfToEven) {
  p.Protocol.FormOnce = "F:4";
  KeyEntry one;
  one.Label = "ONE";
  one.FirstCodes = {KeyCode{"", 1, 10, 1}, KeyCode{"", 1, 15, 1}};
  one.Options = {"F=9"};  // rebinds F for this key: "1001", 10 us
  KeyEntry two;
  two.Label = "TWO";
  two.SecondCodes = {KeyCode{"ACME", 1, 3, 1}};  // only a second list: the emptied second form
  p.Keys.entries = {KeyEntry{}, one, two};
  int32_t average = -1;
  EXPECT_EQ(BuildSlinkCodeList(p, average, trailing), "1001:ONE\r\n:TWO\r\n");
  EXPECT_EQ(average, 5);
  EXPECT_EQ(p.CurrentFunctionCode, 3);

  // The rebinding outlives its key; the averages below use fresh keys and F.
  EXPECT_EQ(p.Defines[2].Text, "9");
  p.Defines[2] = DefineEntry{"F", "FUNCTION", 0, define_kind::kPerKeyVariable};
  p.Protocol.FormOnce = "F:1";
  p.F.TxtZero.text = "4 0";
  KeyEntry zero;
  zero.FirstCodes = {KeyCode{"", 1, 0, 1}};  // "0": 4 us
  KeyEntry set;
  set.FirstCodes = {KeyCode{"", 1, 1, 1}};   // "1": 3 us
  p.Keys.entries = {KeyEntry{}, zero, set};
  BuildSlinkCodeList(p, average, trailing);
  EXPECT_EQ(average, 4);     // 7 / 2 = 3.5
  p.F.TxtOne.text = "1 0";
  BuildSlinkCodeList(p, average, trailing);
  EXPECT_EQ(average, 2);     // 5 / 2 = 2.5
}

TEST(SlinkeFile, TextIsWrittenAsAnsiWithAClosingLineEndAndEmptiedAfter) {
  TempDir dir;
  TestProgram t;
  Program& p = t.p;
  p.ProgramFolder = dir.path();
  std::filesystem::create_directory(dir.path() / "Slinke Library");
  p.SlinkText = "Desc=Caf\xC3\xA9\r\nx";  // UTF-8 inside
  SaveSlinkFile(p, "n");
  EXPECT_EQ(ReadFileBytes(dir.path() / "Slinke Library" / "n.cde"), "Desc=Caf\xE9\r\nx\r\n");
  EXPECT_EQ(p.SlinkText, "");
}

}  // namespace
}  // namespace bw::test
