// Index keys: the bytes an index entry holds for a row's column values, in the
// form Jet compares them (plain byte order). Each column adds a flag byte
// (0x7F ascending, 0x80 descending; a null is the single byte 0x00, or 0xFF
// descending) and then its value: numbers big-endian with the sign bit turned
// so that byte order is number order, text as the weights of the General
// sort order (case folded, accents and punctuation after the letters).
// A descending column stores the ascending bytes inverted.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "jet/format.h"
#include "jet/row_codec.h"
#include "jet/tdef.h"

namespace bw::jet {

/// Appends the key bytes of one column value. Returns false, leaving `key`
/// unchanged, when the value has no exact key: a column type that cannot be
/// indexed here, or text holding a character whose weights are not known.
bool AppendColumnKey(Bytes& key, ColumnType type, const Value& value, bool ascending);

/// The General sort order key of a text (without the leading flag byte and
/// with its closing 00), or nothing when a character's weights are unknown.
std::optional<Bytes> TextSortKey(std::string_view utf8);

}  // namespace bw::jet
