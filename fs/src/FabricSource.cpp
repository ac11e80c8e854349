#include "fs/FabricSource.h"

#include <set>
#include <utility>

#include "control/Text.h"
#include "fs/FabricLocation.h"

namespace tarnel {
namespace {

// The safe ones of the given names, each once (by exact bytes), sorted.
std::vector<std::string> distinctSafeNames(std::vector<std::string> names) {
  std::set<std::string> taken;  // ordered: a host cannot make it slow
  std::vector<std::string> distinct;
  for (std::string& name : names) {
    if (!isSafeFabricName(name) || !taken.insert(name).second) continue;
    distinct.push_back(std::move(name));
  }
  sortByText(distinct, [](const std::string& name) -> const std::string& { return name; });
  return distinct;
}

}  // namespace

void FabricSource::peers(Reply<std::vector<std::string>> reply) {
  shareListing([reply = std::move(reply)](Result<std::vector<FabricShare>> listing) {
    if (!listing) return reply(std::unexpected(std::move(listing.error())));
    std::vector<std::string> names;
    for (FabricShare& share : *listing) names.push_back(std::move(share.peer));
    reply(distinctSafeNames(std::move(names)));
  });
}

void FabricSource::shares(std::string ofPeer, Reply<std::vector<std::string>> reply) {
  shareListing([peer = std::move(ofPeer),
                reply = std::move(reply)](Result<std::vector<FabricShare>> listing) {
    if (!listing) return reply(std::unexpected(std::move(listing.error())));
    std::vector<std::string> names;
    for (FabricShare& share : *listing) {
      if (share.peer == peer) names.push_back(std::move(share.name));
    }
    reply(distinctSafeNames(std::move(names)));
  });
}

}  // namespace tarnel
