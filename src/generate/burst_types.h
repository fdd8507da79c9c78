// The burst sequence: the signed durations of one key's IR signal in
// microseconds (positive = carrier on, negative = carrier off), the part sent
// once followed by the part that repeats.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "runtime/run_time_error.h"

namespace bw {

/// 1000 signed durations indexed from 1, with a 16-bit entry count. A position
/// outside 1..1000 is run-time error 9, as the fixed array of the old program was.
struct DurationList {
  static constexpr int kCapacity = 1000;
  int16_t Count = 0;

  int32_t& operator()(int index) {
    if (index < 1 || index > kCapacity) ThrowSubscriptOutOfRange();
    return values_[static_cast<std::size_t>(index)];
  }
  int32_t operator()(int index) const {
    if (index < 1 || index > kCapacity) ThrowSubscriptOutOfRange();
    return values_[static_cast<std::size_t>(index)];
  }
  /// All 1000 durations to 0 and the count to 0.
  void Clear() {
    values_.fill(0);
    Count = 0;
  }

 private:
  std::array<int32_t, kCapacity + 1> values_{};
};

struct BurstSequence {
  DurationList BurstDurations;   ///< its Count is not used; the counts below are
  int16_t OnceCount = 0;
  int16_t RepeatPartCount = 0;
  int16_t TotalCount = 0;
  std::string BurstLabel;
  int32_t BurstFunctionCode = 0;
  int32_t BurstDeviceCode = 0;
  std::string BurstDescription;
  /// Set for entries built while the ADI "Recognize" option is chosen.
  bool MarkedForRecognize = false;
};

struct Program;

/// The writer of each per-key output, as the shell installs them. The generator
/// hands every finished entry to the one the format flags select, so it knows
/// the writers only through this table and includes none of them. A writer left
/// empty receives nothing.
struct EntryWriters {
  using Writer = void (*)(Program& p, int key, int32_t argument);
  Writer SlinkTxOnly = nullptr;
  Writer ADI = nullptr;
  Writer Pronto = nullptr;
};

}  // namespace bw
