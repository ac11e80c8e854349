// The groups of checks, each in the order of its numbers.
#pragma once

#include <span>

#include "check/HostCheck.h"

namespace tarnel {

[[nodiscard]] std::span<const HostCheck> framingChecks();     // 1xx
[[nodiscard]] std::span<const HostCheck> requestChecks();     // 2xx
[[nodiscard]] std::span<const HostCheck> shareChecks();       // 3xx
[[nodiscard]] std::span<const HostCheck> statChecks();        // 4xx
[[nodiscard]] std::span<const HostCheck> listChecks();        // 5xx
[[nodiscard]] std::span<const HostCheck> readChecks();        // 6xx
[[nodiscard]] std::span<const HostCheck> agreementChecks();   // 7xx
[[nodiscard]] std::span<const HostCheck> streamChecks();      // 80x, 81x
[[nodiscard]] std::span<const HostCheck> treeStreamChecks();  // 82x, 83x
[[nodiscard]] std::span<const HostCheck> speedChecks();       // 9xx

}  // namespace tarnel
