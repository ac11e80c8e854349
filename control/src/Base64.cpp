#include "control/Base64.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "Base64Avx2.h"
#include "SlashEscape.h"

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

char* encodeInto(BytesView bytes, char* to) {
  std::size_t i = 0;
  to = avx2::encode(bytes, i, to);
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

// Four characters without padding into three bytes.
bool decodeQuantum(const char* text, char* to) {
  std::uint32_t word = 0;
  for (int k = 0; k < 4; ++k) {
    const std::uint8_t value = values[static_cast<unsigned char>(text[k])];
    if (value == notInAlphabet) return false;
    word = word << 6 | value;
  }
  for (int k = 0; k < 3; ++k) to[k] = static_cast<char>(word >> (16 - 8 * k));
  return true;
}

// What the text decodes to before its padding; false when a character is outside the alphabet.
bool decodeInto(std::string_view text, char* to) {
  std::size_t i = 0;
  to = avx2::decode(text, i, to);
  for (; i < text.size(); i += 4, to += 3) {
    if (!decodeQuantum(text.data() + i, to)) return false;
  }
  return true;
}

}  // namespace

std::string encode(BytesView bytes) {
  std::string out;
  const std::size_t size = (bytes.size() + 2) / 3 * 4;
  // The size that the callback is given is not used: libstdc++ 12 passes the capacity there.
  out.resize_and_overwrite(size, [&](char* data, std::size_t) {
    encodeInto(bytes, data);
    return size;
  });
  return out;
}

void encodeEscapedTo(BytesView bytes, std::string& out) {
  // In pieces that stay in the innermost cache between the two steps.
  constexpr std::size_t piece = 3 * 1024;
  std::array<char, piece / 3 * 4> text;
  while (!bytes.empty()) {
    const BytesView part = bytes.substr(0, piece);
    bytes.remove_prefix(part.size());
    const std::string_view encoded(text.data(), encodeInto(part, text.data()));
    const std::size_t before = out.size();
    const std::size_t most = before + 2 * encoded.size() + vectorSlack;
    if (out.capacity() < most) out.reserve(std::max(most, 2 * before));
    out.resize_and_overwrite(most, [&](char* data, std::size_t) {
      return static_cast<std::size_t>(escapeSlashes(encoded, data + before) - data);
    });
  }
}

std::optional<Bytes> decode(std::string_view text) { return decodeInPlace(std::string(text)); }

// The output is three quarters of the input and is written behind what has been read, whole vectors
// included, so one memory serves both.
std::optional<Bytes> decodeInPlace(std::string text) {
  if (text.empty()) return text;
  if (text.size() % 4 != 0) return std::nullopt;
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  const std::size_t whole = text.size() - (padding > 0 ? 4 : 0);
  std::size_t size = whole / 4 * 3;
  if (!decodeInto(std::string_view(text).substr(0, whole), text.data())) return std::nullopt;
  if (padding > 0) {
    // The last quantum with its padding taken as zeros: the bits left over are ignored.
    std::array<char, 4> last{'A', 'A', 'A', 'A'};
    for (std::size_t k = 0; k < 4 - padding; ++k) last[k] = text[whole + k];
    if (!decodeQuantum(last.data(), text.data() + size)) return std::nullopt;
    size += 3 - padding;
  }
  text.resize(size);
  return text;
}

}  // namespace tarnel::base64
