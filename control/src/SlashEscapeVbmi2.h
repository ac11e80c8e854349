// The long middle of SlashEscape.h's two functions, with AVX-512 VBMI2. Each works on as much as it
// can, moves its arguments past what it has done, and does nothing on other processors. The outputs
// need the room that is named there, no more.
#pragma once

#include <cstddef>
#include <string_view>

namespace tarnel::vbmi2 {

char* escapeSlashes(std::string_view text, std::size_t& i, char* to);
const char* copyPlain(const char* p, const char* end, char*& to, bool& nonAscii);

}  // namespace tarnel::vbmi2
