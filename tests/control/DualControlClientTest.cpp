#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "ChannelOutcome.h"
#include "control/DualControlClient.h"
#include "support/ScriptedHost.h"

namespace tarnel::test {
namespace {

constexpr ControlOp bulkOps[] = {ControlOp::read, ControlOp::readStream, ControlOp::readTreeStream};
constexpr ControlOp metadataOps[] = {ControlOp::share,   ControlOp::confirm, ControlOp::cancel,
                                     ControlOp::unshare, ControlOp::shares,  ControlOp::stat,
                                     ControlOp::list,    ControlOp::bridge};

// Stalls the requests that bear the name "silent" and answers all others.
HostReply stallSilent(const std::string& line) {
  if (line.find("silent") != std::string::npos) return HostReply().stall();
  return HostReply().answer(R"({"status":"ok"})");
}

ControlRequest silent(ControlOp op) { return {.op = op, .name = "silent"}; }

class DualControlClientTest : public testing::Test {
 protected:
  DualControlClientTest() { host.answerWith(stallSilent); }
  ~DualControlClientTest() override { client.cancelAll(); }

  std::string ask(DualControlClient& of, const ControlRequest& request) {
    return textOf(start(of, request).wait());
  }
  std::string ask(ControlOp op) { return ask(client, ControlRequest{.op = op}); }

  ScriptedHost host;
  DualControlClient client{host.path(), 20, 20, "tests"};
};

TEST_F(DualControlClientTest, labelsItsChannelsAndKeepsTheirTimeLimits) {
  const DualControlClient other("/nowhere", 5.0, 30.0, "tarnel.fskit.control");
  EXPECT_EQ(other.metadata->label(), "tarnel.fskit.control.metadata");
  EXPECT_EQ(other.bulk->label(), "tarnel.fskit.control.bulk");
  EXPECT_EQ(other.metadataTimeout, 5.0);
  EXPECT_EQ(other.bulkTimeout, 30.0);
}

// A channel runs one request at a time: what is answered beside a silent one goes another way.
TEST_F(DualControlClientTest, whileAReadIsSilentEveryMetadataOperationIsAnswered) {
  auto read = start(client, silent(ControlOp::read));
  ASSERT_TRUE(host.waitForRequests(1));
  for (const ControlOp op : metadataOps) EXPECT_EQ(ask(op), "ok") << rawValue(op);
  EXPECT_FALSE(read.isThere());
  EXPECT_EQ(host.connections(), 2U);
}

TEST_F(DualControlClientTest, whileAStatIsSilentEveryBulkOperationIsAnswered) {
  auto stat = start(client, silent(ControlOp::stat));
  ASSERT_TRUE(host.waitForRequests(1));
  for (const ControlOp op : bulkOps) EXPECT_EQ(ask(op), "ok") << rawValue(op);
  EXPECT_FALSE(stat.isThere());
  EXPECT_EQ(host.connections(), 2U);
}

TEST_F(DualControlClientTest, aSilentReadTimesOutAfterItsLimitWhileStatsSucceed) {
  DualControlClient impatient(host.path(), 20, 0.3, "tests");
  const auto before = std::chrono::steady_clock::now();
  auto read = start(impatient, silent(ControlOp::read));
  while (!read.isThere()) ASSERT_EQ(ask(impatient, {.op = ControlOp::stat}), "ok");
  EXPECT_EQ(textOf(read.wait()), timedOut);
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(290));
  EXPECT_EQ(ask(impatient, {.op = ControlOp::read}), "ok");
  EXPECT_EQ(host.connections(), 3U);
  impatient.cancelAll();
}

TEST_F(DualControlClientTest, aSilentStatTimesOutAfterItsLimitAndTheNextOpensANewConnection) {
  DualControlClient impatient(host.path(), 0.2, 20, "tests");
  EXPECT_EQ(ask(impatient, silent(ControlOp::stat)), timedOut);
  EXPECT_EQ(ask(impatient, {.op = ControlOp::stat}), "ok");
  EXPECT_EQ(host.connections(), 2U);
  impatient.cancelAll();
}

TEST_F(DualControlClientTest, cancelAllEndsTheRequestsOfBothChannelsAtOnce) {
  auto stat = start(client, silent(ControlOp::stat));
  auto read = start(client, silent(ControlOp::read));
  ASSERT_TRUE(host.waitForRequests(2));
  auto queued = start(client, ControlRequest{.op = ControlOp::read});
  client.cancelAll();
  EXPECT_TRUE(hasLostItsHost(textOf(stat.wait())));
  EXPECT_TRUE(hasLostItsHost(textOf(read.wait())));
  EXPECT_EQ(textOf(queued.wait()), disconnected);
  EXPECT_TRUE(host.waitForEnds(2));
  EXPECT_EQ(host.requests().size(), 2U);
  EXPECT_EQ(ask(ControlOp::read), "ok");
  EXPECT_EQ(ask(ControlOp::stat), "ok");
}

TEST_F(DualControlClientTest, queuesRequestsWhileOneWaits) {
  auto first = start(client, silent(ControlOp::stat));
  std::vector<ChannelOutcome> more;
  for (int i = 0; i < 10; ++i) more.push_back(start(client, ControlRequest{.op = ControlOp::list}));
  ASSERT_TRUE(host.waitForRequests(1));
  client.cancelAll();
  EXPECT_TRUE(hasLostItsHost(textOf(first.wait())));
  for (auto& outcome : more) EXPECT_EQ(textOf(outcome.wait()), disconnected);
}

}  // namespace
}  // namespace tarnel::test
