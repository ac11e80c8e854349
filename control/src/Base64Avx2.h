// The long middle of base64 texts, 32 characters at a time. Each function works on as much of its
// input as it can, moves `i` past what it has done and returns the end of its output; where the
// processor or the compiler has no AVX2 that is nothing, and the plain code does it all.
#pragma once

#include <cstddef>
#include <string_view>

namespace tarnel::base64::avx2 {

char* encode(std::string_view bytes, std::size_t& i, char* to);
// Never writes past what it has read, so the output may be the input's own memory. Stops before the
// first character outside the alphabet.
char* decode(std::string_view text, std::size_t& i, char* to);

}  // namespace tarnel::base64::avx2
