// burstwright-cli run as a user runs it: through sh in a temporary folder that is also the program folder
// (--home), on a temporary library and on the bundled one; stdout, stderr (a pipe, or script(1)'s terminal)
// and exit status read back, files read with mdbtools and our own lir, library files and JSON by plain means.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <map>
#include <optional>
#include <regex>
#include <sstream>

#include "support/scripted_host.h"

namespace bw::clitest {
namespace {
namespace fs = std::filesystem;

struct CliResult { int status; std::string out, err; };

fs::path BundledLibrary() { return fs::path(BW_SOURCE_DIR) / "Device Library"; }
std::string Quoted(const fs::path& text) { return "'" + text.string() + "'"; }  // for sh; no test passes a '

std::string Upper(std::string s) {
  std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return char(std::toupper(c)); });
  return s;
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts(1);
  for (char c : text) c == separator ? void(parts.emplace_back()) : void(parts.back() += c);
  return parts;
}

/// Text cut at '\n', no empty line after the last one.
std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines = Split(text, '\n');
  if (lines.back().empty()) lines.pop_back();
  return lines;
}

/// A device (or protocol) file: header values by upper-cased keyword, key lines in file order.
struct DeviceFile {
  std::map<std::string, std::string> header;
  std::vector<std::pair<std::string, std::string>> keys;
  explicit DeviceFile(const fs::path& file) {
    const std::string text = test::ReadFileBytes(file);
    const std::regex assignment(R"((?:^|\n)([^'\r\n=]*[^'\r\n= ]) *= *([^\r\n]*[^\r\n ]))");
    for (std::sregex_iterator m(text.begin(), text.end(), assignment), end; m != end; ++m)
      if (std::size_t(m->position()) < text.find("[KEYCODES]")) header[Upper((*m)[1])] = (*m)[2];
      else keys.emplace_back((*m)[1], (*m)[2]);
  }
};

/// JSON without the white space between tokens; "" when a string or bracket is left
/// open or closed wrongly, a comma dangles or anything follows the object.
std::string CompactJson(const std::string& text) {
  std::string out, open;
  bool inString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (inString && c == '\\') out += text.substr(i++, 2);
    else if (c == '"') inString = !inString, out += c;
    else if (inString || !std::isspace(static_cast<unsigned char>(c))) out += c;
    if (inString) continue;
    if (c == '{' || c == '[') open += c;
    if (c != '}' && c != ']') continue;
    if (open.empty() || open.back() != (c == '}' ? '{' : '[')) return "";
    open.pop_back();
    if (open.empty() && text.find_first_not_of(" \n", i + 1) != std::string::npos) return "";
  }
  const bool dangling = std::regex_search(out, std::regex(R"(,[\]}]|[\[{],)"));
  return inString || !open.empty() || dangling || out.rfind('{', 0) != 0 ? "" : out;
}

