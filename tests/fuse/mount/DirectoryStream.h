// A directory stream and what it gives.
#pragma once

#include <dirent.h>

#include <cerrno>
#include <optional>
#include <string>
#include <vector>

namespace tarnel::test {

class DirectoryStream {
 public:
  explicit DirectoryStream(const std::string& path) : stream(::opendir(path.c_str())) {}
  ~DirectoryStream() {
    if (stream != nullptr) ::closedir(stream);
  }
  DirectoryStream(const DirectoryStream&) = delete;
  DirectoryStream& operator=(const DirectoryStream&) = delete;

  [[nodiscard]] bool isOpen() const { return stream != nullptr; }
  [[nodiscard]] DIR* get() const { return stream; }

  // What ended it: an errno, or 0 for its end.
  [[nodiscard]] int error() const { return failure; }

  // The next name; none at the end and on a failure.
  [[nodiscard]] std::optional<std::string> next() {
    errno = 0;
    const dirent* const entry = ::readdir(stream);
    if (entry == nullptr) {
      failure = errno;
      return std::nullopt;
    }
    return entry->d_name;
  }
  // All that follow.
  [[nodiscard]] std::vector<std::string> rest() {
    std::vector<std::string> names;
    while (const auto name = next()) names.push_back(*name);
    return names;
  }

 private:
  DIR* const stream;
  int failure = 0;
};

// The errno of listing a directory from its start to its end; 0 when that went well.
[[nodiscard]] inline int listError(const std::string& path) {
  DirectoryStream stream(path);
  if (!stream.isOpen()) return errno;
  (void)stream.rest();
  return stream.error();
}

}  // namespace tarnel::test
