// What bursts and pronto print, held against the published timing of the
// protocols and the codes written in the device files: an NEC device decoded
// from its JSON durations, the Slink-e view of the same keys against the .cde
// file the program writes, raw keys, JSON escaping, and Pronto code text in
// decimal and hexadecimal, pulse and bi-phase.
#include <cstdlib>
#include <fstream>
#include <numeric>

#include "cli/cli_fixture.h"

namespace bw::clitest {
namespace {

// The NEC protocol as its maker publishes it: a 9 ms burst and a 4.5 ms space,
// 32 bits of 562.5 us bursts followed by a 562.5 us space (zero) or a
// 1687.5 us space (one), device code, its complement, function code, its
// complement, least significant bit first, one closing burst, a 108 ms frame;
// the repeat frame is a 9 ms burst, a 2.25 ms space and one burst.
constexpr double kNecUnit = 562.5;
constexpr double kNecSlack = 3;  // whole microseconds of a 562.5 us unit
constexpr long long kNecFrame = 108000;

long long Total(const std::vector<long long>& durations) {
  return std::accumulate(durations.begin(), durations.end(), 0LL,
                         [](long long sum, long long d) { return sum + std::llabs(d); });
}

/// The 32 bits after the lead-in, as four bytes least significant bit first.
std::vector<int> NecBytes(const std::vector<long long>& once) {
  std::vector<int> bytes(4, 0);
  for (int bit = 0; bit < 32; ++bit) {
    long long mark = once.at(2 + 2 * bit), space = once.at(3 + 2 * bit);
    EXPECT_NEAR(double(mark), kNecUnit, kNecSlack) << "bit " << bit;
    EXPECT_LT(space, 0);
    bool one = -space > 2 * kNecUnit;
    EXPECT_NEAR(double(-space), one ? 3 * kNecUnit : kNecUnit, kNecSlack) << "bit " << bit;
    if (one) bytes[bit / 8] |= 1 << (bit % 8);
  }
  return bytes;
}

TEST_F(CliTest, BurstsOfAnNecDeviceFollowThePublishedTiming) {
  DeviceFileText file(BundledLibrary() / "Toshiba TV.dvc");
  ASSERT_EQ(Upper(file.header.at("PROTOCOL")), "NEC");
  const int device = std::stoi(file.header.at("DEVICECODE"));

  CliResult r = RunBundled({"bursts", "Toshiba TV"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.err, "");
  Json doc = ParseJsonOrFail(r.out);
  EXPECT_EQ(doc.Keys(), (std::vector<std::string>{"device", "manufacturer", "model", "type", "protocol", "frequency",
                                                  "keys", "messages"}));
  EXPECT_EQ(doc["device"].text, "TOSHIBA TV");
  EXPECT_EQ(doc["manufacturer"].text, Upper(file.header.at("MANUFACTURER")));
  EXPECT_EQ(doc["model"].text, Upper(file.header.at("MODEL")));
  EXPECT_EQ(doc["type"].text, Upper(file.header.at("DEVICE")));
  EXPECT_EQ(doc["protocol"].text, "NEC");
  EXPECT_EQ(doc["frequency"].number, 38000);
  EXPECT_TRUE(doc["messages"].items.empty());

  const Json& keys = doc["keys"];
  ASSERT_EQ(keys.items.size(), file.keys.size());
  for (std::size_t k = 0; k < file.keys.size(); ++k) {
    const Json& key = keys[k];
    const int function = std::stoi(file.keys[k].second);
    SCOPED_TRACE(file.keys[k].first);
    EXPECT_EQ(key.Keys(), (std::vector<std::string>{"label", "device", "function", "once", "repeat"}));
    EXPECT_EQ(key["label"].text, file.keys[k].first);
    EXPECT_EQ(key["device"].number, device);
    EXPECT_EQ(key["function"].number, function);

    std::vector<long long> once = key["once"].Integers();
    ASSERT_EQ(once.size(), 2u + 64u + 2u);
    EXPECT_EQ(once[0], 9000);
    EXPECT_EQ(once[1], -4500);
    EXPECT_EQ(NecBytes(once), (std::vector<int>{device & 0xFF, ~device & 0xFF, function & 0xFF, ~function & 0xFF}));
    EXPECT_NEAR(double(once[66]), kNecUnit, kNecSlack);
    EXPECT_LT(once[67], 0);
    EXPECT_EQ(Total(once), kNecFrame);

    std::vector<long long> repeat = key["repeat"].Integers();
    ASSERT_EQ(repeat.size(), 4u);
    EXPECT_EQ(repeat[0], 9000);
    EXPECT_EQ(repeat[1], -2250);
    EXPECT_NEAR(double(repeat[2]), kNecUnit, kNecSlack);
    EXPECT_EQ(Total(repeat), kNecFrame);
  }
}

/// The entries of a transmit-only .cde file: label -> durations, in file order.
std::vector<std::pair<std::string, std::vector<long long>>> CdeEntries(const std::filesystem::path& file) {
  std::vector<std::pair<std::string, std::vector<long long>>> entries;
  std::ifstream in(file, std::ios::binary);
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::size_t colon = line.find(':');
    if (colon == std::string::npos || line.find('=') != std::string::npos) continue;
    std::vector<long long> durations;
    for (const std::string& w : Words(line.substr(0, colon))) durations.push_back(std::stoll(w));
    entries.emplace_back(line.substr(colon + 1), durations);
  }
  return entries;
}

TEST_F(CliTest, SlinkeBurstsAreWhatTheCdeFileHoldsWithTheRepeatJoinedOn) {
  CliResult slinke = RunBundled({"slinke", "TOSHIBA TV"});
  ASSERT_EQ(slinke.status, 0) << slinke.err;
  auto entries = CdeEntries(Trimmed(slinke.out));

  CliResult tx = RunBundled({"bursts", "TOSHIBA TV", "--output", "slinke-tx"});
  EXPECT_EQ(tx.status, 0);
  Json slinkeDoc = ParseJsonOrFail(tx.out);
  Json prontoDoc = ParseJsonOrFail(RunBundled({"bursts", "TOSHIBA TV"}).out);
  const Json& keys = slinkeDoc["keys"];
  ASSERT_EQ(keys.items.size(), entries.size());
  for (std::size_t k = 0; k < entries.size(); ++k) {
    SCOPED_TRACE(entries[k].first);
    EXPECT_EQ(keys[k]["label"].text, entries[k].first);
    EXPECT_EQ(keys[k]["once"].Integers(), entries[k].second);
    EXPECT_TRUE(keys[k]["repeat"].items.empty()) << "a Slink-e entry has no repeated part";
    // The same frames as the Pronto output: its once part, then its repeat part.
    std::vector<long long> joined = prontoDoc["keys"][k]["once"].Integers();
    std::vector<long long> repeat = prontoDoc["keys"][k]["repeat"].Integers();
    joined.insert(joined.end(), repeat.begin(), repeat.end());
    EXPECT_EQ(keys[k]["once"].Integers(), joined);
  }
}

TEST_F(CliTest, RawKeysCarryTheirDurationsOnlyForSlinkeTransmitOnly) {
  WriteLibrary("raw.dvc", "MANUFACTURER = Acme\r\nMODEL = Strip\r\nFORMAT = RAW\r\n[KEYCODES]\r\n"
                          "ON = 9000 -4500 560 -560\r\nBACK\\SLASH = 100 -2000\r\n\"TAB\tKEY\" = 5 -5\r\n");
  CliResult tx = RunTemporary({"bursts", "RAW", "--output", "slinke-tx"});
  EXPECT_EQ(tx.status, 0);
  EXPECT_EQ(tx.err, "");
  Json doc = ParseJsonOrFail(tx.out);
  EXPECT_EQ(doc["protocol"].text, "RAW");
  EXPECT_EQ(doc["manufacturer"].text, "ACME");
  ASSERT_EQ(doc["keys"].items.size(), 3u);
  EXPECT_EQ(doc["keys"][0]["label"].text, "ON");
  EXPECT_EQ(doc["keys"][0]["once"].Integers(), (std::vector<long long>{9000, -4500, 560, -560}));
  EXPECT_TRUE(doc["keys"][0]["repeat"].items.empty());
  EXPECT_EQ(doc["keys"][1]["label"].text, "BACK\\SLASH");
  EXPECT_EQ(doc["keys"][1]["once"].Integers(), (std::vector<long long>{100, -2000}));
  EXPECT_EQ(doc["keys"][2]["label"].text, "TAB\tKEY");

  for (const char* output : {"pronto", "adi"}) {
    CliResult refused = RunTemporary({"bursts", "raw", "--output", output});
    EXPECT_EQ(refused.status, 1) << output;
    EXPECT_EQ(refused.err, "RAW: Raw format only permitted for Slink Option, not for Pronto or ADI\n") << output;
    Json none = ParseJsonOrFail(refused.out);
    EXPECT_TRUE(none["keys"].items.empty()) << output;
    ASSERT_EQ(none["messages"].items.size(), 1u) << output;
  }
}

// ---- Pronto code text ----

TEST_F(CliTest, ProntoTextOfAnNecDeviceInDecimalAndHex) {
  DeviceFileText file(BundledLibrary() / "Toshiba TV.dvc");
  // 38 kHz: 1e6 / (38000 x 0.241246) = 109.08, word 109, corrected by 3 to 106.
  // One Pronto unit is then 109 x 0.241246 = 26.296 us: 9000 us are 342 units,
  // 4500 us 171. Once: lead-in, 32 bits, closing burst with its pad = 34 pairs;
  // repeat: lead-in, burst with its pad = 2 pairs.
  struct Case {
    std::vector<std::string> flag;
    std::string header, lead;
  };
  for (const Case& c : {Case{{}, "0000 0106 0034 0002 ", "0342 0171"}, Case{{"--hex"}, "0000 006A 0022 0002 ", "0156 00AB"}}) {
    std::vector<std::string> args = {"pronto", "TOSHIBA TV"};
    args.insert(args.end(), c.flag.begin(), c.flag.end());
    CliResult r = RunBundled(args);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, "");
    std::vector<std::string> lines = Lines(r.out);
    ASSERT_EQ(lines.size(), 3 * file.keys.size());
    for (std::size_t k = 0; k < file.keys.size(); ++k) {
      SCOPED_TRACE(file.keys[k].first);
      EXPECT_EQ(lines[3 * k], file.keys[k].first);
      EXPECT_EQ(lines[3 * k + 1], c.header);
      std::vector<std::string> words = Words(lines[3 * k + 2]);
      EXPECT_EQ(words.size(), 2u * (34 + 2));
      for (const std::string& w : words) EXPECT_EQ(w.size(), 4u) << w;
      EXPECT_EQ(lines[3 * k + 2].substr(0, 9), c.lead);
      EXPECT_EQ(lines[3 * k + 2].back(), ' ');
    }
  }
}

TEST_F(CliTest, ProntoOfAnRc5DeviceGivesTheFormatWordAndTheCodeNumbers) {
  DeviceFileText file(BundledLibrary() / "Philips TV 17PT1563.dvc");
  ASSERT_EQ(Upper(file.header.at("PROTOCOL")), "RC5");
  const int system = std::stoi(file.header.at("DEVICECODE"));
  CliResult r = RunBundled({"pronto", "philips tv 17pt1563"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.err, "");
  std::vector<std::string> lines = Lines(r.out);
  ASSERT_EQ(lines.size(), 3 * file.keys.size());
  int checked = 0;
  for (std::size_t k = 0; k < file.keys.size(); ++k) {
    const std::string& codes = file.keys[k].second;
    if (codes.find_first_not_of("0123456789") != std::string::npos) continue;  // options, several codes
    char expected[32];
    std::snprintf(expected, sizeof expected, "%02d %02d", system, std::stoi(codes));
    EXPECT_EQ(lines[3 * k], file.keys[k].first);
    EXPECT_EQ(lines[3 * k + 1], "0x5000") << "one code entry: the first RC5 format word";
    EXPECT_EQ(lines[3 * k + 2], expected);
    ++checked;
  }
  EXPECT_GE(checked, 5);
}

}  // namespace
}  // namespace bw::clitest
