#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <expected>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace tarnel::nullfs {

struct Node {
  std::string name;
  off_t size = 0;
  timespec mtime{};
  bool isDirectory = false;
  std::uint32_t parent = 0;      // the root is its own parent
  std::uint32_t firstChild = 0;  // children stand side by side, in byte order of their names
  std::uint32_t childCount = 0;
};

// The names, sizes and modification times of a folder tree, read once. Contents are not kept.
// Only folders and regular files are taken; everything else is left out.
// Nodes are numbered from 0, the root, and never change after read(): any thread may look.
class Tree {
 public:
  static constexpr std::uint32_t root = 0;

  // Reads the metadata of `folder` and of everything below it; the first failure ends the reading.
  [[nodiscard]] static std::expected<Tree, std::error_code> read(
      const std::filesystem::path& folder);

  [[nodiscard]] std::size_t count() const { return nodes.size(); }
  [[nodiscard]] const Node& operator[](std::uint32_t number) const { return nodes[number]; }
  [[nodiscard]] std::span<const Node> children(std::uint32_t number) const;

  // The number of the child of that name; `root`, which is nobody's child, when there is none.
  [[nodiscard]] std::uint32_t child(std::uint32_t parent, std::string_view name) const;

 private:
  std::error_code appendChildren(std::uint32_t parent, const std::filesystem::path& folder);

  std::vector<Node> nodes;  // breadth first
};

}  // namespace tarnel::nullfs
