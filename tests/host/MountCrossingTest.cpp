// Mounts inside a share. They are made in a mount name space of the test's own, which ends with the
// thread that entered it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>
#include <string>
#include <thread>

#include "host/AccountNames.h"
#include "host/BeneathResolver.h"
#include "host/DirectoryLister.h"
#include "host/ShareTable.h"
#include "support/FileTree.h"

#if defined(__linux__)
#include <sched.h>
#include <sys/mount.h>
#endif

namespace tarnel {
namespace {

#if defined(__linux__)

class MountCrossing : public testing::Test {
 protected:
  MountCrossing() {
    temp.folder("share/mounted");
    temp.file("share/plain.txt", "plain");
    temp.link("share/link", "mounted/file.txt");
  }

  // Runs `body` where share/mounted is a file system of its own that holds file.txt.
  void withMount(const std::function<void(const std::string& share, dev_t device)>& body) {
    bool mounted = false;
    std::thread inside([&] {
      if (::unshare(CLONE_NEWNS) != 0) return;
      if (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return;
      if (::mount("none", (temp / "share/mounted").c_str(), "tmpfs", 0, nullptr) != 0) return;
      mounted = true;
      temp.file("share/mounted/file.txt", "beyond");
      struct stat status;
      ASSERT_EQ(::stat((temp / "share/mounted").c_str(), &status), 0);
      body(temp / "share", status.st_dev);
    });
    inside.join();
    if (!mounted) GTEST_SKIP() << "this user may not mount";
  }

  static UniqueFd open(const std::string& folder) {
    return UniqueFd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  }
  static Bytes listing(const BeneathResolver& resolver) {
    AccountNames accounts;
    const auto listed =
        DirectoryLister(resolver, accounts, "", {.namesOnly = true, .maxAnswerBytes = 4'096}).run();
    return listed ? listed->line : Bytes(description(listed.error()));
  }

  test::FileTree temp;
};

TEST_F(MountCrossing, anotherFileSystemInsideTheShareIsServed) {
  withMount([](const std::string& share, dev_t) {
    const UniqueFd root = open(share);
    const IsOwnMount none;
    const BeneathResolver resolver(root.get(), none);
    EXPECT_TRUE(resolver.openFile("mounted/file.txt"));
    EXPECT_TRUE(resolver.openFile("link"));
    EXPECT_TRUE(resolver.openDirectory("mounted"));
    EXPECT_NE(listing(resolver).find("mounted"), Bytes::npos);
  });
}

TEST_F(MountCrossing, aMountOfOurOwnIsMissingAndLeftOutOfListings) {
  withMount([](const std::string& share, dev_t own) {
    const UniqueFd root = open(share);
    const IsOwnMount isOwnMount = [own](dev_t device) { return device == own; };
    const BeneathResolver resolver(root.get(), isOwnMount);
    for (const auto* path : {"mounted", "mounted/file.txt", "link"}) {
      const auto status = resolver.status(path);
      ASSERT_FALSE(status) << path;
      EXPECT_EQ(status.error(), Refusal::noSuchFile) << path;
    }
    EXPECT_FALSE(resolver.openDirectory("mounted"));
    EXPECT_TRUE(resolver.openFile("plain.txt"));
    EXPECT_EQ(listing(resolver), R"({"status":"ok","names":[{"n":"plain.txt","d":false}]})"
                                 "\n");
  });
}

TEST_F(MountCrossing, aFileOfAMountOfOurOwnThatIsBoundIntoTheShareIsMissing) {
  temp.file("share/bound");
  withMount([](const std::string& share, dev_t own) {
    ASSERT_EQ(::mount((share + "/mounted/file.txt").c_str(), (share + "/bound").c_str(), nullptr,
                      MS_BIND, nullptr),
              0);
    const UniqueFd root = open(share);
    const IsOwnMount isOwnMount = [own](dev_t device) { return device == own; };
    const BeneathResolver resolver(root.get(), isOwnMount);
    EXPECT_FALSE(resolver.status("bound"));
    EXPECT_FALSE(resolver.openFile("bound"));
    EXPECT_EQ(listing(resolver).find("bound"), Bytes::npos);
  });
}

// Another user's FUSE mount refuses everybody else, root too, without asking its server.
TEST_F(MountCrossing, aMountThatRefusesUsIsLeftOutAndTheRestIsListed) {
  const UniqueFd server(::open("/dev/fuse", O_RDWR | O_CLOEXEC));
  if (!server.valid()) GTEST_SKIP() << "no FUSE here";
  const std::string options =
      "fd=" + std::to_string(server.get()) + ",rootmode=40755,user_id=65534,group_id=65534";
  temp.folder("share/theirs");
  withMount([&](const std::string& share, dev_t) {
    const std::string theirs = share + "/theirs";
    ASSERT_EQ(::mount("theirs", theirs.c_str(), "fuse", MS_NOSUID | MS_NODEV, options.c_str()), 0);
    struct stat status;
    if (::stat(theirs.c_str(), &status) == 0) GTEST_SKIP() << "this system lets root in";
    const UniqueFd root = open(share);
    const IsOwnMount none;
    const Bytes listed = listing(BeneathResolver(root.get(), none));
    EXPECT_NE(listed.find("plain.txt"), Bytes::npos) << listed;
    EXPECT_NE(listed.find("mounted"), Bytes::npos) << listed;
    EXPECT_EQ(listed.find("theirs"), Bytes::npos) << listed;
  });
}

TEST_F(MountCrossing, aMountOfOurOwnCannotBeShared) {
  withMount([](const std::string& share, dev_t own) {
    const auto table = ShareTable::open({{.name = "Own", .folder = share + "/mounted"}},
                                        [own](dev_t device) { return device == own; });
    ASSERT_FALSE(table);
    EXPECT_EQ(table.error().kind, HostStartError::Kind::ownMount);
    EXPECT_EQ(table.error().path, share + "/mounted");
  });
}

#endif

}  // namespace
}  // namespace tarnel
