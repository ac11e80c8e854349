#include "Base64Plain.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tarnel::base64 {
namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t notInAlphabet = 0xFF;

constexpr std::array<std::uint8_t, 256> makeValues() {
  std::array<std::uint8_t, 256> values{};
  values.fill(notInAlphabet);
  for (std::size_t i = 0; i < alphabet.size(); ++i) {
    values[static_cast<unsigned char>(alphabet[i])] = static_cast<std::uint8_t>(i);
  }
  return values;
}
constexpr std::array<std::uint8_t, 256> values = makeValues();

std::uint32_t byteAt(BytesView bytes, std::size_t i) {
  return static_cast<unsigned char>(bytes[i]);
}

char* put(std::uint32_t sextet, char* to) {
  *to = alphabet[sextet & 63];
  return to + 1;
}

}  // namespace

char* plain::encode(BytesView bytes, char* to) {
  std::size_t i = 0;
  for (; i + 3 <= bytes.size(); i += 3) {
    const std::uint32_t word =
        byteAt(bytes, i) << 16 | byteAt(bytes, i + 1) << 8 | byteAt(bytes, i + 2);
    for (const int shift : {18, 12, 6, 0}) to = put(word >> shift, to);
  }
  if (i == bytes.size()) return to;
  const bool two = i + 2 == bytes.size();
  const std::uint32_t word = byteAt(bytes, i) << 16 | (two ? byteAt(bytes, i + 1) << 8 : 0);
  to = put(word >> 18, to);
  to = put(word >> 12, to);
  if (two) to = put(word >> 6, to);
  *to++ = '=';
  if (!two) *to++ = '=';
  return to;
}

bool plain::decodeQuantum(const char* text, char* to) {
  std::uint32_t word = 0;
  for (int k = 0; k < 4; ++k) {
    const std::uint8_t value = values[static_cast<unsigned char>(text[k])];
    if (value == notInAlphabet) return false;
    word = word << 6 | value;
  }
  for (int k = 0; k < 3; ++k) to[k] = static_cast<char>(word >> (16 - 8 * k));
  return true;
}

bool plain::decode(std::string_view text, char* to) {
  for (std::size_t i = 0; i < text.size(); i += 4, to += 3) {
    if (!decodeQuantum(text.data() + i, to)) return false;
  }
  return true;
}

}  // namespace tarnel::base64
