#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <fstream>
#include <future>
#include <thread>
#include <vector>

#include "ListeningSocket.h"
#include "NoMoreThreads.h"
#include "control/Mutex.h"
#include "control/PosixSocket.h"
#include "control/UniqueFd.h"
#include "control/UnixSocketServer.h"
#include "support/Eventually.h"
#include "support/NoMoreDescriptors.h"
#include "support/OpenDescriptors.h"
#include "support/TempDir.h"

namespace tarnel::test {
namespace {

using Kind = UnixSocketError::Kind;

// Takes the connections of a server, in order.
class Taken {
 public:
  void operator()(int fd) {
    MutexLock hold(lock);
    all.emplace_back(fd);
  }
  [[nodiscard]] std::size_t count() {
    MutexLock hold(lock);
    return all.size();
  }
  [[nodiscard]] int at(std::size_t i) {
    MutexLock hold(lock);
    return all.at(i).get();
  }

 private:
  Mutex lock;
  std::vector<UniqueFd> all GUARDED_BY(lock);
};

class UnixSocketServerTest : public testing::Test {
 protected:
  UnixSocketServerTest() {
    server->onConnection = [this](int fd) { taken(fd); };
  }
  ~UnixSocketServerTest() override { server->stop(); }

  // A first connection, so that the server's thread is at work for sure: a sanitizer that looks at
  // a thread that is just beginning needs descriptors itself.
  [[nodiscard]] bool hasTakenOne() {
    const UniqueFd client(connectUnixSocket(path).value_or(-1));
    return eventually([&] { return taken.count() == 1; });
  }

