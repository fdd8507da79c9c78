// The ".lir" format: durations to pulse bytes (40 µs units after adding 39 and
// truncating, the 2-unit correction, 126-unit bytes), the carrier byte, the
// name field, the format's limits, and files read one record too far and
// written without truncating.
#include <gtest/gtest.h>

#include "adi/adi.h"
#include "adi/lir_test_support.h"
#include "runtime/run_time_error.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

using namespace std::string_literals;
using test::ErrorNumber;
using test::SetBurst;

struct Lir : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  test::TempDir dir;
  void SetUp() override {
    p.Protocol.Frequency = 38000;
    p.F.MFG.text = "Acme";
    p.F.Model.text = "TV100";
    test::SetKeys(p, {"Power"});
  }
  std::vector<int> Encode(const std::vector<int32_t>& durations) {
    SetBurst(p, durations);
    EXPECT_TRUE(EncodeLirRecord(p, 1));
    return test::PulseStream(p.CurrentLirRecord);
  }
};

TEST_F(Lir, DurationsBecomePulseBytesByTheUnitRules) {
  const std::vector<std::pair<int32_t, std::vector<int>>> cases = {
      {0, {130}},           // 39/40 -> 0 units: a mark of 0 + 2
      {-40, {130}},         // -1/40 -> 0: a short gap is written as the smallest mark
      {-78, {130}},         // -39/40 -> 0
      {-79, {1}},           // -40/40 = -1: too short for the correction
      {-120, {2}},          // -2: not above 2, kept
      {-160, {1}},          // -121/40 = -3: 3 - 2
      {-5160, {126}},       // -128 -> 126, still one byte
      {-5200, {126, 1}},    // -129 -> 127 -> 126 + 1
      {-10000, {126, 121}}, // -249.025 -> -249 -> 247
      {9000, {254, 229}},   // 225.975 -> 225 (truncated) -> 227 -> 126 + 101
      {5040, {254, 130}},   // 126 -> 128 -> 126 + 2
  };
  for (const auto& [d, bytes] : cases) EXPECT_EQ(Encode({d}), bytes) << d << " us";
  // -4500 -> -111 -> 109; 560 -> 14 -> 16 + 128.
  EXPECT_EQ(Encode({9000, -4500, 560, -10000}), std::vector<int>({254, 229, 109, 144, 126, 121}));
  EXPECT_EQ(p.CurrentLirRecord.PulseBytes[6], 0) << "the rest of the 200 bytes is cleared";
}

TEST_F(Lir, CarrierByteIsClockOverFrequencyMinusOneHalfEvenLowByte) {
  const std::vector<std::pair<int32_t, int>> cases = {
      {38000, 120}, {40000, 114},  // 121.26 - 1, 115.2 - 1
      {24576, 186}, {8192, 50},    // 186.5 -> even 186; 561.5 -> even 562, low byte 562 - 512
  };
  for (const auto& [f, expected] : cases) {
    p.Protocol.Frequency = f;
    Encode({560});
    EXPECT_EQ(p.CurrentLirRecord.CarrierByte, expected) << f << " Hz";
  }
  p.Protocol.Frequency = 0;
  SetBurst(p, {560});
  EXPECT_EQ(ErrorNumber([&] { EncodeLirRecord(p, 1); }), 11);
}

TEST_F(Lir, NameIsUpperCasedWithoutBlanksCutAt32AsWindows1252) {
  p.F.MFG.text = "Acme Corp";
  p.F.Model.text = "tv 100";
  test::SetKeys(p, {"Power On"});
  p.CurrentLirRecord.Reserved.fill(0x55);
  Encode({560});
  EXPECT_EQ(test::NameOf(p.CurrentLirRecord), "ACMECORP/TV100:POWERON          ");
  EXPECT_EQ(p.F.AdiNewKey.text, "Power On");
  EXPECT_EQ(p.CurrentLirRecord.Reserved, (std::array<uint8_t, 23>{}));
  // 20 + 1 + 10 + 1 characters: the key label is cut off entirely.
  p.F.MFG.text = "Universal Electronics";
  p.F.Model.text = "Model 12345";
  Encode({560});
  EXPECT_EQ(test::NameOf(p.CurrentLirRecord), "UNIVERSALELECTRONICS/MODEL12345:");
  // Ö and Ü are one byte each (0xD6, 0xDC): 15 characters and 17 blanks.
  p.F.MFG.text = "Löwe";
  p.F.Model.text = "TV100";
  test::SetKeys(p, {"Menü"});
  Encode({560});
  EXPECT_EQ(test::NameOf(p.CurrentLirRecord), std::string("L\xD6WE/TV100:MEN\xDC") + std::string(17, ' '));
}

