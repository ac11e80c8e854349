// A volume over a fake source, and the operations of the volume as calls that wait for their reply.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "fs/FSIdentity.h"
#include "fs/FabricVolume.h"
#include "support/Awaited.h"
#include "support/ByteBuffer.h"
#include "support/FakeSource.h"
#include "support/RecordingLog.h"
#include "support/RecordingPacker.h"

namespace tarnel::test {

// An item that is not the volume's.
class ForeignItem final : public Item {};

// Every failure that a source can have, with the number under which it leaves the volume.
inline std::vector<std::pair<FabricFailure, std::int32_t>> everyFailure() {
  using Kind = FabricSourceError::Kind;
  return {{failure(Kind::notFound), 2},
          {failure(Kind::notADirectory), 20},
          {failure(Kind::isDirectory), 21},
          {failure(Kind::timedOut), 60},
          {failure(Kind::disconnected), 57},
          {ioFailure("disk"), 5},
          {DecodingError{DecodingError::Kind::dataCorrupted, ""}, 5},
          {EncodingError{""}, 5}};
}

inline FileName textName(std::string name) { return {std::move(name), true}; }

class VolumeTest : public testing::Test {
 protected:
  using Kind = FabricSourceError::Kind;
  using Call = SourceCall;

  static constexpr std::uint32_t uid = 501;
  static constexpr std::uint32_t gid = 20;
  static constexpr std::int64_t mountTimeMs = 1'600'000'000'500;

  VolumeTest() : VolumeTest(1) {}
  explicit VolumeTest(std::size_t replyThreads)
      : source(std::make_shared<FakeSource>(replyThreads)),
        volume(FabricVolume::make(FSIdentity::uuid(), "Tarnel", source, uid, gid, mountTimeMs)) {
    recording.setDebug(false);
    recording.clear();
  }

  [[nodiscard]] ItemRef root() const {
    Awaited<ItemReply> reply;
    volume->activate(reply.reply());
    return std::get<0>(reply.wait());
  }

  [[nodiscard]] std::tuple<ItemRef, std::optional<FileName>, OptionalError> lookUp(
      const ItemRef& directory, const FileName& name) const {
    Awaited<NamedItemReply> reply;
    volume->lookupItem(name, directory, reply.reply());
    return reply.wait();
  }

  // The item of a path of safe names, looked up step by step; nullptr and a failure when it is not
  // there.
  [[nodiscard]] std::shared_ptr<FabricItem> item(std::string_view path) const {
    ItemRef at = root();
    while (!path.empty()) {
      const std::string name(path.substr(0, path.find('/')));
      path.remove_prefix(std::min(name.size() + 1, path.size()));
      auto [found, foundName, error] = lookUp(at, textName(name));
      EXPECT_EQ(error, std::nullopt) << name;
      if (!found) return nullptr;
      at = std::move(found);
    }
    return std::dynamic_pointer_cast<FabricItem>(at);
  }

  [[nodiscard]] std::tuple<std::optional<ItemAttributes>, OptionalError> getAttributes(
      const ItemRef& item, WantedAttributes wanted = allAttributes) const {
    Awaited<AttributesReply> reply;
    volume->getAttributes(wanted, item, reply.reply());
    return reply.wait();
  }

  [[nodiscard]] std::tuple<std::uint64_t, OptionalError> enumerate(
      const ItemRef& directory, const std::shared_ptr<RecordingPacker>& packer,
      std::optional<WantedAttributes> wanted = std::nullopt, std::uint64_t cookie = 0,
      std::uint64_t verifier = 0) const {
    Awaited<VerifierReply> reply;
    volume->enumerateDirectory(directory, cookie, verifier, wanted, packer, reply.reply());
    return reply.wait();
  }

  [[nodiscard]] std::tuple<std::int64_t, OptionalError> read(
      const ItemRef& item, std::int64_t offset, std::int64_t length,
      const std::shared_ptr<ByteBuffer>& buffer) const {
    Awaited<CountReply> reply;
    volume->read(item, offset, length, buffer, reply.reply());
    return reply.wait();
  }

  OptionalError reclaim(const ItemRef& item) const {
    Awaited<ErrorReply> reply;
    volume->reclaimItem(item, reply.reply());
    return std::get<0>(reply.wait());
  }

  RecordingLog& recording = RecordingLog::installed();
  const std::shared_ptr<FakeSource> source;
  const std::shared_ptr<FabricVolume> volume;
};

}  // namespace tarnel::test