  TempDir folder;
  const std::string path = folder / "server.sock";
  Taken taken;
  std::shared_ptr<UnixSocketServer> server = UnixSocketServer::make(path);
};

TEST_F(UnixSocketServerTest, handsConnectionsOverInOrder) {
  ASSERT_TRUE(server->start().has_value());
  std::vector<UniqueFd> clients;
  for (int i = 0; i < 5; ++i) {
    clients.emplace_back(connectUnixSocket(path).value_or(-1));
    ASSERT_TRUE(clients.back().valid());
    const char mark = static_cast<char>('a' + i);
    ASSERT_EQ(writeWithoutSignal(clients.back().get(), {&mark, 1}), 1);
  }
  ASSERT_TRUE(eventually([&] { return taken.count() == 5; }));
  for (int i = 0; i < 5; ++i) {
    char mark = 0;
    ASSERT_EQ(::read(taken.at(static_cast<std::size_t>(i)), &mark, 1), 1);
    EXPECT_EQ(mark, 'a' + i);
  }
}

TEST_F(UnixSocketServerTest, replacesAStaleFileAndMakesASocketOfMode0600) {
  std::ofstream(path) << "stale";
  ASSERT_TRUE(server->start().has_value());
  struct stat status{};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_TRUE(S_ISSOCK(status.st_mode));
  EXPECT_EQ(status.st_mode & 07777, 0600U);
  EXPECT_TRUE(UniqueFd(connectUnixSocket(path).value_or(-1)).valid());
}

TEST_F(UnixSocketServerTest, stopsInAnyStateAndRemovesTheSocketFile) {
  server->stop();
  ASSERT_TRUE(server->start().has_value());
  server->stop();
  EXPECT_NE(::access(path.c_str(), F_OK), 0);
  server->stop();
  EXPECT_EQ(connectUnixSocket(path).error().error, ENOENT);
}

TEST_F(UnixSocketServerTest, startsAgainAfterStop) {
  ASSERT_TRUE(server->start().has_value());
  server->stop();
  ASSERT_TRUE(server->start().has_value());
  const UniqueFd client(connectUnixSocket(path).value_or(-1));
  EXPECT_TRUE(eventually([&] { return taken.count() == 1; }));
}

TEST_F(UnixSocketServerTest, startedTwiceItListensAnewAndLeavesWhatTheFirstOpened) {
  ASSERT_TRUE(server->start().has_value());
  ASSERT_TRUE(hasTakenOne());
  const std::size_t before = openDescriptors();
  ASSERT_TRUE(server->start().has_value());
  const UniqueFd client(connectUnixSocket(path).value_or(-1));
  EXPECT_TRUE(eventually([&] { return taken.count() == 2; }));
  server->stop();
  EXPECT_NE(::access(path.c_str(), F_OK), 0);
  // What stays is the two ends of this connection and nothing else that is new.
  EXPECT_TRUE(eventually([&] { return openDescriptors() == before + 2; }));
}

TEST_F(UnixSocketServerTest, stopClosesWhatStartOpened) {
  const std::size_t before = openDescriptors();
  ASSERT_TRUE(server->start().has_value());
  server->stop();
  EXPECT_TRUE(eventually([&] { return openDescriptors() == before; }));
}

TEST_F(UnixSocketServerTest, mayBeStoppedFromItsOwnCallback) {
  std::promise<void> stopped;
  server->onConnection = [&](int fd) {
    taken(fd);
    server->stop();
    stopped.set_value();
  };
  const std::size_t before = openDescriptors();
  ASSERT_TRUE(server->start().has_value());
  UniqueFd client(connectUnixSocket(path).value_or(-1));
  ASSERT_EQ(stopped.get_future().wait_for(waitBound), std::future_status::ready);
  EXPECT_NE(::access(path.c_str(), F_OK), 0);
  client.reset();
  // All but the connection that the callback keeps.
  EXPECT_TRUE(eventually([&] { return openDescriptors() == before + 1; }));
}

TEST_F(UnixSocketServerTest, stopWaitsForTheCallbackThatRuns) {
  std::promise<void> entered;
  std::promise<void> goOn;
  std::atomic<bool> done = false;
  server->onConnection = [&](int fd) {
    taken(fd);
    entered.set_value();
    goOn.get_future().wait();
    done = true;
  };
  ASSERT_TRUE(server->start().has_value());
  const UniqueFd client(connectUnixSocket(path).value_or(-1));
  ASSERT_EQ(entered.get_future().wait_for(waitBound), std::future_status::ready);
  auto stopping = std::async(std::launch::async, [&] {
    server->stop();
    return done.load();
  });
  goOn.set_value();
  EXPECT_TRUE(stopping.get());
}

std::size_t descriptorsThatAProgramWouldInherit() {
  std::size_t count = 0;
  for (int fd = 0; fd < 1024; ++fd) {
    const int flags = ::fcntl(fd, F_GETFD);
    if (flags >= 0 && (flags & FD_CLOEXEC) == 0) ++count;
  }
  return count;
}

TEST_F(UnixSocketServerTest, noProgramInheritsItsDescriptors) {
  const std::size_t before = descriptorsThatAProgramWouldInherit();
  ASSERT_TRUE(server->start().has_value());
  EXPECT_EQ(descriptorsThatAProgramWouldInherit(), before);
}

TEST_F(UnixSocketServerTest, stopsAlsoWhileAChildProcessHoldsItsDescriptors) {
  ASSERT_TRUE(server->start().has_value());
  const pid_t child = ::fork();
  if (child == 0) {
    ::alarm(60);  // should nobody be left to kill it
    ::pause();
    ::_exit(0);
  }
  auto stopping = std::async(std::launch::async, [&] { server->stop(); });
  EXPECT_EQ(stopping.wait_for(waitBound), std::future_status::ready);
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
}

TEST_F(UnixSocketServerTest, withoutADescriptorLeftItRestsAndTakesTheConnectionLater) {
  ASSERT_TRUE(server->start().has_value());
  const UniqueFd client = makeUnixStreamSocket();
  ASSERT_TRUE(hasTakenOne());
  {
    const NoMoreDescriptors none;
    connectTo(client.get(), path);
    const std::clock_t before = std::clock();
    std::this_thread::sleep_for(std::chrono::milliseconds(400));  // what it does meanwhile counts
    EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 5);         // processor time
    EXPECT_EQ(taken.count(), 1U);
  }
  EXPECT_TRUE(eventually([&] { return taken.count() == 2; }));
}

TEST_F(UnixSocketServerTest, stopsWhileItRests) {
  ASSERT_TRUE(server->start().has_value());
  const UniqueFd client = makeUnixStreamSocket();
  ASSERT_TRUE(hasTakenOne());
  const NoMoreDescriptors none;
  connectTo(client.get(), path);
  server->stop();
  EXPECT_EQ(taken.count(), 1U);
}

#if defined(__GLIBC__)
TEST_F(UnixSocketServerTest, withoutAThreadItFailsToListenAndLeavesNeitherDescriptorNorFile) {
  const std::size_t before = openDescriptors();
  const NoMoreThreads none;
  const auto started = server->start();
  ASSERT_FALSE(started.has_value());
  EXPECT_EQ(started.error().kind, Kind::listen);
  EXPECT_EQ(started.error().error, EAGAIN);
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_NE(::access(path.c_str(), F_OK), 0);
}
#endif

TEST_F(UnixSocketServerTest, withNoCallbackAnAcceptedDescriptorStaysOpen) {
  server->onConnection = nullptr;
  ASSERT_TRUE(server->start().has_value());
  const std::size_t before = openDescriptors();
  const UniqueFd client(connectUnixSocket(path).value_or(-1));
  EXPECT_TRUE(eventually([&] { return openDescriptors() == before + 2; }));
  server->stop();
  EXPECT_EQ(writeWithoutSignal(client.get(), "x"), 1);  // somebody still holds the other end
}

TEST_F(UnixSocketServerTest, releasingItLeavesTheSocketListening) {
  ASSERT_TRUE(server->start().has_value());
  server = UnixSocketServer::make(path);  // stopped in its place, so that the file goes
  EXPECT_EQ(::access(path.c_str(), F_OK), 0);
  const std::size_t before = openDescriptors();
  const UniqueFd client(connectUnixSocket(path).value_or(-1));
  EXPECT_TRUE(client.valid());
  // Accepted still, and left open: there is nobody to hand it to.
  EXPECT_TRUE(eventually([&] { return openDescriptors() == before + 2; }));
  EXPECT_EQ(taken.count(), 0U);
}

TEST_F(UnixSocketServerTest, aPathOf104BytesIsTooLongAndLeavesItsDescriptor) {
  const std::string longPath(104, 'x');
  const auto longServer = UnixSocketServer::make(longPath);
  const std::size_t before = openDescriptors();
  const auto started = longServer->start();
  ASSERT_FALSE(started.has_value());
  EXPECT_EQ(description(started.error()), "unix socket path too long: " + longPath);
  EXPECT_EQ(openDescriptors(), before + 1);
}

TEST_F(UnixSocketServerTest, aPathThatNamesNoFileFailsToBindAndRemovesNothing) {
  std::ofstream(folder / "kept") << "kept";
  const std::size_t before = openDescriptors();
  for (const std::string& wrong : {std::string(), folder / std::string("kept\0x", 6)}) {
    const auto nowhere = UnixSocketServer::make(wrong);
    const auto started = nowhere->start();
    ASSERT_FALSE(started.has_value());
    EXPECT_EQ(started.error(), (UnixSocketError{.kind = Kind::bind, .path = {}, .error = ENOENT}));
    nowhere->stop();
  }
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(::access((folder / "kept").c_str(), F_OK), 0);
}

TEST_F(UnixSocketServerTest, aPathOf103BytesBinds) {
  std::string fits = folder / "";
  fits.resize(103, 'n');
  const auto longServer = UnixSocketServer::make(fits);
  ASSERT_TRUE(longServer->start().has_value());
  EXPECT_TRUE(UniqueFd(connectUnixSocket(fits).value_or(-1)).valid());
  longServer->stop();
}

TEST_F(UnixSocketServerTest, aFolderThatIsMissingFailsToBindAndLeavesNoDescriptor) {
  const auto lost = UnixSocketServer::make(folder / "missing/s");
  const std::size_t before = openDescriptors();
  const auto started = lost->start();
  ASSERT_FALSE(started.has_value());
  EXPECT_EQ(started.error(), (UnixSocketError{.kind = Kind::bind, .path = {}, .error = ENOENT}));
  EXPECT_EQ(description(started.error()), std::string("bind() failed: ") + std::strerror(ENOENT));
  EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
}  // namespace tarnel::test
