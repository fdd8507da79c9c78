// Exports: every key of the loaded device written as text that today's
// controllers and tools take — Pronto Hex learned codes, Global Caché sendir
// commands, one lircd.conf remote in raw form, and a CSV table. Each key is built
// exactly as the generator builds it for the Pronto database (once part, then
// repeat part); the writers only change how the durations are written down.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "shell/program.h"

namespace bw {

// ---- the formats ----

/// One export format, as a command line takes it and a menu shows it.
struct ExportFormat {
  std::string name;       ///< the command line's word: "pronto-hex"
  std::string title;      ///< a menu's text: "Pronto Hex"
  std::string extension;  ///< a file name's usual ending: ".txt"
};

/// Every format, in the order a menu lists them.
const std::vector<ExportFormat>& ExportFormats();

/// Builds every key of the loaded device and writes them in `format` (a name of
/// ExportFormats()). False, after a message, when nothing could be written: an
/// unknown format, a RAW device or a device without a carrier frequency. A key
/// whose build shows a message is written with what it built.
bool ExportDevice(Program& p, const std::string& format, std::ostream& out);

// ---- the pieces ----

/// One built key: its label (or its function code as "007" when it has none),
/// its codes and its durations, marks positive, spaces negative.
struct ExportKey {
  std::string label;
  int32_t deviceCode = 0;
  int32_t functionCode = 0;
  std::vector<int32_t> once, repeat;
};

/// Builds every key of the loaded device through the generator.
std::vector<ExportKey> BuildExportKeys(Program& p);

/// The once and repeat parts as mark/space pairs: zeros dropped, neighbours of one
/// sign added together, a leading space of the repeat part moved behind the once
/// part (or, with no once part, to the end of the repeat part), a leading space of
/// the once part dropped (silence before the first mark sends nothing), and a part
/// that ends in a mark closed by a space of `closingSpace` microseconds.
void PairUp(ExportKey& key, int32_t closingSpace);

/// The textbook Pronto frequency word: 1,000,000 / (f x 0.241246), rounded; 0 for
/// f <= 0. Unlike the word the IR database stores, no calibration is applied.
int32_t ProntoStandardFrequencyWord(int32_t frequency);

/// The learned-code Pronto Hex of a paired key: "0000 006D 0022 0002 0157 ...".
/// Counts that do not fit a word are written as FFFF and reported in `clipped`.
std::string ProntoHexCode(const ExportKey& key, int32_t frequency, bool* clipped = nullptr);

}  // namespace bw