/// One entry of the "keys" array of compact bursts JSON (the label as escaped there).
struct JsonKey { std::string label; long long device, function; std::vector<long long> once, repeat; };
const std::regex kJsonKey(R"re(\{"label":"((?:[^"\\]|\\.)*)","device":(-?\d+),"function":(-?\d+),)re"
                          R"re("once":\[([-\d,]*)\],"repeat":\[([-\d,]*)\]\})re");

std::vector<JsonKey> JsonKeys(const std::string& compact) {
  auto numbers = [](std::string list) {
    std::replace(list.begin(), list.end(), ',', ' ');
    std::istringstream in(list);
    return std::vector<long long>(std::istream_iterator<long long>(in), std::istream_iterator<long long>());
  };
  std::vector<JsonKey> keys;
  for (std::sregex_iterator m(compact.begin(), compact.end(), kJsonKey), end; m != end; ++m)
    keys.push_back({(*m)[1], std::stoll((*m)[2]), std::stoll((*m)[3]), numbers((*m)[4]), numbers((*m)[5])});
  return keys;
}

struct CliTest : ::testing::Test {
  test::TempDir dir, captured;  // captured: stdout, stderr and status, out of the program's way
  DeviceFile toshiba{BundledLibrary() / "Toshiba TV.dvc"};  // NEC, the device most tests run
  const std::string manufacturer = Upper(toshiba.header["MANUFACTURER"]), model = Upper(toshiba.header["MODEL"]);
  /// Runs a sh `command` in `folder` (default: the temporary folder) with stdin from /dev/null.
  CliResult Shell(const std::string& command, bool stderrOnTerminal = false, const fs::path& folder = {}) {
    const fs::path c = captured.path();
    std::string line = "cd " + Quoted(folder.empty() ? dir.path() : folder) + " && { " + command + "; }" +
                       (stderrOnTerminal ? "" : " 2>&1") + " >" + Quoted(c / "out") + " </dev/null";
    if (stderrOnTerminal) line = "script -qec \"" + line + "\" /dev/null";
    std::system(("{ " + line + "; echo $? >" + Quoted(c / "status") + "; } | cat >" + Quoted(c / "err")).c_str());
    return {std::stoi(test::ReadFileBytes(c / "status")), test::ReadFileBytes(c / "out"),
            test::ReadFileBytes(c / "err")};
  }
  /// The program with `args` after "--library `library` --home (the temporary folder)", unless `library` is "".
  CliResult Run(const std::vector<std::string>& args, const fs::path& library = BundledLibrary(),
                bool stderrOnTerminal = false, const fs::path& folder = {}) {
    std::string command = Quoted(BW_CLI_PROGRAM);
    if (!library.empty()) command += " --library " + Quoted(library) + " --home " + Quoted(dir.path());
    for (const std::string& a : args) command += " " + Quoted(a);
    return Shell(command, stderrOnTerminal, folder);
  }
  CliResult RunTemporary(const std::vector<std::string>& args) { return Run(args, Library()); }
  fs::path Library() const { return dir.path() / "lib"; }
  void WriteLibrary(const std::string& file, const std::string& text) { dir.Write("lib/" + file, text); }
  /// Some fields (as cut -f takes them) of a table as mdb-export reads it: the header line, then a line a row.
  std::string Export(const std::string& db, const std::string& table, const std::string& fields) {
    return Shell("mdb-export -Q -d '\t' " + Quoted(db) + " " + Quoted(table) + " | cut -f" + fields).out;
  }
};

const char* const kSynopsis = "usage: burstwright-cli [--library DIR] [--home DIR] [--yes] COMMAND [ARGS]";

TEST_F(CliTest, UsageErrorsExitTwoWithAShortUsageNamingTheFault) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{}, "command"}, {{"frobnicate"}, "frobnicate"}, {{"bursts", "SONY TV", "--output", "wav"}, "wav"},
      {{"database", "SONY TV"}, "--db"}, {{"lir", "a.lir", "b.lir"}, "lir"}, {{"pronto", "No Such"}, "No Such"},
      {{"export", "SONY TV", "--format", "wav"}, "wav"}, {{"export", "SONY TV"}, "--format"},
      {{"plot", "SONY TV", "POWER", "--out", "p.txt"}, "p.txt"}, {{"plot", "SONY TV", "POWER"}, "--out"},
      {{"plot", "SONY TV", "POWER", "--out", "p.svg", "--scale", "x2"}, "x2"}};
  for (const auto& [args, named] : cases) {
    CliResult r = Run(args);
    EXPECT_EQ(std::to_string(r.status) + r.out, "2") << named;
    EXPECT_TRUE(std::regex_search(r.err, std::regex("^burstwright-cli: [^\n]*" + named))) << r.err;
    EXPECT_NE(r.err.find(kSynopsis), std::string::npos) << r.err;
    EXPECT_LE(Lines(r.err).size(), 5u) << "the short usage, not the whole help: " << r.err;
  }
  CliResult help = Run({"--help"});
  EXPECT_EQ(help.status + help.err.size(), 0u) << help.err;
  EXPECT_EQ(help.out.rfind(std::string(kSynopsis) + "\n", 0), 0u);
  for (const char* command : {"devices", "protocols", "bursts", "pronto", "database", "slinke", "adi", "lir", "check",
                              "import-lirc", "export", "plot"})
    EXPECT_NE(help.out.find("\n  " + std::string(command) + " "), std::string::npos) << command;
}

TEST_F(CliTest, PlotWritesAnSvgTitledWithDeviceKeyProtocolAndCarrier) {
  CliResult r = Run({"plot", "sony tv", "power", "--out", "p.svg"});
  ASSERT_EQ(std::to_string(r.status) + r.out + r.err, "0");
  const std::string svg = test::ReadFileBytes(dir.path() / "p.svg");
  EXPECT_EQ(svg.rfind("<?xml", 0), 0u);
  EXPECT_NE(svg.find(">SONY KV-36XBR800 - POWER - SONY12 - 40 kHz</text>"), std::string::npos) << svg.substr(0, 600);
  CliResult missing = Run({"plot", "sony tv", "no such key", "--out", "p.svg"});
  EXPECT_EQ(std::to_string(missing.status) + missing.err, "2burstwright-cli: no key no such key in SONY TV\n");
}

TEST_F(CliTest, DevicesAndProtocolsOfTheBundledLibraryAreItsFilesByName) {
  // In upper-cased file name order; each protocol file names itself on a PROTOCOL line.
  std::map<std::string, std::string> dvc, irp;
  for (const auto& e : fs::directory_iterator(BundledLibrary())) {
    const std::string file = Upper(e.path().filename().string()), ext = Upper(e.path().extension().string());
    if (ext == ".DVC") dvc[file] = Upper(e.path().stem().string());
    if (ext == ".IRP") irp[file] = Upper(DeviceFile(e.path()).header["PROTOCOL"]);
  }
  std::string expected;
  for (const auto* names : {&dvc, &irp})
    for (const auto& [file, name] : *names) expected += name + "\n";
  EXPECT_EQ(Run({"devices"}).out + Run({"protocols"}).out, expected);
}

TEST_F(CliTest, WithoutLibraryTheSearchStartsInTheCurrentFolderAndGoesUp) {
  dir.Write("Device Library/Only One.dvc", "MODEL = 1\r\n[KEYCODES]\r\n");
  fs::create_directories(dir.path() / "deep" / "deeper");
  EXPECT_EQ(Run({"devices"}, "").out, "ONLY ONE\n") << "found before the program's own library";
  EXPECT_EQ(Run({"devices"}, "", false, dir.path() / "deep" / "deeper").out, "ONLY ONE\n");
}

