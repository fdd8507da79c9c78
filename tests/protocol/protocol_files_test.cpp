// Protocol files written to a temporary Device Library and loaded end to end:
// how a file is found, what each statement sets, the unit rule for ONE and ZERO,
// the names a form gets (D and F), and every message with its exact text.
#include <gtest/gtest.h>

#include "input/defines.h"
#include "protocol/protocol.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

/// Remembers where each message arose, as a front end reporting FILE:LINE would.
struct SourceRecordingHost : test::ScriptedHost {
  Program* program = nullptr;
  std::vector<MessageSource> sources;
  MsgBoxResult MsgBox(const std::string& text, MsgBoxStyle style) override {
    sources.push_back(program->Source);
    return ScriptedHost::MsgBox(text, style);
  }
};

struct ProtocolFiles : ::testing::Test {
  SourceRecordingHost host;
  Program p;
  test::TempDir dir;

  void SetUp() override {
    host.program = &p;
    p.host = &host;
    p.DeviceLibraryPath = (dir.path() / "Device Library").string();
    std::filesystem::create_directories(p.DeviceLibraryPath);
  }
  std::filesystem::path Library(const std::string& file, const std::string& text) {
    return dir.Write("Device Library/" + file, text);
  }
  const DefineEntry& Symbol(const std::string& name) { return p.Defines[LookupDefine(p, name)]; }
};

// ---- finding the file ----

TEST_F(ProtocolFiles, FoundByItsProtocolLineWithBlanksAndCaseIgnored) {
  Library("aaa.irp", "PROTOCOL = NEC\r\nFORM = D:8\r\n");
  Library("zzz.irp", "' Sony, twelve bits\r\nPROTOCOL = Sony 12\r\nFORM = F:7,D:5\r\n");
  ASSERT_TRUE(LoadProtocol(p, "SONY12"));
  EXPECT_EQ(p.Protocol.ProtocolName, "SONY 12");
  EXPECT_EQ(p.Protocol.FormOnce, "F:7,D:5");
  EXPECT_TRUE(host.messages.empty());
}

TEST_F(ProtocolFiles, FileNameDoesNotIdentifyAProtocol) {
  Library("nec.irp", "PROTOCOL = Other\r\nFORM = D:8\r\n");
  EXPECT_FALSE(LoadProtocol(p, "NEC"));
}

TEST_F(ProtocolFiles, ProtocolLineWrittenWithABlankIsFound) {
  Library("x.irp", "PROTOCOL RC 5\r\nFORM D:5,F:6\r\n");
  ASSERT_TRUE(LoadProtocol(p, "rc5"));
  EXPECT_EQ(p.Protocol.ProtocolName, "RC 5");
  EXPECT_EQ(p.Protocol.FormOnce, "D:5,F:6");
}

TEST_F(ProtocolFiles, FormatLineFindsTheFileButIsABadCommandWhenLoaded) {
  Library("nec.irp", "FORMAT = NEC\r\nFORM = D:8,F:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "nec"));
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0], "Bad Command in Protocol File FORMAT = NEC");
  EXPECT_EQ(p.Protocol.ProtocolName, "") << "FORMAT never names the record";
}

