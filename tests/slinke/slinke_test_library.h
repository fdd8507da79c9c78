// A small Device Library for the Slink-e writer tests under a temporary program
// folder, loaded through the device list's own click handler.
#pragma once

#include <filesystem>
#include <string>

#include "shell/commands.h"
#include "support/scripted_host.h"

namespace bw::test {

/// Time base 100: ONE = 500/-1500, ZERO = 500/-500, lead-in 9000/-4500; GAP
/// pads a frame to 40000; bits go LSB first.
inline constexpr const char* kAcmeProtocol =
    "PROTOCOL = ACME\r\nFREQUENCY = 40000\r\nTIMEBASE = 100\r\nREPEAT = 1\r\nONE = 5,-15\r\nZERO = 5,-5\r\n"
    "DEFINE GAP = ^40000\r\nFORM = [90 -45],D:2,F:3,GAP:0\r\n";
/// MSB first, ONE = 300/-900, ZERO = 300/-300.
inline constexpr const char* kOtherProtocol =
    "PROTOCOL = OTHER\r\nTIMEBASE = 100\r\nBITORDER = MSB\r\nONE = 3,-9\r\nZERO = 3,-3\r\nFORM = F:4\r\n";
/// MUTE has a second code list, AUX speaks OTHER, GHOST a protocol the library lacks.
inline constexpr const char* kAcmeDevice =
    "MANUFACTURER = Acme\r\nMODEL = Tv1\r\nPROTOCOL = ACME\r\nDEVICECODE = 2\r\n[KEYCODES]\r\n"
    "POWER = 5\r\nMUTE = 6 ; 7\r\nVOL = 7\r\nAUX = (OTHER):1,2\r\nGHOST = (NOPE):1,3\r\n";

struct SlinkeWorld {
  TempDir dir;
  TestProgram t;
  Program& p = t.p;
  ScriptedHost& host = t.host;

  SlinkeWorld() {
    Write("Acme.irp", kAcmeProtocol);
    Write("Other.irp", kOtherProtocol);
    Write("AcmeTv.dvc", kAcmeDevice);
    p.ProgramFolder = dir.path();
    p.DeviceLibraryPath = (dir.path() / "Device Library").string();
  }
  void Write(const std::string& name, const std::string& text) const { dir.Write("Device Library/" + name, text); }
  /// A device file holding the header lines given and one key line per entry of `keys`.
  void WriteDevice(const std::string& name, const std::string& protocol, const std::string& keys) const {
    Write(name + ".dvc", "MANUFACTURER = M\r\nMODEL = " + name + "\r\nPROTOCOL = " + protocol +
                             "\r\n[KEYCODES]\r\n" + keys);
  }
  void LoadDevice(const std::string& name) {
    p.F.Lex.Clear();
    p.F.Lex.AddItem(name);
    p.F.Lex.listIndex = 0;
    Lex_Click(p);
  }
  std::filesystem::path CdePath(const std::string& fileName) const {
    return dir.path() / "Slinke Library" / (fileName + ".cde");
  }
  bool NoCdeFiles() const {
    const std::filesystem::path folder = dir.path() / "Slinke Library";
    return !std::filesystem::exists(folder) || std::filesystem::is_empty(folder);
  }
};

/// The run-time error number that `action` ends with (0 when it ends normally).
template <typename Action>
int ErrorNumberOf(Action action) {
  try {
    action();
  } catch (const RunTimeError& e) {
    return e.number();
  }
  return 0;
}

}  // namespace bw::test
