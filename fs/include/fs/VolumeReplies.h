// What the volume's operations reply with. Each reply is called exactly once; a result is empty
// whenever there is an error.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "seam/FileName.h"
#include "seam/Item.h"
#include "seam/ItemAttributes.h"
#include "seam/VolumeError.h"

namespace tarnel {

using ErrorReply = std::function<void(OptionalError)>;
using ItemReply = std::function<void(ItemRef, OptionalError)>;
using NamedItemReply = std::function<void(ItemRef, std::optional<FileName>, OptionalError)>;
using NameReply = std::function<void(std::optional<FileName>, OptionalError)>;
using AttributesReply = std::function<void(std::optional<ItemAttributes>, OptionalError)>;
using VerifierReply = std::function<void(std::uint64_t verifier, OptionalError)>;
using CountReply = std::function<void(std::int64_t bytes, OptionalError)>;

}  // namespace tarnel
