// A process that can start no thread, where the C library lets a test have one.
#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

#include <cstddef>

namespace tarnel::test {

#if defined(__GLIBC__)
// Threads of this process get a stack that no address space holds, for as long as it lives.
class NoMoreThreads {
 public:
  NoMoreThreads() {
    pthread_getattr_default_np(&before);
    pthread_attr_t huge;
    pthread_attr_init(&huge);
    EXPECT_EQ(pthread_attr_setstacksize(&huge, std::size_t{1} << 60), 0);
    EXPECT_EQ(pthread_setattr_default_np(&huge), 0);
    pthread_attr_destroy(&huge);
  }
  ~NoMoreThreads() {
    pthread_setattr_default_np(&before);
    pthread_attr_destroy(&before);
  }

 private:
  pthread_attr_t before;
};
#endif

}  // namespace tarnel::test
