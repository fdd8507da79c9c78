// Jet test helpers: run mdbtools on a file, and print our own reading of a
// table the way `mdb-export -H -e -b hex -T ...` prints it, to compare the two.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "jet/database.h"
#include "runtime/run_time_error.h"
#include "support/scripted_host.h"

namespace jettest {

inline std::string AccessSamples() { return std::string(BW_TESTDATA_DIR) + "/access"; }

inline std::string Shell(const std::string& command) {
  std::string out;
  char buf[4096];
  FILE* p = popen(command.c_str(), "r");
  for (size_t n; p && (n = fread(buf, 1, sizeof buf, p)) > 0;) out.append(buf, n);
  if (p) pclose(p);
  return out;
}

inline std::string Quote(const std::string& s) { return "'" + s + "'"; }

inline bool HaveMdbTools() {
  return Shell("for t in mdb-export mdb-ver mdb-schema mdb-tables; do command -v $t; done | wc -l") == "4\n";
}

inline std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

constexpr const char* kDateFormat = "%Y-%m-%d %H:%M:%S";

/// mdb-export's rows of a table, one line per row, without the header.
inline std::vector<std::string> MdbExport(const std::string& file, const std::string& table) {
  return SplitLines(Shell("mdb-export -H -e -b hex -T '" + std::string(kDateFormat) + "' " + Quote(file) + " " +
                          Quote(table) + " 2>/dev/null"));
}

/// Text as mdb-export quotes it.
inline std::string EscapeText(const std::string& s) {
  static const std::map<char, std::string> kEscapes = {
      {'"', "\"\""}, {'\r', "\\r"}, {'\n', "\\n"}, {'\t', "\\t"}, {'\\', "\\\\"}};
  std::string out = "\"";
  for (char c : s) out += kEscapes.count(c) ? kEscapes.at(c) : std::string(1, c);
  return out + "\"";
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
    case K::kDateTime: {  // days since 1899-12-30, the fraction the time of day
      double days = std::floor(v.real);
      std::time_t t = std::time_t((days - 25569.0) * 86400.0 + std::round((v.real - days) * 86400.0));
      std::tm tm{};
      std::strftime(buf, sizeof buf, kDateFormat, gmtime_r(&t, &tm));
      return "\"" + std::string(buf) + "\"";
    }
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
      std::string hex = "\"";
      for (unsigned char c : bytes) std::snprintf(buf, sizeof buf, "%02X", c), hex += buf;
      return hex + "\"";
    }
  }
}

/// A row as mdb-export prints it.
inline std::string ExportLine(const std::vector<bw::jet::Value>& row) {
  std::string line;
  for (size_t c = 0; c < row.size(); ++c) line += (c ? "," : "") + FormatForExport(row[c]);
  return line;
}

/// Our reading of a table in the same shape as MdbExport.
inline std::vector<std::string> OurExport(bw::jet::Database& db, const std::string& table) {
  std::vector<std::string> lines;
  auto rs = db.OpenRecordset(table);
  for (; !rs->Eof(); rs->MoveNext()) {
    std::vector<bw::jet::Value> row;
    for (const auto& name : rs->FieldNames()) row.push_back(rs->Field(name));
    lines.push_back(ExportLine(row));
  }
  return lines;
}

/// "number text" of the Jet error `f` raises ("" when none), and that number alone (0).
using bw::test::ErrorNumber;
using bw::test::ErrorText;

}  // namespace jettest
