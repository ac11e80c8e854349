// The unary file system: probes, loads and unloads its resource, and owns the one volume.
//
// It never looks at the resource: whatever is offered, the answer is the same volume, whose content
// comes from the host over the control socket. Loading makes no connection. None of the operations
// replies with an error; a host that cannot be reached shows later, operation by operation.
// Threads: any. Every reply comes inside the call.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "control/Mutex.h"
#include "fs/FabricVolume.h"
#include "fs/VolumeReplies.h"
#include "seam/Resource.h"

namespace tarnel {

class TarnelFileSystem {
 public:
  static constexpr double metadataTimeout = 5.0;  // seconds
  static constexpr double bulkTimeout = 30.0;     // seconds
  static constexpr std::string_view clientLabel = "tarnel.fskit.control";
  static constexpr std::string_view volumeName = "Tarnel";

  using ProbeReply = std::function<void(ProbeResult, OptionalError)>;
  using VolumeReply = std::function<void(std::shared_ptr<FabricVolume>, OptionalError)>;

  // Takes the socket from the user's home when it loads. A system whose processes have a home of
  // their own, apart from the user's, gives the path instead.
  TarnelFileSystem() = default;
  // This socket. `becameReady` is called by each load, after its volume is stored and before the
  // line that says so and the reply: what a system whose containers have a status of their own sets
  // then.
  explicit TarnelFileSystem(std::string socketPath, std::function<void()> becameReady = {});

  void probeResource(const Resource& resource, const ProbeReply& reply) const;
  // A volume of an earlier load is released, neither unloaded nor cancelled.
  void loadResource(const Resource& resource, const TaskOptions& options, const VolumeReply& reply);
  // Forgets the volume and ends what waits on it. The container's status stays as it is.
  void unloadResource(const Resource& resource, const TaskOptions& options,
                      const ErrorReply& reply);

  [[nodiscard]] ContainerStatus containerStatus() const { return status; }

 private:
  [[nodiscard]] std::string socketPath() const;

  const std::optional<std::string> givenSocketPath;
  const std::function<void()> becameReady;
  Mutex lock;  // guards volume, for one read or write
  std::shared_ptr<FabricVolume> volume GUARDED_BY(lock);
  std::atomic<ContainerStatus> status = ContainerStatus::notReady;
};

}  // namespace tarnel
