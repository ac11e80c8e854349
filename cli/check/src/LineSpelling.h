// How the text of an answer is spelled, which reading it as a record hides. Pure functions on
// hostile text.
#pragma once

#include "control/Bytes.h"

namespace tarnel {

// A byte below 0x20 between two quotes.
[[nodiscard]] bool hasRawControlCharacter(BytesView line);

[[nodiscard]] bool isNotUtf8(BytesView line);

// A null under a key of the outermost object. False for what is no object.
[[nodiscard]] bool hasNullKey(BytesView line);

}  // namespace tarnel
