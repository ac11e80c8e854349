// Files, folders and links to be shared, in a folder of the test's own.
#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "support/TempDir.h"

namespace tarnel::test {

class FileTree {
 public:
  [[nodiscard]] std::string operator/(std::string_view relative) const { return root / relative; }
  [[nodiscard]] const std::string& path() const { return root.path(); }

  // Each makes the folders above it.
  void folder(std::string_view relative) const {
    std::filesystem::create_directories(*this / relative);
  }
  void file(std::string_view relative, std::string_view content = {}) const {
    makeParent(relative);
    std::ofstream(*this / relative, std::ios::binary | std::ios::trunc) << content;
  }
  void link(std::string_view relative, const std::string& target) const {
    makeParent(relative);
    std::filesystem::create_symlink(target, *this / relative);
  }
  void fifo(std::string_view relative) const {
    makeParent(relative);
    ::mkfifo((*this / relative).c_str(), 0644);
  }

 private:
  void makeParent(std::string_view relative) const {
    std::filesystem::create_directories(std::filesystem::path(*this / relative).parent_path());
  }

  TempDir root;
};

}  // namespace tarnel::test
