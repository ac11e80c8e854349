// `tarnel mount -f` in a process of its own, on a folder of its own. Destruction unmounts.
#pragma once

#include <memory>
#include <string>

#include "support/MountFolder.h"
#include "support/RunProgram.h"

namespace tarnel::test {

// Why no mount can be made here, in a sentence; empty when one can.
[[nodiscard]] std::string whyNoMounts();

// True when a mount of our type stands on exactly this folder.
[[nodiscard]] bool isMounted(const std::string& path);

class TestMount {
 public:
  // Waits until the mount serves. options: as `-o` takes them.
  explicit TestMount(const std::string& socket, const std::string& options = "ro");
  ~TestMount();
  TestMount(const TestMount&) = delete;
  TestMount& operator=(const TestMount&) = delete;

  [[nodiscard]] const std::string& path() const { return folder.path(); }
  [[nodiscard]] std::string operator/(const std::string& relative) const {
    return folder / relative;
  }
  [[nodiscard]] Program& program() { return *mounting; }

 private:
  MountFolder folder;
  std::unique_ptr<Program> mounting;
};

}  // namespace tarnel::test
