// No new descriptor for this process, or only so many, for as long as one of these lives.
#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <vector>

#include "control/UniqueFd.h"

namespace tarnel::test {

class NoMoreDescriptors {
 public:
  explicit NoMoreDescriptors(int spare = 0) {
    EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    std::vector<UniqueFd> free;  // the system gives the lowest ones first
    for (int i = 0; i <= spare; ++i) free.emplace_back(::dup(STDERR_FILENO));
    const rlimit few{.rlim_cur = static_cast<rlim_t>(free.back().get()),
                     .rlim_max = before.rlim_max};
    EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
  }
  ~NoMoreDescriptors() { EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0); }
  NoMoreDescriptors(const NoMoreDescriptors&) = delete;
  NoMoreDescriptors& operator=(const NoMoreDescriptors&) = delete;

 private:
  rlimit before{};
};

}  // namespace tarnel::test