TEST_F(CliTest, MessagesAreDeviceColonTextLinesAndCheckGivesFileAndLineAndRunTimeErrorsExitThree) {
  WriteLibrary("good.irp", "PROTOCOL = GOOD\r\nFREQUENCY = 38000\r\nTIMEBASE = 500\r\nONE = 1,-3\r\nZERO = 1,-1\r\n"
                           "FORM = D:8,F:8\r\n");
  WriteLibrary("bad.irp", "' broken on purpose\r\nPROTOCOL = BAD\r\nMODULATION = QAM\r\nFOO = 1\r\nFORM = D:8\r\n");
  WriteLibrary("Acme X1.dvc", "MANUFACTURER = Acme\r\nMODEL = X1\r\n\r\nPROTOCOL = NOPE\r\n"
                              "[KEYCODES]\r\nPOWER = 1\r\n");
  WriteLibrary("Acme X2.dvc", "MANUFACTURER = Acme\r\nMODEL = X2\r\nPROTOCOL = GOOD\r\nDEVICECODE = */*\r\n"
                              "[KEYCODES]\r\nPOWER = 1\r\n");
  auto at = [&](const std::string& f, int n) { return (Library() / f).string() + ":" + std::to_string(n) + ": "; };
  const std::string bothSwitches =
      "Varying both switch settings will produce 256 device sets, Not Permitted | Loading of device File aborted";
  CliResult unknown = RunTemporary({"bursts", "acme x1"});
  EXPECT_EQ(unknown.status, 1);
  EXPECT_EQ(unknown.err, "ACME X1: Format NOPE is not in Device Library\n");
  const std::string json = CompactJson(unknown.out);
  EXPECT_EQ(json.substr(json.rfind("\"messages\"")), R"("messages":["Format NOPE is not in Device Library"]})");
  CliResult aborted = RunTemporary({"pronto", "ACME X2"});  // a message of two lines
  EXPECT_EQ(aborted.status, 1);
  EXPECT_EQ(aborted.err, "ACME X2: " + bothSwitches + "\n");
  CliResult check = RunTemporary({"check"});
  EXPECT_EQ(check.status, 1);
  EXPECT_EQ(check.out, "");
  EXPECT_EQ(Lines(check.err), (std::vector<std::string>{
                                  at("bad.irp", 3) + "Modulation Paramaeter QAM is Not recognized, PWM assumed",
                                  at("bad.irp", 4) + "Bad Command in Protocol File FOO = 1",
                                  at("Acme X1.dvc", 4) + "Format NOPE is not in Device Library",
                                  at("Acme X2.dvc", 4) + bothSwitches}));
  CliResult bundled = Run({"check"});
  EXPECT_EQ(std::to_string(bundled.status) + bundled.out + bundled.err, "0") << "the bundled library is clean";
  WriteLibrary("Acme X3.dvc", "MANUFACTURER = Acme\r\nMODEL = X3\r\nPROTOCOL = GOOD\r\n[KEYCODES]\r\n"
                              "POWER = 1\r\nHUGE = 0x80000000\r\n");
  WriteLibrary("Acme X4.dvc", "MODEL = X4\r\nPROTOCOL = GONE\r\n[KEYCODES]\r\n");
  CliResult overflow = RunTemporary({"bursts", "ACME X3"});
  EXPECT_EQ(overflow.status, 3);
  EXPECT_EQ(overflow.out + overflow.err, "ACME X3: Run-time error '6': Overflow\n") << "and no half-written JSON";
  check = RunTemporary({"check"});  // names the line and goes on with the files after it
  EXPECT_EQ(check.status, 3);
  const std::vector<std::string> lines = Lines(check.err);
  ASSERT_EQ(lines.size(), 6u) << check.err;
  EXPECT_EQ(lines[4], at("Acme X3.dvc", 6) + "Run-time error '6': Overflow");
  EXPECT_EQ(lines[5], at("Acme X4.dvc", 2) + "Format GONE is not in Device Library");
}

// NEC as its maker publishes it, in 562.5 us units: a 16-unit burst and an 8-unit space (both exact),
// 32 bits of a burst and a 1-unit (0) or 3-unit (1) space - device, ~device, function, ~function,
// least significant bit first - and a closing burst; 108 ms frames; the repeat: 16, -4, 1.
TEST_F(CliTest, BurstsOfAnNecDeviceFollowThePublishedTiming) {
  ASSERT_EQ(toshiba.header["PROTOCOL"], "NEC");
  const int device = std::stoi(toshiba.header["DEVICECODE"]);
  CliResult r = Run({"bursts", "toshiba tv"});
  EXPECT_EQ(r.status + r.err.size(), 0u) << r.err;
  const std::string json = CompactJson(r.out);
  std::string skeleton = R"({"device":"TOSHIBA TV","manufacturer":")" + manufacturer + R"(","model":")" + model +
                         R"(","type":")" + Upper(toshiba.header["DEVICE"]) +
                         R"(","protocol":"NEC","frequency":38000,"keys":[)";
  for (std::size_t k = 0; k < toshiba.keys.size(); ++k) skeleton += k ? ",K" : "K";
  EXPECT_EQ(std::regex_replace(json, kJsonKey, "K"), skeleton + R"(],"messages":[]})");
  const std::vector<JsonKey> keys = JsonKeys(json);
  ASSERT_EQ(keys.size(), toshiba.keys.size());
  for (std::size_t k = 0; k < keys.size(); ++k) {
    const auto& [label, code] = toshiba.keys[k];
    EXPECT_EQ(keys[k].label + " " + std::to_string(keys[k].device) + " " + std::to_string(keys[k].function),
              label + " " + std::to_string(device) + " " + code);
    std::vector<long long> once = {16, -8}, repeat = {16, -4, 1};
    for (int byte : {device, ~device, std::stoi(code), ~std::stoi(code)})
      for (int bit = 0; bit < 8; ++bit) once.insert(once.end(), {1, (byte >> bit & 1) ? -3 : -1});
    once.push_back(1);
    for (const auto& [sent, units] : {std::pair(keys[k].once, once), std::pair(keys[k].repeat, repeat)}) {
      ASSERT_EQ(sent.size(), units.size() + 1) << label << ": then the space to the end of the frame";
      long long frame = 0;
      for (long long d : sent) frame += std::llabs(d);
      for (std::size_t i = 0; i < units.size(); ++i)
        EXPECT_NEAR(sent[i], units[i] * 562.5, i < 2 ? 0 : 3) << label << " #" << i;
      EXPECT_LT(sent.back(), 0);
      EXPECT_EQ(frame, 108000) << label;
    }
  }
}

