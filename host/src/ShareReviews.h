// Folders that wait for their owner's answer to a review, by the name that they are to be shared
// under. They belong to one connection and go with it.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>

#include "control/UniqueFd.h"
#include "host/SecretScan.h"

namespace tarnel {

struct ShareReview {
  UniqueFd folder;
  SecretScan found;
};

using ShareReviews = std::map<std::string, ShareReview, std::less<>>;

// Each holds a descriptor and what was found.
inline constexpr std::size_t maxReviewsInWaiting = 4;

}  // namespace tarnel
