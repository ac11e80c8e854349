#include "control/Base64.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "Base64Avx2.h"

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

// One character; behind a backslash when it is a slash inside a JSON string.
template <bool escaped>
char* put(std::uint32_t sextet, char* to) {
  const char c = alphabet[sextet & 63];
  if (escaped && c == '/') *to++ = '\\';
  *to++ = c;
  return to;
}

template <bool escaped>
char* encodeInto(BytesView bytes, char* to) {
  std::size_t i = 0;
  to = escaped ? avx2::encodeEscaped(bytes, i, to) : avx2::encode(bytes, i, to);
  for (; i + 3 <= bytes.size(); i += 3) {
    const std::uint32_t word =
        byteAt(bytes, i) << 16 | byteAt(bytes, i + 1) << 8 | byteAt(bytes, i + 2);
    for (const int shift : {18, 12, 6, 0}) to = put<escaped>(word >> shift, to);
  }
  if (i == bytes.size()) return to;
  const bool two = i + 2 == bytes.size();
  const std::uint32_t word = byteAt(bytes, i) << 16 | (two ? byteAt(bytes, i + 1) << 8 : 0);
  to = put<escaped>(word >> 18, to);
  to = put<escaped>(word >> 12, to);
  if (two) to = put<escaped>(word >> 6, to);
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
  out.resize_and_overwrite((bytes.size() + 2) / 3 * 4, [&](char* data, std::size_t size) {
    encodeInto<false>(bytes, data);
    return size;
  });
  return out;
}

void encodeEscapedTo(BytesView bytes, std::string& out) {
  // In small pieces, since in the worst case every character is a slash and takes two.
  constexpr std::size_t piece = 3 * 4096;
  for (; !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size()))) {
    const BytesView part = bytes.substr(0, piece);
    const std::size_t before = out.size();
    const std::size_t most = (part.size() + 2) / 3 * 8 + avx2::slack;
    if (out.capacity() < before + most) out.reserve(std::max(before + most, 2 * before));
    out.resize_and_overwrite(before + most, [&](char* data, std::size_t) {
      return static_cast<std::size_t>(encodeInto<true>(part, data + before) - data);
    });
  }
}

std::optional<Bytes> decode(std::string_view text) {
  if (text.empty()) return Bytes();
  if (text.size() % 4 != 0) return std::nullopt;
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  const std::string_view whole = text.substr(0, text.size() - (padding > 0 ? 4 : 0));
  const std::size_t size = whole.size() / 4 * 3;

  bool good = false;
  Bytes out;
  out.resize_and_overwrite(size + 3 + avx2::slack, [&](char* data, std::size_t) {
    good = decodeInto(whole, data);
    if (!good || padding == 0) return size;
    // The last quantum with its padding taken as zeros: the bits left over are ignored.
    std::array<char, 4> last{'A', 'A', 'A', 'A'};
    for (std::size_t k = 0; k < 4 - padding; ++k) last[k] = text[whole.size() + k];
    good = decodeQuantum(last.data(), data + size);
    return size + 3 - padding;
  });
  if (!good) return std::nullopt;
  return out;
}

}  // namespace tarnel::base64
