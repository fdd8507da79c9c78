// The page file: an Access database seen as a run of fixed-size pages (2 KB
// for Jet 3, 4 KB for Jet 4) plus the database definition page 0, whose header
// area is masked with RC4 and holds the Jet version, code page, sort order,
// creation date and database password.
//
// What it promises about writes: a page write goes to the file at once, whole,
// in the order the caller issues it, so callers that write dependent pages
// first and the page that makes them reachable last leave a file that opens
// and reads after a kill at any moment. Close() flushes the file to the disk,
// so every write that returned is in the file after Close. An exclusive open
// holds a real OS lock (flock) for as long as the file is open; a shared open
// holds a shared lock, so the two exclude each other across processes.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "jet/format.h"

namespace bw::jet {

/// Thrown by the write-stop test hook in place of the write it stops.
class WriteStopped : public std::runtime_error {
 public:
  WriteStopped() : std::runtime_error("page write stopped by test hook") {}
};

/// The decoded database definition page.
struct DatabaseHeader {
  JetVersion version = JetVersion::kJet4;
  uint16_t codePage = 1252;
  uint32_t sortOrder = 0x409;  ///< "General" collating order
  double creationDate = 0;     ///< OLE date (days since 1899-12-30)
  std::u16string password;     ///< empty when the database has none
};

class PageFile {
 public:
  // ---- open and close ----
  /// Opens an existing file; checks it is a Jet 3/4 file and takes the lock.
  /// Errors: 3024 missing file, 3343 not an Access file, 3045 locked by another
  /// open, 3051 no permission.
  static std::unique_ptr<PageFile> Open(const std::string& path, bool exclusive, bool readOnly);
  /// Creates a new Jet 4 file holding only page 0 (fails when the file exists).
  static std::unique_ptr<PageFile> Create(const std::string& path, const DatabaseHeader& header);
  ~PageFile();
  PageFile(const PageFile&) = delete;
  PageFile& operator=(const PageFile&) = delete;
  /// Flushes to disk and releases the lock; further calls fail.
  void Close();

  // ---- what the file is ----
  const std::string& path() const { return path_; }
  const DatabaseHeader& header() const { return header_; }
  JetVersion version() const { return header_.version; }
  bool jet4() const { return header_.version == JetVersion::kJet4; }
  size_t pageSize() const { return pageSize_; }
  uint32_t pageCount() const { return pageCount_; }
  bool readOnly() const { return readOnly_; }
  /// True when `given` opens the database (any text when it has no password).
  bool PasswordMatches(const std::string& givenUtf8) const;

  // ---- pages ----
  /// The page's bytes. Throws 3049 past the end. Pages are kept in a cache of
  /// kCachedPages pages that drops the least recently used one: the reference
  /// stays good while fewer than kCachedPages other pages are read or written.
  const Bytes& Page(uint32_t number);
  /// Writes a whole page at once and keeps the cache in step.
  void WritePage(uint32_t number, const Bytes& data);
  /// Writes a new page at the end of the file and returns its number.
  uint32_t AppendPage(const Bytes& data);

  // ---- all-or-nothing writes ----
  /// Starts a group of writes that either all stay or all go: until the
  /// matching Commit, the page file keeps each page's bytes from before its
  /// first write and the page count. Groups nest; only the outermost counts.
  void Begin();
  void Commit();
  /// Puts back every page the group wrote and cuts off the pages it
  /// appended, so the file is as it was at the outermost Begin.
  void Rollback();

  // ---- test hooks ----
  /// After `writes` more page writes, every further write throws WriteStopped
  /// without touching the file (-1 turns the hook off). Process-wide.
  static void StopWritesAfter(int writes);
  /// After `writes` more page writes, the next one fails as a full disk does
  /// (Jet error 3043) without touching the file; later writes work again.
  /// -1 turns the hook off. Process-wide.
  static void FailWriteAfter(int writes);

 private:
  PageFile() = default;
  void ReadHeader();
  void RawWrite(uint32_t number, const Bytes& data);

  std::string path_;
  int fd_ = -1;
  bool readOnly_ = true;
  bool dirty_ = false;
  size_t pageSize_ = 4096;
  uint32_t pageCount_ = 0;
  DatabaseHeader header_;
  int groupDepth_ = 0;
  uint32_t groupPageCount_ = 0;
  std::vector<std::pair<uint32_t, Bytes>> groupBefore_;
  std::unordered_set<uint32_t> groupSaved_;

  /// One cached page and its neighbours in the use order.
  struct CachedPage {
    uint32_t number = 0;
    Bytes bytes;
    uint32_t newer = kNone, older = kNone;
  };
  static constexpr uint32_t kNone = UINT32_MAX;
  /// The slot holding `number`, read from the file on a miss (or filled with `data`).
  CachedPage& Cached(uint32_t number, const Bytes* data);
  /// Forgets every cached page numbered `first` or more (the file was cut there).
  void ForgetFrom(uint32_t first);
  void Unlink(uint32_t slot);
  void PushNewest(uint32_t slot);
  void PushOldest(uint32_t slot);
  std::vector<CachedPage> slots_;
  std::unordered_map<uint32_t, uint32_t> slotOfPage_;
  uint32_t newest_ = kNone, oldest_ = kNone;
};

/// Pages the page cache holds: 4 MB of Jet 4 pages. Memory stays bounded
/// whatever the size of the file.
inline constexpr size_t kCachedPages = 1024;

/// Builds the decoded-then-masked page 0 of a new Jet 4 database.
Bytes BuildJet4HeaderPage(const DatabaseHeader& header);

}  // namespace bw::jet
