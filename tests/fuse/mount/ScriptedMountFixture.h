// A tree that a scripted host of the test's own process serves, mounted by a real mount process.
#pragma once

#include <memory>
#include <string>

#include "MountFixture.h"
#include "support/TreeHost.h"

namespace tarnel::test {

class ScriptedMountFixture : public MountTest {
 protected:
  void TearDown() override { mount.reset(); }

  void mountTree(const std::string& options = nothingKept) {
    mount = std::make_unique<TestMount>(host.path(), options);
  }
  [[nodiscard]] std::string at(const std::string& relative) const {
    return *mount / ("me/Docs/" + relative);
  }

  TreeHost host;
  std::unique_ptr<TestMount> mount;
};

}  // namespace tarnel::test
