// The engine harness: the input is an .mdb file. It is opened, every table is
// read, IR codes are stored and a device deleted through the IR database
// layer, a row is inserted, updated (growing past its page) and deleted in
// every user table, and the file is opened once more and read again. A
// RunTimeError is the engine's answer to a damaged file and is fine; anything
// else leaving the engine, a sanitizer report or a hang is a finding.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "jet/database.h"
#include "pronto/db_access.h"
#include "pronto/db_run.h"
#include "runtime/run_time_error.h"
#include "shell/program.h"

namespace {

using bw::jet::ColumnType;
using bw::jet::Database;
using bw::jet::Value;

/// Answers every question No and every dialog with Cancel.

/// A file of this process in memory-backed storage when there is some.
std::string ScratchPath() {
  std::error_code ec;
  std::filesystem::path dir = std::filesystem::is_directory("/dev/shm", ec) ? "/dev/shm"
                                                                             : std::filesystem::temp_directory_path();
  return (dir / ("bw-fuzz-jet-" + std::to_string(::getpid()) + ".mdb")).string();
}

const std::string kConnect = std::string("; pwd=") + bw::kIRDatabasePassword;

void ReadEverything(Database& db) {
  for (const auto& name : db.TableNames(true)) {
    auto rs = db.OpenRecordset(name);
    auto fields = rs->FieldNames();
    for (; !rs->Eof(); rs->MoveNext())
      for (const auto& f : fields) (void)rs->Field(f).AsText();
  }
}

/// A value every column type takes; memo and OLE values long enough for a
/// chain of long-value pages.
Value Sample(ColumnType type, int round) {
  if (type == ColumnType::kMemo || type == ColumnType::kOle)
    return Value::Memo(std::string(size_t(round == 0 ? 100 : 2100), char('a' + round)));
  return Value::Text(std::to_string(7 + round));
}

void WriteEveryUserTable(Database& db) {
  for (const auto& name : db.TableNames(false)) {
    try {
      auto& table = db.GetTable(name);
      auto rs = db.OpenRecordset(name);
      const auto& columns = table.def().columns;
      rs->AddNew();
      for (const auto& c : columns) rs->SetField(c.name, Sample(c.type, 0));
      rs->Update();
      rs->SetBookmark(rs->LastModified());
      rs->Edit();
      for (const auto& c : columns) rs->SetField(c.name, Sample(c.type, 1));
      rs->Update();
      rs->MoveFirst();
      rs->Delete();
    } catch (const bw::RunTimeError&) {
      // One table refusing (read-only, damaged) leaves the others to try.
    }
  }
}

void IrDatabaseRun(const std::string& path) {
  bw::RecordingHost host(bw::MsgBoxResult::No);
  bw::Program p;
  p.host = &host;
  bw::OpenIRDatabase(p, path);
  for (int key = 1; key <= 3; ++key) {
    bw::IRCodeRecord r;
    r.KeyCode1 = key;
    r.KeyCode2 = key;
    r.Label = "KEY " + std::to_string(key);
    r.FullText = std::string(size_t(40 * key), 'f');
    r.FormatText = "0x0000";
    r.CarrierWord = 0x6D;
    r.OnceCount = 1;
    r.BurstText = std::string(size_t(500 * key), '5');
    bw::AddIRCode(p, r, "FZ-" + std::to_string(key % 2), "TV", "Fuzz");
  }
  bw::DeleteModel(p, "FZ-1");
  bw::CloseIRDatabase(p);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::string path = ScratchPath();
  std::remove(path.c_str());
  if (FILE* f = std::fopen(path.c_str(), "wb")) {
    std::fwrite(data, 1, size, f);
    std::fclose(f);
  }
  // Each step on its own: a step that meets damage leaves the next to try.
  auto step = [](auto&& run) {
    try {
      run();
    } catch (const bw::RunTimeError&) {
    }
  };
  step([] { ReadEverything(*Database::Open(path, true, true, kConnect)); });
  step([] { IrDatabaseRun(path); });
  step([] { WriteEveryUserTable(*Database::Open(path, true, false, kConnect)); });
  step([] { ReadEverything(*Database::Open(path, true, true, kConnect)); });
  std::remove(path.c_str());
  return 0;
}
