#include "jet/recordset.h"

#include <algorithm>

#include "jet/jet_errors.h"

namespace bw::jet {

Recordset::Recordset(Table& table) : table_(&table) {
  rows_ = table.RowIds();
  pos_ = rows_.empty() ? 0 : 0;
}

void Recordset::CheckOpen() const {
  if (!table_) ThrowObjectInvalid();
}

void Recordset::CheckCurrent() const {
  CheckOpen();
  if (pos_ < 0 || pos_ >= long(rows_.size()) || currentDeleted_) ThrowNoCurrentRecord();
}

bool Recordset::Eof() const {
  CheckOpen();
  return pos_ >= long(rows_.size());
}

bool Recordset::Bof() const {
  CheckOpen();
  return pos_ < 0 || rows_.empty();
}

void Recordset::MoveFirst() {
  Forget();
  CheckOpen();
  if (rows_.empty()) ThrowNoCurrentRecord();
  pos_ = 0;
  currentDeleted_ = false;
}

void Recordset::MoveLast() {
  Forget();
  CheckOpen();
  if (rows_.empty()) ThrowNoCurrentRecord();
  pos_ = long(rows_.size()) - 1;
  currentDeleted_ = false;
}

void Recordset::MoveNext() {
  Forget();
  CheckOpen();
  if (pos_ >= long(rows_.size())) ThrowNoCurrentRecord();
  ++pos_;
  currentDeleted_ = false;
}

void Recordset::MovePrevious() {
  Forget();
  CheckOpen();
  if (pos_ < 0) ThrowNoCurrentRecord();
  --pos_;
  currentDeleted_ = false;
}

RowId Recordset::Bookmark() const {
  CheckCurrent();
  return rows_[size_t(pos_)];
}

void Recordset::SetBookmark(RowId id) {
  Forget();
  CheckOpen();
  auto it = std::find(rows_.begin(), rows_.end(), id);
  if (it == rows_.end()) ThrowJet(3159, "Not a valid bookmark.");
  pos_ = long(it - rows_.begin());
  currentDeleted_ = false;
}

RowId Recordset::LastModified() const {
  CheckOpen();
  if (!hasLastModified_) ThrowNoCurrentRecord();
  return lastModified_;
}

int Recordset::Column(const std::string& name) const {
  CheckOpen();
  for (const auto& [asked, index] : askedNames_)
    if (asked == name) return index;
  int k = table_->ColumnIndex(name);
  if (k < 0) ThrowItemNotFound();
  askedNames_.emplace_back(name, k);
  return k;
}

const Value& Recordset::Field(const std::string& name) const {
  int k = Column(name);
  if (mode_ != Mode::kNone) return buffer_[size_t(k)];
  CheckCurrent();
  if (decodedPos_ != pos_) {
    decoded_ = table_->ReadRow(rows_[size_t(pos_)]);
    decodedPos_ = pos_;
  }
  return decoded_[size_t(k)];
}

std::vector<std::string> Recordset::FieldNames() const {
  CheckOpen();
  std::vector<std::string> names;
  for (const auto& c : table_->def().columns) names.push_back(c.name);
  return names;
}

void Recordset::AddNew() {
  CheckOpen();
  table_->CheckWritable();
  mode_ = Mode::kAddNew;
  buffer_.assign(table_->def().columns.size(), Value::Null());
}

void Recordset::Edit() {
  CheckCurrent();
  table_->CheckWritable();
  buffer_ = table_->ReadRow(rows_[size_t(pos_)]);
  mode_ = Mode::kEdit;
}

void Recordset::SetField(const std::string& name, const Value& value) {
  int k = Column(name);
  if (mode_ == Mode::kNone) ThrowJet(3020, "Update or CancelUpdate without AddNew or Edit.");
  buffer_[size_t(k)] = CoerceTo(value, table_->def().columns[size_t(k)]);
}

void Recordset::Update() {
  Forget();
  CheckOpen();
  if (mode_ == Mode::kNone) ThrowUpdateWithoutAddNew();
  if (mode_ == Mode::kAddNew) {
    RowId id = table_->Insert(buffer_);
    rows_.push_back(id);
    // As in DAO the current row does not change; a recordset at EOF stays there.
    if (pos_ == long(rows_.size()) - 1) ++pos_;
    lastModified_ = id;
  } else {
    RowId id = rows_[size_t(pos_)];
    table_->Update(id, buffer_);
    lastModified_ = id;
  }
  hasLastModified_ = true;
  mode_ = Mode::kNone;
  buffer_.clear();
}

void Recordset::CancelUpdate() {
  CheckOpen();
  if (mode_ == Mode::kNone) ThrowUpdateWithoutAddNew();
  mode_ = Mode::kNone;
  buffer_.clear();
}

void Recordset::Delete() {
  Forget();
  CheckCurrent();
  table_->Delete(rows_[size_t(pos_)]);
  rows_.erase(rows_.begin() + pos_);
  // DAO: the deleted row stays current (and unreadable) until the next move.
  currentDeleted_ = true;
  --pos_;
}

void Recordset::Close() {
  Forget();
  table_ = nullptr;
  rows_.clear();
  mode_ = Mode::kNone;
}

}  // namespace bw::jet
