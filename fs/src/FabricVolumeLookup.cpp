// Which item a name in a directory denotes.
#include <algorithm>
#include <utility>

#include "Bridge.h"
#include "fs/FabricVolume.h"

namespace tarnel {
namespace {

constexpr VolumeError noEntry = posixError(darwin::noEntry);

}  // namespace

void FabricVolume::lookupItem(const FileName& name, const ItemRef& directory,
                              NamedItemReply reply) {
  const auto parent = std::dynamic_pointer_cast<FabricItem>(directory);
  if (!parent) return reply(nullptr, std::nullopt, posixError(darwin::inputOutput));
  const auto text = name.string();
  if (!text || !isSafeFabricName(*text)) return reply(nullptr, std::nullopt, noEntry);

  std::string relpath = childPath(parent->relpath, *text);
  const FabricLocation location = FabricLocation::parse(relpath);
  if (location.isRoot()) return reply(nullptr, std::nullopt, noEntry);
  if (location.peer() != nullptr) {
    lookUpPeer(std::move(relpath), name, parent->id, std::move(reply));
  } else {
    lookUpInShare(std::move(relpath), name, parent->id, std::move(reply));
  }
}

void FabricVolume::lookUpPeer(std::string relpath, const FileName& name, std::uint64_t parentID,
                              NamedItemReply reply) {
  on<std::vector<std::string>>(
      [&](FabricSource::Reply<std::vector<std::string>> next) { source->peers(std::move(next)); },
      [self = shared_from_this(), relpath = std::move(relpath), name, parentID,
       reply = std::move(reply)](FabricSource::Result<std::vector<std::string>> peers) {
        if (!peers) return reply(nullptr, std::nullopt, volumeError(peers.error()));
        // A path of one component is the peer's name itself. Exact bytes: it becomes a key.
        if (std::find(peers->begin(), peers->end(), relpath) == peers->end()) {
          return reply(nullptr, std::nullopt, noEntry);
        }
        reply(self->table.lookUpOrCreate(relpath, parentID, true, nullptr), name, std::nullopt);
      });
}

void FabricVolume::lookUpInShare(std::string relpath, const FileName& name, std::uint64_t parentID,
                                 NamedItemReply reply) {
  // A path made of safe names is its own address.
  on<FileStat>([&](FabricSource::Reply<FileStat> next) { source->stat(relpath, std::move(next)); },
               [self = shared_from_this(), relpath, name, parentID,
                reply = std::move(reply)](FabricSource::Result<FileStat> stat) {
                 if (!stat) return reply(nullptr, std::nullopt, volumeError(stat.error()));
                 const auto item = self->table.lookUpOrCreate(relpath, parentID, false, &*stat);
                 item->setLastStat(*stat);
                 reply(item, name, std::nullopt);
               });
}

}  // namespace tarnel
