// Enumerations whose JSON form is a fixed string: rawValue(value) gives it,
// fromRawValue<Enum>(text) takes it back, exactly and case-sensitively; nullopt for any other text.
#pragma once

#include <optional>
#include <string_view>

namespace tarnel {

template <class Enum>
[[nodiscard]] std::optional<Enum> fromRawValue(std::string_view rawValue);

}  // namespace tarnel