TEST_F(CliTest, RawKeysCarryTheirDurationsOnlyForSlinkeTransmitOnly) {
  WriteLibrary("raw.dvc", "MANUFACTURER = Acme\r\nMODEL = Strip\r\nFORMAT = RAW\r\n[KEYCODES]\r\n"
                          "ON = 9000 -4500 560 -560\r\nBACK\\SLASH = 100 -2000\r\n\"TAB\tKEY\" = 5 -5\r\n");
  CliResult tx = RunTemporary({"bursts", "RAW", "--output", "slinke-tx"});
  EXPECT_EQ(tx.status + tx.err.size(), 0u) << tx.err;
  const std::string json = CompactJson(tx.out);
  EXPECT_EQ(json.rfind(R"({"device":"RAW","manufacturer":"ACME","model":"STRIP","type":"","protocol":"RAW",)", 0), 0u);
  std::string listed;
  for (const JsonKey& key : JsonKeys(json)) {
    listed += key.label + ":";
    for (long long d : key.once) listed += " " + std::to_string(d);
    listed += key.repeat.empty() ? ";" : " and a repeat;";
  }
  EXPECT_EQ(listed, R"(ON: 9000 -4500 560 -560;BACK\\SLASH: 100 -2000;TAB\tKEY: 5 -5;)") << tx.out;
  const std::string refusal = "Raw format only permitted for Slink Option, not for Pronto or ADI";
  for (const char* output : {"pronto", "adi"}) {
    CliResult refused = RunTemporary({"bursts", "raw", "--output", output});
    EXPECT_EQ(refused.status, 1) << output;
    EXPECT_EQ(refused.err, "RAW: " + refusal + "\n") << output;
    const std::string none = CompactJson(refused.out);
    EXPECT_EQ(none.substr(none.find("\"keys\"")), R"("keys":[],"messages":[")" + refusal + "\"]}") << output;
  }
}

TEST_F(CliTest, ProntoTextOfNecInDecimalAndHexAndOfRc5AsItsFormatWord) {
  // 38 kHz: 1e6 / (38000 x 0.241246) = 109.08, word 109 less 3 = 106; a unit of
  // 109 x 0.241246 us makes 9000 us 342 units, 4500 us 171; once: lead-in,
  // 32 bits, closing burst and pad = 34 pairs; repeat: lead-in, burst = 2 pairs.
  for (const bool hex : {false, true}) {
    CliResult r = hex ? Run({"pronto", "TOSHIBA TV", "--hex"}) : Run({"pronto", "TOSHIBA TV"});
    ASSERT_EQ(r.status + r.err.size(), 0u) << r.err;
    const std::vector<std::string> lines = Lines(r.out);
    ASSERT_EQ(lines.size(), 3 * toshiba.keys.size());
    for (std::size_t k = 0; k < toshiba.keys.size(); ++k) {
      EXPECT_EQ(lines[3 * k] + "|" + lines[3 * k + 1] + "|" + lines[3 * k + 2].substr(0, 10),
                toshiba.keys[k].first +
                    (hex ? "|0000 006A 0022 0002 |0156 00AB " : "|0000 0106 0034 0002 |0342 0171 "));
      EXPECT_EQ(lines[3 * k + 2].size(), 5u * 2 * (34 + 2)) << "72 four-digit words, each with a blank";
    }
  }
  DeviceFile rc5(BundledLibrary() / "Philips TV 17PT1563.dvc");
  ASSERT_EQ(rc5.header["PROTOCOL"], "RC5");
  CliResult r = Run({"pronto", "philips tv 17pt1563"});
  EXPECT_EQ(r.status + r.err.size(), 0u) << r.err;
  const std::vector<std::string> lines = Lines(r.out);
  ASSERT_EQ(lines.size(), 3 * rc5.keys.size());
  for (std::size_t k = 0; k < rc5.keys.size(); ++k) {
    if (rc5.keys[k].second.find_first_not_of("0123456789") != std::string::npos) continue;  // key options
    char codes[32];
    std::snprintf(codes, sizeof codes, "%02d %02d", std::stoi(rc5.header["DEVICECODE"]), std::stoi(rc5.keys[k].second));
    EXPECT_EQ(lines[3 * k] + "|" + lines[3 * k + 1] + "|" + lines[3 * k + 2], rc5.keys[k].first + "|0x5000|" + codes)
        << "one code entry: the first RC5 format word";
  }
}

