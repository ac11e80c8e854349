// What the checks of both kinds of stream have in common.
#pragma once

#include <optional>

#include "HostProbe.h"
#include "Streams.h"
#include "fs/FabricSourceError.h"

namespace tarnel {

// Why a check cannot look at the stream at all: nothing to ask for, not served, too long; and, but
// for the checks `ground` and before, a fault that those tell of.
[[nodiscard]] std::optional<CheckVerdict> cannotLook(const StreamCourse& course, int ground);

// Passes for one error frame, and nothing else, whose message is understood as this.
[[nodiscard]] CheckVerdict failsWithOneFrame(HostProbe& host, const ControlRequest& request,
                                             FabricSourceError::Kind kind);

// Passes when no location above a share is streamed.
[[nodiscard]] CheckVerdict leadsNowhere(HostProbe& host, ControlOp op);

// Passes when nothing came behind the end, and the next request was answered.
[[nodiscard]] CheckVerdict endsCleanly(const StreamCourse& course);
[[nodiscard]] CheckVerdict goesOnAfter(const StreamCourse& course);

}  // namespace tarnel
