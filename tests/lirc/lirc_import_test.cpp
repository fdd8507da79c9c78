// Importer cases over small lircd.conf remotes written here, one feature each,
// against durations worked out by hand from the format's definition. Every key
// is generated for both the Pronto and the Slink-e output through the device
// list and Lex_Click.
#include <gtest/gtest.h>

#include "lirc/lirc_support.h"

namespace bw::test::lirc {
namespace {

std::string Remote(const std::string& name, const std::string& body, const std::string& codes) {
  const bool raw = body.find("RAW_CODES") != std::string::npos;
  return "# a remote written for this test\nbegin remote\n  name " + name + "\n" + body + "\n  begin " +
         (raw ? "raw_codes" : "codes") + "\n" + codes + "\n  end " + (raw ? "raw_codes" : "codes") + "\nend remote\n";
}

long FileCount(const std::filesystem::path& folder) {
  return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

Durations Bits33() {
  Durations d = {100, -200};
  for (int i = 0; i < 31; ++i) d.insert(d.end(), {100, -100});
  d.insert(d.end(), {100, -200, 100, -1000});
  return d;
}

struct Case {
  const char* what;
  std::string conf;
  Durations want;       // a press of the key named K
  bool fields;          // written as a protocol with fields, not durations per key
  Durations held = {};  // what follows while K is held, where the case checks it
};

// A press as the Pronto output's once part and as the Slink-e file's whole entry;
// what a held key repeats as the Pronto output's repeated part.
TEST(LircImport, EachFeatureSendsTheHandWorkedPressAndRepeat) {
  const Case cases[] = {
      {"header, pre_data as device code, ptrail, gap, repeat code",
       Remote("A1", "bits 4\nflags SPACE_ENC\nheader 900 450\none 100 300\nzero 100 100\nptrail 100\n"
                    "pre_data_bits 2\npre_data 0x2\ngap 5000\nrepeat 900 225",
              "K 0x9"),
       {900, -450, 100, -300, 100, -100, 100, -300, 100, -100, 100, -100, 100, -300, 100, -5000}, true,
       {900, -225, 100, -5000}},
      {"no encoding flag, CONST_LENGTH pads the frame",
       Remote("B1", "bits 3\nflags CONST_LENGTH\none 200 400\nzero 200 200\nptrail 200\ngap 4000", "K 0x5"),
       {200, -400, 200, -200, 200, -400, 200, -2200}, true, {200, -400, 200, -200, 200, -400, 200, -2200}},
      {"REVERSE sends every field least significant bit first; pre and post pulses, post_data",
       Remote("C1", "bits 4\nflags SPACE_ENC|REVERSE\none 100 300\nzero 100 100\npre_data_bits 2\npre_data 0x1\n"
                    "post 500 500\npost_data_bits 2\npost_data 0x2\nptrail 100\ngap 3000",
              "K 0x1"),
       {100, -300, 100, -100, 100, -300, 100, -100, 100, -100, 100, -100, 500, -500, 100, -100, 100, -300, 100, -3000},
       true},
      {"RC5 with plead; toggle_bit sent set on a first press",
       Remote("D1", "bits 5\nflags RC5|CONST_LENGTH\none 500 500\nzero 500 500\nplead 500\ngap 10000\ntoggle_bit 2",
              "K 0x03"),
       {1000, -1000, 1000, -1000, 500, -500, 500, -4500}, true},
      {"RC6: header, the rc6_mask bit at double length, toggle_bit_mask set",
       Remote("E1", "bits 4\nflags RC6|CONST_LENGTH\nheader 2000 800\none 400 400\nzero 400 400\npre_data_bits 3\n"
                    "pre_data 0x4\ngap 20000\nrc6_mask 0x10\ntoggle_bit_mask 0x10",
              "K 0x6"),
       {2000, -1200, 800, -1200, 1200, -800, 400, -400, 800, -11200}, true},
      {"SHIFT_ENC without CONST_LENGTH: the gap takes the place of a last half-bit space",
       Remote("F1", "bits 3\nflags SHIFT_ENC\none 300 300\nzero 300 300\nplead 300\ngap 9000", "K 0x2"),
       {600, -600, 600, -9000}, false},
      {"raw_codes with CONST_LENGTH",
       Remote("G1", "flags RAW_CODES|CONST_LENGTH\nfrequency 36000\ngap 10000", "name K\n  1000 500\n  1000"),
       {1000, -500, 1000, -7500}, false},
      {"SPACE_FIRST",
       Remote("H1", "bits 2\nflags SPACE_FIRST\nheader 800 400\none 300 600\nzero 300 200\ngap 2000", "K 0x2"),
       {800, -1000, 300, -200, 300, -2000}, true},
      {"XMP: a nibble a symbol",
       Remote("J1", "bits 8\nflags XMP\none 0 100\nzero 200 700\nptrail 200\npre_data_bits 4\npre_data 0x1\ngap 6000",
              "K 0x2F"),
       {200, -800, 200, -900, 200, -2200, 200, -6000}, false},
      {"a 33-bit code split into two fields",
       Remote("K1", "bits 33\none 100 200\nzero 100 100\nptrail 100\ngap 1000", "K 0x100000001"), Bits33(), true},
      {"two gap values: a press ends with the first",
       Remote("L1", "bits 1\none 100 200\nzero 100 100\nptrail 50\ngap 3000 9000\nfrequency 40000", "K 0x1"),
       {100, -200, 50, -3000}, true},
      {"NO_HEAD_REP with CONST_LENGTH: the header is not counted into the frame",
       Remote("M1", "bits 2\nflags SPACE_ENC|NO_HEAD_REP|CONST_LENGTH\nheader 1000 500\none 100 300\nzero 100 100\n"
                    "ptrail 100\ngap 2000",
              "K 0x1"),
       {1000, -500, 100, -100, 100, -300, 100, -1300}, true, {100, -100, 100, -300, 100, -1300}},
      {"zero-length halves",
       Remote("N1", "bits 3\nflags CONST_LENGTH\none 0 500\nzero 500 0\ngap 5000", "K 0x2"), {500, -500, 500, -3500},
       false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    ImportedLibrary lib;
    const auto& results = lib.Import(c.conf);
    ASSERT_EQ(results.size(), 1u);
    ASSERT_TRUE(results[0].Imported()) << results[0].Line();
    EXPECT_EQ(results[0].keys, 1);
    std::map<std::string, Durations> held;
    EXPECT_EQ(lib.Keys(results[0].device, false, nullptr, &held)["K"], c.want);
    EXPECT_EQ(lib.Keys(results[0].device, true)["K"], c.want) << "the Slink-e file keeps the press";
    if (!c.held.empty()) {
      EXPECT_EQ(held["K"], c.held);
    }
    const std::string irp = ReadFileBytes(lib.Library() / (results[0].remote + ".irp"));
    EXPECT_EQ(irp.find("ONE =") != std::string::npos, c.fields) << irp;
  }
}

TEST(LircImport, FilesAreCrLfNamedForTheRemoteAndTellTheCarrier) {
  ImportedLibrary lib;
  const auto& r = lib.Import(Remote("Living_Room/TV", "bits 1\none 100 200\nzero 100 100\nptrail 50\ngap 3000\n"
                                                      "frequency 40000",
                                    "K 0x1"));
  ASSERT_TRUE(r[0].Imported()) << r[0].Line();
  EXPECT_EQ(r[0].device, "LIVING_ROOMTV");
  const std::string dvc = ReadFileBytes(lib.Library() / "Living_RoomTV.dvc");
  const std::string irp = ReadFileBytes(lib.Library() / "Living_RoomTV.irp");
  for (const std::string* text : {&dvc, &irp}) {
    EXPECT_EQ(text->find('\n'), text->find("\r\n") + 1);
    EXPECT_EQ(std::count(text->begin(), text->end(), '\n'), std::count(text->begin(), text->end(), '\r'));
  }
  EXPECT_NE(irp.find("FREQUENCY = 40000\r\n"), std::string::npos);
  EXPECT_NE(dvc.find("MANUFACTURER = acme\r\n"), std::string::npos);
  EXPECT_EQ(r[0].Line(), (lib.dir.path() / "acme/test.conf").string() + ": remote Living_Room/TV -> LIVING_ROOMTV, 1 key");
}

TEST(LircImport, KeyLabelsKeepWhatAKeyLineCanCarry) {
  ImportedLibrary lib;
  const auto& r = lib.Import(Remote("Labels", "bits 2\none 100 200\nzero 100 100\nptrail 50\ngap 3000",
                                    "VOL=+ 0x1\nIT'S 0x2\n;SEMI 0x3\n\"Q\" 0x0"));
  ASSERT_TRUE(r[0].Imported()) << r[0].Line();
  std::map<std::string, Durations> keys = lib.Keys("LABELS", false);
  EXPECT_EQ(keys.size(), 4u);
  EXPECT_EQ(keys["VOL=+"], (Durations{100, -100, 100, -200, 50, -3000}));
  EXPECT_EQ(keys["ITS"], (Durations{100, -200, 100, -100, 50, -3000}));
  EXPECT_EQ(keys[";SEMI"], (Durations{100, -200, 100, -200, 50, -3000}));
  EXPECT_EQ(keys["Q"], (Durations{100, -100, 100, -100, 50, -3000}));
}

TEST(LircImport, RefusesWhatCannotBeSentAndGoesOnWithTheFile) {
  const std::string good = Remote("Good", "bits 1\none 100 200\nzero 100 100\nptrail 50\ngap 3000", "K 0x1");
  struct Refusal {
    std::string conf;
    std::string reason;
  };
  const Refusal refusals[] = {
      {Remote("R1", "bits 12\nflags GOLDSTAR\none 100 200\nzero 100 100", "K 0x1"), "its GOLDSTAR encoding cannot be sent"},
      {Remote("R2", "bits 12\nflags RCMM\none 100 200\nzero 100 100", "K 0x1"), "its RCMM encoding cannot be sent"},
      {Remote("R3", "bits 16\neps 30\none 0 0\nzero 0 0\ngap 100", "K 0x1"),
       "it has no pulse timings (a receiver's code table)"},
      {Remote("R4", "bits 16\none 100 200\nzero 100 100", ""), "it has no keys"},
      {Remote("R5", "bits 40\npre_data_bits 30\none 100 200\nzero 100 100", "K 0x1"),
       "its frames have 70 data bits (at most 64 can be sent)"},
  };
  for (const Refusal& r : refusals) {
    SCOPED_TRACE(r.reason);
    ImportedLibrary lib;
    const auto& results = lib.Import(r.conf + good);
    ASSERT_EQ(results.size(), 2u);
    EXPECT_EQ(results[0].reason, r.reason);
    EXPECT_NE(results[0].Line().find(" not imported: " + r.reason), std::string::npos);
    EXPECT_TRUE(results[1].Imported()) << results[1].Line();
    EXPECT_EQ(FileCount(lib.Library()), 2);
  }
}

TEST(LircImport, NeverReplacesAFileUnlessAskedAndNumbersNamesTakenInTheSameRun) {
  const std::string one = Remote("Same", "bits 1\none 100 200\nzero 100 100\nptrail 50\ngap 3000", "K 0x1");
  const std::string two = Remote("same", "bits 1\none 300 200\nzero 100 100\nptrail 50\ngap 3000", "K 0x1");
  ImportedLibrary lib;
  const auto& first = lib.Import(one + two);
  ASSERT_EQ(first.size(), 2u);
  EXPECT_EQ(first[0].device, "SAME");
  EXPECT_EQ(first[1].device, "SAME 2");
  EXPECT_EQ(lib.Keys("SAME 2", false)["K"], (Durations{300, -200, 50, -3000}));
  EXPECT_NE(ReadFileBytes(lib.Library() / "same 2.dvc").find("\r\nMODEL = same 2\r\n"), std::string::npos);

  const auto& again = lib.Import(two, "other.conf");
  EXPECT_EQ(again[0].reason, "device SAME exists in " + lib.Library().string() + " (--yes replaces it)");
  EXPECT_EQ(lib.Keys("SAME", false)["K"], (Durations{100, -200, 50, -3000}));

  const auto& replaced = lib.Import(two, "other.conf", {"", true});
  EXPECT_TRUE(replaced[0].Imported()) << replaced[0].Line();
  EXPECT_EQ(lib.Keys("SAME", false)["K"], (Durations{300, -200, 50, -3000}));
  EXPECT_EQ(FileCount(lib.Library()), 4);  // the old file names went with the new ones

  const auto& picked = lib.Import(one + two, "both.conf", {"SAME", true});
  ASSERT_EQ(picked.size(), 2u);
  EXPECT_EQ(picked[1].Line(), (lib.dir.path() / "acme/both.conf").string() + ": remote same -> SAME 2, 1 key");
  const auto& none = lib.Import(one, "one.conf", {"Other", true});
  ASSERT_EQ(none.size(), 1u);
  EXPECT_EQ(none[0].reason, "it holds no remote Other");
  const auto missing = bw::lirc::ImportLircFiles({(lib.dir.path() / "nowhere.conf").string()}, lib.Library());
  ASSERT_EQ(missing.size(), 1u);
  EXPECT_EQ(missing[0].Line(), (lib.dir.path() / "nowhere.conf").string() + ": not imported: File not found");
}

}  // namespace
}  // namespace bw::test::lirc
