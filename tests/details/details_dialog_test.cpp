// The details dialog model: the values it shows for an entry, the wait that
// only Next, Skip or Finish end, and what the buttons change for each writer.
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "details/details.h"
#include "pronto/pronto_code.h"
#include "runtime/run_time_error.h"
#include "slinke/slinke.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

void SetBurst(Program& p, const std::vector<int32_t>& durations, int onceCount) {
  p.Burst.BurstDurations.Clear();
  for (std::size_t i = 0; i < durations.size(); ++i) p.Burst.BurstDurations(static_cast<int>(i) + 1) = durations[i];
  p.Burst.OnceCount = static_cast<int16_t>(onceCount);
  p.Burst.RepeatPartCount = static_cast<int16_t>(durations.size() - static_cast<std::size_t>(onceCount));
  p.Burst.TotalCount = static_cast<int16_t>(durations.size());
}

struct Details : ::testing::Test {
  test::TestProgram t;
  Program& p = t.p;
  void SetUp() override {
    p.F.DvcMfglist.text = "Acme";
    p.F.DvcTypeList.text = "TV";
    p.F.Model.text = "TV100";
    p.Protocol.Frequency = 38000;
    p.Protocol.ProtocolName = "NEC1";
    p.Burst.BurstLabel = "Power";
    p.Burst.BurstDeviceCode = 4;
    p.Burst.BurstFunctionCode = 12;
    SetBurst(p, {9000, -4500, 560, -40000, 9000, -2250, 560}, 4);
  }
  void Press(void (*handler)(Program&)) {
    t.host.Click([this, handler] { handler(p); });
  }
  /// Presses `handler` at the first event while the dialog waits; events the
  /// writer lets through before it shows the dialog pass by.
  void PressWhenShown(void (*handler)(Program&)) {
    auto step = std::make_shared<std::function<void()>>();
    *step = [this, handler, step] {
      if (t.host.detailsShown > 0 && p.DBG.Next.enabled) handler(p);
      else t.host.Click(*step);
    };
    t.host.Click(*step);
  }
};

TEST_F(Details, ShowsTheEntrysValuesAndWaitsForNext) {
  p.FormatPronto = false;
  p.FormatADI = true;
  t.host.Click([] {});
  Press(Next_Click);
  ShowEntryDetails(p, "ACME/TV100:POWER");
  const DetailsForm& d = p.DBG;
  EXPECT_TRUE(d.loaded);
  EXPECT_EQ(d.lblManufacturer.caption, "Acme");
  EXPECT_EQ(d.lblType.caption, "TV");
  EXPECT_EQ(d.lblModel.caption, "TV100");
  EXPECT_EQ(d.lblTitle.caption, "ACME/TV100:POWER");
  EXPECT_EQ(d.lblDeviceCode.caption, "4");
  EXPECT_EQ(d.lblFunctionCode.caption, "12");
  EXPECT_EQ(d.lblCarrier.caption, "38000.00 KHZ") << "the number as stored, no unit conversion";
  EXPECT_EQ(d.lblOnceCount.caption, "4");
  EXPECT_EQ(d.lblRepeatCount.caption, "3");
  EXPECT_EQ(d.lblKeyLabel.caption, "Power");
  EXPECT_EQ(d.lblProtocol.caption, "NEC1");
  EXPECT_EQ(d.lblBurstPairCount.caption, "4") << "7 durations: 3 pairs and a last mark";
  EXPECT_EQ(d.BurstList.items,
            std::vector<std::string>({"9000", "-4500", "560", "-40000", "9000", "-2250", "560"}));
  EXPECT_EQ(t.host.detailsShown, 1);
  EXPECT_EQ(t.host.doEventsCalls, 2) << "the wait lasts until Next";
  EXPECT_FALSE(d.Next.enabled);
  EXPECT_EQ(p.AdiKeyChoice, 1);
}

TEST_F(Details, AdiAndSlinkeShowTheRawDurations) {
  p.FormatPronto = false;
  p.FormatSlinkTxOnly = true;
  ShowEntryText(p);
  // "0000 " per duration; two line breaks after each one longer than 9999 µs.
  EXPECT_EQ(p.DBG.Text1.text, "9000 -4500 0560 -40000 \r\n\r\n9000 -2250 0560 ");
  p.FormatSlinkTxOnly = false;
  p.FormatADI = true;
  p.DBG.Text1.text.clear();
  ShowEntryText(p);
  EXPECT_EQ(p.DBG.Text1.text, "9000 -4500 0560 -40000 \r\n\r\n9000 -2250 0560 ");
}

