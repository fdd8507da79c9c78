// Indexes: key bytes as an independent Jet 4 writer makes them (figures it
// printed), every index of files Access made read back against their rows,
// trees kept consistent through splits, moves and deletes down to nothing,
// and writes refused or failing half-way leaving the file byte for byte.
#include <fstream>
#include <random>
#include <sstream>

#include "jet/index_check.h"
#include "jet/index_key.h"
#include "jet/page_file.h"
#include "mdbtools.h"

using namespace bw::jet;
using jettest::ErrorText;

namespace {

std::string Hex(const Bytes& b) {
  std::string s;
  char buf[4];
  for (uint8_t x : b) std::snprintf(buf, sizeof buf, "%s%02X", s.empty() ? "" : " ", x), s += buf;
  return s;
}

std::string Key(ColumnType type, const Value& v, bool ascending = true) {
  Bytes key;
  return AppendColumnKey(key, type, v, ascending) ? Hex(key) : "none";
}

Value Date(double d) {
  Value v = Value::Double(d);
  v.kind = Value::Kind::kDateTime;
  return v;
}
Value Money(int64_t tenThousandths) {
  Value v;
  v.kind = Value::Kind::kCurrency;
  v.integer = tenThousandths;
  return v;
}

}  // namespace

TEST(IndexKeys, NumbersDatesAndYesNoAsWrittenByAnotherJetWriter) {
  using T = ColumnType;
  struct Case {
    T type;
    Value value;
    const char* key;
  } cases[] = {
      {T::kLong, Value::Long(INT32_MIN), "7F 00 00 00 00"}, {T::kLong, Value::Long(INT32_MAX), "7F FF FF FF FF"},
      {T::kLong, Value::Long(-1000), "7F 7F FF FC 18"},      {T::kLong, Value::Long(1000), "7F 80 00 03 E8"},
      {T::kLong, Value(), "00"},                             {T::kInteger, Value::Integer(-32768), "7F 00 00"},
      {T::kInteger, Value::Integer(-2), "7F 7F FE"},         {T::kInteger, Value::Integer(32767), "7F FF FF"},
      {T::kByte, Value::Byte(0), "7F 00"},                   {T::kByte, Value::Byte(128), "7F 80"},
      {T::kDouble, Value::Double(-1e300), "7F 01 C8 1B C3 77 FF 8A 63"},
      {T::kDouble, Value::Double(-1.5), "7F 40 07 FF FF FF FF FF FF"},
      {T::kDouble, Value::Double(-0.0), "7F 7F FF FF FF FF FF FF FF"},
      {T::kDouble, Value::Double(0), "7F 80 00 00 00 00 00 00 00"},
      {T::kDouble, Value::Double(4.9e-324), "7F 80 00 00 00 00 00 00 01"},
      {T::kDouble, Value::Double(1e300), "7F FE 37 E4 3C 88 00 75 9C"},
      {T::kDouble, Value::Double(-HUGE_VAL), "7F 00 0F FF FF FF FF FF FF"},
      {T::kDateTime, Date(-1.5), "7F 40 07 FF FF FF FF FF FF"},  // 1899-12-29 12:00
      {T::kDateTime, Date(29932), "7F C0 DD 3B 00 00 00 00 00"},  // 1981-12-12
      {T::kDateTime, Date(46349.922760416666), "7F C0 E6 A1 BD 87 40 DA 74"},
      {T::kBoolean, Value::Boolean(true), "7F 00"},         {T::kBoolean, Value::Boolean(false), "7F FF"},
      {T::kBoolean, Value(), "7F FF"},                       {T::kMemo, Value::Memo("x"), "none"},
      {T::kBinary, Value::Binary("x"), "none"},
  };
  for (const auto& c : cases) EXPECT_EQ(Key(c.type, c.value), c.key) << c.value.AsText();
}

TEST(IndexKeys, DescendingKeysSortInReverse) {
  using T = ColumnType;
  const std::vector<std::pair<T, std::vector<Value>>> ordered = {
      {T::kLong, {Value(), Value::Long(-7), Value::Long(0), Value::Long(9)}},
      {T::kCurrency, {Value(), Money(-50000), Money(1), Money(INT64_MAX)}},
      {T::kDouble, {Value(), Value::Double(-2), Value::Double(0.25), Value::Double(3e10)}},
      {T::kText, {Value(), Value::Text(""), Value::Text("a"), Value::Text("ab"), Value::Text("a-b"), Value::Text("b")}},
      {T::kBoolean, {Value::Boolean(true), Value::Boolean(false)}},
  };
  for (const auto& [type, values] : ordered)
    for (size_t i = 1; i < values.size(); ++i) {
      EXPECT_LT(Key(type, values[i - 1]), Key(type, values[i])) << i;
      Bytes a, d;
      AppendColumnKey(a, type, values[i - 1], false);
      AppendColumnKey(d, type, values[i], false);
      EXPECT_GT(a, d) << "descending " << i << " of type " << int(type);
    }
}

