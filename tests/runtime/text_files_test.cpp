// Upper-casing, trimming, Windows-1252, text files read and written, folder listings and case-blind lookup.
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

TEST(Text, UpperCaseTrimAndCp1252) {
  // é becomes É; ÿ ÷ ß, the Greek alpha (beyond Latin-1) and a stray byte stay
  EXPECT_EQ((Lines{UCase("caf\xC3\xA9"), UCase("\xC3\xBF\xC3\xB7\xC3\x9F"), UCase("\xCE\xB1"), UCase("a\xE9z")}),
            (Lines{"CAF\xC3\x89", "\xC3\xBF\xC3\xB7\xC3\x9F", "\xCE\xB1", "A\xE9Z"}));
  EXPECT_EQ(Trim("  a b  ") + "|" + Trim("\ta\t") + "|" + LTrim("  a  ") + "|" + RTrim("  a  "), "a b|\ta\t|a  |  a");
  EXPECT_EQ(FromCp1252("\xE9\x80\x93"), "\xC3\xA9\xE2\x82\xAC\xE2\x80\x9C");  // é € “
  EXPECT_EQ(FromCp1252("\x81"), "\xC2\x81");       // an undefined byte keeps its number
  EXPECT_EQ(ToCp1252("\xCE\xB1 a\xFF"), "? a?");  // alpha and a non-UTF-8 byte
  std::string all;
  for (int b = 1; b < 256; ++b) all += static_cast<char>(b);
  EXPECT_EQ(ToCp1252(FromCp1252(all)), all);
  EXPECT_FALSE(IsValidUtf8("\xC0\xAF") || IsValidUtf8("\xED\xA0\x80"));  // overlong "/", surrogate
}

TEST(TextFileReader, LineEndsEncodingsAndLineCount) {
  TempDir dir;
  EXPECT_EQ(AllLines(dir.Write("a.txt", "one\r\ntwo\nthree")), (Lines{"one", "two", "three"}));
  EXPECT_EQ(AllLines(dir.Write("b.txt", "one\r\n\r\ntwo\r\n")), (Lines{"one", "", "two"}));
  EXPECT_EQ(AllLines(dir.Write("c.txt", "")), Lines{});
  EXPECT_EQ(AllLines(dir.Write("bom.txt", "\xEF\xBB\xBF" "caf\xC3\xA9\r\nx")), (Lines{"caf\xC3\xA9", "x"}));
  EXPECT_EQ(AllLines(dir.Write("utf8.txt", "caf\xC3\xA9")), Lines{"caf\xC3\xA9"});
  // a lone 0xE9 is not UTF-8, so the file is Windows-1252 and 0xE9 is é
  EXPECT_EQ(AllLines(dir.Write("ansi.txt", "caf\xE9\r\n\x93q\x94\r\n")),
            (Lines{"caf\xC3\xA9", "\xE2\x80\x9Cq\xE2\x80\x9D"}));
  TextFileReader reader(dir.Write("n.txt", "a\nb\n"));
  std::string line;
  EXPECT_EQ(reader.LineNumber(), 0);
  ASSERT_TRUE(reader.ReadLine(line) && reader.ReadLine(line));
  EXPECT_EQ(reader.LineNumber(), 2);
  EXPECT_TRUE(reader.AtEnd() && !reader.ReadLine(line));
}

TEST(TextFiles, MissingFileIsError53AndAMissingFolderError76) {
  TempDir dir;
  EXPECT_EQ(test::ErrorText([&] { TextFileReader reader(dir.path() / "absent.dvc"); }), "53 File not found");
  EXPECT_THROW(TextFileReader reader(dir.path()), RunTimeError);  // a folder is no text file
  const auto path = dir.path() / "out.cde";
  WriteTextFile(path, "first\r\nsecond\r\n");
  WriteTextFile(path, "A\r\n");
  EXPECT_EQ(test::ReadFileBytes(path), "A\r\n");
  EXPECT_EQ(test::ErrorText([&] { WriteTextFile(dir.path() / "no" / "x.txt", "x"); }), "76 Path not found");
}

TEST(Folders, ListingSortsByUpperCasedNameAndLookupIgnoresCase) {
  TempDir dir;
  for (const char* name : {"zeta.dvc", "Alpha.DVC", "beta.dvc", "Gamma.dvc", "nec.irp", "x.dvc.bak", "Sony TV.cde"})
    dir.Write(name, "");
  std::filesystem::create_directories(dir.path() / "folder.dvc");
  // byte order would put Gamma before beta
  EXPECT_EQ(ListFolder(dir.path(), ".dvc"), (Lines{"Alpha.DVC", "beta.dvc", "Gamma.dvc", "zeta.dvc"}));
  EXPECT_EQ(ListFolder(dir.path(), ".IRP"), Lines{"nec.irp"});
  EXPECT_TRUE(ListFolder(dir.path() / "missing", ".dvc").empty());
  EXPECT_EQ(FindFileIgnoringCase(dir.path(), "SONY TV.CDE").value().filename(), "Sony TV.cde");
  EXPECT_FALSE(FindFileIgnoringCase(dir.path(), "Sony.cde").has_value());
  EXPECT_FALSE(FindFileIgnoringCase(dir.path() / "nowhere", "x").has_value());
  EXPECT_TRUE(std::filesystem::exists(ExecutableFolder() / "test_runtime"));
}

}  // namespace
}  // namespace bw
