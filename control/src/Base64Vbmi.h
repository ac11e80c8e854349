// The long middle of base64 texts, with AVX-512 VBMI and VBMI2. Each function works
// on as much of its input as it can, moves `i` past what it has done and returns the end of its
// output; on other processors that is nothing, and the narrower vectors do it.
#pragma once

#include <cstddef>
#include <string_view>

namespace tarnel::base64::vbmi {

// With a backslash before each slash. The output has room for twice the text.
char* encodeEscaped(std::string_view bytes, std::size_t& i, char* to);
// Never writes past what it has read, so the output may be the input's own memory. Stops before the
// first character outside the alphabet, or up to 63 characters earlier.
char* decode(std::string_view text, std::size_t& i, char* to);

}  // namespace tarnel::base64::vbmi
