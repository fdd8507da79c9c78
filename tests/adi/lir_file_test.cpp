// Reading and writing ".lir" files: the 256-byte layout, the read that always
// goes one record too far, partial tails, the writer that never truncates, and
// the editor's view of a record's name.
#include <gtest/gtest.h>

#include "adi/adi.h"
#include "adi/lir_test_support.h"
#include "runtime/run_time_error.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

using test::NamedRecord;

LirRecord Sample(const std::string& name, uint8_t carrier, std::initializer_list<uint8_t> pulses) {
  LirRecord r = NamedRecord(name, carrier);
  std::size_t i = 0;
  for (uint8_t b : pulses) r.PulseBytes[i++] = b;
  return r;
}

bool SameRecord(const LirRecord& a, const LirRecord& b) {
  return a.CarrierByte == b.CarrierByte && a.PulseBytes == b.PulseBytes && a.Reserved == b.Reserved &&
         a.Name == b.Name;
}

struct LirFile : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  test::TempDir dir;
};

TEST_F(LirFile, RecordsAreWrittenInFieldOrderAt256BytesEach) {
  p.Lir.records.push_back(Sample("ACME/TV:POWER", 120, {254, 229, 109}));
  p.Lir.records.push_back(Sample("ACME/TV:MUTE", 114, {144}));
  auto file = dir.path() / "two.lir";
  WriteLirFile(p, file);
  std::string bytes = test::ReadFileBytes(file);
  ASSERT_EQ(bytes.size(), 512u);
  EXPECT_EQ(static_cast<uint8_t>(bytes[0]), 120);
  EXPECT_EQ(static_cast<uint8_t>(bytes[1]), 254);
  EXPECT_EQ(static_cast<uint8_t>(bytes[2]), 229);
  EXPECT_EQ(static_cast<uint8_t>(bytes[3]), 109);
  EXPECT_EQ(bytes[4], '\0');
  EXPECT_EQ(bytes.substr(201, 23), std::string(23, '\0'));
  EXPECT_EQ(bytes.substr(224, 32), "ACME/TV:POWER" + std::string(19, ' '));
  EXPECT_EQ(static_cast<uint8_t>(bytes[256]), 114);
  EXPECT_EQ(static_cast<uint8_t>(bytes[257]), 144);
  EXPECT_EQ(bytes.substr(480, 32), "ACME/TV:MUTE" + std::string(20, ' '));
}

TEST_F(LirFile, ReadBackGivesTheSameRecordsWithCurrentOneAndUnchanged) {
  p.Lir.records.push_back(Sample("ACME/TV:POWER", 120, {254, 229, 109}));
  p.Lir.records.push_back(Sample("ACME/TV:MUTE", 114, {144}));
  p.Lir.records[2].Reserved[22] = 9;  // whatever a file holds there is read as it is
  auto file = dir.path() / "two.lir";
  WriteLirFile(p, file);

  test::TestProgram other;
  other.p.Lir.records.resize(6);
  other.p.Lir.Changed = true;
  other.p.Lir.Current = 4;
  ReadLirFile(other.p, file);
  ASSERT_EQ(other.p.Lir.UpperBound(), 2);
  EXPECT_TRUE(SameRecord(other.p.Lir.records[1], p.Lir.records[1]));
  EXPECT_TRUE(SameRecord(other.p.Lir.records[2], p.Lir.records[2]));
  EXPECT_EQ(other.p.Lir.Current, 1);
  EXPECT_FALSE(other.p.Lir.Changed);
}

TEST_F(LirFile, EmptyFileGivesAnEmptyTable) {
  auto file = dir.Write("empty.lir", "");
  p.Lir.records.resize(3);
  ReadLirFile(p, file);
  EXPECT_EQ(p.Lir.UpperBound(), 0);
  EXPECT_EQ(p.Lir.Current, 1);
}

TEST_F(LirFile, PartialLastRecordStaysFilledWithWhatCouldBeRead) {
  // One whole record, then 100 bytes: carrier 77 and 99 pulse bytes of 0x81.
  std::string bytes(256, '\0');
  bytes[0] = 1;
  std::string tail(100, '\x81');
  tail[0] = 77;
  auto file = dir.Write("partial.lir", bytes + tail);
  ReadLirFile(p, file);
  ASSERT_EQ(p.Lir.UpperBound(), 2);
  const LirRecord& last = p.Lir.records[2];
  EXPECT_EQ(last.CarrierByte, 77);
  EXPECT_EQ(last.PulseBytes[0], 0x81);
  EXPECT_EQ(last.PulseBytes[98], 0x81);
  EXPECT_EQ(last.PulseBytes[99], 0);
  EXPECT_EQ(last.Name, (std::array<char, 32>{})) << "nothing of the name was in the file";

  // A tail of a single byte is a record too.
  file = dir.Write("one_byte.lir", bytes + std::string(1, '\x05'));
  ReadLirFile(p, file);
  ASSERT_EQ(p.Lir.UpperBound(), 2);
  EXPECT_EQ(p.Lir.records[2].CarrierByte, 5);
}

TEST_F(LirFile, WritingOverALongerFileLeavesItsOldRecordsBehind) {
  auto file = dir.Write("old.lir", std::string(3 * 256, '\xEE'));
  p.Lir.records.push_back(Sample("NEW:KEY", 120, {144}));
  WriteLirFile(p, file);
  std::string bytes = test::ReadFileBytes(file);
  ASSERT_EQ(bytes.size(), 768u) << "the file must not be truncated";
  EXPECT_EQ(static_cast<uint8_t>(bytes[0]), 120);
  EXPECT_EQ(bytes.substr(224, 7), "NEW:KEY");
  EXPECT_EQ(bytes.substr(256), std::string(512, '\xEE'));
}

TEST_F(LirFile, WritingCreatesAMissingFileAndFailsInAMissingFolder) {
  p.Lir.records.push_back(Sample("A:B", 1, {}));
  auto file = dir.path() / "fresh.lir";
  WriteLirFile(p, file);
  EXPECT_EQ(test::ReadFileBytes(file).size(), 256u);
  try {
    WriteLirFile(p, dir.path() / "no such folder" / "x.lir");
    FAIL() << "no error";
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 76);
  }
}

TEST_F(LirFile, NameSplitsAtTheFirstColonTrimmedOrShowsQuestionMarks) {
  p.Lir.records.push_back(NamedRecord("  ACME/TV100 : POWER:ON"));
  p.Lir.records.push_back(NamedRecord("NO SEPARATOR HERE"));
  p.Lir.records.push_back(NamedRecord("L\xD6WE:MEN\xDC"));
  p.Lir.Current = 1;
  ShowLirRecord(p);
  EXPECT_EQ(p.F.ADIFileDevice.text, "ACME/TV100");
  EXPECT_EQ(p.F.AdiFileKey.text, "POWER:ON");
  p.Lir.Current = 2;
  ShowLirRecord(p);
  EXPECT_EQ(p.F.ADIFileDevice.text, "??????????");
  EXPECT_EQ(p.F.AdiFileKey.text, "??????????");
  p.Lir.Current = 3;
  ShowLirRecord(p);
  EXPECT_EQ(p.F.ADIFileDevice.text, "LÖWE") << "name bytes are Windows-1252";
  EXPECT_EQ(p.F.AdiFileKey.text, "MENÜ");
}

TEST_F(LirFile, ShowingARecordPastTheEndIsOutOfRange) {
  ReadLirFile(p, dir.Write("empty.lir", ""));
  try {
    ShowLirRecord(p);  // current 1 of an empty table
    FAIL() << "no error";
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 9);
  }
}

}  // namespace
}  // namespace bw
