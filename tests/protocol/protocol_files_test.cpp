// Protocol files written to a temporary Device Library and loaded end to end:
// how a file is found, what the statements set, the unit rule for ONE and ZERO,
// the names a form gets (D and F), and the messages with their exact texts.
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
  /// ONE mark, ONE space, ZERO mark, ZERO space.
  std::vector<int32_t> Times() const {
    return {p.Protocol.OneMark, p.Protocol.OneSpace, p.Protocol.ZeroMark, p.Protocol.ZeroSpace};
  }
};

// ---- finding the file ----

TEST_F(ProtocolFiles, FoundByItsNamingLineWithBlanksAndCaseIgnored) {
  Library("nec.irp", "PROTOCOL = Other\r\nFORM = D:8\r\n");
  Library("s.irp", "' Sony, twelve bits\r\nPROTOCOL = Sony 12\r\nFORM = F:7,D:5\r\n");
  Library("two.irp", "FORMAT = Alpha\r\nPROTOCOL RC 5\r\nFORM D:5,F:6\r\n");
  EXPECT_FALSE(LoadProtocol(p, "NEC")) << "the file name does not name the protocol";
  ASSERT_TRUE(LoadProtocol(p, "SONY12"));
  EXPECT_EQ(p.Protocol.ProtocolName, "SONY 12");
  EXPECT_EQ(p.Protocol.FormOnce, "F:7,D:5");
  // A later naming line of a file is compared too; both written with a blank.
  ASSERT_TRUE(LoadProtocol(p, "rc5"));
  EXPECT_EQ(p.Protocol.ProtocolName, "RC 5");
  EXPECT_EQ(p.Protocol.FormOnce, "D:5,F:6");
}

