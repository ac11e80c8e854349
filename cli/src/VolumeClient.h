// The volume without a mount: the same file system and volume that a mount serves, asked one
// operation at a time by a caller that waits. For machines without FUSE, scripts and tests.
// Threads: one.
#pragma once

#include <cstdint>
#include <expected>
#include <memory>
#include <string>
#include <vector>

#include "control/Bytes.h"
#include "fs/FabricVolume.h"
#include "fs/TarnelFileSystem.h"

namespace tarnel {

class VolumeClient {
 public:
  struct Entry {
    std::string name;
    ItemAttributes attributes;
  };
  template <class T>
  using Result = std::expected<T, VolumeError>;

  // Loads and activates the volume, and asks the host for its shares, so that a host that does not
  // answer is told once and clearly. The error is a sentence for the user.
  [[nodiscard]] static std::expected<std::unique_ptr<VolumeClient>, std::string> open(
      const std::string& socketPath);
  ~VolumeClient();
  VolumeClient(const VolumeClient&) = delete;
  VolumeClient& operator=(const VolumeClient&) = delete;

  [[nodiscard]] Result<ItemRef> resolve(std::string_view path);
  [[nodiscard]] Result<ItemAttributes> attributes(const ItemRef& item);
  [[nodiscard]] Result<std::vector<Entry>> list(const ItemRef& directory);
  // The next bytes from `offset`, at most one request's worth; none at the end.
  [[nodiscard]] Result<BytesView> read(const ItemRef& file, std::int64_t offset);

 private:
  class Buffer;
  explicit VolumeClient(const std::string& socketPath);

  TarnelFileSystem fileSystem;
  std::shared_ptr<FabricVolume> volume;
  ItemRef root;
  std::shared_ptr<Buffer> buffer;
};

// "ENOENT" for a volume's error.
[[nodiscard]] std::string errorName(VolumeError error);

}  // namespace tarnel
