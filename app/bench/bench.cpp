// burstwright-bench: how the database run and the library-wide commands scale,
// side by side with SQLite doing the same row work. Makes its own synthetic
// data in a scratch folder and prints one Markdown table.
//
// Every measured case runs in a child process of its own (this program run
// again with --child), so the peak memory reported is that case's alone (the
// maximum resident set size wait4 gives back) and a case that takes too long
// can be stopped (an alarm set before exec kills it).
//
//   burstwright-bench [--quick] [--cap ROWS] [--limit SECONDS] [--work DIR]
//
// --quick keeps every size at or below 10,000; --cap stops the one-process
// build at that many rows (the larger sizes are then estimated from the growth
// measured below the cap and marked "est."); --limit stops any one case after
// that many seconds (shown as "> N s").
#include <signal.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <fcntl.h>

#include <chrono>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "jet/database.h"
#include "pronto/db_access.h"
#include "runtime/files.h"
#include "runtime/run_time_error.h"
#include "shell/program.h"

namespace fs = std::filesystem;

namespace {

// ---- synthetic data ----

// Every device stores this many keys: a typical remote.
constexpr int kKeysPerDevice = 50;
constexpr const char* kTypes[] = {"TV", "VCR", "DVD", "AMPLIFIER", "CABLE BOX", "PROJECTOR", "CD", "SATELLITE"};
constexpr int kManufacturers = 40;

std::string ModelName(int device) { return "MODEL " + std::to_string(device); }
std::string TypeName(int device) { return kTypes[device % 8]; }
std::string ManufacturerName(int device) { return "MAKER " + std::to_string(device % kManufacturers); }

/// One key's record, shaped like an NEC key's: a 76-word Pronto text and the
/// burst counts behind it, so long values go to pages of their own as real ones do.
bw::IRCodeRecord MakeRecord(int device, int key) {
  bw::IRCodeRecord r;
  // Function codes start above any sequence number, so every key is new.
  r.KeyCode1 = 0x100 + key;
  r.KeyCode2 = 0x100 + key;
  r.Label = "KEY " + std::to_string(key);
  r.FormatText = "0x0000";
  r.CarrierWord = 0x6D;
  r.OnceCount = 34;
  r.RepeatCount = 2;
  std::string pronto = "0000 006D 0022 0002 0157 00AC";
  std::string bursts = "342 171";
  uint32_t bits = uint32_t(device) * 2654435761u ^ uint32_t(key) * 40503u;
  for (int i = 0; i < 32; ++i) {
    bool one = (bits >> i) & 1;
    pronto += one ? " 0015 0041" : " 0015 0016";
    bursts += one ? " 21 65" : " 21 22";
  }
  pronto += " 0015 05ED 0157 0056 0015 0E47";
  bursts += " 21 1517 343 86 21 3655 ";
  r.FullText = pronto;
  r.BurstText = bursts;
  return r;
}

/// Reports what a run said, which a benchmark run should not.
void Report(const bw::RecordingHost& host) {
  for (const std::string& text : host.messages) std::cerr << "message: " << text << "\n";
}

fs::path TemplatePath() { return bw::ExecutableFolder() / "Empty_RCIR.mdb"; }

/// Fills a copy of the template with `rows` IR Codes rows (devices of 50 keys)
/// straight through one recordset per table: a quick way to a big file that
/// costs the same before and after any change to the lookups.
void MakeOurDatabase(const fs::path& path, int rows) {
  fs::copy_file(TemplatePath(), path, fs::copy_options::overwrite_existing);
  auto db = bw::jet::Database::Open(path.string(), true, false, std::string("; pwd=") + bw::kIRDatabasePassword);
  using bw::jet::Value;
  auto types = db->OpenRecordset("Device Types");
  for (int t = 0; t < 8; ++t) {
    types->AddNew();
    types->SetField("name", Value::Text(kTypes[t]));
    types->SetField("DeviceTypeid", Value::Integer(int16_t(t + 1)));
    types->SetField("RecordType", Value::Integer(300));
    types->Update();
  }
  auto makers = db->OpenRecordset("Manufacturers");
  for (int m = 0; m < kManufacturers; ++m) {
    makers->AddNew();
    makers->SetField("name", Value::Text(ManufacturerName(m)));
    makers->SetField("id", Value::Integer(int16_t(m + 1)));
    makers->SetField("RecordType", Value::Integer(300));
    makers->Update();
  }
  auto devices = db->OpenRecordset("Devices");
  auto codes = db->OpenRecordset("IR Codes");
  for (int d = 0; d * kKeysPerDevice < rows; ++d) {
    devices->AddNew();
    devices->SetField("DeviceID", Value::Long(1000 + d));
    devices->SetField("DeviceTypeid", Value::Integer(int16_t(d % 8 + 1)));
    devices->SetField("IManufacturerID", Value::Integer(0));
    devices->SetField("ManufacturerID", Value::Integer(int16_t(d % kManufacturers + 1)));
    devices->SetField("Model", Value::Text(ModelName(d)));
    devices->SetField("RecordType", Value::Integer(300));
    devices->Update();
    for (int k = 1; k <= kKeysPerDevice && d * kKeysPerDevice + k <= rows; ++k) {
      bw::IRCodeRecord r = MakeRecord(d, k);
      codes->AddNew();
      codes->SetField("DeviceID", Value::Long(1000 + d));
      codes->SetField("ButtonID", Value::Long(r.KeyCode2));
      codes->SetField("FunctionID", Value::Integer(int16_t(k)));
      codes->SetField("Label", Value::Text(r.Label));
      codes->SetField("FullText", Value::Memo(r.FullText));
      codes->SetField("Details", Value::Text(r.FormatText));
      codes->SetField("Carrier", Value::Integer(r.CarrierWord));
      codes->SetField("OnceCounter", Value::Integer(r.OnceCount));
      codes->SetField("RepeatCounter", Value::Integer(r.RepeatCount));
      codes->SetField("IRcode", Value::Memo(r.BurstText));
      codes->SetField("RecordType", Value::Integer(300));
      codes->Update();
    }
  }
  db->Close();
}

/// Stores one device's 50 keys the way the database run does.
void OursStoreDevice(bw::Program& p, int device) {
  p.ButtonSequence = 0;
  for (int k = 1; k <= kKeysPerDevice; ++k) {
    bw::IRCodeRecord r = MakeRecord(device, k);
    bw::AddIRCode(p, r, ModelName(device), TypeName(device), ManufacturerName(device));
  }
}

// ---- SQLite doing the same row work ----

class Lite {
 public:
  explicit Lite(const fs::path& path) {
    if (sqlite3_open(path.c_str(), &db_) != SQLITE_OK) Fail("open");
  }
  ~Lite() {
    for (auto& [sql, st] : statements_) sqlite3_finalize(st);
    sqlite3_close(db_);
  }
  void Exec(const char* sql) {
    char* error = nullptr;
    if (sqlite3_exec(db_, sql, nullptr, nullptr, &error) != SQLITE_OK) Fail(error ? error : sql);
  }
  /// A prepared statement, reset, with the given values bound in order.
  sqlite3_stmt* Bind(const char* sql, const std::vector<std::variant<int64_t, std::string>>& values) {
    sqlite3_stmt*& st = statements_[sql];
    if (!st && sqlite3_prepare_v2(db_, sql, -1, &st, nullptr) != SQLITE_OK) Fail(sql);
    sqlite3_reset(st);
    for (size_t i = 0; i < values.size(); ++i) {
      if (const auto* n = std::get_if<int64_t>(&values[i]))
        sqlite3_bind_int64(st, int(i + 1), *n);
      else
        sqlite3_bind_text(st, int(i + 1), std::get<std::string>(values[i]).c_str(), -1, SQLITE_TRANSIENT);
    }
    return st;
  }
  /// The first column of the first result row, if there is one.
  std::optional<int64_t> One(const char* sql, const std::vector<std::variant<int64_t, std::string>>& values) {
    sqlite3_stmt* st = Bind(sql, values);
    int rc = sqlite3_step(st);
    if (rc == SQLITE_ROW) return sqlite3_column_int64(st, 0);
    if (rc != SQLITE_DONE) Fail(sql);
    return std::nullopt;
  }
  void Run(const char* sql, const std::vector<std::variant<int64_t, std::string>>& values) {
    if (sqlite3_step(Bind(sql, values)) != SQLITE_DONE) Fail(sql);
  }

