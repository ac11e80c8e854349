// The long middle of SlashEscape.h's copyPlain, with AVX-512 VBMI2: stops at what only the plain code
// can tell, and does nothing on other processors.
#pragma once

namespace tarnel::vbmi2 {

const char* copyPlain(const char* p, const char* end, char*& to, bool& nonAscii);

}  // namespace tarnel::vbmi2
