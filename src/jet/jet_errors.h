// The database engine's errors, with the numbers and texts Jet itself uses, so
// that a user sees the same "Run-time error '3031'" an Access program shows.
#pragma once

#include <string>

#include "runtime/run_time_error.h"

namespace bw::jet {

namespace jet_err {
inline constexpr int kNoCurrentRecord = 3021;
inline constexpr int kUpdateWithoutAddNew = 3020;
inline constexpr int kFileNotFound = 3024;
inline constexpr int kCannotUpdateReadOnly = 3027;
inline constexpr int kNotValidPassword = 3031;
inline constexpr int kFileInUse = 3045;
inline constexpr int kCannotOpenDatabase = 3049;
inline constexpr int kCannotOpenFile = 3051;
inline constexpr int kFieldTooSmall = 3163;
inline constexpr int kRecordIsDeleted = 3167;
inline constexpr int kTableNotFound = 3078;
inline constexpr int kItemNotFound = 3265;
inline constexpr int kUnrecognizedFormat = 3343;
inline constexpr int kObjectInvalid = 3420;
inline constexpr int kDataTypeConversion = 3421;
inline constexpr int kDiskIo = 3043;
inline constexpr int kDuplicateKey = 3022;
inline constexpr int kNullInIndex = 3058;
}  // namespace jet_err

[[noreturn]] inline void ThrowJet(int number, std::string text) { throw RunTimeError(number, std::move(text)); }

[[noreturn]] inline void ThrowFileNotFound(const std::string& path) {
  ThrowJet(jet_err::kFileNotFound, "Could not find file '" + path + "'.");
}
[[noreturn]] inline void ThrowNotValidPassword() { ThrowJet(jet_err::kNotValidPassword, "Not a valid password."); }
[[noreturn]] inline void ThrowFileInUse(const std::string& path) {
  ThrowJet(jet_err::kFileInUse, "Could not use '" + path + "'; file already in use.");
}
[[noreturn]] inline void ThrowCannotOpenFile(const std::string& path) {
  ThrowJet(jet_err::kCannotOpenFile,
           "The Microsoft Jet database engine cannot open the file '" + path +
               "'.  It is already opened exclusively by another user, or you need permission to view its data.");
}
[[noreturn]] inline void ThrowUnrecognizedFormat(const std::string& path) {
  ThrowJet(jet_err::kUnrecognizedFormat, "Unrecognized database format '" + path + "'.");
}
[[noreturn]] inline void ThrowCorrupt(const std::string& path) {
  ThrowJet(jet_err::kCannotOpenDatabase, "Cannot open database '" + path +
                                             "'.  It may not be a database that your application recognizes, "
                                             "or the file may be corrupt.");
}
[[noreturn]] inline void ThrowTableNotFound(const std::string& name) {
  ThrowJet(jet_err::kTableNotFound, "The Microsoft Jet database engine cannot find the input table or query '" +
                                        name + "'.  Make sure it exists and that its name is spelled correctly.");
}
[[noreturn]] inline void ThrowItemNotFound() { ThrowJet(jet_err::kItemNotFound, "Item not found in this collection."); }
[[noreturn]] inline void ThrowNoCurrentRecord() { ThrowJet(jet_err::kNoCurrentRecord, "No current record."); }
[[noreturn]] inline void ThrowUpdateWithoutAddNew() {
  ThrowJet(jet_err::kUpdateWithoutAddNew, "Update or CancelUpdate without AddNew or Edit.");
}
[[noreturn]] inline void ThrowReadOnly(const std::string& why) {
  ThrowJet(jet_err::kCannotUpdateReadOnly, "Cannot update.  Database or object is read-only." +
                                               (why.empty() ? std::string() : " (" + why + ")"));
}
[[noreturn]] inline void ThrowFieldTooSmall() {
  ThrowJet(jet_err::kFieldTooSmall,
           "The field is too small to accept the amount of data you attempted to add.  "
           "Try inserting or pasting less data.");
}
[[noreturn]] inline void ThrowConversion() { ThrowJet(jet_err::kDataTypeConversion, "Data type conversion error."); }
[[noreturn]] inline void ThrowObjectInvalid() {
  ThrowJet(jet_err::kObjectInvalid, "Object invalid or no longer set.");
}
[[noreturn]] inline void ThrowDuplicateKey() {
  ThrowJet(jet_err::kDuplicateKey,
           "The changes you requested to the table were not successful because they would create duplicate values "
           "in the index, primary key, or relationship. Change the data in the field or fields that contain "
           "duplicate data, remove the index, or redefine the index to allow duplicate entries and try again.");
}
[[noreturn]] inline void ThrowNullInIndex() {
  ThrowJet(jet_err::kNullInIndex, "Index or primary key cannot contain a Null value.");
}
[[noreturn]] inline void ThrowDiskIo(const std::string& path) {
  ThrowJet(jet_err::kDiskIo, "Disk or network error. (" + path + ")");
}

}  // namespace bw::jet
