// What a user is told when no host can be asked: one set of sentences for all commands.
// Each names the socket, says what is wrong and what to do.
#pragma once

#include <optional>
#include <string>

namespace tarnel {

// Connects and hangs up again; nullopt when somebody is there who may be asked.
[[nodiscard]] std::optional<std::string> whyNoHost(const std::string& socketPath);

// After a request failed for `reason`: that no host is there, or that the one there is no use.
[[nodiscard]] std::string hostFailure(const std::string& socketPath, const std::string& reason);

}  // namespace tarnel
