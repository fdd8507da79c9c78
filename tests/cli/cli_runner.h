// Running the real burstwright-cli program from a test: arguments as given (no
// shell), a chosen working folder, stdout and stderr captured apart, stderr on
// a pipe or on a pseudo-terminal, and the exit status.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace bw::clitest {

struct CliResult {
  int status = -1;  ///< exit status; -1 when the program did not exit normally
  std::string out;  ///< everything written to stdout
  std::string err;  ///< everything written to stderr
};

/// Runs the built burstwright-cli with `args` in `folder`. With `stderrOnTerminal`
/// its stderr is a pseudo-terminal (stdout stays a pipe).
CliResult RunCli(const std::vector<std::string>& args, const std::filesystem::path& folder,
                 bool stderrOnTerminal = false);

/// Path of the program under test.
std::filesystem::path CliProgram();

/// Runs a shell command line and returns its stdout (for mdbtools).
std::string Shell(const std::string& command, int* status = nullptr);

/// `text` single-quoted for the shell.
std::string ShellQuote(const std::string& text);

/// Text cut at '\n'; a last line without one is kept, an empty text gives none.
std::vector<std::string> Lines(const std::string& text);

/// Text cut at blanks and tabs, empty fields dropped.
std::vector<std::string> Words(const std::string& text);

}  // namespace bw::clitest
