#include "lirc/lircd_conf.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <sstream>

namespace bw::lirc {

namespace {

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

std::string Upper(std::string s) {
  for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return s;
}

/// A C-style unsigned number (0x.. hexadecimal, 0.. octal, else decimal), the
/// whole word; nothing when the word is no number.
std::optional<uint64_t> ReadNumber(const std::string& word) {
  if (word.empty() || !std::isdigit(static_cast<unsigned char>(word[0]))) return std::nullopt;
  errno = 0;
  char* end = nullptr;
  unsigned long long value = std::strtoull(word.c_str(), &end, 0);
  if (errno != 0 || *end != '\0') return std::nullopt;
  return value;
}

/// The words of a line up to a word that starts a comment.
std::vector<std::string> Words(const std::string& line) {
  std::vector<std::string> words;
  std::istringstream in(line);
  std::string word;
  while (in >> word) {
    if (word[0] == '#') break;
    words.push_back(word);
  }
  return words;
}

enum class Section { Outside, Parameters, Codes, RawCodes };

}  // namespace

uint64_t LircRemote::Number(const std::string& parameter, std::size_t n) const {
  auto it = numbers.find(parameter);
  if (it == numbers.end() || n >= it->second.size()) return 0;
  return it->second[n];
}

std::vector<std::string> LircRemote::KeyNames() const {
  std::vector<std::string> names;
  for (const auto& c : codes) names.push_back(c.name);
  for (const auto& r : rawCodes) names.push_back(r.name);
  return names;
}

std::vector<LircRemote> ReadLircdConf(const std::string& text) {
  std::vector<LircRemote> remotes;
  std::set<std::string> seen;  // key names of the current remote
  Section section = Section::Outside;
  std::istringstream in(text);
  std::string line;
  int lineNumber = 0;
  while (std::getline(in, line)) {
    ++lineNumber;
    std::vector<std::string> w = Words(line);
    if (w.empty()) continue;
    const std::string keyword = Lower(w[0]);
    const std::string second = w.size() > 1 ? Lower(w[1]) : std::string();
    if (keyword == "begin") {
      if (second == "remote") {
        remotes.emplace_back();
        remotes.back().line = lineNumber;
        seen.clear();
        section = Section::Parameters;
      } else if (section != Section::Outside && second == "codes") {
        section = Section::Codes;
      } else if (section != Section::Outside && second == "raw_codes") {
        section = Section::RawCodes;
      }
      continue;
    }
    if (keyword == "end") {
      if (second == "remote") section = Section::Outside;
      else if (section != Section::Outside) section = Section::Parameters;
      continue;
    }
    if (section == Section::Outside) continue;
    LircRemote& r = remotes.back();
    switch (section) {
      case Section::Parameters:
        if (keyword == "name") {
          if (w.size() > 1) r.name = w[1];
        } else if (keyword == "flags") {
          std::string all;
          for (std::size_t i = 1; i < w.size(); ++i) all += w[i];
          std::istringstream flags(all);
          std::string flag;
          while (std::getline(flags, flag, '|'))
            if (!flag.empty()) r.flags.insert(Upper(flag));
        } else {
          std::vector<uint64_t> values;
          for (std::size_t i = 1; i < w.size(); ++i) {
            std::optional<uint64_t> v = ReadNumber(w[i]);
            if (!v) break;
            values.push_back(*v);
          }
          r.numbers[keyword] = values;
        }
        break;
      case Section::Codes:
        if (w.size() > 1 && !seen.count(w[0])) {
          if (std::optional<uint64_t> v = ReadNumber(w[1])) {
            r.codes.push_back({w[0], *v});
            seen.insert(w[0]);
          }
        }
        break;
      case Section::RawCodes:
        if (keyword == "name") {
          // A repeated name starts a block that is read and then dropped.
          r.rawCodes.push_back({w.size() > 1 ? w[1] : std::string(), {}});
          if (seen.count(r.rawCodes.back().name)) r.rawCodes.back().name.insert(0, 1, '\0');
          seen.insert(r.rawCodes.back().name);
        } else if (!r.rawCodes.empty()) {
          for (const std::string& word : w)
            if (std::optional<uint64_t> v = ReadNumber(word)) r.rawCodes.back().durations.push_back(*v);
        }
        break;
      default:
        break;
    }
  }
  for (LircRemote& r : remotes) {
    std::erase_if(r.rawCodes, [](const LircRawCode& c) { return !c.name.empty() && c.name[0] == '\0'; });
  }
  return remotes;
}

// ---- the signal of one press ----

namespace {

/// How data bits are sent.
enum class Encoding { PulseSpace, SpaceFirst, Biphase, RC6, XMP };

/// Encodings that are named by a flag and cannot be sent here.
constexpr const char* kRefusedEncodings[] = {"RCMM", "GOLDSTAR", "GRUNDIG", "BO", "SERIAL"};

Encoding EncodingOf(const LircRemote& r) {
  if (r.Has("RC6")) return Encoding::RC6;
  if (r.Has("RC5") || r.Has("SHIFT_ENC")) return Encoding::Biphase;
  if (r.Has("XMP")) return Encoding::XMP;
  if (r.Has("SPACE_FIRST")) return Encoding::SpaceFirst;
  return Encoding::PulseSpace;
}

/// The transmitter's buffer. Marks and spaces are held back while more of the
/// same kind may follow, then written one entry each; entries alternate mark,
/// space by their place, whatever was written. A zero-length mark or space
/// therefore ends nothing that is held back: a later mark after a held mark can
/// land in a space's place (remotes that write "one 0 833" send exactly that).
/// A space before anything is sent is dropped.
class SendBuffer {
 public:
  void Mark(uint64_t d) {
    if (pendingMark_ > 0) {
      pendingMark_ += d;
      return;
    }
    if (pendingSpace_ > 0) Flush(pendingSpace_);
    pendingSpace_ = 0;
    pendingMark_ = d;
  }
  void Space(uint64_t d) {
    if (entries_.empty() && pendingMark_ == 0) return;
    if (pendingSpace_ > 0) {
      pendingSpace_ += d;
      return;
    }
    if (pendingMark_ > 0) Flush(pendingMark_);
    pendingMark_ = 0;
    pendingSpace_ = d;
  }
  /// Ends the frame: a held mark is written, a held space dropped.
  void Finish() {
    if (pendingMark_ > 0) Flush(pendingMark_);
    pendingMark_ = pendingSpace_ = 0;
  }
  uint64_t Sum() const { return sum_; }
  std::vector<uint64_t>& Entries() { return entries_; }

