// The ".lir" format (pulse bytes, carrier byte, name field, limits, files read
// one record too far and written without truncating) and the ADI frame: its
// buttons pressed while a run waits, the record editor, a run over a library.
#include <gtest/gtest.h>

#include <cstring>

#include "adi/adi.h"
#include "adi/lir_test_support.h"
#include "details/details.h"
#include "input/device_file.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

using namespace std::string_literals;
using test::ErrorNumber;
using test::SetBurst;
using Strings = std::vector<std::string>;

LirRecord Named(const std::string& name, uint8_t carrier = 0) {
  LirRecord r;
  r.CarrierByte = carrier;
  r.Name.fill(' ');
  std::memcpy(r.Name.data(), name.data(), std::min(name.size(), r.Name.size()));
  return r;
}

std::string NameOf(const LirRecord& r) { return std::string(r.Name.data(), r.Name.size()); }

/// Pulse bytes up to the first 0.
std::vector<int> Pulses(const LirRecord& r) {
  return {r.PulseBytes.begin(), std::find(r.PulseBytes.begin(), r.PulseBytes.end(), 0)};
}

bool SameRecords(const LirTable& a, const LirTable& b) {
  return a.UpperBound() == b.UpperBound() &&
         std::memcmp(&a.records[1], &b.records[1], sizeof(LirRecord) * a.UpperBound()) == 0;
}

struct Adi : test::LibraryTest {
  void SetUp() override {
    ShowADIOptions(p);
    cmdAdiNew_Click(p);
    p.Protocol.Frequency = 38000;
    p.F.MFG.text = "Acme";
    p.F.Model.text = "TV";
    test::SetKeys(p, {"One", "Two", "Three", "Four"});
  }
  std::vector<int> Encode(const std::vector<int32_t>& durations) {
    SetBurst(p, durations);
    EXPECT_TRUE(EncodeLirRecord(p, 1));
    return Pulses(p.CurrentLirRecord);
  }
  void Press(void (*handler)(Program&)) { t.host.Click([this, handler] { handler(p); }); }
  /// Hands keys 1..last to the writer as the key generator does; key k is a k * 40 µs mark.
  void WriteKeys(int last) {
    for (int k = 1; k <= last; ++k) {
      SetBurst(p, {k * 40});
      WriteADIEntry(p, k, 0);
    }
  }
  /// Key parts of the table's names ("ACME/TV:" cut off).
  Strings Added() const {
    Strings keys;
    for (int i = 1; i <= p.Lir.UpperBound(); ++i) {
      std::string name = NameOf(p.Lir.records[i]);
      keys.push_back(name.substr(8, name.find(' ') - 8));
    }
    return keys;
  }
  std::string File(std::initializer_list<std::string> names) {
    std::string bytes;
    for (const auto& n : names) bytes += std::string(224, '\0') + n + std::string(32 - n.size(), ' ');
    return dir.Write("tv.lir", bytes).string();
  }
};

TEST_F(Adi, DurationsBecomePulseBytesByTheUnitRulesWithinTheRecordsLimits) {
  const std::vector<std::pair<int32_t, std::vector<int>>> cases = {
      {0, {130}},            // 39/40 -> 0 units: a mark of 0 + 2
      {-40, {130}},          // -1/40 -> 0: a short gap is written as the smallest mark
      {-78, {130}},          // -39/40 -> 0
      {-79, {1}},            // -40/40 = -1: too short for the correction
      {-120, {2}},           // -2: not above 2, kept
      {-160, {1}},           // -121/40 = -3: 3 - 2
      {-5160, {126}},        // -128 -> 126, still one byte
      {-5200, {126, 1}},     // -129 -> 127 -> 126 + 1
      {-10000, {126, 121}},  // -249.025 -> -249 -> 247
      {9000, {254, 229}},    // 225.975 -> 225 (truncated) -> 227 -> 126 + 101
      {5040, {254, 130}},    // 126 -> 128 -> 126 + 2
  };
  for (const auto& [d, bytes] : cases) EXPECT_EQ(Encode({d}), bytes) << d << " us";
  // -4500 -> -111 -> 109; 560 -> 14 -> 16 + 128.
  EXPECT_EQ(Encode({9000, -4500, 560, -10000}), std::vector<int>({254, 229, 109, 144, 126, 121}));
  EXPECT_EQ(p.CurrentLirRecord.PulseBytes[6], 0) << "the rest of the 200 bytes is cleared";
  // Too many durations are refused; too many bytes are out of range.
  p.F.AdiNewKey.text.clear();
  SetBurst(p, std::vector<int32_t>(201, 560));
  EXPECT_FALSE(EncodeLirRecord(p, 1));
  EXPECT_EQ(t.host.messages, Strings{"This IR Command is too complex for the ADI format"});
  EXPECT_EQ(p.F.AdiNewKey.text, "") << "no record is made";
  EXPECT_EQ(Encode(std::vector<int32_t>(200, 560)).size(), 200u);
  // 100 gaps of two bytes each fill the record; a 101st passes the count check only.
  EXPECT_EQ(Encode(std::vector<int32_t>(100, -10000)).size(), 200u);
  SetBurst(p, std::vector<int32_t>(101, -10000));
  EXPECT_EQ(ErrorNumber([&] { EncodeLirRecord(p, 1); }), 9);
}

