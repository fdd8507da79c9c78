// The export writers: the generator's durations of every key, written as Pronto
// Hex, Global Caché sendir, a raw lircd.conf remote or CSV.
#include "export/export.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <set>

#include "generate/generate.h"
#include "runtime/numbers.h"

namespace bw {

namespace {

/// Microseconds per Pronto time unit: the reference clock every Pronto Hex
/// consumer divides by, so it cannot change without breaking every code written.
constexpr double kProntoUnit = 0.241246;

/// The largest count a Pronto word or a sendir number holds.
constexpr int64_t kMaxCount = 0xFFFF;

const char* const kPronto = "pronto-hex";
const char* const kSendir = "gc-sendir";
const char* const kLirc = "lirc";
const char* const kCsv = "csv";

/// The device as the device list shows it, or "MANUFACTURER-MODEL" without one.
std::string DeviceName(const Program& p) {
  const std::string listed = p.F.Lex.Text();
  return listed.empty() ? p.F.MFG.text + "-" + p.F.Model.text : listed;
}

std::string Hex4(int64_t word) {
  char text[8];
  std::snprintf(text, sizeof text, "%04X", static_cast<unsigned>(word & 0xFFFF));
  return text;
}

/// A count of carrier periods, at least 1 and at most a word; `clipped` notes a cut.
int64_t Count(double periods, bool& clipped) {
  const int64_t count = std::max<int64_t>(1, std::llround(periods));
  if (count > kMaxCount) clipped = true;
  return std::min(count, kMaxCount);
}

std::vector<int32_t> Joined(const ExportKey& key) {
  std::vector<int32_t> all = key.once;
  all.insert(all.end(), key.repeat.begin(), key.repeat.end());
  return all;
}

/// Zeros out, neighbours of one sign added.
std::vector<int32_t> Merged(const std::vector<int32_t>& part) {
  std::vector<int32_t> out;
  for (int32_t d : part) {
    if (d == 0) continue;
    if (!out.empty() && (out.back() > 0) == (d > 0)) {
      out.back() = static_cast<int32_t>(std::clamp<int64_t>(int64_t{out.back()} + d, INT32_MIN, INT32_MAX));
    } else {
      out.push_back(d);
    }
  }
  return out;
}

/// Appends a space to a part, added to its last space if it ends in one.
void AppendSpace(std::vector<int32_t>& part, int32_t space) {
  if (!part.empty() && part.back() < 0) {
    part.back() = static_cast<int32_t>(std::max<int64_t>(int64_t{part.back()} + space, INT32_MIN));
  } else {
    part.push_back(space);
  }
}

// ---- writers ----

void WriteProntoHex(Program& p, const std::vector<ExportKey>& keys, int32_t frequency, std::ostream& out) {
  for (const ExportKey& key : keys) {
    bool clipped = false;
    out << key.label << "\r\n" << ProntoHexCode(key, frequency, &clipped) << "\r\n";
    if (clipped) p.Message(key.label + ": a duration is longer than a Pronto word can count; written as FFFF");
  }
}

/// sendir,1:1,ID,FREQ,1,OFFSET,on,off,...: counts in periods of the carrier itself;
/// a repeat starts at OFFSET, the first number of the repeat part (1: the whole).
void WriteSendir(Program& p, const std::vector<ExportKey>& keys, int32_t frequency, std::ostream& out) {
  int id = 0;
  for (const ExportKey& key : keys) {
    id = id % static_cast<int>(kMaxCount) + 1;
    const std::size_t offset = key.repeat.empty() ? 1 : key.once.size() + 1;
    out << key.label << "\r\nsendir,1:1," << id << "," << frequency << ",1," << offset;
    bool clipped = false;
    for (int32_t d : Joined(key)) out << "," << Count(std::abs(double(d)) * frequency / 1e6, clipped);
    out << "\r\n";
    if (clipped) p.Message(key.label + ": a duration is longer than a sendir count can hold; written as 65535");
  }
}

/// A button or remote name as one lircd.conf word: blanks and control characters
/// become "_"; "#" would start a comment, so it does too.
std::string LircWord(const std::string& text) {
  std::string word;
  for (unsigned char c : text) word += (c <= ' ' || c == 0x7F || c == '#') ? '_' : static_cast<char>(c);
  return word.empty() ? "_" : word;
}

/// One raw_codes remote. A raw code ends with a mark; the silence after it is the
/// remote's gap. When the keys end in different silences but all last equally
/// long, the gap is that length (CONST_LENGTH); otherwise the longest silence.
void WriteLirc(Program& p, const std::vector<ExportKey>& keys, int32_t frequency, std::ostream& out) {
  std::set<int64_t> silences, lengths;
  for (const ExportKey& key : keys) {
    const std::vector<int32_t>& frame = key.once.empty() ? key.repeat : key.once;
    if (frame.empty()) continue;
    int64_t length = 0;
    for (int32_t d : frame) length += std::abs(int64_t{d});
    silences.insert(-int64_t{frame.back()});
    lengths.insert(length);
  }
  const bool constLength = silences.size() > 1 && lengths.size() == 1;
  const int64_t gap = constLength ? *lengths.begin() : silences.empty() ? 0 : *silences.rbegin();

  // lircd reads blanks and line ends as one separator; LF is what its own files use.
  out << "# " << DeviceName(p) << ": " << p.F.MFG.text << " " << p.F.Model.text << ", protocol "
      << p.Protocol.ProtocolName << ", exported by Burstwright\n"
      << "begin remote\n"
      << "  name  " << LircWord(DeviceName(p)) << "\n"
      << "  flags RAW_CODES" << (constLength ? "|CONST_LENGTH" : "") << "\n"
      << "  eps   30\n  aeps  100\n"
      << "  frequency " << frequency << "\n"
      << "  gap   " << gap << "\n"
      << "  begin raw_codes\n";
  std::map<std::string, int> used;
  for (const ExportKey& key : keys) {
    std::vector<int32_t> frame = key.once.empty() ? key.repeat : key.once;
    if (frame.empty()) continue;
    frame.pop_back();  // the closing silence is the gap
    std::string name = LircWord(key.label);
    // Two buttons of a remote may not share a name.
    if (int n = ++used[name]; n > 1) name += "_" + std::to_string(n);
    out << "    name " << name;
    for (std::size_t i = 0; i < frame.size(); ++i) out << (i % 8 == 0 ? "\n      " : " ") << std::abs(frame[i]);
    out << "\n";
  }
  out << "  end raw_codes\nend remote\n";
}

/// A CSV field, quoted when it holds a comma, a quote or a line break.
std::string CsvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + "\"";
}

void WriteCsv(Program& p, const std::vector<ExportKey>& keys, int32_t frequency, std::ostream& out) {
  out << "key,label,device code,function code,pronto hex\r\n";
  int index = 0;
  for (const ExportKey& key : keys) {
    bool clipped = false;
    out << ++index << "," << CsvField(key.label) << "," << key.deviceCode << "," << key.functionCode << ","
        << ProntoHexCode(key, frequency, &clipped) << "\r\n";
    if (clipped) p.Message(key.label + ": a duration is longer than a Pronto word can count; written as FFFF");
  }
}

}  // namespace

