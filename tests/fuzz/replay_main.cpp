// Runs a fuzz harness once over each input it is given: every file named on
// the command line and every file under every folder named (a folder that is
// not there holds nothing). The file's name is printed before it runs, so a
// crash or an escaping exception is reported against the input that caused it.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
  namespace fs = std::filesystem;
  std::vector<fs::path> inputs;
  for (int i = 1; i < argc; ++i) {
    fs::path given = argv[i];
    std::error_code ec;
    if (fs::is_directory(given, ec)) {
      for (const auto& e : fs::recursive_directory_iterator(given))
        if (e.is_regular_file()) inputs.push_back(e.path());
    } else if (fs::is_regular_file(given, ec)) {
      inputs.push_back(given);
    }
  }
  std::sort(inputs.begin(), inputs.end());
  if (inputs.empty()) {
    std::fprintf(stderr, "replay: no input files in the paths given\n");
    return 2;
  }
  for (const auto& path : inputs) {
    std::fprintf(stderr, "replay: %s\n", path.c_str());
    std::ifstream in(path, std::ios::binary);
    std::vector<uint8_t> data((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (!in.good() && !in.eof()) {
      std::fprintf(stderr, "replay: cannot read %s\n", path.c_str());
      return 2;
    }
    try {
      LLVMFuzzerTestOneInput(data.data(), data.size());
    } catch (const std::exception& e) {
      std::fprintf(stderr, "replay: %s: uncaught exception: %s\n", path.c_str(), e.what());
      return 1;
    } catch (...) {
      std::fprintf(stderr, "replay: %s: uncaught exception of an unknown type\n", path.c_str());
      return 1;
    }
  }
  std::fprintf(stderr, "replay: %zu inputs, no fault\n", inputs.size());
  return 0;
}
