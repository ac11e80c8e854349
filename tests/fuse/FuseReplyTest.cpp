#include <gtest/gtest.h>

#include <cerrno>
#include <utility>

#include "FuseReply.h"

namespace tarnel {
namespace {

TEST(FuseReply, everyDarwinNumberBecomesThisSystems) {
  constexpr std::pair<std::int32_t, int> numbers[] = {{2, ENOENT},    {5, EIO},       {20, ENOTDIR},
                                                      {21, EISDIR},   {22, EINVAL},   {30, EROFS},
                                                      {57, ENOTCONN}, {60, ETIMEDOUT}};
  for (const auto& [theirs, ours] : numbers) {
    EXPECT_EQ(systemErrno(posixError(theirs)), ours) << theirs;
  }
}

TEST(FuseReply, unknownNumbersAndOtherDomainsAreInputOutputErrors) {
  EXPECT_EQ(systemErrno(posixError(0)), EIO);
  EXPECT_EQ(systemErrno(posixError(ENOTCONN)), EIO);
  EXPECT_EQ(systemErrno(invalidDirectoryCookie), EIO);
  // 22 of another domain is not EINVAL.
  EXPECT_EQ(systemErrno({.domain = VolumeError::Domain::fileSystemKit, .code = 22}), EIO);
}

ItemAttributes someFile() {
  return {.valid = allAttributes,
          .type = ItemType::file,
          .mode = 04555,
          .linkCount = 3,
          .uid = 501,
          .gid = 20,
          .size = 5000,
          .allocSize = 8192,
          .fileID = 77,
          .parentID = 2,
          .accessTime = {.seconds = 1, .nanoseconds = 2},
          .modifyTime = {.seconds = 1'700'000'000, .nanoseconds = 123'000'000},
          .changeTime = {.seconds = 5, .nanoseconds = 6},
          .birthTime = {.seconds = 7, .nanoseconds = 8}};
}

TEST(FuseReply, aFilesStatusCarriesEveryAttribute) {
  const struct stat status = systemStat(someFile());
  EXPECT_EQ(status.st_ino, 77U);
  EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFREG | 04555));
  EXPECT_EQ(status.st_nlink, 3U);
  EXPECT_EQ(status.st_uid, 501U);
  EXPECT_EQ(status.st_gid, 20U);
  EXPECT_EQ(status.st_size, 5000);
  EXPECT_EQ(status.st_blocks, 16);  // of 512 bytes: what is allocated, not the size
  EXPECT_EQ(status.st_atim.tv_sec, 1);
  EXPECT_EQ(status.st_atim.tv_nsec, 2);
  EXPECT_EQ(status.st_mtim.tv_sec, 1'700'000'000);
  EXPECT_EQ(status.st_mtim.tv_nsec, 123'000'000);
  EXPECT_EQ(status.st_ctim.tv_sec, 5);
  EXPECT_EQ(status.st_ctim.tv_nsec, 6);
}

TEST(FuseReply, theBlocksOfAnEnormousFileAreNoNegativeNumber) {
  ItemAttributes attributes = someFile();
  attributes.allocSize = 0x8000'0000'0000'0000;
  EXPECT_EQ(systemStat(attributes).st_blocks, 0x40'0000'0000'0000);
}

TEST(FuseReply, aDirectoryIsOne) {
  ItemAttributes attributes = someFile();
  attributes.type = ItemType::directory;
  EXPECT_TRUE(S_ISDIR(systemStat(attributes).st_mode));
}

TEST(FuseReply, nanosecondsAreNeverNegative) {
  ItemAttributes attributes = someFile();
  attributes.modifyTime = {.seconds = -1, .nanoseconds = -500'000'000};  // -1500 ms
  attributes.changeTime = {.seconds = -3, .nanoseconds = 0};
  attributes.accessTime = {.seconds = 0, .nanoseconds = -1'000'000};  // -1 ms
  const struct stat status = systemStat(attributes);
  EXPECT_EQ(status.st_mtim.tv_sec, -2);
  EXPECT_EQ(status.st_mtim.tv_nsec, 500'000'000);
  EXPECT_EQ(status.st_ctim.tv_sec, -3);
  EXPECT_EQ(status.st_ctim.tv_nsec, 0);
  EXPECT_EQ(status.st_atim.tv_sec, -1);
  EXPECT_EQ(status.st_atim.tv_nsec, 999'000'000);
}

}  // namespace
}  // namespace tarnel
