// Two channels to one socket, so that a long read never holds up a listing: read, readStream and
// readTreeStream go by `bulk`, everything else by `metadata`, each with its own time limit.
// Threads: every operation from any thread. Lifetime: the owner calls cancelAll() at the end.
#pragma once

#include <memory>
#include <string>

#include "control/ControlChannel.h"

namespace tarnel {

class DualControlClient {
 public:
  // Time limits in seconds. The channels are labelled label + ".metadata" and label + ".bulk".
  // The decoders are for metadata alone: what comes by bulk is small enough for its own thread.
  DualControlClient(const std::string& socketPath, double metadataTimeout, double bulkTimeout,
                    const std::string& label, std::shared_ptr<TaskPool> decoders = nullptr);

  void request(ControlRequest request, ControlChannelReply reply);
  // metadata, then bulk. Never waits.
  void cancelAll();

  const std::shared_ptr<ControlChannel> metadata;
  const std::shared_ptr<ControlChannel> bulk;
  const double metadataTimeout;
  const double bulkTimeout;
};

}  // namespace tarnel
