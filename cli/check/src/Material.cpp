#include "Material.h"

#include <algorithm>
#include <deque>
#include <utility>

#include "HostProbe.h"
#include "control/ControlWire.h"
#include "control/TreeHeader.h"
#include "fs/ControlFabricSource.h"
#include "fs/FabricLocation.h"

namespace tarnel {
namespace {

constexpr std::size_t mostShares = 50;
constexpr std::size_t mostWaiting = 1'000;     // folders that the search still has to look into
constexpr std::int64_t goodFileBytes = 1'024;  // enough to tell offsets and letters of base64
constexpr int mostReads = 16;

class Search {
 public:
  explicit Search(const HostProbe& probe) : host(probe), end(probe.in(probe.limits().search)) {}

  Material run() {
    findShares();
    for (std::size_t asked = 0; asked < host.limits().listings && !isDone(); ++asked) {
      const std::string folder = std::move(waiting.front());
      waiting.pop_front();
      look(folder);
    }
    const bool isLargeEnough =
        material.largeFile && material.largeFile->stat.size <= Material::mostFileBytes;
    if (!material.file && isLargeEnough) material.file = material.largeFile;
    if (!material.file) material.file = std::move(refusedFile);
    return std::move(material);
  }

 private:
  bool isDone() const {
    const bool hasAll = material.largeFile && material.emptyFile && material.emptyFolder &&
                        material.subfolder && isGood(material.file);
    return hasAll || waiting.empty() || std::chrono::steady_clock::now() >= end;
  }

  static bool isGood(const std::optional<Found>& file) {
    return file && file->stat.size >= goodFileBytes;
  }

  void addShare(const std::string& peer, const std::string& name) {
    if (!isSafeFabricName(peer) || !isSafeFabricName(name)) return;
    if (material.shares.size() >= mostShares) return;
    material.shares.push_back(below(peer, name));
    waiting.push_back(material.shares.back());
  }

  void findShares() {
    const auto answer = host.ask(sharesRequest());
    if (!answer) return;
    const ControlResponse& response = answer->response;
    for (const auto& share : response.shares.value_or(std::vector<SourceShare>())) {
      addShare(std::string(ControlFabricSource::localPeer), share.name);
    }
    for (const auto& share : response.remoteShares.value_or(std::vector<RemoteShareInfo>())) {
      addShare(share.peer, share.name);
    }
  }

  // A connection of its own for each: a host that breaks one must not end the search.
  std::optional<std::vector<ControlStat>> list(const std::string& folder) {
    auto talk = host.talk();
    if (!talk || !talk->send(textOf(listRequest(folder)) + "\n")) return std::nullopt;
    const auto line = talk->wire.line(host.answerDeadline());
    if (!line) {
      if (line.error() == WireFault::tooLong) material.tooLongListing = folder;
      return std::nullopt;
    }
    auto response = ControlWire::decode<ControlResponse>(*line);
    if (!response) return std::nullopt;
    const bool isRefused = response->status == ControlResponse::Status::error;
    if (!response->entries && !isRefused) material.lackingEntries = folder;
    return std::move(response->entries);
  }

  void look(const std::string& folder) {
    const auto entries = list(folder);
    if (!entries) return;
    material.longestListing = std::max(material.longestListing, entries->size());
    const bool isShare = folder.find('/') == folder.rfind('/');
    if (entries->empty()) {
      if (!material.emptyFolder) material.emptyFolder = folder;
      return;
    }
    if (!material.folder) material.folder = folder;
    if (!material.subfolder && !isShare) material.subfolder = folder;
    for (const ControlStat& entry : *entries) {
      if (isSafeFabricName(entry.name)) take({below(folder, entry.name), entry});
    }
  }

  void take(Found entry) {
    if (entry.stat.isDirectory) {
      if (waiting.size() < mostWaiting) waiting.push_back(std::move(entry.location));
      return;
    }
    if (isPrivate(entry) && !material.unreadable) (void)isReadable(entry);
    if (entry.stat.size == 0 && !material.emptyFile) material.emptyFile = entry;
    if (entry.stat.size > Material::windowBytes && !material.largeFile && isReadable(entry)) {
      material.largeFile = entry;
    }
    const bool isWanted = entry.stat.size > 0 && entry.stat.size <= Material::windowBytes &&
                          !TreeHeader::isNoise(entry.stat.name);  // trees leave noise out
    const bool isBetter =
        !material.file || (!isGood(material.file) && entry.stat.size > material.file->stat.size);
    if (isWanted && isBetter && isReadable(entry)) material.file = std::move(entry);
  }

  // A file that not everybody may read is one that the host may not read either.
  static bool isPrivate(const Found& file) {
    constexpr std::uint32_t everybody = 0444;
    return file.stat.mode != 0 && (file.stat.mode & everybody) != everybody;
  }

  // Any answer but a refusal: whether what is read is right is for checks to tell.
  bool isReadable(const Found& file) {
    if (reads >= mostReads) return false;
    ++reads;
    const auto answer = host.ask(readRequest(file.location, 0, 1));
    const bool isRefused = answer && !answer->response.dataBase64;
    if (!isRefused) return true;
    if (!refusedFile) refusedFile = file;
    if (!material.unreadable) material.unreadable = file;
    return false;
  }

  const HostProbe& host;
  const Deadline end;
  Material material;
  std::deque<std::string> waiting;
  std::optional<Found> refusedFile;
  int reads = 0;
};

}  // namespace

Material findMaterial(const HostProbe& host) { return Search(host).run(); }

std::string below(const std::string& location, const std::string& name) {
  return location + "/" + name;
}

}  // namespace tarnel
