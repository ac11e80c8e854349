// What a mount shows: the tree, its bytes, its names and its attributes.
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "MountFixture.h"
#include "fs/FabricVolume.h"

namespace tarnel::test {
namespace {

namespace fs = std::filesystem;

struct stat statusOf(const std::string& path) {
  struct stat status{};
  EXPECT_EQ(errnoOf([&] { return ::lstat(path.c_str(), &status); }), 0) << path;
  return status;
}

// Every file's bytes and every folder by its path relative to `root`.
std::map<std::string, std::string> treeOf(const std::string& root) {
  std::map<std::string, std::string> tree;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    const std::string relative = entry.path().string().substr(root.size());
    tree[relative] =
        entry.is_directory() ? "(a folder)" : contentOf(entry.path().string()).value_or("(no)");
  }
  return tree;
}

constexpr std::int64_t timeMs(const timespec& time) {
  return time.tv_sec * 1000 + time.tv_nsec / 1'000'000;
}

class TreeTest : public MountFixture {
 protected:
  void setTime(const std::string& relative, std::int64_t seconds, long nanoseconds) {
    const timespec times[2] = {{.tv_sec = seconds, .tv_nsec = nanoseconds},
                               {.tv_sec = seconds, .tv_nsec = nanoseconds}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (share / relative).c_str(), times, 0), 0);
  }
};

