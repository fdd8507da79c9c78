// The lircd.conf reader and the signal of one key press. A lircd.conf file holds
// remote blocks: timing parameters, then either a table of key codes (the bits
// of a frame's data part) or raw key signals. This module reads them and
// computes, for a key, the durations LIRC's transmitter sends for one press:
// marks and spaces in microseconds, neighbouring durations of the same kind
// joined, the closing gap as the last space. It knows nothing about our own
// dialect; lirc_import.h writes that.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace bw::lirc {

/// One key of a code table: its name as written and its code.
struct LircCode {
  std::string name;
  uint64_t code = 0;
};

/// One key of a raw_codes block: its name and its durations, mark first,
/// marks and spaces alternating, all positive as written.
struct LircRawCode {
  std::string name;
  std::vector<uint64_t> durations;
};

/// One "begin remote" ... "end remote" block as written. Parameter names are
/// lower case; flags upper case. A key name that appears twice keeps its first
/// code (the one a transmitter finds first).
struct LircRemote {
  std::string name;
  /// Line of "begin remote", for messages.
  int line = 0;
  std::map<std::string, std::vector<uint64_t>> numbers;
  std::set<std::string> flags;
  std::vector<LircCode> codes;
  std::vector<LircRawCode> rawCodes;

  /// The n-th number of a parameter (from 0); 0 when it is not given.
  uint64_t Number(const std::string& parameter, std::size_t n = 0) const;
  bool Has(const std::string& flag) const { return flags.count(flag) != 0; }
  bool IsRaw() const { return !rawCodes.empty() || Has("RAW_CODES"); }
  /// Names of the keys in file order, each once.
  std::vector<std::string> KeyNames() const;
};

/// Every remote block of a lircd.conf text. "#" starts a comment where a word
/// begins with it; keywords ignore case; numbers are C-style (0x.., 0.., decimal).
std::vector<LircRemote> ReadLircdConf(const std::string& text);

// ---- the signal of one press ----

/// Why a remote's keys cannot be computed (an encoding this reader does not
/// send, no timings, too many bits); nothing when they can.
std::optional<std::string> UnsupportedReason(const LircRemote& remote);

/// Carrier frequency in Hz (38 kHz where the file gives none).
int32_t CarrierFrequency(const LircRemote& remote);

/// The durations of one press of `key` (signed: + mark, - space, the gap last),
/// as LIRC sends the first frame. Empty for an unknown key. The remote must be
/// supported (UnsupportedReason gives nothing).
std::vector<int32_t> FirstFrame(const LircRemote& remote, const std::string& key);

/// The frame a held key sends after the first: the repeat code where the remote
/// has one, else the first frame without what NO_HEAD_REP and NO_FOOT_REP leave
/// out, closed by repeat_gap where it is given.
std::vector<int32_t> RepeatFrame(const LircRemote& remote, const std::string& key);

/// How a remote's data bits go on air, as the field writer needs to know.
struct BitShape {
  enum Kind { PulseSpace, SpaceFirst, Biphase, RC6, XMP } kind = PulseSpace;
  unsigned preBits = 0, bits = 0, postBits = 0;
  /// Bits that a first press sends set.
  uint64_t toggleMask = 0;
  /// RC6: bits sent at twice the length, counted from the last bit of the frame.
  uint64_t doubleMask = 0;
};
BitShape ShapeOf(const LircRemote& remote);

/// True when a held key repeats the first frame unchanged (no repeat code, no
/// header or foot left out of repeats, no own gap for repeats).
bool RepeatsFirstFrame(const LircRemote& remote);

}  // namespace bw::lirc
