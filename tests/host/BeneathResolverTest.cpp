#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "host/BeneathResolver.h"

#if defined(__linux__)
#include <sys/fsuid.h>
#endif

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>

#include "support/FileTree.h"
#include "support/OpenDescriptors.h"

namespace tarnel {
namespace {

using Road = BeneathResolver::Road;

// Both roads to a path must have the same end.
class BeneathResolverTest : public testing::TestWithParam<Road> {
 protected:
  BeneathResolverTest() {
    temp.folder("share");
    temp.file("outside.txt", "outside");
    temp.file("outside/secret.txt", "outside");
    root = UniqueFd(::open((temp / "share").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  }

  static std::string in(const std::string& relative) { return "share/" + relative; }
  [[nodiscard]] BeneathResolver resolver() const { return {root.get(), noOwnMounts, GetParam()}; }

  [[nodiscard]] std::string content(const std::string& path) const {
    const auto fd = resolver().openFile(path);
    if (!fd) return "refused: " + std::string(description(fd.error()));
    std::array<char, 64> buffer;
    const ssize_t count = ::read(fd->get(), buffer.data(), buffer.size());
    return std::string(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  }
  // For every operation alike.
  void expectMissing(const std::string& path) const {
    EXPECT_EQ(refusalOf(resolver().status(path)), Refusal::noSuchFile) << path;
    EXPECT_EQ(refusalOf(resolver().openFile(path)), Refusal::noSuchFile) << path;
    EXPECT_EQ(refusalOf(resolver().openDirectory(path)), Refusal::noSuchFile) << path;
  }
  template <class T>
  static std::optional<Refusal> refusalOf(const HostResult<T>& result) {
    if (result) return std::nullopt;
    return result.error();
  }
  [[nodiscard]] bool isDirectory(const std::string& path) const {
    const auto status = resolver().status(path);
    return status && S_ISDIR(status->st_mode) && resolver().openDirectory(path);
  }

  test::FileTree temp;
  UniqueFd root;
  const IsOwnMount noOwnMounts;
};

TEST_P(BeneathResolverTest, findsFilesAndFoldersAtAnyDepth) {
  temp.file(in("a/b/c.txt"), "deep");
  EXPECT_EQ(content("a/b/c.txt"), "deep");
  EXPECT_EQ(resolver().status("a/b/c.txt")->st_size, 4);
  EXPECT_TRUE(isDirectory("a/b"));
  EXPECT_TRUE(isDirectory("a"));
}

TEST_P(BeneathResolverTest, anEmptyPathIsTheSharesFolder) {
  EXPECT_TRUE(isDirectory(""));
  EXPECT_EQ(refusalOf(resolver().openFile("")), Refusal::isDirectory);
}

TEST_P(BeneathResolverTest, missingNamesAreMissing) {
  expectMissing("a");
  expectMissing("a/b");
}

TEST_P(BeneathResolverTest, aFileInTheWayIsNotADirectory) {
  temp.file(in("f"));
  EXPECT_EQ(refusalOf(resolver().status("f/x")), Refusal::notDirectory);
  EXPECT_EQ(refusalOf(resolver().openFile("f/x")), Refusal::notDirectory);
  EXPECT_EQ(refusalOf(resolver().openDirectory("f/x")), Refusal::notDirectory);
  EXPECT_EQ(refusalOf(resolver().openDirectory("f")), Refusal::notDirectory);
}

TEST_P(BeneathResolverTest, aDirectoryCannotBeOpenedAsAFile) {
  temp.folder(in("d"));
  EXPECT_EQ(refusalOf(resolver().openFile("d")), Refusal::isDirectory);
}

TEST_P(BeneathResolverTest, namesLongerThanTheSystemTakesAreMissing) {
  expectMissing(std::string(300, 'x'));
  expectMissing(std::string(300, 'x') + "/a");
}

TEST_P(BeneathResolverTest, aPathLongerThanOneCallTakesIsWalked) {
  const std::string name(200, 'd');
  std::string path;
  UniqueFd at(::dup(root.get()));
  for (int i = 0; i < 30; ++i) {
    ASSERT_EQ(::mkdirat(at.get(), name.c_str(), 0755), 0);
    at = UniqueFd(::openat(at.get(), name.c_str(), O_RDONLY | O_DIRECTORY));
    path += (path.empty() ? "" : "/") + name;
  }
  UniqueFd file(::openat(at.get(), "f", O_WRONLY | O_CREAT, 0644));
  ASSERT_EQ(::write(file.get(), "far", 3), 3);
  EXPECT_EQ(content(path + "/f"), "far");
  EXPECT_TRUE(isDirectory(path));
  expectMissing(path + "/g");
}

TEST_P(BeneathResolverTest, relativeLinksInsideTheShareAreFollowed) {
  temp.file(in("a/file.txt"), "inside");
  temp.link(in("toFile"), "a/file.txt");
  temp.link(in("toFolder"), "a");
  temp.link(in("b/sideways"), "../a/file.txt");
  temp.link(in("b/slashes"), ".././/a//./file.txt");
  temp.link(in("b/folder"), "../a/");
  EXPECT_EQ(content("toFile"), "inside");
  EXPECT_EQ(content("toFolder/file.txt"), "inside");
  EXPECT_EQ(content("b/sideways"), "inside");
  EXPECT_EQ(content("b/slashes"), "inside");
  EXPECT_EQ(content("b/folder/file.txt"), "inside");
  EXPECT_TRUE(isDirectory("b/folder"));
  EXPECT_EQ(resolver().status("toFile")->st_size, 6);
}

TEST_P(BeneathResolverTest, linksToLinksAreFollowed) {
  temp.file(in("a/file.txt"), "inside");
  temp.link(in("one"), "two");
  temp.link(in("two"), "three/file.txt");
  temp.link(in("three"), "./a");
  EXPECT_EQ(content("one"), "inside");
}

TEST_P(BeneathResolverTest, dotsBehindALinkGoToTheTargetsOwnParent) {
  temp.file(in("a/near.txt"), "near");
  temp.folder(in("a/b"));
  temp.link(in("c/far"), "../a/b");
  temp.link(in("c/l"), "far/../near.txt");
  EXPECT_EQ(content("c/l"), "near");
}

TEST_P(BeneathResolverTest, absoluteLinksAreMissing) {
  temp.file(in("a.txt"), "inside");
  temp.link(in("abs"), temp / "share/a.txt");
  temp.link(in("root"), "/");
  temp.link(in("viaRoot"), "root/tmp");
  expectMissing("abs");
  expectMissing("root");
  expectMissing("root/tmp");
  expectMissing("viaRoot");
}

TEST_P(BeneathResolverTest, linksThatLeadOutAreMissing) {
  temp.folder(in("a"));
  temp.link(in("out"), "../outside.txt");
  temp.link(in("outFolder"), "../outside");
  temp.link(in("parent"), "..");
  temp.link(in("a/out"), "../../outside.txt");
  temp.link(in("indirect"), "a/out");
  // Comes back in, but has been out.
  temp.file(in("back.txt"), "inside");
  temp.link(in("there"), "../share/back.txt");
  // The share's folder is not its own parent, as a root would be.
  temp.link(in("a/root"), "../../back.txt");
  for (const auto* path : {"out", "outFolder", "outFolder/secret.txt", "parent", "a/out",
                           "indirect", "there", "a/root"}) {
    expectMissing(path);
  }
}

TEST_P(BeneathResolverTest, brokenLinksAreMissing) {
  temp.file(in("f"), "x");
  temp.link(in("dangling"), "nowhere");
  temp.link(in("throughFile"), "f/x");
  temp.link(in("fileWithSlash"), "f/");
  temp.link(in("fileWithDot"), "f/.");
  temp.link(in("fileAndUp"), "f/../f");
  for (const auto* path :
       {"dangling", "throughFile", "fileWithSlash", "fileWithDot", "fileAndUp"}) {
    expectMissing(path);
  }
}

TEST_P(BeneathResolverTest, linksInACircleAreMissing) {
  temp.link(in("self"), "self");
  temp.link(in("ping"), "pong");
  temp.link(in("pong"), "ping");
  expectMissing("self");
  expectMissing("self/x");
  expectMissing("ping");
}

TEST_P(BeneathResolverTest, fortyLinksAreFollowedAndNotOneMore) {
  temp.file(in("l0"), "end");
  for (int i = 1; i <= 41; ++i) temp.link(in("l" + std::to_string(i)), "l" + std::to_string(i - 1));
  EXPECT_EQ(content("l40"), "end");
  expectMissing("l41");
}

TEST_P(BeneathResolverTest, linksToADirectoryAboveThemselvesAreMissing) {
  temp.file(in("a/b/file.txt"), "inside");
  temp.link(in("a/here"), ".");
  temp.link(in("a/b/up"), "..");
  temp.link(in("a/b/top"), "../..");
  temp.link(in("a/b/named"), "../../a");
  temp.link(in("rootItself"), ".");
  for (const auto* path : {"a/here", "a/b/up", "a/b/top", "a/b/named", "rootItself"}) {
    expectMissing(path);
    expectMissing(std::string(path) + "/a");
  }
}

TEST_P(BeneathResolverTest, aFileAboveTheLinkIsNoLoop) {
  temp.file(in("a/file.txt"), "inside");
  temp.link(in("a/b/up"), "../file.txt");
  EXPECT_EQ(content("a/b/up"), "inside");
}

TEST_P(BeneathResolverTest, linksIntoEachOthersParentsEnd) {
  temp.link(in("a/l1"), "../b");
  temp.link(in("b/l2"), "../a");
  EXPECT_TRUE(isDirectory("a/l1"));
  EXPECT_TRUE(isDirectory("b/l2"));
  expectMissing("a/l1/l2");
  expectMissing("b/l2/l1");
}

TEST_P(BeneathResolverTest, aLinkAboveTheLinksOwnPlaceIsMissingUnderAnyName) {
  temp.link(in("b/c/d/up"), "../..");
  temp.link(in("a/l1"), "../b/c");
  EXPECT_TRUE(isDirectory("a/l1/d"));
  expectMissing("b/c/d/up");
  expectMissing("a/l1/d/up");
}

TEST_P(BeneathResolverTest, whatIsNeitherFileNorFolderIsMissing) {
  temp.fifo(in("fifo"));
  temp.link(in("toFifo"), "fifo");
  const UniqueFd listening(::socket(AF_UNIX, SOCK_STREAM, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, (temp / "share/sock").c_str());
  ASSERT_EQ(::bind(listening.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  for (const auto* path : {"fifo", "toFifo", "sock", "fifo/x", "sock/x"}) expectMissing(path);
}

TEST_P(BeneathResolverTest, nothingStaysOpen) {
  temp.file(in("a/b/file.txt"), "inside");
  temp.link(in("l"), "a/b");
  const auto before = test::openDescriptors();
  (void)content("l/file.txt");
  (void)resolver().status("l/nothing");
  (void)resolver().openDirectory("l");
  EXPECT_EQ(test::openDescriptors(), before);
}

TEST_P(BeneathResolverTest, aFolderThatBecomesALinkMeanwhileNeverLeadsOut) {
  temp.file(in("d/secret.txt"), "inside");
  temp.link(in("evil"), "../outside");
  std::atomic<bool> done = false;
  std::thread swapper([&] {
    const std::string folder = temp / "share/d", evil = temp / "share/evil";
    while (!done) {
      ::rename(folder.c_str(), (folder + ".aside").c_str());
      ::rename(evil.c_str(), folder.c_str());
      ::rename(folder.c_str(), evil.c_str());
      ::rename((folder + ".aside").c_str(), folder.c_str());
    }
  });
  int found = 0;
  for (int i = 0; i < 20'000; ++i) {
    const std::string seen = content("d/secret.txt");
    ASSERT_NE(seen, "outside");
    found += seen == "inside" ? 1 : 0;
  }
  done = true;
  swapper.join();
  EXPECT_GT(found, 0);
}

#if defined(__linux__)
TEST_P(BeneathResolverTest, whatTheHostsUserMayNotReadIsRefused) {
  temp.file(in("closed.txt"), "x");
  temp.file(in("closed/file.txt"), "x");
  temp.link(in("link"), "closed/file.txt");
  std::filesystem::permissions(temp / "share/closed.txt", std::filesystem::perms::none);
  std::filesystem::permissions(temp / "share/closed", std::filesystem::perms::none);
  std::thread asNobody([this] {
    if (::geteuid() == 0) ::setfsuid(65'534);  // this thread's alone
    EXPECT_TRUE(resolver().status("closed.txt"));
    EXPECT_EQ(refusalOf(resolver().openFile("closed.txt")), Refusal::permissionDenied);
    EXPECT_EQ(refusalOf(resolver().openDirectory("closed")), Refusal::permissionDenied);
    EXPECT_EQ(refusalOf(resolver().status("closed/file.txt")), Refusal::permissionDenied);
    EXPECT_EQ(refusalOf(resolver().openFile("link")), Refusal::permissionDenied);
  });
  asNobody.join();
  std::filesystem::permissions(temp / "share/closed", std::filesystem::perms::owner_all);
}
#endif

INSTANTIATE_TEST_SUITE_P(Roads, BeneathResolverTest, testing::Values(Road::fastest, Road::walkOnly),
                         [](const auto& road) {
                           return road.param == Road::fastest ? "fastest" : "walkOnly";
                         });

}  // namespace
}  // namespace tarnel
