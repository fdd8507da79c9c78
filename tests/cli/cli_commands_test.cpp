// The command line's own rules: usage errors and help, the device and protocol
// lists against the files in the library, where the library is looked for, the
// one-line message format and the exit statuses, check on good and broken
// libraries, and run-time errors that end a command.
#include <set>

#include "cli/cli_fixture.h"

namespace bw::clitest {
namespace {

const char* const kSynopsis = "usage: burstwright-cli [--library DIR] [--home DIR] [--yes] COMMAND [ARGS]";

// ---- usage ----

TEST_F(CliTest, UsageErrorsExitWithTwoAndAShortUsageOnStderr) {
  const std::vector<std::vector<std::string>> cases = {
      {},
      {"frobnicate"},
      {"--colour", "devices"},
      {"--library"},
      {"bursts"},
      {"bursts", "SONY TV", "--output", "wav"},
      {"bursts", "SONY TV", "--fast"},
      {"pronto", "SONY TV", "TOSHIBA TV"},
      {"database", "SONY TV"},
      {"database", "SONY TV", "--db"},
      {"adi", "SONY TV"},
      {"slinke"},
      {"lir"},
      {"lir", "a.lir", "b.lir"},
  };
  for (const auto& args : cases) {
    std::vector<std::string> all = {"--library", BundledLibrary().string()};
    all.insert(all.end(), args.begin(), args.end());
    std::string shown;
    for (const auto& a : args) shown += a + " ";
    CliResult r = Run(all);
    EXPECT_EQ(r.status, 2) << shown;
    EXPECT_EQ(r.out, "") << shown;
    std::vector<std::string> lines = Lines(r.err);
    ASSERT_FALSE(lines.empty()) << shown;
    EXPECT_EQ(lines[0].rfind("burstwright-cli: ", 0), 0u) << shown << "\n" << r.err;
    EXPECT_NE(r.err.find(kSynopsis), std::string::npos) << shown;
    EXPECT_LE(lines.size(), 5u) << "the short usage, not the whole help: " << shown;
  }
}

TEST_F(CliTest, HelpDescribesEveryCommandOnStdout) {
  CliResult r = Run({"--help"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.err, "");
  EXPECT_EQ(Lines(r.out).at(0), kSynopsis);
  std::set<std::string> described;
  for (const std::string& line : Lines(r.out)) {
    std::vector<std::string> w = Words(line);
    if (line.rfind("  ", 0) == 0 && !w.empty() && w[0][0] != '-') described.insert(w[0]);
  }
  for (const char* command : {"devices", "protocols", "bursts", "pronto", "database", "slinke", "adi", "lir", "check"})
    EXPECT_TRUE(described.count(command)) << command;
  for (const char* option : {"--library DIR", "--home DIR", "--yes"})
    EXPECT_NE(r.out.find(option), std::string::npos) << option;
}

TEST_F(CliTest, AnUnknownDeviceIsAUsageErrorNamingIt) {
  CliResult r = RunBundled({"pronto", "No Such Thing"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.out, "");
  EXPECT_NE(r.err.find("No Such Thing"), std::string::npos) << r.err;
  // Names are matched ignoring case, as the device list shows them or not.
  EXPECT_EQ(RunBundled({"devices"}).status, 0);
  EXPECT_EQ(RunBundled({"bursts", "toshiba tv"}).status, 0);
}

// ---- the lists ----

TEST_F(CliTest, DevicesAndProtocolsOfATemporaryLibrary) {
  WriteLibrary("zeta box.dvc", "MODEL = Z\r\n[KEYCODES]\r\n");
  WriteLibrary("Acme TV.DVC", "MODEL = A\r\n[KEYCODES]\r\n");
  WriteLibrary("notes.txt", "not a device\r\n");
  WriteLibrary("sub.dvc/inner.dvc", "a folder named like a device is not one\r\n");
  WriteLibrary("a.irp", "' first comes a comment\r\nFREQUENCY = 1\r\nPROTOCOL = Alpha Beta\r\n");
  WriteLibrary("b.irp", "FREQUENCY = 38000\r\n");  // names no protocol: not listed
  WriteLibrary("c.irp", "FORMAT = gamma\r\n");
  CliResult devices = RunTemporary({"devices"});
  EXPECT_EQ(devices.status, 0);
  EXPECT_EQ(devices.err, "");
  EXPECT_EQ(devices.out, "ACME TV\nZETA BOX\n");
  CliResult protocols = RunTemporary({"protocols"});
  EXPECT_EQ(protocols.status, 0);
  EXPECT_EQ(protocols.err, "");
  EXPECT_EQ(protocols.out, "ALPHA BETA\nGAMMA\n");
}

TEST_F(CliTest, DevicesAndProtocolsOfTheBundledLibraryAreItsFiles) {
  CliResult devices = RunBundled({"devices"});
  EXPECT_EQ(devices.status, 0);
  EXPECT_EQ(Lines(devices.out), UpperStems(BundledLibrary(), ".dvc"));

  // Every bundled protocol file names itself on a PROTOCOL line.
  std::vector<std::string> named;
  for (const std::string& stem : UpperStems(BundledLibrary(), ".irp")) {
    std::filesystem::path file;
    for (const auto& e : std::filesystem::directory_iterator(BundledLibrary()))
      if (Upper(e.path().filename().string()) == stem + ".IRP") file = e.path();
    std::ifstream in(file);
    std::string line, name;
    while (name.empty() && std::getline(in, line)) {
      std::size_t eq = line.find('=');
      if (line[0] != '\'' && eq != std::string::npos && Upper(WithoutBlanks(line.substr(0, eq))) == "PROTOCOL")
        name = Upper(Trimmed(line.substr(eq + 1)));
    }
    EXPECT_FALSE(name.empty()) << file;
    named.push_back(name);
  }
  CliResult protocols = RunBundled({"protocols"});
  EXPECT_EQ(protocols.status, 0);
  EXPECT_EQ(Lines(protocols.out), named);
}

TEST_F(CliTest, WithoutLibraryTheSearchStartsInTheCurrentFolderAndGoesUp) {
  dir.Write("Device Library/Only One.dvc", "MODEL = 1\r\n[KEYCODES]\r\n");
  std::filesystem::create_directories(dir.path() / "deep" / "deeper");
  for (const auto& folder : {dir.path(), dir.path() / "deep" / "deeper"}) {
    CliResult r = RunCli({"devices"}, folder);
    EXPECT_EQ(r.status, 0) << folder;
    EXPECT_EQ(r.out, "ONLY ONE\n") << folder << ": found before the program's own library";
  }
  CliResult missing = Run({"--library", (dir.path() / "nowhere").string(), "devices"});
  EXPECT_EQ(missing.status, 3);
  EXPECT_EQ(missing.err, "Can not locate Device Library\n");
}

// ---- messages and exit statuses ----

struct BrokenLibrary : CliTest {
  void SetUp() override {
    WriteLibrary("good.irp", "PROTOCOL = GOOD\r\nFREQUENCY = 38000\r\nTIMEBASE = 500\r\nONE = 1,-3\r\n"
                             "ZERO = 1,-1\r\nFORM = D:8,F:8\r\n");
    WriteLibrary("bad.irp", "' broken on purpose\r\nPROTOCOL = BAD\r\nMODULATION = QAM\r\nFOO = 1\r\nFORM = D:8\r\n");
    WriteLibrary("Acme X1.dvc", "MANUFACTURER = Acme\r\nMODEL = X1\r\n\r\nPROTOCOL = NOPE\r\n[KEYCODES]\r\nPOWER = 1\r\n");
    WriteLibrary("Acme X2.dvc", "MANUFACTURER = Acme\r\nMODEL = X2\r\nPROTOCOL = GOOD\r\nDEVICECODE = */*\r\n"
                                "[KEYCODES]\r\nPOWER = 1\r\n");
  }
  std::string At(const std::string& file, int line) const {
    return (Library() / file).string() + ":" + std::to_string(line) + ": ";
  }
};

TEST_F(BrokenLibrary, MessagesArePrintedAsDeviceColonTextWithCrLfAsABar) {
  CliResult unknown = RunTemporary({"bursts", "acme x1"});
  EXPECT_EQ(unknown.status, 1);
  EXPECT_EQ(unknown.err, "ACME X1: Format NOPE is not in Device Library\n");
  Json doc = ParseJsonOrFail(unknown.out);
  ASSERT_EQ(doc["messages"].items.size(), 1u);
  EXPECT_EQ(doc["messages"][0].text, "Format NOPE is not in Device Library");

  CliResult aborted = RunTemporary({"pronto", "ACME X2"});
  EXPECT_EQ(aborted.status, 1);
  EXPECT_EQ(aborted.err,
            "ACME X2: Varying both switch settings will produce 256 device sets, Not Permitted | "
            "Loading of device File aborted\n");
}

TEST_F(BrokenLibrary, CheckPrintsEveryProblemWithItsFileAndLine) {
  CliResult r = RunTemporary({"check"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(Lines(r.err), (std::vector<std::string>{
                              At("bad.irp", 3) + "Modulation Paramaeter QAM is Not recognized, PWM assumed",
                              At("bad.irp", 4) + "Bad Command in Protocol File FOO = 1",
                              At("Acme X1.dvc", 4) + "Format NOPE is not in Device Library",
                              At("Acme X2.dvc", 4) +
                                  "Varying both switch settings will produce 256 device sets, Not Permitted | "
                                  "Loading of device File aborted",
                          }));
}

TEST_F(BrokenLibrary, ARunTimeErrorEndsTheCommandWithThreeAndItsText) {
  WriteLibrary("Acme X3.dvc", "MANUFACTURER = Acme\r\nMODEL = X3\r\nPROTOCOL = GOOD\r\n[KEYCODES]\r\n"
                              "POWER = 1\r\nHUGE = 0x80000000\r\n");
  WriteLibrary("Acme X4.dvc", "MODEL = X4\r\nPROTOCOL = GONE\r\n[KEYCODES]\r\n");
  CliResult r = RunTemporary({"bursts", "ACME X3"});
  EXPECT_EQ(r.status, 3);
  EXPECT_EQ(r.out, "") << "no half-written JSON";
  EXPECT_EQ(r.err, "ACME X3: Run-time error '6': Overflow\n");

  // check names the line and goes on with the files after it.
  CliResult check = RunTemporary({"check"});
  EXPECT_EQ(check.status, 3);
  std::vector<std::string> lines = Lines(check.err);
  ASSERT_EQ(lines.size(), 6u) << check.err;
  EXPECT_EQ(lines[4], At("Acme X3.dvc", 6) + "Run-time error '6': Overflow");
  EXPECT_EQ(lines[5], At("Acme X4.dvc", 2) + "Format GONE is not in Device Library");
}

TEST_F(CliTest, CheckOnTheBundledLibraryIsSilent) {
  CliResult r = RunBundled({"check"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(r.err, "");
}

}  // namespace
}  // namespace bw::clitest
