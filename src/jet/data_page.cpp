#include "jet/data_page.h"

#include <stdexcept>

#include "jet/jet_errors.h"

namespace bw::jet {

size_t DataPageHeaderSize(bool jet4) { return jet4 ? 14 : 10; }

uint16_t SlotCount(const Bytes& page, bool jet4) { return Get16(&page[jet4 ? 12 : 8]); }

uint16_t SlotEntry(const Bytes& page, bool jet4, int i) {
  return Get16(&page[DataPageHeaderSize(jet4) + 2 * size_t(i)]);
}

bool SlotsAreSound(const Bytes& page, bool jet4) {
  const size_t header = DataPageHeaderSize(jet4);
  if (page.size() < header) return false;
  // A row id has one byte for the row: a page holds at most 256 rows.
  if (SlotCount(page, jet4) > 256) return false;
  const size_t tableEnd = header + 2 * size_t(SlotCount(page, jet4));
  if (tableEnd > page.size()) return false;
  size_t previous = page.size();
  for (size_t i = 0; i < SlotCount(page, jet4); ++i) {
    size_t start = SlotEntry(page, jet4, int(i)) & row_flag::kOffsetMask;
    if (start < tableEnd || start > previous) return false;
    previous = start;
  }
  return true;
}

void SlotBounds(const Bytes& page, bool jet4, int i, size_t& start, size_t& length) {
  start = SlotEntry(page, jet4, i) & row_flag::kOffsetMask;
  size_t end = i == 0 ? page.size() : (SlotEntry(page, jet4, i - 1) & row_flag::kOffsetMask);
  size_t tableEnd = DataPageHeaderSize(jet4) + 2 * size_t(SlotCount(page, jet4));
  if (end > page.size() || start > end || start < tableEnd) {
    // Deleted rows may carry a stale offset; they are never read.
    start = end;
    length = 0;
    return;
  }
  length = end - start;
}

std::vector<Slot> ReadSlots(const Bytes& page, bool jet4) {
  std::vector<Slot> slots;
  int n = SlotCount(page, jet4);
  for (int i = 0; i < n; ++i) {
    size_t start, length;
    SlotBounds(page, jet4, i, start, length);
    Slot s;
    s.flags = SlotEntry(page, jet4, i) & ~row_flag::kOffsetMask;
    s.data.assign(page.begin() + long(start), page.begin() + long(start + length));
    slots.push_back(std::move(s));
  }
  return slots;
}

size_t SpaceNeeded(const std::vector<Slot>& slots, bool jet4) {
  size_t n = DataPageHeaderSize(jet4);
  for (const auto& s : slots) n += 2 + s.data.size();
  return n;
}

Bytes BuildDataPage(bool jet4, size_t pageSize, uint32_t owner, const std::vector<Slot>& slots) {
  size_t need = SpaceNeeded(slots, jet4);
  if (need > pageSize) throw std::logic_error("rows do not fit on one page");
  Bytes page(pageSize, 0);
  page[0] = 0x01;
  page[1] = 0x01;
  Put16(&page[2], uint16_t(pageSize - need));
  Put32(&page[4], owner);
  Put16(&page[jet4 ? 12 : 8], uint16_t(slots.size()));
  size_t end = pageSize;
  for (size_t i = 0; i < slots.size(); ++i) {
    size_t start = end - slots[i].data.size();
    std::copy(slots[i].data.begin(), slots[i].data.end(), page.begin() + long(start));
    Put16(&page[DataPageHeaderSize(jet4) + 2 * i], uint16_t(start | slots[i].flags));
    end = start;
  }
  return page;
}

}  // namespace bw::jet
