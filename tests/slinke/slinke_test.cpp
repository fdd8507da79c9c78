// The Slink-e writer: fields pre-filled from the protocol, timing, the stop gap, bit strings, the code list; then
// both variants end to end from a temporary library to the ".cde" bytes, and the runs that write no file.
#include <gtest/gtest.h>

#include "details/details.h"
#include "shell/commands.h"
#include "slinke/slinke.h"
#include "support/scripted_host.h"

namespace bw::test {
namespace {

using Strings = std::vector<std::string>;

/// A library under a temporary program folder. ACME: time base 100, ONE = 500/-1500, ZERO = 500/-500,
/// lead-in 9000/-4500, GAP pads a frame to 40000, LSB first. OTHER: MSB first, ONE = 300/-900, ZERO =
/// 300/-300. On AcmeTv MUTE has a second code list, AUX speaks OTHER, GHOST a protocol the library lacks.
struct SlinkeRun : LibraryTest {
  const std::filesystem::path out = dir.path() / "Slinke Library";
  ScriptedHost& host = t.host;
  SlinkeRun() {
    WriteLibrary("Acme.irp",
                 "PROTOCOL = ACME\r\nFREQUENCY = 40000\r\nTIMEBASE = 100\r\nREPEAT = 1\r\nONE = 5,-15\r\n"
                 "ZERO = 5,-5\r\nDEFINE GAP = ^40000\r\nFORM = [90 -45],D:2,F:3,GAP:0\r\n");
    WriteLibrary("Other.irp",
                 "PROTOCOL = OTHER\r\nTIMEBASE = 100\r\nBITORDER = MSB\r\nONE = 3,-9\r\nZERO = 3,-3\r\nFORM = F:4\r\n");
    WriteLibrary("AcmeTv.dvc",
                 "MANUFACTURER = Acme\r\nMODEL = Tv1\r\nPROTOCOL = ACME\r\nDEVICECODE = 2\r\n[KEYCODES]\r\n"
                 "POWER = 5\r\nMUTE = 6 ; 7\r\nVOL = 7\r\nAUX = (OTHER):1,2\r\nGHOST = (NOPE):1,3\r\n");
  }
  /// A protocol of time base 100 (ONE = 500/-1500, ZERO = 500/-500) with the lines given.
  void Protocol(const std::string& name, const std::string& lines) const {
    WriteLibrary(name + ".irp", "PROTOCOL = " + name + "\r\nTIMEBASE = 100\r\nONE = 5,-15\r\nZERO = 5,-5\r\n" + lines);
  }
  /// A device "M"/`model` on `protocol` with the key lines given, loaded, with a variant selected.
  void Device(const std::string& model, const std::string& protocol, const std::string& keys, bool txRx) {
    WriteLibrary(model + ".dvc",
                 "MANUFACTURER = M\r\nMODEL = " + model + "\r\nPROTOCOL = " + protocol + "\r\n[KEYCODES]\r\n" + keys);
    Load(model, txRx);
  }
  void Load(const std::string& device, bool txRx) {
    p.F.Lex.Clear();
    p.F.Lex.AddItem(device);
    p.F.Lex.listIndex = 0;
    Lex_Click(p);
    txRx ? SelectSlinkTxRx(p) : SelectSlinkTxOnly(p);
  }
  std::string Cde(const std::string& name) const { return ReadFileBytes(out / (name + ".cde")); }
  bool NoCdeFiles() const { return !std::filesystem::exists(out) || std::filesystem::is_empty(out); }
  void AddDefine(const std::string& name, const std::string& text, int16_t kind, double value = 0) {
    p.Defines.entries.push_back(DefineEntry{name, text, value, kind});
  }
  int Process() { return ErrorNumber([this] { cmdSlinkXqt_Click(p); }); }
};

TEST_F(SlinkeRun, FrameIsFilledFromTheProtocolAndOnlyTheStopIsExpanded) {
  ProtocolRecord& r = p.Protocol;
  r.Frequency = 38000, r.RepeatCount = 3, r.TimeBase = 560;
  r.ZeroMark = 560, r.ZeroSpace = -560, r.OneMark = 560, r.OneSpace = -1690;
  r.FormOnce = "START:0,F:8,STOP:0";
  AddDefine("START", "16 -8 GAP", define_kind::kExpression);
  AddDefine("STOP", "1 GAP", define_kind::kExpression);
  AddDefine("GAP", "^108000", define_kind::kFrameLength, 108000);
  p.F.MFG.text = "ACME", p.F.Model.text = "TV1", p.F.ADIdescr.text = "typed";
  auto fill = [this] {
    FillSlinkFields(p);
    const MainForm& f = p.F;
    return f.txtcarrier.text + "|" + f.TxtZero.text + "|" + f.TxtOne.text + "|" + f.TxtRpt.text + "|" +
           f.ADIdescr.text + "|" + f.TxtStart.text + "|" + f.txtStop.text;
  };
  EXPECT_EQ(fill(), "38000.00|560 -560|560 -1690|3|ACME-TV1|16 -8 GAP|560 ^108000");  // 1 is below the time base
  r.FormOnce = "[16 -8 1000],F:8,[1 -70]";
  EXPECT_EQ(fill(), "38000.00|560 -560|560 -1690|3|ACME-TV1|8960 -4480 1000|560 -39200");
  r.FormOnce = "GAP,F:8,GAP";  // neither bracket nor bit count
  EXPECT_EQ(fill(), "38000.00|560 -560|560 -1690|3|ACME-TV1||");
}

TEST_F(SlinkeRun, TimingTokensAreScaledKeptOrReplacedAndTheStopGapPadsTheFrame) {
  p.Protocol.TimeBase = 560;
  AddDefine("X", "2 Y", define_kind::kExpression);
  AddDefine("Y", "^5", define_kind::kFrameLength, 5);
  AddDefine("LOOP", "1 LOOP", define_kind::kExpression);
  EXPECT_EQ(ExpandTimingText(p, "^900 X -3 600 560 0.5"), "^900 1120 ^5 -1680 600 560 280");
  EXPECT_EQ(ExpandTimingText(p, "1 NOPE 2"), "560  1120");  // an unknown name is an empty list
  EXPECT_EQ(ErrorNumber([&] { ExpandTimingText(p, "LOOP"); }), 28);  // out of stack space, no crash
  p.F.TxtStart.text = "90 45", p.F.txtStop.text = "^900";
  AdjustSlinkStop(p, 540);  // 900 - (540 + 90 + 45)
  EXPECT_EQ(p.F.txtStop.text, "-225");
  AdjustSlinkStop(p, 540);
  EXPECT_EQ(p.F.txtStop.text, "-225");
  p.F.TxtStart.text = " 90.5  -45 ", p.F.txtStop.text = " 560  ^-900 ^100 X ";
  AdjustSlinkStop(p, 540);  // base 675.5; a gap shorter than the frame keeps its sign behind the "-"
  EXPECT_EQ(p.F.txtStop.text, "560 -224.5 --575.5 X");
}

/// ONE takes 1 + 2 = 3 us and ZERO 1 + 1 = 2 us, so a bit time counts both.
struct SlinkeBits : SlinkeRun {
  int32_t bitTime = 0;
  std::string trailing;
  SlinkeBits() {
    p.F.TxtOne.text = "1 -2";
    p.F.TxtZero.text = "1 -1";
    p.Protocol.ProtocolName = "ACME";
    AddDefine("D", "DEVICE", define_kind::kPerKeyVariable);
    AddDefine("F", "FUNCTION", define_kind::kPerKeyVariable);
    AddDefine("E", "F+1", define_kind::kVariableExpression);
    AddDefine("LEAD", "9000 -4500", define_kind::kRawData);
    AddDefine("GAP", "^40000", define_kind::kFrameLength, 40000);
    p.CurrentDeviceCode = 3;
    p.CurrentFunctionCode = 10;  // 1010
  }
};

TEST_F(SlinkeBits, FieldTextFollowsTheOrderIsNotMaskedAndFormItemsTakeCodesLiteralsAndInversion) {
  // 5 >= 2 leaves 3, 3 >= 1: "11"; the order comparison is exact
  EXPECT_EQ(ValueToBits(p, 6, 3, bitTime, "MSB") + "|" + ValueToBits(p, 6, 3, bitTime, "LSB") + "|" +
                ValueToBits(p, 6, 3, bitTime, "msb"), "110|011|011");
  EXPECT_EQ(bitTime, 3 * (3 + 3 + 2));
  EXPECT_EQ(ValueToBits(p, 5, 2, bitTime, "MSB") + "|" + ValueToBits(p, -1, 2, bitTime, "MSB"), "11|00");
  p.F.TxtOne.text = "-2.5 3.5x", bitTime = 0;  // 2 + 4, half to even
  EXPECT_EQ(ValueToBits(p, 1, 1, bitTime, "MSB"), "1");
  EXPECT_EQ(bitTime, 6);
  p.F.TxtZero.text = "20000 -20000";  // a 16-bit sum
  EXPECT_EQ(ErrorNumber([&] { ValueToBits(p, 1, 1, bitTime, "MSB"); }), 6);
  p.F.TxtOne.text = "1 -2", p.F.TxtZero.text = "1 -1", bitTime = 0;
  // form items: D = 3 "11", F = 10 "0101", E = F + 1 = 11 "1101", 5:3 "101", -F:4 = 15 - 10 "1010".
  EXPECT_EQ(EncodeFormBits(p, "D:2,F:4,E:4,5:3,-F:4", bitTime, trailing), "1101011101101" "1010");
  EXPECT_EQ(bitTime, 11 * 3 + 6 * 2);
  EXPECT_EQ(p.Defines[2].Value, 10);
  // Unknown and bracketed items keep the value before them; without a bit count they send nothing.
  EXPECT_EQ(EncodeFormBits(p, "[90 -45],F:4,NOPE:4,~7:3", bitTime, trailing), "01010101000");
  EXPECT_EQ(EncodeFormBits(p, "F:4,GAP:0", bitTime, trailing), "0101");
  EXPECT_EQ(trailing, "GAP");
  EXPECT_EQ(EncodeFormBits(p, "F:4,LEAD", bitTime, trailing), "0101");
  EXPECT_EQ(trailing, "LEAD");
  EXPECT_TRUE(t.host.messages.empty() && !p.SlinkError);
}

TEST_F(SlinkeBits, CodeListUsesTheFirstCodeKeyOptionsAndAveragesHalfToEven) {
  p.Protocol.FormOnce = "F:4";
  // ONE's option rebinds F for this key: "1001", 10 us; TWO has only a second list: the emptied second form
  p.Keys.entries = {KeyEntry{}, {.Label = "ONE", .FirstCodes = {{"", 1, 10, 1}, {"", 1, 15, 1}}, .Options = {"F=9"}},
                    {.Label = "TWO", .SecondCodes = {{"ACME", 1, 3, 1}}}};
  int32_t average = -1;
  EXPECT_EQ(BuildSlinkCodeList(p, average, trailing), "1001:ONE\r\n:TWO\r\n");
  EXPECT_EQ((std::vector<int32_t>{average, p.CurrentFunctionCode}), (std::vector<int32_t>{5, 3}));
  EXPECT_EQ(p.Defines[2].Text, "9") << "the rebinding outlives its key";
  // fresh keys and F: "0" takes 4 us and "1" 3 us, then 1 us
  p.Defines[2] = DefineEntry{"F", "FUNCTION", 0, define_kind::kPerKeyVariable};
  p.Protocol.FormOnce = "F:1", p.F.TxtZero.text = "4 0";
  p.Keys.entries = {KeyEntry{}, {.FirstCodes = {{"", 1, 0, 1}}}, {.FirstCodes = {{"", 1, 1, 1}}}};
  BuildSlinkCodeList(p, average, trailing);
  EXPECT_EQ(average, 4);  // 7 / 2 = 3.5
  p.F.TxtOne.text = "1 0";
  BuildSlinkCodeList(p, average, trailing);
  EXPECT_EQ(average, 2);  // 5 / 2 = 2.5
}

TEST_F(SlinkeRun, FileIsWrittenAsAnsiWithAClosingLineEndAndTheTextEmptiedAfter) {
  std::filesystem::create_directory(out);
  p.SlinkText = "Desc=Caf\xC3\xA9\r\nx";  // UTF-8 inside
  SaveSlinkFile(p, "n");
  EXPECT_EQ(Cde("n"), "Desc=Caf\xE9\r\nx\r\n");
  EXPECT_EQ(p.SlinkText, "");
}

// TX only: lead-in, D = 2 in 2 bits (ZERO, ONE), F in 3 bits, then GAP replaces the last space by
// (13500 + bit durations) - 40000: F = 5 and F = 6 take 5000 us (gap -18500), F = 7 takes 6000 us (-17500).
const std::string kPower = "9000 -4500 500 -500 500 -1500 500 -1500 500 -500 500 -18500 ";
const std::string kSix = "9000 -4500 500 -500 500 -1500 500 -500 500 -1500 500 -18500 ";
const std::string kSeven = "9000 -4500 500 -500 500 -1500 500 -1500 500 -1500 500 -17500 ";
const std::string kTxOnlyFile = "Desc=ACME-TV1\r\ntype=irtxonly\r\nsleep=0\r\ncarrier=40000.00\r\n\r\n" + kPower +
                                ":POWER\r\n\r\n" + kSix + kSeven + ":MUTE\r\n"  // the second list is the repeated part
                                "\r\n" + kSeven + ":VOL\r\n"
                                "\r\n300 -300 300 -300 300 -900 300 -300 :AUX\r\n"  // OTHER: F = 2 in 4 bits, MSB first
                                "\r\n:GHOST\r\n\r\n";                               // missing protocol: no durations

TEST_F(SlinkeRun, TxOnlyGivesDurationLinesAfterTheHeaderAndReplacesTheFile) {
  Load("ACMETV", false);
  p.Protocol.Frequency = 1;  // the run ends by loading the protocol again
  EXPECT_EQ(Process(), 0);   // "Slinke Library" does not exist yet
  EXPECT_EQ(Cde("ACME-TV1"), kTxOnlyFile);
  EXPECT_EQ(host.messages, Strings{"Protocol NOPE Not in Device Library"});
  EXPECT_EQ(p.F.SlinkEntryCount.text + "|" + p.F.slinkkeyname.text, "5|GHOST");
  EXPECT_TRUE(p.F.xqtcmd.enabled && !host.busy && host.busyOnCount == 1);
  EXPECT_EQ(p.Protocol.Frequency, 40000);
  dir.Write("Slinke Library/ACME-TV1.cde", std::string(5000, 'x'));
  // details shown until Finish; Skip drops nothing (each entry lets events through once before its dialog waits)
  p.F.Check1.value = 1;
  host.Click([] {});
  host.Click([this] { Skip_Click(p); });
  host.Click([] {});
  host.Click([this] { Finish_Click(p); });
  cmdSlinkXqt_Click(p);
  EXPECT_TRUE(host.detailsShown == 2 && !p.DBG.Skip.visible);
  EXPECT_EQ(Cde("ACME-TV1"), kTxOnlyFile);
}

TEST_F(SlinkeRun, TxOnlyMarksRc5AndRc6AndNamesTheFileAfterTheDescription) {
  for (const std::string name : {"RC5", "RC6", "RC5X"}) {
    Protocol(name, "FREQUENCY = 36000\r\nFORM = F:2\r\n");
    Device("BI" + name, name, "ONE = 1\r\n", false);
    EXPECT_EQ(Process(), 0);
    // F = 1 in 2 bits, LSB first: ONE, ZERO
    EXPECT_EQ(Cde("M-BI" + name), "Desc=M-BI" + name + (name == "RC5X" ? "" : "(RC5)") +
              "\r\ntype=irtxonly\r\nsleep=0\r\ncarrier=36000.00\r\n\r\n500 -1500 500 -500 :ONE\r\n\r\n");
  }
  Load("ACMETV", false);
  p.F.txtdescr.text = " a/b\\c:d*e?f<g>h|i ";
  cmdSlinkXqt_Click(p);
  // the name keeps its blanks; the Desc line is trimmed and keeps every character
  EXPECT_EQ(Cde(" abcdefghi ").substr(0, 25), "Desc=a/b\\c:d*e?f<g>h|i\r\nt");
  p.F.txtdescr.text = "", p.F.Model.text = "T:2";
  cmdSlinkXqt_Click(p);
  EXPECT_EQ(p.F.txtdescr.text, "ACME-T:2");
  EXPECT_TRUE(std::filesystem::exists(out / "ACME-T2.cde"));
}

// TX/RX: ONE takes 2000 us, ZERO 1000 us; LSB first: D = 2 "01", F = 5 "101", 6 "011", 7 "111". AUX is
// encoded with ACME's form under OTHER's symbols and MSB order: D = 1 "01", F = 2 "010"; lead-in and GAP are
// unknown there and add nothing; the line has no label. GHOST gives no line. Bit times 8000 + 8000 + 9000 +
// 7000 + 0 over 5 keys = 6400, so "^40000" becomes -(40000 - (6400 + 9000 + 4500)) = -20100.
const std::string kTxRxFile =
    "Desc=ACME-TV1\r\ntype=irtxonly\r\nsleep=0\r\ntype=ir\r\ngroup=\r\ncarrier=40000.00\r\nrepeat=1\r\npause=\r\n"
    "zero=500 -500\r\none=500 -1500\r\nstart=9000 -4500\r\nstop=-20100\r\nprefix=\r\nsuffix=\r\n\r\n"
    "01101:POWER\r\n01011:MUTE\r\n01111:VOL\r\n01010\r\n\r\n";

TEST_F(SlinkeRun, TxRxGivesHeaderAndBitStringsAndKeepsTheResolvedStop) {
  Load("ACMETV", true);
  EXPECT_EQ(p.F.txtStop.text, "^40000");
  for (int run = 0; run < 2; ++run) {  // the second run starts from the resolved stop
    std::filesystem::remove(out / "ACME-TV1.cde");
    EXPECT_EQ(Process(), 0);
    EXPECT_EQ(Cde("ACME-TV1"), kTxRxFile);
    EXPECT_EQ(p.F.txtStop.text, "-20100");
  }
  EXPECT_EQ(host.messages, (Strings(2, "Protocol NOPE Not in Device Library")));
  EXPECT_TRUE(p.F.xqtcmd.enabled && !host.busy);
  EXPECT_EQ(p.Protocol.ProtocolName, "ACME");  // AUX did not leave OTHER behind
}

TEST_F(SlinkeRun, TxRxMergesTheFormsAndHeaderHoldsTheFrameTextsAsTheUserLeftThem) {
  // K = 6, LSB first; 6 in 1 bit is "1" (values are not masked)
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {";F:3", "F:3", "011"}, {"F:3;F:3", "F:3", "011"}, {"F:3;F:1", "F:3,F:1", "0111"},
      {"F:3,[10];[20],F:1", "F:3,[10 20],F:1", "0111"}, {"F:3", "F:3", "011"}};
  for (const auto& [form, merged, bits] : cases) {
    Protocol("MERGE", std::string("FORM = ") + form + "\r\n");
    Device("W", "MERGE", "K = 6\r\n", true);
    EXPECT_EQ(Process(), 0);
    EXPECT_EQ(p.Protocol.FormOnce + "|" + p.Protocol.FormRepeat, std::string(merged) + "|") << form;
    EXPECT_TRUE(Cde("M-W").ends_with(std::string("suffix=\r\n\r\n") + bits + ":K\r\n\r\n")) << form << Cde("M-W");
  }
  Device("U", "ACME", "A = 0,0\r\n", true);
  MainForm& f = p.F;
  f.txtcarrier.text = "38.5", f.TxtRpt.text = "3", f.TxtZero.text = "1 -1", f.TxtOne.text = "1 -3";
  f.TxtStart.text = "16 -8", f.txtStop.text = "1 ^100";
  EXPECT_EQ(Process(), 0);
  // five ZEROs of 2 us: average 10; the gap is -(100 - (10 + 16 + 8)) = -66
  EXPECT_EQ(Cde("M-U"), "Desc=M-U\r\ntype=irtxonly\r\nsleep=0\r\ntype=ir\r\ngroup=\r\ncarrier=38.5\r\nrepeat=3\r\n"
                        "pause=\r\nzero=1 -1\r\none=1 -3\r\nstart=16 -8\r\nstop=1 -66\r\nprefix=\r\nsuffix=\r\n\r\n"
                        "00000:A\r\n\r\n");
}

TEST_F(SlinkeRun, ChoosingAVariantShowsTheFrameAndRefusedOrStoppedRunsWriteNoFile) {
  p.FormatADI = true;
  p.F.Check1.enabled = false;
  SelectSlinkTxRx(p);  // hides Skip and clears the other formats
  EXPECT_TRUE(p.FormatSlinkTxRx && !p.FormatSlinkTxOnly && !p.FormatPronto && !p.FormatADI);
  EXPECT_TRUE(p.F.Slnk.visible && !p.F.ADI.visible && !p.F.DBI.visible && p.F.Check1.enabled);
  EXPECT_TRUE(!p.DBG.Skip.visible && p.DBG.Next.visible && p.DBG.Finish.visible);
  SelectSlinkTxOnly(p);
  EXPECT_TRUE(p.FormatSlinkTxOnly && !p.FormatSlinkTxRx);
  cmdSlinkXqt_Click(p);
  p.F.Autogen.value = 1;
  cmdSlinkXqt_Click(p);
  EXPECT_EQ(host.messages, (Strings{"No Device File has been selected,\r\nand not set to Auto Generate",
                                    "Auto Generate Selected and No Format has been selected"}));
  EXPECT_TRUE(host.busyOnCount == 0 && !std::filesystem::exists(out)) << "refused before anything started";
  p.F.Autogen.value = 0;
  Device("LONG", "ACME", "K = 2,5,100\r\n", false);
  EXPECT_EQ(Process(), 9) << "100 frames of 12 durations";
  EXPECT_FALSE(host.busy);
  Device("NONE", "ACME", "", true);
  EXPECT_EQ(Process(), 11) << "a device without keys divides by zero";
  EXPECT_FALSE(host.busy);
  EXPECT_TRUE(NoCdeFiles());
  // raw data or a frame length before the last item stops the run at the first key
  const std::pair<const char*, const char*> cases[] = {
      {"[90 -45],GAP:0,F:3", "Nirvis CDJ format can not handle embedded timing"},
      {"LEAD,F:3", "Nirvis CDJ format can not handle embedded raw data"},
      {"F:3,GAP:0;F:1", "Nirvis CDJ format can not handle embedded timing"}};  // merged: GAP no longer last
  for (const auto& [form, message] : cases) {
    host.messages.clear();
    Protocol("MID", std::string("DEFINE GAP = ^40000\r\nDEFINE LEAD = [90 -45]\r\nFORM = ") + form + "\r\n");
    Device("MID", "MID", "A = 1\r\nB = 2\r\n", true);
    p.F.xqtcmd.enabled = true;
    EXPECT_EQ(Process(), 0);
    EXPECT_EQ(host.messages, Strings{message}) << form;
    EXPECT_TRUE(NoCdeFiles()) << form;
    EXPECT_FALSE(p.F.xqtcmd.enabled) << form;
    EXPECT_EQ(p.F.SlinkEntryCount.text, "1") << form;
  }
}

}  // namespace
}  // namespace bw::test
