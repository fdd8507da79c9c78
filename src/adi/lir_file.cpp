// The ".lir" record format: encoding one burst sequence into a 256-byte
// record, reading a whole file into the table and writing the table back.
#include <cstdint>
#include <fstream>
#include <string>

#include "adi/adi.h"
#include "input/subroutines.h"
#include "runtime/numbers.h"
#include "runtime/run_time_error.h"
#include "runtime/text.h"

namespace bw {

namespace {

/// The controller counts pulse lengths in units of 40 microseconds.
constexpr int kMicrosecondsPerUnit = 40;
/// A pulse byte holds at most this many units; longer durations take several bytes.
constexpr int kMaxUnitsPerByte = 126;
/// Marks are written with this many units added, gaps longer than it with as
/// many taken off: the controller stretches marks and shortens gaps by about
/// 80 microseconds, so the stored lengths make the sent signal come out right.
/// Changing it changes every record this tool has ever written.
constexpr int kCorrectionUnits = 2;
/// Bit 7 of a pulse byte marks carrier on.
constexpr int kMarkFlag = 128;
/// The carrier byte is the controller's clock divided by the carrier, minus 1.
constexpr double kControllerClock = 4608000.0;
/// Longest sequence the format takes, counted in durations.
constexpr int kMaxDurations = 200;

/// Puts pulse bytes one after another; a byte beyond the 200th is run-time error 9.
class PulseWriter {
 public:
  explicit PulseWriter(LirRecord& record) : record_(record) {}
  void Put(int value) {
    if (position_ > static_cast<int>(record_.PulseBytes.size())) ThrowSubscriptOutOfRange();
    record_.PulseBytes[static_cast<std::size_t>(position_ - 1)] = static_cast<uint8_t>(value);
    ++position_;
  }