TEST_F(Details, HexBoxRefillsTheProntoTextInHexadecimal) {
  // Pronto: 38 kHz is the corrected word 106 (hex 006A); the dialog's count labels
  // carry the pair counts that the text is built from.
  p.FormatPronto = true;
  p.IRCode.OnceCount = 1;
  p.IRCode.RepeatCount = 0;
  p.IRCode.BurstText = "342 171 ";
  p.DBG.lblOnceCount.caption = "1";
  p.DBG.lblRepeatCount.caption = "0";
  p.DBG.HexOPT.value = 1;
  HexOPT_Click(p);
  EXPECT_EQ(p.DBG.Text1.text.substr(0, 20), "0000 006A 0001 0000 ");
  p.DBG.HexOPT.value = 0;
  HexOPT_Click(p);
  EXPECT_EQ(p.DBG.Text1.text.substr(0, 20), "0000 0106 0001 0000 ");
}

TEST_F(Details, SkipAndFinishOnlyTouchTheAdiChoiceForAdi) {
  p.FormatPronto = true;
  p.AdiKeyChoice = 1;
  p.DBG.Next.enabled = true;
  Skip_Click(p);
  EXPECT_FALSE(p.DBG.Next.enabled);
  EXPECT_EQ(p.AdiKeyChoice, 1);

  p.F.Check1.value = 1;
  p.DBG.Next.enabled = true;
  p.DBG.visible = true;
  Finish_Click(p);
  EXPECT_EQ(p.F.Check1.value, 0);
  EXPECT_FALSE(p.DBG.Next.enabled);
  EXPECT_FALSE(p.DBG.visible);
  EXPECT_EQ(t.host.detailsHidden, 1);
  EXPECT_EQ(t.host.doEventsCalls, 1) << "Finish lets pending events through";
  EXPECT_EQ(p.AdiKeyChoice, 1);

  p.FormatPronto = false;
  p.FormatADI = true;
  Skip_Click(p);
  EXPECT_EQ(p.AdiKeyChoice, 0);
  Finish_Click(p);
  EXPECT_EQ(p.AdiKeyChoice, 2);
}

TEST_F(Details, SkipDuringAProntoRunStillStoresTheEntry) {
  p.FormatPronto = true;
  p.F.Check1.value = 1;
  int stored = 0;
  p.IRCodeSink = [&stored](Program&) { ++stored; };
  PressWhenShown(Skip_Click);
  ProntoWriteCode(p, 0);
  EXPECT_EQ(t.host.detailsShown, 1);
  EXPECT_EQ(stored, 1);
  // Pronto counts pairs: 4 once durations are 2 pairs, 3 repeat durations 1.5 -> 2
  // (half to even); the code text is built from these two labels.
  EXPECT_EQ(p.DBG.lblOnceCount.caption, "2");
  EXPECT_EQ(p.DBG.lblRepeatCount.caption, "2");
  EXPECT_EQ(p.DBG.Text1.text.substr(0, 22), "0000 0106 0002 0002 \r\n");
}

TEST_F(Details, SkipDuringASlinkeRunStillWritesTheEntry) {
  p.FormatPronto = false;
  p.FormatSlinkTxOnly = true;
  p.F.Check1.value = 1;
  p.SlinkText.clear();
  SetBurst(p, {900, -900}, 2);
  KeyEntry key;
  key.Label = "Power";
  p.Keys.entries.push_back(key);
  PressWhenShown(Skip_Click);
  WriteSlinkRawEntry(p, 1, "Power");
  EXPECT_EQ(t.host.detailsShown, 1);
  EXPECT_EQ(p.SlinkText, "\r\n900 -900 :Power\r\n");
}

TEST_F(Details, AdjustSuffixMovesTheViewByFiveAndOverflowsAtTheTop) {
  Command1_Click(p);
  Command1_Click(p);
  EXPECT_EQ(p.WaveformOffset, 10);
  p.WaveformOffset = 32763;
  try {
    Command1_Click(p);
    FAIL() << "no error";
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 6);
  }
  EXPECT_EQ(p.WaveformOffset, 32763);
}

TEST_F(Details, ScaleOptionsAreExclusive) {
  Option1_Click(p, 2);
  EXPECT_FALSE(p.DBG.Option1[0].value);
  EXPECT_FALSE(p.DBG.Option1[1].value);
  EXPECT_TRUE(p.DBG.Option1[2].value);
  Option1_Click(p, 1);
  EXPECT_TRUE(p.DBG.Option1[1].value);
  EXPECT_FALSE(p.DBG.Option1[2].value);
}

}  // namespace
}  // namespace bw