TEST_F(Adi, CarrierByteIsClockOverFrequencyMinusOneHalfEvenLowByte) {
  // 121.26 - 1, 115.2 - 1, 186.5 -> even 186, 561.5 -> even 562 -> low byte 50.
  for (auto [frequency, expected] : {std::pair{38000, 120}, {40000, 114}, {24576, 186}, {8192, 50}}) {
    p.Protocol.Frequency = frequency;
    Encode({560});
    EXPECT_EQ(p.CurrentLirRecord.CarrierByte, expected) << frequency << " Hz";
  }
  p.Protocol.Frequency = 0;
  EXPECT_EQ(ErrorNumber([&] { EncodeLirRecord(p, 1); }), 11);
}

TEST_F(Adi, NameIsUpperCasedWithoutBlanksCutAt32AsWindows1252) {
  p.CurrentLirRecord.Reserved.fill(0x55);
  const std::vector<std::array<std::string, 4>> cases = {
      {"Acme Corp", "tv 100", "Power On", "ACMECORP/TV100:POWERON          "},
      // 20 + 1 + 10 + 1 characters: the key label is cut off entirely.
      {"Universal Electronics", "Model 12345", "Power On", "UNIVERSALELECTRONICS/MODEL12345:"},
      // Ö and Ü are one byte each: 15 characters and 17 blanks.
      {"Löwe", "TV100", "Menü", "L\xD6WE/TV100:MEN\xDC" + std::string(17, ' ')}};
  for (const auto& [mfg, model, key, name] : cases) {
    p.F.MFG.text = mfg;
    p.F.Model.text = model;
    test::SetKeys(p, {key});
    Encode({560});
    EXPECT_EQ(NameOf(p.CurrentLirRecord), name);
    EXPECT_EQ(p.F.AdiNewKey.text, key);
  }
  EXPECT_EQ(p.CurrentLirRecord.Reserved, (std::array<uint8_t, 23>{}));
}

