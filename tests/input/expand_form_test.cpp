// Expanding a protocol form into signed durations: bits in either order,
// inversion, symbols, raw data with its names and messages, frame padding,
// repeats and the PPM merge.
#include <gtest/gtest.h>

#include <vector>

#include "input/defines.h"
#include "runtime/run_time_error.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

using test::TestProgram;

// ONE = 500 mark, 1500 space; ZERO = 500 mark, 500 space.
constexpr int32_t kOne[] = {500, -1500};
constexpr int32_t kZero[] = {500, -500};

struct FormTest : ::testing::Test {
  TestProgram t;
  DurationList out;

  FormTest() {
    t.p.Protocol.TimeBase = 1;
    t.p.Protocol.OneMark = kOne[0];
    t.p.Protocol.OneSpace = kOne[1];
    t.p.Protocol.ZeroMark = kZero[0];
    t.p.Protocol.ZeroSpace = kZero[1];
    t.p.Protocol.BitOrder = "LSB";
    t.p.Protocol.Modulation = "PWM";
  }

  std::vector<int32_t> Expand(const std::string& form, int repeats = 1) {
    ExpandForm(t.p, form, out, repeats);
    return Durations();
  }
  std::vector<int32_t> Durations() const {
    std::vector<int32_t> v;
    for (int i = 1; i <= out.Count; ++i) v.push_back(out(i));
    return v;
  }
  void Define(const std::string& line) { DefineSymbol(t.p, line, true); }
};

// Builds the expected list from bits written as "1" and "0".
std::vector<int32_t> Bits(const std::string& bits) {
  std::vector<int32_t> v;
  for (char b : bits) {
    const int32_t* pair = b == '1' ? kOne : kZero;
    v.push_back(pair[0]);
    v.push_back(pair[1]);
  }
  return v;
}

TEST_F(FormTest, LiteralBitsInBothOrders) {
  EXPECT_EQ(Expand("5:3"), Bits("101"));
  EXPECT_EQ(Expand("6:3"), Bits("011"));  // 110 sent from bit 0
  t.p.Protocol.BitOrder = "MSB";
  EXPECT_EQ(Expand("5:3"), Bits("101"));
  EXPECT_EQ(Expand("6:3"), Bits("110"));
}

TEST_F(FormTest, BitOrderComparisonIsExact) {
  t.p.Protocol.BitOrder = "msb";
  EXPECT_EQ(Expand("6:3"), Bits("011"));
}

TEST_F(FormTest, OnlyTheLowBitsAreSent) {
  EXPECT_EQ(Expand("13:2"), Bits("10"));  // 13 = 1101: bits 0 and 1
}

TEST_F(FormTest, LiteralWithoutBitCountSendsNothing) {
  EXPECT_TRUE(Expand("5").empty());
  EXPECT_TRUE(Expand("5:0").empty());
  EXPECT_EQ(out.Count, 0);
}

TEST_F(FormTest, InversionSwapsThePairsNotTheValue) {
  Define("F = FUNCTION");
  t.p.CurrentFunctionCode = 0x35;  // low four bits 0101
  EXPECT_EQ(Expand("F:4"), Bits("1010"));
  EXPECT_EQ(Expand("-F:4"), Bits("0101"));
  EXPECT_EQ(Expand("~F:4"), Bits("0101"));
}

TEST_F(FormTest, SymbolsOfEachValueKind) {
  Define("N = 6");
  Define("D = DEVICE");
  Define("S = N+1");
  t.p.CurrentDeviceCode = 2;
  EXPECT_EQ(Expand("N:3,D:2,S:3"), [] {
    std::vector<int32_t> v = Bits("011");  // 6
    for (int32_t d : Bits("01")) v.push_back(d);   // 2
    for (int32_t d : Bits("111")) v.push_back(d);  // 7
    return v;
  }());
  EXPECT_TRUE(Expand("UNKNOWN:8").empty());
  EXPECT_TRUE(t.host.messages.empty());
}

