#include "control/Printable.h"

#include "control/Text.h"

namespace tarnel {
namespace {

// U+0080 to U+009F, in UTF-8.
bool isC1(std::string_view text, std::size_t i) {
  return text[i] == '\xC2' && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
}

void appendHex(std::string& out, char c) {
  constexpr std::string_view hex = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(c);
  out += {'\\', 'x', hex[byte >> 4], hex[byte & 15]};
}

}  // namespace

std::string printable(std::string_view text) {
  const bool isText = isValidUtf8(text);
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (isText && isC1(text, i)) {
      appendHex(out, text[i]);
      appendHex(out, text[++i]);
    } else if (byte < 0x20 || byte == 0x7f || (byte >= 0x80 && !isText)) {
      appendHex(out, text[i]);
    } else {
      out.push_back(text[i]);
    }
  }
  return out;
}

}  // namespace tarnel
