#include "shell/startup.h"

#include <filesystem>
#include <system_error>

#include "input/subroutines.h"
#include "pronto/db_access.h"
#include "runtime/files.h"
#include "runtime/text.h"
#include "version.h"

namespace bw {

namespace {

/// The output formats, in the order the format flags are tested.
constexpr const char* kOutputFormats[] = {"Philips Pronto", "Nirvis TX Only", "Nirvis Tx/Rx", "ADI Leopard"};

/// Width of the main window in twips: the layout of the three output panels needs it.
constexpr int kMainWindowWidth = 8900;

/// `folder` + "/" + `name`, without doubling the separator of the root.
std::string JoinFolder(const std::string& folder, const std::string& name) {
  if (!folder.empty() && folder.back() == '/') return folder + name;
  return folder + "/" + name;
}

/// The folder the search for the Device Library starts from, absolute, so that
/// the walk upward can reach the root.
std::string SearchStart(const std::filesystem::path& programFolder) {
  std::error_code ec;
  std::filesystem::path start = std::filesystem::absolute(programFolder, ec);
  if (ec) start = programFolder;
  return start.lexically_normal().string();
}

/// The first FORMAT or PROTOCOL name of a protocol file, upper-cased ("" when it has none).
std::string ProtocolFileName(const std::filesystem::path& path) {
  TextFileReader reader(path);
  std::string line;
  while (ReadCleanLine(reader, line)) {
    if (line.empty()) continue;
    for (const char* separator : {"=", " "}) {
      std::string rest = line;
      std::string keyword = RemoveBlanks(GetToken(rest, separator));
      if (keyword == "FORMAT" || keyword == "PROTOCOL") return UCase(rest);
    }
  }
  return {};
}

void EndProgram(Program& p) {
  // The shared file channel is never closed here: open files are left to the end
  // of the process, as they always were.
  if (p.DatabaseOpen) CloseIRDatabase(p);
  p.F.visible = false;
  p.QuitRequested = true;
  p.host->Quit();
}

}  // namespace

// ---- the main window ----

void Form_Load(Program& p, int screenWidthTwips, int screenHeightTwips) {
  MainForm& f = p.F;
  f.width = kMainWindowWidth;
  f.top = (screenHeightTwips - f.height) / 2;
  f.left = (screenWidthTwips - f.width) / 2;
  f.caption = "Pronto Burstwright Version(" + std::to_string(version::kMajor) + "." +
              std::to_string(version::kMinor) + " R" + std::to_string(version::kRevision) + ")";
  // The three output panels lie on top of one another; only the selected one shows.
  f.Slnk.left = f.DBI.left;
  f.ADI.left = f.DBI.left;
}

bool InitializeProgram(Program& p) {
  MainForm& f = p.F;
  f.DC.text.clear();
  f.FFC.text.clear();
  f.LFC.text.clear();
  f.Model.text.clear();

  p.SnapMode = Contains(UCase(p.CommandLine), "SNAP");

  f.Output.Clear();
  for (const char* name : kOutputFormats) f.Output.AddItem(name);
  f.Output.listIndex = 0;

  f.DBI.visible = true;
  f.Slnk.visible = false;
  f.ADI.visible = false;
  p.FormatPronto = true;
  p.FormatSlinkTxOnly = false;
  p.FormatADI = false;
  p.FormatSlinkTxRx = false;

  f.dbnlbl.visible = true;
  f.dbname.visible = true;
  f.Label5.caption = "Select Device";
  f.Lex.listIndex = -1;
  f.Lex.visible = true;
  f.Autogen.value = 0;
  f.LoadDB.caption = "Open";
  p.DatabaseOpen = false;

  f.DvcMfglist.Clear();
  f.DvcTypeList.Clear();
  f.DvcModelList.Clear();
  f.dbname.text.clear();
  f.DBmfgDEL.enabled = false;
  f.DBtypDEL.enabled = false;
  f.DBdvcDel.enabled = false;

  p.LastModulationText = "PWM";
  p.LastBitOrderText = "LSB";

  // The library lies in the program's folder or in the nearest folder above it.
  // ParentFolder shortens the base at every step and ends with the root "/"
  // before it gives "", so the root is tried and the walk always ends.
  p.DeviceLibraryPath.clear();
  std::string base = SearchStart(p.ProgramFolder);
  while (p.DeviceLibraryPath.empty() && !base.empty()) {
    std::string candidate = JoinFolder(base, "Device Library");
    if (FolderExists(candidate)) p.DeviceLibraryPath = candidate;
    else base = ParentFolder(base);
  }
  if (p.DeviceLibraryPath.empty()) {
    p.Message("Can not locate Device Library");
    p.QuitRequested = true;
    p.host->Quit();
    return false;
  }

  p.Keys.Clear();
  ListProtocolNames(p);
  ListDeviceFiles(p);
  f.visible = true;
  return true;
}

bool StartProgram(Program& p) {
  Form_Load(p);
  if (!InitializeProgram(p)) return false;
  ListDeviceFiles(p);
  p.F.Check1.value = 0;
  p.F.visible = true;
  return true;
}

// ---- the library's lists ----

void ListDeviceFiles(Program& p) {
  ListBox& lex = p.F.Lex;
  lex.Clear();
  for (const std::string& file : p.Library.List(p.DeviceLibraryPath, ".dvc")) {
    lex.AddItem(UCase(file.substr(0, file.size() >= 4 ? file.size() - 4 : 0)));
    lex.listIndex = -1;
  }
}

void ListProtocolNames(Program& p) {
  const std::filesystem::path folder = p.DeviceLibraryPath;
  for (const std::string& file : p.Library.List(folder, ".irp")) {
    std::string name = ProtocolFileName(folder / file);
    if (!name.empty()) p.F.format.AddItem(name);
  }
}

// ---- folders ----

std::string ParentFolder(std::string& path) {
  if (path.empty()) return {};
  if (path.back() == '/') path.pop_back();
  std::size_t last = path.rfind('/');
  if (last == std::string::npos) return {};
  // The parent of "/a" is the root itself; the root's parent is "".
  if (last == 0) return "/";
  return path.substr(0, last);
}

bool FolderExists(const std::string& path) {
  std::string folder = path;
  if (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  if (folder.empty()) return false;
  std::error_code ec;
  return std::filesystem::is_directory(folder, ec);
}

// ---- events ----

void quit_Click(Program& p) { EndProgram(p); }

void Form_QueryUnload(Program& p) { EndProgram(p); }

void Timer1_Timer(Program& p) { p.F.Timer1.enabled = false; }

void Check1_Click(Program& p) {
  // The writers read the box themselves when they decide whether to show an entry.
  [[maybe_unused]] const int state = p.F.Check1.value;
}

}  // namespace bw
