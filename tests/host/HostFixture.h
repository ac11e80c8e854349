// A host over a folder of the test's own, and requests to it over a real socket.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RawClient.h"
#include "control/Base64.h"
#include "control/ControlClient.h"
#include "control/Mutex.h"
#include "host/ReferenceHost.h"
#include "support/FileTree.h"

namespace tarnel::test {

class HostFixture : public testing::Test {
 protected:
  HostFixture() { temp.folder("docs"); }

  // The folder of the share "me/Docs", relative to `temp`.
  static std::string docs(const std::string& relative) { return "docs/" + relative; }

  HostOptions options() {
    return {.socketPath = socketPath(),
            .shares = {{.name = "Docs", .folder = temp / "docs"}},
            .log = [this](std::string_view line) {
              MutexLock hold(logLock);
              logged.emplace_back(line);
            }};
  }
  [[nodiscard]] std::string socketPath() const { return temp / "s"; }

  void startHost() { startHost(options()); }
  void startHost(HostOptions chosen) {
    auto started = ReferenceHost::start(std::move(chosen));
    ASSERT_TRUE(started) << description(started.error());
    host = std::move(*started);
  }

  // Starts the host with the default options if there is none.
  ControlResponse ask(ControlRequest request) {
    if (!host) startHost();
    RawClient connection(socketPath());
    EXPECT_TRUE(connection.connected());
    ControlClient client(connection.release());
    client.setDeadline(20);
    auto response = client.send(request);
    client.close();
    EXPECT_TRUE(response);
    return response.value_or(ControlResponse{});
  }
  ControlResponse stat(const std::string& location) {
    return ask({.op = ControlOp::stat, .name = location});
  }
  ControlResponse list(const std::string& location) {
    return ask({.op = ControlOp::list, .name = location});
  }
  ControlResponse read(const std::string& location, std::optional<std::int64_t> offset = {},
                       std::optional<std::int64_t> length = {}) {
    return ask({.op = ControlOp::read, .name = location, .offset = offset, .length = length});
  }
  // The bytes of a read; nullopt when it was refused.
  std::optional<Bytes> bytes(const std::string& location, std::optional<std::int64_t> offset = {},
                             std::optional<std::int64_t> length = {}) {
    const auto response = read(location, offset, length);
    return response.dataBase64 ? base64::decode(*response.dataBase64) : std::nullopt;
  }
  // The sorted names of a listing.
  std::vector<std::string> names(const std::string& location) {
    const auto response = list(location);
    EXPECT_TRUE(response.entries) << response.message.value_or("");
    std::vector<std::string> found;
    if (!response.entries) return found;
    for (const auto& entry : *response.entries) found.push_back(entry.name);
    std::sort(found.begin(), found.end());
    return found;
  }
  static void expectRefused(const ControlResponse& response, const std::string& message) {
    EXPECT_EQ(response, ControlResponse::error(message));
  }

  std::vector<std::string> log() {
    MutexLock hold(logLock);
    return logged;
  }

  FileTree temp;
  Mutex logLock;  // guards logged
  std::vector<std::string> logged GUARDED_BY(logLock);
  std::unique_ptr<ReferenceHost> host;  // gone before the log that it writes to
};

}  // namespace tarnel::test
