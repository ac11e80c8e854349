// The versions of the message families that travel in a versioned envelope (WireEnvelope).
//
// All are 1 today and still constants of their own: a reader compares with its own family's
// constant, never with another's. Threads: constants and a pure function.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tarnel::WireVersion {

inline constexpr std::int64_t protocolRev = 1;
inline constexpr std::int64_t controlSignal = 1;
inline constexpr std::int64_t controlClip = 1;
inline constexpr std::int64_t controlInput = 1;
inline constexpr std::int64_t controlDraw = 1;
inline constexpr std::int64_t shareURL = 1;
inline constexpr std::int64_t shareAvailability = 1;
inline constexpr std::int64_t shareScale = 1;
inline constexpr std::int64_t statsPing = 1;
inline constexpr std::int64_t exchange = 1;
inline constexpr std::int64_t sources = 1;
inline constexpr std::int64_t raiseHand = 1;
// The key under which a version travels in a map of attributes.
inline constexpr std::string_view streamAttribute = "v";
inline constexpr std::int64_t fileFabric = 1;
inline constexpr std::int64_t fileTail = 1;
inline constexpr std::int64_t shareMetadata = 1;

// The number under `streamAttribute`: one optional sign, then ASCII digits and nothing else.
// nullopt without the key, and for every text that is no such number or does not fit into 64 bits.
// What a negative number or 0 means is the caller's to judge.
[[nodiscard]] std::optional<std::int64_t> streamVersion(
    const std::map<std::string, std::string>& attributes);

}  // namespace tarnel::WireVersion