const std::vector<ExportFormat>& ExportFormats() {
  static const std::vector<ExportFormat> formats = {
      {kPronto, "Pronto Hex", ".txt"},
      {kSendir, "Global Cache sendir", ".txt"},
      {kLirc, "LIRC remote (lircd.conf)", ".lircd.conf"},
      {kCsv, "CSV table", ".csv"},
  };
  return formats;
}

std::vector<ExportKey> BuildExportKeys(Program& p) {
  std::vector<ExportKey> keys;
  for (int k = 1; k <= p.Keys.UpperBound(); ++k) {
    ResetBurstSequence(p);
    BuildKeySequence(p, k);
    const BurstSequence& b = p.Burst;
    ExportKey key;
    key.label = b.BurstLabel.empty() ? Format(b.BurstFunctionCode, "000") : b.BurstLabel;
    key.deviceCode = b.BurstDeviceCode;
    key.functionCode = b.BurstFunctionCode;
    for (int i = 1; i <= b.OnceCount; ++i) key.once.push_back(b.BurstDurations(i));
    for (int i = 1; i <= b.RepeatPartCount; ++i) key.repeat.push_back(b.BurstDurations(b.OnceCount + i));
    keys.push_back(std::move(key));
  }
  return keys;
}

void PairUp(ExportKey& key, int32_t closingSpace) {
  key.once = Merged(key.once);
  key.repeat = Merged(key.repeat);
  if (!key.repeat.empty() && key.repeat.front() < 0) {
    const int32_t space = key.repeat.front();
    key.repeat.erase(key.repeat.begin());
    AppendSpace(key.once.empty() ? key.repeat : key.once, space);
  }
  if (!key.once.empty() && key.once.front() < 0) key.once.erase(key.once.begin());
  for (std::vector<int32_t>* part : {&key.once, &key.repeat})
    if (!part->empty() && part->back() > 0) part->push_back(-closingSpace);
}

