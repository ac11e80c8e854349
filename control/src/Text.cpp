#include "control/Text.h"

#include <utf8proc.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace tarnel {
namespace {

constexpr std::uint64_t highBits = 0x8080808080808080u;

std::uint8_t byteAt(std::string_view text, std::size_t i) {
  return static_cast<std::uint8_t>(text[i]);
}

// The length of the well-formed sequence at i (RFC 3629, section 4), 0 if there is none.
std::size_t sequenceLength(std::string_view text, std::size_t i) {
  const std::uint8_t lead = byteAt(text, i);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xC2 && lead < 0xE0   ? 2
                             : lead >= 0xE0 && lead < 0xF0 ? 3
                             : lead >= 0xF0 && lead < 0xF5 ? 4
                                                           : 0;
  if (length == 0 || text.size() - i < length) return 0;
  for (std::size_t k = 1; k < length; ++k) {
    if ((byteAt(text, i + k) & 0xC0) != 0x80) return 0;
  }
  const std::uint8_t second = byteAt(text, i + 1);
  const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
  const bool surrogate = lead == 0xED && second >= 0xA0;
  const bool tooLarge = lead == 0xF4 && second >= 0x90;
  return overlong || surrogate || tooLarge ? 0 : length;
}

}  // namespace

bool isAscii(std::string_view text) {
  std::size_t i = 0;
  for (; i + 8 <= text.size(); i += 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data() + i, 8);
    if ((word & highBits) != 0) return false;
  }
  for (; i < text.size(); ++i) {
    if (byteAt(text, i) >= 0x80) return false;
  }
  return true;
}

bool isValidUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = sequenceLength(text, i);
    if (length == 0) return false;
    i += length;
  }
  return true;
}

std::string composed(std::string_view text) {
  if (isAscii(text)) return std::string(text);
  utf8proc_uint8_t* made = nullptr;
  const auto options = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE);
  const utf8proc_ssize_t length =
      utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                   static_cast<utf8proc_ssize_t>(text.size()), &made, options);
  if (length < 0) return std::string(text);  // not UTF-8
  const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(made, &std::free);
  return std::string(reinterpret_cast<const char*>(made), static_cast<std::size_t>(length));
}

bool textEqual(std::string_view a, std::string_view b) {
  if (a == b) return true;
  if (isAscii(a) && isAscii(b)) return false;
  return composed(a) == composed(b);
}

bool textLess(std::string_view a, std::string_view b) {
  if (isAscii(a) && isAscii(b)) return a < b;
  return composed(a) < composed(b);
}

}  // namespace tarnel
