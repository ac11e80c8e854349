// The ends of a mount.
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>

#include "ScriptedMountFixture.h"
#include "support/Eventually.h"
#include "support/Sanitized.h"

namespace tarnel::test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// "within a second", and what a busy machine adds; a program under a sanitizer is slow to start.
constexpr milliseconds aSecond{builtWithSanitizer ? 4000 : 1500};

class UnmountTest : public ScriptedMountFixture {
 protected:
  UnmountTest() { host.file("me/Docs/a", "bytes of a"); }

  void hostFallsSilent() {
    host.answer({.op = ControlOp::shares}, HostReply().stall());
    for (const char* path : {"me/Docs", "me/Docs/a", "me/Docs/b"}) {
      host.answer({.op = ControlOp::stat, .path = path}, HostReply().stall());
    }
  }
  ProgramOutcome unmount(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "unmount");
    const auto begun = Clock::now();
    ProgramOutcome outcome = runTarnel(arguments);
    EXPECT_LT(Clock::now() - begun, aSecond);
    return outcome;
  }
};

TEST_F(UnmountTest, theFolderIsEmptyAgainAndTheProcessEnds) {
  mountTree();
  EXPECT_EQ(unmount({mount->path()}).status, 0);
  EXPECT_FALSE(isMounted(mount->path()));
  EXPECT_TRUE(std::filesystem::is_empty(mount->path()));
  EXPECT_EQ(mount->program().wait(aSecond).status, 0);
}

TEST_F(UnmountTest, theFolderMayBeGivenInAnyForm) {
  for (const char* form : {"/", "//", "/.", "/../mnt"}) {
    mountTree();
    EXPECT_EQ(unmount({mount->path() + form}).status, 0) << form;
    EXPECT_FALSE(isMounted(mount->path())) << form;
  }
  mountTree();
  const TempDir elsewhere;
  std::filesystem::create_symlink(mount->path(), elsewhere / "link");
  EXPECT_EQ(unmount({elsewhere / "link"}).status, 0);
  EXPECT_FALSE(isMounted(mount->path()));
  mountTree();
  const std::filesystem::path folder(mount->path());
  const auto relative = runTarnel({"unmount", "mnt"}, {.folder = folder.parent_path().string()});
  EXPECT_EQ(relative.status, 0) << relative.err;
}

TEST_F(UnmountTest, aSilentHostDelaysNothing) {
  mountTree();
  hostFallsSilent();
  EXPECT_EQ(unmount({mount->path()}).status, 0);
  EXPECT_EQ(mount->program().wait(aSecond).status, 0);
}

TEST_F(UnmountTest, aProgramThatWaitsForASilentHostKeepsItBusyUnlessLazy) {
  mountTree();
  hostFallsSilent();
  Program waiting({"stat", *mount / "me"});
  ASSERT_TRUE(host.waitUntilAsked({.op = ControlOp::shares}));
  const ProgramOutcome busy = unmount({mount->path()});
  EXPECT_EQ(busy.status, 1);
  EXPECT_EQ(busy.errorLines(), 1U) << busy.err;
  EXPECT_EQ(unmount({"--lazy", mount->path()}).status, 0);
  EXPECT_FALSE(isMounted(mount->path()));
}