TEST_F(ProtocolFiles, FormatLineFindsTheFileButIsABadCommandWhenLoaded) {
  Library("nec.irp", "FORMAT = NEC\r\nFORM = D:8,F:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "nec"));
  EXPECT_EQ(host.messages, std::vector<std::string>{"Bad Command in Protocol File FORMAT = NEC"});
  EXPECT_EQ(p.Protocol.ProtocolName, "");
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

// ---- statements ----

TEST_F(ProtocolFiles, StatementsFillTheRecordRoundingHalfToEven) {
  Library("p.irp",
          "protocol = Test\r\nmodulation = ppm\r\nfirst bit = msb\r\n"
          "FREQUENCY = 38001.5\r\n"  // -> 38002
          "REPEAT = 2.5\r\n"         // -> 2
          "TIME BASE = 560 ' microseconds\r\n"
          "form = a:8,f:8;a:8\r\n"
          // accepted and ignored, whichever split finds them
          "DEVICE = 8 bits\r\nFUNCTION 8 bits\r\nTOLERANCE = 10%\r\nINTER MESSAGE = 40ms\r\n"
          "NAME = Test protocol\r\nCERTIFIED = yes\r\n= stray\r\nDEFINE X AS 7\r\n");
  ASSERT_TRUE(LoadProtocol(p, "TEST"));
  EXPECT_TRUE(host.messages.empty());
  EXPECT_EQ(p.Protocol.Modulation, "PPM");
  EXPECT_EQ(p.Protocol.BitOrder, "MSB");
  EXPECT_EQ(p.Protocol.Frequency, 38002);
  EXPECT_EQ(p.Protocol.RepeatCount, 2);
  EXPECT_EQ(p.Protocol.TimeBase, 560);
  EXPECT_EQ(p.Protocol.FormOnce, "A:8,F:8");
  EXPECT_EQ(p.Protocol.FormRepeat, "A:8");
  EXPECT_EQ(p.Protocol.ProtocolTitle, "") << "NAME never fills the title";
  EXPECT_EQ(Symbol("X").Value, 7);
}

TEST_F(ProtocolFiles, EachLoadStartsFromAResetRecordAndEmptySymbols) {
  Library("a.irp", "PROTOCOL = A\r\nMODULATION = PPM\r\nBITORDER = MSB\r\nFREQUENCY = 40000\r\n"
                   "TIMEBASE = 500\r\nONE = 1,-3\r\nDEFINE X = 5\r\nFORM = X:8\r\n");
  Library("b.irp", "PROTOCOL = B\r\nFORM = D:8;F:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "A"));
  ASSERT_EQ(p.Protocol.OneSpace, -1500);
  ASSERT_TRUE(LoadProtocol(p, "B"));
  EXPECT_EQ(p.Protocol.Modulation + p.Protocol.BitOrder, "PWMLSB");
  EXPECT_EQ(p.Protocol.Frequency, 0);
  EXPECT_EQ(Times(), (std::vector<int32_t>{0, 0, 0, 0}));
  EXPECT_EQ(LookupDefine(p, "X"), 0);
}

// ---- ONE and ZERO count in time-base units ----

TEST_F(ProtocolFiles, OnlyNumbersBelowTheTimeBaseAreScaledIntoTheFields) {
  Library("a.irp", "PROTOCOL = A\r\nTIMEBASE = 600\r\nONE = 2,1\r\nZERO = 1,-3\r\nFORM = D:8\r\n");
  Library("b.irp", "PROTOCOL = B\r\nTIMEBASE = 600\r\nONE = 1200,600\r\nZERO = 599,-600\r\nFORM = D:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "A"));
  EXPECT_EQ(Times(), (std::vector<int32_t>{1200, 600, 600, -1800}));
  ASSERT_TRUE(LoadProtocol(p, "B"));
  EXPECT_EQ(Times(), (std::vector<int32_t>{0, 0, 359400, -360000})) << "1200 and 600 are not used";
}

TEST_F(ProtocolFiles, ScaledTimesRoundHalfToEvenAndNoTimeBaseMeansOne) {
  // Time base 1: 0.5 -> 0, 5 not used, -3 kept, 0.75 -> 1.
  Library("a.irp", "PROTOCOL = A\r\nONE = 0.5,5\r\nZERO = -3,0.75\r\nFORM = D:8\r\n");
  // 0.5 x 5 = 2.5 -> 2; 1.5 x 5 = 7.5 -> 8.
  Library("b.irp", "PROTOCOL = B\r\nTIMEBASE = 5\r\nONE = 0.5,1.5\r\nFORM = D:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "A"));
  EXPECT_EQ(p.Protocol.TimeBase, 1);
  EXPECT_EQ(Times(), (std::vector<int32_t>{0, 0, -3, 1}));
  ASSERT_TRUE(LoadProtocol(p, "B"));
  EXPECT_EQ(Times(), (std::vector<int32_t>{2, 8, 0, 0}));
}

// ---- messages ----

TEST_F(ProtocolFiles, ModulationAndBitOrderAreTestedAsPartsOfTheirLists) {
  Library("a.irp", "PROTOCOL = A\r\nMODULATION = q a m\r\nBIT ORDER = both\r\nFORM = D:8\r\n");
  Library("c.irp", "PROTOCOL = C\r\nMODULATION = bi -\r\nBITORDER = l\r\nFORM = D:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "A"));
  EXPECT_EQ(host.messages, (std::vector<std::string>{"Modulation Paramaeter QAM is Not recognized, PWM assumed",
                                                     "Bit Order Paramaeter BOTH is Not recognized, LSB assumed"}));
  EXPECT_EQ(p.Protocol.Modulation + p.Protocol.BitOrder, "PWMLSB");
  EXPECT_EQ(p.LastModulationText + p.LastBitOrderText, "QAMBOTH");
  ASSERT_TRUE(LoadProtocol(p, "C"));
  EXPECT_EQ(p.Protocol.Modulation, "BI-") << "any part of the list passes";
  EXPECT_EQ(p.Protocol.BitOrder, "L");
  EXPECT_EQ(host.messages.size(), 2u);
}

TEST_F(ProtocolFiles, BadCommandShowsTheWholeLineWithItsFileAndLine) {
  auto file = Library("p.irp", "PROTOCOL = T\r\n\r\n; comment\r\nCOLOUR = red ' no\r\nFREQUENCY = 36000\r\nFORM = D:8\r\n");
  p.Source = {"device.dvc", 7};
  ASSERT_TRUE(LoadProtocol(p, "T"));
  EXPECT_EQ(host.messages, std::vector<std::string>{"Bad Command in Protocol File COLOUR = red "});
  EXPECT_EQ(p.Protocol.Frequency, 36000) << "loading goes on";
  ASSERT_EQ(host.sources.size(), 1u);
  EXPECT_EQ(host.sources[0].file, file.string());
  EXPECT_EQ(host.sources[0].line, 4);
  EXPECT_EQ(p.Source.file, "device.dvc") << "the caller's source comes back";
  EXPECT_EQ(p.Source.line, 7);
}

TEST_F(ProtocolFiles, MissingFormIsReportedAndDAndFAreStillBound) {
  Library("p.irp", "PROTOCOL = Bare\r\nFREQUENCY = 38000\r\n");
  ASSERT_TRUE(LoadProtocol(p, "BARE"));
  EXPECT_EQ(host.messages, std::vector<std::string>{"No form has beeen specified for BARE Protocol"});
  EXPECT_EQ(Symbol("D").Text, "DEVICE");
  EXPECT_EQ(Symbol("F").Text, "FUNCTION");
}

// ---- the names a form uses ----

TEST_F(ProtocolFiles, FormRegistersItsSymbolsAndBindsDAndF) {
  Library("p.irp", "PROTOCOL = T\r\nFORM = A:8,F:8;A:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "T"));
  // A and F come from the form in that order; F is then rebound and D appended.
  std::vector<std::string> entries;
  for (int i = 1; i <= p.Defines.UpperBound(); ++i)
    entries.push_back(p.Defines[i].Name + "=" + p.Defines[i].Text + "/" + std::to_string(p.Defines[i].Kind));
  EXPECT_EQ(entries, (std::vector<std::string>{"A=/1", "F=FUNCTION/4", "D=DEVICE/4"}));
}

TEST_F(ProtocolFiles, SignsConstantsMarkersAndOwnBindingsAreRespected) {
  Library("p.irp",
          "PROTOCOL = T\r\nDEFINE LEAD = [9000 -4500]\r\nDEFINE DEV = DEVICE\r\nDEFINE FN = function\r\n"
          "FORM = LEAD,-X:8,+Y:4,5:3,_,*,R*,R_,GAP,DEV:8,FN:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "T"));
  EXPECT_EQ(Symbol("LEAD").Kind, define_kind::kRawData) << "an existing entry is left alone";
  for (const char* name : {"X", "Y", "GAP"}) EXPECT_NE(LookupDefine(p, name), 0) << name;
  for (const char* name : {"-X", "5", "_", "*", "R*", "R_", "D", "F"}) EXPECT_EQ(LookupDefine(p, name), 0) << name;
  // LEAD, DEV, FN, then X, Y, GAP.
  EXPECT_EQ(p.Defines.UpperBound(), 6);
}

TEST_F(ProtocolFiles, ProtocolStatementSelectsItsEntryInTheFormatList) {
  p.F.format.AddItem("NEC");
  p.F.format.AddItem("SONY 12");
  Library("p.irp", "PROTOCOL = Sony12\r\nFORM = F:7,D:5\r\n");
  ASSERT_TRUE(LoadProtocol(p, "Sony 12"));
  EXPECT_EQ(p.F.format.text, "SONY 12");
}

}  // namespace
}  // namespace bw