 private:
  [[noreturn]] void Fail(const std::string& what) {
    std::cerr << "sqlite: " << what << ": " << sqlite3_errmsg(db_) << "\n";
    std::exit(2);
  }
  sqlite3* db_ = nullptr;
  std::map<std::string, sqlite3_stmt*> statements_;
};

void MakeSqliteSchema(Lite& db) {
  db.Exec(
      "CREATE TABLE manufacturers(name TEXT, uname TEXT, id INTEGER, record_type INTEGER);"
      "CREATE TABLE device_types(name TEXT, uname TEXT, id INTEGER, record_type INTEGER);"
      "CREATE TABLE devices(device_id INTEGER, type_id INTEGER, imanufacturer_id INTEGER, manufacturer_id INTEGER,"
      " model TEXT, umodel TEXT, record_type INTEGER);"
      "CREATE TABLE ir_codes(device_id INTEGER, button_id INTEGER, function_id INTEGER, label TEXT, ulabel TEXT,"
      " full_text TEXT, details TEXT, carrier INTEGER, once_counter INTEGER, repeat_counter INTEGER,"
      " ircode TEXT, record_type INTEGER);"
      "CREATE INDEX manufacturers_name ON manufacturers(uname);"
      "CREATE INDEX device_types_name ON device_types(uname);"
      "CREATE INDEX devices_model ON devices(umodel);"
      "CREATE INDEX ir_codes_key ON ir_codes(ulabel, button_id, function_id, device_id);");
}

void SqliteInsertCode(Lite& db, int64_t device, const bw::IRCodeRecord& r, int sequence) {
  db.Run("INSERT INTO ir_codes VALUES(?,?,?,?,?,?,?,?,?,?,?,300)",
         {device, int64_t(r.KeyCode2), int64_t(sequence), r.Label, r.Label, r.FullText, r.FormatText,
          int64_t(r.CarrierWord), int64_t(r.OnceCount), int64_t(r.RepeatCount), r.BurstText});
}

void MakeSqliteDatabase(const fs::path& path, int rows) {
  fs::remove(path);
  Lite db(path);
  MakeSqliteSchema(db);
  db.Exec("BEGIN");
  for (int t = 0; t < 8; ++t)
    db.Run("INSERT INTO device_types VALUES(?,?,?,300)", {kTypes[t], kTypes[t], int64_t(t + 1)});
  for (int m = 0; m < kManufacturers; ++m)
    db.Run("INSERT INTO manufacturers VALUES(?,?,?,300)", {ManufacturerName(m), ManufacturerName(m), int64_t(m + 1)});
  for (int d = 0; d * kKeysPerDevice < rows; ++d) {
    db.Run("INSERT INTO devices VALUES(?,?,0,?,?,?,300)", {int64_t(1000 + d), int64_t(d % 8 + 1),
                                                          int64_t(d % kManufacturers + 1), ModelName(d), ModelName(d)});
    for (int k = 1; k <= kKeysPerDevice && d * kKeysPerDevice + k <= rows; ++k)
      SqliteInsertCode(db, 1000 + d, MakeRecord(d, k), k);
  }
  db.Exec("COMMIT");
}

/// Find by name, else add with the last row's id + 1: the named-list lookup.
int64_t SqliteNamed(Lite& db, const std::string& table, const std::string& name) {
  const std::string find = "SELECT id FROM " + table + " WHERE uname=? LIMIT 1";
  const std::string last = "SELECT id FROM " + table + " ORDER BY rowid DESC LIMIT 1";
  const std::string add = "INSERT INTO " + table + " VALUES(?,?,?,300)";
  if (auto id = db.One(find.c_str(), {name})) return *id;
  int64_t id = db.One(last.c_str(), {}).value_or(0) + 1;
  db.Run(add.c_str(), {name, name, id});
  return id;
}

/// The device lookup (last row of that model), adding the device when missing.
int64_t SqliteDevice(Lite& db, int device) {
  const std::string model = ModelName(device);
  if (auto id = db.One("SELECT device_id FROM devices WHERE umodel=? ORDER BY rowid DESC LIMIT 1", {model})) return *id;
  int64_t type = SqliteNamed(db, "device_types", TypeName(device));
  int64_t maker = SqliteNamed(db, "manufacturers", ManufacturerName(device));
  int64_t id = db.One("SELECT device_id FROM devices ORDER BY rowid DESC LIMIT 1", {}).value_or(999) + 1;
  db.Run("INSERT INTO devices VALUES(?,?,0,?,?,?,300)", {id, type, maker, model, model});
  return id;
}

/// One device's keys: the first matching row is updated, else a row is added.
/// One transaction per device: our engine, too, syncs the file once, on close.
void SqliteStoreDevice(Lite& db, int device) {
  db.Exec("BEGIN");
  for (int k = 1; k <= kKeysPerDevice; ++k) {
    bw::IRCodeRecord r = MakeRecord(device, k);
    int64_t id = SqliteDevice(db, device);
    auto row = db.One(
        "SELECT rowid FROM ir_codes WHERE ulabel=? AND button_id=? AND function_id=? AND device_id=?"
        " ORDER BY rowid LIMIT 1",
        {r.Label, int64_t(r.KeyCode2), int64_t(r.KeyCode1), id});
    if (row)
      db.Run("UPDATE ir_codes SET function_id=?, full_text=?, ircode=? WHERE rowid=?",
             {int64_t(k), r.FullText, r.BurstText, *row});
    else
      SqliteInsertCode(db, id, r, k);
  }
  db.Exec("COMMIT");
}

// ---- child cases ----

double Seconds(std::chrono::steady_clock::time_point since) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

/// One new device into an existing database: open, 50 keys, close.
int ChildDevice(const std::string& engine, const fs::path& path, int device) {
  if (engine == "ours") {
    bw::RecordingHost host;
    bw::Program p;
    p.host = &host;
    bw::OpenIRDatabase(p, path.string());
    OursStoreDevice(p, device);
    bw::CloseIRDatabase(p);
    Report(host);
  } else {
    Lite db(path);
    SqliteStoreDevice(db, device);
  }
  return 0;
}

/// Builds `rows` rows one device at a time in this one process, printing the
/// time taken to reach each checkpoint.
int ChildBuild(const std::string& engine, const fs::path& path, int rows, const std::vector<int>& checkpoints) {
  auto start = std::chrono::steady_clock::now();
  size_t next = 0;
  auto note = [&](int done) {
    while (next < checkpoints.size() && checkpoints[next] <= done) {
      std::cout << checkpoints[next] << " " << Seconds(start) << std::endl;
      ++next;
    }
  };
  if (engine == "ours") {
    fs::copy_file(TemplatePath(), path, fs::copy_options::overwrite_existing);
    bw::RecordingHost host;
    bw::Program p;
    p.host = &host;
    start = std::chrono::steady_clock::now();
    bw::OpenIRDatabase(p, path.string());
    for (int d = 0; d * kKeysPerDevice < rows; ++d) {
      OursStoreDevice(p, d);
      note((d + 1) * kKeysPerDevice);
    }
    bw::CloseIRDatabase(p);
    Report(host);
  } else {
    fs::remove(path);
    Lite db(path);
    MakeSqliteSchema(db);
    start = std::chrono::steady_clock::now();
    for (int d = 0; d * kKeysPerDevice < rows; ++d) {
      SqliteStoreDevice(db, d);
      note((d + 1) * kKeysPerDevice);
    }
  }
  return 0;
}

// ---- running a child and measuring it ----

struct Measured {
  bool finished = false;
  double seconds = 0;
  double peakMB = 0;
  std::string output;
};

fs::path g_self;
int g_limit = 600;

Measured RunChild(const std::vector<std::string>& args, const fs::path& outFile) {
  auto start = std::chrono::steady_clock::now();
  pid_t pid = fork();
  if (pid == 0) {
    int fd = ::open(outFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd >= 0) {
      dup2(fd, 1);
      ::close(fd);
    }
    std::vector<char*> argv;
    for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    // The alarm survives exec and ends a case that runs too long.
    alarm(unsigned(g_limit));
    execv(argv[0], argv.data());
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  wait4(pid, &status, 0, &usage);
  Measured m;
  m.seconds = Seconds(start);
  m.peakMB = double(usage.ru_maxrss) / 1024.0;
  m.finished = WIFEXITED(status) && WEXITSTATUS(status) <= 3;
  std::ifstream in(outFile);
  m.output.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  if (!m.finished && !(WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM))
    std::cerr << "case failed: " << args[1] << " " << (args.size() > 2 ? args[2] : "") << "\n";
  return m;
}

std::string Time(const Measured& m) {
  char buf[64];
  if (!m.finished) {
    std::snprintf(buf, sizeof buf, "> %d s", g_limit);
  } else if (m.seconds < 1) {
    std::snprintf(buf, sizeof buf, "%.0f ms", m.seconds * 1000);
  } else {
    std::snprintf(buf, sizeof buf, "%.2f s", m.seconds);
  }
  return buf;
}

std::string TimeOf(double seconds, bool estimated) {
  char buf[64];
  if (seconds < 1)
    std::snprintf(buf, sizeof buf, "%.0f ms", seconds * 1000);
  else
    std::snprintf(buf, sizeof buf, "%.2f s", seconds);
  return estimated ? "~" + std::string(buf) + " (est.)" : buf;
}

std::string Memory(const Measured& m) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.0f MB", m.peakMB);
  return buf;
}

std::string Ratio(double ours, double theirs) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.1f×", theirs > 0 ? ours / theirs : 0.0);
  return buf;
}

