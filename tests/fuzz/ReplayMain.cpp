#include "tests/fuzz/FuzzTarget.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

// Gives a fuzz target every file of a folder, one after the other, without libFuzzer and with any compiler:
// replay FOLDER. Fails when there is none.
int main(int argc, char **argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
    return 2;
  }
  std::vector<std::filesystem::path> paths;
  std::error_code error;
  for (const auto &entry : std::filesystem::directory_iterator(argv[1], error)) {
    if (entry.is_regular_file()) paths.push_back(entry.path());
  }
  std::ranges::sort(paths);
  for (const auto &path : paths) {
    // Said before, so that the last line names the input that ended the program.
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    // A copy without room to spare, so that a step too far is seen.
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
  }
  // An empty input, as libFuzzer's first always is.
  const std::uint8_t none = 0;
  LLVMFuzzerTestOneInput(&none, 0);
  std::printf("%zu inputs\n", paths.size());
  return paths.empty() ? 1 : 0;
}
