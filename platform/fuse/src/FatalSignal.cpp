#include "FatalSignal.h"

#include <signal.h>

#include <charconv>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>

namespace tarnel {

namespace {

using SignalMask = std::uint64_t;  // bit 0 for signal 1

constexpr SignalMask maskOf(int signal) { return SignalMask{1} << (signal - 1); }

// What ends a program with a core dump unless it says otherwise. The kernel does not turn these
// into SIGKILL when they are sent.
constexpr SignalMask coreDumping =
    maskOf(SIGQUIT) | maskOf(SIGILL) | maskOf(SIGTRAP) | maskOf(SIGABRT) | maskOf(SIGBUS) |
    maskOf(SIGFPE) | maskOf(SIGSEGV) | maskOf(SIGXCPU) | maskOf(SIGXFSZ) | maskOf(SIGSYS);

// proc(5): "SigPnd:\t0000000000000100", a mask in hexadecimal.
SignalMask maskIn(std::string_view status, std::string_view key) {
  const std::size_t at = status.find(key);
  if (at == std::string_view::npos) return 0;
  const std::string_view digits = status.substr(at + key.size(), 16);
  SignalMask mask = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), mask, 16);
  return mask;
}

}  // namespace

bool showsFatalSignal(std::string_view status) {
  const SignalMask own = maskIn(status, "SigPnd:\t");
  if ((own & maskOf(SIGKILL)) != 0) return true;
  const SignalMask pending = own | maskIn(status, "ShdPnd:\t");
  const SignalMask harmless =
      maskIn(status, "SigBlk:\t") | maskIn(status, "SigIgn:\t") | maskIn(status, "SigCgt:\t");
  return (pending & coreDumping & ~harmless) != 0;
}

bool hasFatalSignal(pid_t thread) {
  std::ifstream file("/proc/" + std::to_string(thread) + "/status");
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  return showsFatalSignal(text);
}

}  // namespace tarnel
