// Runs a fuzz target on files that are kept: its seeds and the inputs of past findings.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "Fuzz.h"

int main(int count, char** arguments) {
  std::size_t ran = 0;
  for (int i = 1; i < count; ++i) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(arguments[i])) {
      if (!entry.is_regular_file()) continue;
      std::cout << entry.path().string() << "\n" << std::flush;
      std::ifstream file(entry.path(), std::ios::binary);
      const std::string bytes{std::istreambuf_iterator<char>(file), {}};
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
      ++ran;
    }
  }
  std::cout << ran << " inputs\n";
  return ran > 0 ? 0 : 1;  // a target without a corpus was not run
}
