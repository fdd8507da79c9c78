#include "jet/page_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cmath>

#include "jet/data_page.h"
#include "jet/jet_errors.h"

namespace bw::jet {
namespace {

// The header area of page 0 is XORed with the RC4 key stream of this key.
// Fixed by the file format: every Jet file ever written uses it.
constexpr uint32_t kHeaderRc4Key = 0x6B39DAC7;
constexpr size_t kHeaderMaskStart = 0x18;
constexpr size_t kJet3MaskLength = 126;
constexpr size_t kJet4MaskLength = 128;
constexpr size_t kVersionOffset = 0x14;
constexpr size_t kCodePageOffset = 0x3C;
constexpr size_t kPasswordOffset = 0x42;
constexpr size_t kJet3PasswordLength = 20;
constexpr size_t kJet4PasswordLength = 40;
constexpr size_t kJet3SortOrderOffset = 0x3A;
constexpr size_t kJet4SortOrderOffset = 0x6E;
constexpr size_t kCreationDateOffset = 0x72;
constexpr char kMagic[] = "Standard Jet DB";
constexpr size_t kPageZeroTableOffset = 0xE00;
constexpr size_t kPageZeroTableEntries = 256;
// The dates an OLE date can hold: 1 January 100 to 31 December 9999.
constexpr double kFirstOleDate = -657434.0;
constexpr double kLastOleDate = 2958466.0;

std::atomic<int> g_writesLeft{-1};
std::atomic<int> g_writesBeforeFailure{-1};

std::array<uint8_t, kJet4MaskLength> HeaderMask() {
  std::array<uint8_t, 256> s;
  for (int i = 0; i < 256; ++i) s[i] = uint8_t(i);
  uint8_t key[4];
  Put32(key, kHeaderRc4Key);
  for (int i = 0, j = 0; i < 256; ++i) {
    j = (j + s[i] + key[i % 4]) & 0xFF;
    std::swap(s[i], s[j]);
  }
  std::array<uint8_t, kJet4MaskLength> out;
  int i = 0, j = 0;
  for (auto& b : out) {
    i = (i + 1) & 0xFF;
    j = (j + s[i]) & 0xFF;
    std::swap(s[i], s[j]);
    b = s[(s[i] + s[j]) & 0xFF];
  }
  return out;
}

void ApplyHeaderMask(Bytes& page, size_t length) {
  static const auto mask = HeaderMask();
  for (size_t i = 0; i < length; ++i) page[kHeaderMaskStart + i] ^= mask[i];
}

/// Jet 4 also masks the password with the whole days of the creation date
/// (which must be a date: see IsOleDate).
std::array<uint8_t, 4> DateMask(double creationDate) {
  std::array<uint8_t, 4> m;
  Put32(m.data(), uint32_t(int32_t(creationDate)));
  return m;
}

bool IsOleDate(double d) { return d >= kFirstOleDate && d < kLastOleDate; }

}  // namespace

void PageFile::StopWritesAfter(int writes) { g_writesLeft = writes; }
void PageFile::FailWriteAfter(int writes) { g_writesBeforeFailure = writes; }

void PageFile::Begin() {
  if (groupDepth_++ > 0) return;
  groupPageCount_ = pageCount_;
  groupBefore_.clear();
  groupSaved_.clear();
}

void PageFile::Commit() {
  if (groupDepth_ > 0 && --groupDepth_ == 0) {
    groupBefore_.clear();
    groupSaved_.clear();
  }
}

void PageFile::Rollback() {
  if (groupDepth_ == 0) return;
  if (--groupDepth_ > 0) return;  // the outermost group puts the file back
  if (fd_ < 0) return;
  // Restores go straight to the file: the test hooks stop only the writes
  // being undone.
  for (auto it = groupBefore_.rbegin(); it != groupBefore_.rend(); ++it) {
    ssize_t put = ::pwrite(fd_, it->second.data(), pageSize_, off_t(it->first) * off_t(pageSize_));
    if (put != ssize_t(pageSize_)) ThrowDiskIo(path_);
    Cached(it->first, &it->second);
  }
  if (pageCount_ > groupPageCount_) {
    if (::ftruncate(fd_, off_t(groupPageCount_) * off_t(pageSize_)) != 0) ThrowDiskIo(path_);
    pageCount_ = groupPageCount_;
    ForgetFrom(pageCount_);
  }
  groupBefore_.clear();
  groupSaved_.clear();
}

std::unique_ptr<PageFile> PageFile::Open(const std::string& path, bool exclusive, bool readOnly) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) ThrowFileNotFound(path);
  std::unique_ptr<PageFile> f(new PageFile());
  f->path_ = path;
  f->readOnly_ = readOnly;
  f->fd_ = ::open(path.c_str(), (readOnly ? O_RDONLY : O_RDWR) | O_CLOEXEC);
  if (f->fd_ < 0) ThrowCannotOpenFile(path);
  if (::flock(f->fd_, (exclusive ? LOCK_EX : LOCK_SH) | LOCK_NB) != 0) {
    ::close(f->fd_);
    f->fd_ = -1;
    ThrowFileInUse(path);
  }
  f->ReadHeader();
  return f;
}