 private:
  void Flush(uint64_t d) {
    entries_.push_back(d);
    sum_ += d;
  }
  std::vector<uint64_t> entries_;
  uint64_t pendingMark_ = 0;
  uint64_t pendingSpace_ = 0;
  uint64_t sum_ = 0;
};

uint64_t LowBits(uint64_t value, unsigned n) { return n >= 64 ? value : value & ((uint64_t{1} << n) - 1); }

uint64_t Reversed(uint64_t value, unsigned n) {
  uint64_t out = 0;
  for (unsigned i = 0; i < n; ++i) out = out << 1 | (value >> i & 1);
  return out;
}

/// The data bits of the whole frame: pre_data, code, post_data.
struct Frame {
  unsigned preBits, bits, postBits;
  unsigned AllBits() const { return preBits + bits + postBits; }
};

/// The mask of toggle bits; "toggle_bit N" and "repeat_bit N" count from the
/// frame's first bit, 1 being the most significant of all data bits.
uint64_t ToggleMask(const LircRemote& r, const Frame& f) {
  if (uint64_t mask = r.Number("toggle_bit_mask")) return mask;
  uint64_t bit = r.Number("toggle_bit");
  if (bit == 0) bit = r.Number("repeat_bit");
  if (bit == 0 || bit > f.AllBits()) return 0;
  return uint64_t{1} << (f.AllBits() - bit);
}

void SendBits(SendBuffer& b, const LircRemote& r, Encoding e, uint64_t value, unsigned n, unsigned done,
              const Frame& f, uint64_t rc6Mask) {
  if (r.Has("REVERSE")) value = Reversed(value, n);
  const uint64_t p1 = r.Number("one", 0), s1 = r.Number("one", 1);
  const uint64_t p0 = r.Number("zero", 0), s0 = r.Number("zero", 1);
  if (e == Encoding::XMP) {
    // Four bits a symbol: a mark, then a space one step longer per unit of the nibble.
    for (unsigned i = 4; i <= n; i += 4) {
      b.Mark(p0);
      b.Space(s0 + (value >> (n - i) & 15) * s1);
    }
    return;
  }
  for (unsigned i = 0; i < n; ++i) {
    const bool one = value >> (n - 1 - i) & 1;
    const unsigned position = f.AllBits() - done - i - 1;
    const uint64_t m = (e == Encoding::RC6 && (rc6Mask >> position & 1)) ? 2 : 1;
    switch (e) {
      case Encoding::PulseSpace:
        b.Mark(one ? p1 : p0);
        b.Space(one ? s1 : s0);
        break;
      case Encoding::SpaceFirst:
        b.Space(one ? s1 : s0);
        b.Mark(one ? p1 : p0);
        break;
      case Encoding::Biphase:
      case Encoding::RC6:
        // A one is a space then a mark, a zero the other way round; RC6 sends
        // the bits of its mask at twice the length.
        if (one) {
          b.Space(m * s1);
          b.Mark(m * p1);
        } else {
          b.Mark(m * p0);
          b.Space(m * s0);
        }
        break;
      default:
        break;
    }
  }
}

/// A pair parameter (header, foot, pre, post, repeat) is sent only when both its numbers are.
bool HasPair(const LircRemote& r, const std::string& name) { return r.Number(name, 0) && r.Number(name, 1); }

/// The closing space of a frame whose written part is `b`: `gap`, or with
/// `padTo` what that leaves of a frame `padTo` long. `uncounted` (a header that
/// repeats leave out) does not count into the frame.
std::vector<int32_t> Close(SendBuffer& b, uint64_t gap, bool pad, uint64_t uncounted) {
  b.Finish();
  uint64_t space = gap;
  if (pad) {
    const uint64_t sum = b.Sum() - std::min(b.Sum(), uncounted);
    if (gap > sum) space = gap - sum;
  }
  std::vector<uint64_t>& entries = b.Entries();
  // A frame that ends in a space's place (see SendBuffer) has that entry replaced by the gap.
  if (entries.size() % 2 == 0 && !entries.empty()) entries.back() = space;
  else if (space > 0) entries.push_back(space);
  std::vector<int32_t> out;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const uint64_t d = std::min<uint64_t>(entries[i], INT32_MAX);
    out.push_back(i % 2 == 0 ? static_cast<int32_t>(d) : -static_cast<int32_t>(d));
  }
  return out;
}

/// One frame of a key: the first of a press, or (`repeat`) one sent while it is held.
std::vector<int32_t> KeyFrame(const LircRemote& r, const std::string& key, bool repeat) {
  SendBuffer b;
  const bool constLength = r.Has("CONST_LENGTH");
  // Repeats end with their own gap where the remote gives one.
  const uint64_t gap = repeat && r.Number("repeat_gap") ? r.Number("repeat_gap") : r.Number("gap");
  const bool pad = constLength && !(repeat && r.Number("repeat_gap"));
  if (r.IsRaw()) {
    auto it = std::find_if(r.rawCodes.begin(), r.rawCodes.end(), [&](const LircRawCode& c) { return c.name == key; });
    if (it == r.rawCodes.end()) return {};
    for (std::size_t i = 0; i < it->durations.size(); ++i) {
      if (i % 2 == 0) b.Mark(it->durations[i]);
      else b.Space(it->durations[i]);
    }
    return Close(b, gap, pad, 0);
  }
  auto it = std::find_if(r.codes.begin(), r.codes.end(), [&](const LircCode& c) { return c.name == key; });
  if (it == r.codes.end()) return {};

  const bool header = HasPair(r, "header") && !(repeat && r.Has("NO_HEAD_REP"));
  const uint64_t headerLength = HasPair(r, "header") ? r.Number("header", 0) + r.Number("header", 1) : 0;
  if (repeat && HasPair(r, "repeat")) {
    // The repeat code: the header only where the remote asks for it, then the
    // lead, the repeat pair and the trail.
    if (HasPair(r, "header") && r.Has("REPEAT_HEADER")) {
      b.Mark(r.Number("header", 0));
      b.Space(r.Number("header", 1));
    }
    if (uint64_t lead = r.Number("plead")) b.Mark(lead);
    b.Mark(r.Number("repeat", 0));
    b.Space(r.Number("repeat", 1));
    if (uint64_t trail = r.Number("ptrail")) b.Mark(trail);
    return Close(b, gap, pad, 0);
  }

  const Frame f{static_cast<unsigned>(r.Number("pre_data_bits")), static_cast<unsigned>(r.Number("bits")),
                static_cast<unsigned>(r.Number("post_data_bits"))};
  const Encoding e = EncodingOf(r);
  const uint64_t toggle = ToggleMask(r, f);
  uint64_t rc6Mask = r.Number("rc6_mask");
  if (e == Encoding::RC6 && rc6Mask == 0) rc6Mask = toggle;

  // The whole frame's data as one number; a first press sends its toggle bits set.
  const uint64_t pre = LowBits(r.Number("pre_data"), f.preBits);
  const uint64_t code = LowBits(it->code, f.bits);
  const uint64_t post = LowBits(r.Number("post_data"), f.postBits);
  uint64_t all = post;
  if (f.bits + f.postBits < 64) all |= pre << (f.bits + f.postBits);
  if (f.postBits < 64) all |= code << f.postBits;
  all |= toggle;

  if (header) {
    b.Mark(r.Number("header", 0));
    b.Space(r.Number("header", 1));
  }
  if (uint64_t lead = r.Number("plead")) b.Mark(lead);
  auto field = [&](unsigned shift, unsigned n) { return n == 0 ? 0 : LowBits(shift >= 64 ? 0 : all >> shift, n); };
  SendBits(b, r, e, field(f.bits + f.postBits, f.preBits), f.preBits, 0, f, rc6Mask);
  if (HasPair(r, "pre")) {
    b.Mark(r.Number("pre", 0));
    b.Space(r.Number("pre", 1));
  }
  SendBits(b, r, e, field(f.postBits, f.bits), f.bits, f.preBits, f, rc6Mask);
  if (HasPair(r, "post")) {
    b.Mark(r.Number("post", 0));
    b.Space(r.Number("post", 1));
  }
  SendBits(b, r, e, field(0, f.postBits), f.postBits, f.preBits + f.bits, f, rc6Mask);
  if (uint64_t trail = r.Number("ptrail")) b.Mark(trail);
  if (HasPair(r, "foot") && !(repeat && r.Has("NO_FOOT_REP"))) {
    b.Space(r.Number("foot", 1));
    b.Mark(r.Number("foot", 0));
  }
  // A header that repeats leave out does not count into a padded first frame.
  return Close(b, gap, pad, header && r.Has("NO_HEAD_REP") ? headerLength : 0);
}

}  // namespace

