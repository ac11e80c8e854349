// What base64::encodeEscapedTo does without AVX-512 VBMI2, and with the end that fills no vector:
// encodes pieces that stay in the innermost cache until they are escaped. The output has room for
// twice the text; returns its end.
#pragma once

#include "control/Bytes.h"

namespace tarnel::base64 {

char* encodeEscapedInPieces(BytesView bytes, char* to);

}  // namespace tarnel::base64
