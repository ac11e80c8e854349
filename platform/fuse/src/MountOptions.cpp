#include "fusefs/MountOptions.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace tarnel {
namespace {

// The kernel counts time-outs in seconds of 64 bits; a year is "for ever" to any user.
constexpr double maximumSeconds = 365.0 * 24 * 60 * 60;

std::optional<double> seconds(std::string_view text) {
  double value = 0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || rest != text.data() + text.size()) return std::nullopt;
  if (!(value >= 0 && value <= maximumSeconds)) return std::nullopt;
  return value;
}

std::expected<void, std::string> apply(MountOptions& options, std::string_view option) {
  const std::size_t equals = option.find('=');
  const std::string_view name = option.substr(0, equals);
  if (equals == std::string_view::npos) {
    if (name == "ro") return {};
    if (name == "allow_other") {
      options.allowOther = true;
      return {};
    }
    if (name == "default_permissions") {
      options.defaultPermissions = true;
      return {};
    }
    if (name == "rw") return std::unexpected("the volume is read-only: option rw is refused");
  } else if (name == "attr_timeout" || name == "entry_timeout") {
    const auto value = seconds(option.substr(equals + 1));
    if (!value) {
      return std::unexpected("option " + std::string(name) + " wants seconds, 0 or more, not '" +
                             std::string(option.substr(equals + 1)) + "'");
    }
    (name == "attr_timeout" ? options.attributeTimeout : options.entryTimeout) = *value;
    return {};
  }
  return std::unexpected("unknown mount option '" + std::string(option) +
                         "': ro, allow_other, default_permissions, attr_timeout=S and "
                         "entry_timeout=S are known");
}

}  // namespace

std::expected<MountOptions, std::string> MountOptions::parse(std::string_view text) {
  MountOptions options;
  while (!text.empty()) {
    const std::string_view option = text.substr(0, text.find(','));
    text.remove_prefix(std::min(option.size() + 1, text.size()));
    if (option.empty()) continue;
    if (auto applied = apply(options, option); !applied) return std::unexpected(applied.error());
  }
  return options;
}

}  // namespace tarnel
