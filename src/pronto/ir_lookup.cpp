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
  Forget();
  devices_.clear();
  label_ = table.ColumnIndex("Label");
  button_ = table.ColumnIndex("ButtonID");
  function_ = table.ColumnIndex("FunctionID");
  device_ = table.ColumnIndex("DeviceID");
  if (label_ < 0 || button_ < 0 || function_ < 0 || device_ < 0) return false;
  // The device column is read on its own from every row: it must sit at a fixed place.
  if (!WholeNumberColumn(table, device_) || !table.def().columns[size_t(device_)].fixed() ||
      !ShortColumn(table, label_) || !ShortColumn(table, button_) || !ShortColumn(table, function_))
    return false;
  try {
    // Row ids grow in table order, so each device's list comes out sorted.
    table.ScanFixedColumn(device_, [this](RowId id, const Value& device) {
      devices_[device.AsInteger()].rows.push_back(id.Packed());
    });
  } catch (...) {
    // A row that cannot be read is left for the walk to meet and report.
    devices_.clear();
    return false;
  }
  Synced(table);
  return true;
}

uint64_t CodeRowIndex::KeyOf(const std::vector<Value>& values) const {
  return Hash(UCase(values[size_t(label_)].AsText()), UCase(values[size_t(button_)].AsText()),
              UCase(values[size_t(function_)].AsText()), values[size_t(device_)].AsInteger());
}

bool CodeRowIndex::Matches(const std::vector<Value>& v, const std::string& label, const std::string& button,
                           const std::string& function, int64_t device) const {
  return UCase(v[size_t(label_)].AsText()) == label && UCase(v[size_t(button_)].AsText()) == button &&
         UCase(v[size_t(function_)].AsText()) == function && v[size_t(device_)].AsInteger() == device;
}

std::optional<RowId> CodeRowIndex::Find(jet::Table& table, const std::string& label, const std::string& button,
                                        const std::string& function, int64_t device) {
  auto entry = devices_.find(device);
  if (entry == devices_.end()) return std::nullopt;
  DeviceRows& d = entry->second;
  if (!d.keyed) {
    // The first ask for this device: its rows' texts are read now, once.
    d.byKey.reserve(d.rows.size());
    for (uint32_t packed : d.rows) d.byKey.emplace(KeyOf(table.ReadRow(RowId::FromPacked(packed), false)), packed);
    d.keyed = true;
  }
  auto [from, to] = d.byKey.equal_range(Hash(label, button, function, device));
  std::vector<uint32_t> candidates;
  for (auto it = from; it != to; ++it) candidates.push_back(it->second);
  // Row ids grow in table order: pages in page order, rows in slot order.
  std::sort(candidates.begin(), candidates.end());
  for (uint32_t packed : candidates) {
    const RowId id = RowId::FromPacked(packed);
    if (Matches(table.ReadRow(id, false), label, button, function, device)) return id;
  }
  return std::nullopt;
}

void CodeRowIndex::Add(RowId id, const std::vector<Value>& values) {
  DeviceRows& d = devices_[values[size_t(device_)].AsInteger()];
  d.rows.insert(std::upper_bound(d.rows.begin(), d.rows.end(), id.Packed()), id.Packed());
  if (d.keyed) d.byKey.emplace(KeyOf(values), id.Packed());
}

void CodeRowIndex::Remove(RowId id, const std::vector<Value>& values) {
  auto entry = devices_.find(values[size_t(device_)].AsInteger());
  if (entry == devices_.end()) return;
  DeviceRows& d = entry->second;
  auto at = std::lower_bound(d.rows.begin(), d.rows.end(), id.Packed());
  if (at != d.rows.end() && *at == id.Packed()) d.rows.erase(at);
  if (!d.keyed) return;
  auto [from, to] = d.byKey.equal_range(KeyOf(values));
  for (auto it = from; it != to; ++it) {
    if (it->second == id.Packed()) {
      d.byKey.erase(it);
      return;
    }
  }
}

// ---- "Devices" ----

bool DeviceRowIndex::Build(jet::Table& table) {
  Forget();
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
  Synced(table);
  return true;
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
