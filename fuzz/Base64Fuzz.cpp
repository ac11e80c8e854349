#include <algorithm>
#include <string>

#include "Fuzz.h"
#include "control/Base64.h"

namespace tarnel::fuzz {
namespace {

void encodesAndDecodesBack(std::string_view bytes) {
  const std::string text = base64::encode(bytes);
  check(text.size() == (bytes.size() + 2) / 3 * 4,
        "an encoding has four characters for three bytes");
  check(base64::decode(text) == bytes, "what was encoded decodes to the same bytes");
  std::string escaped;
  base64::encodeEscapedTo(bytes, escaped);
  std::string plain;
  for (const char c : escaped) {
    if (c != '\\') plain.push_back(c);
  }
  check(plain == text, "without its backslashes an escaped encoding is the encoding");
}

void decodes(std::string_view text) {
  const auto bytes = base64::decode(text);
  if (!bytes) return;
  check(text.size() % 4 == 0, "what decodes is whole quanta");
  const auto padding = std::count(text.begin(), text.end(), '=');
  check(bytes->size() == text.size() / 4 * 3 - static_cast<std::size_t>(padding),
        "the length fits the text's");
  // All but the bits left over before the padding come back.
  const std::size_t exact = padding > 0 ? text.size() - 4 : text.size();
  check(base64::encode(*bytes).substr(0, exact) == text.substr(0, exact),
        "what was decoded encodes to the same text");
}

}  // namespace
}  // namespace tarnel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input = tarnel::fuzz::inputOf(data, size);
  tarnel::fuzz::encodesAndDecodesBack(input);
  tarnel::fuzz::decodes(input);
  return 0;
}
