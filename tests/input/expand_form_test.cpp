// Expanding a protocol form into signed durations: bits in either order, inversion, symbols, raw data
// with its names and messages, frame padding, repeats and the PPM merge.
#include <gtest/gtest.h>

#include <vector>

#include "input/defines.h"
#include "runtime/run_time_error.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

using List = std::vector<int32_t>;

// ONE = 500 mark, 1500 space; ZERO = 500 mark, 500 space.
List Bits(const std::string& bits) {
  List v;
  for (char b : bits) v.insert(v.end(), {500, b == '1' ? -1500 : -500});
  return v;
}

struct FormTest : ::testing::Test {
  test::TestProgram t;
  DurationList out;
  FormTest() {
    ProtocolRecord& r = t.p.Protocol;
    r.TimeBase = 1, r.OneMark = r.ZeroMark = 500, r.OneSpace = -1500, r.ZeroSpace = -500;
  }
  List Expand(const std::string& form, int repeats = 1) {
    ExpandForm(t.p, form, out, repeats);
    List v;
    for (int i = 1; i <= out.Count; ++i) v.push_back(out(i));
    return v;
  }
  void Define(const std::string& line) { DefineSymbol(t.p, line, true); }
  int ErrorNumberOf(const std::string& form, int repeats = 1) {
    return test::ErrorNumber([&] { Expand(form, repeats); });
  }
};

TEST_F(FormTest, LiteralBitsInBothOrdersAndNothingWithoutABitCount) {
  EXPECT_EQ(Expand("5:3"), Bits("101"));
  EXPECT_EQ(Expand("6:3"), Bits("011"));  // 110 sent from bit 0
  EXPECT_EQ(Expand("13:2"), Bits("10"));  // only the low bits of 1101
  EXPECT_EQ(t.p.FrameTime, 3000);         // 2000 + 1000
  t.p.Protocol.BitOrder = "MSB";
  EXPECT_EQ(Expand("5:3,6:3"), Bits("101" "110"));
  t.p.Protocol.BitOrder = "msb";  // the comparison is exact
  EXPECT_EQ(Expand("6:3"), Bits("011"));
  for (const char* form : {"5", "5:0", "UNKNOWN:8"}) EXPECT_TRUE(Expand(form).empty()) << form;
  EXPECT_TRUE(t.host.messages.empty());
}

TEST_F(FormTest, SymbolsOfEachKindAndInversionSwapsThePairsNotTheValue) {
  for (const char* line : {"N = 6", "D = DEVICE", "S = N+1", "F = FUNCTION", "E = EXTENSION"}) Define(line);
  t.p.CurrentDeviceCode = 2;
  t.p.CurrentFunctionCode = 0x35;  // low four bits 0101
  t.p.CurrentExtension = 56;
  EXPECT_EQ(Expand("N:3,D:2,S:3"), Bits("011" "01" "111"));  // 6, 2, 7
  EXPECT_EQ(Expand("F:4"), Bits("1010"));
  EXPECT_EQ(Expand("-F:4"), Bits("0101"));
  EXPECT_EQ(Expand("~F:4"), Bits("0101"));
  t.p.CurrentDeviceCode = 12;
  EXPECT_EQ(Expand("[D E]"), (List{12, 56}));  // per-key values are stored before expanding
  EXPECT_EQ(t.p.Defines[LookupDefine(t.p, "D")].Value, 12);
}

TEST_F(FormTest, FrameLengthPadsAfterAMarkAndOverwritesASpace) {
  Define("GAP = ^108000");
  // FrameTime 60000: after a mark -48000 is appended
  EXPECT_EQ(Expand("[30000 -20000 10000],GAP"), (List{30000, -20000, 10000, -48000}));
  // a trailing space becomes 60000 - 108000 although it was counted: one space short
  EXPECT_EQ(Expand("[30000 -30000],GAP"), (List{30000, -48000}));
  EXPECT_EQ(t.p.FrameTime, 0);
  // inside raw data after a space it takes its value once more: 60000 - 108000 - (-560)
  EXPECT_EQ(Expand("[59440 -560 ^108000]"), (List{59440, -47440}));
  EXPECT_EQ(Expand("[50000 -9440 560 ^108000]"), (List{50000, -9440, 560, -48000}));
  // by name exactly as "^5000": 2000 - 5000 - (-1000); FrameTime restarts behind it
  Define("GAP = ^5000");
  EXPECT_EQ(Expand("[1000 -1000 GAP 300 -200]"), (List{1000, -2000, 300, -200}));
  EXPECT_EQ(t.p.FrameTime, 500);
}

