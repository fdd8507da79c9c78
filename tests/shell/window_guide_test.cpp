// The window's guidance: the status line after each kind of run, the ADI
// replace button's condition, and the names and folders file dialogs start with.
#include <gtest/gtest.h>

#include "shell/window_guide.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

namespace fs = std::filesystem;

TEST(WindowGuide, StatusLineSaysWhatEachRunWroteOrWhyNothing) {
  struct Case {
    RunOutput output;
    int written;
    void (*state)(Program&);
    std::string message, error, text, folder;
  } cases[] = {
      {RunOutput::Database, 21, [](Program& p) { p.F.dbname.text = "/h/Generated IRDBs/Living Room.mdb"; }, "", "",
       "Wrote 21 keys to \u2026/Living Room.mdb", "/h/Generated IRDBs"},
      {RunOutput::Database, 0, [](Program&) {}, "No Data base has been selected, Please open a data Base", "",
       "Wrote 0 keys: No Data base has been selected, Please open a data Base", ""},
      {RunOutput::Slinke, 1, [](Program& p) { p.SlinkFileName = "Sony-TV"; }, "", "",
       "Wrote 1 key to \u2026/Sony-TV.cde", "/h/Slinke Library"},
      {RunOutput::Slinke, 0, [](Program& p) { p.F.Autogen.value = 1; }, "", "",
       "Wrote 0 keys: Auto Generate builds the entries but writes none of them", "/h/Slinke Library"},
      {RunOutput::Slinke, 0, [](Program& p) { p.F.format.text = "RAW"; }, "", "",
       "Wrote 0 keys: the keys of a RAW device are read but not written by this output", "/h/Slinke Library"},
      // A Tx/Rx run stopped by a key it cannot express has written no file.
      {RunOutput::Slinke, 4, [](Program& p) { p.SlinkError = true; }, "bits do not fit", "",
       "Wrote 0 keys: bits do not fit", "/h/Slinke Library"},
      {RunOutput::Adi, 3, [](Program& p) { p.F.ADIFileName.text = "NEW"; }, "", "",
       "Added 3 keys to a new table, not saved yet", ""},
      {RunOutput::Adi, 2, [](Program& p) { p.F.ADIFileName.text = "/h/ADI Library/Den.lir"; }, "", "",
       "Added 2 keys to \u2026/Den.lir, not saved yet", "/h/ADI Library"},
      {RunOutput::Adi, 0, [](Program& p) { p.F.ADIFileName.text = "NEW"; }, "", "",
       "Wrote 0 keys: every key was skipped", ""},
      {RunOutput::Database, 5, [](Program& p) { p.F.dbname.text = "/h/x.mdb"; }, "", "Run-time error '6': Overflow",
       "Stopped after 5 keys: Run-time error '6': Overflow", "/h"},
  };
  for (const Case& c : cases) {
    test::TestProgram t;
    Program& p = t.p;
    p.ProgramFolder = "/h";
    p.Keys.entries.resize(3);
    c.state(p);
    p.EntriesWritten = 7;
    RunStart start = NoteRunStart(p, c.output);
    p.EntriesWritten += c.written;
    RunReport r = ReportRun(p, start, c.message, c.error);
    EXPECT_EQ(r.text, c.text);
    EXPECT_EQ(r.folder, c.folder) << c.text;
  }
}

TEST(WindowGuide, ReplaceNeedsAGeneratedRecordAndACurrentRecordOfAnOpenTable) {
  struct Case {
    bool generated;
    std::string file;
    int records, current;
    bool usable;
  } cases[] = {
      {true, "/h/a.lir", 2, 1, true},  {false, "/h/a.lir", 2, 1, false}, {true, "", 2, 1, false},
      {true, "NEW", 0, 0, false},      {true, "NEW", 1, 1, true},        {true, "/h/a.lir", 2, 3, false},
  };
  for (const Case& c : cases) {
    test::TestProgram t;
    t.p.LirRecordGenerated = c.generated;
    t.p.F.ADIFileName.text = c.file;
    t.p.Lir.records.resize(std::size_t(c.records) + 1);
    t.p.Lir.Current = int16_t(c.current);
    EXPECT_EQ(AdiReplaceUsable(t.p), c.usable) << c.file << " " << c.records << " " << c.current;
  }
}

TEST(WindowGuide, DialogsSuggestTheDescriptionOrTheModelAndStartInAFolderThatExists) {
  test::TestProgram t;
  Program& p = t.p;
  EXPECT_EQ(SuggestedFileName(p, "", ".mdb"), "") << "nothing loaded: no name";
  p.F.Model.text = "RC-1/2";
  EXPECT_EQ(SuggestedFileName(p, " ", ".lir"), "RC-12.lir");
  p.F.MFG.text = "Sony";
  EXPECT_EQ(SuggestedFileName(p, "", ".mdb"), "Sony-RC-12.mdb");
  EXPECT_EQ(SuggestedFileName(p, "Living Room?", ".mdb"), "Living Room.mdb");

  test::TempDir dir;
  p.ProgramFolder = dir.path();
  EXPECT_TRUE(EnsureOutputFolder(p, "Generated IRDBs"));
  EXPECT_TRUE(fs::is_directory(dir.path() / "Generated IRDBs"));
  EXPECT_TRUE(EnsureOutputFolder(p, "Generated IRDBs")) << "an existing folder is fine";
  dir.Write("ADI Library", "a file in the way");
  EXPECT_FALSE(EnsureOutputFolder(p, "ADI Library"));
}

}  // namespace
}  // namespace bw
