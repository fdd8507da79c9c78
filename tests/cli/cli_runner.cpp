#include "cli/cli_runner.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <stdexcept>

namespace bw::clitest {

namespace {

void CloseIfOpen(int& fd) {
  if (fd >= 0) ::close(fd);
  fd = -1;
}

}  // namespace

std::filesystem::path CliProgram() { return BW_CLI_PROGRAM; }

CliResult RunCli(const std::vector<std::string>& args, const std::filesystem::path& folder, bool stderrOnTerminal) {
  int outPipe[2];
  if (::pipe(outPipe) != 0) throw std::runtime_error("pipe failed");
  int errRead = -1, errWrite = -1;
  if (stderrOnTerminal) {
    if (::openpty(&errRead, &errWrite, nullptr, nullptr, nullptr) != 0) throw std::runtime_error("openpty failed");
  } else {
    int errPipe[2];
    if (::pipe(errPipe) != 0) throw std::runtime_error("pipe failed");
    errRead = errPipe[0];
    errWrite = errPipe[1];
  }

  const std::string program = CliProgram().string();
  std::vector<std::string> argvText;
  argvText.push_back(program);
  argvText.insert(argvText.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (std::string& a : argvText) argv.push_back(a.data());
  argv.push_back(nullptr);

  pid_t pid = ::fork();
  if (pid < 0) throw std::runtime_error("fork failed");
  if (pid == 0) {
    ::dup2(outPipe[1], 1);
    ::dup2(errWrite, 2);
    int devNull = ::open("/dev/null", O_RDONLY);
    if (devNull >= 0) ::dup2(devNull, 0);
    ::close(outPipe[0]);
    ::close(outPipe[1]);
    ::close(errRead);
    ::close(errWrite);
    if (::chdir(folder.c_str()) != 0) ::_exit(126);
    ::execv(program.c_str(), argv.data());
    ::_exit(127);
  }
  ::close(outPipe[1]);
  ::close(errWrite);

  CliResult result;
  int fds[2] = {outPipe[0], errRead};
  std::string* sinks[2] = {&result.out, &result.err};
  std::array<char, 4096> buffer;
  while (fds[0] >= 0 || fds[1] >= 0) {
    pollfd polls[2];
    for (int i = 0; i < 2; ++i) polls[i] = {fds[i], POLLIN, 0};
    if (::poll(polls, 2, 60000) <= 0) break;  // a minute without output: give up reading
    for (int i = 0; i < 2; ++i) {
      if (fds[i] < 0 || polls[i].revents == 0) continue;
      ssize_t n = ::read(fds[i], buffer.data(), buffer.size());
      if (n > 0) sinks[i]->append(buffer.data(), static_cast<std::size_t>(n));
      else CloseIfOpen(fds[i]);  // end of file, or EIO once the terminal's last writer is gone
    }
  }
  CloseIfOpen(fds[0]);
  CloseIfOpen(fds[1]);
  int wstatus = 0;
  ::waitpid(pid, &wstatus, 0);
  result.status = WIFEXITED(wstatus) ? WEXITSTATUS(wstatus) : -1;
  return result;
}

std::string Shell(const std::string& command, int* status) {
  std::string out;
  FILE* p = ::popen(command.c_str(), "r");
  if (!p) return out;
  std::array<char, 4096> buf;
  std::size_t n;
  while ((n = std::fread(buf.data(), 1, buf.size(), p)) > 0) out.append(buf.data(), n);
  int rc = ::pclose(p);
  if (status) *status = rc;
  return out;
}

std::string ShellQuote(const std::string& text) {
  std::string out = "'";
  for (char c : text) {
    if (c == '\'') out += "'\\''";
    else out += c;
  }
  return out + "'";
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t i = 0;
  while (i < text.size()) {
    std::size_t e = text.find('\n', i);
    if (e == std::string::npos) e = text.size();
    lines.push_back(text.substr(i, e - i));
    i = e + 1;
  }
  return lines;
}

std::vector<std::string> Words(const std::string& text) {
  std::vector<std::string> words;
  std::string word;
  for (char c : text) {
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
      if (!word.empty()) words.push_back(word);
      word.clear();
    } else {
      word += c;
    }
  }
  if (!word.empty()) words.push_back(word);
  return words;
}

}  // namespace bw::clitest
