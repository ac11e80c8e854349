// Probe, load and unload, and what each of them logs.
#include <unistd.h>

#include <chrono>
#include <cstdlib>

#include "VolumeTest.h"
#include "fs/TarnelFileSystem.h"
#include "support/MadeItem.h"
#include "support/ScriptedHost.h"

namespace tarnel::test {
namespace {

class TestResource final : public Resource {
 public:
  [[nodiscard]] std::string_view typeName() const override { return "TestResource"; }
};

std::int64_t wallClockMs() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

class FileSystemLifecycle : public testing::Test {
 protected:
  FileSystemLifecycle() {
    recording.setDebug(false);
    recording.clear();
  }

  std::shared_ptr<FabricVolume> load(TarnelFileSystem& fileSystem,
                                     const TaskOptions& options = {}) const {
    Awaited<TarnelFileSystem::VolumeReply> reply;
    fileSystem.loadResource(resource, options, reply.reply());
    auto [volume, error] = reply.wait();
    EXPECT_EQ(error, std::nullopt);
    return volume;
  }

  OptionalError unload(TarnelFileSystem& fileSystem) const {
    Awaited<ErrorReply> reply;
    fileSystem.unloadResource(resource, {}, reply.reply());
    return std::get<0>(reply.wait());
  }

  // Makes the volume ask the host for a stat of me/Docs.
  static void ask(const std::shared_ptr<FabricVolume>& volume, AttributesReply reply) {
    const auto share = madeItem("me/Docs", 4, 3, false, std::nullopt);
    volume->getAttributes(allAttributes, share, std::move(reply));
  }

