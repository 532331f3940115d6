// SPDX-License-Identifier: MIT
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Runs every file below the folders that are named once; a number stands for so many inputs of random bytes, the same
/// each time. A folder that does not exist holds no findings yet.
int main(int argc, char** argv) {
  int runs = 0;
  const std::uint8_t nothing = 0;
  LLVMFuzzerTestOneInput(&nothing, 0);
  std::mt19937 random(1);
  for (int i = 1; i < argc; ++i) {
    for (int left = std::atoi(argv[i]); left > 0; --left, ++runs) {
      std::vector<std::uint8_t> bytes(400);
      for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
      LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
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
  std::fprintf(stderr, "%d inputs\n", runs);
  return 0;
}