std::unique_ptr<PageFile> PageFile::Create(const std::string& path, const DatabaseHeader& header) {
  std::unique_ptr<PageFile> f(new PageFile());
  f->path_ = path;
  f->readOnly_ = false;
  f->fd_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
  if (f->fd_ < 0) {
    if (errno == EEXIST) ThrowJet(3204, "Database already exists.");
    ThrowDiskIo(path);
  }
  if (::flock(f->fd_, LOCK_EX | LOCK_NB) != 0) ThrowFileInUse(path);
  f->header_ = header;
  f->header_.version = JetVersion::kJet4;
  f->pageSize_ = 4096;
  f->AppendPage(BuildJet4HeaderPage(f->header_));
  return f;
}

PageFile::~PageFile() {
  try {
    Close();
  } catch (...) {
  }
}

void PageFile::Close() {
  if (fd_ < 0) return;
  if (dirty_) ::fsync(fd_);
  ::flock(fd_, LOCK_UN);
  ::close(fd_);
  fd_ = -1;
}

void PageFile::ReadHeader() {
  Bytes page(4096);
  ssize_t got = ::pread(fd_, page.data(), page.size(), 0);
  if (got < 0x100 || std::memcmp(page.data() + 4, kMagic, sizeof kMagic) != 0) ThrowUnrecognizedFormat(path_);
  uint8_t v = page[kVersionOffset];
  if (v == 0) {
    header_.version = JetVersion::kJet3;
    pageSize_ = 2048;
  } else if (v == 1) {
    header_.version = JetVersion::kJet4;
    pageSize_ = 4096;
  } else {
    ThrowUnrecognizedFormat(path_);
  }
  off_t size = ::lseek(fd_, 0, SEEK_END);
  if (size < off_t(pageSize_) * 2) ThrowUnrecognizedFormat(path_);
  pageCount_ = uint32_t(size / off_t(pageSize_));
  page.resize(pageSize_);
  ApplyHeaderMask(page, jet4() ? kJet4MaskLength : kJet3MaskLength);
  header_.codePage = Get16(&page[kCodePageOffset]);
  header_.password.clear();
  if (jet4()) {
    header_.sortOrder = Get32(&page[kJet4SortOrderOffset]);
    header_.creationDate = GetDouble(&page[kCreationDateOffset]);
    if (!IsOleDate(header_.creationDate)) ThrowUnrecognizedFormat(path_);
    auto dm = DateMask(header_.creationDate);
    for (size_t i = 0; i < kJet4PasswordLength; i += 2) {
      char16_t c = char16_t((page[kPasswordOffset + i] ^ dm[i % 4]) |
                            ((page[kPasswordOffset + i + 1] ^ dm[(i + 1) % 4]) << 8));
      if (c == 0) break;
      header_.password.push_back(c);
    }
  } else {
    header_.sortOrder = Get16(&page[kJet3SortOrderOffset]);
    for (size_t i = 0; i < kJet3PasswordLength && page[kPasswordOffset + i]; ++i)
      header_.password.push_back(char16_t(page[kPasswordOffset + i]));
  }
}

bool PageFile::PasswordMatches(const std::string& givenUtf8) const {
  if (header_.password.empty()) return true;
  return Utf8ToUtf16(givenUtf8) == header_.password;  // Jet passwords are case-sensitive
}

const Bytes& PageFile::Page(uint32_t number) {
  if (fd_ < 0) ThrowObjectInvalid();
  if (number >= pageCount_) ThrowCorrupt(path_);
  return Cached(number, nullptr).bytes;
}

void PageFile::Unlink(uint32_t slot) {
  CachedPage& c = slots_[slot];
  if (c.newer != kNone) slots_[c.newer].older = c.older;
  else newest_ = c.older;
  if (c.older != kNone) slots_[c.older].newer = c.newer;
  else oldest_ = c.newer;
  c.newer = c.older = kNone;
}

void PageFile::PushNewest(uint32_t slot) {
  CachedPage& c = slots_[slot];
  c.older = newest_;
  c.newer = kNone;
  if (newest_ != kNone) slots_[newest_].newer = slot;
  newest_ = slot;
  if (oldest_ == kNone) oldest_ = slot;
}

void PageFile::PushOldest(uint32_t slot) {
  CachedPage& c = slots_[slot];
  c.bytes.clear();
  c.number = kNone;
  c.newer = oldest_;
  c.older = kNone;
  if (oldest_ != kNone) slots_[oldest_].older = slot;
  oldest_ = slot;
  if (newest_ == kNone) newest_ = slot;
}

void PageFile::ForgetFrom(uint32_t first) {
  for (auto it = slotOfPage_.begin(); it != slotOfPage_.end();) {
    if (it->first >= first) {
      Unlink(it->second);
      PushOldest(it->second);
      it = slotOfPage_.erase(it);
    } else {
      ++it;
    }
  }
}

