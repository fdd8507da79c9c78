// The bundled Device Library driven through the program's own commands, and a
// reader that walks a generated waveform against a protocol's published timing.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "pronto/ir_code_types.h"
#include "support/scripted_host.h"

namespace bw::test::library {

std::string BundledLibraryPath();

/// One key of a Pronto run: the record and the signed durations (us, bursts
/// positive) of the part sent once and of the part repeated while held.
struct KeyCapture {
  std::string label;
  IRCodeRecord record;
  std::vector<int32_t> once, repeat;
};

/// A program whose lists show the bundled library.
struct LibraryRun {
  TestProgram t;
  Program& p = t.p;
  std::vector<KeyCapture> keys;

  LibraryRun();
  /// Selects the device (as listed) in `Lex` and runs Lex_Click, expecting no
  /// message and the device fields filled; false when not listed.
  bool Load(const std::string& listedName);
  /// GenerateKeys with the Pronto output; expects no message and one record per key.
  void GeneratePronto();
  /// The capture of this key; a failure (and an empty capture) when absent.
  const KeyCapture& Key(const std::string& label) const;
};

/// Durations within 1% (at least 1 us): receivers accept far more, but 1% still
/// shows a wrong time unit or a missing pulse. Padded frame periods: 0.1%.
bool WithinTolerance(double measured, double published);
bool WithinFrameTolerance(double measured, double published);

/// Published durations (us) of a zero bit and of a one bit.
struct BitCell { double zeroMark, zeroSpace, oneMark, oneSpace; };

/// One step of a published frame: 'M' burst, 'S' space, '[' frame start, ']'
/// closing space ending the frame `us` after its start, 'B' `bits` bits (LSB
/// first) reading as `value`, 'L' the same but the last bit's space is the
/// frame's closing silence, so its burst alone decides it.
struct Step { char op; double us; int bits; uint32_t value; };
using Steps = std::vector<Step>;
inline Step Mark(double us) { return {'M', us, 0, 0}; }
inline Step Space(double us) { return {'S', us, 0, 0}; }
inline Step Start() { return {'[', 0, 0, 0}; }
inline Step End(double period) { return {']', period, 0, 0}; }
inline Step Bits(int n, uint32_t value) { return {'B', 0, n, value}; }
inline Step LastBits(int n, uint32_t value) { return {'L', 0, n, value}; }
Steps operator+(Steps a, const Steps& b);

/// Reads the durations step by step, reporting every mismatch and any durations left over.
void ReadBack(const std::vector<int32_t>& durations, const BitCell& cell, const Steps& steps, const std::string& name);

/// Carrier state (+1 burst, -1 silence) in the middle of each of `count` half
/// bits, the first starting `offset` us after the start of the list.
std::vector<int> SampleHalfBits(const std::vector<int32_t>& durations, double offset, double half, int count);

}  // namespace bw::test::library
