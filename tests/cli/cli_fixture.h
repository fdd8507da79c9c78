// Shared by the command-line tests: a temporary working folder that is also the
// program folder (--home), the bundled Device Library, and a plain reading of a
// device file's header and key lines, made here without the program's parser so
// that what the program prints can be held against the files themselves.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "cli/cli_runner.h"
#include "cli/json_reader.h"
#include "support/scripted_host.h"

namespace bw::clitest {

inline std::filesystem::path BundledLibrary() { return std::filesystem::path(BW_SOURCE_DIR) / "Device Library"; }

inline std::string Upper(std::string s) {
  for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return s;
}

inline std::string Trimmed(const std::string& s) {
  std::size_t b = s.find_first_not_of(" \t\r\n");
  if (b == std::string::npos) return {};
  std::size_t e = s.find_last_not_of(" \t\r\n");
  return s.substr(b, e - b + 1);
}

inline std::string WithoutBlanks(const std::string& s) {
  std::string out;
  for (char c : s)
    if (c != ' ') out += c;
  return out;
}

/// A device file read line by line: comment lines and trailing "'" comments
/// dropped, header "KEY = value" pairs and the key lines below [KEYCODES].
struct DeviceFileText {
  std::map<std::string, std::string> header;  ///< keyword without blanks, upper case -> value
  std::vector<std::pair<std::string, std::string>> keys;  ///< label -> code text, in file order

  explicit DeviceFileText(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::string line;
    bool inKeys = false;
    while (std::getline(in, line)) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      if (!line.empty() && (line[0] == '\'' || line[0] == ';')) continue;
      std::size_t quote = line.find('\'');
      if (quote != std::string::npos) line.resize(quote);
      if (Trimmed(line).empty()) continue;
      if (Upper(WithoutBlanks(line)) == "[KEYCODES]") {
        inKeys = true;
        continue;
      }
      std::size_t eq = line.find('=');
      if (eq == std::string::npos) continue;
      std::string left = Trimmed(line.substr(0, eq)), right = Trimmed(line.substr(eq + 1));
      if (inKeys) keys.emplace_back(left, right);
      else header[Upper(WithoutBlanks(left))] = right;
    }
  }
  std::vector<std::string> Labels() const {
    std::vector<std::string> labels;
    for (const auto& k : keys) labels.push_back(k.first);
    return labels;
  }
};

/// File names with `extension` in `folder`, upper-cased and without it, in the
/// order of the upper-cased file names ("X A3.DVC" before "X.DVC").
inline std::vector<std::string> UpperStems(const std::filesystem::path& folder, const std::string& extension) {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    std::string name = Upper(entry.path().filename().string());
    if (name.size() > extension.size() && name.substr(name.size() - extension.size()) == Upper(extension))
      files.push_back(name);
  }
  std::sort(files.begin(), files.end());
  for (std::string& f : files) f.resize(f.size() - extension.size());
  return files;
}

/// The document, or a recorded failure (with the text) and an empty value.
inline Json ParseJsonOrFail(const std::string& text) {
  try {
    return ParseJson(text);
  } catch (const JsonError& e) {
    ADD_FAILURE() << "not JSON: " << e.what() << "\n" << text;
    return Json{};
  }
}

struct CliTest : ::testing::Test {
  test::TempDir dir;

  /// Runs the program in the temporary folder.
  CliResult Run(const std::vector<std::string>& args, bool stderrOnTerminal = false) {
    return RunCli(args, dir.path(), stderrOnTerminal);
  }
  /// Runs it on the bundled library with the temporary folder as program folder.
  CliResult RunBundled(std::vector<std::string> args, bool stderrOnTerminal = false) {
    args.insert(args.begin(), {"--library", BundledLibrary().string(), "--home", dir.path().string()});
    return Run(args, stderrOnTerminal);
  }
  /// Runs it on the temporary library "lib" below the temporary folder.
  CliResult RunTemporary(std::vector<std::string> args) {
    args.insert(args.begin(), {"--library", Library().string(), "--home", dir.path().string()});
    return Run(args);
  }
  std::filesystem::path Library() const { return dir.path() / "lib"; }
  std::filesystem::path WriteLibrary(const std::string& file, const std::string& text) {
    return dir.Write("lib/" + file, text);
  }
  /// Puts a copy of a bundled file into the temporary library.
  void CopyBundled(const std::string& file) {
    std::filesystem::create_directories(Library());
    std::filesystem::copy_file(BundledLibrary() / file, Library() / file);
  }
};

}  // namespace bw::clitest
