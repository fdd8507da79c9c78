// Test helpers: run the mdbtools programs on a file and print our own reading
// of a table the way `mdb-export -H -e -b hex -T ...` prints it, so the two can
// be compared line by line. mdbtools is a required test dependency: when it is
// missing the calling test fails.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include <unistd.h>

#include "jet/database.h"

namespace jettest {

inline std::string Shell(const std::string& command, int* status = nullptr) {
  std::string out;
  FILE* p = popen(command.c_str(), "r");
  if (!p) return out;
  std::array<char, 4096> buf;
  size_t n;
  while ((n = fread(buf.data(), 1, buf.size(), p)) > 0) out.append(buf.data(), n);
  int rc = pclose(p);
  if (status) *status = rc;
  return out;
}

inline std::string Quote(const std::string& s) { return "'" + s + "'"; }

/// True when mdbtools is installed; records a failure otherwise.
inline bool HaveMdbTools() {
  int rc = 0;
  Shell("command -v mdb-export mdb-ver mdb-schema mdb-tables >/dev/null 2>&1", &rc);
  if (rc != 0) ADD_FAILURE() << "mdbtools (mdb-export, mdb-ver, mdb-schema, mdb-tables) is not installed";
  return rc == 0;
}

inline std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  size_t i = 0;
  while (i < text.size()) {
    size_t e = text.find('\n', i);
    if (e == std::string::npos) e = text.size();
    lines.push_back(text.substr(i, e - i));
    i = e + 1;
  }
  return lines;
}

constexpr const char* kDateFormat = "%Y-%m-%d %H:%M:%S";

/// mdb-export's rows of a table, one line per row, without the header.
inline std::vector<std::string> MdbExport(const std::string& file, const std::string& table) {
  return SplitLines(Shell("mdb-export -H -e -b hex -T '" + std::string(kDateFormat) + "' " + Quote(file) + " " +
                          Quote(table) + " 2>/dev/null"));
}

inline std::string EscapeText(const std::string& s) {
  std::string out = "\"";
  for (char c : s) {
    switch (c) {
      case '"': out += "\"\""; break;
      case '\r': out += "\\r"; break;
      case '\n': out += "\\n"; break;
      case '\t': out += "\\t"; break;
      case '\\': out += "\\\\"; break;
      default: out += c;
    }
  }
  return out + "\"";
}

/// An OLE date (days since 1899-12-30, fraction = time of day) as text.
inline std::string OleDate(double d) {
  double days = std::floor(d);
  double secs = std::round((std::fabs(d - days)) * 86400.0);
  std::time_t t = std::time_t((days - 25569.0) * 86400.0 + secs);
  std::tm tm{};
  gmtime_r(&t, &tm);
  char buf[64];
  std::strftime(buf, sizeof buf, kDateFormat, &tm);
  return buf;
}

inline std::string FormatForExport(const bw::jet::Value& v) {
  using K = bw::jet::Value::Kind;
  char buf[64];
  switch (v.kind) {
    case K::kNull: return "";
    case K::kBoolean: return v.integer ? "1" : "0";
    case K::kByte: case K::kInteger: case K::kLong: return std::to_string(v.integer);
    case K::kCurrency: std::snprintf(buf, sizeof buf, "%.4f", double(v.integer) / 10000.0); return buf;
    case K::kSingle: case K::kDouble: std::snprintf(buf, sizeof buf, "%.15g", v.real); return buf;
    case K::kDateTime: return "\"" + OleDate(v.real) + "\"";
    // mdbtools hands text and binary values on as C strings: they end at the first zero.
    case K::kText: case K::kMemo: return EscapeText(v.text.substr(0, v.text.find('\0')));
    default: {
      std::string bytes = v.text;
      if (v.kind == K::kGuid && bytes.size() == 16) {
        // mdbtools prints a GUID as its registry text, then hex-encodes that text.
        const unsigned char* g = reinterpret_cast<const unsigned char*>(bytes.data());
        std::snprintf(buf, sizeof buf, "{%02X%02X%02X%02X-%02X%02X-%02X%02X-%02X%02X%02X%02X%02X%02X%02X%02X}", g[3],
                      g[2], g[1], g[0], g[5], g[4], g[7], g[6], g[8], g[9], g[10], g[11], g[12], g[13], g[14], g[15]);
        bytes = buf;
      }
      if (v.kind == K::kBinary) bytes = bytes.substr(0, bytes.find('\0'));
      std::string hex;
      for (unsigned char c : bytes) {
        std::snprintf(buf, sizeof buf, "%02X", c);
        hex += buf;
      }
      return "\"" + hex + "\"";
    }
  }
}

/// Our reading of a table in the same shape as MdbExport.
inline std::vector<std::string> OurExport(bw::jet::Database& db, const std::string& table) {
  std::vector<std::string> lines;
  auto rs = db.OpenRecordset(table);
  auto names = rs->FieldNames();
  while (!rs->Eof()) {
    std::string line;
    for (size_t i = 0; i < names.size(); ++i) {
      if (i) line += ",";
      line += FormatForExport(rs->Field(names[i]));
    }
    lines.push_back(line);
    rs->MoveNext();
  }
  return lines;
}

/// Removes the folders TempDir made when the test program ends.
struct TempDirCleaner {
  std::vector<std::filesystem::path> dirs;
  ~TempDirCleaner() {
    std::error_code ec;
    for (const auto& d : dirs) std::filesystem::remove_all(d, ec);
  }
};

/// A fresh empty folder for one test.
inline std::filesystem::path TempDir(const std::string& name) {
  static TempDirCleaner cleaner;
  auto dir = std::filesystem::temp_directory_path() / ("bw_jet_" + std::to_string(::getpid()) + "_" + name);
  std::filesystem::remove_all(dir);
  std::filesystem::create_directories(dir);
  cleaner.dirs.push_back(dir);
  return dir;
}

}  // namespace jettest
