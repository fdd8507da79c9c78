// The transmit-only variant end to end: a device from a temporary library, the
// frame's Process button, and the ".cde" bytes.
#include <gtest/gtest.h>

#include "details/details.h"
#include "slinke/slinke.h"
#include "slinke_test_library.h"

namespace bw::test {
namespace {

// Lead-in 9000/-4500, D = 2 in 2 bits (ZERO, ONE), F in 3 bits, then GAP
// replaces the last space by (13500 + bit durations) - 40000: F = 5 and F = 6
// take 5000 us (gap -18500), F = 7 takes 6000 us (gap -17500).
const std::string kPower = "9000 -4500 500 -500 500 -1500 500 -1500 500 -500 500 -18500 ";
const std::string kSix = "9000 -4500 500 -500 500 -1500 500 -500 500 -1500 500 -18500 ";
const std::string kSeven = "9000 -4500 500 -500 500 -1500 500 -1500 500 -1500 500 -17500 ";
const std::string kAcmeFile =
    "Desc=ACME-TV1\r\ntype=irtxonly\r\nsleep=0\r\ncarrier=40000.00\r\n"
    "\r\n" + kPower + ":POWER\r\n"
    "\r\n" + kSix + kSeven + ":MUTE\r\n"  // the second code list is the repeated part
    "\r\n" + kSeven + ":VOL\r\n"
    "\r\n300 -300 300 -300 300 -900 300 -300 :AUX\r\n"  // OTHER: F = 2 in 4 bits, MSB first
    "\r\n:GHOST\r\n"                                     // missing protocol: no durations
    "\r\n";

TEST(SlinkeTxOnly, DeviceGivesDurationLinesAfterTheHeaderAndReplacesTheFile) {
  SlinkeWorld w;
  w.LoadDevice("ACMETV");
  SelectSlinkTxOnly(w.p);
  w.p.Protocol.Frequency = 1;  // the run ends by loading the protocol again
  cmdSlinkXqt_Click(w.p);      // "Slinke Library" does not exist yet
  EXPECT_EQ(ReadFileBytes(w.CdePath("ACME-TV1")), kAcmeFile);
  EXPECT_EQ(w.host.messages, std::vector<std::string>{"Protocol NOPE Not in Device Library"});
  EXPECT_EQ(w.p.F.SlinkEntryCount.text, "5");
  EXPECT_EQ(w.p.F.slinkkeyname.text, "GHOST");
  EXPECT_TRUE(w.p.F.xqtcmd.enabled);
  EXPECT_EQ(w.p.Protocol.Frequency, 40000);
  EXPECT_EQ(w.host.busyOnCount, 1);
  EXPECT_FALSE(w.host.busy);

  w.dir.Write("Slinke Library/ACME-TV1.cde", std::string(5000, 'x'));
  cmdSlinkXqt_Click(w.p);
  EXPECT_EQ(ReadFileBytes(w.CdePath("ACME-TV1")), kAcmeFile);
}

TEST(SlinkeTxOnly, Rc5AndRc6MarkTheDescription) {
  for (const std::string name : {"RC5", "RC6", "RC5X"}) {
    SlinkeWorld w;
    w.Write("Bi.irp", "PROTOCOL = " + name + "\r\nFREQUENCY = 36000\r\nTIMEBASE = 100\r\nONE = 5,-15\r\nZERO = 5,-5\r\n"
                      "FORM = F:2\r\n");
    w.WriteDevice("BI", name, "ONE = 1\r\n");
    w.LoadDevice("BI");
    SelectSlinkTxOnly(w.p);
    cmdSlinkXqt_Click(w.p);
    // F = 1 in 2 bits, LSB first: ONE, ZERO.
    EXPECT_EQ(ReadFileBytes(w.CdePath("M-BI")), "Desc=M-BI" + std::string(name == "RC5X" ? "" : "(RC5)") +
                                                    "\r\ntype=irtxonly\r\nsleep=0\r\ncarrier=36000.00\r\n"
                                                    "\r\n500 -1500 500 -500 :ONE\r\n\r\n")
        << name;
  }
}

TEST(SlinkeTxOnly, FileIsNamedAfterTheDescriptionWithoutForbiddenCharacters) {
  SlinkeWorld w;
  w.LoadDevice("ACMETV");
  SelectSlinkTxOnly(w.p);
  w.p.F.txtdescr.text = " a/b\\c:d*e?f<g>h|i ";
  cmdSlinkXqt_Click(w.p);
  // The name is not trimmed; the Desc line is, and keeps every character.
  EXPECT_EQ(ReadFileBytes(w.CdePath(" abcdefghi ")).substr(0, 25), "Desc=a/b\\c:d*e?f<g>h|i\r\nt");

  w.p.F.txtdescr.text.clear();
  w.p.F.Model.text = "T:2";
  cmdSlinkXqt_Click(w.p);
  EXPECT_EQ(w.p.F.txtdescr.text, "ACME-T:2");
  EXPECT_TRUE(std::filesystem::exists(w.CdePath("ACME-T2")));
}

TEST(SlinkeTxOnly, DetailsAreShownUntilFinishAndSkipDropsNothing) {
  SlinkeWorld w;
  Program& p = w.p;
  w.LoadDevice("ACMETV");
  SelectSlinkTxOnly(p);
  p.F.Check1.value = 1;
  // Each entry lets events through once before its dialog waits for a button.
  w.host.Click([] {});
  w.host.Click([&p] { Skip_Click(p); });
  w.host.Click([] {});
  w.host.Click([&p] { Finish_Click(p); });
  cmdSlinkXqt_Click(p);
  EXPECT_EQ(w.host.detailsShown, 2);
  EXPECT_FALSE(p.DBG.Skip.visible);
  EXPECT_EQ(ReadFileBytes(w.CdePath("ACME-TV1")), kAcmeFile);
}

TEST(SlinkeTxOnly, TooManyDurationsEndTheRunWithoutAFile) {
  SlinkeWorld w;
  w.WriteDevice("LONG", "ACME", "K = 2,5,100\r\n");  // 100 frames of 12 durations
  w.LoadDevice("LONG");
  SelectSlinkTxOnly(w.p);
  EXPECT_EQ(ErrorNumberOf([&] { cmdSlinkXqt_Click(w.p); }), 9);
  EXPECT_TRUE(w.NoCdeFiles());
  EXPECT_FALSE(w.host.busy);
}

}  // namespace
}  // namespace bw::test
