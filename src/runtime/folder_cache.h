// A folder's listing kept between calls, so that work over a whole library
// (loading every device, each naming a protocol) lists the folder once instead
// of once per file.
//
// What it promises: every answer is the one ListFolder / FindFileIgnoringCase
// would give at that moment. The listing is taken on first use and dropped as
// soon as anything in the folder changes: the kernel reports every file added,
// removed, renamed or written there (inotify), and each call first collects
// those reports with one non-blocking read. Where no report can be had (no
// inotify instance left, a folder holding symbolic links whose targets may
// change elsewhere) nothing is kept and every call lists the folder afresh.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace bw {

class FolderCache {
 public:
  FolderCache();
  ~FolderCache();
  FolderCache(const FolderCache&) = delete;
  FolderCache& operator=(const FolderCache&) = delete;
  FolderCache(FolderCache&&) noexcept;
  FolderCache& operator=(FolderCache&&) noexcept;

  /// Drops what is kept about `folder` when it changed since it was listed (or
  /// when another folder was listed last). Returns the generation: a number
  /// that changes whenever the kept listing was dropped, so callers can keep
  /// facts of their own about the folder's files while it stays the same.
  uint64_t Check(const std::filesystem::path& folder);

  /// ListFolder(folder, extension), from the kept listing.
  const std::vector<std::string>& List(const std::filesystem::path& folder, const std::string& extension);

  /// FindFileIgnoringCase(folder, name), from the kept listing.
  std::optional<std::filesystem::path> Find(const std::filesystem::path& folder, const std::string& name);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace bw
