// The long middle of base64 texts, 64 characters at a time, with AVX-512 VBMI. Each function works
// on as much of its input as it can, moves `i` past what it has done and returns the end of its
// output; on other processors that is nothing, and the narrower vectors do it.
#pragma once

#include <cstddef>
#include <string_view>

namespace tarnel::base64::vbmi {

char* encode(std::string_view bytes, std::size_t& i, char* to);
// Never writes past what it has read, so the output may be the input's own memory. Stops before the
// first character outside the alphabet, or up to 63 characters earlier.
char* decode(std::string_view text, std::size_t& i, char* to);

}  // namespace tarnel::base64::vbmi
