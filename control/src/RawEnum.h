// fromRawValue for an enumeration with a table of its raw values, in order of declaration.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace tarnel {

template <class Enum, std::size_t count>
std::optional<Enum> enumOf(const std::array<std::string_view, count>& rawValues,
                           std::string_view rawValue) {
  for (std::size_t i = 0; i < count; ++i) {
    if (rawValues[i] == rawValue) return static_cast<Enum>(i);
  }
  return std::nullopt;
}

}  // namespace tarnel
