// Real LIRC remotes against the durations LIRC's own transmitter sends for one
// press of each key (given as data beside the remotes, never computed here):
// every key exact through the Slink-e output, and through a Pronto database
// run whose stored codes are read back and turned into durations again. Then
// the whole lirc-compat-remotes package: every remote imported or refused with
// a reason, and the library it leaves loads without a message.
#include <gtest/gtest.h>

#include <cmath>
#include <regex>
#include <sstream>

#include "jet/database.h"
#include "jet/recordset.h"
#include "lirc/lirc_support.h"
#include "pronto/db_access.h"
#include "pronto/db_run.h"
#include "protocol/protocol.h"
#include "shell/commands.h"
#include "shell/startup.h"

namespace bw::test::lirc {
namespace {

namespace fs = std::filesystem;

const fs::path kShared = fs::path(BW_SOURCE_DIR) / "../shared/testdata/lirc";
const fs::path kDebian = "/usr/share/lirc/remotes";

/// One remote of an expected-durations file.
struct Expected {
  std::string file, remote;
  std::map<std::string, Durations> keys;
};

/// Reads an expected-durations file: a JSON array of {"file", "remote", "keys":
/// {name: [durations]}}. A name followed by ":" and "[" starts a key, "file" and
/// "remote" take the string after them; no key of these files has either name.
std::vector<Expected> ReadExpected(const fs::path& path) {
  const std::string text = ReadFileBytes(path);
  const std::regex token(R"re("((?:[^"\\]|\\.)*)"(\s*:\s*\[?)?|-?\d+)re");
  std::vector<Expected> out;
  std::string* field = nullptr;
  Durations* key = nullptr;
  for (std::sregex_iterator m(text.begin(), text.end(), token), end; m != end; ++m) {
    const std::string name = (*m)[1];
    if (!(*m)[1].matched) {
      if (!key) throw std::runtime_error("a number outside a key at " + std::to_string(m->position()));
      key->push_back(std::stoll(m->str()));
    } else if (field) {
      *field = name, field = nullptr;
    } else if (name == "file") {
      field = &out.emplace_back().file, key = nullptr;
    } else if (name == "remote" && !out.empty()) {
      field = &out.back().remote;
    } else if ((*m)[2].str().ends_with('[') && !out.empty()) {
      key = &out.back().keys[name];
    }
  }
  return out;
}

/// Durations of a stored Pronto code: carrier-cycle counts times the period of
/// the standard frequency word for `frequency` (what any Pronto reader does).
Durations ProntoDurations(const std::string& counts, int pairs, int32_t frequency) {
  const double word = std::nearbyint(1e6 / (frequency * 0.241246));
  const double period = word * 0.241246;
  std::istringstream in(counts);
  Durations out;
  long n;
  for (int i = 0; i < 2 * pairs && in >> n; ++i) out.push_back(std::llround((i % 2 ? -n : n) * period));
  return out;
}

/// Imports every file of `remotes` (relative to `base`) and checks every key of every remote.
void CheckAgainstExpected(const fs::path& base, const std::vector<Expected>& expected) {
  ImportedLibrary lib;
  fs::create_directories(lib.Library());
  std::vector<std::string> paths;
  for (const Expected& e : expected) paths.push_back((base / e.file).string());
  const auto results = bw::lirc::ImportLircFiles(paths, lib.Library());
  const fs::path templateFile = fs::path(BW_BIN_DIR) / "Empty_RCIR.mdb";
  ASSERT_TRUE(fs::exists(templateFile)) << "build the empty_template target";
  int keys = 0, exact = 0, prontoExact = 0;
  for (const Expected& e : expected) {
    SCOPED_TRACE(e.file);
    auto r = std::find_if(results.begin(), results.end(), [&](const bw::lirc::ImportResult& r) {
      return r.file == (base / e.file).string() && r.remote == e.remote;
    });
    ASSERT_NE(r, results.end());
    ASSERT_TRUE(r->Imported()) << r->Line();
    keys += static_cast<int>(e.keys.size());

    const std::map<std::string, Durations> slinke = lib.Keys(r->device, true);
    for (const auto& [name, want] : e.keys) {
      auto got = slinke.find(bw::lirc::KeyLabel(name));
      EXPECT_TRUE(got != slinke.end() && got->second == want) << name;
      exact += got != slinke.end() && got->second == want;
    }

    // The Pronto database run, as the database frame's Process runs it.
    TestProgram t;
    Program& p = t.p;
    p.DeviceLibraryPath = lib.Library().string();
    ListProtocolNames(p);
    ListDeviceFiles(p);
    p.F.Output.Clear();
    p.F.Output.AddItem("Philips Pronto");
    p.F.Output.listIndex = 0;
    Output_Click(p);
    auto found = std::find(p.F.Lex.items.begin(), p.F.Lex.items.end(), r->device);
    p.F.Lex.listIndex = static_cast<int>(found - p.F.Lex.items.begin());
    Lex_Click(p);
    const fs::path db = lib.dir.path() / (r->device + ".mdb");
    fs::copy_file(templateFile, db, fs::copy_options::overwrite_existing);
    p.F.dbname.text = db.string();
    OpenIRDatabase(p, db.string());
    p.F.LoadDB.caption = "Close";
    GenerateIRDatabase(p);
    EXPECT_TRUE(t.host.messages.empty()) << t.host.messages.front();
    std::map<std::string, Durations> stored;
    for (auto rs = p.Database->OpenRecordset("IR Codes"); !rs->Eof(); rs->MoveNext())
      stored[rs->Field("Label").AsText()] = ProntoDurations(
          rs->Field("IRcode").AsText(), std::stoi(rs->Field("OnceCounter").AsText()), p.Protocol.Frequency);
    CloseIRDatabase(p);
    for (const auto& [name, want] : e.keys) {
      const Durations& got = stored[bw::lirc::KeyLabel(name)];
      bool ok = got.size() == want.size();
      const double period = 1e6 / p.Protocol.Frequency;
      for (std::size_t i = 0; ok && i < got.size(); ++i) ok = std::fabs(double(got[i] - want[i])) <= period;
      EXPECT_TRUE(ok) << name << " in the database";
      prontoExact += ok;
    }
  }
  EXPECT_EQ(exact, keys);
  EXPECT_EQ(prontoExact, keys);
  std::cout << expected.size() << " remotes, " << keys << " keys: " << exact << " exact through Slink-e, "
            << prontoExact << " through the Pronto database\n";
}

TEST(LircGroundTruth, EveryKeyOfTheSharedRemotesIsExact) {
  if (!fs::exists(kShared / "expected.json")) GTEST_SKIP() << kShared << " is not here";
  CheckAgainstExpected(kShared / "remotes", ReadExpected(kShared / "expected.json"));
}

TEST(LircGroundTruth, EveryKeyOfTheTimedDebianRemotesIsExact) {
  if (!fs::exists(kShared / "expected-compat.json")) GTEST_SKIP() << kShared << " is not here";
  ASSERT_TRUE(fs::exists(kDebian)) << "install lirc-compat-remotes (scripts/setup)";
  CheckAgainstExpected(kDebian, ReadExpected(kShared / "expected-compat.json"));
}

TEST(LircGroundTruth, TheWholeDebianPackageImportsOrIsRefusedAndLoadsCleanly) {
  ASSERT_TRUE(fs::exists(kDebian)) << "install lirc-compat-remotes (scripts/setup)";
  std::vector<std::string> paths;
  for (const auto& brand : fs::directory_iterator(kDebian))
    if (brand.is_directory())
      for (const auto& f : fs::directory_iterator(brand.path()))
        if (f.path().filename().string().rfind("lircd.conf.", 0) == 0) paths.push_back(f.path().string());
  std::sort(paths.begin(), paths.end());
  ImportedLibrary lib;
  fs::create_directories(lib.Library());
  const auto results = bw::lirc::ImportLircFiles(paths, lib.Library());
  int imported = 0;
  for (const auto& r : results) {
    EXPECT_TRUE(r.Imported() || r.reason.find("no pulse timings") != std::string::npos) << r.Line();
    imported += r.Imported();
  }
  EXPECT_GT(imported, 40);

  // What `check` does: every protocol, then every device, no message.
  TestProgram t;
  Program& p = t.p;
  p.DeviceLibraryPath = lib.Library().string();
  ListProtocolNames(p);
  ListDeviceFiles(p);
  EXPECT_EQ(static_cast<int>(p.F.Lex.items.size()), imported);
  for (const std::string& name : std::vector<std::string>(p.F.format.items)) LoadProtocol(p, name);
  for (std::size_t i = 0; i < p.F.Lex.items.size(); ++i) {
    p.F.Lex.listIndex = static_cast<int>(i);
    Lex_Click(p);
  }
  EXPECT_TRUE(t.host.messages.empty()) << t.host.messages.front();
  std::cout << paths.size() << " files, " << results.size() << " remotes, " << imported << " imported\n";
}

}  // namespace
}  // namespace bw::test::lirc
