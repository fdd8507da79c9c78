// make_jet_seed OUTPUT.mdb: a seed for the engine harness that our own engine
// writes: one table of every column type the engine keeps in indexes, with a
// primary key, a unique, a descending and a two-column index, holding enough
// rows for index trees of more than one level and long values outside rows.
#include <cstdio>
#include <filesystem>
#include <string>

#include "jet/database.h"
#include "runtime/run_time_error.h"

int main(int argc, char** argv) {
  using namespace bw::jet;
  using T = ColumnType;
  if (argc != 2) {
    std::fprintf(stderr, "usage: make_jet_seed OUTPUT.mdb\n");
    return 2;
  }
  auto index = [](const char* name, std::vector<IndexColumn> columns, uint8_t flags, bool primary = false) {
    NewIndex ix;
    ix.name = name;
    ix.columns = std::move(columns);
    ix.flags = uint8_t(ix.flags | flags);
    ix.primaryKey = primary;
    return ix;
  };
  NewTable things{"Things",
                  {{"Id", T::kLong}, {"Name", T::kText, 40}, {"Stamp", T::kDateTime}, {"Amount", T::kCurrency},
                   {"Ratio", T::kDouble}, {"Small", T::kInteger}, {"Tiny", T::kByte}, {"Flag", T::kBoolean},
                   {"Notes", T::kMemo}},
                  {index("PrimaryKey", {{0, true}}, index_flag::kUnique | index_flag::kRequired, true),
                   index("Name", {{1, true}}, 0), index("Stamp", {{2, false}}, index_flag::kUnique),
                   index("SmallName", {{5, true}, {1, false}}, 0), index("Ratio", {{4, true}, {7, true}}, 0)}};
  try {
    std::filesystem::remove(argv[1]);
    auto db = Database::Create(argv[1], {things});
    auto rs = db->OpenRecordset("Things");
    for (int i = 0; i < 300; ++i) {
      rs->AddNew();
      rs->SetField("Id", Value::Long(i * 3));
      rs->SetField("Name", Value::Text("name " + std::to_string(i * 7919 % 1000)));
      rs->SetField("Stamp", Value::Double(40000 + i / 3.0));
      rs->SetField("Amount", Value::Long(i * 101 - 5000));
      rs->SetField("Ratio", Value::Double(i / 7.0));
      rs->SetField("Small", Value::Integer(int16_t(i % 50 - 25)));
      rs->SetField("Tiny", Value::Byte(uint8_t(i)));
      rs->SetField("Flag", Value::Boolean(i % 3 == 0));
      if (i % 50 == 0) rs->SetField("Notes", Value::Memo(std::string(size_t(i == 250 ? 3000 : 200), 'n')));
      rs->Update();
    }
    db->Close();
  } catch (const bw::RunTimeError& e) {
    std::fprintf(stderr, "make_jet_seed: %s\n", e.description().c_str());
    return 1;
  }
  return 0;
}