TEST_F(Adi, FilesHoldRecordsInFieldOrderReadBackTheSameAndAreNeverTruncated) {
  p.Lir.records.push_back(Named("ACME/TV:POWER", 120));
  p.Lir.records[1].PulseBytes[0] = 254;
  p.Lir.records.push_back(Named("ACME/TV:MUTE", 114));
  p.Lir.records[2].Reserved[22] = 9;  // read as it is, whatever a file holds there
  auto file = dir.Write("old.lir", std::string(768, '\xEE'));
  WriteLirFile(p, file);
  std::string bytes = test::ReadFileBytes(file);
  EXPECT_EQ(bytes.substr(0, 3), "\x78\xFE\x00"s);
  EXPECT_EQ(bytes.substr(224, 14), "ACME/TV:POWER ");
  EXPECT_EQ(bytes.substr(256, 1) + bytes.substr(479, 1), "\x72\x09");
  EXPECT_EQ(bytes.substr(512), std::string(256, '\xEE')) << "not truncated";
  WriteLirFile(p, dir.path() / "fresh.lir");
  EXPECT_EQ(test::ReadFileBytes(dir.path() / "fresh.lir").size(), 512u);
  EXPECT_EQ(ErrorNumber([&] { WriteLirFile(p, dir.path() / "missing" / "x.lir"); }), 76);

  test::TestProgram other;
  other.p.Lir.Changed = true;
  ReadLirFile(other.p, dir.path() / "fresh.lir");
  EXPECT_TRUE(SameRecords(p.Lir, other.p.Lir));
  EXPECT_EQ(other.p.Lir.Current, 1);
  EXPECT_FALSE(other.p.Lir.Changed);
  // An empty file is an empty table; a partial record stays.
  ReadLirFile(other.p, dir.Write("empty.lir", ""));
  EXPECT_EQ(other.p.Lir.UpperBound(), 0);
  EXPECT_EQ(ErrorNumber([&] { ShowLirRecord(other.p); }), 9) << "current 1 of an empty table";
  // A whole record, then 100 bytes: carrier 77 and 99 pulse bytes.
  ReadLirFile(other.p, dir.Write("partial.lir", std::string(256, '\0') + "\x4D" + std::string(99, '\x81')));
  ASSERT_EQ(other.p.Lir.UpperBound(), 2);
  const LirRecord& last = other.p.Lir.records[2];
  EXPECT_EQ(last.CarrierByte, 77);
  EXPECT_EQ(Pulses(last), std::vector<int>(99, 0x81));
  EXPECT_EQ(last.Name, (std::array<char, 32>{}));
}

TEST_F(Adi, AllKeysAddsTheWaitingKeyAndEveryLaterOneWithoutWaiting) {
  Press(cmdADInxtKey_Click);
  Press(cmdadiall_Click);
  WriteKeys(4);
  EXPECT_EQ(Added(), Strings({"TWO", "THREE", "FOUR"}));
  EXPECT_EQ(t.host.doEventsCalls, 2) << "keys 3 and 4 must not wait";
  EXPECT_EQ(p.Lir.records[2].PulseBytes[0], 128 + 3 + 2) << "key 3: (120 + 39) / 40 = 3 units";
}

TEST_F(Adi, AddDuringTheWaitAddsExactlyOneRecord) {
  t.host.Click([] {});  // an event that chooses nothing: still waiting
  Press(CmdADIadd_Click);
  Press(CmdADIadd_Click);
  WriteKeys(2);
  EXPECT_EQ(Added(), Strings({"ONE", "TWO"}));
  EXPECT_EQ(p.F.adiFsize.caption + p.F.ADIRecnmb.text, "22");
  EXPECT_TRUE(p.Lir.Changed);
}

TEST_F(Adi, DetailsNextAddsSkipDoesNotAndFinishAddsTheRestUnseen) {
  p.F.Check1.value = 1;
  for (auto click : {Next_Click, Skip_Click, Finish_Click}) Press(click);
  WriteKeys(4);
  EXPECT_EQ(Added(), Strings({"ONE", "THREE", "FOUR"}));
  // Shown for keys 1 to 3, hidden once by Finish, which also clears the box.
  EXPECT_EQ((std::vector<int>{t.host.detailsShown, t.host.detailsHidden, p.F.Check1.value}),
            (std::vector<int>{3, 1, 0}));
  EXPECT_EQ(p.DBG.lblTitle.caption, "ACME/TV:THREE") << "the record's name titles the dialog";
}

TEST_F(Adi, OptionsPanelAndStartChecks) {
  test::TestProgram fresh;
  fresh.p.DBG.Skip.visible = false;  // as the Slink-e panel leaves it
  ShowADIOptions(fresh.p);
  EXPECT_TRUE(fresh.p.DBG.Skip.visible) << "Skip decides what an ADI run adds";
  const MainForm& f = fresh.p.F;
  EXPECT_TRUE(fresh.p.FormatADI && !fresh.p.FormatPronto && f.ADI.visible && !f.Slnk.visible && !f.DBI.visible);
  for (const Button* b : {&f.cmdADIxqt, &f.cmdADInxtKey, &f.cmdadiall, &f.cmdADIsave, &f.CmdADIadd, &f.cmdADIrpl,
                          &f.cmdadiDelete, &f.cmdADINext, &f.cmdADIprior, &f.cmdAdiNew, &f.cmdADIOpen})
    EXPECT_EQ(b->enabled, b == &f.cmdAdiNew || b == &f.cmdADIOpen) << b->caption;
  cmdADIxqt_Click(p);  // no device selected
  p.F.Autogen.value = 1;
  cmdADIxqt_Click(p);  // no format
  EXPECT_EQ(t.host.messages, Strings({"No Device File has been selected,\r\nand not set to Auto Generate",
                                      "Auto Generate Selected and No Format has been selected"}));
}

