// A folder of a test's own, removed with everything in it at the end.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace tarnel::test {

class TempDir {
 public:
  // Short, since the path of a socket in it must be.
  TempDir() {
    std::string pattern = "/tmp/tarnel-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    root = pattern;
  }
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  [[nodiscard]] const std::string& path() const { return root; }
  [[nodiscard]] std::string operator/(std::string_view relative) const {
    return root + "/" + std::string(relative);
  }

 private:
  std::string root;
};

}  // namespace tarnel::test