TEST_F(CliTest, DatabaseCreateWritesOneRowPerKeyThatMdbToolsReads) {
  fs::copy_file(fs::path(BW_BIN_DIR) / "Empty_RCIR.mdb", dir.path() / "Empty_RCIR.mdb");
  for (int run = 0; run < 2; ++run) {  // the second run keeps the first database as tv.bak
    CliResult r = Run({"database", "TOSHIBA TV", "--db", "tv.mdb", "--create"});
    EXPECT_EQ(r.status + r.out.size() + r.err.size(), 0u) << "no progress when stderr is a pipe: " << r.err;
  }
  const std::vector<std::string> codes = Lines(Export("tv.mdb", "IR Codes", "10"));
  ASSERT_EQ(codes.size(), toshiba.keys.size() + 1);
  EXPECT_EQ(Lines(Export("tv.bak", "IR Codes", "4")).size(), codes.size());
  EXPECT_EQ(Export("tv.mdb", "Manufacturers", "1") + Export("tv.mdb", "Device Types", "1") +
                Export("tv.mdb", "Devices", "5"),
            "name\n" + manufacturer + "\nname\n" + Upper(toshiba.header["DEVICE"]) + "\nModel\n" + model + "\n");
  // 38 kHz and the NEC frame, as the Pronto text test derives them.
  const std::string device = Lines(Export("tv.mdb", "Devices", "1")).at(1);
  std::string rows = "DeviceID\tButtonID\tFunctionID\tLabel\tFullText\tDetails\tCarrier\tOnceCounter\tRepeatCounter\n";
  for (std::size_t k = 0; k < toshiba.keys.size(); ++k) {
    const auto& [label, function] = toshiba.keys[k];
    rows += device + "\t" + function + "\t" + std::to_string(k + 1) + "\t" + label + "\t" + manufacturer + "-" + model +
            " (" + toshiba.header["DEVICECODE"] + "," + function + ")\t0x0000\t106\t34\t2\n";
    EXPECT_EQ(codes[k + 1].substr(0, 8) + std::to_string(std::count(codes[k + 1].begin(), codes[k + 1].end(), ' ')),
              "342 171 72") << codes[k + 1];
  }
  EXPECT_EQ(Export("tv.mdb", "IR Codes", "1-9"), rows);
}

TEST_F(CliTest, SlinkeWritesTheProntoFramesJoinedIntoSlinkeLibraryAndPrintsThePath) {
  CliResult r = Run({"slinke", "TOSHIBA TV"});
  const fs::path path = dir.path() / "Slinke Library" / (manufacturer + "-" + model + ".cde");
  EXPECT_EQ(r.status + r.err.size(), 0u) << r.err;
  EXPECT_EQ(r.out, path.string() + "\n");
  const std::string cde = test::ReadFileBytes(path);
  EXPECT_EQ(cde.rfind("Desc=" + manufacturer + "-" + model + "\r\ntype=irtxonly\r\nsleep=0\r\ncarrier=38000.00\r\n", 0),
            0u);
  const auto tx = JsonKeys(CompactJson(Run({"bursts", "TOSHIBA TV", "--output", "slinke-tx"}).out));
  const auto pronto = JsonKeys(CompactJson(Run({"bursts", "TOSHIBA TV"}).out));
  ASSERT_EQ(tx.size(), toshiba.keys.size());
  ASSERT_EQ(pronto.size(), toshiba.keys.size());
  std::size_t at = 0;
  for (std::size_t k = 0; k < tx.size(); ++k) {
    std::vector<long long> joined = pronto[k].once;
    joined.insert(joined.end(), pronto[k].repeat.begin(), pronto[k].repeat.end());
    EXPECT_EQ(tx[k].once, joined) << tx[k].label;
    EXPECT_TRUE(tx[k].repeat.empty()) << "a Slink-e entry has no repeated part";
    std::string entry = "\r\n";
    for (long long d : joined) entry += std::to_string(d) + " ";
    EXPECT_NE(at = cde.find(entry + ":" + tx[k].label + "\r\n", at), std::string::npos) << tx[k].label;
  }
  // The description names the file, less the characters a file name cannot hold.
  const fs::path named = dir.path() / "Slinke Library" / "DenTV2.cde";
  EXPECT_EQ(Run({"slinke", "TOSHIBA TV", "--description", "Den/TV:2"}).out, named.string() + "\n");
  EXPECT_EQ(test::ReadFileBytes(named).rfind("Desc=Den/TV:2\r\n", 0), 0u);
}

TEST_F(CliTest, AdiWritesEveryKeyLirListsThemAndAnExistingFileIsWrittenOverOnlyOnYes) {
  WriteLibrary("Tiny.dvc", "MANUFACTURER = Acme\r\nMODEL = Tiny 1\r\nPROTOCOL = NEC\r\n"
                           "[KEYCODES]\r\nA = 1\r\nB = 2\r\n");
  for (const char* f : {"NEC.irp", "Toshiba TV.dvc"}) fs::copy_file(BundledLibrary() / f, Library() / f);
  CliResult r = RunTemporary({"adi", "TOSHIBA TV", "--out", "t.lir"});
  EXPECT_EQ(r.status + r.out.size() + r.err.size(), 0u) << r.err;
  EXPECT_EQ(fs::file_size(dir.path() / "t.lir"), 256 * toshiba.keys.size());
  CliResult list = Run({"lir", "t.lir"});
  EXPECT_EQ(list.status + list.err.size(), 0u) << list.err;
  std::vector<std::string> lines = Lines(list.out);
  ASSERT_EQ(lines.size(), toshiba.keys.size());
  for (std::size_t k = 0; k < lines.size(); ++k) {
    std::string key = Upper(toshiba.keys[k].first);
    key.erase(std::remove(key.begin(), key.end(), ' '), key.end());
    // 4608000 / 38000 - 1 = 120.3; 9000 us on: (9000 + 39) / 40 = 225 units,
    // + 2 = 227 = 126 + 101 -> FE E5; 4500 us off: -111 units, - 2 = 109 -> 6D.
    const std::string start = std::to_string(k + 1) + "\t" + manufacturer + "/" + model + "\t" + key + "\t120\tFEE56D";
    EXPECT_EQ(lines[k].rfind(start, 0), 0u) << lines[k];
    EXPECT_EQ(Split(lines[k], '\t').back().size() % 2, 0u) << lines[k];
  }
  const std::string before = test::ReadFileBytes(dir.path() / "t.lir");
  const std::string question = (dir.path() / "t.lir").string() + " Already exists | Do you wish to write Over it?\n";
  CliResult no = RunTemporary({"adi", "tiny", "--out", "t.lir"});
  EXPECT_EQ(no.status, 1);
  EXPECT_EQ(no.err, "TINY: " + question);
  EXPECT_EQ(test::ReadFileBytes(dir.path() / "t.lir"), before);
  CliResult yes = RunTemporary({"--yes", "adi", "tiny", "--out", "t.lir"});  // --yes after --library, --home
  EXPECT_EQ(yes.status, 1) << "the question was a message";
  EXPECT_EQ(yes.err, "TINY: " + question);
  lines = Lines(Run({"lir", "t.lir"}).out);
  ASSERT_EQ(lines.size(), toshiba.keys.size()) << "the records behind the two new ones stay";
  for (std::string& line : lines) line.resize(line.rfind('\t'));
  EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 3),
            (std::vector<std::string>{"1\tACME/TINY1\tA\t120", "2\tACME/TINY1\tB\t120",
                                      "3\t" + manufacturer + "/" + model + "\tVOLUP\t120"}));
}

