#include "library_files.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace bw::guitest {

namespace fs = std::filesystem;

namespace {

std::string Trim(const std::string& text) {
  std::size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return std::string();
  std::size_t last = text.find_last_not_of(" \t\r");
  return text.substr(first, last - first + 1);
}

std::string WithoutBlanks(const std::string& text) {
  std::string out;
  for (char c : text)
    if (c != ' ' && c != '\t') out += c;
  return out;
}

/// The meaningful lines of a library file: comments after "'" and lines
/// starting with ";" dropped, blank lines skipped.
std::vector<std::string> MeaningfulLines(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error("cannot read " + path.string());
  std::vector<std::string> lines;
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line[0] == ';') continue;
    std::size_t quote = line.find('\'');
    if (quote != std::string::npos) line.erase(quote);
    line = Trim(line);
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

}  // namespace

std::string Upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

std::string ListName(const fs::path& path) { return Upper(path.stem().string()); }

std::string ReadWholeFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

std::string DeviceFile::Header(const std::string& keyword) const {
  auto it = header.find(keyword);
  return it == header.end() ? std::string() : it->second;
}

std::vector<fs::path> FilesWithExtension(const fs::path& folder, const std::string& extension) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    if (Upper(entry.path().extension().string()) == Upper(extension)) files.push_back(entry.path());
  }
  return files;
}

DeviceFile ReadDeviceFile(const fs::path& path) {
  DeviceFile file;
  file.path = path;
  bool keySection = false;
  for (const std::string& line : MeaningfulLines(path)) {
    if (Upper(WithoutBlanks(line)) == "[KEYCODES]") {
      keySection = true;
      continue;
    }
    std::size_t equals = line.find('=');
    if (equals == std::string::npos) continue;
    if (keySection) {
      std::string codes = line.substr(equals + 1);
      std::size_t semicolon = codes.find(';');
      if (semicolon != std::string::npos) codes.erase(semicolon);
      file.keys.push_back({Trim(line.substr(0, equals)), Trim(codes)});
    } else {
      file.header[Upper(WithoutBlanks(line.substr(0, equals)))] = Trim(line.substr(equals + 1));
    }
  }
  return file;
}

ProtocolFile ReadProtocolFile(const fs::path& path) {
  ProtocolFile file;
  file.path = path;
  for (const std::string& line : MeaningfulLines(path)) {
    std::string upper = Upper(line);
    if (upper.rfind("DEFINE ", 0) == 0) {
      std::string rest = line.substr(7);
      std::size_t equals = rest.find('=');
      if (equals != std::string::npos)
        file.defines[Upper(Trim(rest.substr(0, equals)))] = Trim(rest.substr(equals + 1));
      continue;
    }
    // "KEYWORD = value" or "KEYWORD value".
    std::size_t cut = line.find('=');
    std::string keyword, value;
    if (cut != std::string::npos) {
      keyword = Upper(WithoutBlanks(line.substr(0, cut)));
      value = Trim(line.substr(cut + 1));
    } else {
      cut = line.find(' ');
      keyword = Upper(line.substr(0, cut));
      value = cut == std::string::npos ? std::string() : Trim(line.substr(cut + 1));
    }
    if ((keyword == "PROTOCOL" || keyword == "FORMAT") && file.name.empty()) file.name = Upper(value);
    file.statements[keyword] = value;
  }
  return file;
}

DeviceFile DeviceNamed(const fs::path& library, const std::string& listName) {
  for (const fs::path& path : FilesWithExtension(library, ".dvc"))
    if (ListName(path) == listName) return ReadDeviceFile(path);
  throw std::runtime_error("no device file for " + listName);
}

ProtocolFile ProtocolNamed(const fs::path& library, const std::string& name) {
  for (const fs::path& path : FilesWithExtension(library, ".irp")) {
    ProtocolFile file = ReadProtocolFile(path);
    if (file.name == Upper(name)) return file;
  }
  throw std::runtime_error("no protocol file for " + name);
}

}  // namespace bw::guitest