TEST_F(UnmountTest, aBusyMountStaysAndSaysSo) {
  mountTree();
  const UniqueFd open(::open(at("a").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_TRUE(open.valid());
  const ProgramOutcome busy = unmount({mount->path()});
  EXPECT_EQ(busy.status, 1);
  EXPECT_EQ(busy.errorLines(), 1U) << busy.err;
  EXPECT_NE(busy.err.find("EBUSY"), std::string::npos) << busy.err;
  EXPECT_NE(busy.err.find("--lazy"), std::string::npos) << busy.err;
  EXPECT_NE(busy.err.find(mount->path()), std::string::npos) << busy.err;
  EXPECT_TRUE(isMounted(mount->path()));
  EXPECT_EQ(contentOf(at("a")), "bytes of a");
}

TEST_F(UnmountTest, aLazyUnmountLeavesWhatIsOpenReadable) {
  mountTree();
  const UniqueFd open(::open(at("a").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_TRUE(open.valid());
  EXPECT_EQ(unmount({"--lazy", mount->path()}).status, 0);
  EXPECT_FALSE(isMounted(mount->path()));
  char bytes[32];
  EXPECT_EQ(::read(open.get(), bytes, sizeof bytes), 10);
  EXPECT_FALSE(mount->program().hasEnded());
}

class SignalTest : public UnmountTest, public testing::WithParamInterface<int> {};

TEST_P(SignalTest, unmountsWithinASecondWithAFileOpen) {
  mountTree();
  const UniqueFd open(::open(at("a").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_TRUE(open.valid());
  mount->program().signal(GetParam());
  EXPECT_EQ(mount->program().wait(aSecond).status, 0);
  EXPECT_FALSE(isMounted(mount->path()));
}

TEST_P(SignalTest, unmountsWithinASecondWhileTheHostIsSilent) {
  mountTree();
  hostFallsSilent();
  Program waiting({"stat", at("b")});
  ASSERT_TRUE(eventually([&] { return host.asked(ControlOp::shares) > 0; }));
  mount->program().signal(GetParam());
  EXPECT_EQ(mount->program().wait(aSecond).status, 0);
  EXPECT_FALSE(isMounted(mount->path()));
  EXPECT_EQ(waiting.wait(aSecond).status, 1);
}

INSTANTIATE_TEST_SUITE_P(EachSignal, SignalTest, testing::Values(SIGINT, SIGTERM, SIGHUP),
                         [](const auto& tested) {
                           return std::string(::sigabbrev_np(tested.param));
                         });

TEST_F(UnmountTest, aSignalLeavesAnotherMountOnTheSameFolderAlone) {
  mountTree();
  const UniqueFd open(::open(at("a").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(unmount({"--lazy", mount->path()}).status, 0);
  Program second({tarnelProgram(), "mount", "-f", "--socket", host.path(), mount->path()});
  ASSERT_TRUE(eventually([&] { return isMounted(mount->path()); }));
  mount->program().signal(SIGTERM);
  EXPECT_EQ(mount->program().wait(aSecond).status, 0);
  EXPECT_TRUE(isMounted(mount->path()));
  EXPECT_FALSE(second.hasEnded());
}

class DeadMountTest : public UnmountTest {
 protected:
  void killMount(const std::string& options = nothingKept) {
    mountTree(options);
    struct stat status{};
    ASSERT_EQ(::stat(mount->path().c_str(), &status), 0);
    mount->program().signal(SIGKILL);
    EXPECT_EQ(mount->program().wait().status, 128 + SIGKILL);
    const int error = errnoOf([&] { return ::stat(mount->path().c_str(), &status); });
    ASSERT_EQ(error, options == nothingKept ? ENOTCONN : 0);
  }
  void expectMountable(const std::string& given) {
    const ProgramOutcome again = runTarnel({"mount", "--socket", host.path(), given});
    EXPECT_EQ(again.status, 0) << again.err;
    EXPECT_EQ(contentOf(at("a")), "bytes of a") << given;
    EXPECT_EQ(runTarnel({"unmount", mount->path()}).status, 0);
    EXPECT_FALSE(isMounted(mount->path())) << "the dead one is still below";
  }
};

TEST_F(DeadMountTest, theNextMountOnTheFolderCleansUp) {
  killMount();
  expectMountable(mount->path());
}

TEST_F(DeadMountTest, theNextMountCleansUpThoughTheKernelKeepsTheRootsAttributes) {
  killMount("attr_timeout=3600,entry_timeout=3600");
  expectMountable(mount->path());
}

TEST_F(DeadMountTest, theNextMountCleansUpWhateverTheFoldersFormIs) {
  const TempDir elsewhere;
  killMount();
  expectMountable(mount->path() + "/");
  killMount();
  std::filesystem::create_symlink(std::filesystem::path(mount->path()).parent_path(),
                                  elsewhere / "link");
  expectMountable(elsewhere / "link/mnt");
}

TEST_F(DeadMountTest, itCanBeUnmounted) {
  killMount();
  EXPECT_EQ(unmount({mount->path()}).status, 0);
  EXPECT_FALSE(isMounted(mount->path()));
}

class ForeignMountTest : public MountTest {
 protected:
  void expectRefused(const std::vector<std::string>& arguments) {
    const ProgramOutcome refused = runTarnel(arguments);
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.errorLines(), 1U) << refused.err;
    EXPECT_TRUE(std::filesystem::exists(folder / "theirs"));
  }
  MountFolder folder;
};

TEST_F(ForeignMountTest, mountsOfOtherTypesAreNeverTaken) {
  ASSERT_EQ(::mount("none", folder.path().c_str(), "tmpfs", 0, nullptr), 0);
  ASSERT_EQ(::mkdir((folder / "theirs").c_str(), 0700), 0);
  expectRefused({"unmount", folder.path()});
  expectRefused({"unmount", "--lazy", folder.path()});
  expectRefused({"mount", "--socket", "/tmp/none", folder.path()});
}

TEST_F(ForeignMountTest, aBoundFolderIsNotOurs) {
  const TempDir other;
  ASSERT_EQ(::mkdir((other / "theirs").c_str(), 0700), 0);
  ASSERT_EQ(::mount(other.path().c_str(), folder.path().c_str(), nullptr, MS_BIND, nullptr), 0);
  expectRefused({"unmount", folder.path()});
  expectRefused({"unmount", "--lazy", folder.path()});
}

TEST_F(ForeignMountTest, aFolderWithoutAMountIsNothingToUnmount) {
  ASSERT_EQ(::mkdir((folder / "theirs").c_str(), 0700), 0);
  expectRefused({"unmount", folder.path()});
  expectRefused({"unmount", folder / "missing"});
}

}  // namespace
}  // namespace tarnel::test
