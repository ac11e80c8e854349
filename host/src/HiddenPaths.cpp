#include "host/HiddenPaths.h"

#include <algorithm>

#include "host/SecretNames.h"
#include "host/SharePath.h"

namespace tarnel {

bool HiddenPaths::hides(std::string_view path) const {
  for (std::string_view left = path; !left.empty();) {
    const std::string_view name = takeComponent(left);
    if (!isSecretName(name)) continue;
    const auto length = static_cast<std::size_t>(name.data() + name.size() - path.data());
    return std::find(shown.begin(), shown.end(), path.substr(0, length)) == shown.end();
  }
  return false;
}

}  // namespace tarnel