  RecordingLog& recording = RecordingLog::installed();
  TestResource resource;
};

ItemAttributes rootAttributes(FabricVolume& volume) {
  std::optional<ItemAttributes> found;
  volume.activate([&](const ItemRef& root, OptionalError) {
    volume.getAttributes(allAttributes, root,
                         [&](auto attributes, OptionalError) { found = attributes; });
  });
  return found.value_or(ItemAttributes());
}

TEST_F(FileSystemLifecycle, probingAnythingIsUsable) {
  const TarnelFileSystem fileSystem("/nowhere.sock");
  Awaited<TarnelFileSystem::ProbeReply> reply;
  fileSystem.probeResource(resource, reply.reply());
  EXPECT_TRUE(reply.hasCome());
  const auto [result, error] = reply.wait();
  EXPECT_EQ(error, std::nullopt);
  EXPECT_TRUE(result.isUsable);
  EXPECT_EQ(result.name, "tarnelfs");
  EXPECT_EQ(result.containerID, FSIdentity::uuid());
  EXPECT_TRUE(recording.lines().empty());
}

TEST_F(FileSystemLifecycle, loadingWithoutOptionsLogsTwoLines) {
  TarnelFileSystem fileSystem("/nowhere.sock");
  (void)load(fileSystem);
  const std::vector<LogLine> expected = {
      noticeLine("loadResource: resource is TestResource"),
      noticeLine("loaded: serving Tarnel over /nowhere.sock (read-only volume)")};
  EXPECT_EQ(recording.lines(), expected);
}

TEST_F(FileSystemLifecycle, loadingWithOptionsLogsThemJoinedByBlanks) {
  TarnelFileSystem fileSystem("/nowhere.sock");
  (void)load(fileSystem, {.taskOptions = {"-o", "rdonly"}});
  const std::vector<LogLine> expected = {
      noticeLine("loadResource: resource is TestResource"),
      noticeLine("mount options are populated on this OS (they were empty on 26.5.2): -o rdonly"),
      noticeLine("loaded: serving Tarnel over /nowhere.sock (read-only volume)")};
  EXPECT_EQ(recording.lines(), expected);
}

TEST_F(FileSystemLifecycle, takesItsSocketFromTheHomeAsItIsAtLoading) {
  TarnelFileSystem fileSystem;
  ASSERT_EQ(::setenv("HOME", "/home/of/somebody", 1), 0);
  (void)load(fileSystem);
  EXPECT_EQ(recording.lines().back(),
            noticeLine("loaded: serving Tarnel over /home/of/somebody/tarnel-control.sock "
                       "(read-only volume)"));
}

TEST_F(FileSystemLifecycle, theLoadedVolumeHasItsNameIdentityAndOwner) {
  TarnelFileSystem fileSystem("/nowhere.sock");
  const std::int64_t before = wallClockMs();
  const auto volume = load(fileSystem);
  const std::int64_t after = wallClockMs();
  ASSERT_NE(volume, nullptr);
  EXPECT_EQ(volume->volumeName, "Tarnel");
  EXPECT_EQ(volume->volumeID, FSIdentity::uuid());
  const ItemAttributes root = rootAttributes(*volume);
  EXPECT_EQ(root.uid, ::getuid());
  EXPECT_EQ(root.gid, ::getgid());
  const std::int64_t mounted =
      root.birthTime.seconds * 1000 + root.birthTime.nanoseconds / 1'000'000;
  EXPECT_GE(mounted, before - 1);
  EXPECT_LE(mounted, after);
}

TEST_F(FileSystemLifecycle, isReadyFromLoadingOnAlsoAfterUnloading) {
  TarnelFileSystem fileSystem("/nowhere.sock");
  EXPECT_EQ(fileSystem.containerStatus(), ContainerStatus::notReady);
  (void)load(fileSystem);
  EXPECT_EQ(fileSystem.containerStatus(), ContainerStatus::ready);
  EXPECT_EQ(unload(fileSystem), std::nullopt);
  EXPECT_EQ(fileSystem.containerStatus(), ContainerStatus::ready);
}

TEST_F(FileSystemLifecycle, eachLoadTellsThatItBecameReadyBeforeTheLoadedLine) {
  std::vector<std::size_t> linesBefore;
  TarnelFileSystem fileSystem("/nowhere.sock",
                              [&] { linesBefore.push_back(recording.lines().size()); });
  (void)load(fileSystem);
  (void)load(fileSystem);
  EXPECT_EQ(linesBefore, (std::vector<std::size_t>{1, 3}));
}

TEST_F(FileSystemLifecycle, unloadingNothingLogsAndSucceeds) {
  TarnelFileSystem fileSystem("/nowhere.sock");
  EXPECT_EQ(unload(fileSystem), std::nullopt);
  EXPECT_EQ(recording.lines(), std::vector<LogLine>{noticeLine("unloaded")});
  EXPECT_EQ(fileSystem.containerStatus(), ContainerStatus::notReady);
}

TEST_F(FileSystemLifecycle, loadingMakesNoConnection) {
  ScriptedHost host;
  host.expect(R"({"op":"stat","name":"me\/Docs"})").answer(R"({"status":"ok"})");
  TarnelFileSystem fileSystem(host.path());
  const auto first = load(fileSystem);
  const auto second = load(fileSystem);
  Awaited<AttributesReply> reply;
  ask(second, reply.reply());
  EXPECT_EQ(std::get<1>(reply.wait()), posixError(2));
  // Connections are counted as they are accepted, in order: an earlier one would be in the count.
  EXPECT_EQ(host.connections(), 1u);
}

TEST_F(FileSystemLifecycle, aSecondLoadStoresANewVolumeOfTheSameIdentity) {
  TarnelFileSystem fileSystem("/nowhere.sock");
  const auto first = load(fileSystem);
  const auto second = load(fileSystem);
  EXPECT_NE(first, second);
  EXPECT_EQ(first->volumeID, second->volumeID);
}

TEST_F(FileSystemLifecycle, aSecondLoadReleasesTheFirstVolume) {
  TarnelFileSystem fileSystem("/nowhere.sock");
  const std::weak_ptr<FabricVolume> first = load(fileSystem);
  EXPECT_FALSE(first.expired());
  const std::weak_ptr<FabricVolume> second = load(fileSystem);
  EXPECT_TRUE(first.expired());
  EXPECT_EQ(unload(fileSystem), std::nullopt);
  EXPECT_TRUE(second.expired());
}

TEST_F(FileSystemLifecycle, aSecondLoadAndItsUnloadDoNotCancelTheFirstVolume) {
  ScriptedHost host;
  host.expect(R"({"op":"stat","name":"me\/Docs"})").stall().answer(R"({"status":"ok"})");
  TarnelFileSystem fileSystem(host.path());
  const auto first = load(fileSystem);
  Awaited<AttributesReply> waiting;
  ask(first, waiting.reply());
  ASSERT_TRUE(host.waitForRequests(1));

  (void)load(fileSystem);
  EXPECT_EQ(unload(fileSystem), std::nullopt);
  EXPECT_FALSE(waiting.hasCome());
  host.release();
  EXPECT_EQ(std::get<1>(waiting.wait()), posixError(2));
}

TEST_F(FileSystemLifecycle, unloadingEndsWhatWaitsForTheHost) {
  ScriptedHost host;
  host.expect(R"({"op":"stat","name":"me\/Docs"})").stall();
  TarnelFileSystem fileSystem(host.path());
  const auto volume = load(fileSystem);
  Awaited<AttributesReply> running;
  Awaited<AttributesReply> queued;
  ask(volume, running.reply());
  ask(volume, queued.reply());
  ASSERT_TRUE(host.waitForRequests(1));

  EXPECT_EQ(unload(fileSystem), std::nullopt);
  EXPECT_FALSE(std::get<0>(running.wait()));
  // What had not started never reaches the host; a time-out of the first would let it.
  EXPECT_EQ(std::get<1>(queued.wait()), posixError(57));
  EXPECT_EQ(host.requests().size(), 1u);
}

TEST_F(FileSystemLifecycle, aHostThatStaysSilentIsATimeOutAfterFiveSeconds) {
  ScriptedHost host;
  host.expect(R"({"op":"stat","name":"me\/Docs"})").stall();
  TarnelFileSystem fileSystem(host.path());
  const auto volume = load(fileSystem);
  const auto start = std::chrono::steady_clock::now();
  Awaited<AttributesReply> waiting;
  ask(volume, waiting.reply());
  EXPECT_EQ(std::get<1>(waiting.wait()), posixError(60));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(4900));
}

TEST_F(FileSystemLifecycle, hasItsFixedLimitsAndLabel) {
  EXPECT_EQ(TarnelFileSystem::metadataTimeout, 5.0);
  EXPECT_EQ(TarnelFileSystem::bulkTimeout, 30.0);
  EXPECT_EQ(TarnelFileSystem::clientLabel, "tarnel.fskit.control");
  EXPECT_EQ(TarnelFileSystem::volumeName, "Tarnel");
}

}  // namespace
}  // namespace tarnel::test
