#include "SlashEscapeVbmi2.h"

#if defined(__x86_64__)

#include <immintrin.h>

#include <bit>
#include <cstdint>

#define TARNEL_VBMI2 __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")))

namespace tarnel::vbmi2 {
namespace {

bool available() {
  static const bool has = __builtin_cpu_supports("avx512vbmi2") &&
                          __builtin_cpu_supports("avx512bw") &&
                          __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("bmi2");
  return has;
}

// Where 32 characters go when each slash among them takes two places, a backslash before its own:
// one bit for each place, set for a character.
TARNEL_VBMI2 std::uint64_t placesOf(std::uint32_t slashes) {
  // Two bits for each character: the odd one its own, the even one a backslash's, kept for a slash.
  constexpr std::uint64_t characters = 0xAAAAAAAAAAAAAAAAu;
  constexpr std::uint64_t backslashes = 0x5555555555555555u;
  return _pext_u64(characters, characters | _pdep_u64(slashes, backslashes));
}

TARNEL_VBMI2 char* escapeAll(std::string_view text, std::size_t& i, char* to) {
  // A step fills at most 64 places: with 56 characters when they fit, as they nearly always do, and
  // else with 32.
  constexpr std::size_t step = 64;
  constexpr int few = 32;
  constexpr int many = 56;
  while (i + step <= text.size()) {
    const __m512i block = _mm512_loadu_si512(text.data() + i);
    const std::uint64_t slashes = _mm512_cmpeq_epi8_mask(block, _mm512_set1_epi8('/'));
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
    _mm512_storeu_si512(to, _mm512_mask_expand_epi8(_mm512_set1_epi8('\\'), places, block));
    i += static_cast<std::size_t>(taken);
    to += filled;
  }
  return to;
}

TARNEL_VBMI2 const char* copyAll(const char* p, const char* end, char*& to, bool& nonAscii) {
  constexpr int step = 64;
  std::uint64_t highs = 0;
  // Whether the block before ended with a backslash, whose escape the next block shows. It is all
  // that one step hands to the next but the output's end, so that the steps overlap.
  std::uint64_t pending = 0;
  for (; end - p >= step; p += step) {
    const __m512i block = _mm512_loadu_si512(p);
    const std::uint64_t backslashes = _mm512_cmpeq_epi8_mask(block, _mm512_set1_epi8('\\'));
    const std::uint64_t slashes = _mm512_cmpeq_epi8_mask(block, _mm512_set1_epi8('/'));
    const std::uint64_t stops = _mm512_cmpeq_epi8_mask(block, _mm512_set1_epi8('"')) |
                                _mm512_cmplt_epu8_mask(block, _mm512_set1_epi8(0x20));
    const std::uint64_t otherEscapes = (backslashes << 1 | pending) & ~slashes;
    if ((stops | otherEscapes) != 0) break;
    // 64 bytes, as many as are left to read at least: the output never overtakes the input.
    _mm512_storeu_si512(to, _mm512_maskz_compress_epi8(~backslashes, block));
    highs |= _mm512_movepi8_mask(block);
    to += step - std::popcount(backslashes);
    pending = backslashes >> (step - 1);
  }
  nonAscii |= highs != 0;
  return p - pending;
}

}  // namespace

char* escapeSlashes(std::string_view text, std::size_t& i, char* to) {
  return available() ? escapeAll(text, i, to) : to;
}

const char* copyPlain(const char* p, const char* end, char*& to, bool& nonAscii) {
  return available() ? copyAll(p, end, to, nonAscii) : p;
}

}  // namespace tarnel::vbmi2

#else

namespace tarnel::vbmi2 {

char* escapeSlashes(std::string_view, std::size_t&, char* to) { return to; }
const char* copyPlain(const char* p, const char*, char*&, bool&) { return p; }

}  // namespace tarnel::vbmi2

#endif
