#include "SlashEscapeVbmi2.h"

#if defined(__x86_64__)

#include <immintrin.h>

#include <bit>
#include <cstdint>

#define TARNEL_VBMI2 __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi2,popcnt")))

namespace tarnel::vbmi2 {
namespace {

bool available() {
  static const bool has = __builtin_cpu_supports("avx512vbmi2") &&
                          __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
  return has;
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

const char* copyPlain(const char* p, const char* end, char*& to, bool& nonAscii) {
  return available() ? copyAll(p, end, to, nonAscii) : p;
}

}  // namespace tarnel::vbmi2

#else

namespace tarnel::vbmi2 {

const char* copyPlain(const char* p, const char*, char*&, bool&) { return p; }

}  // namespace tarnel::vbmi2

#endif
