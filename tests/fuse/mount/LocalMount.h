// A mount served by the test's own process: without the read-only flag, so that refused operations
// reach the adapter, and with the volume at hand.
#pragma once

#include <gtest/gtest.h>
#include <sys/mount.h>

#include <atomic>
#include <memory>
#include <string>

#include "control/DualControlClient.h"
#include "fs/ControlFabricSource.h"
#include "fs/FSIdentity.h"
#include "fusefs/FuseSession.h"
#include "support/Eventually.h"
#include "support/MountFolder.h"

namespace tarnel::test {

class LocalMount {
 public:
  explicit LocalMount(const std::string& socket) {
    auto client = std::make_shared<DualControlClient>(socket, 5.0, 30.0, "test");
    volume = FabricVolume::make(FSIdentity::uuid(), "Tarnel",
                                std::make_shared<ControlFabricSource>(std::move(client)),
                                ::getuid(), ::getgid(), mountTimeMs);
    ItemRef root;
    volume->activate([&](const ItemRef& item, OptionalError) { root = item; });
    const MountOptions options{.attributeTimeout = 0, .entryTimeout = 0, .readOnlyFlag = false};
    auto mounted = FuseSession::mount(volume, root, folder.path(), options);
    if (!mounted) {
      ADD_FAILURE() << mounted.error();
      return;
    }
    session = std::move(*mounted);
    session->serve([flag = ended] { *flag = true; });
  }
  ~LocalMount() {
    ::umount2(folder.path().c_str(), MNT_DETACH);
    volume->cancelAll();
    EXPECT_TRUE(!session || eventually([this] { return ended->load(); }));
  }
  LocalMount(const LocalMount&) = delete;
  LocalMount& operator=(const LocalMount&) = delete;

  static constexpr std::int64_t mountTimeMs = 1'500'000'000'000;

  [[nodiscard]] std::string operator/(const std::string& relative) const {
    return folder / relative;
  }

 private:
  MountFolder folder;
  std::shared_ptr<FabricVolume> volume;
  std::shared_ptr<FuseSession> session;
  const std::shared_ptr<std::atomic<bool>> ended = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace tarnel::test
