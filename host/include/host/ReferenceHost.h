// The reference host: serves real folders over a control socket, read-only.
//
// It exists so that the volume can be run, tested and measured against something real, and as the
// example for the author of another host. Locations are "peer/Share/rest"; it serves `shares`,
// `stat`, `list` (with `namesOnly` and `limit`), `read`, `readStream` and `readTreeStream`, and
// `share`, `confirm`, `cancel` and `unshare`, which offer and withdraw folders while it runs. It
// answers everything else with an error. It never leaves a shared folder (PathWalk), refuses
// clients of another user than its own or root, and refuses in fixed texts (Refusal). Each
// connection has a thread of its own, so a client that asks slowly or does not read its answers
// holds up nobody else. Threads: start and stop from one thread at a time.
#pragma once

#include <expected>
#include <memory>
#include <string>
#include <vector>

#include "control/UnixSocketServer.h"
#include "host/HostOptions.h"
#include "host/HostStartError.h"

namespace tarnel {

class ReferenceHost {
 public:
  // Opens the folders, then the socket. A stale socket is replaced; a path that holds anything
  // else, or a socket on which somebody answers, is refused.
  [[nodiscard]] static std::expected<std::unique_ptr<ReferenceHost>, HostStartError> start(
      HostOptions options);
  ~ReferenceHost();  // stops
  ReferenceHost(const ReferenceHost&) = delete;
  ReferenceHost& operator=(const ReferenceHost&) = delete;

  // Listens at one more place, under the same rules, until stop(). On failure all goes on as it
  // was.
  [[nodiscard]] std::expected<void, HostStartError> listenAlso(const std::string& path);

  // Hangs up on every client, waits for what is being answered, and removes the sockets' files.
  // Any number of times.
  void stop();

 private:
  struct Core;  // shared with the connections' threads

  explicit ReferenceHost(std::shared_ptr<Core> core);
  static void serve(const std::shared_ptr<Core>& core, int connectedFD);

  std::shared_ptr<Core> core;
  std::vector<std::shared_ptr<UnixSocketServer>> servers;  // none once stopped
};

}  // namespace tarnel
