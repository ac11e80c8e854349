#include "control/WireVersion.h"

#include <charconv>
#include <system_error>

namespace tarnel {

std::optional<std::int64_t> WireVersion::streamVersion(
    const std::map<std::string, std::string>& attributes) {
  const auto found = attributes.find(std::string(streamAttribute));
  if (found == attributes.end()) return std::nullopt;
  std::string_view text = found->second;
  // from_chars takes a minus, no plus; what follows a plus must not be a second sign.
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return std::nullopt;
  }
  std::int64_t version = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), version);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return version;
}

}  // namespace tarnel
