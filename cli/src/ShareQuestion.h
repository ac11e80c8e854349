// What the user of a terminal is shown of a review, and asked. On standard error: standard output
// holds results alone. Every name is shown with its control characters escaped.
#pragma once

#include <string>

#include "control/ControlResponse.h"

namespace tarnel {

// Standard input and standard error are a terminal.
[[nodiscard]] bool canAsk();

enum class ShareDecision { withoutSecrets, everything, nothing };

// Anything but a clear answer means nothing. folder and name: of the share in question.
[[nodiscard]] ShareDecision askAbout(const ReviewSummary& review, const std::string& folder,
                                     const std::string& name);

// "3 likely secrets".
[[nodiscard]] std::string secretsIn(const ReviewSummary& review);
// The folder itself is the secret: nothing is left without it.
[[nodiscard]] bool isWhollySecret(const ReviewSummary& review);

}  // namespace tarnel