TEST_F(TreeTest, everyFolderAndEveryByteOfTheShareIsThere) {
  share.file("a.txt", "hello\n");
  share.file("empty");
  share.file("deep/er/still/one.bin", someBytes(1'000'003));
  share.file("deep/two.bin", someBytes(262'144, 2));
  share.file("deep/three.bin", someBytes(262'145, 3));
  share.folder("deep/hollow");
  for (int i = 0; i < 200; ++i) {
    share.file("many/" + std::to_string(i), someBytes(static_cast<std::size_t>(i) * 37, 4));
  }
  mountShare();
  const auto expected = treeOf(share.path());
  ASSERT_GT(expected.size(), 200U);
  EXPECT_EQ(treeOf(*mount / "me/Docs"), expected);
}

TEST_F(TreeTest, namesTravelUnchangedByteForByte) {
  std::string longCharacters;
  for (int i = 0; i < 85; ++i) longCharacters += "日";  // 255 bytes
  const std::string names[] = {"naïve",
                               "日本語",
                               "Ελληνικά",
                               "עברית",
                               "😀",
                               "with blank",
                               " lead",
                               "trail ",
                               "back\\slash",
                               "quo\"te'",
                               "line\nfeed",
                               "\x01\x1f\x7f",
                               "tab\t",
                               "-rf",
                               "%s%n",
                               "a:b|c*?",
                               "c1\xc2\x85",
                               "...",
                               ".hidden",
                               "u2028\xe2\x80\xa8",
                               std::string(255, 'x'),
                               longCharacters};
  for (const std::string& name : names) share.file(name, "bytes of " + name);
  mountShare();
  EXPECT_EQ(treeOf(*mount / "me/Docs"), treeOf(share.path()));
  for (const std::string& name : names) {
    EXPECT_EQ(contentOf(at(name)), "bytes of " + name);
  }
}

TEST_F(TreeTest, twoCompositionsOfOneNameAreTwoFilesWithTheirOwnBytes) {
  const std::string composed = "caf\xc3\xa9";
  const std::string decomposed = "cafe\xcc\x81";
  share.file(composed, "composed");
  share.file(decomposed, "decomposed, and longer");
  mountShare();
  EXPECT_EQ(contentOf(at(composed)), "composed");
  EXPECT_EQ(contentOf(at(decomposed)), "decomposed, and longer");
  EXPECT_NE(statusOf(at(composed)).st_ino, statusOf(at(decomposed)).st_ino);
  EXPECT_EQ(treeOf(*mount / "me/Docs"), treeOf(share.path()));
}

TEST_F(TreeTest, aMissingNameIsMissing) {
  mountShare();
  struct stat status{};
  for (const char* path : {"me/Docs/no", "me/No", "nobody", "me/Docs/no/deeper"}) {
    EXPECT_EQ(errnoOf([&] { return ::stat((*mount / path).c_str(), &status); }), ENOENT) << path;
  }
}

TEST_F(TreeTest, attributesAreTheHostsWithoutTheWriteBits) {
  share.file("plain", someBytes(5000));
  share.file("tool", "#!");
  share.folder("box");
  fs::create_hard_link(share / "plain", share / "twin");
  ::chmod((share / "plain").c_str(), 0640);
  ::chmod((share / "tool").c_str(), 04755);
  ::chmod((share / "box").c_str(), 01777);
  setTime("plain", 1'700'000'000, 123'456'789);
  setTime("tool", -2, 500'000'000);
  mountShare();

  const struct stat plain = statusOf(at("plain"));
  EXPECT_EQ(plain.st_mode, static_cast<mode_t>(S_IFREG | 0440));
  EXPECT_EQ(plain.st_size, 5000);
  EXPECT_EQ(plain.st_blocks, 16);
  EXPECT_EQ(plain.st_nlink, 2U);
  EXPECT_EQ(plain.st_uid, ::getuid());
  EXPECT_EQ(plain.st_gid, ::getgid());
  EXPECT_EQ(plain.st_mtim.tv_sec, 1'700'000'000);
  EXPECT_EQ(plain.st_mtim.tv_nsec, 123'000'000);  // milliseconds are all that travels
  EXPECT_EQ(timeMs(plain.st_atim), timeMs(plain.st_mtim));
  EXPECT_EQ(timeMs(plain.st_ctim), timeMs(plain.st_mtim));

  const struct stat tool = statusOf(at("tool"));
  EXPECT_EQ(tool.st_mode, static_cast<mode_t>(S_IFREG | 04555));
  EXPECT_EQ(tool.st_mtim.tv_sec, -2);
  EXPECT_EQ(tool.st_mtim.tv_nsec, 500'000'000);

  const struct stat box = statusOf(at("box"));
  EXPECT_EQ(box.st_mode, static_cast<mode_t>(S_IFDIR | 01555));
  EXPECT_EQ(box.st_size, 4096);
  EXPECT_EQ(box.st_blocks, 8);
  EXPECT_EQ(box.st_nlink, statusOf(share / "box").st_nlink);
}

TEST_F(TreeTest, theRootAndPeersAreMadeUpByTheVolume) {
  const auto before = std::chrono::system_clock::now();
  mountShare();
  const struct stat root = statusOf(mount->path());
  EXPECT_EQ(root.st_ino, 2U);
  for (const char* path : {"", "me"}) {
    const struct stat made = statusOf(*mount / path);
    EXPECT_EQ(made.st_mode, static_cast<mode_t>(S_IFDIR | 0555)) << path;
    EXPECT_EQ(made.st_nlink, 1U) << path;
    EXPECT_EQ(made.st_size, 4096) << path;
    EXPECT_EQ(made.st_uid, ::getuid()) << path;
    EXPECT_EQ(timeMs(made.st_mtim), timeMs(root.st_mtim)) << path;
  }
  const auto since =
      std::chrono::milliseconds(timeMs(root.st_mtim)) -
      std::chrono::duration_cast<std::chrono::milliseconds>(before.time_since_epoch());
  EXPECT_GE(since.count(), 0);
  EXPECT_LT(since, std::chrono::minutes(1));
}

TEST_F(TreeTest, aPathKeepsItsNumberThoughTheKernelForgetsIt) {
  share.file("a", "1");
  share.file("b", "2");
  mountShare(nothingKept);
  const ino_t number = statusOf(at("a")).st_ino;
  EXPECT_NE(number, statusOf(at("b")).st_ino);
  EXPECT_EQ(statusOf(at("a")).st_ino, number);
  fs::remove(share / "a");
  // The kernel drops a name that is gone, and with it the node.
  struct stat status{};
  EXPECT_EQ(errnoOf([&] { return ::stat(at("a").c_str(), &status); }), ENOENT);
  share.file("c", "3");
  EXPECT_NE(statusOf(at("c")).st_ino, number);
  share.file("a", "4");
  EXPECT_EQ(statusOf(at("a")).st_ino, number);
  EXPECT_EQ(contentOf(at("a")), "4");
}

TEST_F(TreeTest, theStatisticsAreThoseOfAVolumeWithoutASize) {
  mountShare();
  for (const char* path : {"", "me/Docs"}) {
    struct statvfs facts{};
    ASSERT_EQ(::statvfs((*mount / path).c_str(), &facts), 0);
    EXPECT_EQ(facts.f_bsize, 4096U);
    EXPECT_EQ(facts.f_frsize, 4096U);
    EXPECT_EQ(facts.f_blocks, 1U);
    EXPECT_EQ(facts.f_bfree, 0U);
    EXPECT_EQ(facts.f_bavail, 0U);
    EXPECT_EQ(facts.f_files, 1U);
    EXPECT_EQ(facts.f_ffree, 0U);
    EXPECT_EQ(facts.f_namemax, static_cast<unsigned long>(FabricVolume::maximumNameLength));
    EXPECT_TRUE(facts.f_flag & ST_RDONLY);
  }
}

TEST_F(TreeTest, theMountTableShowsOurTypeAndTheSafeFlags) {
  mountShare();
  std::ifstream table("/proc/self/mountinfo");
  std::string line;
  while (std::getline(table, line) && line.find(" " + mount->path() + " ") == std::string::npos) {
  }
  std::istringstream fields(line);
  std::string field;
  for (int i = 0; i < 6; ++i) fields >> field;
  for (const char* flag : {"ro", "nosuid", "nodev"}) {
    EXPECT_NE(("," + field + ",").find("," + std::string(flag) + ","), std::string::npos) << line;
  }
  EXPECT_NE(line.find(" - fuse.tarnelfs Tarnel ro"), std::string::npos) << line;
}

}  // namespace
}  // namespace tarnel::test
