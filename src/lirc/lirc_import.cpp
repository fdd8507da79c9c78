#include "lirc/lirc_import.h"

#include <algorithm>
#include <map>
#include <atomic>
#include <set>
#include <sstream>
#include <system_error>
#include <unistd.h>

#include "generate/generate.h"
#include "input/device_file.h"
#include "input/subroutines.h"
#include "runtime/files.h"
#include "runtime/run_time_error.h"
#include "runtime/text.h"
#include "shell/program.h"

namespace bw::lirc {

namespace fs = std::filesystem;

namespace {

constexpr const char* kCrLf = "\r\n";

/// The name under which the signal of a key is defined, per key.
constexpr const char* kSignalName = "SIGNAL";

/// The most durations one key may generate (the burst sequence's capacity).
constexpr std::size_t kMaxDurations = 1000;

/// Text a protocol line can carry: "'" would start a comment, '"' vanishes.
std::string LineSafe(const std::string& text) {
  std::string out;
  for (char c : text)
    if (c != '\'' && c != '"') out += c;
  return out;
}

/// The file name for a remote: its name without the characters a file name
/// cannot hold; the lircd.conf file's own name when nothing is left.
std::string DeviceStem(const LircRemote& remote, const std::string& sourceFile) {
  std::string stem = CleanFileName(LineSafe(remote.name));
  if (stem.empty() || stem == "." || stem == "..") stem = CleanFileName(fs::path(sourceFile).filename().string());
  return stem;
}

/// The model name: the remote's, with the number that told it apart from another
/// remote of its name in the same import (the database keeps models apart by name).
std::string ModelName(const LircRemote& remote, const std::string& stem, const std::string& sourceFile) {
  const std::string base = DeviceStem(remote, sourceFile);
  std::string model = LineSafe(remote.name);
  if (stem.size() > base.size() && stem.compare(0, base.size(), base) == 0) model += stem.substr(base.size());
  return model;
}

std::string Manufacturer(const std::string& sourceFile) {
  std::string folder = fs::absolute(fs::path(sourceFile)).parent_path().filename().string();
  folder = LineSafe(folder);
  return folder.empty() ? std::string("LIRC") : folder;
}

/// Durations as a transmitter sends them: zero lengths gone, neighbours of the same kind joined.
std::vector<int64_t> Joined(const DurationList& list, int from, int count) {
  std::vector<int64_t> out;
  for (int i = from; i < from + count; ++i) {
    const int64_t d = list(i);
    if (d == 0) continue;
    if (!out.empty() && (out.back() > 0) == (d > 0)) out.back() += d;
    else out.push_back(d);
  }
  return out;
}

std::string Describe(const std::vector<int64_t>& v) {
  std::string s;
  for (std::size_t i = 0; i < v.size() && i < 12; ++i) s += (i ? " " : "") + std::to_string(v[i]);
  if (v.size() > 12) s += " ...";
  return s;
}

/// A scratch folder that removes itself.
class ScratchFolder {
 public:
  ScratchFolder() {
    static std::atomic<int> counter{0};
    path_ = fs::temp_directory_path() /
            ("burstwright-lirc-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
    fs::create_directories(path_);
  }
  ~ScratchFolder() {
    std::error_code ec;
    fs::remove_all(path_, ec);
  }
  const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

/// The protocol names (blanks removed, upper case) that the protocol files of
/// `folder` answer to, with the file that answers.
std::map<std::string, std::string> ProtocolNamesIn(const fs::path& folder) {
  std::map<std::string, std::string> names;
  for (const std::string& file : ListFolder(folder, ".irp")) {
    try {
      TextFileReader reader(folder / file);
      std::string line;
      while (ReadCleanLine(reader, line)) {
        for (const char* separator : {"=", " "}) {
          std::string rest = line;
          const std::string keyword = RemoveBlanks(GetToken(rest, separator));
          if (keyword == "FORMAT" || keyword == "PROTOCOL") names.emplace(RemoveBlanks(rest), file);
        }
      }
    } catch (const RunTimeError&) {
      // An unreadable file answers to nothing.
    }
  }
  return names;
}

/// Writes `text` as folder/name, replacing a file whose name differs only in case.
void WriteReplacing(const fs::path& folder, const std::string& name, const std::string& text) {
  if (std::optional<fs::path> old = FindFileIgnoringCase(folder, name); old && old->filename() != name) {
    std::error_code ec;
    fs::remove(*old, ec);
  }
  WriteTextFile(folder / name, text);
}

std::string ReadWholeFile(const std::string& path) {
  TextFileReader reader(path);
  std::string text, line;
  while (reader.ReadLine(line)) text += line + "\n";
  return text;
}

}  // namespace

std::string ImportResult::Line() const {
  std::string head = file + ": " + (remote.empty() ? std::string() : "remote " + remote + " ");
  if (Imported()) return head + "-> " + device + ", " + std::to_string(keys) + (keys == 1 ? " key" : " keys");
  return head + "not imported: " + reason;
}

std::string KeyLabel(const std::string& name) {
  std::string label;
  for (char c : name)
    if (c != '\'' && c != '"') label += c;
  return Trim(label);
}

namespace {

/// A label as the start of a key line: in double quotes when it holds "=" (the
/// quotes keep it from ending the label) or begins with ";" (a comment line).
std::string LabelField(const std::string& label) {
  if (label.find('=') != std::string::npos || (!label.empty() && label[0] == ';')) return '"' + label + '"';
  return label;
}

}  // namespace

namespace {

/// Time base of the field protocols. ONE and ZERO are written in its units with
/// decimals (560 us is 0.056), so any duration up to 100 s fits them exactly.
constexpr int kFieldTimeBase = 10000;

/// `us` in units of kFieldTimeBase, as few decimals as it takes.
std::string InTimeBase(int64_t us) {
  const bool negative = us < 0;
  const uint64_t m = static_cast<uint64_t>(negative ? -us : us);
  std::string text = std::to_string(m / kFieldTimeBase);
  std::string fraction = std::to_string(m % kFieldTimeBase);
  fraction.insert(0, 4 - fraction.size(), '0');
  while (!fraction.empty() && fraction.back() == '0') fraction.pop_back();
  if (!fraction.empty()) text += "." + fraction;
  return (negative ? "-" : "") + text;
}

/// The bits of one field in the order they are sent.
std::vector<bool> SentBits(uint64_t value, unsigned n, bool reverse) {
  std::vector<bool> bits;
  for (unsigned i = 0; i < n; ++i) bits.push_back(value >> (reverse ? i : n - 1 - i) & 1);
  return bits;
}

/// Form items for `bits` (sent in this order) that are the same for every key:
/// runs of at most 31 bits as numbers with a bit count, and each bit that RC6
/// sends at double length as its own durations. `first` is the frame position
/// (from the first data bit) of bits[0].
void ConstantItems(const std::vector<bool>& bits, unsigned first, const BitShape& shape, bool lsbFirst,
                   std::vector<std::string>& items) {
  const unsigned all = shape.preBits + shape.bits + shape.postBits;
  std::vector<bool> run;
  auto flush = [&] {
    if (run.empty()) return;
    uint64_t v = 0;
    for (std::size_t j = 0; j < run.size(); ++j)
      if (run[j]) v |= uint64_t{1} << (lsbFirst ? j : run.size() - 1 - j);
    items.push_back(std::to_string(v) + ":" + std::to_string(run.size()));
    run.clear();
  };
  for (std::size_t i = 0; i < bits.size(); ++i) {
    const unsigned position = all - (first + static_cast<unsigned>(i)) - 1;
    if (shape.doubleMask >> position & 1) {
      flush();
      items.push_back(bits[i] ? "[LONGSPACE1 LONGMARK1]" : "[LONGMARK0 LONGSPACE0]");
      continue;
    }
    run.push_back(bits[i]);
    if (run.size() == 31) flush();
  }
  flush();
}

std::string Hex(uint64_t v) {
  static const char* digits = "0123456789ABCDEF";
  std::string out;
  do {
    out.insert(out.begin(), digits[v & 15]);
    v >>= 4;
  } while (v);
  return "0x" + out;
}

}  // namespace

std::optional<DialectFiles> WriteFieldFiles(const LircRemote& r, const std::string& sourceFile, bool heldFrames,
                                            const std::string& stem) {
  if (r.IsRaw()) return std::nullopt;
  const BitShape shape = ShapeOf(r);
  const int64_t p1 = static_cast<int64_t>(r.Number("one", 0)), s1 = static_cast<int64_t>(r.Number("one", 1));
  const int64_t p0 = static_cast<int64_t>(r.Number("zero", 0)), s0 = static_cast<int64_t>(r.Number("zero", 1));
  // XMP sends four bits a symbol; a zero-length half shifts the transmitter's
  // marks and spaces out of step; codes beyond two 31-bit fields need more per-key values.
  if (shape.kind == BitShape::XMP || p1 <= 0 || s1 <= 0 || p0 <= 0 || s0 <= 0 || shape.bits > 62) return std::nullopt;
  const unsigned all = shape.preBits + shape.bits + shape.postBits;
  for (unsigned i = 0; i < shape.bits; ++i)
    if (shape.doubleMask >> (all - shape.preBits - i - 1) & 1) return std::nullopt;  // a per-key long bit
  for (const char* pair : {"header", "pre", "post", "foot", "gap"})
    if (r.Number(pair, 0) > 10000000 || r.Number(pair, 1) > 10000000) return std::nullopt;

  const bool reverse = r.Has("REVERSE");
  const uint64_t toggle = shape.toggleMask;
  const auto part = [&](uint64_t value, unsigned shift, unsigned n) {
    return n == 0 ? uint64_t{0} : ((value | (shift >= 64 ? 0 : toggle >> shift)) & (n >= 64 ? ~uint64_t{0} : (uint64_t{1} << n) - 1));
  };
  const uint64_t pre = part(r.Number("pre_data"), shape.bits + shape.postBits, shape.preBits);
  const uint64_t post = part(r.Number("post_data"), 0, shape.postBits);
  bool preIsDeviceCode = shape.preBits > 0 && shape.preBits <= 31 && shape.bits <= 31;
  for (unsigned i = 0; i < shape.preBits && preIsDeviceCode; ++i)
    if (shape.doubleMask >> (all - i - 1) & 1) preIsDeviceCode = false;

  DialectFiles files;
  files.stem = stem.empty() ? DeviceStem(r, sourceFile) : stem;
  files.protocolName = "LIRC " + files.stem;
  const std::string origin = LineSafe(fs::path(sourceFile).filename().string());
  const std::string remoteName = LineSafe(r.name);

  std::vector<std::string> defines;  // "NAME = value"
  std::vector<std::string> items;
  // A pair is a named block of its own, so that the device can empty it for held frames.
  auto pairItem = [&](const char* name, const char* block, const char* first, const char* second, bool markFirst) {
    if (!(r.Number(name, 0) && r.Number(name, 1))) return;
    const int64_t mark = static_cast<int64_t>(r.Number(name, 0)), space = -static_cast<int64_t>(r.Number(name, 1));
    defines.push_back(std::string(first) + " = " + std::to_string(markFirst ? mark : space));
    defines.push_back(std::string(second) + " = " + std::to_string(markFirst ? space : mark));
    defines.push_back(std::string(block) + " = [" + first + " " + second + "]");
    items.push_back(block);
  };
  auto markItem = [&](const char* parameter, const char* name) {
    if (uint64_t d = r.Number(parameter)) {
      defines.push_back(std::string(name) + " = " + std::to_string(d));
      items.push_back(std::string("[") + name + "]");
    }
  };
  if (shape.kind == BitShape::RC6) {
    defines.push_back("LONGMARK1 = " + std::to_string(2 * p1));
    defines.push_back("LONGSPACE1 = " + std::to_string(-2 * s1));
    defines.push_back("LONGMARK0 = " + std::to_string(2 * p0));
    defines.push_back("LONGSPACE0 = " + std::to_string(-2 * s0));
  }
  pairItem("header", "HEADER", "HEADMARK", "HEADSPACE", true);
  const bool repeatCode = r.Number("repeat", 0) && r.Number("repeat", 1);
  if (heldFrames && repeatCode && !(r.Number("header", 0) && r.Number("header", 1))) {
    // The held frames' repeat code goes where a header would be.
    defines.push_back("HEADER = []");
    items.push_back("HEADER");
  }
  markItem("plead", "LEADMARK");
  if (preIsDeviceCode) items.push_back("D:" + std::to_string(shape.preBits));
  else ConstantItems(SentBits(pre, shape.preBits, reverse), 0, shape, reverse, items);
  pairItem("pre", "PREPULSE", "PREMARK", "PRESPACE", true);
  if (shape.bits <= 31) {
    items.push_back("F:" + std::to_string(shape.bits));
  } else if (reverse) {
    items.push_back("F:31");
    items.push_back("D:" + std::to_string(shape.bits - 31));
  } else {
    items.push_back("D:" + std::to_string(shape.bits - 31));
    items.push_back("F:31");
  }
  pairItem("post", "POSTPULSE", "POSTMARK", "POSTSPACE", true);
  ConstantItems(SentBits(post, shape.postBits, reverse), shape.preBits + shape.bits, shape, reverse, items);
  markItem("ptrail", "TRAILMARK");
  pairItem("foot", "FOOT", "FOOTSPACE", "FOOTMARK", false);
  const int64_t gap = static_cast<int64_t>(r.Number("gap"));
  if (r.Has("CONST_LENGTH")) {
    // A zero-length burst first, so the pad always follows a burst: it then
    // makes the frame exactly its length, a last data space included.
    int64_t frame = gap;
    if (r.Has("NO_HEAD_REP") && r.Number("header", 0) && r.Number("header", 1))
      frame += static_cast<int64_t>(r.Number("header", 0) + r.Number("header", 1));
    defines.push_back("NOTHING = 0");
    defines.push_back("FRAME = ^" + std::to_string(frame));
    items.push_back("[NOTHING]");
    items.push_back("FRAME");
  } else if (gap > 0) {
    defines.push_back("GAPSPACE = " + std::to_string(-gap));
    items.push_back("[GAPSPACE]");
  }

  std::string form;
  for (const std::string& item : items) form += (form.empty() ? "" : ",") + item;
  const bool repeats = RepeatsFirstFrame(r);

  // Held frames that differ from the first: the device file redefines the
  // blocks (and with a repeat code the bit pairs, to nothing) for the repeated
  // part, and its keys name the protocol so that their first frame is built
  // from the protocol file as written. A Slink-e file, whose run drops a
  // repeat form equal to the once form, keeps the press alone.
  std::vector<std::string> held;  // device header lines
  const std::string codeName = RemoveBlanks(files.protocolName);
  if (!repeats && heldFrames) {
    if (codeName.find_first_of(",;=") != std::string::npos) return std::nullopt;
    const bool header = r.Number("header", 0) && r.Number("header", 1);
    if (repeatCode) {
      defines.push_back("REPMARK = " + std::to_string(r.Number("repeat", 0)));
      defines.push_back("REPSPACE = " + std::to_string(-static_cast<int64_t>(r.Number("repeat", 1))));
      held.push_back(std::string("DEFINE HEADER = [") + (header && r.Has("REPEAT_HEADER") ? "HEADMARK HEADSPACE " : "") +
                     "REPMARK REPSPACE]");
      held.push_back("ONE = 0,0");
      held.push_back("ZERO = 0,0");
      for (const char* block : {"PREPULSE", "POSTPULSE", "FOOT"})
        if (std::find(items.begin(), items.end(), block) != items.end()) held.push_back(std::string("DEFINE ") + block + " = []");
      if (shape.kind == BitShape::RC6)
        for (const char* name : {"LONGMARK1", "LONGSPACE1", "LONGMARK0", "LONGSPACE0"})
          held.push_back(std::string("DEFINE ") + name + " = 0");
    } else {
      if (header && r.Has("NO_HEAD_REP")) held.push_back("DEFINE HEADER = []");
      if (r.Number("foot", 0) && r.Number("foot", 1) && r.Has("NO_FOOT_REP")) held.push_back("DEFINE FOOT = []");
    }
    const std::vector<int32_t> frame = RepeatFrame(r, r.codes.front().name);
    if (r.Has("CONST_LENGTH")) {
      int64_t total = 0;
      for (int32_t d : frame) total += d < 0 ? -int64_t{d} : d;
      held.push_back("DEFINE FRAME = ^" + std::to_string(total));
    } else if (!frame.empty() && frame.back() < 0) {
      held.push_back("DEFINE GAPSPACE = " + std::to_string(frame.back()));
    }
  }

  int64_t one[2] = {p1, -s1}, zero[2] = {p0, -s0};
  if (shape.kind == BitShape::SpaceFirst || shape.kind == BitShape::Biphase || shape.kind == BitShape::RC6) {
    one[0] = -s1;
    one[1] = p1;
  }
  if (shape.kind == BitShape::SpaceFirst) {
    zero[0] = -s0;
    zero[1] = p0;
  }

  std::ostringstream irp;
  irp << "' Imported from the lircd.conf file " << origin << ", remote " << remoteName << "." << kCrLf;
  irp << "' Durations in microseconds, bursts positive, spaces negative; ONE and ZERO in" << kCrLf
      << "' units of the time base. "
      << (preIsDeviceCode ? "The device code is the remote's pre_data, the function code its key code."
                          : "The function code is the key code.")
      << kCrLf;
  if (shape.toggleMask) irp << "' Toggle bits are sent set, as on a first press; the device's codes include them." << kCrLf;
  if (!repeats && held.empty()) irp << "' A held key sends other frames; only the press is kept here." << kCrLf;
  if (!held.empty()) irp << "' A held key sends other frames: the device file says how they differ." << kCrLf;
  irp << "PROTOCOL = " << files.protocolName << kCrLf << "MODULATION = PPM" << kCrLf
      << "BITORDER = " << (reverse ? "LSB" : "MSB") << kCrLf << "FREQUENCY = " << CarrierFrequency(r) << kCrLf
      << "TIMEBASE = " << kFieldTimeBase << kCrLf << "REPEAT = 1" << kCrLf << "ONE = " << InTimeBase(one[0]) << ","
      << InTimeBase(one[1]) << kCrLf << "ZERO = " << InTimeBase(zero[0]) << "," << InTimeBase(zero[1]) << kCrLf;
  for (const std::string& d : defines) irp << "DEFINE " << d << kCrLf;
  irp << "FORM = " << form;
  if (repeats || !held.empty()) irp << ";" << form;
  irp << kCrLf;
  files.protocolText = irp.str();

  std::ostringstream dvc;
  dvc << "' Imported from the lircd.conf file " << origin << ", remote " << remoteName << "." << kCrLf
      << "MANUFACTURER = " << Manufacturer(sourceFile) << kCrLf << "DEVICE = Remote" << kCrLf
      << "MODEL = " << ModelName(r, files.stem, sourceFile) << kCrLf << "PROTOCOL = " << files.protocolName << kCrLf << "NUMBERBASE = HEX" << kCrLf
      << "DEVICECODE = " << (preIsDeviceCode ? Hex(pre) : std::string("0x0")) << kCrLf;
  if (!held.empty()) {
    dvc << "' What a held key sends after the first frame. The keys name their protocol, so" << kCrLf
        << "' that the first frame is built from the protocol file as it is written." << kCrLf;
    for (const std::string& line : held) dvc << line << kCrLf;
  }
  dvc << "[KEYCODES]" << kCrLf;
  int index = 0;
  for (const LircCode& c : r.codes) {
    std::string label = KeyLabel(c.name);
    ++index;
    if (label.empty()) label = "KEY " + std::to_string(index);
    const uint64_t code = part(c.code, shape.postBits, shape.bits);
    dvc << LabelField(label) << " = " << (held.empty() ? std::string() : codeName + ":");
    if (shape.bits <= 31) dvc << Hex(code);
    else dvc << Hex(code >> 31) << "," << Hex(code & 0x7FFFFFFF);
    dvc << kCrLf;
  }
  files.keys = index;
  files.deviceText = dvc.str();
  return files;
}

DialectFiles WriteRawFiles(const LircRemote& remote, const std::string& sourceFile, const std::string& stem) {
  DialectFiles files;
  files.stem = stem.empty() ? DeviceStem(remote, sourceFile) : stem;
  files.protocolName = "LIRC " + files.stem;
  const std::string origin = LineSafe(fs::path(sourceFile).filename().string());
  const std::string remoteName = LineSafe(remote.name);
  const std::string form = RepeatsFirstFrame(remote) ? std::string(kSignalName) + ";" + kSignalName : kSignalName;

  std::ostringstream irp;
  irp << "' Imported from the lircd.conf file " << origin << ", remote " << remoteName << "." << kCrLf
      << "' Each key of the device carries the durations of one press as " << kSignalName << kCrLf
      << "' (microseconds, bursts positive, spaces negative, the closing gap last)." << kCrLf;
  if (form.find(';') != std::string::npos)
    irp << "' A held key repeats the same frame." << kCrLf;
  else
    irp << "' A held key sends other frames; only the press is kept here." << kCrLf;
  irp << "PROTOCOL = " << files.protocolName << kCrLf << "MODULATION = PPM" << kCrLf << "BITORDER = MSB" << kCrLf
      << "FREQUENCY = " << CarrierFrequency(remote) << kCrLf << "TIMEBASE = 1" << kCrLf << "REPEAT = 1" << kCrLf
      << "FORM = " << form << kCrLf;
  files.protocolText = irp.str();

  std::ostringstream dvc;
  dvc << "' Imported from the lircd.conf file " << origin << ", remote " << remoteName << "." << kCrLf
      << "MANUFACTURER = " << Manufacturer(sourceFile) << kCrLf << "DEVICE = Remote" << kCrLf
      << "MODEL = " << ModelName(remote, files.stem, sourceFile) << kCrLf << "PROTOCOL = " << files.protocolName << kCrLf << "DEVICECODE = 0" << kCrLf
      << "[KEYCODES]" << kCrLf;
  int index = 0;
  for (const std::string& name : remote.KeyNames()) {
    std::string label = KeyLabel(name);
    ++index;
    if (label.empty()) label = "KEY " + std::to_string(index);
    dvc << LabelField(label) << " = " << index << ", " << kSignalName << "=[";
    const std::vector<int32_t> frame = FirstFrame(remote, name);
    for (std::size_t i = 0; i < frame.size(); ++i) dvc << (i ? " " : "") << frame[i];
    dvc << "]" << kCrLf;
  }
  files.keys = index;
  files.deviceText = dvc.str();
  return files;
}

std::string VerifyDialectFiles(const LircRemote& remote, const DialectFiles& files) {
  ScratchFolder scratch;
  WriteTextFile(scratch.path() / (files.stem + ".irp"), files.protocolText);
  WriteTextFile(scratch.path() / (files.stem + ".dvc"), files.deviceText);

  // Generating keys to check them asks no one; any message is a failure.
  RecordingHost host;
  Program p;
  p.host = &host;
  p.DeviceLibraryPath = scratch.path().string();
  const std::vector<std::string> names = remote.KeyNames();
  try {
    LoadDeviceFile(p, files.stem);
    if (!host.messages.empty()) return host.messages.front();
    if (p.Keys.UpperBound() != static_cast<int>(names.size()))
      return "the device file gives " + std::to_string(p.Keys.UpperBound()) + " keys";
    const std::string repeatForm = p.Protocol.FormRepeat;
    for (int output = 0; output < 2; ++output) {
      // The Pronto database run, then a Slink-e file (whose run drops a repeat
      // form that equals the once form, and keeps every bit's pair).
      p.FormatPronto = output == 0;
      p.FormatSlinkTxOnly = output == 1;
      if (output == 1 && p.Protocol.FormRepeat == p.Protocol.FormOnce) p.Protocol.FormRepeat.clear();
      for (int k = 1; k <= p.Keys.UpperBound(); ++k) {
        ResetBurstSequence(p);
        BuildKeySequence(p, k);
        if (!host.messages.empty()) return names[k - 1] + ": " + host.messages.front();
        const BurstSequence& b = p.Burst;
        const std::vector<int32_t> frame = FirstFrame(remote, names[k - 1]);
        const std::vector<int64_t> want(frame.begin(), frame.end());
        const int count = output == 1 ? b.TotalCount : b.OnceCount;
        const std::vector<int64_t> got = Joined(b.BurstDurations, 1, count);
        if (got != want) return names[k - 1] + " sends " + Describe(got) + " instead of " + Describe(want);
        if (output == 0 && !repeatForm.empty()) {
          const std::vector<int32_t> held = RepeatFrame(remote, names[k - 1]);
          const std::vector<int64_t> heldWant(held.begin(), held.end());
          const std::vector<int64_t> heldGot = Joined(b.BurstDurations, b.OnceCount + 1, b.RepeatPartCount);
          if (heldGot != heldWant)
            return names[k - 1] + " repeats " + Describe(heldGot) + " instead of " + Describe(heldWant);
        }
      }
    }
  } catch (const RunTimeError& e) {
    return "generating its keys stops with run-time error " + std::to_string(e.number()) + " (" + e.description() +
           ")";
  }
  return {};
}

std::vector<ImportResult> ImportLircFiles(const std::vector<std::string>& paths, const fs::path& folder,
                                          const ImportOptions& options) {
  std::vector<ImportResult> results;
  std::map<std::string, std::string> writtenBy;  // upper-cased stem -> file it came from in this run
  std::set<std::string> runProtocols;            // protocol names written in this run, blanks removed
  std::map<std::string, std::string> protocols = ProtocolNamesIn(folder);
  for (const std::string& path : paths) {
    std::vector<LircRemote> remotes;
    try {
      remotes = ReadLircdConf(ReadWholeFile(path));
    } catch (const RunTimeError& e) {
      results.push_back({path, "", "", 0, e.description()});
      continue;
    }
    const std::size_t before = results.size();
    bool any = false;
    for (const LircRemote& remote : remotes) {
      if (!options.remote.empty() && UCase(remote.name) != UCase(options.remote)) continue;
      any = true;
      ImportResult r{path, remote.name, "", 0, ""};
      if (std::optional<std::string> why = UnsupportedReason(remote)) {
        r.reason = *why;
        results.push_back(r);
        continue;
      }
      for (const std::string& key : remote.KeyNames()) {
        const std::size_t n = FirstFrame(remote, key).size();
        if (n > kMaxDurations) {
          r.reason = "key " + key + " sends " + std::to_string(n) + " durations (at most " +
                     std::to_string(kMaxDurations) + " can be generated)";
          break;
        }
      }
      if (!r.reason.empty()) {
        results.push_back(r);
        continue;
      }
      // Remotes of one name imported in one run are told apart by a number.
      const std::string base = DeviceStem(remote, path);
      std::string stem = base;
      for (int n = 2; writtenBy.count(UCase(stem)) || runProtocols.count(RemoveBlanks("LIRC " + stem)); ++n)
        stem = base + " " + std::to_string(n);

      DialectFiles files;
      std::string wrong;
      // Fields where the dialect can send them exactly, else every key's durations.
      std::optional<DialectFiles> fields = WriteFieldFiles(remote, path, true, stem);
      if (fields && !VerifyDialectFiles(remote, *fields).empty()) fields = WriteFieldFiles(remote, path, false, stem);
      if (fields && VerifyDialectFiles(remote, *fields).empty()) {
        files = *fields;
      } else {
        files = WriteRawFiles(remote, path, stem);
        wrong = VerifyDialectFiles(remote, files);
      }
      const std::string device = UCase(files.stem);
      const std::string dvcName = files.stem + ".dvc", irpName = files.stem + ".irp";
      auto taken = protocols.find(RemoveBlanks(files.protocolName));
      if (!options.overwrite && (FindFileIgnoringCase(folder, dvcName) || FindFileIgnoringCase(folder, irpName))) {
        r.reason = "device " + device + " exists in " + folder.string() + " (--yes replaces it)";
      } else if (taken != protocols.end() && UCase(taken->second) != UCase(irpName)) {
        r.reason = "protocol " + files.protocolName + " is taken by " + (folder / taken->second).string();
      } else if (!wrong.empty()) {
        r.reason = "it cannot be written exactly: " + wrong;
      }
      if (r.reason.empty()) {
        try {
          WriteReplacing(folder, irpName, files.protocolText);
          WriteReplacing(folder, dvcName, files.deviceText);
          r.device = device;
          r.keys = files.keys;
          writtenBy[device] = path;
          runProtocols.insert(RemoveBlanks(files.protocolName));
          protocols[RemoveBlanks(files.protocolName)] = irpName;
        } catch (const RunTimeError& e) {
          r.reason = "writing " + (folder / dvcName).string() + " fails: " + e.description();
        }
      }
      results.push_back(r);
    }
    if (!any && results.size() == before)
      results.push_back({path, "", "", 0,
                         options.remote.empty() ? "it holds no remote" : "it holds no remote " + options.remote});
  }
  return results;
}

}  // namespace bw::lirc
