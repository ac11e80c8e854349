// The fenced blocks of a Markdown document: what stands between a line of three backquotes with an
// information text and the next line of three backquotes.
#pragma once

#include <cstddef>
#include <fstream>
#include <string>
#include <vector>

namespace tarnel::test {

struct FencedBlock {
  std::string info;
  std::vector<std::string> lines;
  std::size_t firstLine = 0;  // in the document, from 1
};

inline std::vector<FencedBlock> fencedBlocks(const std::string& path) {
  std::vector<FencedBlock> blocks;
  std::ifstream document(path);
  bool inside = false;
  std::size_t number = 0;
  for (std::string line; std::getline(document, line);) {
    ++number;
    if (line.starts_with("```")) {
      inside = !inside;
      if (inside) blocks.push_back({.info = line.substr(3), .lines = {}, .firstLine = number + 1});
    } else if (inside) {
      blocks.back().lines.push_back(line);
    }
  }
  return blocks;
}

}  // namespace tarnel::test
