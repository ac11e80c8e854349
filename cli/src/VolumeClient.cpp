#include "VolumeClient.h"

#include <algorithm>
#include <future>
#include <utility>

#include "CommandResource.h"
#include "HostAbsence.h"
#include "control/Text.h"

namespace tarnel {
namespace {

// A result that a reply brings from another thread.
template <class T>
class Awaited {
 public:
  void set(T value, OptionalError error) {
    if (error) {
      promise.set_value(std::unexpected(*error));
    } else {
      promise.set_value(std::move(value));
    }
  }
  [[nodiscard]] VolumeClient::Result<T> wait() { return promise.get_future().get(); }

 private:
  std::promise<VolumeClient::Result<T>> promise;
};

class EntryCollector final : public DirectoryEntryPacking {
 public:
  bool packEntry(std::string_view name, ItemType, std::uint64_t, std::uint64_t,
                 const std::optional<ItemAttributes>& attributes) override {
    entries.push_back(
        {.name = std::string(name), .attributes = attributes.value_or(ItemAttributes{})});
    return true;
  }
  std::vector<VolumeClient::Entry> entries;
};

}  // namespace

class VolumeClient::Buffer final : public MutableFileBuffer {
 public:
  [[nodiscard]] std::int64_t length() const override {
    return static_cast<std::int64_t>(bytes.size());
  }
  void withUnsafeMutableBytes(const std::function<void(std::span<char>)>& use) override {
    use(bytes);
  }
  std::vector<char> bytes = std::vector<char>(FabricVolume::maximumReadBytes);
};

VolumeClient::VolumeClient(const std::string& socketPath)
    : fileSystem(socketPath), buffer(std::make_shared<Buffer>()) {
  fileSystem.loadResource(CommandResource(), {},
                          [this](auto loaded, OptionalError) { volume = std::move(loaded); });
  volume->activate([this](const ItemRef& item, OptionalError) { root = item; });
}

VolumeClient::~VolumeClient() {
  fileSystem.unloadResource(CommandResource(), {}, [](OptionalError) {});
}

std::expected<std::unique_ptr<VolumeClient>, std::string> VolumeClient::open(
    const std::string& socketPath) {
  std::unique_ptr<VolumeClient> client(new VolumeClient(socketPath));
  if (const auto peers = client->list(client->root); !peers) {
    return std::unexpected(hostFailure(socketPath, errorName(peers.error())));
  }
  return client;
}

VolumeClient::Result<ItemRef> VolumeClient::resolve(std::string_view path) {
  ItemRef item = root;
  while (!path.empty()) {
    const std::string_view name = path.substr(0, path.find('/'));
    path.remove_prefix(std::min(name.size() + 1, path.size()));
    if (name.empty()) continue;
    Awaited<ItemRef> found;
    volume->lookupItem(FileName(std::string(name), isValidUtf8(name)), item,
                       [&](ItemRef child, const std::optional<FileName>&, OptionalError error) {
                         found.set(std::move(child), error);
                       });
    auto child = found.wait();
    if (!child) return child;
    item = std::move(*child);
  }
  return item;
}

VolumeClient::Result<ItemAttributes> VolumeClient::attributes(const ItemRef& item) {
  Awaited<ItemAttributes> found;
  volume->getAttributes(allAttributes, item,
                        [&](std::optional<ItemAttributes> attributes, OptionalError error) {
                          found.set(attributes.value_or(ItemAttributes{}), error);
                        });
  return found.wait();
}

VolumeClient::Result<std::vector<VolumeClient::Entry>> VolumeClient::list(
    const ItemRef& directory) {
  Awaited<bool> packed;
  const auto collector = std::make_shared<EntryCollector>();
  volume->enumerateDirectory(directory, 0, 0, allAttributes, collector,
                             [&](std::uint64_t, OptionalError error) { packed.set(true, error); });
  if (const auto outcome = packed.wait(); !outcome) return std::unexpected(outcome.error());
  return std::move(collector->entries);
}

VolumeClient::Result<BytesView> VolumeClient::read(const ItemRef& file, std::int64_t offset) {
  Awaited<std::int64_t> count;
  volume->read(file, offset, buffer->length(), buffer,
               [&](std::int64_t bytes, OptionalError error) { count.set(bytes, error); });
  const auto read = count.wait();
  if (!read) return std::unexpected(read.error());
  return BytesView(buffer->bytes.data(), static_cast<std::size_t>(*read));
}

std::string errorName(VolumeError error) {
  if (error.domain == VolumeError::Domain::fileSystemKit) return "stale directory";
  switch (error.code) {
    case darwin::noEntry:
      return "ENOENT";
    case darwin::notADirectory:
      return "ENOTDIR";
    case darwin::isADirectory:
      return "EISDIR";
    case darwin::invalidArgument:
      return "EINVAL";
    case darwin::readOnly:
      return "EROFS";
    case darwin::notConnected:
      return "ENOTCONN";
    case darwin::timedOut:
      return "ETIMEDOUT";
    default:
      return "EIO";
  }
}

}  // namespace tarnel
