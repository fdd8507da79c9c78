// Encoding one burst sequence into a LIR record: 40 µs units truncated toward
// zero after adding 39, the 2-unit correction, long durations split into 126-unit
// bytes, the carrier byte, the name field and the limits of the format.
#include <gtest/gtest.h>

#include "adi/adi.h"
#include "adi/lir_test_support.h"
#include "runtime/run_time_error.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

using test::PulseStream;
using test::SetBurst;

struct Encoder : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  void SetUp() override {
    p.Protocol.Frequency = 38000;
    p.F.MFG.text = "Acme";
    p.F.Model.text = "TV100";
    test::SetKeys(p, {"Power"});
  }
  std::vector<int> Encode(const std::vector<int32_t>& durations) {
    SetBurst(p, durations);
    EXPECT_TRUE(EncodeLirRecord(p, 1));
    return PulseStream(p.CurrentLirRecord);
  }
};

TEST_F(Encoder, ShortDurationsAroundZeroBecomeTheSmallestMark) {
  // (0+39)/40, (-40+39)/40 and (-78+39)/40 all truncate to 0 units: a mark of 0+2 -> 128+2.
  EXPECT_EQ(Encode({0}), std::vector<int>({130}));
  EXPECT_EQ(Encode({-40}), std::vector<int>({130}));
  EXPECT_EQ(Encode({-78}), std::vector<int>({130}));
  // (-79+39)/40 = -1: a gap of 1 unit, too short for the correction.
  EXPECT_EQ(Encode({-79}), std::vector<int>({1}));
  // A 40 µs mark: (40+39)/40 = 1 unit, +2 -> 131.
  EXPECT_EQ(Encode({40}), std::vector<int>({131}));
}

TEST_F(Encoder, GapsLoseTwoUnitsOnlyWhenLongerThanTwo) {
  // -120: (-81)/40 = -2 -> m = 2, not above 2 -> byte 2.
  EXPECT_EQ(Encode({-120}), std::vector<int>({2}));
  // -160: (-121)/40 = -3 -> m = 3 - 2 = 1.
  EXPECT_EQ(Encode({-160}), std::vector<int>({1}));
  // -5160: (-5121)/40 = -128 -> m = 126, still one byte.
  EXPECT_EQ(Encode({-5160}), std::vector<int>({126}));
  // -5200: (-5161)/40 = -129 -> m = 127 -> 126 then 1.
  EXPECT_EQ(Encode({-5200}), std::vector<int>({126, 1}));
}

TEST_F(Encoder, LongDurationsSplitIntoFullBytesAndARest) {
  // -10000: (-9961)/40 = -249.025 -> -249; m = 247 -> 126, 121.
  EXPECT_EQ(Encode({-10000}), std::vector<int>({126, 121}));
  // 9000: 9039/40 = 225.975 -> 225 (truncated, not rounded); m = 227 -> 254, 101 + 128.
  EXPECT_EQ(Encode({9000}), std::vector<int>({254, 229}));
  // 5040: 5079/40 = 126 -> m = 128 -> 254 then 2 + 128.
  EXPECT_EQ(Encode({5040}), std::vector<int>({254, 130}));
  // A whole sequence goes out in order: -4500 -> (-4461)/40 = -111 -> 109; 560 -> 14 + 2.
  EXPECT_EQ(Encode({9000, -4500, 560, -10000}), std::vector<int>({254, 229, 109, 16 + 128, 126, 121}));
}

TEST_F(Encoder, CarrierByteIsClockOverFrequencyMinusOneRoundedHalfEvenLowByte) {
  auto carrier = [&](int32_t f) {
    p.Protocol.Frequency = f;
    SetBurst(p, {560});
    EXPECT_TRUE(EncodeLirRecord(p, 1));
    return static_cast<int>(p.CurrentLirRecord.CarrierByte);
  };
  EXPECT_EQ(carrier(38000), 120);  // 121.26 - 1
  EXPECT_EQ(carrier(40000), 114);  // 115.2 - 1
  EXPECT_EQ(carrier(36000), 127);  // 128 - 1 exactly
  EXPECT_EQ(carrier(24576), 186);  // 187.5 - 1 = 186.5 -> even 186
  EXPECT_EQ(carrier(40960), 112);  // 112.5 - 1 = 111.5 -> even 112
  EXPECT_EQ(carrier(10000), 204);  // 460.8 - 1 -> 460, low byte 460 - 256
  EXPECT_EQ(carrier(8192), 50);    // 562.5 - 1 = 561.5 -> 562, low byte 562 - 512
}

TEST_F(Encoder, ZeroFrequencyIsDivisionByZero) {
  p.Protocol.Frequency = 0;
  SetBurst(p, {560});
  try {
    EncodeLirRecord(p, 1);
    FAIL() << "no error";
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 11);
  }
}

