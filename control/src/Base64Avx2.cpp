// W. Muła, D. Lemire: Faster Base64 Encoding and Decoding Using AVX2 Instructions, ACM Transactions
// on the Web 12 (3), 2018. The names of the steps are the paper's.
#include "Base64Avx2.h"

#if defined(__x86_64__)

#include <immintrin.h>

#define TARNEL_AVX2 __attribute__((target("avx2")))

namespace tarnel::base64::avx2 {
namespace {

constexpr std::size_t bytesAStep = 24;
constexpr std::size_t charactersAStep = 32;

bool available() {
  static const bool has = __builtin_cpu_supports("avx2");
  return has;
}

TARNEL_AVX2 __m256i both(__m128i lane) { return _mm256_broadcastsi128_si256(lane); }

// 24 bytes, as 12 and 12 at the front of the two lanes, into 32 characters.
TARNEL_AVX2 __m256i encodeStep(const char* from) {
  const auto* source = reinterpret_cast<const __m128i*>(from);
  const auto* second = reinterpret_cast<const __m128i*>(from + 12);
  __m256i in = _mm256_set_m128i(_mm_loadu_si128(second), _mm_loadu_si128(source));
  in = _mm256_shuffle_epi8(in,
                           both(_mm_set_epi8(10, 11, 9, 10, 7, 8, 6, 7, 4, 5, 3, 4, 1, 2, 0, 1)));
  // unpack: every 6 bits into a byte of their own
  const __m256i ac = _mm256_mulhi_epu16(_mm256_and_si256(in, _mm256_set1_epi32(0x0fc0fc00)),
                                        _mm256_set1_epi32(0x04000040));
  const __m256i bd = _mm256_mullo_epi16(_mm256_and_si256(in, _mm256_set1_epi32(0x003f03f0)),
                                        _mm256_set1_epi32(0x01000010));
  const __m256i indices = _mm256_or_si256(ac, bd);
  // translate: each range of indices is shifted to its range of characters
  __m256i range = _mm256_subs_epu8(indices, _mm256_set1_epi8(51));
  const __m256i upper = _mm256_cmpgt_epi8(_mm256_set1_epi8(26), indices);
  range = _mm256_or_si256(range, _mm256_and_si256(upper, _mm256_set1_epi8(13)));
  const __m256i shifts =
      both(_mm_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                         '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0));
  return _mm256_add_epi8(_mm256_shuffle_epi8(shifts, range), indices);
}

TARNEL_AVX2 void store(char* to, __m256i block) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), block);
}

TARNEL_AVX2 char* encodeAll(std::string_view bytes, std::size_t& i, char* to) {
  constexpr std::size_t readAhead = 28;  // the second load ends 4 bytes past the 24
  for (; i + readAhead <= bytes.size(); i += bytesAStep, to += charactersAStep) {
    store(to, encodeStep(bytes.data() + i));
  }
  return to;
}

TARNEL_AVX2 char* decodeAll(std::string_view text, std::size_t& i, char* to) {
  const __m256i lowTable = both(_mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,
                                              0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A));
  const __m256i highTable = both(_mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10,
                                               0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10));
  const __m256i rolls =
      both(_mm_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0));
  const __m256i slash = _mm256_set1_epi8(0x2F);
  for (; i + charactersAStep <= text.size(); i += charactersAStep, to += bytesAStep) {
    const __m256i in = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text.data() + i));
    const __m256i high = _mm256_and_si256(_mm256_srli_epi32(in, 4), slash);
    const __m256i low = _mm256_and_si256(in, slash);
    // A character is in the alphabet when the classes of its two halves have no bit in common.
    if (!_mm256_testz_si256(_mm256_shuffle_epi8(lowTable, low),
                            _mm256_shuffle_epi8(highTable, high))) {
      break;
    }
    const __m256i isSlash = _mm256_cmpeq_epi8(in, slash);
    const __m256i sextets =
        _mm256_add_epi8(in, _mm256_shuffle_epi8(rolls, _mm256_add_epi8(isSlash, high)));
    // pack: 4 times 6 bits into 24, then the 3 bytes of each into place
    const __m256i pairs = _mm256_maddubs_epi16(sextets, _mm256_set1_epi32(0x01400140));
    const __m256i words = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    const __m256i packed = _mm256_shuffle_epi8(
        words, both(_mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1)));
    store(to, _mm256_permutevar8x32_epi32(packed, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, -1, -1)));
  }
  return to;
}

}  // namespace

char* encode(std::string_view bytes, std::size_t& i, char* to) {
  return available() ? encodeAll(bytes, i, to) : to;
}

char* decode(std::string_view text, std::size_t& i, char* to) {
  return available() ? decodeAll(text, i, to) : to;
}

}  // namespace tarnel::base64::avx2

#else

namespace tarnel::base64::avx2 {

char* encode(std::string_view, std::size_t&, char* to) { return to; }
char* decode(std::string_view, std::size_t&, char* to) { return to; }

}  // namespace tarnel::base64::avx2

#endif