std::optional<std::string> UnsupportedReason(const LircRemote& r) {
  for (const char* flag : kRefusedEncodings)
    if (r.Has(flag)) return std::string("its ") + flag + " encoding cannot be sent";
  if (r.codes.empty() && r.rawCodes.empty()) return std::string("it has no keys");
  if (r.IsRaw()) {
    if (r.rawCodes.empty()) return std::string("it has no raw keys");
    return std::nullopt;
  }
  if (r.Number("one", 0) + r.Number("one", 1) + r.Number("zero", 0) + r.Number("zero", 1) == 0)
    return std::string("it has no pulse timings (a receiver's code table)");
  const uint64_t bits = r.Number("bits") + r.Number("pre_data_bits") + r.Number("post_data_bits");
  if (r.Number("bits") == 0) return std::string("it has no data bits");
  if (bits > 64) return "its frames have " + std::to_string(bits) + " data bits (at most 64 can be sent)";
  if (EncodingOf(r) == Encoding::XMP &&
      (r.Number("bits") % 4 || r.Number("pre_data_bits") % 4 || r.Number("post_data_bits") % 4))
    return std::string("its XMP fields are not whole nibbles");
  return std::nullopt;
}

int32_t CarrierFrequency(const LircRemote& r) {
  const uint64_t f = r.Number("frequency");
  if (f == 0 || f > 1000000) return 38000;
  return static_cast<int32_t>(f);
}

