// How a refusal will be understood: a reader judges by the payload that is not there, and by words
// in the message.
#pragma once

#include <initializer_list>
#include <string>

#include "HostProbe.h"
#include "fs/FabricSourceError.h"

namespace tarnel {

// The answer carries what its operation asks for.
[[nodiscard]] bool hasPayload(const ControlRequest& request, const ControlResponse& response);

// Passes when the request is refused and the refusal understood as one of these.
[[nodiscard]] CheckVerdict isRefusedAs(const HostProbe& host, const ControlRequest& request,
                                       std::initializer_list<FabricSourceError::Kind> kinds);

// Passes when the request is refused, whatever the message says.
[[nodiscard]] CheckVerdict isRefused(const HostProbe& host, const ControlRequest& request);

}  // namespace tarnel
