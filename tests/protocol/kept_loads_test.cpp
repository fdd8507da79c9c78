// Loading a protocol file a second time while the library is unchanged puts back
// what the first load left; these cases compare that with a program that reads
// the file every time, over the same loads and the same format list.
#include <gtest/gtest.h>

#include "protocol/protocol.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

struct Side {
  test::ScriptedHost host;
  Program p;
  explicit Side(const std::string& library) {
    p.host = &host;
    p.DeviceLibraryPath = library;
    for (const char* item : {"RAW", "N", "MOD"}) p.F.format.AddItem(item);
  }
  /// Everything a load may change, as one line.
  std::string State() const {
    const ProtocolRecord& r = p.Protocol;
    std::string s = r.ProtocolName + "|" + r.Modulation + r.BitOrder + "|" + std::to_string(r.Frequency) + "|" +
                    std::to_string(r.OneMark) + "|" + r.FormOnce + "|" + p.LastModulationText + p.LastBitOrderText +
                    "|" + p.F.format.text + std::to_string(p.F.format.listIndex) + "|" +
                    std::to_string(host.messages.size());
    for (const DefineEntry& d : p.Defines.entries) s += "|" + d.Name + "=" + d.Text + std::to_string(d.Kind);
    return s;
  }
};

TEST(KeptProtocolLoads, GiveWhatReadingTheFileGives) {
  test::TempDir dir;
  const std::string library = (dir.path() / "Device Library").string();
  const auto write = [&](const char* file, const char* text) { dir.Write(std::string("Device Library/") + file, text); };
  write("m.irp", "PROTOCOL = Mod\r\nMODULATION = ppm\r\nBIT ORDER = msb\r\nTIMEBASE = 560\r\nONE = 1,-3\r\n"
                 "DEFINE L = [9000 -4500]\r\nFREQUENCY = 38000\r\nFORM = L,D:8,F:8\r\n");
  write("n.irp", "PROTOCOL = N\r\nFORM = D:8\r\n");  // sets neither text; b.irp shows 3 messages a load
  write("b.irp", "PROTOCOL = Bad\r\nCOLOUR = red\r\nMODULATION = qam\r\nBITORDER = x\r\nFORM = D:8\r\n");
  // Each step loads a protocol, or (after '+') first puts an entry at the top of the format list.
  const std::vector<std::string> steps = {"MOD", "N", "+MOD", "MOD", "N", "BAD", "BAD", "+N", "N", "MOD"};
  Side kept(library), read(library);
  for (const std::string& step : steps) {
    for (Side* side : {&kept, &read}) {
      if (step[0] == '+') side->p.F.format.AddItem(step.substr(1), 0);
      else ASSERT_TRUE(LoadProtocol(side->p, step)) << step;
    }
    read.p.ProtocolFiles.loads.clear();
    EXPECT_EQ(kept.State(), read.State()) << "after " << step;
  }
  EXPECT_EQ(kept.host.messages.size(), 6u) << "a file with a message is read, and reports, each time";
  // An edit in place (same size) is seen by the next load.
  write("m.irp", "PROTOCOL = Mod\r\nMODULATION = ppm\r\nBIT ORDER = msb\r\nTIMEBASE = 560\r\nONE = 1,-3\r\n"
                 "DEFINE L = [9000 -4500]\r\nFREQUENCY = 36000\r\nFORM = L,D:8,F:8\r\n");
  ASSERT_TRUE(LoadProtocol(kept.p, "MOD"));
  EXPECT_EQ(kept.p.Protocol.Frequency, 36000);
}

}  // namespace
}  // namespace bw
