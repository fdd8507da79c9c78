// The Program: all state the tool keeps while it runs, in one object instead of
// globals. One current device and key table, one protocol record, one symbol
// table, one burst sequence, one Pronto record, one open IR database, one LIR
// table, the format flags and the form model of both windows. Routines take the
// Program by reference; tests make a fresh one per case.
#pragma once

#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "adi/lir_types.h"
#include "generate/burst_types.h"
#include "input/defines_types.h"
#include "input/key_types.h"
#include "pronto/ir_code_types.h"
#include "protocol/protocol_types.h"
#include "runtime/folder_cache.h"
#include "shell/forms.h"
#include "shell/host.h"

namespace bw {

namespace jet {
class Database;
}
struct IRDatabaseIndex;

/// Where a message arose: the file being read and its line (0 when not reading).
struct MessageSource {
  std::string file;
  int line = 0;
};

/// The shell's writers for every output (Pronto, Slink-e transmit-only, ADI).
EntryWriters StandardEntryWriters();

struct Program {
  /// The person (or test script) at the other end. Never null while commands run.
  Host* host = nullptr;

  // ---- windows ----
  MainForm F;
  DetailsForm DBG;

  // ---- start-up ----
  /// Folder of the program: template, "Generated IRDBs", "Slinke Library", "ADI Library".
  std::filesystem::path ProgramFolder;
  /// The command line as one text (only "SNAP" in it matters).
  std::string CommandLine;
  /// Full path of the Device Library, no trailing separator.
  std::string DeviceLibraryPath;
  /// The Device Library's listing, kept while the folder is unchanged.
  FolderCache Library;
  /// Which protocol file names which protocol, kept alongside.
  ProtocolFileIndex ProtocolFiles;
  bool QuitRequested = false;

  // ---- output format flags: exactly one is true ----
  bool FormatPronto = true;
  bool FormatSlinkTxOnly = false;
  bool FormatSlinkTxRx = false;
  bool FormatADI = false;
  bool SnapMode = false;

  // ---- protocol and symbols ----
  ProtocolRecord Protocol;
  std::string LastModulationText = "PWM";
  std::string LastBitOrderText = "LSB";
  DefinesTable Defines;
  int32_t CurrentDeviceCode = 0;
  int32_t CurrentFunctionCode = 0;
  int32_t CurrentExtension = 0;
  /// Running sum of absolute durations since the start of the current frame.
  int32_t FrameTime = 0;

  // ---- device ----
  KeyTable Keys;
  bool SwitchWildcard = false;
  int16_t VaryingSwitch = 0;
  int16_t Switch1Setting = 0;
  int16_t Switch2Setting = 0;
  /// Xantech sweep selector: 0 none, 1 sweep the first code, 2 the second.
  int16_t XantechSweep = 0;
  int16_t XantechCode1 = 0;
  int16_t XantechCode2 = 0;

  // ---- generation ----
  BurstSequence Burst;
  /// Where DispatchEntry sends each entry; a test may replace a writer.
  EntryWriters Writers = StandardEntryWriters();

  // ---- Pronto database ----
  IRCodeRecord IRCode;
  int16_t ButtonSequence = 0;
  bool DatabaseOpen = false;
  std::shared_ptr<jet::Database> Database;
  /// Lookup structures over the open database's device and code rows.
  std::shared_ptr<IRDatabaseIndex> DatabaseIndex;
  /// Test seam: when set, the Pronto writers hand each finished record here
  /// instead of storing it with AddIRCode.
  std::function<void(Program&)> IRCodeSink;

  // ---- Slink-e ----
  std::string SlinkText;
  std::string SlinkFileName;
  bool SlinkError = false;

  // ---- ADI ----
  LirTable Lir;
  LirRecord CurrentLirRecord;
  /// 0 waiting, 1 go on without adding, 2 add every key from now on.
  int16_t AdiKeyChoice = 0;

  /// A run waits in the per-key step for Add, Next Key or All Keys.
  bool AdiWaitingAtKey = false;
  /// A run has encoded a record into CurrentLirRecord (RPL has something to put).
  bool LirRecordGenerated = false;

  // ---- details dialog ----
  int16_t WaveformOffset = 0;

  // ---- what the runs wrote ----
  /// Entries stored since start-up: database codes, code-file entries, table
  /// records. Only ever counts up; a front end tells a run by the difference.
  int64_t EntriesWritten = 0;

  // ---- diagnostics ----
  MessageSource Source;
  /// Where the run-time error that last left a file reader arose (the innermost
  /// reader's file and line); empty until then. A front end clears it before a
  /// command and reads it when the command ends in a RunTimeError.
  MessageSource ErrorSource;

  /// How many messages Message has shown: a step that showed none may be
  /// repeated from what it left behind.
  uint64_t MessagesShown = 0;

  /// Shows a plain OK message (the common case) through the host.
  void Message(const std::string& text) {
    ++MessagesShown;
    host->MsgBox(text, MsgBoxStyle::OKOnly);
  }
};

/// While alive, messages are attributed to `file` and the reader's current line;
/// restores the previous source when it ends (a device file loading its protocol).
/// Left by an exception, it first notes the position in ErrorSource unless an
/// inner reader already did.
class SourceScope {
 public:
  SourceScope(Program& p, std::string file)
      : p_(p), saved_(p.Source), exceptionsAtStart_(std::uncaught_exceptions()) {
    p_.Source.file = std::move(file);
    p_.Source.line = 0;
  }
  ~SourceScope() {
    if (std::uncaught_exceptions() > exceptionsAtStart_ && p_.ErrorSource.file.empty()) p_.ErrorSource = p_.Source;
    p_.Source = saved_;
  }
  SourceScope(const SourceScope&) = delete;
  SourceScope& operator=(const SourceScope&) = delete;

 private:
  Program& p_;
  MessageSource saved_;
  int exceptionsAtStart_;
};

}  // namespace bw
