// What the desktop window adds to the form's own rules so that a person is
// guided: buttons shown off while pressing them could only do harm, and one
// line after every run that says what it wrote and where, or why nothing.
// The form model keeps the states its handlers set; a front end combines
// these answers with them.
#pragma once

#include <cstdint>
#include <string>

#include "shell/program.h"

namespace bw {

// ---- button states ----
/// "Add", "Next Key " and "All Keys": only while a run waits at a key.
bool AdiKeyButtonsUsable(const Program& p);
/// "RPL": only with a generated record and an open table with a current record.
bool AdiReplaceUsable(const Program& p);

// ---- after a run ----
enum class RunOutput { Database, Slinke, Adi };

/// Noted just before a run starts.
struct RunStart {
  RunOutput output = RunOutput::Database;
  int64_t entriesWritten = 0;
};
RunStart NoteRunStart(const Program& p, RunOutput output);

/// The status line of one run and the folder its output lies in.
struct RunReport {
  int64_t keys = 0;
  std::string text;    ///< "Wrote 21 keys to …/Living Room.mdb", "Wrote 0 keys: <reason>"
  std::string folder;  ///< folder of the output; empty when the run names none
};
/// `message`: the last message the run showed ("" none); `error`: the text of
/// the run-time error that ended it ("" none).
RunReport ReportRun(const Program& p, const RunStart& start, const std::string& message,
                    const std::string& error);

// ---- Help → About ----
/// Version and where the program looks: library, template and output folders, one a line.
std::string AboutText(const Program& p);

// ---- file dialogs ----
/// The folder below the program folder that a dialog of the window starts in,
/// created when missing (false when it cannot be made).
bool EnsureOutputFolder(const Program& p, const std::string& name);
/// A file name to suggest for a new output: the description, else manufacturer
/// and model, else the model; cleaned of characters no file name may hold.
std::string SuggestedFileName(const Program& p, const std::string& description, const std::string& extension);

}  // namespace bw
