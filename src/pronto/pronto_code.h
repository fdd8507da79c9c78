// Pronto code text: the carrier as a Pronto frequency word (with this tool's own
// step correction), durations as carrier-cycle counts, the record writers for
// pulse protocols and for the bi-phase protocols RC5/RC6, and the code text shown
// in the details dialog.
#pragma once

#include <cstdint>
#include <string>

#include "shell/program.h"

namespace bw {

/// Microseconds per Pronto time unit; cannot change without changing every stored code.
inline constexpr double kProntoClock = 0.241246;

int16_t ProntoFrequencyWord(int32_t frequency);
float ProntoActualCarrier(int32_t frequency);
/// Fills p.IRCode from the burst sequence and stores it (pulse protocols).
void ProntoWriteCode(Program& p, int32_t argument);
/// Fills p.IRCode in predefined form from key `key`'s codes and stores it (RC5/RC6).
void ProntoWriteBiphaseCode(Program& p, int key, const std::string& protocolName);
/// The per-key Pronto writer: the predefined record for RC5/RC6, else the
/// burst sequence's record.
void ProntoWriteEntry(Program& p, int key, int32_t argument);
/// Hands the finished record to the database (or to p.IRCodeSink in tests).
void StoreIRCode(Program& p);
/// Code text into the details dialog's text box.
void ShowProntoText(Program& p);
void ShowBurstDurations(Program& p);
/// Panel set-up for the Pronto database output.
void ShowProntoOutput(Program& p);

}  // namespace bw
