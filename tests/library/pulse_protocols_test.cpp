// Pulse-coded protocols of the bundled library, one test each: a sample device
// is loaded with Lex_Click and run through GenerateKeys with the Pronto output;
// every key's waveform is read back against the protocol's published timing
// (lead-in, bit cells, frame length, repeat frame) and its bits decoded back to
// the device's published codes. Tolerances: see WithinTolerance.
//
// Pronto frequency words are worked out from the Pronto clock (0.241246 us per
// unit) and the step table: f -> w = round(1e6 / (f * 0.241246)) -> stored word.
//   38000 Hz: w = 109 (109.08), 83..110 band, 109 - 3 = 106
//   37917 Hz: w = 109 (109.32), stored 106
//   40000 Hz: w = 104 (103.63), stored 101
//   37000 Hz: w = 112 (112.03), 111..137 band, 112 - 4 = 108
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "generate/generate.h"
#include "library/library_run.h"
#include "library/waveform_reader.h"

namespace bw::test::library {
namespace {

using Codes = std::vector<std::pair<std::string, uint32_t>>;

/// Loads a device, generates it for the Pronto output and checks what every run must show.
void LoadAndGenerate(LibraryRun& run, const std::string& device) {
  ASSERT_TRUE(run.Load(device));
  run.GeneratePronto();
  EXPECT_TRUE(run.t.host.messages.empty()) << run.t.host.LastMessage();
  EXPECT_EQ(static_cast<int>(run.keys.size()), run.p.Keys.UpperBound()) << "one record per key";
}

/// A learned-code record: format word 0000, the carrier word and the pair counts.
void ExpectLearnedRecord(const KeyCapture& key, int16_t carrierWord, int16_t oncePairs, int16_t repeatPairs) {
  EXPECT_EQ(key.record.FormatText, "0x0000") << key.label;
  EXPECT_EQ(key.record.CarrierWord, carrierWord) << key.label;
  EXPECT_EQ(key.record.OnceCount, oncePairs) << key.label;
  EXPECT_EQ(key.record.RepeatCount, repeatPairs) << key.label;
}

// ---- NEC family -----------------------------------------------------------
// NEC uPD6121 data sheet: 38 kHz; lead-in 9 ms burst + 4.5 ms space; 562.5 us
// bursts; a zero lasts 1.125 ms, a one 2.25 ms; frames 108 ms apart; the repeat
// frame is a 9 ms burst, a 2.25 ms space and a 562.5 us burst.
constexpr BitCell kNecBit{562.5, 562.5, 562.5, 1687.5};

/// One NEC frame with an 8-bit device code and its inverse.
void ExpectNecFrame(WaveformReader& r, uint32_t device, uint32_t function) {
  r.StartFrame();
  r.Mark(9000, "lead-in burst");
  r.Space(4500, "lead-in space");
  EXPECT_EQ(r.Bits(8, kNecBit), device);
  EXPECT_EQ(r.Bits(8, kNecBit), 255 - device) << "the inverted device code";
  EXPECT_EQ(r.Bits(8, kNecBit), function);
  EXPECT_EQ(r.Bits(8, kNecBit), 255 - function) << "the inverted function code";
  r.Mark(562.5, "closing burst");
  r.EndFrame(108000, "frame pad");
}

/// The NEC repeat frame.
void ExpectNecRepeatFrame(WaveformReader& r) {
  r.StartFrame();
  r.Mark(9000, "repeat burst");
  r.Space(2250, "repeat space");
  r.Mark(562.5, "repeat closing burst");
  r.EndFrame(108000, "repeat frame pad");
}

TEST(LibraryTiming, NecToshibaTvMatchesNecTimingAndCodes) {
  // Toshiba TV, NEC device 64: published function codes.
  const Codes codes = {{"POWER", 18}, {"MUTE", 16}, {"VOL UP", 26}, {"VOL DOWN", 30}, {"CH UP", 27},
                       {"CH DOWN", 31}, {"TV/VIDEO", 15}, {"MENU", 128}, {"1", 1}, {"9", 9}, {"0", 0}};
  LibraryRun run;
  LoadAndGenerate(run, "TOSHIBA TV");
  for (const auto& [label, function] : codes) {
    const KeyCapture& key = run.Key(label);
    WaveformReader once(key.once, label + " once");
    ExpectNecFrame(once, 64, function);
    EXPECT_TRUE(once.AtEnd()) << label;
    WaveformReader repeat(key.repeat, label + " repeat");
    ExpectNecRepeatFrame(repeat);
    EXPECT_TRUE(repeat.AtEnd()) << label;
    // Once: lead-in, 32 bits, closing burst with its pad = 34 pairs; repeat: 2 pairs.
    ExpectLearnedRecord(key, 106, 34, 2);
  }
}

TEST(LibraryTiming, NecMultiCodeKeysSendOneFramePerCodeThenTheRepeatFrame) {
  // Yamaha receiver, NEC device 122: POWER ON 29, CD 21, TUNER 22, DVD 23.
  LibraryRun run;
  LoadAndGenerate(run, "YAMAHA RECEIVER");
  const KeyCapture& standby = run.Key("STANDBY");
  WaveformReader single(standby.once, "STANDBY");
  ExpectNecFrame(single, 122, 30);
  EXPECT_TRUE(single.AtEnd());

  const std::vector<std::pair<std::string, uint32_t>> macros = {{"LISTEN CD", 21}, {"LISTEN TUNER", 22},
                                                                {"WATCH DVD", 23}};
  for (const auto& [label, input] : macros) {
    const KeyCapture& key = run.Key(label);
    WaveformReader once(key.once, label);
    ExpectNecFrame(once, 122, 29);
    ExpectNecFrame(once, 122, input);
    EXPECT_TRUE(once.AtEnd()) << label;
    WaveformReader repeat(key.repeat, label + " repeat");
    ExpectNecRepeatFrame(repeat);
    ExpectLearnedRecord(key, 106, 68, 2);
  }
}

TEST(LibraryTiming, Nec16EpsonProjectorSendsItsSixteenBitDeviceCode) {
  // Epson projector: NEC with the 16-bit device 5583 hex (bytes 83, 55); codes in hex.
  const Codes codes = {{"POWER", 0x90}, {"MENU", 0x9A}, {"ENTER", 0x85}, {"UP", 0xB0},
                       {"LEFT", 0xB3},  {"HDMI", 0x73}, {"AV MUTE", 0x93}};
  LibraryRun run;
  LoadAndGenerate(run, "EPSON PROJECTOR");
  auto expectFrame = [](WaveformReader& r, uint32_t function) {
    r.StartFrame();
    r.Mark(9000, "lead-in burst");
    r.Space(4500, "lead-in space");
    EXPECT_EQ(r.Bits(16, kNecBit), 0x5583u);
    EXPECT_EQ(r.Bits(8, kNecBit), function);
    EXPECT_EQ(r.Bits(8, kNecBit), 255 - function);
    r.Mark(562.5, "closing burst");
    r.EndFrame(108000, "frame pad");
  };
  for (const auto& [label, function] : codes) {
    const KeyCapture& key = run.Key(label);
    WaveformReader once(key.once, label);
    expectFrame(once, function);
    EXPECT_TRUE(once.AtEnd()) << label;
    WaveformReader repeat(key.repeat, label + " repeat");
    ExpectNecRepeatFrame(repeat);
    ExpectLearnedRecord(key, 106, 34, 2);
  }
  // Power off: the power code twice, 108 ms apart.
  const KeyCapture& off = run.Key("POWER OFF");
  WaveformReader twice(off.once, "POWER OFF");
  expectFrame(twice, 0x90);
  expectFrame(twice, 0x90);
  EXPECT_TRUE(twice.AtEnd());
}

TEST(LibraryTiming, SamsungTvMatchesSamsungTimingAndCodes) {
  // Samsung TV, device 7 (sent twice): 4.5 ms + 4.5 ms lead-in, NEC bit cells,
  // frames 108 ms apart; the repeat frame is the lead-in, bit 0 of the device
  // code and a closing burst.
  const Codes codes = {{"POWER", 2}, {"SOURCE", 1}, {"VOL UP", 7}, {"VOL DOWN", 11}, {"MUTE", 15},
                       {"CH UP", 18}, {"CH DOWN", 16}, {"MENU", 26}, {"ENTER", 104}, {"1", 4}, {"0", 17}};
  LibraryRun run;
  LoadAndGenerate(run, "SAMSUNG TV");
  for (const auto& [label, function] : codes) {
    const KeyCapture& key = run.Key(label);
    WaveformReader once(key.once, label);
    once.StartFrame();
    once.Mark(4500, "lead-in burst");
    once.Space(4500, "lead-in space");
    EXPECT_EQ(once.Bits(8, kNecBit), 7u);
    EXPECT_EQ(once.Bits(8, kNecBit), 7u) << "the device code is sent twice";
    EXPECT_EQ(once.Bits(8, kNecBit), function);
    EXPECT_EQ(once.Bits(8, kNecBit), 255 - function);
    once.Mark(562.5, "closing burst");
    once.EndFrame(108000, "frame pad");
    EXPECT_TRUE(once.AtEnd()) << label;

    WaveformReader repeat(key.repeat, label + " repeat");
    repeat.StartFrame();
    repeat.Mark(4500, "repeat lead-in burst");
    repeat.Space(4500, "repeat lead-in space");
    EXPECT_EQ(repeat.Bits(1, kNecBit), 1u) << "bit 0 of device 7";
    repeat.Mark(562.5, "repeat closing burst");
    repeat.EndFrame(108000, "repeat frame pad");
    EXPECT_TRUE(repeat.AtEnd()) << label;
    ExpectLearnedRecord(key, 106, 34, 3);
  }
}

TEST(LibraryTiming, RawLedControllerHoldsNecFramesOfItsPublishedCodes) {
  // The 24-key RGB LED remote: NEC device bytes 00 EF (16-bit EF00 hex),
  // brighter 0, dimmer 1, off 2, on 3, red 4, green 5, blue 6, white 7.
  const Codes codes = {{"BRIGHTER", 0}, {"DIMMER", 1}, {"OFF", 2},  {"ON", 3},
                       {"RED", 4},      {"GREEN", 5},  {"BLUE", 6}, {"WHITE", 7}};
  LibraryRun run;
  ASSERT_TRUE(run.Load("RGB LED CONTROLLER"));
  Program& p = run.p;
  p.FormatPronto = false;
  p.FormatSlinkTxOnly = true;  // raw keys are only built for the Slink-e transmit-only file
  ASSERT_EQ(p.Keys.UpperBound(), static_cast<int>(codes.size()));
  for (int k = 1; k <= p.Keys.UpperBound(); ++k) {
    const std::string& label = p.Keys[k].Label;
    ASSERT_EQ(label, codes[static_cast<std::size_t>(k - 1)].first);
    ResetBurstSequence(p);
    ASSERT_TRUE(LoadRawKey(p, k)) << label;
    EXPECT_EQ(p.Burst.RepeatPartCount, 0);
    std::vector<int32_t> durations;
    for (int i = 1; i <= p.Burst.OnceCount; ++i) durations.push_back(p.Burst.BurstDurations(i));
    WaveformReader r(durations, label);
    r.StartFrame();
    r.Mark(9000, "lead-in burst");
    r.Space(4500, "lead-in space");
    EXPECT_EQ(r.Bits(16, kNecBit), 0xEF00u) << label;
    uint32_t function = codes[static_cast<std::size_t>(k - 1)].second;
    EXPECT_EQ(r.Bits(8, kNecBit), function) << label;
    EXPECT_EQ(r.Bits(8, kNecBit), 255 - function) << label;
    r.Mark(562.5, "closing burst");
    r.EndFrame(108000, "frame pad");
    EXPECT_TRUE(r.AtEnd()) << label;
  }
  // The whole device through the generator: accepted for Slink-e, nothing refused.
  EXPECT_TRUE(GenerateKeys(p, p.F.format.text, 0, 0, 0));
  EXPECT_TRUE(run.t.host.messages.empty()) << run.t.host.LastMessage();
}

// ---- Sony SIRC ------------------------------------------------------------
// Sony SIRC: 40 kHz; a 2.4 ms start burst; every burst followed by a 600 us
// space; a zero is a 600 us burst, a one a 1.2 ms burst; function bits then
// device bits, least significant first; frames start every 45 ms.
constexpr BitCell kSonyBit{600, 600, 1200, 600};

/// One SIRC frame: 7 function bits, then the fields (width, value). The last
/// bit's space is the frame's closing silence, so its burst alone decides it.
void ExpectSonyFrame(WaveformReader& r, uint32_t function, const std::vector<std::pair<int, uint32_t>>& fields) {
  r.StartFrame();
  r.Mark(2400, "start burst");
  r.Space(600, "start space");
  EXPECT_EQ(r.Bits(7, kSonyBit), function);
  for (std::size_t i = 0; i < fields.size(); ++i) {
    auto [width, expected] = fields[i];
    uint32_t value = 0;
    if (i + 1 < fields.size()) {
      value = r.Bits(width, kSonyBit);
    } else {
      value = r.Bits(width - 1, kSonyBit);
      value |= r.BitByMark(kSonyBit) << (width - 1);
    }
    EXPECT_EQ(value, expected) << "field " << i + 1 << " after the function bits";
  }
  r.EndFrame(45000, "frame pad");
}

TEST(LibraryTiming, Sony12And15TvSendsThreeFramesOfItsPublishedCodes) {
  // Sony TV: SIRC-12 device 1 (power 21); the Memory Stick and zoom keys are
  // SIRC-15 codes of device 151.
  const Codes codes12 = {{"POWER", 21}, {"VOL UP", 18}, {"VOL DOWN", 19}, {"MUTE", 20}, {"CH UP", 16},
                         {"CH DOWN", 17}, {"POWER OFF", 47}, {"1", 0}, {"0", 9}, {"ENTER", 11}};
  const Codes codes15 = {{"MEMORY STICK", 49}, {"ZOOM LEFT", 120}, {"ZOOM RIGHT", 121}};
  LibraryRun run;
  LoadAndGenerate(run, "SONY TV");
  for (const auto& [label, function] : codes12) {
    const KeyCapture& key = run.Key(label);
    WaveformReader once(key.once, label);
    ExpectSonyFrame(once, function, {{5, 1}});
    ExpectSonyFrame(once, function, {{5, 1}});
    EXPECT_TRUE(once.AtEnd()) << label;
    WaveformReader repeat(key.repeat, label + " repeat");
    ExpectSonyFrame(repeat, function, {{5, 1}});
    EXPECT_TRUE(repeat.AtEnd()) << label;
    // A 12-bit frame is 13 pairs (start and 12 bits).
    ExpectLearnedRecord(key, 101, 26, 13);
  }
  for (const auto& [label, function] : codes15) {
    const KeyCapture& key = run.Key(label);
    WaveformReader once(key.once, label);
    ExpectSonyFrame(once, function, {{8, 151}});
    ExpectSonyFrame(once, function, {{8, 151}});
    EXPECT_TRUE(once.AtEnd()) << label;
    WaveformReader repeat(key.repeat, label + " repeat");
    ExpectSonyFrame(repeat, function, {{8, 151}});
    EXPECT_TRUE(repeat.AtEnd()) << label;
    ExpectLearnedRecord(key, 101, 32, 16);
  }
}

TEST(LibraryTiming, Sony20DvdPlayerSendsDeviceAndExtension) {
  // Sony DVD player: SIRC-20 device 26, extension 73.
  const Codes codes = {{"POWER", 21}, {"OPEN/CLOSE", 22}, {"PLAY", 50}, {"STOP", 56}, {"PAUSE", 57},
                       {"NEXT", 49},  {"TOP MENU", 26},   {"UP", 121},  {"1", 0},     {"0", 9}};
  LibraryRun run;
  LoadAndGenerate(run, "SONY DVD PLAYER");
  for (const auto& [label, function] : codes) {
    const KeyCapture& key = run.Key(label);
    WaveformReader once(key.once, label);
    ExpectSonyFrame(once, function, {{5, 26}, {8, 73}});
    ExpectSonyFrame(once, function, {{5, 26}, {8, 73}});
    EXPECT_TRUE(once.AtEnd()) << label;
    WaveformReader repeat(key.repeat, label + " repeat");
    ExpectSonyFrame(repeat, function, {{5, 26}, {8, 73}});
    EXPECT_TRUE(repeat.AtEnd()) << label;
    ExpectLearnedRecord(key, 101, 42, 21);
  }
}

// ---- JVC --------------------------------------------------------------------
// JVC's transmission format: 37.9 kHz (38 kHz class); header 8.44 ms burst and
// 4.22 ms space, only before the first word; 0.527 ms pulses; a zero is a
// 1.055 ms interval, a one 2.11 ms; custom code then data code, LSB first,
// and a closing pulse; word cycle 46.42 ms.
constexpr BitCell kJvcBit{527, 528, 527, 1583};

TEST(LibraryTiming, JvcVcrSendsTheHeaderOnceAndWordsEveryCycle) {
  const Codes codes = {{"POWER", 11}, {"PLAY", 12}, {"STOP", 3}, {"PAUSE", 13}, {"FF", 6},
                       {"REW", 7},    {"REC", 204}, {"CH UP", 25}, {"1", 33}, {"0", 51}};
  LibraryRun run;
  LoadAndGenerate(run, "JVC VCR");
  for (const auto& [label, function] : codes) {
    const KeyCapture& key = run.Key(label);
    WaveformReader once(key.once, label);
    once.Mark(8440, "header burst");
    once.Space(4220, "header space");
    once.StartFrame();  // the word cycle runs from the first word
    EXPECT_EQ(once.Bits(8, kJvcBit), 67u);
    EXPECT_EQ(once.Bits(8, kJvcBit), function);
    once.Mark(527, "closing pulse");
    once.EndFrame(46420, "word cycle");
    EXPECT_TRUE(once.AtEnd()) << label;

    WaveformReader repeat(key.repeat, label + " repeat");
    repeat.StartFrame();
    EXPECT_EQ(repeat.Bits(8, kJvcBit), 67u);
    EXPECT_EQ(repeat.Bits(8, kJvcBit), function);
    repeat.Mark(527, "closing pulse");
    repeat.EndFrame(46420, "word cycle");
    EXPECT_TRUE(repeat.AtEnd()) << label;
    ExpectLearnedRecord(key, 106, 18, 17);
  }
}

// ---- Panasonic (Kaseikyo) -------------------------------------------------------
// Panasonic: 37 kHz, unit 432 us; 8-unit burst and 4-unit space; 48 bits LSB
// first: 02, 20 (hex), device, sub-device, function, device^sub-device^function;
// a 1-unit zero space, 3-unit one space; closing burst and 173 units of silence.
constexpr BitCell kPanasonicBit{432, 432, 432, 1296};

void ExpectPanasonicFrame(WaveformReader& r, uint32_t device, uint32_t subDevice, uint32_t function) {
  r.Mark(3456, "lead-in burst");
  r.Space(1728, "lead-in space");
  EXPECT_EQ(r.Bits(8, kPanasonicBit), 0x02u) << "manufacturer byte 1";
  EXPECT_EQ(r.Bits(8, kPanasonicBit), 0x20u) << "manufacturer byte 2";
  EXPECT_EQ(r.Bits(8, kPanasonicBit), device);
  EXPECT_EQ(r.Bits(8, kPanasonicBit), subDevice);
  EXPECT_EQ(r.Bits(8, kPanasonicBit), function);
  EXPECT_EQ(r.Bits(8, kPanasonicBit), device ^ subDevice ^ function) << "check byte";
  r.Mark(432, "closing burst");
  r.Space(173 * 432, "closing silence");
}

TEST(LibraryTiming, PanasonicDvdPlayerSendsKaseikyoFramesWithTheCheckByte) {
  // Panasonic DVD player: device 176, sub-device 0.
  const Codes codes = {{"POWER", 61}, {"PLAY", 10}, {"STOP", 0},   {"PAUSE", 6}, {"OPEN/CLOSE", 1},
                       {"MENU", 128}, {"UP", 133},  {"TOP MENU", 155}, {"1", 16}, {"0", 25}};
  LibraryRun run;
  LoadAndGenerate(run, "PANASONIC DVD PLAYER");
  for (const auto& [label, function] : codes) {
    const KeyCapture& key = run.Key(label);
    WaveformReader once(key.once, label);
    ExpectPanasonicFrame(once, 176, 0, function);
    EXPECT_TRUE(once.AtEnd()) << label;
    WaveformReader repeat(key.repeat, label + " repeat");
    ExpectPanasonicFrame(repeat, 176, 0, function);
    EXPECT_TRUE(repeat.AtEnd()) << label;
    ExpectLearnedRecord(key, 108, 50, 50);
  }
  // Second code list: skip once, search for as long as the key is held.
  for (const auto& [label, skip, search] : std::vector<std::tuple<std::string, uint32_t, uint32_t>>{
           {"SKIP FWD", 74, 5}, {"SKIP REV", 73, 4}}) {
    const KeyCapture& key = run.Key(label);
    WaveformReader once(key.once, label);
    ExpectPanasonicFrame(once, 176, 0, skip);
    EXPECT_TRUE(once.AtEnd()) << label;
    WaveformReader repeat(key.repeat, label + " repeat");
    ExpectPanasonicFrame(repeat, 176, 0, search);
    EXPECT_TRUE(repeat.AtEnd()) << label;
  }
}

// ---- Sharp family -----------------------------------------------------------
// Sharp's equipment manuals: carrier 455/12 kHz; pulses t = 264 us; a zero is
// T0 = 1.05 ms, a one T1 = 2.10 ms; 5 system bits, 8 data bits, expansion and
// check bits, LSB first, a closing pulse; the data, expansion and check bits
// are inverted in the second message; messages 67.5 ms apart.
constexpr BitCell kSharpBit{264, 786, 264, 1836};

void ExpectSharpMessage(WaveformReader& r, uint32_t device, uint32_t data, uint32_t lastTwoBits) {
  r.StartFrame();
  EXPECT_EQ(r.Bits(5, kSharpBit), device);
  EXPECT_EQ(r.Bits(8, kSharpBit), data);
  EXPECT_EQ(r.Bits(2, kSharpBit), lastTwoBits) << "expansion and check bits";
  r.Mark(264, "closing pulse");
  r.EndFrame(67500, "message period");
}

TEST(LibraryTiming, SharpTvSendsEachMessageAndItsMirror) {
  // Sharp TV, system 1. Expansion 1 and check 0 give 1 in two LSB-first bits.
  const Codes codes = {{"POWER", 22}, {"VOL UP", 20}, {"VOL DOWN", 21}, {"MUTE", 23}, {"CH UP", 17},
                       {"CH DOWN", 18}, {"MENU", 32}, {"1", 1}, {"0", 10}};
  LibraryRun run;
  LoadAndGenerate(run, "SHARP TV");
  for (const auto& [label, function] : codes) {
    const KeyCapture& key = run.Key(label);
    for (const auto* part : {&key.once, &key.repeat}) {
      WaveformReader r(*part, label + (part == &key.once ? " once" : " repeat"));
      ExpectSharpMessage(r, 1, function, 1);
      ExpectSharpMessage(r, 1, 255 - function, 2);
      EXPECT_TRUE(r.AtEnd()) << label;
    }
    ExpectLearnedRecord(key, 106, 32, 32);
  }
}

TEST(LibraryTiming, DenonReceiverSendsSharpTimedMessagesWithItsOwnLastBits) {
  // Denon AV receiver, device 2; Denon's two last bits are 00, and 11 in the mirror.
  const Codes codes = {{"POWER ON", 225}, {"STANDBY", 226}, {"VOL UP", 241}, {"VOL DOWN", 242},
                       {"MUTE", 240},     {"CD", 196},      {"DVD", 227}};
  LibraryRun run;
  LoadAndGenerate(run, "DENON AV RECEIVER");
  for (const auto& [label, function] : codes) {
    const KeyCapture& key = run.Key(label);
    WaveformReader r(key.once, label);
    ExpectSharpMessage(r, 2, function, 0);
    ExpectSharpMessage(r, 2, 255 - function, 3);
    EXPECT_TRUE(r.AtEnd()) << label;
    ExpectLearnedRecord(key, 106, 32, 32);
  }
}

// ---- Xantech ----------------------------------------------------------------
// This library's own definition (XANTECH.irp): 40 kHz; 4 ms burst and 2 ms
// space; 500 us bursts, 500 us / 1500 us spaces for a zero / one; device code
// (from the address switches), function, inverted function, LSB first; a
// closing burst; frames 60 ms apart, repeated whole.
constexpr BitCell kXantechBit{500, 500, 500, 1500};

void ExpectXantechFrame(WaveformReader& r, uint32_t device, uint32_t function) {
  r.StartFrame();
  r.Mark(4000, "lead-in burst");
  r.Space(2000, "lead-in space");
  EXPECT_EQ(r.Bits(8, kXantechBit), device) << "switch code";
  EXPECT_EQ(r.Bits(8, kXantechBit), function);
  EXPECT_EQ(r.Bits(8, kXantechBit), 255 - function);
  r.Mark(500, "closing burst");
  r.EndFrame(60000, "frame pad");
}

TEST(LibraryTiming, XantechUnitsSendTheirSwitchCode) {
  const Codes codes = {{"RELAY 1 ON", 1}, {"RELAY 1 OFF", 2}, {"RELAY 3 OFF", 6}, {"ALL OFF", 15}};
  // The open-switch unit loads with device code 0 (a database run sweeps it);
  // switches A/3 give 9 + 96 = 105.
  for (const auto& [device, code] : std::vector<std::pair<std::string, uint32_t>>{{"XANTECH RC68", 0},
                                                                                   {"XANTECH RC68 A3", 105}}) {
    SCOPED_TRACE(device);
    LibraryRun run;
    LoadAndGenerate(run, device);
    for (const auto& [label, function] : codes) {
      const KeyCapture& key = run.Key(label);
      WaveformReader once(key.once, label);
      ExpectXantechFrame(once, code, function);
      EXPECT_TRUE(once.AtEnd()) << label;
      WaveformReader repeat(key.repeat, label + " repeat");
      ExpectXantechFrame(repeat, code, function);
      EXPECT_TRUE(repeat.AtEnd()) << label;
      ExpectLearnedRecord(key, 101, 26, 26);
    }
  }
}

}  // namespace
}  // namespace bw::test::library
