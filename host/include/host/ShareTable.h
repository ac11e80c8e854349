// The shares that a host serves: real folders under share names, the host's own under "me", others
// under the name of a peer.
//
// Each folder is opened when its share is made and kept: a share goes on serving that folder also
// when another takes its path. Names are exact bytes; they are UTF-8 and safe as components of a
// path. Shares come and go while requests run: a share that was found stays valid, and open, as
// long as it is held. Threads: any.
#pragma once

#include <cstddef>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "control/ControlResponse.h"
#include "control/Mutex.h"
#include "control/SourceShare.h"
#include "control/UniqueFd.h"
#include "host/HiddenPaths.h"
#include "host/HostStartError.h"
#include "host/PathWalk.h"
#include "host/Refusal.h"
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
  UniqueFd root;                           // names the folder
  std::optional<HiddenPaths> hidden = {};  // absent: all of it is shown

  [[nodiscard]] bool isLocal() const { return peer == localPeer; }
};

// Opens a folder that is to be shared. isOwnMount may be empty.
[[nodiscard]] std::expected<UniqueFd, HostStartError> openSharedFolder(
    const std::string& folder, const IsOwnMount& isOwnMount);

// Of a share or a peer.
[[nodiscard]] bool isUsableShareName(std::string_view name);

class ShareTable {
 public:
  // Each share holds a descriptor.
  static constexpr std::size_t maxAdded = 256;

  // Opens every folder and shows all of each. isOwnMount may be empty.
  [[nodiscard]] static std::expected<std::unique_ptr<ShareTable>, HostStartError> open(
      const std::vector<ShareDefinition>& definitions, const IsOwnMount& isOwnMount);

  // A share under a usable name. shareNameTaken, or tooManyShares once there are maxAdded and those
  // of the beginning.
  [[nodiscard]] HostResult<void> add(Share share);
  // Withdraws one of the host's own shares. False when there is none of that name.
  [[nodiscard]] bool removeLocal(std::string_view name);
  void removeAllLocal();

  // Null when there is none.
  [[nodiscard]] std::shared_ptr<const Share> find(std::string_view peer,
                                                  std::string_view name) const;
  // In the order in which they were shared.
  [[nodiscard]] std::vector<SourceShare> localShares() const;
  [[nodiscard]] std::vector<RemoteShareInfo> remoteShares() const;

 private:
  using Shares = std::vector<std::shared_ptr<const Share>>;

  [[nodiscard]] Shares all() const;

  mutable Mutex lock;  // guards what follows; never held across a call to the system
  Shares shares GUARDED_BY(lock);
  std::size_t most GUARDED_BY(lock) = maxAdded;
};

}  // namespace tarnel
