// The commands that write files, checked through real readers: the Pronto
// database read back with mdbtools, the Slink-e file as text, the ADI file with
// the program's own lir command (and a hand-made file for lir alone), the
// refusals and failures around them, and the progress line on a terminal.
#include <fstream>

#include "cli/cli_fixture.h"

namespace bw::clitest {
namespace {

/// mdb-export's CSV (with its header line) as rows of fields; quoted fields may
/// hold commas and doubled quotes.
std::vector<std::map<std::string, std::string>> MdbRows(const std::filesystem::path& file, const std::string& table) {
  int status = 0;
  std::string csv = Shell("mdb-export " + ShellQuote(file.string()) + " " + ShellQuote(table) + " 2>&1", &status);
  EXPECT_EQ(status, 0) << "mdb-export failed (is mdbtools installed?): " << csv;
  std::vector<std::vector<std::string>> records;
  std::vector<std::string> fields;
  std::string field;
  bool quoted = false;
  for (std::size_t i = 0; i < csv.size(); ++i) {
    char c = csv[i];
    if (quoted) {
      if (c == '"' && i + 1 < csv.size() && csv[i + 1] == '"') field += '"', ++i;
      else if (c == '"') quoted = false;
      else field += c;
    } else if (c == '"') {
      quoted = true;
    } else if (c == ',') {
      fields.push_back(field);
      field.clear();
    } else if (c == '\n') {
      fields.push_back(field);
      field.clear();
      records.push_back(fields);
      fields.clear();
    } else {
      field += c;
    }
  }
  std::vector<std::map<std::string, std::string>> rows;
  if (records.empty()) return rows;
  for (std::size_t r = 1; r < records.size(); ++r) {
    std::map<std::string, std::string> row;
    for (std::size_t c = 0; c < records[0].size() && c < records[r].size(); ++c) row[records[0][c]] = records[r][c];
    rows.push_back(row);
  }
  return rows;
}

std::vector<std::string> Split(const std::string& line, char separator) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  while (true) {
    std::size_t at = line.find(separator, start);
    parts.push_back(line.substr(start, at - start));
    if (at == std::string::npos) return parts;
    start = at + 1;
  }
}

struct Toshiba : CliTest {
  DeviceFileText file{BundledLibrary() / "Toshiba TV.dvc"};
  std::string manufacturer = Upper(file.header.at("MANUFACTURER"));
  std::string model = Upper(file.header.at("MODEL"));
  int device = std::stoi(file.header.at("DEVICECODE"));

