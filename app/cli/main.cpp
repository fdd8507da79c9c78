// burstwright-cli: the headless front end. It drives the same core commands as
// the desktop program (loading a device goes through Lex_Click, runs through the
// frames' own run commands) with a host that prints messages instead of showing
// boxes, answers questions from --yes, and adds every key of an ADI run.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "adi/adi.h"
#include "export.h"
#include "import_lirc.h"
#include "plot.h"
#include "generate/generate.h"
#include "input/defines.h"
#include "input/subroutines.h"
#include "pronto/db_access.h"
#include "pronto/db_run.h"
#include "pronto/pronto_code.h"
#include "protocol/protocol.h"
#include "runtime/files.h"
#include "runtime/numbers.h"
#include "runtime/path_problems.h"
#include "runtime/run_time_error.h"
#include "runtime/text.h"
#include "shell/commands.h"
#include "shell/program.h"
#include "shell/startup.h"
#include "slinke/slinke.h"

namespace fs = std::filesystem;

namespace bw::cli {
namespace {

constexpr int kExitClean = 0;
constexpr int kExitMessages = 1;
constexpr int kExitUsage = 2;
constexpr int kExitRunTimeError = 3;

const char* const kUsage =
    "usage: burstwright-cli [--library DIR] [--home DIR] [--yes] COMMAND [ARGS]\n"
    "  --library DIR   the Device Library folder itself; default: discovery as in the desktop\n"
    "                  program, from the current folder, then from the program's folder\n"
    "  --home DIR      the program folder (template, \"Generated IRDBs\", \"Slinke Library\",\n"
    "                  \"ADI Library\"); default: the executable's folder\n"
    "  --yes           answer Yes to every question (default: No)\n"
    "\n"
    "  devices                          device names, one a line, as the device list shows them\n"
    "  protocols                        protocol names, one a line, as the protocol list shows them\n"
    "  bursts DEVICE [--output FORMAT]  JSON of every generated key\n"
    "                                   (FORMAT: pronto | slinke-tx | slinke-txrx | adi; default pronto)\n"
    "  pronto DEVICE [--hex]            Pronto code text of every key\n"
    "  database DEVICE --db FILE [--create]   the Pronto database run into FILE;\n"
    "                                   --create makes FILE from the template first\n"
    "  slinke DEVICE [--txrx] [--description TEXT]   writes the .cde into \"Slinke Library\",\n"
    "                                   prints its path\n"
    "  adi DEVICE --out FILE [--description TEXT]    every key's record, as if \"All Keys\" was\n"
    "                                   pressed, into FILE (a new file)\n"
    "  lir FILE                         one line per record: number, device part, key part,\n"
    "                                   carrier byte, pulse bytes in hex\n"
    "  check                            loads every protocol file, then every device file;\n"
    "                                   prints every message\n"
    "  import-lirc FILE... [--to DIR] [--remote NAME] [--yes]\n"
    "                                   every remote of the lircd.conf FILEs as a device and a\n"
    "                                   protocol file in DIR (default: the Device Library);\n"
    "                                   one line per remote; --yes replaces existing files\n"
    "  export DEVICE --format FORMAT [--out FILE]   every key as FORMAT: pronto-hex | gc-sendir |\n"
    "                                   lirc | csv; to stdout, or into FILE\n";

/// Commands that live in files of their own add their lines here.
const std::string kUsageText = std::string(kUsage) + bw::cli::kPlotUsage;

/// What a usage error prints below its reason; --help prints kUsage.
const char* const kShortUsage =
    "usage: burstwright-cli [--library DIR] [--home DIR] [--yes] COMMAND [ARGS]\n"
    "commands: devices, protocols, bursts, pronto, database, slinke, adi, lir, check, import-lirc,\n"
    "          export, plot\n"
    "burstwright-cli --help describes them\n";

/// A run-time error as the one line the command line prints for it.
std::string RunTimeErrorLine(const RunTimeError& e) {
  return "Run-time error '" + std::to_string(e.number()) + "': " + e.description();
}

struct UsageError {
  std::string text;
};

/// The host of the command line: messages go to stderr as one line each,
/// questions are answered from --yes, file dialogs answer the path given on the
/// command line, and every ADI wait is answered with "Add".
class CliHost : public Host {
 public:
  Program* program = nullptr;
  bool answerYes = false;
  /// Prefix of every message line ("DEVICE" or "FILE"); empty in check mode.
  std::string context;
  /// check mode: messages are attributed to FILE:LINE of the reader.
  bool sourceMode = false;
  /// What is wrong with the path a command works on, put beside its messages while set.
  std::string messageNote;
  /// check mode: the file being checked, for a message that arises outside its reader.
  std::string sourceFile;
  std::string dialogAnswer;
  std::vector<std::string> messages;
  bool progress = false;
  int progressTotal = 0;
  int progressCount = 0;
  std::string lastLabel;

