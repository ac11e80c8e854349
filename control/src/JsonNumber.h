// The grammar of JSON's numbers, and exact integers from any spelling of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tarnel::json {

// The length of the number at the front of the text (RFC 8259, section 6); 0 if there is none. What
// follows the number is the caller's to check.
[[nodiscard]] std::size_t numberLength(std::string_view text);

// The value of a well-formed number when it is an integer within 64 signed bits, however it is
// spelled (100, 1e2, 10.0e1); nullopt otherwise. Never rounds.
[[nodiscard]] std::optional<std::int64_t> integerValue(std::string_view number);

}  // namespace tarnel::json
