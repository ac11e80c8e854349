// What the tests of a channel share: a scripted host, a channel to it, requests and answers with
// names.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "ChannelOutcome.h"
#include "control/ControlChannel.h"
#include "support/ScriptedHost.h"

namespace tarnel::test {

inline constexpr const char* stat = R"({"op":"stat"})";
inline constexpr const char* ok = R"({"status":"ok"})";
inline const ControlRequest statRequest{.op = ControlOp::stat};

inline std::string message(const std::string& text) {
  return R"({"status":"ok","message":")" + text + "\"}";
}

inline ControlRequest statOf(const std::string& name) {
  return {.op = ControlOp::stat, .name = name};
}

inline std::string lineOf(const std::string& name) {
  return R"({"op":"stat","name":")" + name + "\"}";
}

// A channel to a scripted host.
class ControlChannelTest : public testing::Test {
 protected:
  ~ControlChannelTest() override { channel->cancelAll(); }

  // One request's outcome, as a text.
  std::string ask(double timeout = 20) {
    return textOf(start(*channel, statRequest, timeout).wait());
  }

  ScriptedHost host;
  std::shared_ptr<ControlChannel> channel = ControlChannel::make(host.path(), "tests.channel");
};

}  // namespace tarnel::test
