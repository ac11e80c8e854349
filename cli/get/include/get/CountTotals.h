// How much there is to copy, from listings, so that a progress line can tell what is left. Only
// worth a moment: given up after maxTime or maxFolders folders, or when something cannot be listed.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "get/CopyContext.h"
#include "get/ProgressLine.h"

namespace tarnel {

inline constexpr std::chrono::seconds maxTotalsTime{1};
inline constexpr std::size_t maxTotalsFolders = 10'000;
inline constexpr std::size_t maxTotalsPathBytes = 4 << 20;  // of the folders that wait

[[nodiscard]] std::optional<CopyTotals> countTotals(CopyContext& context,
                                                    const std::vector<std::string>& paths);

}  // namespace tarnel
