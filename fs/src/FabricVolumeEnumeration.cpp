// The children of a directory: listing, verifier, packing.
#include <algorithm>
#include <iterator>
#include <utility>

#include "Bridge.h"
#include "control/Text.h"
#include "fs/FabricVolume.h"

namespace tarnel {
namespace {

using Children = std::vector<FabricChild>;
using Entries = std::vector<FabricEntry>;

ItemType typeOf(const FileStat& stat) {
  return stat.isDirectory ? ItemType::directory : ItemType::file;
}

// FNV-1a, 64 bits (Fowler, Noll, Vo).
class Fnv1a {
 public:
  void byte(std::uint8_t value) { hash = (hash ^ value) * prime; }
  [[nodiscard]] std::uint64_t value() const { return hash; }

 private:
  static constexpr std::uint64_t prime = 0x100000001b3;
  std::uint64_t hash = 0xcbf29ce484222325;
};

Entries withDotEntries(const FabricItem& directory, Entries entries) {
  Entries all;
  all.reserve(entries.size() + 2);
  all.push_back({.name = ".", .itemType = ItemType::directory, .id = directory.id});
  all.push_back({.name = "..", .itemType = ItemType::directory, .id = directory.parentID});
  std::move(entries.begin(), entries.end(), std::back_inserter(all));
  return all;
}

std::uint64_t verifierOf(const Entries& entries) {
  std::vector<std::string_view> names;
  names.reserve(entries.size());
  for (const FabricEntry& entry : entries) names.push_back(entry.name);
  return FabricVolume::directoryVerifier(names);
}

void pack(const Entries& entries, std::uint64_t cookie, DirectoryEntryPacking& packer) {
  for (std::uint64_t i = cookie; i < entries.size(); ++i) {
    const FabricEntry& entry = entries[i];
    if (!packer.packEntry(entry.name, entry.itemType, entry.id, i + 1, entry.attributes)) return;
  }
}

}  // namespace

std::uint64_t FabricVolume::directoryVerifier(std::span<const std::string_view> names) {
  Fnv1a hash;
  for (const std::string_view name : names) {
    for (const char c : name) hash.byte(static_cast<std::uint8_t>(c));
    hash.byte(0);  // between the names: (ab, c) is not (a, bc)
  }
  for (int shift = 0; shift < 64; shift += 8) {
    hash.byte(static_cast<std::uint8_t>(std::uint64_t{names.size()} >> shift));
  }
  return hash.value() != 0 ? hash.value() : 1;  // 0 stands for no verifier
}

FabricChild FabricVolume::synthesizedChild(const FabricItem& parent, std::string name) {
  const std::uint64_t id = table.id(childPath(parent.relpath, name));
  return {.status = synthesizedStat(std::move(name)), .id = id, .isSynthesized = true};
}

void FabricVolume::listing(const std::shared_ptr<FabricItem>& directory,
                           FabricSource::Reply<Children> reply) {
  const auto synthesized = [self = shared_from_this(), directory,
                            reply](FabricSource::Result<std::vector<std::string>> names) {
    if (!names) return reply(std::unexpected(std::move(names.error())));
    Children made;
    for (std::string& name : *names) {
      made.push_back(self->synthesizedChild(*directory, std::move(name)));
    }
    reply(std::move(made));
  };
  const auto fromHost = [self = shared_from_this(), directory,
                         reply](FabricSource::Result<std::vector<FileStat>> stats) {
    if (!stats) return reply(std::unexpected(std::move(stats.error())));
    std::erase_if(*stats, [](const FileStat& stat) { return !isSafeFabricName(stat.name); });
    sortByText(*stats, [](const FileStat& stat) -> const std::string& { return stat.name; });
    Children made;
    made.reserve(stats->size());
    for (FileStat& stat : *stats) {
      const std::uint64_t id = self->table.id(childPath(directory->relpath, stat.name));
      made.push_back({.status = std::move(stat), .id = id});
    }
    reply(std::move(made));
  };

  const FabricLocation location = FabricLocation::parse(directory->relpath);
  if (location.isRoot()) {
    source->peers(synthesized);
  } else if (const auto* peer = location.peer()) {
    source->shares(peer->peer, synthesized);
  } else {
    source->list(location.inShare()->address, fromHost);
  }
}

void FabricVolume::children(const std::shared_ptr<FabricItem>& directory,
                            std::optional<WantedAttributes> wanted,
                            FabricSource::Reply<Entries> reply) {
  listing(directory, [self = shared_from_this(), directory, wanted,
                      reply = std::move(reply)](FabricSource::Result<Children> found) {
    if (!found) return reply(std::unexpected(std::move(found.error())));
    Entries entries;
    entries.reserve(found->size());
    for (FabricChild& child : *found) {
      FabricEntry entry{.name = {}, .itemType = typeOf(child.status), .id = child.id};
      if (wanted) entry.attributes = self->childAttributes(*directory, child, *wanted);
      entry.name = std::move(child.status.name);
      entries.push_back(std::move(entry));
    }
    reply(std::move(entries));
  });
}

void FabricVolume::enumerateDirectory(const ItemRef& directory, std::uint64_t cookie,
                                      std::uint64_t verifier,
                                      std::optional<WantedAttributes> wanted,
                                      std::shared_ptr<DirectoryEntryPacking> packer,
                                      VerifierReply reply) {
  const auto own = std::dynamic_pointer_cast<FabricItem>(directory);
  if (!own) return reply(0, posixError(darwin::inputOutput));
  enumerate(own, cookie, verifier, wanted, std::move(packer), std::move(reply));
}

void FabricVolume::enumerate(const std::shared_ptr<FabricItem>& directory, std::uint64_t cookie,
                             std::uint64_t verifier, std::optional<WantedAttributes> wanted,
                             std::shared_ptr<DirectoryEntryPacking> packer, VerifierReply reply) {
  on<Entries>(
      [&](FabricSource::Reply<Entries> next) { children(directory, wanted, std::move(next)); },
      [directory, cookie, verifier, wanted, packer = std::move(packer),
       reply = std::move(reply)](FabricSource::Result<Entries> entries) {
        if (!entries) return reply(0, volumeError(entries.error()));
        const std::uint64_t current = verifierOf(*entries);
        const Entries all =
            wanted ? std::move(*entries) : withDotEntries(*directory, std::move(*entries));
        if (cookie != 0 && (current != verifier || all.size() < cookie)) {
          return reply(0, invalidDirectoryCookie);
        }
        pack(all, cookie, *packer);
        reply(current, std::nullopt);
      });
}

std::shared_ptr<FabricItem> FabricVolume::registerChild(const FabricItem& directory,
                                                        const FabricChild& child) {
  const bool isPeer = directory.relpath.empty();
  // A share as its peer lists it: the status is made up, but the host describes the share.
  if (child.isSynthesized && !isPeer) return nullptr;
  const std::string relpath = childPath(directory.relpath, child.status.name);
  if (isPeer) return table.lookUpOrCreate(relpath, directory.id, true, nullptr);
  auto item = table.lookUpOrCreate(relpath, directory.id, false, &child.status);
  item->setLastStat(child.status);
  return item;
}

}  // namespace tarnel
