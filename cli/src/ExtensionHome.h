// Where a host finds the container of a file-system extension: nowhere on systems that have none.
#pragma once

#include <optional>
#include <string>

#if defined(__APPLE__)
#include <pwd.h>
#include <unistd.h>

#include <vector>
#endif

namespace tarnel {

// The user's real home, whatever the environment says: containers are made there.
[[nodiscard]] inline std::optional<std::string> extensionHome() {
#if defined(__APPLE__)
  std::vector<char> texts(16 << 10);
  passwd user{};
  passwd* found = nullptr;
  if (::getpwuid_r(::getuid(), &user, texts.data(), texts.size(), &found) != 0 ||
      found == nullptr) {
    return std::nullopt;
  }
  return user.pw_dir;
#else
  return std::nullopt;
#endif
}

}  // namespace tarnel
