// Protocol files loaded end to end from a temporary Device Library: how a file is found, what the statements
// set, the unit rule for ONE and ZERO, the names a form gets, and the exact messages with where they arose.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <sstream>

#include "input/defines.h"
#include "protocol/protocol.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

using Strings = std::vector<std::string>;

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
  ProtocolFiles() {
    host.program = &p;
    p.host = &host;
    p.DeviceLibraryPath = (dir.path() / "Device Library").string();
  }
  auto Library(const std::string& file, const std::string& text) { return dir.Write("Device Library/" + file, text); }
  /// "name|modulation|bit order|frequency|repeat|time base|once;repeat form|ONE mark space ZERO mark space".
  std::string Record() const {
    const ProtocolRecord& r = p.Protocol;
    std::ostringstream s;
    s << r.ProtocolName << "|" << r.Modulation << "|" << r.BitOrder << "|" << r.Frequency << "|" << r.RepeatCount
      << "|" << r.TimeBase << "|" << r.FormOnce << ";" << r.FormRepeat << "|" << r.OneMark << " " << r.OneSpace
      << " " << r.ZeroMark << " " << r.ZeroSpace;
    return s.str();
  }
  /// Every symbol as "NAME=text/kind", in table order.
  Strings Symbols() const {
    Strings entries;
    for (int i = 1; i <= p.Defines.UpperBound(); ++i)
      entries.push_back(p.Defines[i].Name + "=" + p.Defines[i].Text + "/" + std::to_string(p.Defines[i].Kind));
    return entries;
  }
};

