#include "support/TestMount.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "control/UniqueFd.h"
#include "fusefs/MountTable.h"
#include "support/Eventually.h"

namespace tarnel::test {

std::string whyNoMounts() {
  const UniqueFd device(::open("/dev/fuse", O_RDWR | O_CLOEXEC));
  if (device.valid()) return {};
  return std::string("no /dev/fuse to mount with: ") + std::strerror(errno);
}

bool isMounted(const std::string& path) {
  const auto entry = mountAt(path);
  return entry && entry->type == mountType;
}

TestMount::TestMount(const std::string& socket, const std::string& options) {
  mounting = std::make_unique<Program>(std::vector<std::string>{
      tarnelProgram(), "mount", "-f", "--socket", socket, "-o", options, folder.path()});
  const bool serves = eventually([this] {
    struct stat status{};
    return mounting->hasEnded() ||
           (isMounted(path()) && ::stat(path().c_str(), &status) == 0 && S_ISDIR(status.st_mode));
  });
  if (!serves || mounting->hasEnded()) {
    ADD_FAILURE() << "the mount did not start: " << mounting->wait().err;
  }
}

TestMount::~TestMount() {
  mounting->signal(SIGTERM);
  const ProgramOutcome outcome = mounting->wait();
  EXPECT_FALSE(sanitizerComplained(outcome.err)) << outcome.err;
}

}  // namespace tarnel::test
