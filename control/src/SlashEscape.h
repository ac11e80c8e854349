// The one escape that the long strings of the protocol are full of: "\/" for "/". In base64 about
// one character in 64 is a slash, so both directions stand on the road of every read, and a branch
// for each slash is what costs: where the processor has AVX-512 VBMI2 there is none.
#pragma once

#include <cstddef>
#include <string_view>

namespace tarnel {

// Bytes past its end that an output needs room for: whole vectors are stored.
inline constexpr std::size_t vectorSlack = 64;

// Copies the text with a backslash before each slash; returns the end of the output, which has room
// for twice the text and vectorSlack more.
char* escapeSlashes(std::string_view text, char* to);

// Copies the inside of a JSON string from [p, end) to `to`, which it moves along, with "\/" as "/".
// Stops at a quote, at any other escape or control character, or at the end. `nonAscii` is set when
// a byte above 0x7f was copied. The output has room for end - p bytes and vectorSlack more.
const char* copyPlain(const char* p, const char* end, char*& to, bool& nonAscii);

}  // namespace tarnel