  void CopyTemplate() {
    std::filesystem::copy_file(std::filesystem::path(BW_BIN_DIR) / "Empty_RCIR.mdb", dir.path() / "Empty_RCIR.mdb");
  }
};

// ---- database ----

TEST_F(Toshiba, DatabaseCreateWritesOneRowPerKeyThatMdbToolsReads) {
  CopyTemplate();
  CliResult r = RunBundled({"database", "TOSHIBA TV", "--db", "tv.mdb", "--create"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(r.err, "") << "no progress line when stderr is not a terminal";

  const auto file_ = dir.path() / "tv.mdb";
  auto manufacturers = MdbRows(file_, "Manufacturers");
  ASSERT_EQ(manufacturers.size(), 1u);
  EXPECT_EQ(manufacturers[0]["name"], manufacturer);
  auto types = MdbRows(file_, "Device Types");
  ASSERT_EQ(types.size(), 1u);
  EXPECT_EQ(types[0]["name"], Upper(file.header.at("DEVICE")));
  auto devices = MdbRows(file_, "Devices");
  ASSERT_EQ(devices.size(), 1u);
  EXPECT_EQ(devices[0]["Model"], model);

  auto codes = MdbRows(file_, "IR Codes");
  ASSERT_EQ(codes.size(), file.keys.size());
  for (std::size_t k = 0; k < codes.size(); ++k) {
    const std::string function = file.keys[k].second;
    SCOPED_TRACE(file.keys[k].first);
    EXPECT_EQ(codes[k]["DeviceID"], devices[0]["DeviceID"]);
    EXPECT_EQ(codes[k]["Label"], file.keys[k].first);
    EXPECT_EQ(codes[k]["ButtonID"], function);
    EXPECT_EQ(codes[k]["FunctionID"], std::to_string(k + 1));
    EXPECT_EQ(codes[k]["FullText"], manufacturer + "-" + model + " (" + std::to_string(device) + "," + function + ")");
    EXPECT_EQ(codes[k]["Details"], "0x0000");
    // 38 kHz and the NEC frame, as the Pronto text test derives them.
    EXPECT_EQ(codes[k]["Carrier"], "106");
    EXPECT_EQ(codes[k]["OnceCounter"], "34");
    EXPECT_EQ(codes[k]["RepeatCounter"], "2");
    EXPECT_EQ(codes[k]["IRcode"].substr(0, 8), "342 171 ");
    EXPECT_EQ(Words(codes[k]["IRcode"]).size(), 72u);
  }

  // Created again: the first database is kept beside it as tv.bak.
  CliResult again = RunBundled({"database", "TOSHIBA TV", "--db", "tv.mdb", "--create"});
  EXPECT_EQ(again.status, 0) << again.err;
  EXPECT_EQ(MdbRows(dir.path() / "tv.bak", "IR Codes").size(), file.keys.size());
  EXPECT_EQ(MdbRows(file_, "IR Codes").size(), file.keys.size()) << "a fresh copy of the template";
}

TEST_F(Toshiba, DatabaseFailuresEndWithThreeAndTheirText) {
  // No template in the program folder.
  CliResult noTemplate = RunBundled({"database", "TOSHIBA TV", "--db", "tv.mdb", "--create"});
  EXPECT_EQ(noTemplate.status, 3);
  std::vector<std::string> lines = Lines(noTemplate.err);
  ASSERT_EQ(lines.size(), 2u) << noTemplate.err;
  EXPECT_EQ(lines[0], "TOSHIBA TV: Could not locate Empty Data base template");
  EXPECT_EQ(lines[1].rfind("TOSHIBA TV: Run-time error '", 0), 0u) << lines[1];
  EXPECT_FALSE(std::filesystem::exists(dir.path() / "tv.mdb"));

  CopyTemplate();
  // A folder that is not there, with and without --create.
  for (const std::vector<std::string>& extra : {std::vector<std::string>{"--create"}, std::vector<std::string>{}}) {
    std::vector<std::string> args = {"database", "TOSHIBA TV", "--db", "no/such/folder/tv.mdb"};
    args.insert(args.end(), extra.begin(), extra.end());
    CliResult r = RunBundled(args);
    EXPECT_EQ(r.status, 3);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err.rfind("TOSHIBA TV: Run-time error '", 0), 0u) << r.err;
    EXPECT_NE(r.err.find("tv.mdb"), std::string::npos) << "the error names the file: " << r.err;
  }
  // A file that is no database.
  dir.Write("junk.mdb", "this is not a database");
  CliResult junk = RunBundled({"database", "TOSHIBA TV", "--db", "junk.mdb"});
  EXPECT_EQ(junk.status, 3);
  EXPECT_EQ(junk.err.rfind("TOSHIBA TV: Run-time error '", 0), 0u) << junk.err;
}

// ---- Slink-e ----

TEST_F(Toshiba, SlinkeWritesIntoSlinkeLibraryAndPrintsThePath) {
  CliResult r = RunBundled({"slinke", "TOSHIBA TV"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.err, "");
  const auto path = dir.path() / "Slinke Library" / (manufacturer + "-" + model + ".cde");
  EXPECT_EQ(r.out, path.string() + "\n");
  std::string text = test::ReadFileBytes(path);
  EXPECT_EQ(text.rfind("Desc=" + manufacturer + "-" + model + "\r\ntype=irtxonly\r\nsleep=0\r\ncarrier=38000.00\r\n", 0),
            0u)
      << text.substr(0, 200);
  std::size_t entries = 0;
  for (const std::string& line : Lines(text))
    if (line.find(':') != std::string::npos) ++entries;
  EXPECT_EQ(entries, file.keys.size());

  // The description names the file, less the characters a file name cannot hold.
  CliResult named = RunBundled({"slinke", "TOSHIBA TV", "--description", "Den/TV:2"});
  EXPECT_EQ(named.status, 0);
  EXPECT_EQ(named.out, (dir.path() / "Slinke Library" / "DenTV2.cde").string() + "\n");
  EXPECT_EQ(test::ReadFileBytes(dir.path() / "Slinke Library" / "DenTV2.cde").rfind("Desc=Den/TV:2\r\n", 0), 0u);
}

TEST_F(CliTest, SlinkeTxRxThatCannotExpressAKeyWritesNoFileAndPrintsNoPath) {
  // A raw lead-in before the bits cannot go into a protocol header.
  CopyBundled("NEC.irp");
  WriteLibrary("Lead.dvc", "MANUFACTURER = Acme\r\nMODEL = Lead\r\nPROTOCOL = NEC\r\n[KEYCODES]\r\nPOWER = 1\r\n");
  CliResult r = RunTemporary({"slinke", "lead", "--txrx"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(r.err, "LEAD: Nirvis CDJ format can not handle embedded raw data\n");
  EXPECT_FALSE(std::filesystem::exists(dir.path() / "Slinke Library" / "ACME-LEAD.cde"));
}

// ---- ADI and lir ----

TEST_F(Toshiba, AdiWritesEveryKeyAndLirListsThemOneALine) {
  CliResult r = RunBundled({"adi", "TOSHIBA TV", "--out", "t.lir"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(r.err, "");
  EXPECT_EQ(std::filesystem::file_size(dir.path() / "t.lir"), 256 * file.keys.size());

  CliResult list = Run({"lir", "t.lir"});
  EXPECT_EQ(list.status, 0);
  EXPECT_EQ(list.err, "");
  std::vector<std::string> lines = Lines(list.out);
  ASSERT_EQ(lines.size(), file.keys.size());
  for (std::size_t k = 0; k < lines.size(); ++k) {
    std::vector<std::string> f = Split(lines[k], '\t');
    ASSERT_EQ(f.size(), 5u) << lines[k];
    EXPECT_EQ(f[0], std::to_string(k + 1));
    EXPECT_EQ(f[1], manufacturer + "/" + model);
    EXPECT_EQ(f[2], Upper(WithoutBlanks(file.keys[k].first)));
    // 4608000 / 38000 - 1 = 120.3; 9000 us on: (9000 + 39) / 40 = 225 units,
    // + 2 = 227 = 126 + 101 -> FE E5; 4500 us off: -111 units, - 2 = 109 -> 6D.
    EXPECT_EQ(f[3], "120");
    EXPECT_EQ(f[4].substr(0, 6), "FEE56D");
    EXPECT_EQ(f[4].size() % 2, 0u);
  }
}

TEST_F(Toshiba, AdiOntoAnExistingFileAsksAndNoLeavesItAlone) {
  ASSERT_EQ(RunBundled({"adi", "TOSHIBA TV", "--out", "t.lir"}).status, 0);
  const std::string before = test::ReadFileBytes(dir.path() / "t.lir");
  CliResult r = RunBundled({"adi", "SONY TV", "--out", "t.lir"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "SONY TV: " + (dir.path() / "t.lir").string() + " Already exists | Do you wish to write Over it?\n");
  EXPECT_EQ(test::ReadFileBytes(dir.path() / "t.lir"), before);
}

TEST_F(CliTest, AdiWithYesWritesOverTheFrontAndLeavesLongerFilesTail) {
  CopyBundled("NEC.irp");
  CopyBundled("Toshiba TV.dvc");
  WriteLibrary("Tiny.dvc", "MANUFACTURER = Acme\r\nMODEL = Tiny 1\r\nPROTOCOL = NEC\r\n[KEYCODES]\r\nA = 1\r\nB = 2\r\n");
  ASSERT_EQ(RunTemporary({"adi", "TOSHIBA TV", "--out", "t.lir"}).status, 0);
  const std::size_t toshibaKeys = DeviceFileText(Library() / "Toshiba TV.dvc").keys.size();
  ASSERT_GT(toshibaKeys, 2u);

  std::vector<std::string> args = {"--yes", "--library", Library().string(), "--home", dir.path().string(),
                                   "adi",   "tiny",      "--out",           "t.lir"};
  CliResult r = Run(args);
  EXPECT_EQ(r.status, 1) << "the question was a message";
  EXPECT_NE(r.err.find("Already exists | Do you wish to write Over it?"), std::string::npos);

  // The two new records go over the first two; the records behind them stay.
  std::vector<std::string> lines = Lines(Run({"lir", "t.lir"}).out);
  ASSERT_EQ(lines.size(), toshibaKeys);
  EXPECT_EQ(lines[0].rfind("1\tACME/TINY1\tA\t120\t", 0), 0u) << lines[0];
  EXPECT_EQ(lines[1].rfind("2\tACME/TINY1\tB\t120\t", 0), 0u) << lines[1];
  EXPECT_EQ(Split(lines[2], '\t').at(1), "TOSHIBA/CT-90325");
}

TEST_F(CliTest, LirReadsAHandMadeFileWithAPartialLastRecord) {
  std::string record(256, '\0');
  record[0] = char(114);                       // 40 kHz
  record[1] = char(0x81), record[2] = char(0x05), record[3] = char(0x83);  // on 40, off 200, on 120
  std::string name = "DEV 1:KEY A";
  name.resize(32, ' ');
  record.replace(224, 32, name);
  std::string partial(44, char(0x82));
  partial[0] = char(120);
  dir.Write("hand.lir", record + partial);
  CliResult r = Run({"lir", "hand.lir"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.err, "");
  std::vector<std::string> lines = Lines(r.out);
  ASSERT_EQ(lines.size(), 2u) << r.out;
  EXPECT_EQ(lines[0], "1\tDEV 1\tKEY A\t114\t810583");
  std::string pulses;
  for (int i = 0; i < 43; ++i) pulses += "82";
  EXPECT_EQ(lines[1], "2\t??????????\t??????????\t120\t" + pulses) << "a name without ':'";

  CliResult missing = Run({"lir", "nothere.lir"});
  EXPECT_EQ(missing.status, 3);
  EXPECT_EQ(missing.out, "");
  EXPECT_EQ(missing.err, "nothere.lir: File not found\n");
}

// ---- progress ----

TEST_F(Toshiba, ProgressAppearsOnlyWhenStderrIsATerminal) {
  CopyTemplate();
  const std::string last = "key " + std::to_string(file.keys.size()) + " of " + std::to_string(file.keys.size());
  const std::vector<std::vector<std::string>> runs = {
      {"slinke", "TOSHIBA TV"},
      {"adi", "TOSHIBA TV", "--out", "p.lir"},
      {"database", "TOSHIBA TV", "--db", "p.mdb", "--create"},
  };
  for (const auto& args : runs) {
    CliResult onTerminal = RunBundled(args, true);
    EXPECT_EQ(onTerminal.status, 0) << args[0] << onTerminal.err;
    EXPECT_NE(onTerminal.err.find("key 1 of " + std::to_string(file.keys.size())), std::string::npos)
        << args[0] << ": " << onTerminal.err;
    EXPECT_NE(onTerminal.err.find(last), std::string::npos) << args[0];
    EXPECT_EQ(onTerminal.out.find("key "), std::string::npos) << "progress stays off stdout";
  }
  std::filesystem::remove(dir.path() / "p.lir");
  for (const auto& args : runs) {
    CliResult onPipe = RunBundled(args);
    EXPECT_EQ(onPipe.err, "") << args[0];
  }
}

}  // namespace
}  // namespace bw::clitest
