// Small builders shared by the ADI tests: a burst sequence from a list of
// durations, a key table of labels, and a record with a given name.
#pragma once

#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "shell/program.h"

namespace bw::test {

/// Puts `durations` into the burst sequence; the first `onceCount` are the once part.
inline void SetBurst(Program& p, const std::vector<int32_t>& durations, int onceCount = -1) {
  p.Burst.BurstDurations.Clear();
  for (std::size_t i = 0; i < durations.size(); ++i) p.Burst.BurstDurations(static_cast<int>(i) + 1) = durations[i];
  int total = static_cast<int>(durations.size());
  p.Burst.OnceCount = static_cast<int16_t>(onceCount < 0 ? total : onceCount);
  p.Burst.RepeatPartCount = static_cast<int16_t>(total - p.Burst.OnceCount);
  p.Burst.TotalCount = static_cast<int16_t>(total);
}

/// Keys 1..n with the given labels.
inline void SetKeys(Program& p, std::initializer_list<std::string> labels) {
  p.Keys.Clear();
  for (const auto& l : labels) {
    KeyEntry e;
    e.Label = l;
    p.Keys.entries.push_back(e);
  }
}

/// A record whose name is `name` padded with blanks and whose carrier byte is `carrier`.
inline LirRecord NamedRecord(const std::string& name, uint8_t carrier = 0) {
  LirRecord r;
  r.CarrierByte = carrier;
  std::memset(r.Name.data(), ' ', r.Name.size());
  std::memcpy(r.Name.data(), name.data(), std::min(name.size(), r.Name.size()));
  return r;
}

/// The name field as text (bytes as they are).
inline std::string NameOf(const LirRecord& r) { return std::string(r.Name.data(), r.Name.size()); }

/// Pulse bytes up to (not including) the first 0, as numbers.
inline std::vector<int> PulseStream(const LirRecord& r) {
  std::vector<int> out;
  for (uint8_t b : r.PulseBytes) {
    if (b == 0) break;
    out.push_back(b);
  }
  return out;
}

}  // namespace bw::test
