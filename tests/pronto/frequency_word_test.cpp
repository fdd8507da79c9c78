// The Pronto frequency word: 1 000 000 / (f x 0.241246) rounded half to even,
// lowered by the calibration steps; and the carrier the uncorrected word encodes.
#include <gtest/gtest.h>

#include "pronto/pronto_code.h"
#include "runtime/run_time_error.h"

namespace bw {
namespace {

int ErrorOf(float (*action)(int32_t), int32_t frequency) {
  try {
    action(frequency);
  } catch (const RunTimeError& e) {
    return e.number();
  }
  return 0;
}

TEST(ProntoFrequencyWord, CorrectedWordsAndBandEdges) {
  // 38000 -> 109.08 -> 109 - 3; 40000 -> 103.63 -> 104 - 3; 36000 -> 115.14 -> 115 - 4.
  EXPECT_EQ(ProntoFrequencyWord(38000), 106);
  EXPECT_EQ(ProntoFrequencyWord(40000), 101);
  EXPECT_EQ(ProntoFrequencyWord(36000), 111);
  // Frequencies giving the raw words 27, 28, 248 and 249 (1e6 / (w x 0.241246)).
  EXPECT_EQ(ProntoFrequencyWord(153524), 27);
  EXPECT_EQ(ProntoFrequencyWord(148041), 27);
  EXPECT_EQ(ProntoFrequencyWord(16714), 240);
  EXPECT_EQ(ProntoFrequencyWord(16647), 240);
  EXPECT_EQ(ProntoFrequencyWord(0), 0);
  EXPECT_EQ(ProntoFrequencyWord(-38000), 0);
}

TEST(ProntoFrequencyWord, OverflowAndZeroWordAreRunTimeErrors) {
  EXPECT_EQ(ErrorOf([](int32_t f) { return float(ProntoFrequencyWord(f)); }, 100), err::kOverflow);  // 41451
  EXPECT_NEAR(ProntoActualCarrier(38000), 38028.87f, 0.01f);  // 1e6 / (109 x 0.241246)
  EXPECT_EQ(ErrorOf(ProntoActualCarrier, 0), err::kDivisionByZero);
  EXPECT_EQ(ErrorOf(ProntoActualCarrier, 10000000), err::kDivisionByZero);  // 0.41 rounds to word 0
}

}  // namespace
}  // namespace bw