// Each bad path or file a person may give: the fixed text where there is one, then
// what is wrong with the path, named; the exit status as documented. "D" is the folder.
TEST_F(CliTest, BadPathsAndFilesAreNamedWithWhatIsWrong) {
  fs::copy_file(fs::path(BW_BIN_DIR) / "Empty_RCIR.mdb", dir.path() / "Empty_RCIR.mdb");
  for (const char* folder : {"folder.mdb", "folder.lir", "lib"}) fs::create_directories(dir.path() / folder);
  dir.Write("three.lir", "abc");
  dir.Write("text.mdb", "hello\n");
  dir.Write("text.lir", "hello, I am text\n");
  WriteLibrary("NEC.irp", test::ReadFileBytes(BundledLibrary() / "NEC.irp"));
  WriteLibrary("junk.dvc", "PROTOCOL = NEC\r\n[KEYCODES]\r\n\x01\x02\xE9=\x10\xFF:3\x1B\r\n\r\nA = NEC:1,2\r\nB = FOO:1,2/\xFF:3\r\n");
  // A hand-made file: a whole record, then 44 bytes of one without a name.
  std::string record(256, '\0'), name = "DEV 1:KEY A", pulses;
  record.replace(0, 4, "\x72\x81\x05\x83");  // 114 (40 kHz); on 40 us, off 200 us, on 120 us
  name.resize(32, ' ');
  record.replace(224, 32, name);
  dir.Write("hand.lir", record + "\x78" + std::string(43, '\x82'));
  for (int i = 0; i < 43; ++i) pulses += "82";
  const std::string bad3024 = "TOSHIBA TV: Run-time error '3024': Could not find file ";
  const std::string partial = " bytes into record 1: a record is 256 bytes, the rest of that one reads as 0\n";
  struct Row {  // `out`: stdout, where the row checks it
    std::vector<std::string> args; std::string err; int status;
    fs::path library = BundledLibrary(); std::optional<std::string> out = std::nullopt;
  };
  const std::vector<Row> rows = {
      {{"database", "TOSHIBA TV", "--db", "folder.mdb"},
       bad3024 + "'D/folder.mdb'. (D/folder.mdb is a folder, not a file)\n", 3},
      {{"database", "TOSHIBA TV", "--db", "no/x.mdb", "--create"},
       bad3024 + "'D/no/x.mdb'. (the folder D/no does not exist)\n", 3},
      {{"database", "TOSHIBA TV", "--db", "text.mdb"},
       "TOSHIBA TV: Run-time error '3343': Unrecognized database format 'D/text.mdb'. (D/text.mdb is not an Access "
       "database (it does not begin with an Access file header))\n", 3},
      {{"adi", "TOSHIBA TV", "--out", "no/x.lir"},
       "TOSHIBA TV: Run-time error '76': Path not found (the folder D/no does not exist)\n", 3},
      {{"export", "TOSHIBA TV", "--format", "csv", "--out", "folder.lir"},
       "TOSHIBA TV: Can not write D/folder.lir: D/folder.lir is a folder, not a file\n", 3},
      {{"lir", "folder.lir"}, "folder.lir: folder.lir is a folder, not a file\n", 3},
      {{"lir", "nothere.lir"}, "nothere.lir: File not found\n", 3},
      {{"lir", "three.lir"}, "three.lir: three.lir ends 3" + partial, 1},
      {{"lir", "text.lir"}, "text.lir: text.lir ends 17" + partial, 1},
      {{"lir", "hand.lir"},
       "hand.lir: hand.lir ends 44 bytes into record 2: a record is 256 bytes, the rest of that one reads as 0\n", 1,
       BundledLibrary(), "1\tDEV 1\tKEY A\t114\t810583\n2\t??????????\t??????????\t120\t" + pulses + "\n"},
      {{"devices"}, "Can not locate Device Library (D/three.lir is a file, not a folder)\n", 3,
       dir.path() / "three.lir"},
      {{"devices"}, "Can not locate Device Library (D/nowhere does not exist)\n", 3, dir.path() / "nowhere"},
      {{"check"},
       "D/lib/junk.dvc:3: Protocol \\x10\xC3\xBF Not in Device Library\n"  // control bytes shown, not sent
       "D/lib/junk.dvc:6: Protocol FOO Not in Device Library\nD/lib/junk.dvc:6: Protocol \xC3\xBF Not in Device "
       "Library\n", 1, Library()},
  };
  for (const Row& row : rows) {
    CliResult r = Run(row.args, row.library);
    EXPECT_EQ(r.err, std::regex_replace(row.err, std::regex("D/"), dir.path().string() + "/")) << row.args.back();
    EXPECT_EQ(r.status, row.status) << r.err;
    EXPECT_EQ(r.out, row.out.value_or(r.out)) << row.args.back();
  }
  EXPECT_FALSE(fs::exists(dir.path() / "no")) << "nothing made on the way";
  CliResult home = Shell(Quoted(BW_CLI_PROGRAM) + " --home nowhere devices");
  EXPECT_EQ(home.status, 2);
  EXPECT_EQ(Lines(home.err).at(0), "burstwright-cli: --home " + (dir.path() / "nowhere").string() + " does not exist");
  fs::create_directories(dir.path() / "bare");
  CliResult bare = Shell(Quoted(BW_CLI_PROGRAM) + " --library " + Quoted(BundledLibrary()) +
                         " --home bare database 'TOSHIBA TV' --db bare/x.mdb --create");
  EXPECT_EQ(Lines(bare.err).at(0), "TOSHIBA TV: Could not locate Empty Data base template (" +
                                       (dir.path() / "bare" / "Empty_RCIR.mdb").string() + " does not exist)");
  EXPECT_EQ(bare.status, 3);
  CliResult help = Shell(Quoted(fs::path(BW_BIN_DIR) / "make_template") + " --help");
  EXPECT_EQ(std::to_string(help.status) + help.out, "0usage: make_template OUTPUT.mdb\n");
  EXPECT_FALSE(fs::exists(dir.path() / "--help")) << "an option is not a database name";
}

