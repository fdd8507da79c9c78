#include "support/scripted_host.h"

#include <atomic>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace bw::test {

MsgBoxResult ScriptedHost::MsgBox(const std::string& text, MsgBoxStyle style) {
  messages.push_back(text);
  styles.push_back(style);
  if (style == MsgBoxStyle::OKOnly) return MsgBoxResult::OK;
  if (answers.empty()) return MsgBoxResult::No;
  MsgBoxResult answer = answers.front();
  answers.pop_front();
  return answer;
}

std::string ScriptedHost::OpenFileDialog(const std::string& filter, const std::string& startPath) {
  openRequests.push_back({filter, startPath});
  if (openAnswers.empty()) return {};
  std::string answer = openAnswers.front();
  openAnswers.pop_front();
  return answer;
}

std::string ScriptedHost::SaveFileDialog(const std::string& filter, const std::string& startPath) {
  saveRequests.push_back({filter, startPath});
  if (saveAnswers.empty()) return {};
  std::string answer = saveAnswers.front();
  saveAnswers.pop_front();
  return answer;
}

void ScriptedHost::DoEvents() {
  ++doEventsCalls;
  if (clicks.empty()) {
    if (++idleCalls > idleLimit) throw ScriptExhausted();
    return;
  }
  idleCalls = 0;
  auto action = std::move(clicks.front());
  clicks.pop_front();
  action();
}

TempDir::TempDir() {
  static std::atomic<int> counter{0};
  path_ = std::filesystem::temp_directory_path() /
          ("bwtest-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
  std::filesystem::remove_all(path_);
  std::filesystem::create_directories(path_);
}

TempDir::~TempDir() {
  std::error_code ec;
  std::filesystem::remove_all(path_, ec);
}

std::filesystem::path TempDir::Write(const std::string& relative, const std::string& text) const {
  std::filesystem::path file = path_ / relative;
  std::filesystem::create_directories(file.parent_path());
  std::ofstream out(file, std::ios::binary);
  out << text;
  return file;
}

std::string ReadFileBytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

}  // namespace bw::test
