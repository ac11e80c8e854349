#include "fs/KeyedHash.h"

#include <bit>
#include <cstring>
#include <random>

namespace tarnel {
namespace {

struct State {
  std::uint64_t v0;
  std::uint64_t v1;
  std::uint64_t v2;
  std::uint64_t v3;

  void round() {
    v0 += v1;
    v1 = std::rotl(v1, 13) ^ v0;
    v0 = std::rotl(v0, 32);
    v2 += v3;
    v3 = std::rotl(v3, 16) ^ v2;
    v0 += v3;
    v3 = std::rotl(v3, 21) ^ v0;
    v2 += v1;
    v1 = std::rotl(v1, 17) ^ v2;
    v2 = std::rotl(v2, 32);
  }

  void take(std::uint64_t word) {
    v3 ^= word;
    round();
    round();
    v0 ^= word;
  }
};

// The first bytes of a text, at most eight, the first one lowest.
std::uint64_t word(const char* bytes, std::size_t count) {
  std::uint64_t value = 0;
  std::memcpy(&value, bytes, count);
  if constexpr (std::endian::native == std::endian::big) value = std::byteswap(value);
  return value;
}

}  // namespace

HashKey HashKey::random() {
  std::random_device source;
  const auto half = [&] { return std::uint64_t{source()} << 32 | source(); };
  const std::uint64_t first = half();
  return {.first = first, .second = half()};
}

std::uint64_t keyedHash(const HashKey& key, std::string_view text) {
  State state = {.v0 = key.first ^ 0x736f6d6570736575,
                 .v1 = key.second ^ 0x646f72616e646f6d,
                 .v2 = key.first ^ 0x6c7967656e657261,
                 .v3 = key.second ^ 0x7465646279746573};
  const std::uint64_t length = text.size();
  for (; text.size() >= 8; text.remove_prefix(8)) state.take(word(text.data(), 8));
  const std::uint64_t rest = text.empty() ? 0 : word(text.data(), text.size());
  state.take(rest | length << 56);
  state.v2 ^= 0xff;
  for (int i = 0; i < 4; ++i) state.round();
  return state.v0 ^ state.v1 ^ state.v2 ^ state.v3;
}

}  // namespace tarnel