  MsgBoxResult MsgBox(const std::string& text, MsgBoxStyle style) override {
    std::string line = OneLine(text);
    if (!messageNote.empty()) line += " (" + messageNote + ")";
    messages.push_back(line);
    ClearProgress();
    if (sourceMode && !program->Source.file.empty()) {
      std::cerr << program->Source.file << ":" << program->Source.line << ": " << line << "\n";
    } else if (sourceMode && !sourceFile.empty()) {
      std::cerr << sourceFile << ": " << line << "\n";
    } else {
      std::cerr << context << ": " << line << "\n";
    }
    if (style == MsgBoxStyle::OKOnly) return MsgBoxResult::OK;
    return answerYes ? MsgBoxResult::Yes : MsgBoxResult::No;
  }
  std::string OpenFileDialog(const std::string&, const std::string&) override { return dialogAnswer; }
  std::string SaveFileDialog(const std::string&, const std::string&) override { return dialogAnswer; }
  void DoEvents() override {
    Program& p = *program;
    // An ADI run waits at every key. "Add" at each wait stores the same records
    // as "All Keys" once, and keeps one wait (so one progress step) per key.
    if (p.FormatADI && p.AdiKeyChoice == 0 && p.F.CmdADIadd.enabled) CmdADIadd_Click(p);
    if (progress && !p.Burst.BurstLabel.empty() && p.Burst.BurstLabel != lastLabel) {
      lastLabel = p.Burst.BurstLabel;
      // A Xantech sweep goes through the keys once per switch setting.
      progressCount = progressTotal > 0 ? progressCount % progressTotal + 1 : progressCount + 1;
      std::cerr << "\rkey " << progressCount << " of " << progressTotal << "   " << std::flush;
    }
  }
  void ShowDetails() override {}
  void HideDetails() override {}
  void SetBusy(bool) override {}
  void Quit() override { program->QuitRequested = true; }

  void ClearProgress() {
    if (progress && progressCount > 0) std::cerr << "\r\033[K" << std::flush;
    progressCount = 0;
    lastLabel.clear();
  }

  static std::string OneLine(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') {
        out += " | ";
        ++i;
      } else if (text[i] == '\n' || text[i] == '\r') {
        out += " | ";
      } else if (static_cast<unsigned char>(text[i]) < 0x20 || text[i] == 0x7F) {
        // Control bytes (a binary file read as text) shown, not sent to the terminal.
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, "\\x%02X", static_cast<unsigned char>(text[i]));
        out += escaped;
      } else {
        out += text[i];
      }
    }
    return out;
  }
};

struct Options {
  std::string library;
  std::string home;
  bool yes = false;
  std::string command;
  std::vector<std::string> args;
};

