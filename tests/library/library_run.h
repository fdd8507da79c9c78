// The bundled Device Library driven through the program's own commands: the
// protocol and device lists filled from it, a device loaded by clicking it in
// `Lex`, and a Pronto run whose records (and the burst sequence each was made
// from) are collected key by key instead of being stored in a database.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "pronto/ir_code_types.h"
#include "support/scripted_host.h"

namespace bw::test::library {

/// Full path of the bundled library in the source tree.
std::string BundledLibraryPath();

/// What a Pronto run produced for one key: the stored record and the signed
/// durations (microseconds, bursts positive) of the part sent once and of the
/// part that repeats while the key is held.
struct KeyCapture {
  std::string label;
  IRCodeRecord record;
  std::vector<int32_t> once;
  std::vector<int32_t> repeat;
};

/// A program whose lists show the bundled library.
struct LibraryRun {
  TestProgram t;
  Program& p = t.p;
  std::vector<KeyCapture> keys;

  LibraryRun();
  /// Selects the device (as listed, upper case) in `Lex` and runs Lex_Click.
  /// False when the list has no such entry.
  bool Load(const std::string& listedName);
  /// GenerateKeys over the loaded device with the Pronto output selected.
  void GeneratePronto();
  /// The capture of the key with this label; a failure (and an empty capture) when absent.
  const KeyCapture& Key(const std::string& label) const;
};

}  // namespace bw::test::library
