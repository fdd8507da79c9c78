// Reads a generated waveform back against a protocol's published timing: each
// burst and space is compared with the published duration, bits are decided by
// which published bit cell they match, and frame lengths are measured from the
// start of a frame. Nothing here knows how the waveform was generated.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace bw::test::library {

/// The tolerance accepted for every duration: 1% of the published value (and at
/// least 1 us, for whole-microsecond rounding). Receivers accept far more (JVC
/// allows 60 us on a 527 us pulse, NEC decoders commonly 20%); 1% still shows a
/// wrong time unit, a missing or doubled pulse and a wrongly padded frame.
bool WithinTolerance(double measured, double published);

/// Frame periods are set by padding, not by a timer, and must come out within
/// 0.1% of the published period: a pad that ends one space short (a few hundred
/// microseconds) shows up here.
bool WithinFrameTolerance(double measured, double published);

/// Published durations (microseconds) of a zero bit and of a one bit.
struct BitCell {
  double zeroMark, zeroSpace, oneMark, oneSpace;
};

/// Walks signed durations (bursts positive, spaces negative) from the front.
/// A mismatch is reported as a test failure naming the reader and position;
/// reading goes on so that one bad pulse does not hide the rest.
class WaveformReader {
 public:
  WaveformReader(std::vector<int32_t> durations, std::string name);

  /// One burst of the published length.
  void Mark(double published, const std::string& what);
  /// One space of the published length.
  void Space(double published, const std::string& what);
  /// Frame lengths are measured from here.
  void StartFrame();
  /// The closing space of a frame that must end `period` us after StartFrame.
  void EndFrame(double period, const std::string& what);
  /// `n` bits, each a burst and a space matching the zero or the one cell;
  /// the first bit sent is the least significant unless `msbFirst`.
  uint32_t Bits(int n, const BitCell& cell, bool msbFirst = false);
  /// A bit whose space is taken by the frame's closing silence: its burst alone
  /// decides it (pulse-width codes).
  uint32_t BitByMark(const BitCell& cell);

  bool AtEnd() const { return next_ == durations_.size(); }
  /// Microseconds read so far.
  int64_t Elapsed() const { return elapsed_; }

 private:
  int32_t Take(const std::string& what);
  std::string Where() const;

  std::vector<int32_t> durations_;
  std::string name_;
  std::size_t next_ = 0;
  int64_t elapsed_ = 0;
  int64_t frameStart_ = 0;
};

/// The carrier state in the middle of each of `count` half bits of a bi-phase
/// message: +1 burst, -1 silence. The first half bit starts `offset` us after
/// the first duration of the list (negative when the list begins later than
/// the message, as when its idle first half is not in the list).
std::vector<int> SampleHalfBits(const std::vector<int32_t>& durations, double offset, double half, int count);

/// True when the duration is 1 to `maxUnits` whole units long within tolerance.
bool IsWholeUnits(int32_t duration, double unit, int maxUnits);

}  // namespace bw::test::library
