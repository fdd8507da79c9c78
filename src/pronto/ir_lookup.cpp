// Lookup structures over "Devices" and "IR Codes". See ir_lookup.h.
#include "pronto/ir_lookup.h"

#include <algorithm>

#include "runtime/text.h"

namespace bw {
namespace {

using jet::ColumnType;
using jet::RowId;
using jet::Value;

/// Columns whose values compare as whole numbers without ever failing.
bool WholeNumberColumn(const jet::Table& table, int column) {
  const ColumnType t = table.def().columns[size_t(column)].type;
  return t == ColumnType::kByte || t == ColumnType::kInteger || t == ColumnType::kLong;
}

/// Columns kept inside the row, which a read without long values still sees.
bool ShortColumn(const jet::Table& table, int column) {
  const ColumnType t = table.def().columns[size_t(column)].type;
  return t != ColumnType::kMemo && t != ColumnType::kOle;
}

/// FNV-1a over the parts, each closed by a byte no text part holds.
uint64_t Hash(const std::string& a, const std::string& b, const std::string& c, int64_t d) {
  uint64_t h = 1469598103934665603ull;
  auto mix = [&h](const void* data, size_t n) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (size_t i = 0; i < n; ++i) h = (h ^ bytes[i]) * 1099511628211ull;
  };
  const unsigned char end = 0xFF;
  for (const std::string* part : {&a, &b, &c}) {
    mix(part->data(), part->size());
    mix(&end, 1);
  }
  mix(&d, sizeof d);
  return h;
}

}  // namespace

// ---- "IR Codes" ----

bool CodeRowIndex::Build(jet::Table& table) {
  table_ = nullptr;
  rows_.clear();
  label_ = table.ColumnIndex("Label");
  button_ = table.ColumnIndex("ButtonID");
  function_ = table.ColumnIndex("FunctionID");
  device_ = table.ColumnIndex("DeviceID");
  if (label_ < 0 || button_ < 0 || function_ < 0 || device_ < 0) return false;
  if (!WholeNumberColumn(table, device_) || !ShortColumn(table, label_) || !ShortColumn(table, button_) ||
      !ShortColumn(table, function_))
    return false;
  try {
    const std::vector<RowId> ids = table.RowIds();
    rows_.reserve(ids.size());
    for (RowId id : ids) rows_.emplace(KeyOf(table.ReadRow(id, false)), id.Packed());
  } catch (...) {
    // A row that cannot be read is left for the walk to meet and report.
    rows_.clear();
    return false;
  }
  table_ = &table;
  Synced(table);
  return true;
}

bool CodeRowIndex::Current(const jet::Table& table) const {
  return table_ == &table && changeCount_ == table.changeCount();
}

uint64_t CodeRowIndex::KeyOf(const std::vector<Value>& values) const {
  return Hash(UCase(values[size_t(label_)].AsText()), UCase(values[size_t(button_)].AsText()),
              UCase(values[size_t(function_)].AsText()), values[size_t(device_)].AsInteger());
}

std::optional<RowId> CodeRowIndex::Find(jet::Table& table, const std::string& label, const std::string& button,
                                        const std::string& function, int64_t device) const {
  auto [from, to] = rows_.equal_range(Hash(label, button, function, device));
  std::vector<uint32_t> candidates;
  for (auto it = from; it != to; ++it) candidates.push_back(it->second);
  // Row ids grow in table order: pages in page order, rows in slot order.
  std::sort(candidates.begin(), candidates.end());
  for (uint32_t packed : candidates) {
    const RowId id = RowId::FromPacked(packed);
    const std::vector<Value> v = table.ReadRow(id, false);
    if (UCase(v[size_t(label_)].AsText()) == label && UCase(v[size_t(button_)].AsText()) == button &&
        UCase(v[size_t(function_)].AsText()) == function && v[size_t(device_)].AsInteger() == device)
      return id;
  }
  return std::nullopt;
}

void CodeRowIndex::Add(RowId id, const std::vector<Value>& values) { rows_.emplace(KeyOf(values), id.Packed()); }

void CodeRowIndex::Remove(RowId id, const std::vector<Value>& values) {
  auto [from, to] = rows_.equal_range(KeyOf(values));
  for (auto it = from; it != to; ++it) {
    if (it->second == id.Packed()) {
      rows_.erase(it);
      return;
    }
  }
}

// ---- "Devices" ----

bool DeviceRowIndex::Build(jet::Table& table) {
  table_ = nullptr;
  byModel_.clear();
  all_.clear();
  model_ = table.ColumnIndex("Model");
  device_ = table.ColumnIndex("DeviceID");
  if (model_ < 0 || device_ < 0 || !WholeNumberColumn(table, device_) || !ShortColumn(table, model_)) return false;
  try {
    for (RowId id : table.RowIds()) Add(id, table.ReadRow(id, false));
  } catch (...) {
    byModel_.clear();
    all_.clear();
    return false;
  }
  table_ = &table;
  Synced(table);
  return true;
}

bool DeviceRowIndex::Current(const jet::Table& table) const {
  return table_ == &table && changeCount_ == table.changeCount();
}

std::optional<RowId> DeviceRowIndex::LastOfModel(const std::string& model) const {
  auto it = byModel_.find(model);
  if (it == byModel_.end() || it->second.empty()) return std::nullopt;
  return RowId::FromPacked(*it->second.rbegin());
}

std::optional<RowId> DeviceRowIndex::Last() const {
  if (all_.empty()) return std::nullopt;
  return RowId::FromPacked(*all_.rbegin());
}

void DeviceRowIndex::Add(RowId id, const std::vector<Value>& values) {
  byModel_[UCase(values[size_t(model_)].AsText())].insert(id.Packed());
  all_.insert(id.Packed());
}

}  // namespace bw