TEST_F(Encoder, NameIsMakerSlashModelColonKeyWithoutBlanksUpperCasedAndPadded) {
  p.F.MFG.text = "Acme Corp";
  p.F.Model.text = "tv 100";
  test::SetKeys(p, {"Power On"});
  SetBurst(p, {560});
  ASSERT_TRUE(EncodeLirRecord(p, 1));
  EXPECT_EQ(test::NameOf(p.CurrentLirRecord), "ACMECORP/TV100:POWERON          ");
  EXPECT_EQ(p.F.AdiNewKey.text, "Power On") << "the new-key field shows the label as written";
}

TEST_F(Encoder, LongNameIsCutAtThirtyTwoCharactersInsideTheKeyLabel) {
  p.F.MFG.text = "Universal Electronics";
  p.F.Model.text = "Model 12345";
  test::SetKeys(p, {"Channel Up"});
  SetBurst(p, {560});
  ASSERT_TRUE(EncodeLirRecord(p, 1));
  // "UNIVERSALELECTRONICS/MODEL12345:" is exactly 32 characters: no key part is left.
  EXPECT_EQ(test::NameOf(p.CurrentLirRecord), "UNIVERSALELECTRONICS/MODEL12345:");
  p.F.MFG.text = "Sony";
  SetBurst(p, {560});
  ASSERT_TRUE(EncodeLirRecord(p, 1));
  EXPECT_EQ(test::NameOf(p.CurrentLirRecord), "SONY/MODEL12345:CHANNELUP       ");
}

TEST_F(Encoder, NameCharactersAreStoredAsWindows1252Bytes) {
  p.F.MFG.text = "Löwe";
  test::SetKeys(p, {"Menü"});
  SetBurst(p, {560});
  ASSERT_TRUE(EncodeLirRecord(p, 1));
  std::string name = test::NameOf(p.CurrentLirRecord);
  // "LÖWE/TV100:MENÜ": Ö is 0xD6 and Ü 0xDC, one byte each, so 15 bytes + 17 blanks.
  EXPECT_EQ(name, std::string("L\xD6WE/TV100:MEN\xDC") + std::string(17, ' '));
}

TEST_F(Encoder, EveryFieldIsRewrittenForTheNextKey) {
  SetBurst(p, {9000, -4500, 560, -560, 560, -10000});
  ASSERT_TRUE(EncodeLirRecord(p, 1));
  p.CurrentLirRecord.Reserved.fill(0x55);
  SetBurst(p, {560});
  ASSERT_TRUE(EncodeLirRecord(p, 1));
  const LirRecord& r = p.CurrentLirRecord;
  EXPECT_EQ(PulseStream(r), std::vector<int>({16 + 128}));
  for (std::size_t i = 1; i < r.PulseBytes.size(); ++i) ASSERT_EQ(r.PulseBytes[i], 0) << "pulse byte " << i + 1;
  for (uint8_t b : r.Reserved) ASSERT_EQ(b, 0);
}

TEST_F(Encoder, MoreThanTwoHundredDurationsIsRefusedWithTheMessage) {
  std::vector<int32_t> d(201, 560);
  SetBurst(p, d);
  p.CurrentLirRecord = test::NamedRecord("OLD:KEY", 7);
  EXPECT_FALSE(EncodeLirRecord(p, 1));
  ASSERT_EQ(t.host.messages.size(), 1u);
  EXPECT_EQ(t.host.messages[0], "This IR Command is too complex for the ADI format");
  EXPECT_EQ(t.host.styles[0], MsgBoxStyle::OKOnly);
  EXPECT_EQ(p.CurrentLirRecord.CarrierByte, 7) << "no record is made";
  EXPECT_EQ(p.F.AdiNewKey.text, "");

  d.resize(200);
  SetBurst(p, d);
  EXPECT_TRUE(EncodeLirRecord(p, 1)) << "200 durations still fit";
  EXPECT_EQ(PulseStream(p.CurrentLirRecord).size(), 200u);
}

TEST_F(Encoder, BytesBeyondTheTwoHundredthAreOutOfRange) {
  // 100 gaps of -10000 take two bytes each: exactly 200, no end byte needed.
  SetBurst(p, std::vector<int32_t>(100, -10000));
  ASSERT_TRUE(EncodeLirRecord(p, 1));
  EXPECT_EQ(p.CurrentLirRecord.PulseBytes[199], 121);
  // One more such gap passes the count check (101 durations) but not the bytes.
  SetBurst(p, std::vector<int32_t>(101, -10000));
  try {
    EncodeLirRecord(p, 1);
    FAIL() << "no error";
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 9);
  }
}

}  // namespace
}  // namespace bw