Options ParseOptions(int argc, char** argv) {
  Options o;
  int i = 1;
  for (; i < argc; ++i) {
    std::string a = argv[i];
    if (a == "--library" || a == "--home") {
      if (i + 1 >= argc) throw UsageError{a + " needs a folder"};
      (a == "--library" ? o.library : o.home) = argv[++i];
    } else if (a == "--yes") {
      o.yes = true;
    } else if (a == "--help" || a == "-h") {
      o.command = "help";
      return o;
    } else if (!a.empty() && a[0] == '-') {
      throw UsageError{"unknown option " + a};
    } else {
      break;
    }
  }
  if (i >= argc) throw UsageError{"no command"};
  o.command = argv[i++];
  for (; i < argc; ++i) o.args.emplace_back(argv[i]);
  return o;
}

/// The command's own arguments: positional ones, flags and flags with a value.
struct CommandArgs {
  std::vector<std::string> positional;
  std::map<std::string, std::string> values;
  std::map<std::string, bool> flags;
};

CommandArgs SplitArgs(const std::vector<std::string>& args, const std::vector<std::string>& flagNames,
                      const std::vector<std::string>& valueNames) {
  CommandArgs c;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a.rfind("--", 0) == 0) {
      bool isFlag = std::find(flagNames.begin(), flagNames.end(), a) != flagNames.end();
      bool isValue = std::find(valueNames.begin(), valueNames.end(), a) != valueNames.end();
      if (isFlag) {
        c.flags[a] = true;
      } else if (isValue) {
        if (i + 1 >= args.size()) throw UsageError{a + " needs a value"};
        c.values[a] = args[++i];
      } else {
        throw UsageError{"unknown option " + a};
      }
    } else {
      c.positional.push_back(a);
    }
  }
  return c;
}

/// Discovery as the desktop program does it, from one starting folder.
std::string DiscoverLibrary(const std::string& start) {
  std::string base = start;
  while (!base.empty()) {
    std::string candidate = base == "/" ? "/Device Library" : base + "/Device Library";
    if (FolderExists(candidate)) return candidate;
    if (base == "/") break;
    std::string before = base;
    base = ParentFolder(base);
    if (base.empty() && before.size() > 1 && before[0] == '/') base = "/";
    if (base == before) break;
  }
  return {};
}

class Cli {
 public:
  Cli(const Options& o) : options_(o) {
    host_.program = &p_;
    host_.answerYes = o.yes;
    p_.host = &host_;
  }

  int Run() {
    const std::string& c = options_.command;
    if (c == "help") {
      std::cout << kUsageText;
      return kExitClean;
    }
    if (c == "import-lirc")
      return ImportLircCommand(options_.args, options_.yes, [&] { return Start() ? p_.DeviceLibraryPath : ""; });
    if (c != "devices" && c != "protocols" && c != "bursts" && c != "pronto" && c != "database" &&
        c != "slinke" && c != "adi" && c != "check" && c != "lir" && c != "export" && c != "plot")
      throw UsageError{"unknown command " + c};
    try {
      if (c == "lir") return Lir();
      if (!Start()) return kExitRunTimeError;
      if (c == "devices") return Devices();
      if (c == "protocols") return Protocols();
      if (c == "check") return Check();
      if (c == "bursts") return Bursts();
      if (c == "pronto") return Pronto();
      if (c == "database") return Database();
      if (c == "slinke") return Slinke();
      if (c == "export") return Export();
      if (c == "plot") return Plot();
      return Adi();
    } catch (const RunTimeError& e) {
      ReportRunTimeError(e);
      return kExitRunTimeError;
    }
  }

 private:
  int Exit() const { return host_.messages.empty() ? kExitClean : kExitMessages; }

  /// A run-time error as one line: after FILE:LINE where a reader was left by it
  /// in check mode, otherwise after the device or file the command works on.
  void ReportRunTimeError(const RunTimeError& e) {
    host_.ClearProgress();
    std::string text = RunTimeErrorLine(e);
    if (!note_.empty()) text += " (" + note_ + ")";
    if (host_.sourceMode && !p_.ErrorSource.file.empty())
      std::cerr << p_.ErrorSource.file << ":" << p_.ErrorSource.line << ": " << text << "\n";
    else if (!host_.context.empty())
      std::cerr << host_.context << ": " << text << "\n";
    else
      std::cerr << text << "\n";
  }

