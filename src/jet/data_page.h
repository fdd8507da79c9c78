// Data pages: the slotted pages that hold rows (of tables, of long values and
// of usage maps). A page starts with a small header and a table of row
// offsets; rows are packed from the end of the page towards the header, row 0
// last in the page. This layer only splits pages into slots and packs slots
// back into pages; it does not know what a row means.
#pragma once

#include <cstdint>
#include <vector>

#include "jet/format.h"

namespace bw::jet {

/// One row slot of a data page: its offset flags and its bytes.
struct Slot {
  uint16_t flags = 0;  ///< row_flag::kDeleted / kOverflow bits
  Bytes data;
};

/// Owner field value of long-value pages (the letters "LVAL").
inline constexpr uint32_t kLvalOwner = 0x4C41564C;

size_t DataPageHeaderSize(bool jet4);
/// Number of row slots on the page.
uint16_t SlotCount(const Bytes& page, bool jet4);
/// The table definition page that owns a data page (kLvalOwner for LVAL pages).
inline uint32_t PageOwner(const Bytes& page) { return Get32(&page[4]); }
/// The raw offset entry of slot `i` (flags included).
uint16_t SlotEntry(const Bytes& page, bool jet4, int i);
/// True when the page's row table lies inside the page and every row starts
/// after that table and no later than the row before it (so rows never
/// overlap and never leave the page). Pages read from a file must pass before
/// any other function here is used on them.
bool SlotsAreSound(const Bytes& page, bool jet4);
/// Offset and length of slot `i`'s bytes (an empty slot where the offsets make no sense).
void SlotBounds(const Bytes& page, bool jet4, int i, size_t& start, size_t& length);
/// All slots of the page.
std::vector<Slot> ReadSlots(const Bytes& page, bool jet4);
/// Bytes the slots need on a page, header included.
size_t SpaceNeeded(const std::vector<Slot>& slots, bool jet4);
/// Packs slots into a fresh page owned by `owner`.
Bytes BuildDataPage(bool jet4, size_t pageSize, uint32_t owner, const std::vector<Slot>& slots);

}  // namespace bw::jet
