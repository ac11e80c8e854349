#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "control/UniqueFd.h"

namespace tarnel::test {
namespace {

UniqueFd someFile() { return UniqueFd(::open("/dev/null", O_RDONLY | O_CLOEXEC)); }
bool isOpen(int fd) { return ::fcntl(fd, F_GETFD) != -1; }

TEST(UniqueFd, closesWhatItOwns) {
  int number = -1;
  {
    const UniqueFd fd = someFile();
    number = fd.get();
    ASSERT_TRUE(isOpen(number));
  }
  EXPECT_FALSE(isOpen(number));
}

TEST(UniqueFd, movingPassesTheDescriptorOn) {
  UniqueFd from = someFile();
  const int number = from.get();
  UniqueFd to = std::move(from);
  EXPECT_EQ(to.get(), number);
  EXPECT_FALSE(from.valid());  // NOLINT(bugprone-use-after-move): that is the question
  UniqueFd other = someFile();
  const int replaced = other.get();
  other = std::move(to);
  EXPECT_FALSE(isOpen(replaced));
  EXPECT_TRUE(isOpen(number));
}

TEST(UniqueFd, releaseGivesTheDescriptorUp) {
  UniqueFd fd = someFile();
  const int number = fd.release();
  EXPECT_FALSE(fd.valid());
  fd.reset();
  EXPECT_TRUE(isOpen(number));
  ::close(number);
}

TEST(UniqueFd, closingKeepsErrno) {
  UniqueFd fd(1 << 20);  // not open: close() fails with EBADF
  errno = EDOM;
  fd.reset();
  EXPECT_EQ(errno, EDOM);
}

TEST(UniqueFd, zeroIsADescriptor) {
  UniqueFd fd(0);
  EXPECT_TRUE(fd.valid());
  (void)fd.release();
  EXPECT_FALSE(UniqueFd().valid());
}

}  // namespace
}  // namespace tarnel::test