  /// The start-up of the desktop program, with the library found as the options say.
  bool Start() {
    p_.ProgramFolder = options_.home.empty() ? ExecutableFolder() : fs::absolute(options_.home);
    if (const std::string problem = FolderProblem(p_.ProgramFolder); !problem.empty())
      throw UsageError{"--home " + problem};
    std::string library = options_.library;
    if (library.empty()) library = DiscoverLibrary(fs::current_path().string());
    if (library.empty()) library = DiscoverLibrary(ExecutableFolder().string());
    if (library.empty() || !FolderExists(library)) {
      // The fixed text, then which folder was tried and what is wrong with it.
      std::cerr << "Can not locate Device Library ("
                << (options_.library.empty()
                        ? "no \"Device Library\" folder in or above " + fs::current_path().string() + " or " +
                              ExecutableFolder().string()
                        : FolderProblem(fs::absolute(options_.library)))
                << ")\n";
      return false;
    }
    std::string path = fs::absolute(library).lexically_normal().string();
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    Form_Load(p_);
    p_.F.Output.Clear();
    for (const char* name : {"Philips Pronto", "Nirvis TX Only", "Nirvis Tx/Rx", "ADI Leopard"})
      p_.F.Output.AddItem(name);
    p_.F.Output.listIndex = 0;
    p_.DeviceLibraryPath = path;
    p_.Keys.Clear();
    ListProtocolNames(p_);
    ListDeviceFiles(p_);
    p_.F.Check1.value = 0;
    return true;
  }

  void SelectOutput(int index) {
    p_.F.Output.listIndex = index;
    Output_Click(p_);
  }

  /// Selects DEVICE in the device list (case ignored) and loads it through Lex_Click.
  void LoadDevice(const std::string& name) {
    std::string wanted = UCase(name);
    for (std::size_t i = 0; i < p_.F.Lex.items.size(); ++i) {
      if (UCase(p_.F.Lex.items[i]) == wanted) {
        host_.context = p_.F.Lex.items[i];
        p_.F.Lex.listIndex = static_cast<int>(i);
        Lex_Click(p_);
        return;
      }
    }
    throw UsageError{"no device " + name + " in " + p_.DeviceLibraryPath};
  }

  std::string OneDevice(const CommandArgs& a) {
    if (a.positional.size() != 1) throw UsageError{options_.command + " takes one DEVICE"};
    return a.positional[0];
  }

  int Devices() {
    for (const auto& d : p_.F.Lex.items) std::cout << d << "\n";
    return Exit();
  }

  int Protocols() {
    for (const auto& f : p_.F.format.items) std::cout << f << "\n";
    return Exit();
  }

  /// Every file is loaded even when one of them ends in a run-time error; that
  /// error is reported like a message, and the exit status then says 3.
  int Check() {
    host_.sourceMode = true;
    bool runTimeError = false;
    auto load = [&](const std::string& context, auto&& action) {
      host_.context = context;
      p_.ErrorSource = {};
      try {
        action();
      } catch (const RunTimeError& e) {
        ReportRunTimeError(e);
        runTimeError = true;
      }
    };
    for (const auto& name : std::vector<std::string>(p_.F.format.items))
      load(name, [&] { LoadProtocol(p_, name); });
    for (std::size_t i = 0; i < p_.F.Lex.items.size(); ++i) {
      p_.F.Lex.listIndex = static_cast<int>(i);
      const std::string name = p_.F.Lex.items[i];
      const auto path = p_.Library.Find(p_.DeviceLibraryPath, name + ".dvc");
      host_.sourceFile = path ? path->string() : std::string();
      load(name, [&] {
        Lex_Click(p_);
        if (path) CheckKeyProtocols(path->string());
      });
    }
    host_.sourceFile.clear();
    if (runTimeError) return kExitRunTimeError;
    return Exit();
  }

