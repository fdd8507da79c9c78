// Upper-casing, trimming, Windows-1252, text files read and written, folder
// listings and case-blind lookup.
#include <gtest/gtest.h>

#include <filesystem>

#include "runtime/files.h"
#include "runtime/run_time_error.h"
#include "runtime/text.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

using test::TempDir;
using Lines = std::vector<std::string>;

Lines AllLines(const std::filesystem::path& path) {
  TextFileReader reader(path);
  Lines lines;
  std::string line;
  while (reader.ReadLine(line)) lines.push_back(line);
  return lines;
}

TEST(Text, UpperCaseCoversAsciiAndLatin1Only) {
  EXPECT_EQ(UCase("caf\xC3\xA9"), "CAF\xC3\x89");  // é -> É
  EXPECT_EQ(UCase("\xC3\xBF\xC3\xB7\xC3\x9F"), "\xC3\xBF\xC3\xB7\xC3\x9F");  // ÿ ÷ ß stay
  EXPECT_EQ(UCase("\xCE\xB1"), "\xCE\xB1");      // Greek alpha is beyond Latin-1
  EXPECT_EQ(UCase("a\xE9z"), "A\xE9Z");          // a stray byte passes through
}

TEST(Text, TrimRemovesSpacesOnly) {
  EXPECT_EQ(Trim("  a b  "), "a b");
  EXPECT_EQ(Trim("\ta\t"), "\ta\t");
  EXPECT_EQ(LTrim("  a  "), "a  ");
  EXPECT_EQ(RTrim("  a  "), "  a");
}

TEST(Text, Cp1252BothWays) {
  EXPECT_EQ(FromCp1252("\xE9\x80\x93"), "\xC3\xA9\xE2\x82\xAC\xE2\x80\x9C");  // é € “
  EXPECT_EQ(FromCp1252("\x81"), "\xC2\x81");  // an undefined byte keeps its number
  EXPECT_EQ(ToCp1252("\xCE\xB1 a\xFF"), "? a?");  // alpha and a non-UTF-8 byte
  std::string all;
  for (int b = 1; b < 256; ++b) all += static_cast<char>(b);
  EXPECT_EQ(ToCp1252(FromCp1252(all)), all);
  EXPECT_FALSE(IsValidUtf8("\xC0\xAF"));  // overlong "/"
  EXPECT_FALSE(IsValidUtf8("\xED\xA0\x80"));  // surrogate
}

TEST(TextFileReader, LineEndsAndALastLineWithoutEnd) {
  TempDir dir;
  EXPECT_EQ(AllLines(dir.Write("a.txt", "one\r\ntwo\nthree")), (Lines{"one", "two", "three"}));
  EXPECT_EQ(AllLines(dir.Write("b.txt", "one\r\n\r\ntwo\r\n")), (Lines{"one", "", "two"}));
  EXPECT_EQ(AllLines(dir.Write("c.txt", "")), Lines{});
}

TEST(TextFileReader, Utf8WithOrWithoutBomElseWindows1252) {
  TempDir dir;
  EXPECT_EQ(AllLines(dir.Write("bom.txt", "\xEF\xBB\xBF" "caf\xC3\xA9\r\nx")), (Lines{"caf\xC3\xA9", "x"}));
  EXPECT_EQ(AllLines(dir.Write("utf8.txt", "caf\xC3\xA9")), Lines{"caf\xC3\xA9"});
  // a lone 0xE9 is not UTF-8, so the file is Windows-1252 and 0xE9 is é
  EXPECT_EQ(AllLines(dir.Write("ansi.txt", "caf\xE9\r\n\x93q\x94\r\n")),
            (Lines{"caf\xC3\xA9", "\xE2\x80\x9Cq\xE2\x80\x9D"}));
}

TEST(TextFileReader, CountsLines) {
  TempDir dir;
  TextFileReader reader(dir.Write("n.txt", "a\nb\n"));
  std::string line;
  EXPECT_EQ(reader.LineNumber(), 0);
  ASSERT_TRUE(reader.ReadLine(line));
  ASSERT_TRUE(reader.ReadLine(line));
  EXPECT_EQ(reader.LineNumber(), 2);
  EXPECT_TRUE(reader.AtEnd());
  EXPECT_FALSE(reader.ReadLine(line));
}

TEST(TextFileReader, MissingFileIsError53) {
  TempDir dir;
  try {
    TextFileReader reader(dir.path() / "absent.dvc");
    FAIL() << "no error";
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 53);
    EXPECT_EQ(e.description(), "File not found");
  }
  EXPECT_THROW(TextFileReader reader(dir.path()), RunTimeError);  // a folder is no text file
}

TEST(WriteTextFile, ReplacesAndFailsInAMissingFolder) {
  TempDir dir;
  const auto path = dir.path() / "out.cde";
  WriteTextFile(path, "first\r\nsecond\r\n");
  WriteTextFile(path, "A\r\n");
  EXPECT_EQ(test::ReadFileBytes(path), "A\r\n");
  try {
    WriteTextFile(dir.path() / "no" / "x.txt", "x");
    FAIL() << "no error";
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 76);
  }
}

TEST(ListFolder, ExtensionIgnoringCaseSortedByUpperCasedName) {
  TempDir dir;
  for (const char* name : {"zeta.dvc", "Alpha.DVC", "beta.dvc", "Gamma.dvc", "nec.irp", "x.dvc.bak"})
    dir.Write(name, "");
  std::filesystem::create_directories(dir.path() / "folder.dvc");
  // byte order would put Gamma before beta
  EXPECT_EQ(ListFolder(dir.path(), ".dvc"), (Lines{"Alpha.DVC", "beta.dvc", "Gamma.dvc", "zeta.dvc"}));
  EXPECT_EQ(ListFolder(dir.path(), ".IRP"), Lines{"nec.irp"});
  EXPECT_TRUE(ListFolder(dir.path() / "missing", ".dvc").empty());
}

TEST(FindFileIgnoringCase, ExactNameOrAnyCase) {
  TempDir dir;
  dir.Write("Sony TV.dvc", "");
  EXPECT_EQ(FindFileIgnoringCase(dir.path(), "SONY TV.DVC").value().filename(), "Sony TV.dvc");
  EXPECT_FALSE(FindFileIgnoringCase(dir.path(), "Sony.dvc").has_value());
  EXPECT_FALSE(FindFileIgnoringCase(dir.path() / "nowhere", "x").has_value());
}

TEST(ExecutableFolder, HoldsThisTestProgram) {
  EXPECT_TRUE(std::filesystem::exists(ExecutableFolder() / "test_runtime"));
}

}  // namespace
}  // namespace bw