 private:
  LirRecord& record_;
  int position_ = 1;
};

/// One duration in microseconds as pulse bytes.
void EncodeDuration(PulseWriter& out, int32_t duration) {
  // Truncated toward zero, so that a short gap (-78 to -1) comes out as 0 units
  // and is written as a short mark below, as the controller has always been fed.
  int64_t units64 = (static_cast<int64_t>(duration) + 39) / kMicrosecondsPerUnit;
  if (units64 < INT16_MIN || units64 > INT16_MAX) ThrowOverflow();
  int16_t units = static_cast<int16_t>(units64);

  if (units < 0) {
    int m = -units;
    if (m > kCorrectionUnits) m -= kCorrectionUnits;
    while (m > 0) {
      if (m <= kMaxUnitsPerByte) {
        out.Put(m);
        m = 0;
      } else {
        out.Put(kMaxUnitsPerByte);
        m -= kMaxUnitsPerByte;
      }
    }
  } else {
    int m = Add16(units, kCorrectionUnits);
    while (m > 0) {
      if (m <= kMaxUnitsPerByte) {
        out.Put(m + kMarkFlag);
        m = 0;
      } else {
        out.Put(kMaxUnitsPerByte + kMarkFlag);
        m -= kMaxUnitsPerByte;
      }
    }
  }
}

/// Reads up to `size` bytes into `target`; false when nothing at all was left.
bool ReadField(std::istream& in, char* target, std::streamsize size, bool& sawAnything) {
  in.read(target, size);
  if (in.gcount() > 0) sawAnything = true;
  return in.gcount() == size;
}

void WriteRecord(std::ostream& out, const LirRecord& r) {
  out.put(static_cast<char>(r.CarrierByte));
  out.write(reinterpret_cast<const char*>(r.PulseBytes.data()), static_cast<std::streamsize>(r.PulseBytes.size()));
  out.write(reinterpret_cast<const char*>(r.Reserved.data()), static_cast<std::streamsize>(r.Reserved.size()));
  out.write(r.Name.data(), static_cast<std::streamsize>(r.Name.size()));
}

}  // namespace

// ---- the record format ----

bool EncodeLirRecord(Program& p, int key) {
  const BurstSequence& b = p.Burst;
  if (b.TotalCount > kMaxDurations) {
    p.host->MsgBox("This IR Command is too complex for the ADI format", MsgBoxStyle::OKOnly);
    return false;
  }
  LirRecord& r = p.CurrentLirRecord;

  if (p.Protocol.Frequency == 0) ThrowDivisionByZero();
  int32_t carrier = CLng(kControllerClock / p.Protocol.Frequency - 1);
  r.CarrierByte = static_cast<uint8_t>(carrier & 0xFF);

  r.Reserved.fill(0);

  const std::string& label = p.Keys[key].Label;
  std::string name = RemoveBlanks(p.F.MFG.text) + "/" + RemoveBlanks(p.F.Model.text) + ":" + RemoveBlanks(label) +
                     std::string(32, ' ');
  // One byte per character: converting first makes the cut count characters.
  std::string bytes = ToCp1252(name);
  for (std::size_t i = 0; i < r.Name.size(); ++i) r.Name[i] = bytes[i];

  p.F.AdiNewKey.text = label;

  r.PulseBytes.fill(0);
  PulseWriter out(r);
  for (int i = 1; i <= b.TotalCount; ++i) EncodeDuration(out, b.BurstDurations(i));
  return true;
}

void ReadLirFile(Program& p, const std::filesystem::path& path) {
  LirTable& t = p.Lir;
  t.records.assign(1, LirRecord{});
  std::ifstream in(path, std::ios::binary);
  if (!in) ThrowFileNotFound();

  // The end of the file only shows once a read finds nothing left, so the loop
  // always reads one record too many and drops it afterwards. A tail shorter
  // than a record still had something to read: it stays, filled as far as the
  // bytes went.
  bool atEnd = false;
  while (!atEnd) {
    t.records.emplace_back();
    LirRecord& r = t.records.back();
    bool sawAnything = false;
    char carrier = 0;
    bool whole = ReadField(in, &carrier, 1, sawAnything);
    if (whole) r.CarrierByte = static_cast<uint8_t>(carrier);
    whole = whole && ReadField(in, reinterpret_cast<char*>(r.PulseBytes.data()),
                               static_cast<std::streamsize>(r.PulseBytes.size()), sawAnything);
    whole = whole && ReadField(in, reinterpret_cast<char*>(r.Reserved.data()),
                               static_cast<std::streamsize>(r.Reserved.size()), sawAnything);
    whole = whole && ReadField(in, r.Name.data(), static_cast<std::streamsize>(r.Name.size()), sawAnything);
    atEnd = !sawAnything;
  }
  t.records.pop_back();

  t.Current = 1;
  t.Changed = false;
}

std::string LirPartialRecordWarning(const std::filesystem::path& path) {
  std::error_code ec;
  const auto size = std::filesystem::file_size(path, ec);
  const auto tail = ec ? 0 : size % LirRecord::kSize;
  if (tail == 0) return "";
  return path.string() + " ends " + std::to_string(tail) + " bytes into record " +
         std::to_string(size / LirRecord::kSize + 1) + ": a record is " + std::to_string(LirRecord::kSize) +
         " bytes, the rest of that one reads as 0";
}

void WriteLirFile(Program& p, const std::filesystem::path& path) {
  // Opened for update, never truncated: a longer file keeps its old records
  // behind the new ones (the editor asks before it writes over a file).
  std::fstream out(path, std::ios::in | std::ios::out | std::ios::binary);
  if (!out.is_open()) {
    std::ofstream create(path, std::ios::binary);
    if (!create.is_open()) {
      std::error_code ec;
      if (!path.parent_path().empty() && !std::filesystem::is_directory(path.parent_path(), ec)) ThrowPathNotFound();
      ThrowPathFileAccessError();
    }
    create.close();
    out.open(path, std::ios::in | std::ios::out | std::ios::binary);
    if (!out.is_open()) ThrowPathFileAccessError();
  }
  for (int i = 1; i <= p.Lir.UpperBound(); ++i) WriteRecord(out, p.Lir.records[static_cast<std::size_t>(i)]);
  out.flush();
  if (!out) ThrowPathFileAccessError();
}

void ShowLirRecord(Program& p) {
  const LirTable& t = p.Lir;
  if (t.Current < 0 || t.Current > t.UpperBound()) ThrowSubscriptOutOfRange();
  const LirRecord& r = t.records[static_cast<std::size_t>(t.Current)];
  std::string name = FromCp1252(std::string_view(r.Name.data(), r.Name.size()));
  std::size_t colon = name.find(':');
  if (colon != std::string::npos) {
    p.F.ADIFileDevice.text = Trim(name.substr(0, colon));
    p.F.AdiFileKey.text = Trim(name.substr(colon + 1));
  } else {
    p.F.ADIFileDevice.text = "??????????";
    p.F.AdiFileKey.text = "??????????";
  }
}

}  // namespace bw