TEST_F(Adi, OpenBrowseReplaceAndDelete) {
  ShowADIOptions(p);
  // Shown: size, number, the name split at its first colon (or question marks), as UTF-8.
  Strings seen;
  const MainForm& f = p.F;
  auto press = [&](void (*click)(Program&)) {
    click(p);
    seen.push_back(f.adiFsize.caption + " " + f.ADIRecnmb.text + " " + f.ADIFileDevice.text + "|" + f.AdiFileKey.text);
  };
  t.host.openAnswers.push_back(File({"  ACME/TV100 : POWER:ON", "NO SEPARATOR", "L\xD6WE:MEN\xDC"}));
  press(cmdADIOpen_Click);
  EXPECT_EQ(t.host.openRequests.at(0).filter, "LIR Files (*.lir)|*.lir");
  EXPECT_EQ(t.host.openRequests[0].startPath, (std::filesystem::path(std::getenv("HOME")) / "*.lir").string());
  EXPECT_TRUE(f.cmdADIxqt.enabled && f.cmdADIsave.enabled && f.cmdadiDelete.enabled && f.cmdADINext.enabled);
  EXPECT_FALSE(f.cmdAdiNew.enabled || f.cmdADIOpen.enabled || f.cmdadiall.enabled || f.cmdADInxtKey.enabled);
  // Prior on the first and the third Next on the last do nothing.
  for (auto click : {cmdADIprior_Click, cmdADINext_Click, cmdADINext_Click, cmdADINext_Click, cmdADIprior_Click})
    press(click);
  p.CurrentLirRecord = Named("B:NEW", 120);
  press(cmdADIrpl_Click);
  EXPECT_FALSE(p.Lir.Changed) << "RPL leaves the changed flag alone";
  for (int i = 0; i < 3; ++i) press(cmdadiDelete_Click);  // record 2, then the last, then the only one
  const std::string none = "??????????|??????????", first = "ACME/TV100|POWER:ON", last = "LÖWE|MENÜ";
  EXPECT_EQ(seen, Strings({"3 1 " + first, "3 1 " + first, "3 2 " + none, "3 3 " + last, "3 3 " + last, "3 2 " + none,
                           "3 2 B|NEW", "2 2 " + last, "1 1 " + first, "0 0 " + none}));
  EXPECT_EQ(NameOf(p.Lir.records[1]), "  ACME/TV100 : POWER:ON" + std::string(9, ' '));
  EXPECT_TRUE(p.Lir.Changed);
  EXPECT_EQ(t.host.messages, Strings{}) << "whole records open without a word";
  // A file ending inside a record opens with that record too, and says so.
  const std::string partial = dir.Write("partial.lir", std::string(300, '\x01')).string();
  t.host.openAnswers.push_back(partial);
  press(cmdADIOpen_Click);
  EXPECT_EQ(seen.back(), "2 1 " + none);
  EXPECT_EQ(t.host.messages, Strings{partial + " ends 44 bytes into record 2: a record is 256 bytes, the rest of that "
                                               "one reads as 0"});
}

