// One mount of a volume through libfuse's low-level interface.
//
// The adapter decodes, calls the volume and replies, exactly once for each request; it holds no
// policy of the volume's. A request that waits for the host and is interrupted is answered EINTR,
// at once when the signal ends the program (Ctrl-C), after a second when the program handles it;
// its late result is dropped. Threads: the kernel's requests are taken by a few threads of the
// session's own, which never wait for the host. Replies come from whichever thread brings the
// result.
// Lifetime: every request under way keeps the session, so a late result always finds it.
#pragma once

#include <expected>
#include <functional>
#include <memory>
#include <string>

#include "fs/FabricVolume.h"
#include "fusefs/MountOptions.h"

namespace tarnel {

class FuseSession {
 public:
  virtual ~FuseSession() = default;

  // Mounts on the folder. The volume must have been activated: its root item is given.
  // The error is a sentence for the user.
  [[nodiscard]] static std::expected<std::shared_ptr<FuseSession>, std::string> mount(
      std::shared_ptr<FabricVolume> volume, ItemRef root, const std::string& mountpoint,
      const MountOptions& options);

  // Starts serving; `ended` is called once, from a thread of the session's, when the mount is gone.
  virtual void serve(std::function<void()> ended) = 0;
};

}  // namespace tarnel
