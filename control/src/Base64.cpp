#include "control/Base64.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "Base64Avx2.h"
#include "Base64Pieces.h"
#include "Base64Plain.h"
#include "Base64Vbmi.h"
#include "SlashEscape.h"

namespace tarnel::base64 {
namespace {

constexpr std::size_t encodedSize(std::size_t bytes) { return (bytes + 2) / 3 * 4; }

char* encodeInto(BytesView bytes, char* to) {
  std::size_t done = 0;
  to = avx2::encode(bytes, done, to);
  return plain::encode(bytes.substr(done), to);
}

// What the text decodes to before its padding; false when a character is outside the alphabet.
bool decodeInto(std::string_view text, char* to) {
  std::size_t done = 0;
  to = vbmi::decode(text, done, to);
  to = avx2::decode(text, done, to);
  return plain::decode(text.substr(done), to);
}

}  // namespace

std::string encode(BytesView bytes) {
  std::string out;
  const std::size_t size = encodedSize(bytes.size());
  // The size that the callback is given is not used: libstdc++ 12 passes the capacity there.
  out.resize_and_overwrite(size, [&](char* data, std::size_t) {
    encodeInto(bytes, data);
    return size;
  });
  return out;
}

void encodeEscapedTo(BytesView bytes, std::string& out) {
  const std::size_t before = out.size();
  const std::size_t most = before + 2 * encodedSize(bytes.size());
  if (out.capacity() < most) out.reserve(std::max(most, 2 * before));
  out.resize_and_overwrite(most, [&](char* data, std::size_t) {
    std::size_t done = 0;
    char* const to = vbmi::encodeEscaped(bytes, done, data + before);
    return static_cast<std::size_t>(encodeEscapedInPieces(bytes.substr(done), to) - data);
  });
}

char* encodeEscapedInPieces(BytesView bytes, char* to) {
  constexpr std::size_t piece = 6 * 1024;
  std::array<char, encodedSize(piece)> text;
  for (std::size_t done = 0; done < bytes.size(); done += piece) {
    const char* const end = encodeInto(bytes.substr(done, piece), text.data());
    to = escapeSlashes({text.data(), end}, to);
  }
  return to;
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
    if (!plain::decodeQuantum(last.data(), text.data() + size)) return std::nullopt;
    size += 3 - padding;
  }
  text.resize(size);
  return text;
}

}  // namespace tarnel::base64
