// The bi-phase protocols RC5 and RC6 of the bundled library. The Pronto output
// stores them as predefined codes (format 5000 / 6000 with system and command),
// so the record is checked for that; the waveform the generator built for the
// key (what the ADI output receives, halves joined) and the Slink-e file's entry
// (halves as listed) are read back half bit by half bit against Philips'
// published timing and decoded to the published system and command.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "library/library_run.h"
#include "library/waveform_reader.h"
#include "slinke/slinke.h"

namespace bw::test::library {
namespace {

/// Bits from half-bit levels: (a, b) pairs, `one` the pair of a one bit.
std::vector<int> DecodeHalfBitPairs(const std::vector<int>& levels, std::size_t first, int count,
                                    std::pair<int, int> one, const std::string& label) {
  std::vector<int> bits;
  for (int i = 0; i < count; ++i) {
    int a = levels.at(first + 2 * i), b = levels.at(first + 2 * i + 1);
    bool isOne = a == one.first && b == one.second;
    bool isZero = a == one.second && b == one.first;
    EXPECT_TRUE(isOne || isZero) << label << ": half bits " << first + 2 * i << " and " << first + 2 * i + 1
                                 << " do not form a bi-phase bit";
    bits.push_back(isOne ? 1 : 0);
  }
  return bits;
}

uint32_t MsbFirst(const std::vector<int>& bits, std::size_t from, int count) {
  uint32_t value = 0;
  for (int i = 0; i < count; ++i) value = value << 1 | static_cast<uint32_t>(bits.at(from + i));
  return value;
}

/// A predefined Pronto code: format word, system and command, no carrier, no bursts.
void ExpectPredefinedRecord(const KeyCapture& key, const std::string& format, uint32_t command) {
  EXPECT_EQ(key.record.FormatText, format) << key.label;
  EXPECT_EQ(key.record.CarrierWord, 0) << key.label;
  EXPECT_EQ(key.record.OnceCount, 1) << key.label;
  EXPECT_EQ(key.record.RepeatCount, 0) << key.label;
  std::string digits = command < 10 ? "0" + std::to_string(command) : std::to_string(command);
  EXPECT_EQ(key.record.BurstText, "00 " + digits) << key.label;
}

// ---- RC5 --------------------------------------------------------------------
// Philips RC5: 36 kHz; bit time 1.778 ms, halves of 888.9 us (32 cycles); a one
// is silence then burst, a zero burst then silence; start bit 1, field bit (the
// inverted bit 6 of the command), toggle, 5 system bits, 6 command bits, MSB
// first; messages repeat every 113.778 ms (64 bit times).
constexpr double kRc5Half = 888.9;

void ExpectRc5Message(const std::vector<int32_t>& durations, uint32_t command, int toggle, const std::string& label) {
  ASSERT_FALSE(durations.empty()) << label;
  EXPECT_GT(durations.front(), 0) << label << ": the idle first half of the start bit is not sent";
  int64_t total = 0;
  for (std::size_t i = 0; i < durations.size(); ++i) {
    total += std::abs(durations[i]);
    if (i + 1 < durations.size()) {
      EXPECT_TRUE(IsWholeUnits(durations[i], kRc5Half, 2))
          << label << ": duration " << i << " (" << durations[i] << " us) is not one or two half bits";
      if (i > 0) {
        EXPECT_NE(durations[i] > 0, durations[i - 1] > 0) << label << ": bursts and spaces alternate";
      }
    }
  }
  EXPECT_LT(durations.back(), 0) << label << ": a message ends in silence";
  // The list starts with the start bit's burst, half a bit into the message; the
  // next message's start bit burst follows 113.778 ms after this one's.
  EXPECT_TRUE(WithinFrameTolerance(static_cast<double>(total), 113778)) << label << ": message period " << total;

  std::vector<int> levels = SampleHalfBits(durations, -kRc5Half, kRc5Half, 28);
  std::vector<int> bits = DecodeHalfBitPairs(levels, 0, 14, {-1, 1}, label);
  EXPECT_EQ(bits[0], 1) << label << ": start bit";
  EXPECT_EQ(bits[1], command < 64 ? 1 : 0) << label << ": field bit";
  EXPECT_EQ(bits[2], toggle) << label << ": toggle bit";
  EXPECT_EQ(MsbFirst(bits, 3, 5), 0u) << label << ": system";
  EXPECT_EQ(MsbFirst(bits, 8, 6), command % 64) << label << ": command";
}

TEST(LibraryTiming, Rc5PhilipsTvMatchesRc5TimingAndCodes) {
  // Philips 17PT1563, RC5 system 0; MENU, PICTURE and SOUND are extended commands.
  const std::vector<std::tuple<std::string, uint32_t, int>> codes = {
      {"POWER", 12, 0}, {"MUTE", 13, 0},  {"VOL UP", 16, 0},   {"VOL DOWN", 17, 0}, {"CH UP", 32, 0},
      {"CH DOWN", 33, 0}, {"1", 1, 0},    {"0", 0, 0},         {"MENU", 82, 0},     {"PICTURE", 107, 0},
      {"SOUND", 108, 0},  {"POWER T1", 12, 1}};
  LibraryRun run;
  ASSERT_TRUE(run.Load("PHILIPS TV 17PT1563"));
  run.GeneratePronto();
  EXPECT_TRUE(run.t.host.messages.empty()) << run.t.host.LastMessage();
  EXPECT_EQ(static_cast<int>(run.keys.size()), run.p.Keys.UpperBound());
  for (const auto& [label, command, toggle] : codes) {
    const KeyCapture& key = run.Key(label);
    ExpectRc5Message(key.once, command, toggle, label + " once");
    ExpectRc5Message(key.repeat, command, toggle, label + " repeat");
    ExpectPredefinedRecord(key, "0x5000", command);
  }
}

/// The durations of one key's entry in a transmit-only Slink-e file: the line
/// of numbers that ends with ":" and the label.
std::vector<int32_t> SlinkEntry(const std::string& file, const std::string& label) {
  std::istringstream lines(file);
  std::string line;
  while (std::getline(lines, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::size_t colon = line.rfind(':');
    if (colon == std::string::npos || line.substr(colon + 1) != label) continue;
    std::istringstream numbers(line.substr(0, colon));
    std::vector<int32_t> durations;
    int32_t d = 0;
    while (numbers >> d) durations.push_back(d);
    return durations;
  }
  ADD_FAILURE() << "no entry for " << label;
  return {};
}

/// Neighbouring durations of the same sign joined: the carrier simply stays on or off.
std::vector<int32_t> JoinSameSign(const std::vector<int32_t>& durations) {
  std::vector<int32_t> joined;
  for (int32_t d : durations) {
    if (!joined.empty() && (joined.back() > 0) == (d > 0)) joined.back() += d;
    else joined.push_back(d);
  }
  return joined;
}

TEST(LibraryTiming, Rc5SlinkeFileListsHalfBitsThatJoinIntoThePublishedMessage) {
  // The Slink-e file gets the halves unjoined (only other outputs join them);
  // the carrier they describe is the same RC5 message, one per entry.
  TempDir dir;
  LibraryRun run;
  run.p.ProgramFolder = dir.path();
  ASSERT_TRUE(run.Load("PHILIPS TV 17PT1563"));
  SelectSlinkTxOnly(run.p);
  cmdSlinkXqt_Click(run.p);
  EXPECT_TRUE(run.t.host.messages.empty()) << run.t.host.LastMessage();
  std::string file = ReadFileBytes(dir.path() / "Slinke Library" / "PHILIPS-17PT1563.cde");
  ASSERT_FALSE(file.empty());

  const std::vector<std::tuple<std::string, uint32_t>> codes = {{"POWER", 12}, {"VOL DOWN", 17}, {"MENU", 82}};
  for (const auto& [label, command] : codes) {
    std::vector<int32_t> halves = SlinkEntry(file, label);
    bool sameSignNeighbours = false;
    for (std::size_t i = 1; i < halves.size(); ++i) sameSignNeighbours |= (halves[i] > 0) == (halves[i - 1] > 0);
    EXPECT_TRUE(sameSignNeighbours) << label << ": the halves are listed unjoined";
    ExpectRc5Message(JoinSameSign(halves), command, 0, label + " in the Slink-e file");
  }
}

// ---- RC6 mode 0 ---------------------------------------------------------------
// Philips RC6: 36 kHz; t = 444.4 us (16 cycles); leader 6t burst, 2t space; start
// bit 1; mode bits 000; trailer bit of 2t + 2t (toggle); 8 address and 8
// command bits, MSB first; a one is burst then silence, a zero silence then
// burst; messages 107 ms apart.
constexpr double kRc6Unit = 444.4;

void ExpectRc6Message(const std::vector<int32_t>& durations, uint32_t command, const std::string& label) {
  WaveformReader r(durations, label);
  r.Mark(6 * kRc6Unit, "leader burst");
  r.Space(2 * kRc6Unit, "leader space");
  int64_t total = 0;
  for (std::size_t i = 0; i < durations.size(); ++i) {
    total += std::abs(durations[i]);
    if (i >= 2 && i + 1 < durations.size()) {
      EXPECT_TRUE(IsWholeUnits(durations[i], kRc6Unit, 3))
          << label << ": duration " << i << " (" << durations[i] << " us) is not 1 to 3 units";
      EXPECT_NE(durations[i] > 0, durations[i - 1] > 0) << label << ": bursts and spaces alternate";
    }
  }
  EXPECT_LT(durations.back(), 0) << label;
  EXPECT_TRUE(WithinFrameTolerance(static_cast<double>(total), 107000)) << label << ": message period " << total;

  // 44 half bits after the leader: start and mode (8), trailer (4), address and command (32).
  std::vector<int> levels = SampleHalfBits(durations, 8 * kRc6Unit, kRc6Unit, 44);
  std::vector<int> header = DecodeHalfBitPairs(levels, 0, 4, {1, -1}, label);
  EXPECT_EQ(header, (std::vector<int>{1, 0, 0, 0})) << label << ": start bit 1, mode 000";
  EXPECT_EQ(std::vector<int>(levels.begin() + 8, levels.begin() + 12), (std::vector<int>{-1, -1, 1, 1}))
      << label << ": double-width trailer bit, toggle 0";
  std::vector<int> data = DecodeHalfBitPairs(levels, 12, 16, {1, -1}, label);
  EXPECT_EQ(MsbFirst(data, 0, 8), 0u) << label << ": address";
  EXPECT_EQ(MsbFirst(data, 8, 8), command) << label << ": command";
}

TEST(LibraryTiming, Rc6PhilipsTvMatchesRc6Mode0TimingAndCodes) {
  // Philips 26PFL5604H, RC6 mode 0, address 0.
  const std::vector<std::pair<std::string, uint32_t>> codes = {
      {"POWER", 12}, {"MUTE", 13}, {"VOL UP", 16}, {"VOL DOWN", 17}, {"CH UP", 32},
      {"CH DOWN", 33}, {"OK", 92}, {"FORMAT", 245}, {"1", 1},       {"0", 0}};
  LibraryRun run;
  ASSERT_TRUE(run.Load("PHILIPS TV 26PFL5604H"));
  run.GeneratePronto();
  EXPECT_TRUE(run.t.host.messages.empty()) << run.t.host.LastMessage();
  EXPECT_EQ(static_cast<int>(run.keys.size()), run.p.Keys.UpperBound());
  for (const auto& [label, command] : codes) {
    const KeyCapture& key = run.Key(label);
    ExpectRc6Message(key.once, command, label + " once");
    ExpectRc6Message(key.repeat, command, label + " repeat");
    ExpectPredefinedRecord(key, "0x6000", command);
  }
}

}  // namespace
}  // namespace bw::test::library