// 457 texts (the examples of the format notes, then random ones over Latin-1,
// Windows-1252, combining marks, Greek, Cyrillic, Latin Extended letters,
// punctuation, tabs and line breaks, up to 255 characters) with the ascending
// and descending keys another Jet 4 writer stored for them.
TEST(IndexKeys, TextKeysInGeneralSortOrderAsWrittenByAnotherJetWriter) {
  std::ifstream in(std::string(BW_TESTDATA_DIR) + "/jet/text_keys.tsv");
  std::string line;
  int compared = 0;
  while (std::getline(in, line)) {
    std::istringstream fields(line);
    std::string escaped, ascending, descending, text;
    std::getline(fields, escaped, '\t');
    std::getline(fields, ascending, '\t');
    std::getline(fields, descending, '\t');
    for (size_t i = 0; i < escaped.size(); ++i) {
      if (escaped[i] != '\\' || i + 1 == escaped.size()) {
        text += escaped[i];
        continue;
      }
      char c = escaped[++i];
      text += c == 't' ? '\t' : c == 'n' ? '\n' : c == 'r' ? '\r' : c;
    }
    EXPECT_EQ(Key(ColumnType::kText, Value::Text(text)), ascending) << escaped;
    EXPECT_EQ(Key(ColumnType::kText, Value::Text(text), false), descending) << escaped;
    ++compared;
  }
  EXPECT_EQ(compared, 457);
  // Characters whose weights were not measured: no key rather than a wrong one.
  for (const char* unknown : {"\xE3\x81\x82", "\xE4\xB8\x80", "\xF0\x9F\x98\x80", "ab\xEF\xBD\xB1"})
    EXPECT_FALSE(TextSortKey(unknown)) << unknown;
}

TEST(IndexPages, EveryIndexOfFilesOtherWritersMadeMatchesTheirRows) {
  size_t entries = 0, checked = 0;
  for (const auto& folder : {jettest::AccessSamples(), std::string(BW_TESTDATA_DIR) + "/jet"})
    for (const auto& e : std::filesystem::directory_iterator(folder)) {
      if (e.path().extension() != ".mdb" || e.path().string().find("1997") != std::string::npos) continue;
      auto db = Database::Open(e.path().string(), false, true);
      for (const auto& name : db->TableNames(true)) {
        auto result = CheckIndexes(db->GetTable(name), false);
        EXPECT_EQ(result.findings, std::vector<std::string>{}) << e.path();
        // Kana and Chinese characters have no weights here: those rows' entries
        // are checked for their row only.
        for (const auto& u : result.unchecked) EXPECT_EQ(u, "Table.Unicode") << e.path();
        entries += result.entries;
        checked += db->GetTable(name).def().indexes.size() - result.unchecked.size();
      }
    }
  EXPECT_GE(checked, 60u);
  EXPECT_GE(entries, 900u);
}

namespace {

using T = ColumnType;
// A table with an index on each key type, ascending, descending, several
// columns, unique and ignoring nulls.
std::vector<NewTable> Indexed() {
  auto ix = [](const char* name, std::vector<IndexColumn> cols, uint8_t flags = 0, bool primary = false) {
    return NewIndex{name, cols, uint8_t(index_flag::kJet4 | flags), primary};
  };
  return {{"T",
           {{"id", T::kLong}, {"name", T::kText, 255}, {"val", T::kDouble}, {"when", T::kDateTime},
            {"n", T::kInteger}, {"b", T::kByte}, {"flag", T::kBoolean}, {"money", T::kCurrency},
            {"note", T::kMemo}},
           {ix("PrimaryKey", {{0, true}}, index_flag::kUnique | index_flag::kRequired, true),
            ix("name", {{1, true}}), ix("nameDown", {{1, false}}, index_flag::kIgnoreNulls),
            ix("nName", {{4, true}, {1, false}}), ix("val", {{2, true}}), ix("when", {{3, false}}),
            ix("bFlag", {{5, true}, {6, true}}), ix("money", {{7, true}}, index_flag::kUnique)}}};
}

/// Row i: names of 150-200 characters so that a leaf holds a dozen entries.
std::vector<Value> Row(int id, int salt) {
  std::string name = std::to_string((id * 7919 + salt) % 1000) + std::string(150 + id % 50, "aé-b c"[id % 6]);
  return {Value::Long(id),
          id % 17 == 0 ? Value() : Value::Text(name),
          Value::Double((id % 23) * -0.5),
          Date(40000 + id % 31),
          Value::Integer(int16_t(id % 5)),
          Value::Byte(uint8_t(id % 3)),
          Value::Boolean(id % 2),
          Money(int64_t(id) * 10000 + salt),
          Value()};
}

struct IndexedTable : ::testing::Test {
  bw::test::TempDir dir;
  std::string file = (dir.path() / "i.mdb").string();
  std::unique_ptr<Database> db = Database::Create(file, Indexed());
  Table& t = db->GetTable("T");
  std::vector<std::string> Findings() { return CheckIndexes(t, true).findings; }
  RowId Find(int id) {
    for (RowId r : t.RowIds())
      if (t.ReadRow(r)[0].integer == id) return r;
    return {};
  }
};

}  // namespace