TEST_F(ProtocolFiles, LaterNamingLinesOfTheSameFileAreComparedToo) {
  Library("two.irp", "FORMAT = Alpha\r\nPROTOCOL Beta\r\nFORM = D:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "BETA"));
  EXPECT_EQ(p.Protocol.ProtocolName, "BETA");
}

TEST_F(ProtocolFiles, NotFoundLeavesRecordAndSymbolsAsTheyWere) {
  Library("nec.irp", "PROTOCOL = NEC\r\nFORM = D:8\r\n");
  p.Protocol.Frequency = 1234;
  p.Defines.entries.push_back(DefineEntry{"KEEP", "1", 1, 1});
  EXPECT_FALSE(LoadProtocol(p, "JVC"));
  EXPECT_EQ(p.Protocol.Frequency, 1234);
  EXPECT_EQ(LookupDefine(p, "KEEP"), 1);
  EXPECT_TRUE(host.messages.empty()) << "the caller reports a missing protocol";
}

// ---- what the statements set ----

TEST_F(ProtocolFiles, StatementsFillTheRecordWithTheirRounding) {
  Library("p.irp",
          "protocol = Test\r\n"
          "modulation = ppm\r\n"
          "first bit = msb\r\n"
          "FREQUENCY = 38000.5\r\n"  // half to even: 38000
          "REPEAT = 2.5\r\n"         // half to even: 2
          "TIME BASE = 560 ' microseconds\r\n"
          "form = a:8,f:8;a:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "TEST"));
  EXPECT_TRUE(host.messages.empty());
  EXPECT_EQ(p.Protocol.Modulation, "PPM");
  EXPECT_EQ(p.Protocol.BitOrder, "MSB");
  EXPECT_EQ(p.Protocol.Frequency, 38000);
  EXPECT_EQ(p.Protocol.RepeatCount, 2);
  EXPECT_EQ(p.Protocol.TimeBase, 560);
  EXPECT_EQ(p.Protocol.FormOnce, "A:8,F:8");
  EXPECT_EQ(p.Protocol.FormRepeat, "A:8");
  EXPECT_EQ(p.LastModulationText, "PPM");
  EXPECT_EQ(p.LastBitOrderText, "MSB");
}

TEST_F(ProtocolFiles, OddFrequencyRoundsUpToEven) {
  Library("p.irp", "PROTOCOL = T\r\nFREQUENCY = 38001.5\r\nREPEAT = 3.5\r\nFORM = D:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "T"));
  EXPECT_EQ(p.Protocol.Frequency, 38002);
  EXPECT_EQ(p.Protocol.RepeatCount, 4);
}

TEST_F(ProtocolFiles, EachLoadStartsFromAResetRecordAndEmptySymbols) {
  Library("a.irp", "PROTOCOL = A\r\nMODULATION = PPM\r\nBITORDER = MSB\r\nFREQUENCY = 40000\r\n"
                   "TIMEBASE = 500\r\nONE = 1,-3\r\nDEFINE X = 5\r\nFORM = X:8\r\n");
  Library("b.irp", "PROTOCOL = B\r\nFORM = D:8;F:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "A"));
  ASSERT_EQ(p.Protocol.OneSpace, -1500);
  ASSERT_TRUE(LoadProtocol(p, "B"));
  EXPECT_EQ(p.Protocol.Modulation, "PWM");
  EXPECT_EQ(p.Protocol.BitOrder, "LSB");
  EXPECT_EQ(p.Protocol.Frequency, 0);
  EXPECT_EQ(p.Protocol.TimeBase, 1);
  EXPECT_EQ(p.Protocol.OneMark, 0);
  EXPECT_EQ(p.Protocol.OneSpace, 0);
  EXPECT_EQ(LookupDefine(p, "X"), 0);
  EXPECT_EQ(p.Protocol.FormRepeat, "F:8");
}

TEST_F(ProtocolFiles, StatementsWrittenWithABlankWork) {
  Library("p.irp", "PROTOCOL T\r\nMODULATION PPM\r\nDEFINE X AS 7\r\nFORM X:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "T"));
  EXPECT_TRUE(host.messages.empty());
  EXPECT_EQ(p.Protocol.Modulation, "PPM");
  EXPECT_EQ(Symbol("X").Kind, define_kind::kNumber);
  EXPECT_EQ(Symbol("X").Value, 7);
}

TEST_F(ProtocolFiles, IgnoredKeywordsAndEmptyKeywordsAreAccepted) {
  Library("p.irp",
          "PROTOCOL = T\r\nDEVICE = 8 bits\r\nFUNCTION = 8 bits\r\nTOLERANCE = 10%\r\n"
          "INTER MESSAGE = 40ms\r\nNAME = Test protocol\r\nCERTIFIED = yes\r\n= stray\r\nFORM = D:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "T"));
  EXPECT_TRUE(host.messages.empty());
  EXPECT_EQ(p.Protocol.ProtocolTitle, "") << "NAME never fills the title";
}

// ---- ONE and ZERO count in time-base units ----

TEST_F(ProtocolFiles, OneAndZeroBelowTheTimeBaseAreScaled) {
  Library("p.irp", "PROTOCOL = T\r\nTIMEBASE = 600\r\nONE = 2,1\r\nZERO = 1,-3\r\nFORM = D:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "T"));
  EXPECT_EQ(p.Protocol.OneMark, 1200);
  EXPECT_EQ(p.Protocol.OneSpace, 600);
  EXPECT_EQ(p.Protocol.ZeroMark, 600);
  EXPECT_EQ(p.Protocol.ZeroSpace, -1800);
}

TEST_F(ProtocolFiles, OneAndZeroAtOrAboveTheTimeBaseAreNotUsed) {
  Library("p.irp", "PROTOCOL = T\r\nTIMEBASE = 600\r\nONE = 1200,600\r\nZERO = 599,-600\r\nFORM = D:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "T"));
  EXPECT_EQ(p.Protocol.OneMark, 0);
  EXPECT_EQ(p.Protocol.OneSpace, 0);
  EXPECT_EQ(p.Protocol.ZeroMark, 599 * 600);
  EXPECT_EQ(p.Protocol.ZeroSpace, -360000);
}

TEST_F(ProtocolFiles, WithoutTimeBaseOnlyNumbersBelowOneReachTheFields) {
  // Time base 1: 0.5 rounds half to even to 0, -3 is below 1 and kept, 5 is not used.
  Library("p.irp", "PROTOCOL = T\r\nONE = 0.5,5\r\nZERO = -3,0.75\r\nFORM = D:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "T"));
  EXPECT_EQ(p.Protocol.TimeBase, 1);
  EXPECT_EQ(p.Protocol.OneMark, 0);
  EXPECT_EQ(p.Protocol.OneSpace, 0);
  EXPECT_EQ(p.Protocol.ZeroMark, -3);
  EXPECT_EQ(p.Protocol.ZeroSpace, 1);
}

TEST_F(ProtocolFiles, ScaledTimesRoundHalfToEven) {
  // 0.5 x 5 = 2.5 -> 2; 2.5 x 3 = 7.5 -> 8.
  Library("a.irp", "PROTOCOL = A\r\nTIMEBASE = 5\r\nONE = 0.5,1\r\nFORM = D:8\r\n");
  Library("b.irp", "PROTOCOL = B\r\nTIMEBASE = 3\r\nONE = 2.5,1\r\nFORM = D:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "A"));
  EXPECT_EQ(p.Protocol.OneMark, 2);
  ASSERT_TRUE(LoadProtocol(p, "B"));
  EXPECT_EQ(p.Protocol.OneMark, 8);
}

TEST_F(ProtocolFiles, ScaleProtocolTimeCountsAZeroTimeBaseAsOne) {
  EXPECT_EQ(ScaleProtocolTime(-7, 0, 99), -7);
  EXPECT_EQ(ScaleProtocolTime(1, 0, 99), 99);
  EXPECT_EQ(ScaleProtocolTime(3, 560, 99), 1680);
}

// ---- messages ----

TEST_F(ProtocolFiles, UnknownModulationAndBitOrderFallBackWithTheirMessages) {
  Library("p.irp", "PROTOCOL = T\r\nMODULATION = q a m\r\nBIT ORDER = both\r\nFORM = D:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "T"));
  ASSERT_EQ(host.messages.size(), 2u);
  EXPECT_EQ(host.messages[0], "Modulation Paramaeter QAM is Not recognized, PWM assumed");
  EXPECT_EQ(host.messages[1], "Bit Order Paramaeter BOTH is Not recognized, LSB assumed");
  EXPECT_EQ(p.Protocol.Modulation, "PWM");
  EXPECT_EQ(p.Protocol.BitOrder, "LSB");
  EXPECT_EQ(p.LastModulationText, "QAM");
  EXPECT_EQ(p.LastBitOrderText, "BOTH");
}

TEST_F(ProtocolFiles, ModulationAndBitOrderPassAsAnyPartOfTheirLists) {
  Library("a.irp", "PROTOCOL = A\r\nMODULATION = bi - phase\r\nFIRSTBIT = SB\r\nFORM = D:8\r\n");
  Library("b.irp", "PROTOCOL = B\r\nMODULATION = M\r\nBITORDER = l\r\nFORM = D:8\r\n");
  Library("c.irp", "PROTOCOL = C\r\nMODULATION =\r\nFORM = D:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "A"));
  EXPECT_EQ(p.Protocol.Modulation, "BI-PHASE");
  EXPECT_EQ(p.Protocol.BitOrder, "SB");
  ASSERT_TRUE(LoadProtocol(p, "B"));
  EXPECT_EQ(p.Protocol.Modulation, "M");
  EXPECT_EQ(p.Protocol.BitOrder, "L");
  ASSERT_TRUE(LoadProtocol(p, "C"));
  EXPECT_EQ(p.Protocol.Modulation, "");
  EXPECT_TRUE(host.messages.empty());
}

TEST_F(ProtocolFiles, BadCommandShowsTheWholeLineAndLoadingGoesOn) {
  Library("p.irp", "PROTOCOL = T\r\nCOLOUR = red ' not a protocol word\r\nFREQUENCY = 36000\r\nFORM = D:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "T"));
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0], "Bad Command in Protocol File COLOUR = red ");
  EXPECT_EQ(p.Protocol.Frequency, 36000);
}

TEST_F(ProtocolFiles, MessagesSayWhichFileAndLine) {
  auto file = Library("p.irp", "PROTOCOL = T\r\n\r\n; comment\r\nCOLOUR = red\r\nFORM = D:8\r\n");
  p.Source = {"device.dvc", 7};
  ASSERT_TRUE(LoadProtocol(p, "T"));
  ASSERT_EQ(host.sources.size(), 1u);
  EXPECT_EQ(host.sources[0].file, file.string());
  EXPECT_EQ(host.sources[0].line, 4);
  EXPECT_EQ(p.Source.file, "device.dvc") << "the caller's source comes back after the load";
  EXPECT_EQ(p.Source.line, 7);
}

TEST_F(ProtocolFiles, MissingFormIsReportedWithTheProtocolName) {
  Library("p.irp", "PROTOCOL = Bare\r\nFREQUENCY = 38000\r\n");
  ASSERT_TRUE(LoadProtocol(p, "BARE"));
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0], "No form has beeen specified for BARE Protocol");
  // Even without a form, the codes are reachable as D and F.
  EXPECT_EQ(Symbol("D").Text, "DEVICE");
  EXPECT_EQ(Symbol("F").Text, "FUNCTION");
}

TEST_F(ProtocolFiles, DuplicateDefinitionInAProtocolKeepsTheFirst) {
  Library("p.irp", "PROTOCOL = T\r\nDEFINE X = 5\r\nDEFAULT X = 6\r\nFORM = X:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "T"));
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0], "Duplicate Definition for label X");
  EXPECT_EQ(Symbol("X").Value, 5);
}

// ---- the names a form uses ----

TEST_F(ProtocolFiles, FormRegistersItsSymbolsAndBindsDAndF) {
  Library("p.irp", "PROTOCOL = T\r\nFORM = A:8,F:8;A:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "T"));
  // A and F come from the form in that order; F is then rebound, D appended.
  ASSERT_EQ(p.Defines.UpperBound(), 3);
  EXPECT_EQ(p.Defines[1].Name, "A");
  EXPECT_EQ(p.Defines[1].Kind, define_kind::kNumber);
  EXPECT_EQ(p.Defines[1].Text, "");
  EXPECT_EQ(p.Defines[2].Name, "F");
  EXPECT_EQ(p.Defines[2].Text, "FUNCTION");
  EXPECT_EQ(p.Defines[2].Kind, define_kind::kPerKeyVariable);
  EXPECT_EQ(p.Defines[3].Name, "D");
  EXPECT_EQ(p.Defines[3].Text, "DEVICE");
  EXPECT_EQ(p.Defines[3].Kind, define_kind::kPerKeyVariable);
}

TEST_F(ProtocolFiles, OwnBindingsOfTheCodesLeaveNoDOrF) {
  Library("p.irp", "PROTOCOL = T\r\nDEFINE DEV = DEVICE\r\nDEFINE FN = function\r\nFORM = DEV:8,FN:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "T"));
  EXPECT_EQ(LookupDefine(p, "D"), 0);
  EXPECT_EQ(LookupDefine(p, "F"), 0);
}

TEST_F(ProtocolFiles, SignsConstantsAndMarkersAreNotRegistered) {
  Library("p.irp",
          "PROTOCOL = T\r\nDEFINE LEAD = [9000 -4500]\r\n"
          "FORM = LEAD,-X:8,+Y:4,5:3,_,*,R*,R_,GAP\r\n");
  ASSERT_TRUE(LoadProtocol(p, "T"));
  EXPECT_EQ(Symbol("LEAD").Kind, define_kind::kRawData) << "an existing entry is left alone";
  EXPECT_NE(LookupDefine(p, "X"), 0);
  EXPECT_NE(LookupDefine(p, "Y"), 0);
  EXPECT_NE(LookupDefine(p, "GAP"), 0);
  EXPECT_EQ(LookupDefine(p, "-X"), 0);
  EXPECT_EQ(LookupDefine(p, "5"), 0);
  EXPECT_EQ(LookupDefine(p, "_"), 0);
  EXPECT_EQ(LookupDefine(p, "*"), 0);
  EXPECT_EQ(LookupDefine(p, "R*"), 0);
  EXPECT_EQ(LookupDefine(p, "R_"), 0);
  // LEAD, X, Y, GAP, then D and F.
  EXPECT_EQ(p.Defines.UpperBound(), 6);
}

// ---- the protocol list of the window ----

TEST_F(ProtocolFiles, ProtocolStatementSelectsItsEntryInTheFormatList) {
  p.F.format.AddItem("NEC");
  p.F.format.AddItem("SONY 12");
  Library("p.irp", "PROTOCOL = Sony12\r\nFORM = F:7,D:5\r\n");
  ASSERT_TRUE(LoadProtocol(p, "Sony 12"));
  EXPECT_EQ(p.F.format.listIndex, 1);
  EXPECT_EQ(p.F.format.text, "SONY 12");
}

TEST_F(ProtocolFiles, ProtocolMissingFromTheListLeavesTheSelection) {
  p.F.format.AddItem("NEC");
  p.F.format.Select(0);
  SelectProtocolInList(p, "JVC");
  EXPECT_EQ(p.F.format.listIndex, 0);
}

}  // namespace
}  // namespace bw