TEST_F(FormTest, RepeatsStartEachFrameAfreshAndRangeErrorsEndTheExpansion) {
  EXPECT_EQ(Expand("[1 2 3 4 5]"), (List{1, 2, 3, 4, 5}));
  EXPECT_EQ(Expand("[1000 -1000]", 2), (List{1000, -1000, 1000, -1000}));
  EXPECT_EQ(out(5), 0);
  EXPECT_EQ(t.p.FrameTime, 2000);  // only the last repetition counts
  EXPECT_TRUE(Expand("[1000 -1000]", 0).empty());
  EXPECT_EQ(ErrorNumberOf("[1 -1]", 501), 9);  // 1002 durations
  EXPECT_EQ(ErrorNumberOf("1:32"), 6);         // the mask 2^31 does not fit 32 bits
  EXPECT_EQ(Expand("1:31").size(), 62u);
}

TEST_F(FormTest, RawNumbersScaleButNamedAndQuotedValuesDoNot) {
  t.p.Protocol.TimeBase = 0;
  EXPECT_EQ(Expand("[5 -5]"), (List{5, -5}));
  EXPECT_EQ(t.p.Protocol.TimeBase, 1);  // a zero time base became 1
  t.p.Protocol.TimeBase = 560;
  Define("K = 5");
  Define("LEAD = [16 -8]");
  EXPECT_EQ(Expand("[5 -1000 K],LEAD"), (List{2800, -1000, 5, 8960, -4480}));
  out.Clear(), t.p.FrameTime = 0;
  EmitRawData(t.p, "\"8\" 8", out);
  EXPECT_EQ((List{out(1), out(2), t.p.FrameTime}), (List{8, 4480, 4488}));
}

TEST_F(FormTest, RawDataNamingUnknownRawOrExpressionWritesZeroWithItsMessage) {
  for (const char* line : {"LEAD = [9000 -4500]", "A = 3", "S = A+1", "D = DEVICE", "V = D+1"}) Define(line);
  EXPECT_EQ(Expand("[100 zz LEAD S V]"), (List{100, 0, 0, 0, 0}));
  EXPECT_EQ(t.host.messages, (std::vector<std::string>{"Name zz Is not defined in the Defines Tables",
                                                      "Name zz has no defined value",
                                                      "Raw data may not be embedded in raw data",
                                                      "Name S type=2 has no defined meaning",
                                                      "Name V type=3 has no defined meaning"}));
}

TEST_F(FormTest, PpmMergesNeighboursOfTheSameSignExceptForSlinke) {
  t.p.Protocol.Modulation = "PPM";
  EXPECT_EQ(Expand("[500 -500 -700 600 600]"), (List{500, -1200, 1200}));
  EXPECT_EQ(out(4), 0);
  auto only = [this](bool& format) {
    t.p.FormatPronto = t.p.FormatADI = t.p.FormatSlinkTxRx = t.p.FormatSlinkTxOnly = false;
    format = true;
    return Expand("[500 -500 -700]");
  };
  EXPECT_EQ(only(t.p.FormatADI), (List{500, -1200}));
  EXPECT_EQ(only(t.p.FormatSlinkTxRx), (List{500, -500, -700}));
  EXPECT_EQ(only(t.p.FormatSlinkTxOnly), (List{500, -500, -700}));
  t.p.Protocol.Modulation = "ppm";  // exact comparison
  EXPECT_EQ(only(t.p.FormatPronto), (List{500, -500, -700}));
}

TEST(MergeSameSign, LeadingSpaceIsDroppedAndZerosGoWithSpaces) {
  DurationList list;
  for (int32_t duration : {-100, 500, -500, 0, -300, 200}) list(++list.Count) = duration;
  MergeSameSign(list);  // -100 gives way to 500; -500, 0 and -300 merge into -800
  EXPECT_EQ(list.Count, 3);
  EXPECT_EQ((List{list(1), list(2), list(3), list(4), list(6)}), (List{500, -800, 200, 0, 0}));
}

}  // namespace
}  // namespace bw
