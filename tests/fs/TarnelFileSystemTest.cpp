// Probe, load and unload, and what each of them logs.
#include <pwd.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

#include "FileSystemTest.h"
#include "support/ScriptedHost.h"

namespace tarnel::test {
namespace {

class FileSystemLifecycle : public FileSystemTest {};

std::int64_t wallClockMs() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

// Puts a variable of the environment back as it was.
class Environment {
 public:
  explicit Environment(const char* variable) : name(variable) {
    if (const char* const value = std::getenv(variable)) before = value;
  }
  ~Environment() {
    if (before) {
      ::setenv(name, before->c_str(), 1);
    } else {
      ::unsetenv(name);
    }
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;

 private:
  const char* const name;
  std::optional<std::string> before;
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

TEST_F(FileSystemLifecycle, anOptionWithoutTextIsJoinedLikeEveryOther) {
  TarnelFileSystem fileSystem("/nowhere.sock");
  (void)load(fileSystem, {.taskOptions = {"", "-o", ""}});
  EXPECT_EQ(recording.lines().at(1),
            noticeLine("mount options are populated on this OS (they were empty on 26.5.2):  -o "));
}

LogLine loadedFromHome(const std::string& home) {
  return noticeLine("loaded: serving Tarnel over " + home +
                    "/tarnel-control.sock (read-only volume)");
}

TEST_F(FileSystemLifecycle, takesItsSocketFromTheHomeAsItIsAtLoading) {
  const Environment restored("HOME");
  TarnelFileSystem fileSystem;
  ASSERT_EQ(::setenv("HOME", "/home/of/somebody", 1), 0);
  (void)load(fileSystem);
  EXPECT_EQ(recording.lines().back(), loadedFromHome("/home/of/somebody"));
}

TEST_F(FileSystemLifecycle, takesTheHomeOfTheUsersAccountWhenTheEnvironmentNamesNone) {
  const Environment restored("HOME");
  const passwd* const account = ::getpwuid(::getuid());
  const std::string home = account != nullptr ? account->pw_dir : "/";
  TarnelFileSystem fileSystem;
  ASSERT_EQ(::setenv("HOME", "", 1), 0);
  (void)load(fileSystem);
  EXPECT_EQ(recording.lines().back(), loadedFromHome(home));
  ASSERT_EQ(::unsetenv("HOME"), 0);
  (void)load(fileSystem);
  EXPECT_EQ(recording.lines().back(), loadedFromHome(home));
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

TEST_F(FileSystemLifecycle, aVolumeIsStoredBeforeItsLoadTellsThatItBecameReady) {
  std::function<void()> whenReady;
  TarnelFileSystem fileSystem("/nowhere.sock", [&] { whenReady(); });
  whenReady = [&] { EXPECT_EQ(unload(fileSystem), std::nullopt); };
  const std::weak_ptr<FabricVolume> volume = load(fileSystem);
  EXPECT_TRUE(volume.expired());
}

TEST_F(FileSystemLifecycle, isReadyAndHasLoggedEverythingWhenLoadingReplies) {
  TarnelFileSystem fileSystem("/nowhere.sock");
  std::size_t lines = 0;
  ContainerStatus status = ContainerStatus::notReady;
  fileSystem.loadResource(resource, {}, [&](const std::shared_ptr<FabricVolume>&, OptionalError) {
    lines = recording.lines().size();
    status = fileSystem.containerStatus();
  });
  EXPECT_EQ(lines, 2u);
  EXPECT_EQ(status, ContainerStatus::ready);
}

TEST_F(FileSystemLifecycle, hasLoggedWhenUnloadingReplies) {
  TarnelFileSystem fileSystem("/nowhere.sock");
  std::vector<LogLine> lines;
  fileSystem.unloadResource(resource, {}, [&](OptionalError) { lines = recording.lines(); });
  EXPECT_EQ(lines, std::vector<LogLine>{noticeLine("unloaded")});
}

// The log of the process looks at the file system while it is told a line.
class ObservingLog final : public TextLog {
 public:
  [[nodiscard]] bool isDebugEnabled() const override { return false; }
  void line(Level, const std::string& text) override { observe(text); }
  std::function<void(const std::string&)> observe;
};

TEST_F(FileSystemLifecycle, saysWhatItDidOnlyAfterItDidIt) {
  ScriptedHost host;
  host.expect(R"({"op":"stat","name":"me\/Docs"})").stall();
  TarnelFileSystem fileSystem(host.path());
  Awaited<AttributesReply> running;
  Awaited<AttributesReply> queued;
  std::vector<std::string> seen;
  static auto& observing = *new ObservingLog;  // late replies may log
  observing.observe = [&](const std::string& text) {
    if (text.starts_with("loaded: ")) {
      EXPECT_EQ(fileSystem.containerStatus(), ContainerStatus::ready);
    } else if (text == "unloaded") {
      EXPECT_EQ(std::get<1>(queued.wait()), posixError(57));
    } else {
      return;
    }
    seen.push_back(text.substr(0, 6));
  };
  setLog(observing);
  const auto volume = load(fileSystem);
  ask(volume, running.reply());
  ask(volume, queued.reply());
  EXPECT_TRUE(host.waitForRequests(1));
  EXPECT_EQ(unload(fileSystem), std::nullopt);
  (void)running.wait();
  setLog(recording);
  EXPECT_EQ(seen, (std::vector<std::string>{"loaded", "unload"}));
}

TEST_F(FileSystemLifecycle, unloadingNothingLogsAndSucceeds) {
  TarnelFileSystem fileSystem("/nowhere.sock");
  EXPECT_EQ(unload(fileSystem), std::nullopt);
  EXPECT_EQ(recording.lines(), std::vector<LogLine>{noticeLine("unloaded")});
  EXPECT_EQ(fileSystem.containerStatus(), ContainerStatus::notReady);
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

}  // namespace
}  // namespace tarnel::test