TEST_F(ProtocolFiles, FoundByANamingLineWithBlanksAndCaseIgnored) {
  Library("nec.irp", "PROTOCOL = Other\r\nFORM = D:8\r\n");
  Library("s.irp", "' Sony, twelve bits\r\nPROTOCOL = Sony 12\r\nFORM = F:7,D:5\r\n");
  Library("two.irp", "FORMAT = Alpha\r\nPROTOCOL RC 5\r\nFORM D:5,F:6\r\n");
  p.Protocol.Frequency = 1234;
  p.Defines.entries.push_back(DefineEntry{"KEEP", "1", 1, 1});
  EXPECT_FALSE(LoadProtocol(p, "NEC")) << "the file name does not name the protocol";
  EXPECT_EQ(p.Protocol.Frequency, 1234) << "a failed search leaves record and symbols as they were";
  EXPECT_EQ(Symbols(), Strings{"KEEP=1/1"});
  ASSERT_TRUE(LoadProtocol(p, "SONY12"));
  EXPECT_EQ(Record(), "SONY 12|PWM|LSB|0|0|1|F:7,D:5;|0 0 0 0");
  ASSERT_TRUE(LoadProtocol(p, "rc5")) << "a later naming line counts too, both written with a blank";
  EXPECT_EQ(p.Protocol.ProtocolName + "|" + p.Protocol.FormOnce, "RC 5|D:5,F:6");
  // a FORMAT line finds the file but is a bad command when loaded, here and in two.irp
  Library("f.irp", "FORMAT = JVC\r\nFORM = D:8,F:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "jvc"));
  EXPECT_EQ(host.messages, (Strings{"Bad Command in Protocol File FORMAT = Alpha",
                                    "Bad Command in Protocol File FORMAT = JVC"}));
  EXPECT_EQ(p.Protocol.ProtocolName, "");
}

TEST_F(ProtocolFiles, SearchSeesEveryChangeToTheLibraryBetweenTwoLoads) {
  // Each step changes the library, then loads X; the FORM tells which file it came from.
  namespace fs = std::filesystem;
  const fs::path folder = dir.path() / "Device Library";
  Library("b.irp", "PROTOCOL = X\r\nFORM = B:1\r\n");
  struct Step {
    std::function<void()> change;
    std::string form;  ///< "" when no file names X
  };
  const std::vector<Step> steps = {
      {[] {}, "B:1"},
      {[&] { Library("a.irp", "PROTOCOL = X\r\nFORM = A:1\r\n"); }, "A:1"},  // added ahead of b.irp
      {[&] { Library("a.irp", "PROTOCOL = Y\r\nFORM = A:2\r\n"); }, "B:1"},  // same size, edited in place
      {[&] { fs::rename(folder / "b.irp", folder / "c.IRP"); }, "B:1"},
      {[&] { fs::remove(folder / "c.IRP"); }, ""},
      {[&] { Library("a.irp", "PROTOCOL = X\r\nFORM = A:3\r\n"); }, "A:3"},
  };
  for (size_t i = 0; i < steps.size(); ++i) {
    steps[i].change();
    EXPECT_EQ(LoadProtocol(p, "X"), !steps[i].form.empty()) << "step " << i;
    if (!steps[i].form.empty()) EXPECT_EQ(p.Protocol.FormOnce, steps[i].form) << "step " << i;
  }
}

TEST_F(ProtocolFiles, StatementsFillARecordResetOnEachLoadAndBadOnesAreReportedWithTheirPlace) {
  auto bad = Library("bad.irp", "PROTOCOL = T\r\n\r\n; comment\r\nCOLOUR = red ' no\r\nFREQUENCY = 36000\r\n"
                                "FORM = D:8\r\n");
  p.Source = {"device.dvc", 7};
  ASSERT_TRUE(LoadProtocol(p, "T"));
  EXPECT_EQ(p.Protocol.Frequency, 36000) << "loading goes on";
  EXPECT_EQ(host.sources.at(0).file + ":" + std::to_string(host.sources.at(0).line), bad.string() + ":4");
  EXPECT_EQ(p.Source.file + ":" + std::to_string(p.Source.line), "device.dvc:7") << "the caller's source comes back";
  // 38001.5 -> 38002 and 2.5 -> 2, half to even; the ignored statements pass whichever split finds them
  Library("p.irp",
          "protocol = Test\r\nmodulation = ppm\r\nfirst bit = msb\r\nFREQUENCY = 38001.5\r\nREPEAT = 2.5\r\n"
          "TIME BASE = 560 ' microseconds\r\nform = a:8,f:8;a:8\r\nONE = 1,-3\r\nDEVICE = 8 bits\r\n"
          "FUNCTION 8 bits\r\nTOLERANCE = 10%\r\nINTER MESSAGE = 40ms\r\nNAME = Test protocol\r\nCERTIFIED = yes\r\n"
          "= stray\r\nDEFINE X AS 7\r\n");
  ASSERT_TRUE(LoadProtocol(p, "TEST"));
  EXPECT_EQ(Record(), "TEST|PPM|MSB|38002|2|560|A:8,F:8;A:8|560 -1680 0 0");
  EXPECT_EQ(p.Protocol.ProtocolTitle + std::to_string(int(p.Defines[LookupDefine(p, "X")].Value)), "7")
      << "NAME never fills the title";
  // an unknown modulation or bit order is reported and replaced; any part of the list passes
  Library("c.irp", "PROTOCOL = C\r\nMODULATION = bi -\r\nBITORDER = l\r\nFORM = D:8;F:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "C"));
  EXPECT_EQ(Record(), "C|BI-|L|0|0|1|D:8;F:8|0 0 0 0");
  EXPECT_EQ(LookupDefine(p, "X"), 0);
  Library("a.irp", "PROTOCOL = A\r\nMODULATION = q a m\r\nBIT ORDER = both\r\nFORM = D:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "A"));
  EXPECT_EQ(host.messages, (Strings{"Bad Command in Protocol File COLOUR = red ",
                                    "Modulation Paramaeter QAM is Not recognized, PWM assumed",
                                    "Bit Order Paramaeter BOTH is Not recognized, LSB assumed"}));
  EXPECT_EQ(p.Protocol.Modulation + p.Protocol.BitOrder + p.LastModulationText + p.LastBitOrderText, "PWMLSBQAMBOTH");
}

TEST_F(ProtocolFiles, OneAndZeroCountInTimeBaseUnitsAndOnlyBelowIt) {
  const std::pair<const char*, const char*> cases[] = {
      {"TIMEBASE = 600\r\nONE = 2,1\r\nZERO = 1,-3", "1200 600 600 -1800"},
      {"TIMEBASE = 600\r\nONE = 1200,600\r\nZERO = 599,-600", "0 0 359400 -360000"},  // 1200 and 600 unused
      {"ONE = 0.5,5\r\nZERO = -3,0.75", "0 0 -3 1"},  // time base 1: 0.5 -> 0, 5 unused, 0.75 -> 1
      {"TIMEBASE = 5\r\nONE = 0.5,1.5", "2 8 0 0"},    // 2.5 -> 2, 7.5 -> 8
  };
  for (const auto& [statements, times] : cases) {
    Library("a.irp", std::string("PROTOCOL = A\r\n") + statements + "\r\nFORM = D:8\r\n");
    ASSERT_TRUE(LoadProtocol(p, "A"));
    EXPECT_EQ(Record().substr(Record().rfind('|') + 1), times) << statements;
  }
}

TEST_F(ProtocolFiles, FormRegistersItsSymbolsAndBindsDAndFUnlessTheProtocolDoes) {
  Library("p.irp", "PROTOCOL = T\r\nFORM = A:8,F:8;A:8\r\n");
  ASSERT_TRUE(LoadProtocol(p, "T"));
  // A and F come from the form in that order; F is then rebound and D appended.
  EXPECT_EQ(Symbols(), (Strings{"A=/1", "F=FUNCTION/4", "D=DEVICE/4"}));
  Library("bare.irp", "PROTOCOL = Bare\r\nFREQUENCY = 38000\r\n");
  ASSERT_TRUE(LoadProtocol(p, "BARE"));
  EXPECT_EQ(host.messages, Strings{"No form has beeen specified for BARE Protocol"});
  EXPECT_EQ(Symbols(), (Strings{"D=DEVICE/4", "F=FUNCTION/4"}));
  // an existing entry is left alone; "-X", "5", "_", "*", "R*", "R_", D and F get no entry
  Library("s.irp", "PROTOCOL = Sony12\r\nDEFINE LEAD = [9000 -4500]\r\nDEFINE DEV = DEVICE\r\nDEFINE FN = function\r\n"
                   "FORM = LEAD,-X:8,+Y:4,5:3,_,*,R*,R_,GAP,DEV:8,FN:8\r\n");
  p.F.format.AddItem("NEC");
  p.F.format.AddItem("SONY 12");
  ASSERT_TRUE(LoadProtocol(p, "Sony 12"));
  EXPECT_EQ(Symbols(), (Strings{"LEAD=9000 -4500/5", "DEV=DEVICE/4", "FN=function/4", "X=/1", "Y=/1", "GAP=/1"}));
  EXPECT_EQ(p.F.format.text, "SONY 12") << "the PROTOCOL statement selects its entry in the format list";
}

}  // namespace
}  // namespace bw
