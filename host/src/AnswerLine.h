// Answers as whole lines, with their line feed.
#pragma once

#include "control/Bytes.h"
#include "control/ControlResponse.h"
#include "control/JsonWriter.h"
#include "host/Refusal.h"

namespace tarnel {

// A response without a payload of its own size.
[[nodiscard]] Bytes answerLine(const ControlResponse& response);
[[nodiscard]] Bytes answerLine(Refusal refusal);
// What was written straight into a writer. Takes the text out of it.
[[nodiscard]] Bytes answerLine(JsonWriter& json);

}  // namespace tarnel
