// SPDX-License-Identifier: MIT
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Runs every file below the folders that are named once. A folder that does not exist holds no findings yet.
int main(int argc, char** argv) {
  int runs = 0;
  const std::uint8_t nothing = 0;
  LLVMFuzzerTestOneInput(&nothing, 0);
  for (int i = 1; i < argc; ++i) {
    std::error_code noSuchFolder;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i], noSuchFolder)) {
      if (!entry.is_regular_file()) continue;
      std::ifstream file(entry.path(), std::ios::binary);
      const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
      std::fprintf(stderr, "%s\n", entry.path().c_str());
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
      ++runs;
    }
  }
  std::fprintf(stderr, "%d files\n", runs);
  return 0;
}
