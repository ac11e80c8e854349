// What `tarnel mount` refuses, each in one line.
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "CommandFixture.h"
#include "support/MountFolder.h"
#include "support/Sanitized.h"
#include "support/TestMount.h"

namespace tarnel::test {
namespace {

namespace fs = std::filesystem;

class MountRefusalTest : public CommandFixture {
 protected:
  void SetUp() override {
    if (const std::string why = whyNoMounts(); !why.empty()) GTEST_SKIP() << "SKIPPED: " << why;
  }
  ProgramOutcome mountOn(const std::string& path) {
    return runTarnel({"mount", "--socket", socket(), path});
  }
  // Runs the shell line in a mount namespace of its own. $M is the mountpoint, $D a folder that
  // holds the command, "t", where everybody may run it.
  ProgramOutcome inNamespace(const std::string& line) {
    return runProgram(
        {"unshare", "-m", "sh", "-ec", "cp \"$T\" \"$D/t\"; chmod 755 \"$D\" \"$D/t\"; " + line},
        {.environment = {{"T", tarnelProgram()},
                         {"M", folder.path()},
                         {"TARNEL_SOCKET", socket()},
                         {"D", sockets.path()}}});
  }
  static bool hasNamespaces() { return runProgram({"unshare", "-m", "true"}).status == 0; }
  static std::string nobody(const std::string& command) {
    return "setpriv --reuid 65534 --regid 65534 --clear-groups " + command + "; ";
  }

  MountFolder folder;
};

TEST_F(MountRefusalTest, aFolderThatIsMissing) {
  expectFailure(mountOn(share / "missing"), 1,
                share / "missing" + ": no such folder: make it first (ENOENT)");
}

TEST_F(MountRefusalTest, whatIsNoFolder) {
  share.file("file");
  expectFailure(mountOn(share / "file"), 1, "not a folder: choose an empty one (ENOTDIR)");
}

TEST_F(MountRefusalTest, aFolderThatIsNotEmpty) {
  share.file("precious");
  expectFailure(mountOn(share.path()), 1, "ENOTEMPTY");
  EXPECT_FALSE(isMounted(share.path()));
}

TEST_F(MountRefusalTest, aFolderThatIsMountedAlready) {
  startHost();
  ASSERT_EQ(mountOn(folder.path()).status, 0);
  for (const char* form : {"", "/", "/."}) {
    const ProgramOutcome again = mountOn(folder.path() + form);
    expectFailure(again, 1, "already");
    EXPECT_THAT(again.err, HasSubstr("unmount"));
  }
  EXPECT_EQ(tarnel({"unmount", folder.path()}).status, 0);
  EXPECT_FALSE(isMounted(folder.path()));
}

TEST_F(MountRefusalTest, aSocketPathOf104Bytes) {
  const std::string tooLong = "/tmp/" + std::string(99, 'x');
  expectFailure(runTarnel({"mount", "--socket", tooLong, folder.path()}), 1, tooLong);
  EXPECT_FALSE(isMounted(folder.path()));
}

TEST_F(MountRefusalTest, aSystemWithoutFuse) {
  if (!hasNamespaces()) GTEST_SKIP() << "SKIPPED: no mount namespaces";
  expectFailure(inNamespace("mount -t tmpfs none /dev; exec \"$D/t\" mount \"$M\""), 1,
                "/dev/fuse");
}

TEST_F(MountRefusalTest, aUserWithoutPermissionForFuse) {
  if (!hasNamespaces()) GTEST_SKIP() << "SKIPPED: no mount namespaces";
  const ProgramOutcome outcome =
      inNamespace("touch \"$D/fuse\"; chmod 600 \"$D/fuse\"; mount --bind \"$D/fuse\" /dev/fuse; " +
                  nobody("\"$D/t\" mount \"$M\""));
  expectFailure(outcome, 1, "/dev/fuse");
  EXPECT_THAT(outcome.err, HasSubstr("EACCES"));
}

// For users other than root, fusermount3 mounts on folders that are their own.
class OrdinaryUserTest : public MountRefusalTest {
 protected:
  void SetUp() override {
    MountRefusalTest::SetUp();
    if (IsSkipped()) return;
    if (!hasNamespaces() || !fs::exists("/usr/bin/fusermount3") ||
        inNamespace(everybodysFuse).status != 0) {
      GTEST_SKIP() << "SKIPPED: no mount namespaces, fusermount3 or device nodes";
    }
    fs::remove(sockets / "fuse");
    fs::permissions(fs::path(folder.path()).parent_path(), fs::perms(0755));
  }
  static constexpr const char* everybodysFuse =
      "mknod \"$D/fuse\" c 10 229; chmod 666 \"$D/fuse\"; mount --bind \"$D/fuse\" /dev/fuse; ";
};

TEST_F(OrdinaryUserTest, mountsAndUnmountsAFolderOfTheirs) {
  const ProgramOutcome outcome =
      inNamespace(everybodysFuse + ("chown 65534 \"$M\"; " + nobody("\"$D/t\" mount \"$M\"")) +
                  nobody("stat -c %i \"$M\"") + nobody("\"$D/t\" unmount \"$M\""));
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, "2\n");
  EXPECT_EQ(outcome.errorLines(), 1U) << outcome.err;  // that no host answers
}

TEST_F(OrdinaryUserTest, isToldInOneLineThatAFolderIsAnothers) {
  const ProgramOutcome outcome =
      inNamespace(everybodysFuse + ("chmod 755 \"$M\"; " + nobody("\"$D/t\" mount \"$M\"")));
  expectFailure(outcome, 1, folder.path());
  EXPECT_THAT(outcome.err, HasSubstr("no write access"));
}

TEST_F(OrdinaryUserTest, isToldInOneLineThatNoThreadCanBeHad) {
  if (builtWithSanitizer) GTEST_SKIP() << "SKIPPED: a sanitizer may want a thread of its own";
  const ProgramOutcome outcome = inNamespace(nobody("prlimit --nproc=1 \"$D/t\" ls"));
  expectFailure(outcome, 1, "cannot go on");
}

}  // namespace
}  // namespace tarnel::test
