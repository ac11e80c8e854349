// Texts from outside, made safe for a terminal or a log line. Threads: pure.
#pragma once

#include <string>
#include <string_view>

namespace tarnel {

// The text with every control character (C0, DEL and C1, which terminals obey too) and every byte
// that is not UTF-8 as \xNN. Everything else as it is.
[[nodiscard]] std::string printable(std::string_view text);

}  // namespace tarnel
