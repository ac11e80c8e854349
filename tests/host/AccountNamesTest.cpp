#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "host/AccountNames.h"
#include "support/NoMoreDescriptors.h"

namespace tarnel {
namespace {

TEST(AccountNames, rootHasAName) {
  AccountNames accounts;
  EXPECT_EQ(accounts.owner(0), "root");
  EXPECT_EQ(accounts.owner(0), "root");
  EXPECT_FALSE(accounts.group(0).empty());
  EXPECT_NE(accounts.group(0), "0");
}

TEST(AccountNames, anIdWithoutANameIsItsNumber) {
  AccountNames accounts;
  EXPECT_EQ(accounts.owner(4'012'345'678U), "4012345678");
  EXPECT_EQ(accounts.group(4'012'345'679U), "4012345679");
}

TEST(AccountNames, aNameThatCouldNotBeLookedForIsAskedForAgain) {
  AccountNames accounts;
  EXPECT_EQ(AccountNames().owner(0), "root");  // whatever the system loads for it is there
  {
    const test::NoMoreDescriptors none;  // mostly "0" then; a system may know root by heart
    EXPECT_FALSE(accounts.owner(0).empty());
    EXPECT_FALSE(accounts.group(0).empty());
  }
  EXPECT_EQ(accounts.owner(0), "root");
  EXPECT_NE(accounts.group(0), "0");
}

TEST(AccountNames, manyThreadsGetTheSameNames) {
  AccountNames accounts;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&accounts] {
      for (uid_t id = 4'000'000'000U; id < 4'000'000'200U; ++id) {
        EXPECT_EQ(accounts.owner(id), std::to_string(id));
        EXPECT_EQ(accounts.group(id), std::to_string(id));
      }
    });
  }
  for (auto& thread : threads) thread.join();
}

}  // namespace
}  // namespace tarnel