std::vector<long long> Joined(const std::vector<long long>& part) { return test::Joined<long long>(part); }

/// Checks `decoded` (magnitudes) against the signed `sent` durations, each within `tolerance` us.
void ExpectDurations(const std::vector<double>& decoded, const std::vector<long long>& sent, double tolerance,
                     const std::string& what) {
  ASSERT_EQ(decoded.size(), sent.size()) << what;
  for (std::size_t i = 0; i < sent.size(); ++i) EXPECT_NEAR(decoded[i], std::llabs(sent[i]), tolerance) << what << " #" << i;
}

// Every device of the bundled library but the RAW one, exported in each format and read back by
// hand against what `bursts` builds: Pronto Hex words (a unit of word x 0.241246 us), sendir counts
// of the carrier's own period with the repeat's offset. lircd.conf goes back through import-lirc below.
TEST_F(CliTest, ExportsDecodeBackToTheDurationsBurstsGives) {
  for (const std::string& device : Lines(Run({"devices"}).out)) {
    if (device == "RGB LED CONTROLLER") continue;
    const std::string json = CompactJson(Run({"bursts", device}).out);
    const std::vector<JsonKey> keys = JsonKeys(json);
    const int frequency = std::stoi(json.substr(json.find("\"frequency\":") + 12));
    std::map<std::string, std::vector<std::string>> exported;
    for (const char* format : {"pronto-hex", "gc-sendir", "csv"}) {
      CliResult r = Run({"export", device, "--format", format});
      ASSERT_EQ(r.status + r.err.size(), 0u) << device << " " << format << ": " << r.err;
      exported[format] = Lines(r.out);
    }
    ASSERT_EQ(exported["pronto-hex"].size(), 2 * keys.size()) << device;
    ASSERT_EQ(exported["gc-sendir"].size(), 2 * keys.size()) << device;
    ASSERT_EQ(exported["csv"].size(), keys.size() + 1) << device;
    const double word = std::round(1e6 / (frequency * 0.241246)), unit = word * 0.241246;
    for (std::size_t k = 0; k < keys.size(); ++k) {
      const std::vector<long long> once = Joined(keys[k].once), repeat = Joined(keys[k].repeat);
      std::vector<long long> all = once;
      all.insert(all.end(), repeat.begin(), repeat.end());
      const std::string what = device + " " + keys[k].label;
      // Pronto Hex: 0000, the frequency word, the pair counts, then the burst words.
      std::string hex = exported["pronto-hex"][2 * k + 1];
      ASSERT_EQ(exported["pronto-hex"][2 * k], keys[k].label + "\r");
      ASSERT_EQ(hex.back(), '\r');
      hex.pop_back();
      std::vector<double> words;
      for (const std::string& w : Split(hex, ' ')) {
        ASSERT_TRUE(std::regex_match(w, std::regex("[0-9A-F]{4}"))) << what << ": " << w;
        words.push_back(std::stoi(w, nullptr, 16));
      }
      ASSERT_GE(words.size(), 4u);
      EXPECT_EQ(std::vector<double>(words.begin(), words.begin() + 4),
                (std::vector<double>{0, word, double(once.size() / 2), double(repeat.size() / 2)})) << what;
      std::vector<double> durations;
      for (std::size_t i = 4; i < words.size(); ++i) durations.push_back(words[i] * unit);
      ExpectDurations(durations, all, unit / 2 + 0.01, what + " pronto");
      // CSV: the key's number, label, codes and the same Pronto Hex.
      EXPECT_EQ(exported["csv"][k + 1], std::to_string(k + 1) + "," + keys[k].label + "," +
                                             std::to_string(keys[k].device) + "," + std::to_string(keys[k].function) +
                                             "," + hex + "\r") << what;
      // sendir: one line under the label, counts of 1/f seconds.
      const std::vector<std::string> fields = Split(exported["gc-sendir"][2 * k + 1], ',');
      ASSERT_GE(fields.size(), 6u) << what;
      const std::size_t offset = repeat.empty() ? 1 : once.size() + 1;
      EXPECT_EQ(fields[0] + fields[1] + "|" + fields[2] + "|" + fields[3] + "|" + fields[4] + "|" + fields[5],
                "sendir1:1|" + std::to_string(k + 1) + "|" + std::to_string(frequency) + "|1|" + std::to_string(offset));
      durations.clear();
      for (std::size_t i = 6; i < fields.size(); ++i) durations.push_back(std::stod(fields[i]) * 1e6 / frequency);
      ExpectDurations(durations, all, 0.5e6 / frequency + 0.01, what + " sendir");
    }
  }
}

