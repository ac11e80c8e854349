#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "FencedBlocks.h"

namespace tarnel::test {
namespace {

std::set<std::string> linesOfExamples() {
  std::set<std::string> lines;
  for (const auto& entry : std::filesystem::directory_iterator(TARNEL_EXAMPLES)) {
    std::ifstream source(entry.path());
    for (std::string line; std::getline(source, line);) lines.insert(line);
  }
  return lines;
}

TEST(Readme, theCodeThatItShowsIsInTheExamples) {
  const std::set<std::string> compiled = linesOfExamples();
  std::size_t shown = 0;
  for (const FencedBlock& block : fencedBlocks(TARNEL_README)) {
    if (block.info != "cpp") continue;
    for (const std::string& line : block.lines) {
      ++shown;
      EXPECT_TRUE(compiled.contains(line)) << line;
    }
  }
  EXPECT_GT(shown, 0U);
}

}  // namespace
}  // namespace tarnel::test
