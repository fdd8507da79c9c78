// What is wrong with a path a person gave: a folder where a file belongs, a
// missing folder, a file that is not an Access database. Every answer names the
// path it is about, so a front end can put it beside the fixed message it shows
// ("Could not find file ...") and the person knows what to fix.
#pragma once

#include <filesystem>
#include <string>

namespace bw {

/// "" when `path` is an existing file that can be read; otherwise why not:
/// "/x/a.mdb is a folder, not a file", "the folder /x/nodir does not exist", ...
std::string ExistingFileProblem(const std::filesystem::path& path);
/// "" when a file can be made (or replaced) at `path`; otherwise why not.
std::string NewFileProblem(const std::filesystem::path& path);
/// "" when `path` is an existing folder; otherwise "... does not exist" or
/// "... is a file, not a folder".
std::string FolderProblem(const std::filesystem::path& path);
/// "" when the existing file at `path` begins as an Access database does;
/// otherwise why it is not one (empty, too short, another kind of file).
std::string AccessDatabaseProblem(const std::filesystem::path& path);

}  // namespace bw