  /// A key code that names a protocol the library lacks fails only when the key is
  /// built; check reports it now, at the key's line, with the text the build shows.
  /// Protocol names match as the loader matches them (through the library's kept
  /// protocol-name map, so each name costs one lookup).
  void CheckKeyProtocols(const std::string& deviceFile) {
    auto inLibrary = [&](const std::string& name) { return ProtocolInLibrary(p_, name); };
    for (int k = 1; k <= p_.Keys.UpperBound(); ++k) {
      const KeyEntry& key = p_.Keys[k];
      std::set<std::string> missing;
      for (const auto* codes : {&key.FirstCodes, key.HasSecondCodes ? &key.SecondCodes : nullptr})
        for (std::size_t i = 0; codes && i < codes->size(); ++i)
          if (!(*codes)[i].Name.empty() && !inLibrary((*codes)[i].Name)) missing.insert((*codes)[i].Name);
      SourceScope scope(p_, deviceFile);
      p_.Source.line = key.Line;
      for (const std::string& name : missing) p_.Message("Protocol " + name + " Not in Device Library");
    }
  }

  static void JsonString(std::ostream& out, const std::string& s) {
    out << '"';
    for (unsigned char ch : s) {
      switch (ch) {
        case '"': out << "\\\""; break;
        case '\\': out << "\\\\"; break;
        case '\n': out << "\\n"; break;
        case '\r': out << "\\r"; break;
        case '\t': out << "\\t"; break;
        default:
          if (ch < 0x20) {
            char buf[8];
            std::snprintf(buf, sizeof buf, "\\u%04x", ch);
            out << buf;
          } else {
            out << ch;
          }
      }
    }
    out << '"';
  }

  int Bursts() {
    CommandArgs a = SplitArgs(options_.args, {}, {"--output"});
    std::string device = OneDevice(a);
    std::string output = a.values.count("--output") ? a.values["--output"] : "pronto";
    static const std::map<std::string, int> kOutputs = {
        {"pronto", 0}, {"slinke-tx", 1}, {"slinke-txrx", 2}, {"adi", 3}};
    auto it = kOutputs.find(output);
    if (it == kOutputs.end()) throw UsageError{"unknown output format " + output};
    SelectOutput(it->second);
    LoadDevice(device);
    // A Slink-e run joins the repeat form onto the once form before any key is
    // built, so its entries have no repeated part.
    if (p_.FormatSlinkTxOnly || p_.FormatSlinkTxRx) MergeSlinkForms(p_.Protocol);

    std::ostringstream keys;
    bool raw = p_.F.format.text == "RAW";
    bool first = true;
    for (int k = 1; k <= p_.Keys.UpperBound(); ++k) {
      ResetBurstSequence(p_);
      if (raw) {
        if (!LoadRawKey(p_, k)) break;
        p_.Burst.BurstLabel = p_.Keys[k].Label;
      } else {
        BuildKeySequence(p_, k);
      }
      const BurstSequence& b = p_.Burst;
      keys << (first ? "" : ",") << "\n    {\"label\": ";
      first = false;
      JsonString(keys, b.BurstLabel);
      keys << ", \"device\": " << b.BurstDeviceCode << ", \"function\": " << b.BurstFunctionCode
           << ", \"once\": [";
      for (int i = 1; i <= b.OnceCount; ++i) keys << (i > 1 ? ", " : "") << b.BurstDurations(i);
      keys << "], \"repeat\": [";
      for (int i = 1; i <= b.RepeatPartCount; ++i)
        keys << (i > 1 ? ", " : "") << b.BurstDurations(b.OnceCount + i);
      keys << "]}";
    }

    std::ostream& out = std::cout;
    out << "{\"device\": ";
    JsonString(out, host_.context);
    out << ", \"manufacturer\": ";
    JsonString(out, p_.F.MFG.text);
    out << ", \"model\": ";
    JsonString(out, p_.F.Model.text);
    out << ", \"type\": ";
    JsonString(out, p_.F.Device.text);
    out << ", \"protocol\": ";
    JsonString(out, raw ? std::string("RAW") : p_.Protocol.ProtocolName);
    out << ", \"frequency\": " << p_.Protocol.Frequency << ",\n  \"keys\": [" << keys.str() << "\n  ],\n"
        << "  \"messages\": [";
    for (std::size_t i = 0; i < host_.messages.size(); ++i) {
      out << (i ? ", " : "");
      JsonString(out, host_.messages[i]);
    }
    out << "]}\n";
    return Exit();
  }

