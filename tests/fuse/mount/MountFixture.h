// A folder shared by a real host process and mounted by a real mount process.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <expected>
#include <memory>
#include <string>

#include "control/UniqueFd.h"
#include "support/FileTree.h"
#include "support/SomeBytes.h"
#include "support/TestHost.h"
#include "support/TestMount.h"

namespace tarnel::test {

// Options under which the kernel asks about everything anew.
inline constexpr const char* nothingKept = "attr_timeout=0,entry_timeout=0";
// Options under which the kernel keeps what it has heard for the whole test.
inline constexpr const char* everythingKept = "attr_timeout=600,entry_timeout=600";

// The errno of a system call that answers below 0 for a failure; 0 when it went well.
template <class Call>
[[nodiscard]] int errnoOf(Call call) {
  errno = 0;
  return call() < 0 ? errno : 0;
}

// For failures' messages: numbers of this system by name.
[[nodiscard]] inline std::string named(int error) {
  return error == 0 ? "0" : ::strerrorname_np(error);
}

// All bytes of a file, or the errno of what failed.
[[nodiscard]] inline std::expected<std::string, int> contentOf(const std::string& path) {
  const UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!fd.valid()) return std::unexpected(errno);
  std::string all;
  std::string piece(1 << 20, '\0');
  while (true) {
    const ssize_t got = ::read(fd.get(), piece.data(), piece.size());
    if (got < 0) return std::unexpected(errno);
    if (got == 0) return all;
    all.append(piece, 0, static_cast<std::size_t>(got));
  }
}

// Skips the test, and says why, where nothing can be mounted.
class MountTest : public testing::Test {
 protected:
  void SetUp() override {
    if (const std::string why = whyNoMounts(); !why.empty()) GTEST_SKIP() << "SKIPPED: " << why;
  }
};

class MountFixture : public MountTest {
 protected:
  void TearDown() override {
    mount.reset();
    host.reset();
  }

  // `share` is served as me/Docs, and seen below `at`.
  void mountShare(const std::string& options = "ro") {
    startHost();
    mount = std::make_unique<TestMount>(socket(), options);
  }
  void startHost() {
    host = std::make_unique<TestHost>(socket(),
                                      std::vector<std::string>{"--share", "Docs=" + share.path()});
  }
  [[nodiscard]] std::string socket() const { return sockets / "s"; }
  [[nodiscard]] std::string at(const std::string& relative) const {
    return *mount / ("me/Docs/" + relative);
  }

  FileTree share;
  TempDir sockets;
  std::unique_ptr<TestHost> host;
  std::unique_ptr<TestMount> mount;
};

}  // namespace tarnel::test
