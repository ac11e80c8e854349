// The control client that a load makes, and what becomes of its requests.
#include <pthread.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <array>
#include <chrono>
#include <set>

#include "FileSystemTest.h"
#include "support/ScriptedHost.h"

namespace tarnel::test {
namespace {

class FileSystemClient : public FileSystemTest {};

// The receive time limits, in seconds, of this process's connections to a socket.
std::multiset<double> limitsOfConnectionsTo(const std::string& path) {
  std::multiset<double> limits;
  for (int fd = 0; fd < 1024; ++fd) {
    sockaddr_un peer{};
    socklen_t length = sizeof peer;
    if (::getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &length) != 0) continue;
    if (length <= sizeof peer.sun_family || path != peer.sun_path) continue;
    timeval limit{};
    length = sizeof limit;
    EXPECT_EQ(::getsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, &length), 0);
    limits.insert(static_cast<double>(limit.tv_sec) + static_cast<double>(limit.tv_usec) / 1e6);
  }
  return limits;
}

std::string nameOfThisThread() {
  std::array<char, 64> name{};
  EXPECT_EQ(::pthread_getname_np(::pthread_self(), name.data(), name.size()), 0);
  return name.data();
}

TEST_F(FileSystemClient, loadingMakesNoConnection) {
  ScriptedHost host;
  host.expect(R"({"op":"stat","name":"me\/Docs"})").answer(R"({"status":"ok"})");
  TarnelFileSystem fileSystem(host.path());
  const auto first = load(fileSystem);
  const auto second = load(fileSystem);
  Awaited<AttributesReply> reply;
  ask(second, reply.reply());
  EXPECT_EQ(std::get<1>(reply.wait()), posixError(2));
  // Connections are counted as they are accepted, in order: an earlier one would be in the count.
  EXPECT_EQ(host.connections(), 1u);
}

TEST_F(FileSystemClient, aSecondLoadAndItsUnloadDoNotCancelTheFirstVolume) {
  ScriptedHost host;
  host.expect(R"({"op":"stat","name":"me\/Docs"})").stall().answer(R"({"status":"ok"})");
  TarnelFileSystem fileSystem(host.path());
  const auto first = load(fileSystem);
  Awaited<AttributesReply> waiting;
  ask(first, waiting.reply());
  ASSERT_TRUE(host.waitForRequests(1));

  (void)load(fileSystem);
  EXPECT_EQ(unload(fileSystem), std::nullopt);
  EXPECT_FALSE(waiting.hasCome());
  host.release();
  EXPECT_EQ(std::get<1>(waiting.wait()), posixError(2));
}

TEST_F(FileSystemClient, unloadingEndsWhatWaitsForTheHost) {
  ScriptedHost host;
  host.expect(R"({"op":"stat","name":"me\/Docs"})").stall();
  TarnelFileSystem fileSystem(host.path());
  const auto volume = load(fileSystem);
  Awaited<AttributesReply> running;
  Awaited<AttributesReply> queued;
  ask(volume, running.reply());
  ask(volume, queued.reply());
  ASSERT_TRUE(host.waitForRequests(1));

  EXPECT_EQ(unload(fileSystem), std::nullopt);
  EXPECT_FALSE(std::get<0>(running.wait()));
  // What had not started never reaches the host; a time-out of the first would let it.
  EXPECT_EQ(std::get<1>(queued.wait()), posixError(57));
  EXPECT_EQ(host.requests().size(), 1u);
}

TEST_F(FileSystemClient, aHostThatStaysSilentIsATimeOutAfterFiveSeconds) {
  ScriptedHost host;
  host.expect(R"({"op":"stat","name":"me\/Docs"})").stall();
  TarnelFileSystem fileSystem(host.path());
  const auto volume = load(fileSystem);
  const auto start = std::chrono::steady_clock::now();
  Awaited<AttributesReply> waiting;
  ask(volume, waiting.reply());
  EXPECT_EQ(std::get<1>(waiting.wait()), posixError(60));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(4900));
}

TEST_F(FileSystemClient, givesEachConnectionItsOwnTimeLimit) {
  ScriptedHost host;
  host.answerWith([](const std::string&) { return HostReply().answer(R"({"status":"ok"})"); });
  TarnelFileSystem fileSystem(host.path());
  const auto volume = load(fileSystem);
  Awaited<AttributesReply> attributes;
  ask(volume, attributes.reply());
  EXPECT_EQ(std::get<1>(attributes.wait()), posixError(2));
  EXPECT_EQ(limitsOfConnectionsTo(host.path()), (std::multiset<double>{5}));
  Awaited<CountReply> bytes;
  volume->read(madeItem("me/Docs/a", 5, 4, false, std::nullopt), 0, 1,
               std::make_shared<ByteBuffer>(1), bytes.reply());
  EXPECT_EQ(std::get<1>(bytes.wait()), posixError(2));
  EXPECT_EQ(limitsOfConnectionsTo(host.path()), (std::multiset<double>{5, 30}));
}

TEST_F(FileSystemClient, namesItsThreadsAfterTheirChannels) {
  TarnelFileSystem fileSystem("/nowhere.sock");
  const auto volume = load(fileSystem);
  Awaited<std::function<void(std::string)>> metadata;
  ask(volume, [reply = metadata.reply()](auto&&...) { reply(nameOfThisThread()); });
  Awaited<std::function<void(std::string)>> bulk;
  volume->read(madeItem("me/Docs/a", 5, 4, false, std::nullopt), 0, 1,
               std::make_shared<ByteBuffer>(1),
               [reply = bulk.reply()](auto&&...) { reply(nameOfThisThread()); });
  // Linux keeps the last fifteen bytes.
  const auto endOf = [](std::string_view label, const std::string& name) {
    return name.size() >= 15 && label.ends_with(name);
  };
  EXPECT_PRED2(endOf, "tarnel.fskit.control.metadata", std::get<0>(metadata.wait()));
  EXPECT_PRED2(endOf, "tarnel.fskit.control.bulk", std::get<0>(bulk.wait()));
}

TEST_F(FileSystemClient, hasItsFixedLimitsAndLabel) {
  EXPECT_EQ(TarnelFileSystem::metadataTimeout, 5.0);
  EXPECT_EQ(TarnelFileSystem::bulkTimeout, 30.0);
  EXPECT_EQ(TarnelFileSystem::clientLabel, "tarnel.fskit.control");
  EXPECT_EQ(TarnelFileSystem::volumeName, "Tarnel");
}

}  // namespace
}  // namespace tarnel::test