TEST_F(IndexedTable, SplitsMovesAndDeletesToNothingKeepEveryIndexConsistent) {
  std::mt19937 rng(7);
  std::vector<int> ids(900);
  for (int i = 0; i < 900; ++i) ids[size_t(i)] = i;
  std::shuffle(ids.begin(), ids.end(), rng);
  for (int id : ids) t.Insert(Row(id, 0));
  EXPECT_EQ(Findings(), std::vector<std::string>{});
  // Three levels: the root's children are nodes.
  IndexPage root = ReadIndexPage(db->file(), t.def().indexes[1].rootPage);
  ASSERT_FALSE(root.leaf);
  EXPECT_FALSE(ReadIndexPage(db->file(), root.tail).leaf);
  for (int k = 0; k < 200; ++k) {  // new keys; every fifth row grows past its page and moves
    int id = ids[size_t(k)];
    auto row = Row(id, 1);
    if (k % 5 == 0) row[1] = Value::Text(std::string(255, 'z')), row[8] = Value::Memo(std::string(3000, 'm'));
    t.Update(Find(id), row);
  }
  EXPECT_EQ(Findings(), std::vector<std::string>{});
  std::shuffle(ids.begin(), ids.end(), rng);
  for (size_t k = 0; k < ids.size(); ++k) {
    t.Delete(Find(ids[k]));
    if (k == 600) EXPECT_EQ(Findings(), std::vector<std::string>{});
  }
  EXPECT_EQ(Findings(), std::vector<std::string>{});
  EXPECT_TRUE(ReadIndexPage(db->file(), t.def().indexes[1].rootPage).leaf) << "the tree shrank back to its root";
  for (int id = 0; id < 40; ++id) t.Insert(Row(id, 2));
  db->Close();
  auto again = Database::Open(file, false, true);
  auto check = CheckIndexes(again->GetTable("T"), true);
  EXPECT_EQ(check.findings, std::vector<std::string>{});
  EXPECT_EQ(check.entries, 40u * 8 - 3);  // nameDown ignores the null names of ids 0, 17, 34
}

TEST_F(IndexedTable, RefusedAndFailingWritesLeaveTheFileAsItWas) {
  for (int id = 0; id < 400; ++id) t.Insert(Row(id, 0));
  const std::string kDuplicate =
      "3022 The changes you requested to the table were not successful because they would create duplicate values "
      "in the index, primary key, or relationship. Change the data in the field or fields that contain duplicate "
      "data, remove the index, or redefine the index to allow duplicate entries and try again.";
  auto row = Row(500, 0);
  auto nullKey = row, tooLong = row, unknown = row, sameMoney = row;
  nullKey[0] = Value();
  tooLong[1] = Value::Text(std::string(256, 'x'));
  tooLong[8] = Value::Memo(std::string(5000, 'm'));  // stored before the text is found too long
  unknown[1] = Value::Text("\xE3\x81\x82");
  sameMoney[7] = Money(30000);
  RowId first = Find(3);
  struct Case {
    std::function<void()> write;
    std::string error;
  } cases[] = {
      {[&] { t.Insert(Row(7, 9)); }, kDuplicate},
      {[&] { t.Insert(sameMoney); }, kDuplicate},
      {[&] { t.Update(first, Row(8, 0)); }, kDuplicate},
      {[&] { t.Insert(nullKey); }, "3058 Index or primary key cannot contain a Null value."},
      {[&] { t.Insert(tooLong); }, "3163 The field is too small to accept the amount of data you attempted to add.  "
                                   "Try inserting or pasting less data."},
      {[&] { t.Insert(unknown); },
       "3027 Cannot update.  Database or object is read-only. (table 'T', index 'name': the text '\xE3\x81\x82' "
       "holds a character whose sort weight is not known here)"},
  };
  std::string before = bw::test::ReadFileBytes(file);
  for (const auto& c : cases) {
    EXPECT_EQ(ErrorText(c.write), c.error);
    EXPECT_EQ(bw::test::ReadFileBytes(file), before) << c.error;
  }
  // A disk that fails at the n-th page write of an insert that splits pages,
  // an update that moves its row, and a delete.
  auto grow = Row(3, 5);
  grow[8] = Value::Memo(std::string(3000, 'g'));
  grow[1] = Value::Text(std::string(255, 'q'));
  std::function<void()> writes[] = {[&] { t.Insert(Row(1000, 0)); }, [&] { t.Update(Find(3), grow); },
                                    [&] { t.Delete(Find(4)); }};
  for (auto& write : writes) {
    int failures = 0;
    for (int n = 0;; ++n) {
      before = bw::test::ReadFileBytes(file);
      PageFile::FailWriteAfter(n);
      std::string error = ErrorText(write);
      PageFile::FailWriteAfter(-1);
      if (error.empty()) break;
      ++failures;
      EXPECT_EQ(error, "3043 Disk or network error. (" + file + ")");
      ASSERT_EQ(bw::test::ReadFileBytes(file), before) << "failure at write " << n;
    }
    EXPECT_GE(failures, 3);
    EXPECT_EQ(Findings(), std::vector<std::string>{});
  }
}