TEST_F(FormTest, PerKeyValuesAreStoredBeforeExpanding) {
  Define("D = DEVICE");
  Define("F = FUNCTION");
  Define("E = EXTENSION");
  t.p.CurrentDeviceCode = 12;
  t.p.CurrentFunctionCode = 34;
  t.p.CurrentExtension = 56;
  Expand("[D F E]");
  EXPECT_EQ(t.p.Defines[LookupDefine(t.p, "D")].Value, 12);
  EXPECT_EQ(t.p.Defines[LookupDefine(t.p, "F")].Value, 34);
  EXPECT_EQ(t.p.Defines[LookupDefine(t.p, "E")].Value, 56);
  EXPECT_EQ(Durations(), (std::vector<int32_t>{12, 34, 56}));
}

TEST_F(FormTest, FrameLengthAfterASpaceOverwritesItOneSpaceShort) {
  Define("GAP = ^108000");
  // FrameTime reaches 60000 with a trailing space; that space becomes 60000 - 108000.
  EXPECT_EQ(Expand("[30000 -30000],GAP"), (std::vector<int32_t>{30000, -48000}));
  EXPECT_EQ(t.p.FrameTime, 0);
}

TEST_F(FormTest, FrameLengthAfterAMarkAppendsTheGap) {
  Define("GAP = ^108000");
  EXPECT_EQ(Expand("[30000 -20000 10000],GAP"), (std::vector<int32_t>{30000, -20000, 10000, -48000}));
}

TEST_F(FormTest, RawFrameLengthAfterASpaceTakesItsValueOnceMore) {
  // FrameTime 60000 with last space -560: 60000 - 108000 - (-560) = -47440
  EXPECT_EQ(Expand("[59440 -560 ^108000]"), (std::vector<int32_t>{59440, -47440}));
  // after a mark the gap is appended as for a symbol
  EXPECT_EQ(Expand("[50000 -9440 560 ^108000]"), (std::vector<int32_t>{50000, -9440, 560, -48000}));
}

TEST_F(FormTest, RawFrameLengthByNameAndFrameTimeRestarts) {
  Define("GAP = ^5000");
  // as for "^5000": 2000 - 5000 - (-1000)
  EXPECT_EQ(Expand("[1000 -1000 GAP 300 -200]"), (std::vector<int32_t>{1000, -2000, 300, -200}));
  EXPECT_EQ(t.p.FrameTime, 500);
}

TEST_F(FormTest, RepeatsExpandTheWholeFormAgainWithFreshFrameTime) {
  EXPECT_EQ(Expand("[1000 -1000]", 2), (std::vector<int32_t>{1000, -1000, 1000, -1000}));
  EXPECT_EQ(t.p.FrameTime, 2000);  // only the last repetition counts
  EXPECT_TRUE(Expand("[1000 -1000]", 0).empty());
  EXPECT_TRUE(Expand("[1000 -1000]", -3).empty());
}

TEST_F(FormTest, PairsAddToFrameTime) {
  Expand("5:3");  // ONE ZERO ONE: 2000 + 1000 + 2000
  EXPECT_EQ(t.p.FrameTime, 5000);
}

TEST_F(FormTest, ExpandingStartsFromAnEmptyList) {
  Expand("[1 2 3 4 5]");
  EXPECT_EQ(Expand("[7]"), (std::vector<int32_t>{7}));
  EXPECT_EQ(out(2), 0);
}

TEST_F(FormTest, ZeroTimeBaseBecomesOne) {
  t.p.Protocol.TimeBase = 0;
  EXPECT_EQ(Expand("[5 -5]"), (std::vector<int32_t>{5, -5}));
  EXPECT_EQ(t.p.Protocol.TimeBase, 1);
}

TEST_F(FormTest, RawNumbersScaleButNamedAndQuotedValuesDoNot) {
  t.p.Protocol.TimeBase = 560;
  Define("K = 5");
  Define("LEAD = [16 -8]");
  EXPECT_EQ(Expand("[5 -1000 K],LEAD"), (std::vector<int32_t>{2800, -1000, 5, 8960, -4480}));
  out.Clear();
  t.p.FrameTime = 0;
  EmitRawData(t.p, "\"8\" 8", out);
  EXPECT_EQ(Durations(), (std::vector<int32_t>{8, 4480}));
  EXPECT_EQ(t.p.FrameTime, 4488);
}

