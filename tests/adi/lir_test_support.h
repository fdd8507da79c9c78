// Builders shared by the ADI and details tests.
#pragma once

#include <string>
#include <vector>

#include "shell/program.h"

namespace bw::test {

/// `durations` into the burst sequence; the first `onceCount` (all by default) are the once part.
inline void SetBurst(Program& p, const std::vector<int32_t>& durations, int onceCount = -1) {
  p.Burst.BurstDurations.Clear();
  for (std::size_t i = 0; i < durations.size(); ++i) p.Burst.BurstDurations(static_cast<int>(i) + 1) = durations[i];
  p.Burst.TotalCount = static_cast<int16_t>(durations.size());
  p.Burst.OnceCount = static_cast<int16_t>(onceCount < 0 ? p.Burst.TotalCount : onceCount);
  p.Burst.RepeatPartCount = static_cast<int16_t>(p.Burst.TotalCount - p.Burst.OnceCount);
}

inline void SetKeys(Program& p, const std::vector<std::string>& labels) {
  p.Keys.Clear();
  for (const auto& l : labels) p.Keys.entries.emplace_back().Label = l;
}

}  // namespace bw::test