std::string Exponent(double t1, double t2, double n1, double n2) {
  if (t1 <= 0 || t2 <= 0) return "-";
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.2f", std::log(t2 / t1) / std::log(n2 / n1));
  return buf;
}

std::string Count(int n) { return n >= 1000 ? std::to_string(n / 1000) + "k" : std::to_string(n); }

// ---- the library for the commands ----

/// A library of `devices` device files spread over `protocols` protocol files.
/// Names are upper case unless `mixedCase` (then only the first letter is).
void MakeLibrary(const fs::path& folder, int devices, int protocols, bool mixedCase) {
  fs::remove_all(folder);
  fs::create_directories(folder);
  char name[64];
  for (int i = 0; i < protocols; ++i) {
    std::snprintf(name, sizeof name, "PROTO%04d", i);
    std::ofstream out(folder / (std::string(name) + ".irp"), std::ios::binary);
    out << "' synthetic NEC-like protocol\r\nPROTOCOL = " << name
        << "\r\nMODULATION = PPM\r\nBITORDER = LSB\r\nFREQUENCY = 38000\r\nTIMEBASE = 562\r\n"
           "ONE = 1,-3\r\nZERO = 1,-1\r\nREPEAT = 1\r\nDEFINE LEAD = [9000 -4500]\r\nDEFINE STOP = [1]\r\n"
           "DEFINE DITTO = [9000 -2250 1]\r\nDEFINE FRAME = ^108000\r\n"
           "FORM = LEAD,D:8,-D:8,F:8,-F:8,STOP,FRAME;DITTO,FRAME\r\n";
  }
  for (int i = 0; i < devices; ++i) {
    std::snprintf(name, sizeof name, mixedCase ? "Device%05d" : "DEVICE%05d", i);
    std::ofstream out(folder / (std::string(name) + ".dvc"), std::ios::binary);
    out << "MANUFACTURER = " << ManufacturerName(i) << "\r\nDEVICE = " << TypeName(i) << "\r\nMODEL = " << name
        << "\r\nPROTOCOL = PROTO";
    char proto[16];
    std::snprintf(proto, sizeof proto, "%04d", i % protocols);
    out << proto << "\r\nDEVICECODE = " << i % 256 << "\r\n[KEYCODES]\r\n";
    for (int k = 1; k <= 20; ++k) out << "KEY " << k << " = " << k << "\r\n";
  }
}

