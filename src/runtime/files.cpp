// Text file reading and writing, folder listings and case-blind file lookup.
// See files.h.
#include "runtime/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <system_error>

#include "runtime/run_time_error.h"
#include "runtime/text.h"

namespace bw {

namespace fs = std::filesystem;

namespace {

/// The bytes of a regular file; anything else, or a file that cannot be opened,
/// is error 53. Opened without waiting, so a pipe or device is refused, not read.
std::string ReadWholeFile(const fs::path& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) ThrowFileNotFound();
  struct stat info {};
  if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
    ::close(fd);
    ThrowFileNotFound();
  }
  // One byte more than the size, so the read that finds the end needs no room of
  // its own; a file that grew since is read to its new end. A failing read ends
  // the text where it failed.
  std::string bytes(static_cast<std::size_t>(info.st_size) + 1, '\0');
  std::size_t got = 0;
  for (;;) {
    if (got == bytes.size()) bytes.resize(bytes.size() * 2);
    const ssize_t n = ::read(fd, bytes.data() + got, bytes.size() - got);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    got += static_cast<std::size_t>(n);
  }
  ::close(fd);
  bytes.resize(got);
  return bytes;
}

}  // namespace

TextFileReader::TextFileReader(const fs::path& path) : path_(path) {
  const std::string bytes = ReadWholeFile(path);

  std::string_view body(bytes);
  const bool hasBom = body.size() >= 3 && body.substr(0, 3) == "\xEF\xBB\xBF";
  if (hasBom) body.remove_prefix(3);
  // An end-of-file mark left by old editors is not part of the text.
  if (!body.empty() && body.back() == '\x1A') body.remove_suffix(1);
  std::string decoded;
  if (!IsValidUtf8(body)) {
    decoded = FromCp1252(body);
    body = decoded;
  }

  // CR LF, LF and a lone CR all end a line; a last line without an end counts.
  std::size_t start = 0;
  while (start < body.size()) {
    std::size_t end = start;
    while (end < body.size() && body[end] != '\r' && body[end] != '\n') ++end;
    if (end == body.size()) {
      lines_.emplace_back(body.substr(start));
      break;
    }
    lines_.emplace_back(body.substr(start, end - start));
    start = end + 1;
    if (body[end] == '\r' && start < body.size() && body[start] == '\n') ++start;
  }
}

bool TextFileReader::ReadLine(std::string& line) {
  if (next_ >= lines_.size()) return false;
  line = std::move(lines_[next_++]);
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

bool HasExtension(const std::string& name, const std::string& extension) {
  if (extension.size() > name.size()) return false;
  return UCase(std::string_view(name).substr(name.size() - extension.size())) == UCase(extension);
}

void SortLikeListing(std::vector<std::string>& names) {
  // Each name is upper-cased once, not at every comparison.
  std::vector<std::pair<std::string, std::string>> keyed;
  keyed.reserve(names.size());
  for (std::string& name : names) {
    std::string upper = UCase(name);
    keyed.emplace_back(std::move(upper), std::move(name));
  }
  std::sort(keyed.begin(), keyed.end());
  for (std::size_t i = 0; i < keyed.size(); ++i) names[i] = std::move(keyed[i].second);
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
    if (HasExtension(name, extension)) names.push_back(name);
  }
  SortLikeListing(names);
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
