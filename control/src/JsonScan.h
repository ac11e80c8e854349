// Finds, in the inside of a JSON string, the next byte that needs a look: a quote, a backslash or a
// control character. The long strings are base64 with about one escape in 64 characters, so the
// step over plain bytes is what counts: 16 at a time where the processor has SSE2 (every x86-64),
// else 8.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tarnel {

inline bool needsLook(unsigned char c) { return c == '"' || c == '\\' || c < 0x20; }

// The first such byte in [p, end), or end. `nonAscii` is set when a byte above 0x7f is before it.
inline const char* scanString(const char* p, const char* end, bool& nonAscii) {
#if defined(__SSE2__)
  const __m128i quote = _mm_set1_epi8('"');
  const __m128i backslash = _mm_set1_epi8('\\');
  const __m128i lastControl = _mm_set1_epi8(0x1f);
  while (end - p >= 16) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i special =
        _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(block, quote), _mm_cmpeq_epi8(block, backslash)),
                     _mm_cmpeq_epi8(_mm_min_epu8(block, lastControl), block));
    const auto specials = static_cast<unsigned>(_mm_movemask_epi8(special));
    const auto highs = static_cast<unsigned>(_mm_movemask_epi8(block));
    if (specials != 0) {
      const int first = std::countr_zero(specials);
      nonAscii |= (highs & ((1u << first) - 1)) != 0;
      return p + first;
    }
    nonAscii |= highs != 0;
    p += 16;
  }
#else
  // Bit tricks on words: a byte of v equals k where (v ^ k...) has a zero byte (Hacker's Delight,
  // section 6-1).
  constexpr std::uint64_t ones = 0x0101010101010101u;
  constexpr std::uint64_t highs = 0x8080808080808080u;
  const auto hasZero = [](std::uint64_t v) { return (v - ones) & ~v & highs; };
  while (end - p >= 8) {
    std::uint64_t word;
    std::memcpy(&word, p, 8);
    const std::uint64_t below = (word - ones * 0x20) & ~word & highs;
    if (hasZero(word ^ ones * '"') | hasZero(word ^ ones * '\\') | below) break;
    nonAscii |= (word & highs) != 0;
    p += 8;
  }
#endif
  while (p != end && !needsLook(static_cast<unsigned char>(*p))) {
    nonAscii |= static_cast<unsigned char>(*p) >= 0x80;
    ++p;
  }
  return p;
}

}  // namespace tarnel
