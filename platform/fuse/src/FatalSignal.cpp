#include "FatalSignal.h"

#include <signal.h>

#include <charconv>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>

namespace tarnel {

// proc(5): "SigPnd:\t0000000000000100", a mask in hexadecimal, bit 0 for signal 1.
bool showsFatalSignal(std::string_view status) {
  constexpr std::string_view key = "SigPnd:\t";
  const std::size_t at = status.find(key);
  if (at == std::string_view::npos) return false;
  const std::string_view digits = status.substr(at + key.size(), 16);
  std::uint64_t pending = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), pending, 16);
  return (pending >> (SIGKILL - 1) & 1) != 0;
}

bool hasFatalSignal(pid_t thread) {
  std::ifstream file("/proc/" + std::to_string(thread) + "/status");
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  return showsFatalSignal(text);
}

}  // namespace tarnel