TEST_F(Adi, SaveAsksForANewNameInTheLibraryAndOnlyYesOverwrites) {
  AddLirRecord(p);
  cmdADIsave_Click(p);  // dialog cancelled
  auto library = dir.path() / "ADI Library";
  EXPECT_EQ(t.host.saveRequests.at(0).startPath, (library / "*.lir").string());
  EXPECT_TRUE(std::filesystem::is_directory(library)) << "made when missing";
  EXPECT_EQ(p.F.ADIFileName.text, "NEW");
  std::string file = File({"A:OLD", "A:OLDER"});
  t.host.saveAnswers.push_back(file);
  for (MsgBoxResult answer : {MsgBoxResult::No, MsgBoxResult::Cancel, MsgBoxResult::Yes}) {
    t.host.answers.push_back(answer);
    cmdADIsave_Click(p);
    EXPECT_EQ(t.host.LastMessage(), file + " Already exists\r\nDo you wish to write Over it?");
    EXPECT_EQ(t.host.styles.back(), MsgBoxStyle::YesNoCancel);
    EXPECT_EQ(test::ReadFileBytes(file)[224] == 'A', answer != MsgBoxResult::Yes);
  }
  EXPECT_EQ(test::ReadFileBytes(file).substr(480, 7), "A:OLDER") << "not truncated";
  EXPECT_EQ(t.host.saveRequests.size(), 2u) << "a named table is saved without a dialog";
  AddLirRecord(p);
  t.host.answers.push_back(MsgBoxResult::Yes);
  cmdADIdone_Click(p);  // changed: saved, then quit
  EXPECT_EQ(test::ReadFileBytes(file).substr(480, 7), std::string(7, '\0')) << "the second record written";
  EXPECT_TRUE(t.host.quitCalled);
}

// Time base 560: ONE is 560/-1680, ZERO 560/-560; the lead-in 9000/-4500 is
// kept in microseconds; frames pad to 108 ms.
TEST_F(Adi, RunOverADeviceWritesAFileThatReadsBackRecordForRecord) {
  WriteLibrary("testnec.irp",
               "PROTOCOL = TestNEC\r\nFREQUENCY = 38000\r\nTIMEBASE = 560\r\nONE = 1,-3\r\nZERO = 1,-1\r\n"
               "DEFINE LEAD = [9000 -4500]\r\nDEFINE STOP = [1]\r\nDEFINE GAP = ^108000\r\n"
               "FORM = LEAD,D:8,F:8,STOP,GAP\r\n");
  WriteLibrary("Acme TV.dvc",
               "MANUFACTURER = Acme\r\nDEVICE = TV\r\nMODEL = TV 100\r\nPROTOCOL = TestNEC\r\nDEVICECODE = 4\r\n"
               "[KEYCODES]\r\nPower = 12\r\nVol Up = 16\r\nMute = 13\r\n");
  LoadDeviceFile(p, "Acme TV");
  p.F.Lex.AddItem("ACME TV");
  p.F.Lex.listIndex = 0;
  Press(cmdadiall_Click);
  cmdADIxqt_Click(p);
  ASSERT_EQ(p.Lir.UpperBound(), 3);
  EXPECT_TRUE(p.F.cmdADIxqt.enabled && !p.F.cmdadiall.enabled && !p.F.cmdADInxtKey.enabled) << "after the run";
  EXPECT_EQ(NameOf(p.Lir.records[1]), "ACME/TV100:POWER" + std::string(16, ' '));
  EXPECT_EQ(NameOf(p.Lir.records[3]).substr(0, 15), "ACME/TV100:MUTE");
  // 9000 -> 254 229, -4500 -> 109; each bit 144 then 39 (one) or 11 (zero), LSB
  // first: device 4, function 12; stop 144; the gap 35340 - 108000 = -72660 ->
  // -1815 units -> 1813 = 14 x 126 + 49.
  std::vector<int> expected = {254, 229, 109};
  for (int value : {4, 12})
    for (int bit = 0; bit < 8; ++bit) expected.insert(expected.end(), {144, (value >> bit & 1) ? 39 : 11});
  expected.push_back(144);
  expected.insert(expected.end(), 14, 126);
  expected.push_back(49);
  EXPECT_EQ(Pulses(p.Lir.records[1]), expected);
  t.host.saveAnswers.push_back((dir.path() / "ADI Library" / "acme.lir").string());
  cmdADIsave_Click(p);
  test::TestProgram reader;
  ReadLirFile(reader.p, dir.path() / "ADI Library" / "acme.lir");
  EXPECT_TRUE(SameRecords(p.Lir, reader.p.Lir));
}

}  // namespace
}  // namespace bw