  int Pronto() {
    CommandArgs a = SplitArgs(options_.args, {"--hex"}, {});
    std::string device = OneDevice(a);
    SelectOutput(0);
    LoadDevice(device);
    p_.DBG.HexOPT.value = a.flags.count("--hex") ? 1 : 0;
    p_.IRCodeSink = [](Program& p) {
      const IRCodeRecord& r = p.IRCode;
      std::cout << r.Label << "\n";
      if (r.FormatText != "0x0000") {
        // predefined RC5/RC6 codes have no burst words: their format word and code numbers
        std::cout << r.FormatText << "\n" << r.BurstText << "\n";
        return;
      }
      p.DBG.lblOnceCount.caption = std::to_string(r.OnceCount);
      p.DBG.lblRepeatCount.caption = std::to_string(r.RepeatCount);
      ShowProntoText(p);
      std::string text = p.DBG.Text1.text;
      if (text.size() >= 2 && text.compare(text.size() - 2, 2, "\r\n") == 0) text.resize(text.size() - 2);
      std::string::size_type pos;
      while ((pos = text.find("\r\n")) != std::string::npos) text.replace(pos, 2, "\n");
      std::cout << text << "\n";
    };
    GenerateKeys(p_, p_.F.format.text, ParseNumber(p_.F.DC.text), CInt(ParseNumber(p_.F.FFC.text)),
                 CInt(ParseNumber(p_.F.LFC.text)));
    return Exit();
  }

  void StartProgress() {
    host_.progress = isatty(2) != 0;
    host_.progressTotal = p_.Keys.UpperBound();
  }

  int Database() {
    CommandArgs a = SplitArgs(options_.args, {"--create"}, {"--db"});
    std::string device = OneDevice(a);
    if (!a.values.count("--db")) throw UsageError{"database needs --db FILE"};
    std::string file = fs::absolute(a.values["--db"]).string();
    SelectOutput(0);
    LoadDevice(device);
    note_ = a.flags.count("--create") ? NewFileProblem(file) : ExistingFileProblem(file);
    if (note_.empty() && !a.flags.count("--create")) note_ = AccessDatabaseProblem(file);
    if (a.flags.count("--create")) {
      host_.dialogAnswer = file;
      // The template's fixed message does not say where it was looked for.
      host_.messageNote = ExistingFileProblem(p_.ProgramFolder / "Empty_RCIR.mdb");
      NewDB_Click(p_);
      host_.messageNote.clear();
      // The desktop command ends quietly when the copy or the open fails; opening
      // the file once more brings the reason up as a run-time error.
      if (!p_.DatabaseOpen) OpenIRDatabase(p_, file);
    } else {
      p_.F.dbname.text = file;
      OpenIRDatabase(p_, file);
      p_.F.LoadDB.caption = "Close";
    }
    if (!p_.DatabaseOpen) return kExitRunTimeError;
    note_.clear();
    StartProgress();
    GenerateIRDatabase(p_);
    host_.ClearProgress();
    CloseIRDatabase(p_);
    return Exit();
  }

