// The shares that a host serves: real folders under share names, the host's own under "me", others
// under the name of a peer.
//
// Each folder is opened when its share is made and kept: a share goes on serving that folder also
// when another takes its path. Names are exact bytes; they are UTF-8 and safe as components of a
// path. Threads: constant after open. A share that was found stays valid as long as it is held.
#pragma once

#include <expected>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "control/ControlResponse.h"
#include "control/SourceShare.h"
#include "control/UniqueFd.h"
#include "host/HostStartError.h"
#include "host/PathWalk.h"
#include "host/SharePath.h"

namespace tarnel {

// What to serve and under which name.
struct ShareDefinition {
  std::string peer{localPeer};
  std::string name;
  std::string folder;  // a path of this machine
};

struct Share {
  std::string peer;
  std::string name;
  UniqueFd root;  // names the folder

  [[nodiscard]] bool isLocal() const { return peer == localPeer; }
};

class ShareTable {
 public:
  // Opens every folder. isOwnMount may be empty.
  [[nodiscard]] static std::expected<ShareTable, HostStartError> open(
      const std::vector<ShareDefinition>& definitions, const IsOwnMount& isOwnMount);

  // Null when there is none.
  [[nodiscard]] std::shared_ptr<const Share> find(std::string_view peer,
                                                  std::string_view name) const;
  // In the order of the definitions.
  [[nodiscard]] std::vector<SourceShare> localShares() const;
  [[nodiscard]] std::vector<RemoteShareInfo> remoteShares() const;

 private:
  std::vector<std::shared_ptr<const Share>> shares;
};

}  // namespace tarnel
