#include "shell/window_guide.h"

#include <filesystem>

#include "input/subroutines.h"
#include "runtime/text.h"
#include "version.h"

namespace bw {

namespace {

/// "…/Living Room.mdb": the file's own name; the folder goes beside it as a link.
std::string ShortName(const std::filesystem::path& file) { return "\xE2\x80\xA6/" + file.filename().string(); }

std::string Keys(int64_t n) { return std::to_string(n) + (n == 1 ? " key" : " keys"); }

/// Why a run that ended normally wrote nothing, when no message said so.
std::string QuietReason(const Program& p, RunOutput output) {
  const MainForm& f = p.F;
  if (f.Autogen.value == 1) return "Auto Generate builds the entries but writes none of them";
  if (f.format.text == "RAW") return "the keys of a RAW device are read but not written by this output";
  if (p.Keys.UpperBound() < 1) return "the device has no keys";
  if (output == RunOutput::Adi) return "every key was skipped";
  return "no key reached the writer";
}

}  // namespace

bool AdiKeyButtonsUsable(const Program& p) { return p.AdiWaitingAtKey; }

bool AdiReplaceUsable(const Program& p) {
  const LirTable& t = p.Lir;
  return p.LirRecordGenerated && !p.F.ADIFileName.text.empty() && t.Current >= 1 && t.Current <= t.UpperBound();
}

RunStart NoteRunStart(const Program& p, RunOutput output) { return RunStart{output, p.EntriesWritten}; }

RunReport ReportRun(const Program& p, const RunStart& start, const std::string& message, const std::string& error) {
  RunReport r;
  r.keys = p.EntriesWritten - start.entriesWritten;
  std::filesystem::path file;
  switch (start.output) {
    case RunOutput::Database:
      file = p.F.dbname.text;
      break;
    case RunOutput::Slinke:
      // A Tx/Rx run that met a key it cannot express writes no file at all.
      if (p.SlinkError) r.keys = 0;
      file = p.ProgramFolder / "Slinke Library" / (p.SlinkFileName + ".cde");
      break;
    case RunOutput::Adi:
      if (p.F.ADIFileName.text != "NEW") file = p.F.ADIFileName.text;
      break;
  }
  if (!file.empty()) r.folder = file.parent_path().string();

  if (!error.empty()) {
    r.text = (r.keys > 0 ? "Stopped after " + Keys(r.keys) + ": " : "Wrote 0 keys: ") + error;
    return r;
  }
  if (r.keys == 0) {
    r.text = "Wrote 0 keys: " + (message.empty() ? QuietReason(p, start.output) : message);
    if (start.output == RunOutput::Adi) r.folder.clear();
    return r;
  }
  if (start.output == RunOutput::Adi) {
    // The run fills the table in memory; "Save" writes the file.
    r.text = "Added " + Keys(r.keys) + (file.empty() ? " to a new table" : " to " + ShortName(file)) +
             ", not saved yet";
  } else {
    r.text = "Wrote " + Keys(r.keys) + " to " + ShortName(file);
  }
  return r;
}

std::string AboutText(const Program& p) {
  auto in = [&p](const char* name) { return (p.ProgramFolder / name).string(); };
  return "Burstwright " + std::to_string(version::kMajor) + "." + std::to_string(version::kMinor) + " R" +
         std::to_string(version::kRevision) + "\n\n" +
         "Device Library: " + (p.DeviceLibraryPath.empty() ? std::string("(not found)") : p.DeviceLibraryPath) + "\n" +
         "Database template: " + in("Empty_RCIR.mdb") + "\n" +
         "Databases: " + in("Generated IRDBs") + "\n" +
         "Slink-e files: " + in("Slinke Library") + "\n" +
         "ADI files: " + in("ADI Library") + "\n";
}

bool EnsureOutputFolder(const Program& p, const std::string& name) {
  std::error_code ec;
  const std::filesystem::path folder = p.ProgramFolder / name;
  if (std::filesystem::is_directory(folder, ec)) return true;
  return std::filesystem::create_directories(folder, ec);
}

std::string SuggestedFileName(const Program& p, const std::string& description, const std::string& extension) {
  const MainForm& f = p.F;
  std::string name = Trim(description);
  if (name.empty() && !Trim(f.MFG.text).empty() && !Trim(f.Model.text).empty())
    name = Trim(f.MFG.text) + "-" + Trim(f.Model.text);
  if (name.empty()) name = Trim(f.Model.text);
  name = Trim(CleanFileName(name));
  return name.empty() ? std::string() : name + extension;
}

}  // namespace bw
