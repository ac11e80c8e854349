// What a share leaves out although it lies in its folder: everything below a name that stands for a
// secret (isSecretName), but for the paths that its owner has chosen to show.
//
// The rule goes by name and not by what was found once: a secret that appears after the folder was
// shared is hidden too. Paths are those of the folder itself, without any link in them. Threads:
// plain values.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarnel {

class HiddenPaths {
 public:
  HiddenPaths() = default;
  // Each path is shown with all that is below it.
  explicit HiddenPaths(std::vector<std::string> shownPaths) : shown(std::move(shownPaths)) {}

  [[nodiscard]] bool hides(std::string_view path) const;

 private:
  std::vector<std::string> shown;
};

}  // namespace tarnel