TEST_F(FormTest, RawDataNamingAnUnknownSymbolShowsBothMessages) {
  EXPECT_EQ(Expand("[100 zz 200]"), (std::vector<int32_t>{100, 0, 200}));
  ASSERT_EQ(t.host.messages.size(), 2u);
  EXPECT_EQ(t.host.messages[0], "Name zz Is not defined in the Defines Tables");
  EXPECT_EQ(t.host.messages[1], "Name zz has no defined value");
}

TEST_F(FormTest, RawDataNamingRawDataOrAnExpressionWritesZero) {
  Define("LEAD = [9000 -4500]");
  Define("A = 3");
  Define("S = A+1");
  Define("D = DEVICE");
  Define("V = D+1");
  EXPECT_EQ(Expand("[LEAD S V]"), (std::vector<int32_t>{0, 0, 0}));
  ASSERT_EQ(t.host.messages.size(), 3u);
  EXPECT_EQ(t.host.messages[0], "Raw data may not be embedded in raw data");
  EXPECT_EQ(t.host.messages[1], "Name S type=2 has no defined meaning");
  EXPECT_EQ(t.host.messages[2], "Name V type=3 has no defined meaning");
}

TEST_F(FormTest, PpmMergesNeighboursOfTheSameSignExceptForSlinke) {
  t.p.Protocol.Modulation = "PPM";
  EXPECT_EQ(Expand("[500 -500 -700 600 600]"), (std::vector<int32_t>{500, -1200, 1200}));
  EXPECT_EQ(out(4), 0);
  t.p.FormatPronto = false;
  t.p.FormatADI = true;
  EXPECT_EQ(Expand("[500 -500 -700]"), (std::vector<int32_t>{500, -1200}));
  t.p.FormatADI = false;
  t.p.FormatSlinkTxOnly = true;
  EXPECT_EQ(Expand("[500 -500 -700]"), (std::vector<int32_t>{500, -500, -700}));
  t.p.FormatSlinkTxOnly = false;
  t.p.FormatSlinkTxRx = true;
  EXPECT_EQ(Expand("[500 -500 -700]"), (std::vector<int32_t>{500, -500, -700}));
}

TEST_F(FormTest, ModulationComparisonIsExact) {
  t.p.Protocol.Modulation = "ppm";
  EXPECT_EQ(Expand("[500 -500 -700]"), (std::vector<int32_t>{500, -500, -700}));
}

TEST(MergeSameSign, LeadingSpaceIsDroppedAndZerosGoWithSpaces) {
  DurationList list;
  list(1) = -100;
  list(2) = 500;
  list(3) = -500;
  list(4) = 0;
  list(5) = -300;
  list(6) = 200;
  list.Count = 6;
  // -100 is replaced by 500; from the third on: -500, 0 and -300 merge into -800.
  MergeSameSign(list);
  EXPECT_EQ(list.Count, 3);
  EXPECT_EQ(list(1), 500);
  EXPECT_EQ(list(2), -800);
  EXPECT_EQ(list(3), 200);
  for (int i = 4; i <= 6; ++i) EXPECT_EQ(list(i), 0);
}

TEST_F(FormTest, MoreThanAThousandDurationsIsSubscriptOutOfRange) {
  try {
    Expand("[1 -1]", 501);  // 1002 durations
    FAIL() << "no error";
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 9);
  }
}

TEST_F(FormTest, BitThirtyOneDoesNotFitTheMask) {
  // The mask 2^31 is beyond the 32-bit range.
  try {
    Expand("1:32");
    FAIL() << "no error";
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 6);
  }
  EXPECT_EQ(Expand("1:31").size(), 62u);
}

}  // namespace
}  // namespace bw
