// Standard base64 (RFC 4648, section 4: the alphabet with "+" and "/", with padding, no line
// breaks).
//
// decode is strict: a length that is not a multiple of four, padding anywhere but at the end and
// any character outside the alphabet fail. Bits left over before the padding are ignored ("AB==" is
// one byte, 0). The empty text is empty data. Both directions use AVX-512
// or AVX2 where the processor has it; the outcome is the same without. Threads: pure functions.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "control/Bytes.h"

namespace tarnel::base64 {

[[nodiscard]] std::string encode(BytesView bytes);
// Appends to `out` what a JSON string holds of the encoding: each "/" behind a backslash.
void encodeEscapedTo(BytesView bytes, std::string& out);

[[nodiscard]] std::optional<Bytes> decode(std::string_view text);
// The same in the text's own memory: the road of a read allocates nothing here.
[[nodiscard]] std::optional<Bytes> decodeInPlace(std::string text);

}  // namespace tarnel::base64