  int Slinke() {
    CommandArgs a = SplitArgs(options_.args, {"--txrx"}, {"--description"});
    std::string device = OneDevice(a);
    SelectOutput(a.flags.count("--txrx") ? 2 : 1);
    LoadDevice(device);
    if (a.values.count("--description")) p_.F.txtdescr.text = a.values["--description"];
    StartProgress();
    cmdSlinkXqt_Click(p_);
    host_.ClearProgress();
    fs::path written = p_.ProgramFolder / "Slinke Library" / (p_.SlinkFileName + ".cde");
    if (p_.SlinkText.empty() && fs::exists(written)) std::cout << written.string() << "\n";
    return Exit();
  }

  int Export() {
    const ExportRequest request = ParseExportRequest(options_.args);
    if (!request.error.empty()) throw UsageError{request.error};
    SelectOutput(0);
    LoadDevice(request.device);
    if (!RunExport(p_, request)) return kExitRunTimeError;
    return Exit();
  }

  int Adi() {
    CommandArgs a = SplitArgs(options_.args, {}, {"--out", "--description"});
    std::string device = OneDevice(a);
    if (!a.values.count("--out")) throw UsageError{"adi needs --out FILE"};
    std::string file = fs::absolute(a.values["--out"]).string();
    SelectOutput(3);
    LoadDevice(device);
    if (a.values.count("--description")) p_.F.ADIdescr.text = a.values["--description"];
    cmdAdiNew_Click(p_);
    StartProgress();
    cmdADIxqt_Click(p_);
    host_.ClearProgress();
    host_.dialogAnswer = file;
    note_ = NewFileProblem(file);
    cmdADIsave_Click(p_);
    return Exit();
  }

  int Plot() {
    PlotArguments a = ParsePlotArguments(options_.args);
    if (!a.problem.empty()) throw UsageError{a.problem};
    SelectOutput(a.output);
    LoadDevice(a.device);
    const int status = PlotKey(p_, a);
    return status != kExitClean ? status : Exit();
  }

  int Lir() {
    if (options_.args.size() != 1) throw UsageError{"lir takes one FILE"};
    const std::string& file = options_.args[0];
    host_.context = file;
    if (!fs::exists(file)) {
      std::cerr << file << ": File not found\n";
      return kExitRunTimeError;
    }
    if (const std::string problem = ExistingFileProblem(file); !problem.empty()) {
      std::cerr << file << ": " << problem << "\n";
      return kExitRunTimeError;
    }
    ReadLirFile(p_, file);
    if (const std::string warning = LirPartialRecordWarning(file); !warning.empty()) p_.Message(warning);
    for (int r = 1; r <= p_.Lir.UpperBound(); ++r) {
      p_.Lir.Current = static_cast<int16_t>(r);
      ShowLirRecord(p_);
      const LirRecord& rec = p_.Lir.records[static_cast<std::size_t>(r)];
      std::cout << r << "\t" << p_.F.ADIFileDevice.text << "\t" << p_.F.AdiFileKey.text << "\t"
                << static_cast<int>(rec.CarrierByte) << "\t";
      char buf[4];
      for (uint8_t b : rec.PulseBytes) {
        if (b == 0) break;
        std::snprintf(buf, sizeof buf, "%02X", b);
        std::cout << buf;
      }
      std::cout << "\n";
    }
    return Exit();
  }

  Options options_;
  /// What is wrong with the path the command works on, shown beside a run-time
  /// error's fixed text; set while that path is being opened.
  std::string note_;
  CliHost host_;
  Program p_;
};

}  // namespace
}  // namespace bw::cli

int main(int argc, char** argv) {
  using namespace bw::cli;
  try {
    Options options = ParseOptions(argc, argv);
    Cli cli(options);
    return cli.Run();
  } catch (const UsageError& e) {
    std::cerr << "burstwright-cli: " << e.text << "\n" << kShortUsage;
    return kExitUsage;
  } catch (const bw::RunTimeError& e) {
    std::cerr << RunTimeErrorLine(e) << "\n";
    return kExitRunTimeError;
  }
}
