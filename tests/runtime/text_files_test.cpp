// Upper-casing, trimming, Windows-1252 conversions, text files read and written,
// folder listings and case-blind lookup.
#include <gtest/gtest.h>

#include <filesystem>

#include "runtime/files.h"
#include "runtime/run_time_error.h"
#include "runtime/text.h"
#include "support/scripted_host.h"

namespace bw {
namespace {

using test::ReadFileBytes;
using test::TempDir;

std::vector<std::string> AllLines(const std::filesystem::path& path) {
  TextFileReader reader(path);
  std::vector<std::string> lines;
  std::string line;
  while (reader.ReadLine(line)) lines.push_back(line);
  return lines;
}

TEST(UCase, CoversAsciiAndLatin1Letters) {
  EXPECT_EQ(UCase("num base = hex"), "NUM BASE = HEX");
  EXPECT_EQ(UCase("caf\xC3\xA9"), "CAF\xC3\x89");          // é -> É
  EXPECT_EQ(UCase("\xC3\xA0\xC3\xBE"), "\xC3\x80\xC3\x9E");  // à þ -> À Þ
  EXPECT_EQ(UCase("\xC3\xBF"), "\xC3\xBF");                  // ÿ has no Latin-1 capital
  EXPECT_EQ(UCase("\xC3\xB7"), "\xC3\xB7");                  // ÷ is not a letter
  EXPECT_EQ(UCase("\xC3\x9F"), "\xC3\x9F");                  // ß stays
  EXPECT_EQ(UCase("\xCE\xB1"), "\xCE\xB1");                  // Greek alpha is beyond Latin-1
  EXPECT_EQ(UCase("a\xE9z"), "A\xE9Z");                      // a stray byte passes through
}

TEST(Trim, RemovesSpacesOnly) {
  EXPECT_EQ(Trim("  a b  "), "a b");
  EXPECT_EQ(Trim("\ta\t"), "\ta\t");
  EXPECT_EQ(Trim("    "), "");
  EXPECT_EQ(LTrim("  a  "), "a  ");
  EXPECT_EQ(RTrim("  a  "), "  a");
}

TEST(Cp1252, DecodesTheSpecialRangeAndLatin1) {
  EXPECT_EQ(FromCp1252("\xE9"), "\xC3\xA9");            // é
  EXPECT_EQ(FromCp1252("\x80"), "\xE2\x82\xAC");        // €
  EXPECT_EQ(FromCp1252("\x93x\x94"), "\xE2\x80\x9Cx\xE2\x80\x9D");
  EXPECT_EQ(FromCp1252("\x81"), "\xC2\x81");            // undefined byte keeps its number
  EXPECT_EQ(FromCp1252("plain"), "plain");
}

TEST(Cp1252, EncodesWhatItHasAndQuestionMarksTheRest) {
  EXPECT_EQ(ToCp1252("caf\xC3\xA9"), "caf\xE9");
  EXPECT_EQ(ToCp1252("\xE2\x82\xAC"), "\x80");
  EXPECT_EQ(ToCp1252("\xCE\xB1"), "?");      // alpha
  EXPECT_EQ(ToCp1252("a\xFF" "b"), "a?b");   // not UTF-8
  const std::string all = [] {
    std::string s;
    for (int b = 1; b < 256; ++b) s += static_cast<char>(b);
    return s;
  }();
  EXPECT_EQ(ToCp1252(FromCp1252(all)), all);
}

TEST(Utf8, ValidityCheck) {
  EXPECT_TRUE(IsValidUtf8("abc \xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"));
  EXPECT_FALSE(IsValidUtf8("\xE9"));
  EXPECT_FALSE(IsValidUtf8("\xC0\xAF"));          // overlong "/"
  EXPECT_FALSE(IsValidUtf8("\xED\xA0\x80"));      // surrogate
  EXPECT_FALSE(IsValidUtf8("\xE2\x82"));          // cut short
}

TEST(TextFileReader, SplitsCrLfAndLfAndKeepsALastLineWithoutEnd) {
  TempDir dir;
  EXPECT_EQ(AllLines(dir.Write("a.txt", "one\r\ntwo\nthree")),
            (std::vector<std::string>{"one", "two", "three"}));
  EXPECT_EQ(AllLines(dir.Write("b.txt", "one\r\n\r\ntwo\r\n")), (std::vector<std::string>{"one", "", "two"}));
  EXPECT_EQ(AllLines(dir.Write("c.txt", "")), std::vector<std::string>{});
  EXPECT_EQ(AllLines(dir.Write("d.txt", "\n")), std::vector<std::string>{""});
}

TEST(TextFileReader, DecodesUtf8WithAndWithoutBomAndFallsBackTo1252) {
  TempDir dir;
  EXPECT_EQ(AllLines(dir.Write("bom.txt", "\xEF\xBB\xBF" "caf\xC3\xA9\r\nx")),
            (std::vector<std::string>{"caf\xC3\xA9", "x"}));
  EXPECT_EQ(AllLines(dir.Write("utf8.txt", "caf\xC3\xA9")), std::vector<std::string>{"caf\xC3\xA9"});
  // a lone 0xE9 is not UTF-8, so the file is Windows-1252 and 0xE9 is é
  EXPECT_EQ(AllLines(dir.Write("ansi.txt", "caf\xE9\r\n\x93q\x94\r\n")),
            (std::vector<std::string>{"caf\xC3\xA9", "\xE2\x80\x9Cq\xE2\x80\x9D"}));
}

TEST(TextFileReader, CountsLinesAndKnowsTheEnd) {
  TempDir dir;
  TextFileReader reader(dir.Write("n.txt", "a\nb\n"));
  EXPECT_EQ(reader.LineNumber(), 0);
  EXPECT_FALSE(reader.AtEnd());
  std::string line;
  ASSERT_TRUE(reader.ReadLine(line));
  EXPECT_EQ(reader.LineNumber(), 1);
  ASSERT_TRUE(reader.ReadLine(line));
  EXPECT_EQ(line, "b");
  EXPECT_EQ(reader.LineNumber(), 2);
  EXPECT_TRUE(reader.AtEnd());
  EXPECT_FALSE(reader.ReadLine(line));
  EXPECT_EQ(line, "b");
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
  // a folder is not a readable text file either
  EXPECT_THROW(TextFileReader reader(dir.path()), RunTimeError);
}

TEST(WriteTextFile, WritesBytesAsGivenAndReplaces) {
  TempDir dir;
  const auto path = dir.path() / "out.cde";
  WriteTextFile(path, "first\r\n");
  WriteTextFile(path, "A\r\nB\r\n");
  EXPECT_EQ(ReadFileBytes(path), "A\r\nB\r\n");
  EXPECT_EQ(AllLines(path), (std::vector<std::string>{"A", "B"}));
}

TEST(WriteTextFile, MissingFolderIsPathNotFound) {
  TempDir dir;
  try {
    WriteTextFile(dir.path() / "no" / "x.txt", "x");
    FAIL() << "no error";
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 76);
  }
}

TEST(ListFolder, MatchesExtensionIgnoringCaseSortedByUpperCasedName) {
  TempDir dir;
  dir.Write("sony.dvc", "");
  dir.Write("Acme.DVC", "");
  dir.Write("b.dvc", "");
  dir.Write("nec.irp", "");
  dir.Write("x.dvc.bak", "");
  std::filesystem::create_directories(dir.path() / "folder.dvc");
  // folders and other extensions are left out, whatever their names
  EXPECT_EQ(ListFolder(dir.path(), ".dvc"), (std::vector<std::string>{"Acme.DVC", "b.dvc", "sony.dvc"}));
  EXPECT_EQ(ListFolder(dir.path(), ".IRP"), std::vector<std::string>{"nec.irp"});
  EXPECT_TRUE(ListFolder(dir.path() / "missing", ".dvc").empty());
}

TEST(ListFolder, UpperCasedOrderDiffersFromByteOrder) {
  TempDir dir;
  dir.Write("zeta.irp", "");
  dir.Write("Alpha.irp", "");
  dir.Write("beta.irp", "");
  dir.Write("Gamma.irp", "");
  // byte order would be Alpha, Gamma, beta, zeta
  EXPECT_EQ(ListFolder(dir.path(), ".irp"),
            (std::vector<std::string>{"Alpha.irp", "beta.irp", "Gamma.irp", "zeta.irp"}));
}

TEST(FindFileIgnoringCase, PrefersExactNameThenAnyCase) {
  TempDir dir;
  dir.Write("Sony TV.dvc", "");
  const auto found = FindFileIgnoringCase(dir.path(), "SONY TV.DVC");
  ASSERT_TRUE(found.has_value());
  EXPECT_EQ(found->filename().string(), "Sony TV.dvc");
  EXPECT_EQ(FindFileIgnoringCase(dir.path(), "Sony TV.dvc")->filename().string(), "Sony TV.dvc");
  EXPECT_FALSE(FindFileIgnoringCase(dir.path(), "Sony.dvc").has_value());
  EXPECT_FALSE(FindFileIgnoringCase(dir.path() / "nowhere", "x").has_value());
}

TEST(ExecutableFolder, IsTheFolderOfThisTestProgram) {
  const auto folder = ExecutableFolder();
  EXPECT_TRUE(std::filesystem::is_directory(folder));
  EXPECT_TRUE(std::filesystem::exists(folder / "test_runtime"));
}

}  // namespace
}  // namespace bw
