// A process with little memory left. A sanitizer has memory of its own: tests with this are skipped
// there.
#pragma once

#if defined(__linux__)
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstddef>
#include <fstream>

namespace tarnel::test {

// No more than so many bytes of new memory for this process, for as long as it lives.
class MemoryLeft {
 public:
  explicit MemoryLeft(std::size_t bytes) {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    EXPECT_EQ(::getrlimit(RLIMIT_AS, &before), 0);
    const rlim_t most = pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE)) + bytes;
    const rlimit some{.rlim_cur = most, .rlim_max = before.rlim_max};
    EXPECT_EQ(::setrlimit(RLIMIT_AS, &some), 0);
  }
  ~MemoryLeft() { EXPECT_EQ(::setrlimit(RLIMIT_AS, &before), 0); }

 private:
  rlimit before{};
};

}  // namespace tarnel::test
#endif
