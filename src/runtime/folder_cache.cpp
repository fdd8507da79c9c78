// The kept folder listing and the inotify watch that says when to drop it.
// See folder_cache.h.
#include "runtime/folder_cache.h"

#include <dirent.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <unordered_map>
#include <unordered_set>

#include "runtime/files.h"
#include "runtime/text.h"

namespace bw {

namespace fs = std::filesystem;

namespace {

// Everything that can change what a listing or a file in it says.
constexpr uint32_t kWatchedEvents = IN_CREATE | IN_DELETE | IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB | IN_MOVED_FROM |
                                    IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

}  // namespace

struct FolderCache::State {
  std::string folder;
  int fd = -1;
  int watch = -1;
  uint64_t generation = 0;
  /// The listing below was taken and may be kept.
  bool listed = false;
  /// The folder holds a symbolic link: nothing is kept past one call.
  bool holdsLinks = false;
  std::unordered_set<std::string> names;
  /// The names of regular files (what a listing shows), in the folder's own order.
  std::vector<std::string> files;
  /// Upper-cased name -> the smallest name with that spelling.
  std::unordered_map<std::string, std::string> byUpperName;
  /// Upper-cased extension -> ListFolder's answer.
  std::map<std::string, std::vector<std::string>> lists;

  ~State() { StopWatching(); }

  void StopWatching() {
    if (fd >= 0) ::close(fd);
    fd = -1;
    watch = -1;
  }

  void StartWatching() {
    StopWatching();
    fd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (fd < 0) return;
    watch = ::inotify_add_watch(fd, folder.c_str(), kWatchedEvents);
    if (watch < 0) StopWatching();
  }

  void Drop() {
    listed = false;
    holdsLinks = false;
    names.clear();
    files.clear();
    byUpperName.clear();
    lists.clear();
    ++generation;
  }

  /// Reads every pending report; true when there was any.
  bool Changed() {
    bool any = false;
    bool watchGone = false;
    alignas(inotify_event) char buffer[4096];
    for (;;) {
      const ssize_t got = ::read(fd, buffer, sizeof buffer);
      if (got <= 0) {
        if (got < 0 && errno == EINTR) continue;
        break;
      }
      any = true;
      for (ssize_t at = 0; at < got;) {
        const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
        if (event->mask & (IN_IGNORED | IN_DELETE_SELF | IN_MOVE_SELF | IN_Q_OVERFLOW)) watchGone = true;
        at += ssize_t(sizeof(inotify_event) + event->len);
      }
    }
    if (watchGone) StartWatching();
    return any;
  }

  void Load() {
    // Read with readdir: the entry types come with the names, and only a link
    // or a file system that gives no type costs a stat.
    if (DIR* dir = ::opendir(folder.c_str())) {
      while (const dirent* entry = ::readdir(dir)) {
        const std::string name = entry->d_name;
        if (name == "." || name == "..") continue;
        bool regular = entry->d_type == DT_REG;
        if (entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN) {
          const std::string path = folder + "/" + name;
          struct stat info {};
          if (entry->d_type == DT_LNK || (::lstat(path.c_str(), &info) == 0 && S_ISLNK(info.st_mode)))
            holdsLinks = true;
          regular = ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
        }
        names.insert(name);
        if (regular) files.push_back(name);
        auto [at, added] = byUpperName.emplace(UCase(name), name);
        if (!added && name < at->second) at->second = name;
      }
      ::closedir(dir);
    }
    listed = true;
  }
};

FolderCache::FolderCache() = default;
FolderCache::~FolderCache() = default;
FolderCache::FolderCache(FolderCache&&) noexcept = default;
FolderCache& FolderCache::operator=(FolderCache&&) noexcept = default;

uint64_t FolderCache::Check(const fs::path& folder) {
  const std::string key = folder.string();
  if (!state_ || state_->folder != key) {
    const uint64_t generation = state_ ? state_->generation + 1 : 1;
    state_ = std::make_unique<State>();
    state_->folder = key;
    state_->generation = generation;
    // Watching starts before the listing, so a change made while listing is reported.
    state_->StartWatching();
    return state_->generation;
  }
  if (state_->fd < 0) state_->StartWatching();
  if (state_->fd < 0 || state_->holdsLinks || state_->Changed()) state_->Drop();
  return state_->generation;
}

const std::vector<std::string>& FolderCache::List(const fs::path& folder, const std::string& extension) {
  Check(folder);
  State& s = *state_;
  if (!s.listed) s.Load();
  const std::string key = UCase(extension);
  auto it = s.lists.find(key);
  if (it != s.lists.end()) return it->second;
  // ListFolder's filter and order, over the names read when the folder was listed.
  std::vector<std::string>& list = s.lists[key];
  for (const std::string& name : s.files)
    if (HasExtension(name, extension)) list.push_back(name);
  SortLikeListing(list);
  return list;
}

std::optional<fs::path> FolderCache::Find(const fs::path& folder, const std::string& name) {
  Check(folder);
  State& s = *state_;
  // Names that reach outside the folder are left to the plain lookup.
  if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos)
    return FindFileIgnoringCase(folder, name);
  if (!s.listed) s.Load();
  if (s.names.count(name)) return folder / name;
  auto it = s.byUpperName.find(UCase(name));
  if (it == s.byUpperName.end()) return std::nullopt;
  return folder / it->second;
}

}  // namespace bw
