#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fusefs/MountOptions.h"

namespace tarnel {
namespace {

using testing::HasSubstr;

TEST(MountOptions, nothingGivenIsTheDefaults) {
  const auto options = MountOptions::parse("");
  ASSERT_TRUE(options);
  EXPECT_EQ(options->attributeTimeout, 1.0);
  EXPECT_EQ(options->entryTimeout, 1.0);
  EXPECT_FALSE(options->allowOther);
  EXPECT_FALSE(options->defaultPermissions);
  EXPECT_TRUE(options->readOnlyFlag);
}

TEST(MountOptions, everyKnownOptionIsTaken) {
  const auto options =
      MountOptions::parse("ro,allow_other,default_permissions,attr_timeout=0,entry_timeout=2.5");
  ASSERT_TRUE(options);
  EXPECT_TRUE(options->allowOther);
  EXPECT_TRUE(options->defaultPermissions);
  EXPECT_EQ(options->attributeTimeout, 0.0);
  EXPECT_EQ(options->entryTimeout, 2.5);
  EXPECT_TRUE(options->readOnlyFlag);
}

TEST(MountOptions, emptyOnesBetweenCommasAreNothing) {
  EXPECT_TRUE(MountOptions::parse(",ro,,allow_other,"));
}

TEST(MountOptions, theLastOfTwoEqualOptionsCounts) {
  EXPECT_EQ(MountOptions::parse("attr_timeout=1,attr_timeout=7")->attributeTimeout, 7.0);
}

TEST(MountOptions, writingIsRefusedWithAReason) {
  const auto options = MountOptions::parse("ro,rw");
  ASSERT_FALSE(options);
  EXPECT_THAT(options.error(), HasSubstr("read-only"));
}

TEST(MountOptions, unknownOnesAreRefusedByName) {
  for (const char* text : {"suid", "dev", "ro=1", "RO", "attr_timeout", "allow_other=yes",
                           "fsname=x", "subtype=y", " ro", "=", "timeout=1"}) {
    const auto options = MountOptions::parse(text);
    ASSERT_FALSE(options) << text;
    EXPECT_THAT(options.error(), HasSubstr(text));
  }
}

TEST(MountOptions, whatIsNoNumberOfSecondsIsRefused) {
  for (const char* seconds : {"", "-1", "1s", "x", "nan", "inf", "1e300", " 1", "0x10", "1 "}) {
    EXPECT_FALSE(MountOptions::parse(std::string("entry_timeout=") + seconds)) << seconds;
  }
}

}  // namespace
}  // namespace tarnel
