// A small Device Library written into a temporary folder for the generator and
// command tests, and the hand-derived durations its protocols produce.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "shell/program.h"
#include "support/scripted_host.h"

namespace bw::test {

/// ACME32: time base 560, ONE = 560/-1680, ZERO = 560/-560, lead-in 8960/-4480,
/// a 560 trailer; once part LEAD, D:8, F:8, TAIL (35 durations), repeat part
/// LEAD, F:4 (10 durations). Bits go LSB first.
inline constexpr const char* kAcme32Protocol =
    "' test protocol\r\n"
    "PROTOCOL = ACME32\r\n"
    "FREQUENCY = 38000\r\n"
    "TIMEBASE = 560\r\n"
    "ONE = 1,-3\r\n"
    "ZERO = 1,-1\r\n"
    "DEFINE LEAD = [16 -8]\r\n"
    "DEFINE TAIL = [1]\r\n"
    "FORM = LEAD,D:8,F:8,TAIL;LEAD,F:4\r\n";

/// OTHER: 40 kHz, time base 100, ONE = 500/-1500, ZERO = 500/-500, form F:4.
inline constexpr const char* kOtherProtocol =
    "PROTOCOL = OTHER\r\n"
    "FREQUENCY = 40000\r\n"
    "TIMEBASE = 100\r\n"
    "ONE = 5,-15\r\n"
    "ZERO = 5,-5\r\n"
    "FORM = F:4\r\n";

inline constexpr const char* kAcmeTvDevice =
    "MANUFACTURER = Acme\r\n"
    "DEVICE = Tv\r\n"
    "MODEL = Tv100\r\n"
    "PROTOCOL = ACME32\r\n"
    "DEVICECODE = 5\r\n"
    "[KEYCODES]\r\n"
    "POWER = 12\r\n"
    "MUTE = 13 ; 14\r\n"
    "PLAY = 20/21\r\n"
    "AUX = (OTHER):1,2\r\n"
    "GHOST = (NOPE):1,3\r\n"
    "INPUT = 7,LEAD=[20 -10]\r\n";

inline constexpr const char* kRawDevice =
    "MANUFACTURER = Acme\r\n"
    "DEVICE = Amp\r\n"
    "MODEL = Raw1\r\n"
    "PROTOCOL = RAW\r\n"
    "[KEYCODES]\r\n"
    "POWER = 9000 -4500 560 -560\r\n";

/// BIG sends two codes of 18 frames each: 2 x 18 x 35 = 1260 durations.
inline constexpr const char* kBigDevice =
    "MANUFACTURER = Acme\r\n"
    "DEVICE = Tv\r\n"
    "MODEL = Big\r\n"
    "PROTOCOL = ACME32\r\n"
    "DEVICECODE = 5\r\n"
    "[KEYCODES]\r\n"
    "POWER = 12\r\n"
    "BIG = 5,12,18/5,13,18\r\n"
    "AFTER = 14\r\n";

/// Writes the library and points `p` at it.
inline void WriteTestLibrary(const TempDir& dir, Program& p) {
  dir.Write("Acme32.irp", kAcme32Protocol);
  dir.Write("Other.irp", kOtherProtocol);
  dir.Write("AcmeTv.dvc", kAcmeTvDevice);
  dir.Write("AcmeRaw.dvc", kRawDevice);
  dir.Write("AcmeBig.dvc", kBigDevice);
  p.DeviceLibraryPath = dir.path().string();
}

/// Durations of a bit string written in the order sent: '1' is ACME32's ONE,
/// '0' its ZERO.
inline std::vector<int32_t> AcmeBits(const std::string& sent) {
  std::vector<int32_t> out;
  for (char c : sent) {
    out.push_back(560);
    out.push_back(c == '1' ? -1680 : -560);
  }
  return out;
}

inline std::vector<int32_t> Join(std::initializer_list<std::vector<int32_t>> parts) {
  std::vector<int32_t> out;
  for (const auto& part : parts) out.insert(out.end(), part.begin(), part.end());
  return out;
}

/// The first `count` durations of the current burst sequence.
inline std::vector<int32_t> BurstHead(const Program& p, int count) {
  std::vector<int32_t> out;
  for (int i = 1; i <= count; ++i) out.push_back(p.Burst.BurstDurations(i));
  return out;
}

/// Durations from..to (inclusive) of the current burst sequence.
inline std::vector<int32_t> BurstRange(const Program& p, int from, int to) {
  std::vector<int32_t> out;
  for (int i = from; i <= to; ++i) out.push_back(p.Burst.BurstDurations(i));
  return out;
}

}  // namespace bw::test
