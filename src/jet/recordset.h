// A DAO-like table-type recordset: walks a table's rows in table order and
// edits them. Mirrors the DAO calls a Visual Basic program makes: EOF,
// RecordCount, MoveFirst/MoveNext/MoveLast, Fields(name).Value, AddNew, Edit,
// setting a field, Update, Delete, Close.
//
// State it tracks: the row list taken when it was opened (plus the rows it
// added), the current position (-1 = before the first row, size = EOF), and
// the edit buffer between AddNew/Edit and Update. As in DAO, after AddNew and
// Update the current row is the one that was current before AddNew;
// LastModified() gives the row just written.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "jet/row_codec.h"
#include "jet/table.h"

namespace bw::jet {

class Recordset {
 public:
  explicit Recordset(Table& table);

  // ---- position ----
  bool Eof() const;
  bool Bof() const;
  /// Rows in the recordset.
  long RecordCount() const { return long(rows_.size()); }
  void MoveFirst();
  void MoveNext();
  void MovePrevious();
  void MoveLast();
  /// The row id of the current row (3021 when there is none).
  RowId Bookmark() const;
  void SetBookmark(RowId id);
  /// The row written by the last Update.
  RowId LastModified() const;

  // ---- read ----
  /// The current row's value of the column `name` (any case). The edit
  /// buffer's value while AddNew/Edit is pending. 3265 for an unknown name,
  /// 3021 with no current row. The reference holds until the recordset moves
  /// or writes.
  const Value& Field(const std::string& name) const;
  std::vector<std::string> FieldNames() const;

  // ---- write ----
  void AddNew();
  void Edit();
  void SetField(const std::string& name, const Value& value);
  void Update();
  void CancelUpdate();
  void Delete();
  void Close();
  bool IsOpen() const { return table_ != nullptr; }

 private:
  int Column(const std::string& name) const;
  void CheckOpen() const;
  void CheckCurrent() const;
  /// Forgets the decoded current row (after a move or a write).
  void Forget() const { decodedPos_ = -1; }

  Table* table_;
  std::vector<RowId> rows_;
  long pos_ = 0;
  enum class Mode { kNone, kAddNew, kEdit } mode_ = Mode::kNone;
  std::vector<Value> buffer_;
  bool hasLastModified_ = false;
  RowId lastModified_;
  bool currentDeleted_ = false;
  /// The current row decoded once for all its fields, and where it was.
  mutable std::vector<Value> decoded_;
  mutable long decodedPos_ = -1;
  /// Column names asked for before, as written, with their index: a loop
  /// over rows asks for the same few names again and again.
  mutable std::vector<std::pair<std::string, int>> askedNames_;
};

}  // namespace bw::jet