PageFile::CachedPage& PageFile::Cached(uint32_t number, const Bytes* data) {
  auto it = slotOfPage_.find(number);
  if (it != slotOfPage_.end()) {
    uint32_t slot = it->second;
    if (newest_ != slot) {
      Unlink(slot);
      PushNewest(slot);
    }
    if (data) slots_[slot].bytes = *data;
    return slots_[slot];
  }
  uint32_t slot;
  // Room for every slot at once: references to cached pages never move.
  if (slots_.capacity() < kCachedPages) slots_.reserve(kCachedPages);
  if (slots_.size() < kCachedPages) {
    slot = uint32_t(slots_.size());
    slots_.emplace_back();
  } else {
    slot = oldest_;
    Unlink(slot);
    if (slots_[slot].number != kNone) slotOfPage_.erase(slots_[slot].number);
  }
  CachedPage& c = slots_[slot];
  c.number = number;
  if (data) {
    c.bytes = *data;
  } else {
    c.bytes.resize(pageSize_);
    ssize_t got = ::pread(fd_, c.bytes.data(), pageSize_, off_t(number) * off_t(pageSize_));
    // Everything later reads a data page's rows through its row table: a
    // table that leaves the page, or rows that overlap, are damage.
    if (got != ssize_t(pageSize_) || (c.bytes[0] == page_type::kData && !SlotsAreSound(c.bytes, jet4()))) {
      PushOldest(slot);
      ThrowCorrupt(path_);
    }
  }
  slotOfPage_[number] = slot;
  PushNewest(slot);
  return c;
}

void PageFile::RawWrite(uint32_t number, const Bytes& data) {
  if (fd_ < 0) ThrowObjectInvalid();
  if (readOnly_) ThrowReadOnly("");
  if (data.size() != pageSize_) throw std::logic_error("page of wrong size");
  int left = g_writesLeft.load();
  if (left == 0) throw WriteStopped();
  if (left > 0) g_writesLeft = left - 1;
  int beforeFailure = g_writesBeforeFailure.load();
  if (beforeFailure >= 0) {
    g_writesBeforeFailure = beforeFailure - 1;
    if (beforeFailure == 0) ThrowDiskIo(path_);
  }
  ssize_t put = ::pwrite(fd_, data.data(), pageSize_, off_t(number) * off_t(pageSize_));
  if (put != ssize_t(pageSize_)) ThrowDiskIo(path_);
  dirty_ = true;
}

void PageFile::WritePage(uint32_t number, const Bytes& data) {
  if (number >= pageCount_) throw std::logic_error("write past the end of the page file");
  if (groupDepth_ > 0 && number < groupPageCount_ && !groupSaved_.count(number)) {
    groupBefore_.emplace_back(number, Page(number));
    groupSaved_.insert(number);
  }
  RawWrite(number, data);
  Cached(number, &data);
}

uint32_t PageFile::AppendPage(const Bytes& data) {
  uint32_t number = pageCount_;
  RawWrite(number, data);
  ++pageCount_;
  Cached(number, &data);
  return number;
}

Bytes BuildJet4HeaderPage(const DatabaseHeader& header) {
  Bytes page(4096, 0);
  page[1] = 0x01;
  std::memcpy(&page[4], kMagic, sizeof kMagic);
  page[kVersionOffset] = 0x01;
  // The opening of the masked area as Access 2000 writes it.
  static const uint8_t kAreaStart[] = {0x00, 0x01, 0x00, 0x00, 0x01, 0x01, 0x00, 0x00, 0x02, 0x00, 0x00,
                                       0x00, 0x03, 0x00, 0x00, 0x00, 0x04, 0x00, 0x00, 0x00, 0x05};
  std::memcpy(&page[kHeaderMaskStart], kAreaStart, sizeof kAreaStart);
  Put16(&page[kCodePageOffset], header.codePage);
  auto dm = DateMask(header.creationDate);
  for (size_t i = 0; i < kJet4PasswordLength; i += 2) {
    char16_t c = i / 2 < header.password.size() ? header.password[i / 2] : 0;
    page[kPasswordOffset + i] = uint8_t(c) ^ dm[i % 4];
    page[kPasswordOffset + i + 1] = uint8_t(c >> 8) ^ dm[(i + 1) % 4];
  }
  page[0x6A] = 0xAA;  // constant in every Access 2000-2003 file seen
  page[0x6B] = 0x21;
  Put32(&page[kJet4SortOrderOffset], header.sortOrder);
  PutDouble(&page[kCreationDateOffset], header.creationDate);
  ApplyHeaderMask(page, kJet4MaskLength);
  // After the masked area: a code-page word and the engine version text.
  Put32(&page[0x98], 0x0654);
  std::memcpy(&page[0x9C], "4.0", 4);
  // The last 512 bytes: a table of 256 two-byte entries, not masked. A file
  // Access 2000 has just made holds 0x0101 in the first and 0x0100 in every
  // other (Access moves the first two as it uses the file).
  for (size_t i = 0; i < kPageZeroTableEntries; ++i)
    Put16(&page[kPageZeroTableOffset + 2 * i], i == 0 ? 0x0101 : 0x0100);
  return page;
}

}  // namespace bw::jet
