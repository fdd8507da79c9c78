#include "jet/usage_map.h"

#include <algorithm>
#include <stdexcept>

#include "jet/data_page.h"
#include "jet/jet_errors.h"

namespace bw::jet {
namespace {
constexpr uint8_t kInline = 0x00;
constexpr uint8_t kIndirect = 0x01;
constexpr size_t kMapPageHeader = 4;

bool BitAt(const uint8_t* bits, uint32_t i) { return (bits[i / 8] >> (i % 8)) & 1; }
void SetBit(uint8_t* bits, uint32_t i, bool on) {
  if (on)
    bits[i / 8] |= uint8_t(1u << (i % 8));
  else
    bits[i / 8] &= uint8_t(~(1u << (i % 8)));
}
}  // namespace

Bytes BuildInlineMap(size_t length, uint32_t start, const std::vector<uint32_t>& pages, bool fillRest) {
  Bytes row(length, 0);
  row[0] = kInline;
  Put32(&row[1], start);
  for (uint32_t p : pages) {
    if (p < start || p - start >= (length - 5) * 8) throw std::logic_error("page outside inline map");
    SetBit(&row[5], p - start, true);
  }
  (void)fillRest;
  return row;
}

UsageMap::UsageMap(PageFile& file, RowId where, bool outOfRangeMeansSet)
    : file_(file), where_(where), outOfRangeMeansSet_(outOfRangeMeansSet) {}

UsageMap::Location UsageMap::Locate() {
  const Bytes& page = file_.Page(where_.page);
  if (page[0] != page_type::kData || where_.row >= SlotCount(page, file_.jet4())) ThrowCorrupt(file_.path());
  size_t start, length;
  SlotBounds(page, file_.jet4(), where_.row, start, length);
  if (length < 5) ThrowCorrupt(file_.path());
  return {start, length};
}

uint32_t UsageMap::InlineStart(const uint8_t* row, size_t length) const {
  uint32_t start = Get32(row + 1);
  if (uint64_t(start) + (length - 5) * 8 > (uint64_t(1) << 32)) ThrowCorrupt(file_.path());
  return start;
}

const Bytes* UsageMap::BitmapPage(uint32_t number) {
  if (number == 0) return nullptr;
  if (number >= file_.pageCount()) ThrowCorrupt(file_.path());
  const Bytes& bits = file_.Page(number);
  if (bits[0] != page_type::kUsageMap) ThrowCorrupt(file_.path());
  return &bits;
}

bool UsageMap::Has(uint32_t p) {
  Location loc = Locate();
  const Bytes& page = file_.Page(where_.page);
  const uint8_t* row = &page[loc.offset];
  if (row[0] == kInline) {
    uint32_t start = InlineStart(row, loc.length);
    uint32_t bits = uint32_t(loc.length - 5) * 8;
    if (p < start || p - start >= bits) return outOfRangeMeansSet_;
    return BitAt(row + 5, p - start);
  }
  uint32_t region = p / BitsPerMapPage();
  if (1 + 4 * (size_t(region) + 1) > loc.length) return outOfRangeMeansSet_;
  const Bytes* bits = BitmapPage(Get32(row + 1 + 4 * region));
  if (!bits) return outOfRangeMeansSet_;
  return BitAt(&(*bits)[kMapPageHeader], p % BitsPerMapPage());
}

std::vector<uint32_t> UsageMap::Pages() {
  Location loc = Locate();
  Bytes row(file_.Page(where_.page).begin() + long(loc.offset),
            file_.Page(where_.page).begin() + long(loc.offset + loc.length));
  std::vector<uint32_t> out;
  if (row[0] == kInline) {
    uint32_t start = InlineStart(row.data(), loc.length);
    for (uint32_t i = 0; i < (loc.length - 5) * 8; ++i)
      if (BitAt(&row[5], i)) out.push_back(start + i);
  } else if (row[0] == kIndirect) {
    // Only pages the file has: a region past its end holds nothing to walk.
    const uint64_t per = BitsPerMapPage();
    for (uint32_t region = 0; 1 + 4 * (size_t(region) + 1) <= loc.length && region * per < file_.pageCount();
         ++region) {
      const Bytes* bits = BitmapPage(Get32(&row[1 + 4 * region]));
      if (!bits) continue;
      for (uint64_t i = 0; i < per && region * per + i < file_.pageCount(); ++i)
        if (BitAt(&(*bits)[kMapPageHeader], uint32_t(i))) out.push_back(uint32_t(region * per + i));
    }
  } else {
    ThrowCorrupt(file_.path());
  }
  return out;
}

void UsageMap::Set(uint32_t p, bool on, const Allocator& allocate) {
  Location loc = Locate();
  Bytes page = file_.Page(where_.page);
  uint8_t* row = &page[loc.offset];
  if (row[0] == kInline) {
    uint32_t start = InlineStart(row, loc.length);
    uint32_t bits = uint32_t(loc.length - 5) * 8;
    if (p >= start && p - start < bits) {
      if (BitAt(row + 5, p - start) == on) return;
      SetBit(row + 5, p - start, on);
      file_.WritePage(where_.page, page);
      return;
    }
    if (on == outOfRangeMeansSet_) return;
    std::vector<uint32_t> set;
    for (uint32_t i = 0; i < bits; ++i)
      if (BitAt(row + 5, i)) set.push_back(start + i);
    if (!outOfRangeMeansSet_) {
      // Move the window when every page still fits into one.
      uint32_t lo = std::min(p, set.empty() ? p : set.front());
      uint32_t hi = std::max(p, set.empty() ? p : set.back());
      if (hi - lo < bits) {
        set.push_back(p);
        Bytes fresh = BuildInlineMap(loc.length, lo, set, false);
        std::copy(fresh.begin(), fresh.end(), page.begin() + long(loc.offset));
        file_.WritePage(where_.page, page);
        return;
      }
    }
    ConvertToIndirect(set, p, on, allocate);
    return;
  }
  if (row[0] != kIndirect) ThrowCorrupt(file_.path());
  uint32_t region = p / BitsPerMapPage();
  if (1 + 4 * (region + 1) > loc.length) ThrowJet(3026, "Not enough space on disk.");
  uint32_t mapPage = Get32(row + 1 + 4 * region);
  if (BitmapPage(mapPage)) {
    Bytes bits = file_.Page(mapPage);
    if (BitAt(&bits[kMapPageHeader], p % BitsPerMapPage()) == on) return;
    SetBit(&bits[kMapPageHeader], p % BitsPerMapPage(), on);
    file_.WritePage(mapPage, bits);
    return;
  }
  if (on == outOfRangeMeansSet_) return;
  Bytes bits(file_.pageSize(), outOfRangeMeansSet_ ? 0xFF : 0x00);
  bits[0] = page_type::kUsageMap;
  bits[1] = 0x01;
  bits[2] = bits[3] = 0;
  SetBit(&bits[kMapPageHeader], p % BitsPerMapPage(), on);
  uint32_t newPage;
  if (allocate) {
    newPage = allocate(bits);
  } else {
    newPage = file_.pageCount();
    if (newPage / BitsPerMapPage() == region) SetBit(&bits[kMapPageHeader], newPage % BitsPerMapPage(), false);
    file_.AppendPage(bits);
  }
  Put32(row + 1 + 4 * region, newPage);
  file_.WritePage(where_.page, page);
}

void UsageMap::ConvertToIndirect(const std::vector<uint32_t>& setPages, uint32_t p, bool on,
                                 const Allocator& allocate) {
  Location loc = Locate();
  Bytes page = file_.Page(where_.page);
  uint32_t oldStart = InlineStart(&page[loc.offset], loc.length);
  uint32_t oldBits = uint32_t(loc.length - 5) * 8;
  uint32_t per = BitsPerMapPage();
  uint32_t regions = uint32_t((loc.length - 1) / 4);
  // Regions that need a bitmap page: those holding set pages, and p's.
  std::vector<uint32_t> needed;
  auto need = [&](uint32_t pg) {
    uint32_t r = pg / per;
    if (r >= regions) ThrowJet(3026, "Not enough space on disk.");
    if (std::find(needed.begin(), needed.end(), r) == needed.end()) needed.push_back(r);
  };
  for (uint32_t s : setPages) need(s);
  need(p);
  if (outOfRangeMeansSet_) {
    // The old window's clear bits must survive too.
    for (uint32_t i = 0; i < oldBits; i += 8) need(oldStart + i);
  }
  std::sort(needed.begin(), needed.end());
  // Page numbers the bitmap pages will get when appended by ourselves.
  uint32_t nextNew = file_.pageCount();
  std::vector<uint32_t> pointers(regions, 0);
  for (uint32_t r : needed) {
    Bytes bits(file_.pageSize(), 0);
    bits[0] = page_type::kUsageMap;
    bits[1] = 0x01;
    for (uint32_t i = 0; i < per; ++i) {
      uint32_t pg = r * per + i;
      bool v;
      if (pg >= oldStart && pg - oldStart < oldBits)
        v = std::binary_search(setPages.begin(), setPages.end(), pg);
      else
        v = outOfRangeMeansSet_;
      if (pg == p) v = on;
      SetBit(&bits[kMapPageHeader], i, v);
    }
    if (allocate) {
      pointers[r] = allocate(bits);
    } else {
      // The free-page map marks its own new bitmap pages as used.
      for (uint32_t k = 0; k < needed.size(); ++k) {
        uint32_t own = nextNew + k;
        if (own / per == r) SetBit(&bits[kMapPageHeader], own % per, false);
      }
      pointers[r] = file_.AppendPage(bits);
    }
  }
  page[loc.offset] = kIndirect;
  for (uint32_t r = 0; r < regions; ++r) Put32(&page[loc.offset + 1 + 4 * r], pointers[r]);
  file_.WritePage(where_.page, page);
}

}  // namespace bw::jet
