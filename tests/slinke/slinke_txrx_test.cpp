// The transmit/receive variant end to end: protocol header, one bit string per
// key, the resolved stop gap, and the runs that leave no file.
#include <gtest/gtest.h>

#include "slinke/slinke.h"
#include "slinke_test_library.h"

namespace bw::test {
namespace {

// ONE takes 2000 us, ZERO 1000 us; LSB first: D = 2 -> "01", F = 5 -> "101",
// 6 -> "011", 7 -> "111". AUX is encoded with ACME's form under OTHER's symbols
// and MSB order: D = 1 -> "01", F = 2 -> "010"; lead-in and GAP are unknown
// there and add nothing; the line has no label. GHOST gives no line.
// Bit times 8000 + 8000 + 9000 + 7000 + 0 over 5 keys = 6400, so "^40000"
// becomes -(40000 - (6400 + 9000 + 4500)) = -20100.
const std::string kAcmeFile =
    "Desc=ACME-TV1\r\ntype=irtxonly\r\nsleep=0\r\ntype=ir\r\ngroup=\r\ncarrier=40000.00\r\nrepeat=1\r\npause=\r\n"
    "zero=500 -500\r\none=500 -1500\r\nstart=9000 -4500\r\nstop=-20100\r\nprefix=\r\nsuffix=\r\n\r\n"
    "01101:POWER\r\n01011:MUTE\r\n01111:VOL\r\n01010\r\n\r\n";

TEST(SlinkeTxRx, DeviceGivesHeaderAndBitStringsAndTheResolvedStopIsKept) {
  SlinkeWorld w;
  w.LoadDevice("ACMETV");
  SelectSlinkTxRx(w.p);
  EXPECT_EQ(w.p.F.txtStop.text, "^40000");
  cmdSlinkXqt_Click(w.p);
  EXPECT_EQ(ReadFileBytes(w.CdePath("ACME-TV1")), kAcmeFile);
  EXPECT_EQ(w.host.messages, std::vector<std::string>{"Protocol NOPE Not in Device Library"});
  EXPECT_EQ(w.p.F.txtStop.text, "-20100");
  EXPECT_TRUE(w.p.F.xqtcmd.enabled);
  EXPECT_EQ(w.p.Protocol.ProtocolName, "ACME");  // AUX did not leave OTHER behind
  EXPECT_FALSE(w.host.busy);

  std::filesystem::remove(w.CdePath("ACME-TV1"));
  cmdSlinkXqt_Click(w.p);
  EXPECT_EQ(w.p.F.txtStop.text, "-20100");
  EXPECT_EQ(ReadFileBytes(w.CdePath("ACME-TV1")), kAcmeFile);
}

TEST(SlinkeTxRx, RawDataOrFrameLengthBeforeTheLastItemStopsTheRunWithoutAFile) {
  struct Case {
    const char* form;
    const char* message;
  };
  const Case cases[] = {
      {"[90 -45],GAP:0,F:3", "Nirvis CDJ format can not handle embedded timing"},
      {"LEAD,F:3", "Nirvis CDJ format can not handle embedded raw data"},
      {"F:3,GAP:0;F:1", "Nirvis CDJ format can not handle embedded timing"},  // merged: GAP no longer last
  };
  for (const Case& c : cases) {
    SlinkeWorld w;
    w.Write("Mid.irp", std::string("PROTOCOL = MID\r\nTIMEBASE = 100\r\nONE = 5,-15\r\nZERO = 5,-5\r\n"
                                   "DEFINE GAP = ^40000\r\nDEFINE LEAD = [90 -45]\r\nFORM = ") + c.form + "\r\n");
    w.WriteDevice("MID", "MID", "A = 1\r\nB = 2\r\n");
    w.LoadDevice("MID");
    SelectSlinkTxRx(w.p);
    cmdSlinkXqt_Click(w.p);
    EXPECT_EQ(w.host.messages, std::vector<std::string>{c.message}) << c.form;
    EXPECT_TRUE(w.NoCdeFiles()) << c.form;
    EXPECT_FALSE(w.p.F.xqtcmd.enabled) << c.form;
    EXPECT_EQ(w.p.F.SlinkEntryCount.text, "1") << c.form;  // the loop stopped at the first key
  }
}

TEST(SlinkeTxRx, FormsAreMergedIntoTheFirstAndTheMergeStays) {
  struct Case {
    const char* form;
    const char* merged;
    const char* bits;  ///< K = 6, LSB first; 6 in 1 bit is "1" (values are not masked)
  };
  const Case cases[] = {
      {";F:3", "F:3", "011"},   {"F:3;F:3", "F:3", "011"}, {"F:3;F:1", "F:3,F:1", "0111"},
      {"F:3,[10];[20],F:1", "F:3,[10 20],F:1", "0111"},   {"F:3", "F:3", "011"},
  };
  for (const Case& c : cases) {
    SlinkeWorld w;
    w.Write("M.irp", std::string("PROTOCOL = MERGE\r\nTIMEBASE = 100\r\nONE = 5,-15\r\nZERO = 5,-5\r\nFORM = ") +
                         c.form + "\r\n");
    w.WriteDevice("W", "MERGE", "K = 6\r\n");
    w.LoadDevice("W");
    SelectSlinkTxRx(w.p);
    cmdSlinkXqt_Click(w.p);
    EXPECT_EQ(w.p.Protocol.FormOnce, c.merged) << c.form;
    EXPECT_EQ(w.p.Protocol.FormRepeat, "") << c.form;
    const std::string bytes = ReadFileBytes(w.CdePath("M-W"));
    const std::string tail = std::string("suffix=\r\n\r\n") + c.bits + ":K\r\n\r\n";
    EXPECT_TRUE(bytes.ends_with(tail)) << c.form << ": " << bytes;
  }
}

TEST(SlinkeTxRx, HeaderHoldsTheFrameTextsAsTheUserLeftThem) {
  SlinkeWorld w;
  w.WriteDevice("U", "ACME", "A = 0,0\r\n");
  w.LoadDevice("U");
  SelectSlinkTxRx(w.p);
  MainForm& f = w.p.F;
  f.txtcarrier.text = "38.5";
  f.TxtRpt.text = "3";
  f.TxtZero.text = "1 -1";
  f.TxtOne.text = "1 -3";
  f.TxtStart.text = "16 -8";
  f.txtStop.text = "1 ^100";
  cmdSlinkXqt_Click(w.p);
  // Five ZEROs of 2 us: average 10; the gap is -(100 - (10 + 16 + 8)) = -66.
  EXPECT_EQ(ReadFileBytes(w.CdePath("M-U")),
            "Desc=M-U\r\ntype=irtxonly\r\nsleep=0\r\ntype=ir\r\ngroup=\r\ncarrier=38.5\r\nrepeat=3\r\npause=\r\n"
            "zero=1 -1\r\none=1 -3\r\nstart=16 -8\r\nstop=1 -66\r\nprefix=\r\nsuffix=\r\n\r\n00000:A\r\n\r\n");
}

TEST(SlinkeTxRx, DeviceWithoutKeysIsADivisionByZeroAndWritesNothing) {
  SlinkeWorld w;
  w.WriteDevice("NONE", "ACME", "");
  w.LoadDevice("NONE");
  SelectSlinkTxRx(w.p);
  EXPECT_EQ(ErrorNumberOf([&] { cmdSlinkXqt_Click(w.p); }), 11);
  EXPECT_TRUE(w.NoCdeFiles());
  EXPECT_FALSE(w.host.busy);
}

}  // namespace
}  // namespace bw::test
