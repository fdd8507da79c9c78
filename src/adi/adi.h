// ADI Leopard & Ocelot output: burst sequences encoded into 256-byte ".lir"
// records, the generation run that adds them key by key under the user's
// control, and the record editor (open, save, browse, replace, delete).
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "shell/program.h"

namespace bw {

// ---- the record format ----
/// Fills p.CurrentLirRecord; false (after the "too complex" message) when no record was made.
bool EncodeLirRecord(Program& p, int key);
void ReadLirFile(Program& p, const std::filesystem::path& path);
/// "" when the file is whole records; otherwise a warning naming the file and the
/// record it ends inside (that record is still read, its missing bytes as 0).
std::string LirPartialRecordWarning(const std::filesystem::path& path);
void WriteLirFile(Program& p, const std::filesystem::path& path);
void ShowLirRecord(Program& p);

// ---- the run ----
void ShowADIOptions(Program& p);
void cmdADIxqt_Click(Program& p);
void RunADIOutput(Program& p);
/// The dispatcher's ADI writer: encode, then the per-key step (details / wait / add).
void WriteADIEntry(Program& p, int key, int32_t argument);
void AddLirRecord(Program& p);
void CmdADIadd_Click(Program& p);
void cmdADInxtKey_Click(Program& p);
void cmdadiall_Click(Program& p);

// ---- the editor ----
void cmdADIOpen_Click(Program& p);
void cmdADIsave_Click(Program& p);
void cmdADIprior_Click(Program& p);
void cmdADINext_Click(Program& p);
void cmdADIrpl_Click(Program& p);
void cmdadiDelete_Click(Program& p);
void cmdAdiNew_Click(Program& p);
void cmdADIdone_Click(Program& p);

}  // namespace bw
