#include "runtime/path_problems.h"

#include <fstream>

namespace bw {

namespace fs = std::filesystem;

namespace {

/// Where a file at `path` would live; "." for a bare name.
fs::path FolderOf(const fs::path& path) {
  const fs::path parent = path.parent_path();
  return parent.empty() ? fs::path(".") : parent;
}

std::string FolderOfFileProblem(const fs::path& path) {
  std::error_code ec;
  const fs::path folder = FolderOf(path);
  if (fs::is_directory(folder, ec)) return "";
  if (fs::exists(folder, ec)) return folder.string() + " is a file, not a folder";
  return "the folder " + folder.string() + " does not exist";
}

}  // namespace

std::string ExistingFileProblem(const fs::path& path) {
  std::error_code ec;
  if (fs::is_directory(path, ec)) return path.string() + " is a folder, not a file";
  if (!fs::exists(path, ec)) {
    const std::string folder = FolderOfFileProblem(path);
    return folder.empty() ? path.string() + " does not exist" : folder;
  }
  if (!std::ifstream(path, std::ios::binary)) return path.string() + " can not be read";
  return "";
}

std::string NewFileProblem(const fs::path& path) {
  std::error_code ec;
  if (fs::is_directory(path, ec)) return path.string() + " is a folder, not a file";
  return FolderOfFileProblem(path);
}

std::string FolderProblem(const fs::path& path) {
  std::error_code ec;
  if (fs::is_directory(path, ec)) return "";
  if (fs::exists(path, ec)) return path.string() + " is a file, not a folder";
  return path.string() + " does not exist";
}

std::string AccessDatabaseProblem(const fs::path& path) {
  // Every Access file begins with a version word and its engine's name; the
  // first page is 2048 (Jet 3) or 4096 bytes long.
  std::ifstream in(path, std::ios::binary);
  char head[20] = {};
  in.read(head, sizeof head);
  const std::streamsize got = in.gcount();
  std::error_code ec;
  const auto size = fs::file_size(path, ec);
  if (ec) return "";
  if (size == 0) return path.string() + " is empty, not an Access database";
  const std::string name(head + 4, head + 4 + (got > 4 ? got - 4 : 0));
  if (name.rfind("Standard Jet DB", 0) != 0 && name.rfind("Standard ACE DB", 0) != 0)
    return path.string() + " is not an Access database (it does not begin with an Access file header)";
  if (size < 2048)
    return path.string() + " is " + std::to_string(size) + " bytes long, too short for an Access database";
  return "";
}

}  // namespace bw
