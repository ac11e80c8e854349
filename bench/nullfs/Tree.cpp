#include "Tree.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <queue>
#include <utility>

namespace tarnel::nullfs {
namespace {

std::expected<struct stat, std::error_code> statusOf(const std::filesystem::path& path) {
  struct stat result{};
  if (::lstat(path.c_str(), &result) != 0) {
    return std::unexpected(std::error_code(errno, std::generic_category()));
  }
  return result;
}

bool isServed(const struct stat& st) { return S_ISDIR(st.st_mode) || S_ISREG(st.st_mode); }

Node makeNode(std::string name, const struct stat& st, std::uint32_t parent) {
  return {.name = std::move(name),
          .size = st.st_size,
          .mtime = st.st_mtim,
          .isDirectory = S_ISDIR(st.st_mode),
          .parent = parent};
}

}  // namespace

std::expected<Tree, std::error_code> Tree::read(const std::filesystem::path& folder) {
  const auto top = statusOf(folder);
  if (!top) return std::unexpected(top.error());
  if (!S_ISDIR(top->st_mode)) {
    return std::unexpected(std::make_error_code(std::errc::not_a_directory));
  }

  Tree tree;
  tree.nodes.push_back(makeNode("", *top, root));
  std::queue<std::pair<std::uint32_t, std::filesystem::path>> folders;
  folders.emplace(root, folder);
  for (; !folders.empty(); folders.pop()) {
    const auto& [number, path] = folders.front();
    if (const auto error = tree.appendChildren(number, path)) return std::unexpected(error);
    const Node& node = tree.nodes[number];
    for (auto child = node.firstChild; child < node.firstChild + node.childCount; ++child) {
      if (tree[child].isDirectory) folders.emplace(child, path / tree[child].name);
    }
  }
  return tree;
}

std::span<const Node> Tree::children(std::uint32_t number) const {
  return std::span(nodes).subspan(nodes[number].firstChild, nodes[number].childCount);
}

std::uint32_t Tree::child(std::uint32_t parent, std::string_view name) const {
  const auto all = children(parent);
  const auto found = std::ranges::lower_bound(all, name, {}, &Node::name);
  if (found == all.end() || found->name != name) return root;
  return nodes[parent].firstChild + static_cast<std::uint32_t>(found - all.begin());
}

std::error_code Tree::appendChildren(std::uint32_t parent, const std::filesystem::path& folder) {
  std::vector<Node> found;
  std::error_code error;
  for (std::filesystem::directory_iterator at(folder, error), end; !error && at != end;
       at.increment(error)) {
    const auto st = statusOf(at->path());
    if (!st) return st.error();
    if (isServed(*st)) found.push_back(makeNode(at->path().filename().string(), *st, parent));
  }
  if (error) return error;

  std::ranges::sort(found, {}, &Node::name);
  nodes[parent].firstChild = static_cast<std::uint32_t>(nodes.size());
  nodes[parent].childCount = static_cast<std::uint32_t>(found.size());
  std::ranges::move(found, std::back_inserter(nodes));
  return {};
}

}  // namespace tarnel::nullfs