// export --format lirc, import-lirc, bursts: the same carrier and frame for every key of every
// device the bundled library can export (the gap after each raw code a frame's whole length with
// CONST_LENGTH, else the silence after it), the buttons named after the labels.
TEST_F(CliTest, ExportedLircRemotesImportBackToTheSameFrames) {
  for (const std::string& device : Lines(Run({"devices"}).out)) {
    if (device == "RGB LED CONTROLLER") continue;
    const std::string conf = (dir.path() / "remote.conf").string(), to = (dir.path() / device).string();
    ASSERT_EQ(Run({"export", device, "--format", "lirc", "--out", conf}).status, 0) << device;
    fs::create_directories(to);
    CliResult imported = Run({"import-lirc", conf, "--to", to});
    ASSERT_EQ(imported.status, 0) << imported.out << imported.err;
    const std::smatch named = [&] {
      std::smatch m;
      std::regex_search(imported.out, m, std::regex("-> (.*), [0-9]+ keys"));
      return m;
    }();
    ASSERT_FALSE(named.empty()) << imported.out;
    const std::string json = CompactJson(Run({"bursts", device}).out);
    const std::string importedJson = CompactJson(Run({"bursts", named[1]}, to).out);
    auto frequency = [](const std::string& j) { return std::stoi(j.substr(j.find("\"frequency\":") + 12)); };
    EXPECT_EQ(frequency(importedJson), frequency(json)) << device;
    const std::vector<JsonKey> before = JsonKeys(json), after = JsonKeys(importedJson);
    ASSERT_EQ(after.size(), before.size()) << device;
    for (std::size_t k = 0; k < before.size(); ++k) {
      std::string label = before[k].label;
      std::replace(label.begin(), label.end(), ' ', '_');
      EXPECT_EQ(after[k].label, label) << device;
      EXPECT_EQ(Joined(after[k].once), Joined(before[k].once)) << device << " " << label;
    }
  }
}

TEST_F(CliTest, ProgressGoesToStderrOnlyWhenThatIsATerminal) {  // on a pipe, the tests above see none
  CliResult r = Run({"adi", "TOSHIBA TV", "--out", "p.lir"}, BundledLibrary(), true);
  const std::string n = std::to_string(toshiba.keys.size());
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.err.find("key 1 of " + n), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("key " + n + " of " + n), std::string::npos) << r.err;
  EXPECT_EQ(r.out, "") << "progress stays off stdout";
}

TEST_F(CliTest, ImportLircWritesALineARemoteReplacesOnlyWithYesAndLeavesALibraryCheckPasses) {
  const fs::path conf = dir.Write("brand/tv.conf",
                                  "begin remote\n name TV\n bits 8\n flags SPACE_ENC|CONST_LENGTH\n header 9000 4500\n"
                                  " one 560 1690\n zero 560 560\n ptrail 560\n pre_data_bits 8\n pre_data 0x20\n"
                                  " gap 108000\n repeat 9000 2250\n begin codes\n  POWER 0x10\n  VOL+ 0x11\n end codes\n"
                                  "end remote\nbegin remote\n name RX\n bits 16\n begin codes\n  A 0x1\n end codes\n"
                                  "end remote\n");
  const std::string imported = conf.string() + ": remote TV -> TV, 2 keys\n";
  const std::string refused = conf.string() + ": remote RX not imported: it has no pulse timings (a receiver's code table)\n";
  WriteLibrary("keep.txt", "");
  CliResult first = Run({"import-lirc", conf.string()}, Library());  // into the library in use
  EXPECT_EQ(std::to_string(first.status) + first.out, "1" + imported + refused) << first.err;
  CliResult again = Run({"import-lirc", conf.string(), "--to", Library().string(), "--remote", "tv"}, "");
  EXPECT_EQ(std::to_string(again.status) + again.out,
            "1" + conf.string() + ": remote TV not imported: device TV exists in " + Library().string() +
                " (--yes replaces it)\n");
  CliResult replaced = Run({"import-lirc", conf.string(), "--to", Library().string(), "--remote", "TV", "--yes"}, "");
  EXPECT_EQ(std::to_string(replaced.status) + replaced.out, "0" + imported);
  CliResult check = RunTemporary({"check"});
  EXPECT_EQ(std::to_string(check.status) + check.out + check.err, "0");
  EXPECT_NE(RunTemporary({"pronto", "TV"}).out.find("VOL+\n"), std::string::npos);
  EXPECT_EQ(Run({"import-lirc", "--to", "x"}, "").status, 2);
}

}  // namespace
}  // namespace bw::clitest