std::vector<int32_t> FirstFrame(const LircRemote& r, const std::string& key) { return KeyFrame(r, key, false); }

std::vector<int32_t> RepeatFrame(const LircRemote& r, const std::string& key) { return KeyFrame(r, key, true); }

BitShape ShapeOf(const LircRemote& r) {
  BitShape s;
  s.preBits = static_cast<unsigned>(r.Number("pre_data_bits"));
  s.bits = static_cast<unsigned>(r.Number("bits"));
  s.postBits = static_cast<unsigned>(r.Number("post_data_bits"));
  const Frame f{s.preBits, s.bits, s.postBits};
  s.toggleMask = ToggleMask(r, f);
  switch (EncodingOf(r)) {
    case Encoding::PulseSpace: s.kind = BitShape::PulseSpace; break;
    case Encoding::SpaceFirst: s.kind = BitShape::SpaceFirst; break;
    case Encoding::Biphase: s.kind = BitShape::Biphase; break;
    case Encoding::RC6: s.kind = BitShape::RC6; break;
    case Encoding::XMP: s.kind = BitShape::XMP; break;
  }
  if (s.kind == BitShape::RC6) s.doubleMask = r.Number("rc6_mask") ? r.Number("rc6_mask") : s.toggleMask;
  return s;
}

bool RepeatsFirstFrame(const LircRemote& r) {
  if (HasPair(r, "repeat")) return false;
  if (r.Has("NO_HEAD_REP") && HasPair(r, "header")) return false;
  if (r.Has("NO_FOOT_REP") && HasPair(r, "foot")) return false;
  if (r.Number("repeat_gap") && r.Number("repeat_gap") != r.Number("gap")) return false;
  return true;
}

}  // namespace bw::lirc