int32_t ProntoStandardFrequencyWord(int32_t frequency) {
  if (frequency <= 0) return 0;
  return static_cast<int32_t>(RoundHalfEven(1000000.0 / (frequency * kProntoUnit)));
}

std::string ProntoHexCode(const ExportKey& key, int32_t frequency, bool* clipped) {
  const int32_t word = ProntoStandardFrequencyWord(frequency);
  const double period = word * kProntoUnit;
  std::string code = "0000 " + Hex4(word) + " " + Hex4(int64_t(key.once.size() / 2)) + " " +
                     Hex4(int64_t(key.repeat.size() / 2));
  bool cut = false;
  for (int32_t d : Joined(key)) code += " " + Hex4(Count(std::abs(double(d)) / period, cut));
  if (clipped) *clipped = cut;
  return code;
}

bool ExportDevice(Program& p, const std::string& format, std::ostream& out) {
  const auto& formats = ExportFormats();
  if (std::none_of(formats.begin(), formats.end(), [&](const ExportFormat& f) { return f.name == format; })) {
    p.Message("Export format " + format + " is not one of pronto-hex, gc-sendir, lirc, csv");
    return false;
  }
  const std::string device = DeviceName(p);
  if (p.F.format.text == "RAW") {
    p.Message("Device " + device + " is RAW: its keys carry no carrier frequency, so it cannot be exported");
    return false;
  }
  const int32_t frequency = p.Protocol.Frequency;
  // Below 63 Hz the Pronto word no longer fits 16 bits; no IR carrier is that slow.
  if (ProntoStandardFrequencyWord(frequency) <= 0 || ProntoStandardFrequencyWord(frequency) > kMaxCount) {
    p.Message("Device " + device + " has no usable carrier frequency (protocol " + p.Protocol.ProtocolName +
              ", FREQUENCY " + std::to_string(frequency) + "), so it cannot be exported");
    return false;
  }
  std::vector<ExportKey> keys = BuildExportKeys(p);
  const int32_t period = std::max(1, static_cast<int32_t>(std::lround(1e6 / frequency)));
  for (ExportKey& key : keys) PairUp(key, period);
  if (format == kPronto) WriteProntoHex(p, keys, frequency, out);
  else if (format == kSendir) WriteSendir(p, keys, frequency, out);
  else if (format == kLirc) WriteLirc(p, keys, frequency, out);
  else WriteCsv(p, keys, frequency, out);
  return true;
}

}  // namespace bw
