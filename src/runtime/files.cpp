// Text file reading and writing, folder listings and case-blind file lookup.
// See files.h.
#include "runtime/files.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>

#include "runtime/run_time_error.h"
#include "runtime/text.h"

namespace bw {

namespace fs = std::filesystem;

namespace {

bool EndsWithIgnoringCase(const std::string& name, const std::string& tail) {
  if (tail.size() > name.size()) return false;
  return UCase(name.substr(name.size() - tail.size())) == UCase(tail);
}

}  // namespace

TextFileReader::TextFileReader(const fs::path& path) : path_(path) {
  std::error_code ec;
  if (!fs::is_regular_file(path, ec)) ThrowFileNotFound();
  std::ifstream in(path, std::ios::binary);
  if (!in) ThrowFileNotFound();
  std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());

  std::string_view body(bytes);
  const bool hasBom = body.size() >= 3 && body.substr(0, 3) == "\xEF\xBB\xBF";
  if (hasBom) body.remove_prefix(3);
  // An end-of-file mark left by old editors is not part of the text.
  if (!body.empty() && body.back() == '\x1A') body.remove_suffix(1);
  const std::string text = IsValidUtf8(body) ? std::string(body) : FromCp1252(body);

  // CR LF, LF and a lone CR all end a line; a last line without an end counts.
  std::string line;
  bool pending = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\r' || c == '\n') {
      lines_.push_back(line);
      line.clear();
      pending = false;
      if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
    } else {
      line += c;
      pending = true;
    }
  }
  if (pending) lines_.push_back(line);
}

bool TextFileReader::ReadLine(std::string& line) {
  if (next_ >= lines_.size()) return false;
  line = lines_[next_++];
  return true;
}

void WriteTextFile(const fs::path& path, const std::string& text) {
  std::error_code ec;
  const fs::path parent = path.parent_path();
  if (!parent.empty() && !fs::is_directory(parent, ec)) ThrowPathNotFound();
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) ThrowPathFileAccessError();
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out.close();
  if (!out) ThrowPathFileAccessError();
}

std::vector<std::string> ListFolder(const fs::path& folder, const std::string& extension) {
  std::vector<std::string> names;
  std::error_code ec;
  fs::directory_iterator it(folder, ec);
  if (ec) return names;
  for (const fs::directory_entry& entry : it) {
    std::error_code typeError;
    if (!entry.is_regular_file(typeError)) continue;
    const std::string name = entry.path().filename().string();
    if (EndsWithIgnoringCase(name, extension)) names.push_back(name);
  }
  std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
    const std::string ua = UCase(a), ub = UCase(b);
    return ua != ub ? ua < ub : a < b;
  });
  return names;
}

std::optional<fs::path> FindFileIgnoringCase(const fs::path& folder, const std::string& name) {
  std::error_code ec;
  const fs::path exact = folder / name;
  if (fs::exists(exact, ec)) return exact;
  const std::string wanted = UCase(name);
  std::optional<fs::path> found;
  fs::directory_iterator it(folder, ec);
  if (ec) return std::nullopt;
  for (const fs::directory_entry& entry : it) {
    const std::string candidate = entry.path().filename().string();
    // Several names may differ only in case; take the first in sorted order so
    // the choice does not depend on the order the folder hands them out.
    if (UCase(candidate) == wanted && (!found || candidate < found->filename().string()))
      found = entry.path();
  }
  return found;
}

fs::path ExecutableFolder() {
  std::error_code ec;
  const fs::path exe = fs::read_symlink("/proc/self/exe", ec);
  if (ec || exe.empty()) return fs::current_path(ec);
  return exe.parent_path();
}

}  // namespace bw
