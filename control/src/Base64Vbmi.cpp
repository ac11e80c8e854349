// W. Muła, D. Lemire: Base64 encoding and decoding at almost the speed of a memory copy, Software:
// Practice and Experience 50 (2), 2020. The names of the steps are the paper's.
#include "Base64Vbmi.h"

#if defined(__x86_64__)

#include <immintrin.h>

#include <array>
#include <bit>
#include <cstdint>

#define TARNEL_VBMI \
  __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,bmi2,popcnt")))

namespace tarnel::base64::vbmi {
namespace {

constexpr std::size_t bytesAStep = 48;
constexpr std::size_t charactersAStep = 64;

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The value of each ASCII character; what is outside the alphabet has its highest bit set.
constexpr std::array<char, 128> values = [] {
  std::array<char, 128> table{};
  table.fill(static_cast<char>(0x80));
  for (std::size_t value = 0; value < 64; ++value) {
    table[static_cast<unsigned char>(alphabet[value])] = static_cast<char>(value);
  }
  return table;
}();

// Where each byte of an encoding step's output finds its bits: of three bytes 0 1 2, as 1 0 2 1.
constexpr std::array<char, 64> encodeShuffle = [] {
  std::array<char, 64> table{};
  for (std::size_t group = 0; group < 16; ++group) {
    const std::array<std::size_t, 4> order{1, 0, 2, 1};
    for (std::size_t k = 0; k < 4; ++k) {
      table[4 * group + k] = static_cast<char>(3 * group + order[k]);
    }
  }
  return table;
}();

// The three bytes of each decoded quantum, highest first.
constexpr std::array<char, 64> decodePack = [] {
  std::array<char, 64> table{};
  for (std::size_t group = 0; group < 16; ++group) {
    for (std::size_t k = 0; k < 3; ++k) {
      table[3 * group + k] = static_cast<char>(4 * group + 2 - k);
    }
  }
  return table;
}();

bool available() {
  static const bool has = __builtin_cpu_supports("avx512vbmi") &&
                          __builtin_cpu_supports("avx512vbmi2") &&
                          __builtin_cpu_supports("avx512bw") &&
                          __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("bmi2");
  return has;
}

// Where 32 characters go when each slash among them takes two places, a backslash before its own:
// one bit for each place, set for a character.
TARNEL_VBMI std::uint64_t placesOf(std::uint32_t slashes) {
  // Two bits for each character: the odd one its own, the even one a backslash's, kept for a slash.
  constexpr std::uint64_t characters = 0xAAAAAAAAAAAAAAAAu;
  constexpr std::uint64_t backslashes = 0x5555555555555555u;
  return _pext_u64(characters, characters | _pdep_u64(slashes, backslashes));
}

TARNEL_VBMI char* encodeAll(std::string_view bytes, std::size_t& i, char* to) {
  const __m512i shuffle = _mm512_loadu_si512(encodeShuffle.data());
  const __m512i characters = _mm512_loadu_si512(alphabet);
  const __m512i shifts = _mm512_set1_epi64(0x3036242a1016040a);
  // A step loads 64 bytes and fills at most 64 places: with 56 characters when they fit, as they
  // nearly always do, and else with 32.
  constexpr int few = 32;
  constexpr int many = 56;
  while (i + charactersAStep <= bytes.size()) {
    const __m512i in = _mm512_permutexvar_epi8(shuffle, _mm512_loadu_si512(bytes.data() + i));
    const __m512i indices = _mm512_multishift_epi64_epi8(shifts, in);
    const __m512i text = _mm512_permutexvar_epi8(indices, characters);
    const std::uint64_t slashes = _mm512_cmpeq_epi8_mask(text, _mm512_set1_epi8('/'));
    const auto firstSlashes = static_cast<std::uint32_t>(slashes);
    const auto laterSlashes = static_cast<std::uint32_t>(slashes >> few);
    std::uint64_t places = placesOf(firstSlashes);
    int taken = few;
    int filled = few + std::popcount(firstSlashes);
    const int filledByMany = many + std::popcount(slashes << (64 - many));
    if (filledByMany <= 64) {
      places |= placesOf(laterSlashes) << filled;
      taken = many;
      filled = filledByMany;
    }
    // 64 bytes: within twice the text, since no more than twice the done part is before it.
    _mm512_storeu_si512(to, _mm512_mask_expand_epi8(_mm512_set1_epi8('\\'), places, text));
    i += static_cast<std::size_t>(taken / 4 * 3);
    to += filled;
  }
  return to;
}

TARNEL_VBMI char* decodeAll(std::string_view text, std::size_t& i, char* to) {
  const __m512i lowValues = _mm512_loadu_si512(values.data());
  const __m512i highValues = _mm512_loadu_si512(values.data() + 64);
  const __m512i pack = _mm512_loadu_si512(decodePack.data());
  for (; i + charactersAStep <= text.size(); i += charactersAStep, to += bytesAStep) {
    const __m512i in = _mm512_loadu_si512(text.data() + i);
    const __m512i sextets = _mm512_permutex2var_epi8(lowValues, in, highValues);
    if (_mm512_movepi8_mask(_mm512_or_si512(in, sextets)) != 0) break;
    const __m512i pairs = _mm512_maddubs_epi16(sextets, _mm512_set1_epi32(0x01400140));
    const __m512i quanta = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
    _mm512_storeu_si512(to, _mm512_permutexvar_epi8(pack, quanta));
  }
  return to;
}

}  // namespace

char* encodeEscaped(std::string_view bytes, std::size_t& i, char* to) {
  return available() ? encodeAll(bytes, i, to) : to;
}

char* decode(std::string_view text, std::size_t& i, char* to) {
  return available() ? decodeAll(text, i, to) : to;
}

}  // namespace tarnel::base64::vbmi

#else

namespace tarnel::base64::vbmi {

char* encodeEscaped(std::string_view, std::size_t&, char* to) { return to; }
char* decode(std::string_view, std::size_t&, char* to) { return to; }

}  // namespace tarnel::base64::vbmi

#endif
