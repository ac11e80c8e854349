// The whole road, volume to shared folder, over sockets that hold no more than 8 KiB.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <thread>

#include "SmallSocketBuffers.h"
#include "control/PosixSocket.h"
#include "control/UniqueFd.h"
#include "control/UnixSocket.h"
#include "fs/TarnelFileSystem.h"
#include "host/ReferenceHost.h"
#include "support/Awaited.h"
#include "support/ByteBuffer.h"
#include "support/Eventually.h"
#include "support/FileTree.h"
#include "support/RecordingPacker.h"
#include "support/SomeBytes.h"

namespace tarnel::test {
namespace {

class RoadResource final : public Resource {
 public:
  [[nodiscard]] std::string_view typeName() const override { return "RoadResource"; }
};

class SmallBuffers : public testing::Test {
 protected:
  void SetUp() override {
    tree.folder("docs");
    auto started = ReferenceHost::start(
        {.socketPath = tree / "s", .shares = {{.name = "Docs", .folder = tree / "docs"}}});
    ASSERT_TRUE(started) << description(started.error());
    host = std::move(*started);
    Awaited<TarnelFileSystem::VolumeReply> loaded;
    fileSystem.loadResource(RoadResource(), {}, loaded.reply());
    volume = std::get<0>(loaded.wait());
    ASSERT_NE(volume, nullptr);
  }

  void TearDown() override { volume->cancelAll(); }

  [[nodiscard]] ItemRef item(std::initializer_list<const char*> names) const {
    Awaited<ItemReply> root;
    volume->activate(root.reply());
    ItemRef at = std::get<0>(root.wait());
    for (const char* name : names) {
      Awaited<NamedItemReply> found;
      volume->lookupItem(FileName{name, true}, at, found.reply());
      at = std::get<0>(found.wait());
      EXPECT_NE(at, nullptr) << name;
    }
    return at;
  }

  [[nodiscard]] std::string read(const ItemRef& from, std::int64_t offset,
                                 std::size_t length) const {
    const auto buffer = std::make_shared<ByteBuffer>(length);
    Awaited<CountReply> reply;
    volume->read(from, offset, static_cast<std::int64_t>(length), buffer, reply.reply());
    const auto [count, error] = reply.wait();
    EXPECT_EQ(error, std::nullopt);
    return std::string(buffer->first(count));
  }

  SmallSocketBuffers buffers;
  FileTree tree;
  std::unique_ptr<ReferenceHost> host;
  TarnelFileSystem fileSystem{tree / "s"};
  std::shared_ptr<FabricVolume> volume;
};

TEST_F(SmallBuffers, aReadOfManyChunksComesWhole) {
  const std::string bytes = someBytes((1 << 20) + 17);
  tree.file("docs/a", bytes);
  EXPECT_TRUE(read(item({"me", "Docs", "a"}), 0, bytes.size()) == bytes);
}

TEST_F(SmallBuffers, aLongListingComesWhole) {
  constexpr std::size_t count = 2'000;
  std::vector<std::string> names;
  for (std::size_t i = 0; i < count; ++i) {
    names.push_back("a name of some length " + std::to_string(i));
    tree.file("docs/" + names.back());
  }
  std::ranges::sort(names);
  const auto packer = std::make_shared<RecordingPacker>();
  Awaited<VerifierReply> reply;
  volume->enumerateDirectory(item({"me", "Docs"}), 0, 0, allAttributes, packer, reply.reply());
  EXPECT_EQ(std::get<1>(reply.wait()), std::nullopt);
  std::vector<std::string> listed = packer->names();
  std::ranges::sort(listed);
  EXPECT_EQ(listed, names);
}

TEST_F(SmallBuffers, readsAndLookupsAtOnceComeWhole) {
  const std::string bytes = someBytes(300'000);
  tree.file("docs/a", bytes);
  const ItemRef file = item({"me", "Docs", "a"});
  std::vector<std::thread> readers;
  for (std::size_t i = 0; i < 4; ++i) {
    readers.emplace_back([&, i] {
      const std::size_t from = i * 1'000;
      EXPECT_TRUE(read(file, static_cast<std::int64_t>(from), 270'000) ==
                  bytes.substr(from, 270'000));
      EXPECT_NE(item({"me", "Docs", "a"}), nullptr);
    });
  }
  for (std::thread& reader : readers) reader.join();
}

// What each end of a connection was asked for, in order: SO_SNDBUF and SO_RCVBUF of one descriptor.
TEST_F(SmallBuffers, bothEndsAskForRoomForALargeAnswerOnceConnected) {
  (void)item({"me", "Docs"});
  const auto requests = buffers.requests();
  ASSERT_EQ(requests.size(), 4u);
  std::size_t ends = 0;
  for (const auto& first : requests) {
    if (first.name != SO_SNDBUF) continue;
    ++ends;
    EXPECT_EQ(first.bytes, 1 << 20);
    const SmallSocketBuffers::Request second{first.fd, SO_RCVBUF, 1 << 20};
    EXPECT_EQ(std::ranges::count(requests, second), 1);
  }
  EXPECT_EQ(ends, 2u);
}

TEST_F(SmallBuffers, aSystemThatRefusesAsMuchIsAskedForLess) {
  buffers.refuseAbove(100'000);
  const UniqueFd fd(connectUnixSocket(tree / "s").value_or(-1));
  ASSERT_TRUE(fd.valid());
  std::vector<int> asked;
  for (const auto& request : buffers.requests()) {
    if (request.fd == fd.get() && request.name == SO_SNDBUF) asked.push_back(request.bytes);
  }
  EXPECT_EQ(asked, (std::vector<int>{1 << 20, 1 << 19, 1 << 18, 1 << 17, 1 << 16}));
}

}  // namespace
}  // namespace tarnel::test