/// A library of 5 protocols and one device whose single key has `codes` codes.
void MakeLongLineLibrary(const fs::path& folder, int codes) {
  MakeLibrary(folder, 0, 5, false);
  std::ofstream out(folder / "LONGLINE.dvc", std::ios::binary);
  out << "MANUFACTURER = MAKER\r\nDEVICE = TV\r\nMODEL = LONG\r\nPROTOCOL = PROTO0000\r\nDEVICECODE = 1\r\n"
         "[KEYCODES]\r\nBIG = ";
  for (int i = 0; i < codes; ++i) out << char('1' + i % 9) << (i + 1 < codes ? "/" : "");
  out << "\r\n";
}

struct Row {
  std::string what, size, ours, oursMem, theirs, theirsMem, ratio;
};

void PrintTable(const std::vector<Row>& rows) {
  std::cout << "| case | size | ours | ours peak | SQLite | SQLite peak | ours/SQLite |\n"
               "|---|---:|---:|---:|---:|---:|---:|\n";
  for (const auto& r : rows)
    std::cout << "| " << r.what << " | " << r.size << " | " << r.ours << " | " << r.oursMem << " | " << r.theirs
              << " | " << r.theirsMem << " | " << r.ratio << " |\n";
}

int Main(int argc, char** argv) {
  bool quick = false;
  int cap = 0;
  std::string only;  ///< one group of cases ("database", "build", "library", "line"); "" runs all
  auto runs = [&](const char* group) { return only.empty() || only == group; };
  fs::path work = fs::temp_directory_path() / "burstwright-bench";
  for (int i = 1; i < argc; ++i) {
    std::string a = argv[i];
    if (a == "--quick") quick = true;
    else if (a == "--cap" && i + 1 < argc) cap = std::atoi(argv[++i]);
    else if (a == "--limit" && i + 1 < argc) g_limit = std::atoi(argv[++i]);
    else if (a == "--work" && i + 1 < argc) work = argv[++i];
    else if (a == "--only" && i + 1 < argc) only = argv[++i];
    else {
      std::cerr << "usage: burstwright-bench [--quick] [--cap ROWS] [--limit SECONDS] [--work DIR]"
                   " [--only database|build|library|line]\n";
      return 2;
    }
  }
  const fs::path cli = g_self.parent_path() / "burstwright-cli";
  fs::create_directories(work);
  const fs::path out = work / "child.out";
  std::vector<Row> rows;
  std::vector<Row> growth;

  // (a) one 50-key device into databases of growing size.
  std::vector<int> sizes = quick ? std::vector<int>{1000, 10000} : std::vector<int>{1000, 10000, 100000};
  std::map<std::string, std::vector<Measured>> deviceRuns;
  for (int n : sizes) {
    if (!runs("database")) break;
    std::cerr << "one device into " << n << " rows\n";
    MakeOurDatabase(work / "base.mdb", n);
    MakeSqliteDatabase(work / "base.sqlite", n);
    Measured ours, theirs;
    // Median of three, each on a fresh copy of the same file.
    std::vector<Measured> o, t;
    for (int rep = 0; rep < 3; ++rep) {
      fs::copy_file(work / "base.mdb", work / "run.mdb", fs::copy_options::overwrite_existing);
      fs::copy_file(work / "base.sqlite", work / "run.sqlite", fs::copy_options::overwrite_existing);
      const std::string device = std::to_string(n / kKeysPerDevice + 1);
      o.push_back(RunChild({g_self.string(), "--child", "device", "ours", (work / "run.mdb").string(), device}, out));
      t.push_back(
          RunChild({g_self.string(), "--child", "device", "sqlite", (work / "run.sqlite").string(), device}, out));
    }
    auto median = [](std::vector<Measured> v) {
      std::sort(v.begin(), v.end(), [](const Measured& a, const Measured& b) { return a.seconds < b.seconds; });
      return v[1];
    };
    ours = median(o);
    theirs = median(t);
    deviceRuns["ours"].push_back(ours);
    deviceRuns["sqlite"].push_back(theirs);
    rows.push_back({"one 50-key device into a database", Count(n) + " rows", Time(ours), Memory(ours), Time(theirs),
                    Memory(theirs), Ratio(ours.seconds, theirs.seconds)});
  }
  for (size_t i = 1; runs("database") && i < sizes.size(); ++i)
    growth.push_back({"one device into a database", Count(sizes[i - 1]) + "→" + Count(sizes[i]),
                      Exponent(deviceRuns["ours"][i - 1].seconds, deviceRuns["ours"][i].seconds, sizes[i - 1],
                               sizes[i]),
                      "", Exponent(deviceRuns["sqlite"][i - 1].seconds, deviceRuns["sqlite"][i].seconds,
                                   sizes[i - 1], sizes[i]),
                      "", ""});

  // (b) building a database one device at a time in one process.
  if (runs("build")) {
    const int target = quick ? 10000 : 100000;
    const int ourRows = cap > 0 ? std::min(cap, target) : target;
    std::vector<int> checkpoints = {1000, 10000, 100000};
    auto build = [&](const std::string& engine, int upTo) {
      std::cerr << "building " << upTo << " rows (" << engine << ")\n";
      std::vector<std::string> args = {g_self.string(), "--child", "build", engine,
                                       (work / (engine == "ours" ? "build.mdb" : "build.sqlite")).string(),
                                       std::to_string(upTo)};
      for (int c : checkpoints)
        if (c <= upTo) args.push_back(std::to_string(c));
      if (upTo % 10000 != 0) args.push_back(std::to_string(upTo));
      Measured m = RunChild(args, out);
      std::map<int, double> at;
      std::istringstream in(m.output);
      int n;
      double s;
      while (in >> n >> s) at[n] = s;
      return std::pair{m, at};
    };
    auto [ours, oursAt] = build("ours", ourRows);
    auto [theirs, theirsAt] = build("sqlite", target);
    // Beyond what was measured, the time follows the growth seen below it.
    std::vector<int> shown;
    for (int c : checkpoints)
      if (c <= target) shown.push_back(c);
    double k = 2;
    if (oursAt.size() >= 2) {
      auto hi = std::prev(oursAt.end());
      auto lo = std::prev(hi);
      k = std::log(hi->second / lo->second) / std::log(double(hi->first) / lo->first);
    }
    std::map<int, std::pair<double, bool>> oursTimes;
    for (int c : shown) {
      if (oursAt.count(c)) {
        oursTimes[c] = {oursAt[c], false};
      } else if (!oursAt.empty()) {
        auto last = std::prev(oursAt.end());
        oursTimes[c] = {last->second * std::pow(double(c) / last->first, k), true};
      }
    }
    for (auto [c, s] : oursAt)
      if (!std::count(shown.begin(), shown.end(), c)) oursTimes[c] = {s, false};
    for (auto [c, v] : oursTimes) {
      double them = theirsAt.count(c) ? theirsAt[c] : 0;
      bool last = c == ourRows && !v.second;
      rows.push_back({"build one device at a time, one process", Count(c) + " rows", TimeOf(v.first, v.second),
                      last ? Memory(ours) : "", them > 0 ? TimeOf(them, false) : "",
                      c == target ? Memory(theirs) : "", them > 0 ? Ratio(v.first, them) : ""});
    }
    auto exp = [&](int a, int b) {
      if (!oursTimes.count(a) || !oursTimes.count(b)) return std::string("-");
      std::string e = Exponent(oursTimes[a].first, oursTimes[b].first, a, b);
      return oursTimes[b].second ? e + " (est.)" : e;
    };
    for (size_t i = 1; i < shown.size(); ++i)
      growth.push_back({"build one device at a time", Count(shown[i - 1]) + "→" + Count(shown[i]),
                        exp(shown[i - 1], shown[i]), "",
                        Exponent(theirsAt[shown[i - 1]], theirsAt[shown[i]], shown[i - 1], shown[i]), "", ""});
  }

  // (c) library-wide commands.
  {
    struct Library {
      int devices, protocols;
      bool mixed;
    };
    std::vector<Library> libraries = {{1000, 5, false}, {10000, 5, false}, {1000, 2000, false},
                                      {10000, 2000, false}, {1000, 5, true}, {10000, 5, true}};
    std::map<std::string, std::map<int, double>> byCommand;
    for (const auto& lib : libraries) {
      if (!runs("library") || (quick && lib.devices > 1000)) continue;
      const fs::path folder = work / "Device Library";
      std::cerr << "library of " << lib.devices << " devices, " << lib.protocols << " protocols\n";
      MakeLibrary(folder, lib.devices, lib.protocols, lib.mixed);
      const std::string size = Count(lib.devices) + " devices, " + std::to_string(lib.protocols) + " protocols" +
                               (lib.mixed ? ", mixed case" : "");
      const std::string first = lib.mixed ? "DEVICE00000" : "DEVICE00000";
      for (const std::string command : {"check", "devices", "bursts"}) {
        std::vector<std::string> args = {cli.string(), "--library", folder.string(), command};
        if (command == "bursts") args.push_back(first);
        Measured m = RunChild(args, out);
        const std::string key = command + std::string(lib.mixed ? " mixed" : "") + " " + std::to_string(lib.protocols);
        byCommand[key][lib.devices] = m.finished ? m.seconds : 0;
        rows.push_back({"`" + command + "`", size, Time(m), Memory(m), "", "", ""});
      }
    }
    for (auto& [key, times] : byCommand)
      if (times.count(1000) && times.count(10000))
        growth.push_back({"`" + key.substr(0, key.find(' ')) + "`" + key.substr(key.find(' ')) + " protocols",
                          "1k→10k devices", Exponent(times[1000], times[10000], 1000, 10000), "", "", "", ""});
  }

  // A device file with one very long key line.
  for (int codes : {160000, 2600000}) {
    if (!runs("line") || (quick && codes > 160000)) continue;
    const fs::path folder = work / "Device Library";
    MakeLongLineLibrary(folder, codes);
    std::cerr << "key line of " << codes << " codes\n";
    Measured m = RunChild({cli.string(), "--library", folder.string(), "check"}, out);
    char size[64];
    std::snprintf(size, sizeof size, "%d codes, %.1f MB", codes, double(fs::file_size(folder / "LONGLINE.dvc")) / 1e6);
    rows.push_back({"load one key line (`check`)", size, Time(m), Memory(m), "", "", ""});
  }

  PrintTable(rows);
  std::cout << "\nGrowth exponents (time ∝ size^k):\n\n| case | between | ours k | SQLite k |\n|---|---|---:|---:|\n";
  for (const auto& g : growth) std::cout << "| " << g.what << " | " << g.size << " | " << g.ours << " | " << g.theirs << " |\n";
  fs::remove_all(work);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::error_code ec;
  g_self = fs::read_symlink("/proc/self/exe", ec);
  try {
    if (argc >= 2 && std::string(argv[1]) == "--child") {
      const std::string what = argc > 2 ? argv[2] : "";
      if (what == "device" && argc == 6) return ChildDevice(argv[3], argv[4], std::atoi(argv[5]));
      if (what == "build" && argc >= 6) {
        std::vector<int> checkpoints;
        for (int i = 6; i < argc; ++i) checkpoints.push_back(std::atoi(argv[i]));
        return ChildBuild(argv[3], argv[4], std::atoi(argv[5]), checkpoints);
      }
      return 2;
    }
    return Main(argc, argv);
  } catch (const bw::RunTimeError& e) {
    std::cerr << "run-time error " << e.number() << ": " << e.description() << "\n";
    return 4;
  }
}
