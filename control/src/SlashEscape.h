// The one escape that the long strings of the protocol are full of: "\/" for "/". In base64 about
// one character in 64 is a slash, so both directions stand on the road of every read, and a branch
// for each slash is what costs. Where the processor has AVX-512 VBMI2 there is none; there base64 is
// escaped as it is encoded.
#pragma once

#include <string_view>

namespace tarnel {

// Copies the text with a backslash before each slash; returns the end of the output, which has room
// for twice the text.
char* escapeSlashes(std::string_view text, char* to);

// Copies the inside of a JSON string from [p, end) to `to`, which it moves along, with "\/" as "/".
// Stops at a quote, at any other escape or control character, or at the end. `nonAscii` is set when
// a byte above 0x7f was copied. The output has room for end - p bytes.
const char* copyPlain(const char* p, const char* end, char*& to, bool& nonAscii);

// What it does without such a processor, and with the ends that fill no vector.
namespace plain {
const char* copyPlain(const char* p, const char* end, char*& to, bool& nonAscii);
}  // namespace plain

}  // namespace tarnel
