// Base64 character by character: what is left of a text where vectors end, and all of it on a
// processor without them.
#pragma once

#include <string_view>

#include "control/Bytes.h"

namespace tarnel::base64::plain {

// The whole encoding with its padding; returns the end of the output.
char* encode(BytesView bytes, char* to);

// Whole quanta without padding, three bytes for each four characters; false when one is outside the
// alphabet. The output may be the text's own memory.
bool decode(std::string_view text, char* to);
bool decodeQuantum(const char* text, char* to);

}  // namespace tarnel::base64::plain
