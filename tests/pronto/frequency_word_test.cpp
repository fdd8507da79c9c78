// The Pronto frequency word: 1 000 000 / (f x 0.241246) rounded half to even,
// then lowered by the calibration steps; and the carrier the uncorrected word
// really stands for.
#include <gtest/gtest.h>

#include <functional>

#include "pronto/pronto_code.h"
#include "runtime/run_time_error.h"

namespace bw {
namespace {

int ErrorNumberOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const RunTimeError& e) {
    return e.number();
  }
  return 0;
}

TEST(ProntoFrequencyWord, CommonCarriersGetTheCorrectedWord) {
  // 38000 x 0.241246 = 9167.348 -> 109.08 -> 109, band 83..110 takes 3 off.
  EXPECT_EQ(ProntoFrequencyWord(38000), 106);
  // 40000 -> 103.63 -> 104 -> 101.
  EXPECT_EQ(ProntoFrequencyWord(40000), 101);
  // 36000 -> 115.14 -> 115, band 111..137 takes 4 off.
  EXPECT_EQ(ProntoFrequencyWord(36000), 111);
}

TEST(ProntoFrequencyWord, EveryBandEdgeFallsIntoItsOwnBand) {
  // Each frequency is 1e6 / (w x 0.241246) rounded to whole hertz, so that it
  // gives exactly the raw word w (within 0.01 of it).
  struct Case {
    int32_t frequency;
    int16_t rawWord;
    int16_t stored;
  };
  const Case cases[] = {
      {153524, 27, 27},  {148041, 28, 27},  {75366, 55, 54},   {74020, 56, 54},   {50551, 82, 80},
      {49942, 83, 80},   {37683, 110, 107}, {37344, 111, 107}, {30257, 137, 133}, {30037, 138, 133},
      {25122, 165, 160}, {24971, 166, 160}, {21589, 192, 186}, {21477, 193, 186}, {18842, 220, 213},
      {18756, 221, 213}, {16714, 248, 240}, {16647, 249, 240},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(ProntoFrequencyWord(c.frequency), c.stored) << "raw word " << c.rawWord;
  }
}

TEST(ProntoFrequencyWord, NoCarrierGivesWordZero) {
  EXPECT_EQ(ProntoFrequencyWord(0), 0);
  EXPECT_EQ(ProntoFrequencyWord(-38000), 0);
}

TEST(ProntoFrequencyWord, CarrierTooLowForSixteenBitsOverflows) {
  // 100 Hz -> 41451, beyond 32767.
  EXPECT_EQ(ErrorNumberOf([] { ProntoFrequencyWord(100); }), err::kOverflow);
  // 127 Hz -> 32639 still fits and lands in the top band (-9).
  EXPECT_EQ(ProntoFrequencyWord(127), 32630);
}

TEST(ProntoActualCarrier, UsesTheUncorrectedWord) {
  // Word 109: 1e6 / (109 x 0.241246) = 38028.87 Hz, not the 38000 asked for.
  EXPECT_NEAR(ProntoActualCarrier(38000), 38028.87f, 0.01f);
  // Word 104: 1e6 / 25.089584 = 39857.18 Hz.
  EXPECT_NEAR(ProntoActualCarrier(40000), 39857.18f, 0.01f);
}

TEST(ProntoActualCarrier, ZeroWordIsDivisionByZero) {
  EXPECT_EQ(ErrorNumberOf([] { ProntoActualCarrier(0); }), err::kDivisionByZero);
  // 10 MHz: 1e6 / 2412460 = 0.41, which rounds to word 0.
  EXPECT_EQ(ErrorNumberOf([] { ProntoActualCarrier(10000000); }), err::kDivisionByZero);
}

}  // namespace
}  // namespace bw
