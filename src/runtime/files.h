// Files and folders: text files read a line at a time (UTF-8 with or without a
// byte-order mark, else Windows-1252; CR LF or LF), text written with CR LF line
// ends, pattern listings sorted the way the old file system returned them, and
// opening a file whose name differs only in case.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace bw {

/// Reads a whole text file and hands out its lines without CR/LF. Knows the
/// number of the line last read (1 for the first), so messages can say where they arose.
class TextFileReader {
 public:
  /// Opens and decodes the file; a missing or unreadable file is error 53 "File not found".
  explicit TextFileReader(const std::filesystem::path& path);
  /// Next line into `line`; false at the end of the file.
  bool ReadLine(std::string& line);
  bool AtEnd() const { return next_ >= lines_.size(); }
  /// Number of the line last read (0 before the first).
  int LineNumber() const { return static_cast<int>(next_); }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
  std::vector<std::string> lines_;
  std::size_t next_ = 0;
};

/// Writes `text` to a new file (replacing one that exists). Text is written as
/// given; callers end their lines with "\r\n". A failure is a run-time error (75/76).
void WriteTextFile(const std::filesystem::path& path, const std::string& text);

/// File names (not paths) in `folder` whose extension equals `extension`
/// (".dvc") ignoring case, sorted by their upper-cased names. A missing folder gives none.
std::vector<std::string> ListFolder(const std::filesystem::path& folder, const std::string& extension);

/// True when `name` ends in `extension` (".dvc"), ignoring case: ListFolder's filter.
bool HasExtension(const std::string& name, const std::string& extension);
/// Puts file names in ListFolder's order: by upper-cased name, then as written.
void SortLikeListing(std::vector<std::string>& names);

/// The path of `name` in `folder`, matching the name ignoring case when no exact
/// match exists; nothing when there is neither.
std::optional<std::filesystem::path> FindFileIgnoringCase(const std::filesystem::path& folder,
                                                         const std::string& name);

/// The folder of the running executable.
std::filesystem::path ExecutableFolder();

}  // namespace bw
