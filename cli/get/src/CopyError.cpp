#include "get/CopyError.h"

#include <array>

#include "control/AsciiCase.h"
#include "control/ErrnoName.h"

namespace tarnel {
namespace {

constexpr std::size_t maxDetailBytes = 200;

struct Phrase {
  std::string_view words;
  int error;
};
// The words that every reader of the protocol looks for, then those of the reference host.
constexpr std::array phrases{Phrase{"is a directory", EISDIR}, Phrase{"not a directory", ENOTDIR},
                             Phrase{"not a file", ENOTDIR}, Phrase{"no such file", ENOENT},
                             Phrase{"permission denied", EACCES}};

}  // namespace

std::string description(const CopyError& error) {
  const std::string name = errnoName(error.error);
  return error.detail.empty() ? name : name + " (" + error.detail + ")";
}

CopyError refusalError(std::string_view message) {
  std::string text(message.substr(0, maxDetailBytes));
  const std::string lower = asciiLower(text);
  for (const Phrase& phrase : phrases) {
    if (lower.find(phrase.words) == std::string::npos) continue;
    // The phrase alone says no more than the number.
    return {.error = phrase.error, .detail = lower == phrase.words ? std::string() : text};
  }
  return {.error = EIO, .detail = std::move(text)};
}

}  // namespace tarnel
