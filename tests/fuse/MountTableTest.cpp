#include <gtest/gtest.h>
#include <sys/sysmacros.h>

#include "fusefs/MountTable.h"

namespace tarnel {
namespace {

TEST(MountTable, aLineGivesFolderTypeAndDevice) {
  const auto entries = parseMountTable(
      "36 35 98:17 /mnt1 /mnt2 rw,noatime master:1 - fuse.tarnelfs Tarnel ro,user_id=0\n");
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_EQ(entries[0].mountpoint, "/mnt2");
  EXPECT_EQ(entries[0].type, "fuse.tarnelfs");
  EXPECT_EQ(entries[0].device, makedev(98, 17));
}

TEST(MountTable, tagsBeforeTheHyphenMayBeNoneOrMany) {
  const auto entries = parseMountTable(
      "1 0 0:1 / /a rw - tmpfs none rw\n"
      "2 0 0:2 / /b rw shared:1 master:2 propagate_from:3 - proc proc rw\n");
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].type, "tmpfs");
  EXPECT_EQ(entries[1].type, "proc");
}

TEST(MountTable, octalEscapesAreDecoded) {
  const auto entries =
      parseMountTable("1 0 0:1 / /a\\040b\\011c\\012d\\134e\\043f rw - tmpfs none rw\n");
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_EQ(entries[0].mountpoint, "/a b\tc\nd\\e#f");
}

TEST(MountTable, aDecodedBackslashStartsNoEscape) {
  const auto entries = parseMountTable("1 0 0:1 / /a\\134040b rw - tmpfs none rw\n");
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_EQ(entries[0].mountpoint, "/a\\040b");
}

TEST(MountTable, whatIsNoEscapeStays) {
  const auto entries =
      parseMountTable("1 0 0:1 / /a\\04 rw - t n rw\n1 0 0:1 / /\\9x1 rw - t n r\n");
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].mountpoint, "/a\\04");
  EXPECT_EQ(entries[1].mountpoint, "/\\9x1");
}

TEST(MountTable, linesOfAnotherShapeAreLeftOut) {
  EXPECT_TRUE(parseMountTable("").empty());
  EXPECT_TRUE(parseMountTable("1 0 0:1 / /a rw shared:1\n").empty());
  EXPECT_TRUE(parseMountTable("1 0 0:1 / /a rw -\n\nx\n").empty());
}

TEST(MountTable, theRootOfThisSystemIsAMountpointAndNotOurs) {
  const auto root = mountAt("/");
  ASSERT_TRUE(root);
  EXPECT_NE(root->type, mountType);
  EXPECT_FALSE(isOwnMount(root->device));
  EXPECT_FALSE(mountAt("/no/such/folder"));
}

}  // namespace
}  // namespace tarnel