TEST_F(Lir, TooManyDurationsAreRefusedAndTooManyBytesAreOutOfRange) {
  SetBurst(p, std::vector<int32_t>(201, 560));
  EXPECT_FALSE(EncodeLirRecord(p, 1));
  EXPECT_EQ(t.host.messages, std::vector<std::string>({"This IR Command is too complex for the ADI format"}));
  EXPECT_EQ(p.F.AdiNewKey.text, "") << "no record is made";
  EXPECT_EQ(Encode(std::vector<int32_t>(200, 560)).size(), 200u);
  // 100 gaps of two bytes each fill the record; a 101st passes the count check only.
  EXPECT_EQ(Encode(std::vector<int32_t>(100, -10000)).size(), 200u);
  SetBurst(p, std::vector<int32_t>(101, -10000));
  EXPECT_EQ(ErrorNumber([&] { EncodeLirRecord(p, 1); }), 9);
}

TEST_F(Lir, FileHoldsRecordsInFieldOrderAndReadsBackTheSame) {
  p.Lir.records.push_back(test::NamedRecord("ACME/TV:POWER", 120));
  p.Lir.records[1].PulseBytes[0] = 254;
  p.Lir.records.push_back(test::NamedRecord("ACME/TV:MUTE", 114));
  p.Lir.records[2].Reserved[22] = 9;  // read as it is, whatever a file holds there
  auto file = dir.path() / "two.lir";
  WriteLirFile(p, file);
  std::string bytes = test::ReadFileBytes(file);
  ASSERT_EQ(bytes.size(), 512u);
  EXPECT_EQ(bytes.substr(0, 3), "\x78\xFE\x00"s);
  EXPECT_EQ(bytes.substr(224, 14), "ACME/TV:POWER ");
  EXPECT_EQ(static_cast<uint8_t>(bytes[256]), 114);
  EXPECT_EQ(bytes[479], 9);

  test::TestProgram other;
  other.p.Lir.Changed = true;
  ReadLirFile(other.p, file);
  ASSERT_EQ(other.p.Lir.UpperBound(), 2);
  for (int i = 1; i <= 2; ++i)
    EXPECT_EQ(std::memcmp(&p.Lir.records[i], &other.p.Lir.records[i], sizeof(LirRecord)), 0) << "record " << i;
  EXPECT_EQ(other.p.Lir.Current, 1);
  EXPECT_FALSE(other.p.Lir.Changed);
}

TEST_F(Lir, EmptyFileIsAnEmptyTableAndAPartialRecordStays) {
  p.Lir.records.resize(3);
  ReadLirFile(p, dir.Write("empty.lir", ""));
  EXPECT_EQ(p.Lir.UpperBound(), 0);
  EXPECT_EQ(ErrorNumber([&] { ShowLirRecord(p); }), 9) << "current 1 of an empty table";

  // A whole record, then 100 bytes: carrier 77 and 99 pulse bytes.
  ReadLirFile(p, dir.Write("partial.lir", std::string(256, '\0') + "\x4D" + std::string(99, '\x81')));
  ASSERT_EQ(p.Lir.UpperBound(), 2);
  const LirRecord& last = p.Lir.records[2];
  EXPECT_EQ(last.CarrierByte, 77);
  EXPECT_EQ(last.PulseBytes[98], 0x81);
  EXPECT_EQ(last.PulseBytes[99], 0);
  EXPECT_EQ(last.Name, (std::array<char, 32>{}));
}

TEST_F(Lir, WriterNeverTruncatesAndCreatesMissingFiles) {
  auto file = dir.Write("old.lir", std::string(768, '\xEE'));
  p.Lir.records.push_back(test::NamedRecord("NEW:KEY", 120));
  WriteLirFile(p, file);
  std::string bytes = test::ReadFileBytes(file);
  ASSERT_EQ(bytes.size(), 768u);
  EXPECT_EQ(bytes.substr(224, 7), "NEW:KEY");
  EXPECT_EQ(bytes.substr(256), std::string(512, '\xEE'));
  WriteLirFile(p, dir.path() / "fresh.lir");
  EXPECT_EQ(test::ReadFileBytes(dir.path() / "fresh.lir").size(), 256u);
  EXPECT_EQ(ErrorNumber([&] { WriteLirFile(p, dir.path() / "missing" / "x.lir"); }), 76);
}

TEST_F(Lir, ShownNameSplitsAtTheFirstColonOrShowsQuestionMarks) {
  for (const char* name : {"  ACME/TV100 : POWER:ON", "NO SEPARATOR", "L\xD6WE:MEN\xDC"})
    p.Lir.records.push_back(test::NamedRecord(name));
  std::vector<std::string> shown;
  for (p.Lir.Current = 1; p.Lir.Current <= 3; ++p.Lir.Current) {
    ShowLirRecord(p);
    shown.insert(shown.end(), {p.F.ADIFileDevice.text, p.F.AdiFileKey.text});
  }
  EXPECT_EQ(shown, std::vector<std::string>({"ACME/TV100", "POWER:ON", "??????????", "??????????", "LÖWE", "MENÜ"}));
}

}  // namespace
}  // namespace bw
