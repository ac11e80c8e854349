// Equality of the texts of a record: canonical equivalence, for a text, an optional one or a list.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "control/Text.h"

namespace tarnel {

inline bool sameText(const std::string& a, const std::string& b) { return textEqual(a, b); }

inline bool sameText(const std::vector<std::string>& a, const std::vector<std::string>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const auto& x, const auto& y) { return textEqual(x, y); });
}

template <class T>
bool sameText(const std::optional<T>& a, const std::optional<T>& b) {
  return a.has_value() == b.has_value() && (!a || sameText(*a, *b));
}

}  // namespace tarnel
