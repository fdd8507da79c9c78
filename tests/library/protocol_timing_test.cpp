// Every sample device loaded with Lex_Click and run through GenerateKeys with the
// Pronto output: each key's once and repeat parts read back against the published
// timing and decoded to the published codes. Carrier words (Pronto clock 0.241246
// us, step table): 38000 and 37917 Hz -> 109 - 3 = 106, 40000 -> 104 - 3 = 101,
// 37000 -> 112 - 4 = 108; bi-phase codes are stored as predefined codes instead.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <sstream>

#include "generate/generate.h"
#include "library/library_support.h"
#include "slinke/slinke.h"

namespace bw::test::library {
namespace {

// NEC uPD6121: 38 kHz; 9 ms + 4.5 ms lead-in; 562.5 us bursts, a zero 1.125 ms,
// a one 2.25 ms; device, its inverse (or 16 device bits), function, its
// inverse; 108 ms frames; repeat frame 9 ms, 2.25 ms, 562.5 us.
constexpr BitCell kNecBit{562.5, 562.5, 562.5, 1687.5};
Steps Nec16(uint32_t device, uint32_t fn) {
  return {Start(), Mark(9000), Space(4500), Bits(16, device), Bits(8, fn), Bits(8, 255 - fn), Mark(562.5), End(108000)};
}
Steps Nec(uint32_t device, uint32_t fn) { return Nec16(device | (255 - device) << 8, fn); }
const Steps kNecRepeat = {Start(), Mark(9000), Space(2250), Mark(562.5), End(108000)};
// Samsung: NEC bit cells after a 4.5 ms + 4.5 ms lead-in, the device code sent
// twice; the repeat frame is the lead-in, bit 0 of the device code and a burst.
Steps Samsung(const Steps& body) {
  return Steps{Start(), Mark(4500), Space(4500)} + body + Steps{Mark(562.5), End(108000)};
}
// Sony SIRC: 40 kHz; 2.4 ms start burst; a zero 600 us, a one 1.2 ms burst, each
// followed by 600 us; 7 function bits, then the device (and extension); 45 ms frames.
constexpr BitCell kSonyBit{600, 600, 1200, 600};
Steps Sony(uint32_t fn, const Steps& device) {
  return Steps{Start(), Mark(2400), Space(600), Bits(7, fn)} + device + Steps{End(45000)};
}
// JVC: 37.9 kHz; header 8.44 ms + 4.22 ms before the first word only; 527 us
// pulses, a zero 1.055 ms, a one 2.11 ms; custom code 67, data, a closing pulse;
// word cycle 46.42 ms.
constexpr BitCell kJvcBit{527, 528, 527, 1583};
Steps JvcWord(uint32_t fn) { return {Start(), Bits(8, 67), Bits(8, fn), Mark(527), End(46420)}; }
// Panasonic (Kaseikyo): 37 kHz, unit 432 us; 8 + 4 units lead-in; bytes 02 20,
// device 176, sub-device 0, function and their XOR; a closing burst and 173 units.
constexpr BitCell kPanasonicBit{432, 432, 432, 1296};
Steps Panasonic(uint32_t fn) {
  return {Mark(3456), Space(1728), Bits(8, 0x02), Bits(8, 0x20), Bits(8, 176), Bits(8, 0),
          Bits(8, fn), Bits(8, 176 ^ fn), Mark(432), Space(173 * 432)};
}
// Sharp: 455/12 kHz; 264 us pulses, a zero 1.05 ms, a one 2.10 ms; 5 system, 8
// data, expansion and check bits, a closing pulse; then the same with the last
// ten bits inverted; messages 67.5 ms apart. Denon's last two bits are 00.
constexpr BitCell kSharpBit{264, 786, 264, 1836};
Steps Sharp(uint32_t system, uint32_t fn, uint32_t lastTwo) {
  auto message = [system](uint32_t data, uint32_t last) {
    return Steps{Start(), Bits(5, system), Bits(8, data), Bits(2, last), Mark(264), End(67500)};
  };
  return message(fn, lastTwo) + message(255 - fn, 3 - lastTwo);
}
// Xantech (this library's own XANTECH.irp): 40 kHz; 4 ms + 2 ms lead-in; 500 us
// bursts, 500 / 1500 us spaces; switch code, function, its inverse; 60 ms frames.
constexpr BitCell kXantechBit{500, 500, 500, 1500};
Steps Xantech(uint32_t device, uint32_t fn) {
  return {Start(), Mark(4000), Space(2000), Bits(8, device), Bits(8, fn), Bits(8, 255 - fn), Mark(500), End(60000)};
}

/// A key and its published code (`b`: the code repeated while held, where it differs).
struct Code { std::string label; uint32_t a, b = 0; };
struct Parts { Steps once, repeat; };
/// Sony remotes send a frame twice, then once more for as long as the key is held.
Parts Sirc(const Steps& frame) { return {frame + frame, frame}; }
struct PulseCase {
  std::string device;
  BitCell cell;
  std::vector<Code> codes;
  std::function<Parts(const Code&)> parts;
  std::string record;  ///< format word, carrier word, once pairs, repeat pairs
};

const std::vector<PulseCase> kPulseCases = {
    {"TOSHIBA TV", kNecBit,  // NEC device 64
     {{"POWER", 18}, {"MUTE", 16}, {"VOL UP", 26}, {"VOL DOWN", 30}, {"CH UP", 27}, {"CH DOWN", 31},
      {"TV/VIDEO", 15}, {"MENU", 128}, {"1", 1}, {"9", 9}, {"0", 0}},
     [](const Code& c) { return Parts{Nec(64, c.a), kNecRepeat}; }, "0x0000 106 34 2"},
    {"YAMAHA RECEIVER", kNecBit, {{"STANDBY", 30}},  // NEC device 122
     [](const Code& c) { return Parts{Nec(122, c.a), kNecRepeat}; }, "0x0000 106 34 2"},
    {"YAMAHA RECEIVER", kNecBit, {{"LISTEN CD", 21}, {"LISTEN TUNER", 22}, {"WATCH DVD", 23}},  // after POWER ON 29
     [](const Code& c) { return Parts{Nec(122, 29) + Nec(122, c.a), kNecRepeat}; }, "0x0000 106 68 2"},
    {"EPSON PROJECTOR", kNecBit,  // 16-bit device 5583 hex
     {{"POWER", 0x90}, {"MENU", 0x9A}, {"ENTER", 0x85}, {"UP", 0xB0}, {"LEFT", 0xB3}, {"HDMI", 0x73},
      {"AV MUTE", 0x93}},
     [](const Code& c) { return Parts{Nec16(0x5583, c.a), kNecRepeat}; }, "0x0000 106 34 2"},
    {"EPSON PROJECTOR", kNecBit, {{"POWER OFF", 0x90}},  // power pressed twice
     [](const Code& c) { return Parts{Nec16(0x5583, c.a) + Nec16(0x5583, c.a), kNecRepeat}; }, "0x0000 106 68 2"},
    {"SAMSUNG TV", kNecBit,  // device 7
     {{"POWER", 2}, {"SOURCE", 1}, {"VOL UP", 7}, {"VOL DOWN", 11}, {"MUTE", 15}, {"CH UP", 18}, {"CH DOWN", 16},
      {"MENU", 26}, {"ENTER", 104}, {"1", 4}, {"0", 17}},
     [](const Code& c) {
       return Parts{Samsung({Bits(8, 7), Bits(8, 7), Bits(8, c.a), Bits(8, 255 - c.a)}), Samsung({Bits(1, 1)})};
     }, "0x0000 106 34 3"},
    {"SONY TV", kSonyBit,  // SIRC-12 device 1
     {{"POWER", 21}, {"VOL UP", 18}, {"VOL DOWN", 19}, {"MUTE", 20}, {"CH UP", 16}, {"CH DOWN", 17},
      {"POWER OFF", 47}, {"1", 0}, {"0", 9}, {"ENTER", 11}},
     [](const Code& c) { return Sirc(Sony(c.a, {LastBits(5, 1)})); }, "0x0000 101 26 13"},
    {"SONY TV", kSonyBit, {{"MEMORY STICK", 49}, {"ZOOM LEFT", 120}, {"ZOOM RIGHT", 121}},  // SIRC-15 device 151
     [](const Code& c) { return Sirc(Sony(c.a, {LastBits(8, 151)})); }, "0x0000 101 32 16"},
    {"SONY DVD PLAYER", kSonyBit,  // SIRC-20 device 26, extension 73
     {{"POWER", 21}, {"OPEN/CLOSE", 22}, {"PLAY", 50}, {"STOP", 56}, {"PAUSE", 57}, {"NEXT", 49}, {"TOP MENU", 26},
      {"UP", 121}, {"1", 0}, {"0", 9}},
     [](const Code& c) { return Sirc(Sony(c.a, {Bits(5, 26), LastBits(8, 73)})); }, "0x0000 101 42 21"},
    {"JVC VCR", kJvcBit,
     {{"POWER", 11}, {"PLAY", 12}, {"STOP", 3}, {"PAUSE", 13}, {"FF", 6}, {"REW", 7}, {"REC", 204}, {"CH UP", 25},
      {"1", 33}, {"0", 51}},
     [](const Code& c) { return Parts{Steps{Mark(8440), Space(4220)} + JvcWord(c.a), JvcWord(c.a)}; },
     "0x0000 106 18 17"},
    {"PANASONIC DVD PLAYER", kPanasonicBit,
     {{"POWER", 61}, {"PLAY", 10}, {"STOP", 0}, {"PAUSE", 6}, {"OPEN/CLOSE", 1}, {"MENU", 128}, {"UP", 133},
      {"TOP MENU", 155}, {"1", 16}, {"0", 25}, {"SKIP FWD", 74, 5}, {"SKIP REV", 73, 4}},  // skip, then search
     [](const Code& c) { return Parts{Panasonic(c.a), Panasonic(c.b ? c.b : c.a)}; }, "0x0000 108 50 50"},
    {"SHARP TV", kSharpBit,  // system 1; expansion 1, check 0
     {{"POWER", 22}, {"VOL UP", 20}, {"VOL DOWN", 21}, {"MUTE", 23}, {"CH UP", 17}, {"CH DOWN", 18}, {"MENU", 32},
      {"1", 1}, {"0", 10}},
     [](const Code& c) { return Parts{Sharp(1, c.a, 1), Sharp(1, c.a, 1)}; }, "0x0000 106 32 32"},
    {"DENON AV RECEIVER", kSharpBit,  // device 2
     {{"POWER ON", 225}, {"STANDBY", 226}, {"VOL UP", 241}, {"VOL DOWN", 242}, {"MUTE", 240}, {"CD", 196},
      {"DVD", 227}},
     [](const Code& c) { return Parts{Sharp(2, c.a, 0), Sharp(2, c.a, 0)}; }, "0x0000 106 32 32"},
    // The open-switch unit loads with switch code 0 (a database run sweeps it); A/3 gives 9 + 96.
    {"XANTECH RC68", kXantechBit, {{"RELAY 1 ON", 1}, {"RELAY 1 OFF", 2}, {"RELAY 3 OFF", 6}, {"ALL OFF", 15}},
     [](const Code& c) { return Parts{Xantech(0, c.a), Xantech(0, c.a)}; }, "0x0000 101 26 26"},
    {"XANTECH RC68 A3", kXantechBit, {{"RELAY 1 ON", 1}, {"RELAY 1 OFF", 2}, {"RELAY 3 OFF", 6}, {"ALL OFF", 15}},
     [](const Code& c) { return Parts{Xantech(105, c.a), Xantech(105, c.a)}; }, "0x0000 101 26 26"},
};

std::string Shape(const IRCodeRecord& r) {
  return r.FormatText + " " + std::to_string(r.CarrierWord) + " " + std::to_string(r.OnceCount) + " " +
         std::to_string(r.RepeatCount);
}

TEST(LibraryTiming, PulseCodedKeysMatchTheirPublishedTimingAndCodes) {
  for (const PulseCase& c : kPulseCases) {
    SCOPED_TRACE(c.device);
    LibraryRun run;
    ASSERT_TRUE(run.Load(c.device));
    run.GeneratePronto();
    for (const Code& code : c.codes) {
      const KeyCapture& key = run.Key(code.label);
      Parts parts = c.parts(code);
      ReadBack(key.once, c.cell, parts.once, code.label + " once");
      ReadBack(key.repeat, c.cell, parts.repeat, code.label + " repeat");
      EXPECT_EQ(Shape(key.record), c.record) << code.label;
    }
  }
}

TEST(LibraryTiming, RawLedControllerKeysAreNecFramesOfTheirPublishedCodes) {
  // NEC device bytes 00 EF; raw keys are only built for the Slink-e transmit-only file.
  const std::vector<std::string> labels = {"BRIGHTER", "DIMMER", "OFF", "ON", "RED", "GREEN", "BLUE", "WHITE"};
  LibraryRun run;
  ASSERT_TRUE(run.Load("RGB LED CONTROLLER"));
  Program& p = run.p;
  p.FormatPronto = false;
  p.FormatSlinkTxOnly = true;
  ASSERT_EQ(p.Keys.UpperBound(), static_cast<int>(labels.size()));
  for (int k = 1; k <= p.Keys.UpperBound(); ++k) {
    ASSERT_EQ(p.Keys[k].Label, labels[k - 1]);
    ResetBurstSequence(p);
    ASSERT_TRUE(LoadRawKey(p, k)) << labels[k - 1];
    EXPECT_EQ(p.Burst.RepeatPartCount, 0);
    std::vector<int32_t> durations;
    for (int i = 1; i <= p.Burst.OnceCount; ++i) durations.push_back(p.Burst.BurstDurations(i));
    ReadBack(durations, kNecBit, Nec16(0xEF00, k - 1), labels[k - 1]);
  }
  EXPECT_TRUE(GenerateKeys(p, p.F.format.text, 0, 0, 0));
  EXPECT_TRUE(run.t.host.messages.empty()) << run.t.host.LastMessage();
}

/// Every duration but the closing silence is 1 to `maxUnits` units, bursts and
/// spaces alternate, and the whole list lasts the message period.
void ExpectWholeUnitMessage(const std::vector<int32_t>& d, std::size_t from, double unit, int maxUnits, double period,
                            const std::string& label) {
  ASSERT_FALSE(d.empty()) << label;
  int64_t total = 0;
  for (std::size_t i = 0; i < d.size(); ++i) {
    total += std::abs(d[i]);
    if (i < from || i + 1 == d.size()) continue;
    bool whole = false;
    for (int k = 1; k <= maxUnits; ++k) whole |= WithinTolerance(std::abs(d[i]), k * unit);
    EXPECT_TRUE(whole) << label << ": duration " << i << " (" << d[i] << " us) is not 1 to " << maxUnits << " units";
    EXPECT_TRUE(i == 0 || (d[i] > 0) != (d[i - 1] > 0)) << label << ": bursts and spaces alternate at " << i;
  }
  EXPECT_LT(d.back(), 0) << label << ": a message ends in silence";
  EXPECT_TRUE(WithinFrameTolerance(static_cast<double>(total), period)) << label << ": message period " << total;
}

/// `count` bits from pairs of half-bit levels, `one` the pair of a one bit.
std::vector<int> Decode(const std::vector<int>& levels, std::size_t first, int count, std::pair<int, int> one,
                        const std::string& label) {
  std::vector<int> bits;
  for (int i = 0; i < count; ++i) {
    int a = levels.at(first + 2 * i), b = levels.at(first + 2 * i + 1);
    EXPECT_NE(a, b) << label << ": half bits " << first + 2 * i << " and " << first + 2 * i + 1 << " are no bit";
    bits.push_back(a == one.first && b == one.second ? 1 : 0);
  }
  return bits;
}
uint32_t MsbFirst(const std::vector<int>& bits, std::size_t from, int count) {
  uint32_t value = 0;
  for (int i = 0; i < count; ++i) value = value << 1 | static_cast<uint32_t>(bits.at(from + i));
  return value;
}

// RC5: 36 kHz; halves of 888.9 us; a one is silence then burst; start bit 1,
// field bit (inverted bit 6 of the command), toggle, 5 system and 6 command
// bits, MSB first; 113.778 ms period. The idle first half is not sent, so the
// list starts half a bit into the message.
constexpr double kRc5Half = 888.9;
void ExpectRc5Message(const std::vector<int32_t>& d, uint32_t command, int toggle, const std::string& label) {
  ExpectWholeUnitMessage(d, 0, kRc5Half, 2, 113778, label);
  if (d.empty()) return;
  EXPECT_GT(d.front(), 0) << label << ": the list starts with the start bit's burst";
  std::vector<int> bits = Decode(SampleHalfBits(d, -kRc5Half, kRc5Half, 28), 0, 14, {-1, 1}, label);
  EXPECT_EQ(std::vector<int>(bits.begin(), bits.begin() + 3), (std::vector<int>{1, command < 64, toggle}))
      << label << ": start, field and toggle bits";
  EXPECT_EQ(MsbFirst(bits, 3, 5), 0u) << label << ": system";
  EXPECT_EQ(MsbFirst(bits, 8, 6), command % 64) << label << ": command";
}

// RC6 mode 0: 36 kHz; t = 444.4 us; leader 6t burst, 2t space; start bit 1,
// mode 000, a 2t + 2t trailer bit (toggle), 8 address and 8 command bits, MSB
// first; a one is burst then silence; messages 107 ms apart.
constexpr double kRc6Unit = 444.4;
void ExpectRc6Message(const std::vector<int32_t>& d, uint32_t command, int, const std::string& label) {
  ExpectWholeUnitMessage(d, 2, kRc6Unit, 3, 107000, label);
  if (d.size() < 2) return;
  ReadBack({d[0], d[1]}, {}, {Mark(6 * kRc6Unit), Space(2 * kRc6Unit)}, label + " leader");
  // 44 half bits after the leader: start and mode (8), trailer (4), address and command (32).
  std::vector<int> levels = SampleHalfBits(d, 8 * kRc6Unit, kRc6Unit, 44);
  EXPECT_EQ(Decode(levels, 0, 4, {1, -1}, label), (std::vector<int>{1, 0, 0, 0})) << label << ": start, mode 000";
  EXPECT_EQ(std::vector<int>(levels.begin() + 8, levels.begin() + 12), (std::vector<int>{-1, -1, 1, 1}))
      << label << ": double-width trailer bit, toggle 0";
  std::vector<int> data = Decode(levels, 12, 16, {1, -1}, label);
  EXPECT_EQ(MsbFirst(data, 0, 8), 0u) << label << ": address";
  EXPECT_EQ(MsbFirst(data, 8, 8), command) << label << ": command";
}

TEST(LibraryTiming, BiphaseKeysMatchPhilipsTimingAndCodes) {
  // 17PT1563: RC5 system 0, MENU, PICTURE and SOUND extended; 26PFL5604H: RC6 address 0.
  const std::vector<std::tuple<std::string, std::string, decltype(&ExpectRc5Message), std::vector<Code>>> cases = {
      {"PHILIPS TV 17PT1563", "0x5000", ExpectRc5Message,
       {{"POWER", 12}, {"MUTE", 13}, {"VOL UP", 16}, {"VOL DOWN", 17}, {"CH UP", 32}, {"CH DOWN", 33}, {"1", 1},
        {"0", 0}, {"MENU", 82}, {"PICTURE", 107}, {"SOUND", 108}, {"POWER T1", 12, 1}}},  // b: the toggle bit
      {"PHILIPS TV 26PFL5604H", "0x6000", ExpectRc6Message,
       {{"POWER", 12}, {"MUTE", 13}, {"VOL UP", 16}, {"VOL DOWN", 17}, {"CH UP", 32}, {"CH DOWN", 33}, {"OK", 92},
        {"FORMAT", 245}, {"1", 1}, {"0", 0}}}};
  for (const auto& [device, format, expectMessage, codes] : cases) {
    LibraryRun run;
    ASSERT_TRUE(run.Load(device));
    run.GeneratePronto();
    for (const Code& c : codes) {
      const KeyCapture& key = run.Key(c.label);
      expectMessage(key.once, c.a, static_cast<int>(c.b), c.label + " once");
      expectMessage(key.repeat, c.a, static_cast<int>(c.b), c.label + " repeat");
      char text[8];  // no carrier, one "pair": system and command
      std::snprintf(text, sizeof text, "00 %02u", c.a);
      EXPECT_EQ(Shape(key.record) + " " + key.record.BurstText, format + " 0 1 0 " + text) << c.label;
    }
  }
}

/// The durations of a key's entry in a transmit-only Slink-e file ("numbers :label").
std::vector<int32_t> SlinkEntry(const std::string& file, const std::string& label) {
  std::size_t end = file.find(":" + label + "\r\n");
  EXPECT_NE(end, std::string::npos) << "no entry for " << label;
  if (end == std::string::npos) return {};
  std::size_t begin = file.rfind('\n', end) + 1;
  std::istringstream numbers(file.substr(begin, end - begin));
  std::vector<int32_t> durations;
  for (int32_t d = 0; numbers >> d;) durations.push_back(d);
  return durations;
}

TEST(LibraryTiming, Rc5SlinkeFileListsHalfBitsThatJoinIntoThePublishedMessage) {
  TempDir dir;
  LibraryRun run;
  run.p.ProgramFolder = dir.path();
  ASSERT_TRUE(run.Load("PHILIPS TV 17PT1563"));
  SelectSlinkTxOnly(run.p);
  cmdSlinkXqt_Click(run.p);
  EXPECT_TRUE(run.t.host.messages.empty()) << run.t.host.LastMessage();
  std::string file = ReadFileBytes(dir.path() / "Slinke Library" / "PHILIPS-17PT1563.cde");
  for (const Code& c : std::vector<Code>{{"POWER", 12}, {"VOL DOWN", 17}, {"MENU", 82}}) {
    const std::vector<int32_t> halves = SlinkEntry(file, c.label), joined = Joined<int32_t>(halves);
    EXPECT_LT(joined.size(), halves.size()) << c.label << ": the halves are listed unjoined";
    ExpectRc5Message(joined, c.a, 0, c.label + " in the Slink-e file");
  }
}

}  // namespace
}  // namespace bw::test::library
