// A host with one share, and an owner's connection that offers it more.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "HostFixture.h"

namespace tarnel::test {

using Status = ControlResponse::Status;

// A connection of its own, which keeps its reviews.
class Owner {
 public:
  explicit Owner(const std::string& socketPath) : client(RawClient(socketPath).release()) {
    client.setDeadline(20);
  }
  ~Owner() { client.close(); }
  Owner(const Owner&) = delete;
  Owner& operator=(const Owner&) = delete;

  ControlResponse ask(const ControlRequest& request) {
    auto response = client.send(request);
    EXPECT_TRUE(response);
    return response.value_or(ControlResponse{.status = Status::error, .message = "none"});
  }
  ControlResponse confirm(const std::string& name) {
    return ask({.op = ControlOp::confirm, .name = name});
  }
  ControlResponse cancel(const std::string& name) {
    return ask({.op = ControlOp::cancel, .name = name});
  }

 private:
  ControlClient client;
};

class SharingTest : public HostFixture {
 protected:
  void SetUp() override {
    startHost();
    owner.emplace(socketPath());
  }

  static ControlRequest shareOf(const std::string& name, const std::string& folder,
                                std::optional<SharePolicy> policy = {}) {
    return {.op = ControlOp::share, .name = name, .folder = folder, .policy = policy};
  }
  ControlResponse share(const std::string& name, const std::string& folder,
                        std::optional<SharePolicy> policy = {}) {
    return owner->ask(shareOf(name, temp / folder, policy));
  }
  std::vector<std::string> sharedNames() {
    const auto answer = ask({.op = ControlOp::shares});
    std::vector<std::string> found;
    for (const auto& share : *answer.shares) found.push_back(share.name);
    return found;
  }
  // Missing for every operation alike.
  void expectMissing(const std::string& location) {
    SCOPED_TRACE(location);
    expectRefused(stat(location), "no such file");
    expectRefused(list(location), "no such file");
    expectRefused(read(location), "no such file");
  }

  using Names = std::vector<std::string>;
  std::optional<Owner> owner;
};

}  // namespace tarnel::test
