// The export writers' arithmetic and refusals: the textbook Pronto frequency word,
// Pronto Hex of a hand-built key, the pairing of marks and spaces, and the devices
// that cannot be exported. Whole devices are decoded back in the command-line tests.
#include <gtest/gtest.h>

#include <sstream>

#include "export/export.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

TEST(Export, ProntoFrequencyWordIsTheTextbookOneWithoutCalibration) {
  // 1e6 / (f x 0.241246): 38 kHz 109.08, 40 kHz 103.63, 36 kHz 115.14, 56 kHz 74.02,
  // 455 kHz 9.11; the database's calibrated words would be 106, 101, 111, 72, 9.
  const std::vector<std::pair<int32_t, int32_t>> cases = {
      {38000, 0x6D}, {40000, 104}, {36000, 115}, {56000, 74}, {455000, 9}, {0, 0}, {-38000, 0}};
  for (const auto& [frequency, word] : cases) EXPECT_EQ(ProntoStandardFrequencyWord(frequency), word) << frequency;
}

TEST(Export, ProntoHexCountsUnitsOfTheWordsOwnPeriodAndCutsWhatAWordCannotHold) {
  // 38 kHz: a unit of 109 x 0.241246 = 26.2958 us. 9000 -> 342.26, 4500 -> 171.13,
  // 560 -> 21.30, 2250 -> 85.56, 96000 -> 3650.77; 2 s -> 76058, more than FFFF.
  ExportKey key{"POWER", 1, 2, {9000, -4500, 560, -560}, {9000, -2250, 560, -96000}};
  bool clipped = true;
  EXPECT_EQ(ProntoHexCode(key, 38000, &clipped), "0000 006D 0002 0002 0156 00AB 0015 0015 0156 0056 0015 0E43");
  EXPECT_FALSE(clipped);
  key.repeat.back() = -2000000;
  EXPECT_EQ(ProntoHexCode(key, 38000, &clipped).substr(40), "0156 0056 0015 FFFF");
  EXPECT_TRUE(clipped);
}

TEST(Export, PairUpMakesMarkSpacePairsOfBothParts) {
  struct Case { std::vector<int32_t> once, repeat, pairedOnce, pairedRepeat; };
  const std::vector<Case> cases = {
      {{100, -50}, {100, -70}, {100, -50}, {100, -70}},                        // already pairs
      {{100, 20, 0, -50, -5}, {}, {120, -55}, {}},                             // neighbours added, zeros gone
      {{-300, 100, -50}, {}, {100, -50}, {}},                                  // leading silence sends nothing
      {{100, -50}, {-30, 100, -70}, {100, -80}, {100, -70}},                   // repeat's leading space moves back
      {{}, {-30, 100, -70}, {}, {100, -100}},                                  // ... or round to its own end
      {{100, -50, 100}, {100}, {100, -50, 100, -26}, {100, -26}},              // a closing space of one period
  };
  for (const Case& c : cases) {
    ExportKey key{"K", 0, 0, c.once, c.repeat};
    PairUp(key, 26);
    EXPECT_EQ(key.once, c.pairedOnce);
    EXPECT_EQ(key.repeat, c.pairedRepeat);
  }
}

TEST(Export, DevicesWithoutACarrierAndUnknownFormatsAreRefusedByName) {
  struct Case { std::string format, protocolFormat; int32_t frequency; std::string message; };
  const std::vector<Case> cases = {
      {"wav", "NEC", 38000, "Export format wav is not one of pronto-hex, gc-sendir, lirc, csv"},
      {"lirc", "RAW", 38000, "Device ACME-X1 is RAW: its keys carry no carrier frequency, so it cannot be exported"},
      {"csv", "NEC", 0, "Device ACME-X1 has no usable carrier frequency (protocol NEC, FREQUENCY 0), so it cannot "
                        "be exported"},
      {"pronto-hex", "NEC", 50, "Device ACME-X1 has no usable carrier frequency (protocol NEC, FREQUENCY 50), so it "
                                "cannot be exported"},
  };
  for (const Case& c : cases) {
    test::TestProgram t;
    t.p.F.MFG.text = "ACME";
    t.p.F.Model.text = "X1";
    t.p.F.format.text = c.protocolFormat;
    t.p.Protocol.ProtocolName = "NEC";
    t.p.Protocol.Frequency = c.frequency;
    std::ostringstream out;
    EXPECT_FALSE(ExportDevice(t.p, c.format, out));
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(t.host.messages, std::vector<std::string>{c.message});
  }
}

}  // namespace
}  // namespace bw
