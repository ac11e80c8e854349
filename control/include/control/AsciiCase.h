// Lower case of the letters of ASCII alone; every other byte stays what it is. For words of our own:
// no other character's lower case is one of their letters.
#pragma once

#include <algorithm>
#include <string>

namespace tarnel {

[[nodiscard]] constexpr char asciiLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

[[nodiscard]] inline std::string asciiLower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) { return asciiLower(c); });
  return text;
}

}  // namespace tarnel
