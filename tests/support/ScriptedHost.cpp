#include "support/ScriptedHost.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#if defined(__linux__)
#include <linux/sockios.h>
#endif

#include <algorithm>
#include <cstring>
#include <string_view>

#include "control/PosixSocket.h"
#include "control/Thread.h"
#include "support/Eventually.h"

namespace tarnel::test {
namespace {

bool readable(const pollfd& watched) { return watched.revents != 0; }

void waitUntilRead([[maybe_unused]] int fd) {
#if defined(SIOCOUTQ)
  (void)eventually([fd] {
    int unread = 0;
    return ::ioctl(fd, SIOCOUTQ, &unread) != 0 || unread == 0;
  });
#endif
}

bool sendAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = writeWithoutSignal(fd, bytes);
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

bool sendInPieces(int fd, std::string_view bytes, std::size_t piece) {
  if (piece == 0) return sendAll(fd, bytes);
  for (; !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size()))) {
    if (!sendAll(fd, bytes.substr(0, piece))) return false;
    waitUntilRead(fd);
  }
  return true;
}

}  // namespace

ScriptedHost::ScriptedHost() : socketPath(folder / "host.sock") { listen(); }

ScriptedHost::ScriptedHost(std::string path) : socketPath(std::move(path)) { listen(); }

ScriptedHost::~ScriptedHost() {
  // A client that gave up early may have been quicker than this host: its request is still to come.
  (void)eventually(
      [this] {
        MutexLock hold(lock);
        return script.empty();
      },
      std::chrono::seconds(3));
  (void)!::write(stopped.writeEnd.get(), "x", 1);
  if (accepting.joinable()) accepting.join();
  release();
  {
    MutexLock hold(lock);
    for (const int fd : open) ::shutdown(fd, SHUT_RDWR);
  }
  for (auto& thread : serving) thread.join();
  ::unlink(socketPath.c_str());
  MutexLock hold(lock);
  for (const auto& [line, reply] : script) ADD_FAILURE() << "never requested: " << line;
}

void ScriptedHost::listen() {
  ::unlink(socketPath.c_str());
  listening = makeUnixStreamSocket();
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, socketPath.c_str(), sizeof address.sun_path - 1);
  if (::bind(listening.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(listening.get(), 64) != 0) {
    ADD_FAILURE() << "the scripted host cannot listen at " << socketPath;
    return;
  }
  accepting = startThread("host.accept", [this] { acceptAll(); });
}

void ScriptedHost::acceptAll() {
  while (true) {
    pollfd watched[2] = {{.fd = listening.get(), .events = POLLIN, .revents = 0},
                         {.fd = stopped.readEnd.get(), .events = POLLIN, .revents = 0}};
    if (::poll(watched, 2, -1) < 0 || readable(watched[1])) return;
    UniqueFd fd = acceptConnection(listening.get());
    if (!fd.valid()) continue;
    {
      MutexLock hold(lock);
      ++accepted;
      open.push_back(fd.get());
    }
    serving.push_back(startThread("host.serve", [this, owned = fd.release()] { serve(owned); }));
  }
}

void ScriptedHost::serve(int owned) {
  UniqueFd fd(owned);
  HostReply greeting;
  {
    MutexLock hold(lock);
    if (!greetings.empty()) {
      greeting = std::move(greetings.front());
      greetings.pop_front();
    }
  }
  std::string buffer;
  char piece[65'536];
  bool going = perform(fd.get(), greeting);
  while (going) {
    const ssize_t got = ::read(fd.get(), piece, sizeof piece);
    if (got <= 0) break;
    std::size_t looked = buffer.size();  // a line may come in very many pieces
    buffer.append(piece, static_cast<std::size_t>(got));
    for (std::size_t end = 0; going && (end = buffer.find('\n', looked)) != std::string::npos;) {
      const std::string line = buffer.substr(0, end);
      buffer.erase(0, end + 1);
      looked = 0;
      going = perform(fd.get(), replyTo(line));
    }
  }
  {
    MutexLock hold(lock);
    std::erase(open, fd.get());
    fd.reset();
    ++ended;
  }
}

HostReply ScriptedHost::replyTo(const std::string& line) {
  Handler decide;
  HostReply reply;
  {
    MutexLock hold(lock);
    received.push_back(line);
    decide = handler;
    if (!decide && (script.empty() || script.front().first != line)) {
      ADD_FAILURE() << "unexpected request: " << line
                    << "\nexpected: " << (script.empty() ? "none" : script.front().first);
      reply.hangUp();
    } else if (!decide) {
      reply = std::move(script.front().second);
      script.pop_front();
    }
  }
  return decide ? decide(line) : reply;
}

bool ScriptedHost::perform(int fd, const HostReply& reply) {
  using Kind = HostReply::Step::Kind;
  for (const HostReply::Step& step : reply.steps()) {
    if (step.kind == Kind::hangUp) return false;
    if (step.kind == Kind::stall && !stall(fd)) return false;
    if (step.kind != Kind::send) continue;
    if (!sendInPieces(fd, step.bytes, step.piece)) return false;
    MutexLock hold(lock);
    ++sent;
  }
  return true;
}

bool ScriptedHost::stall(int fd) {
  pollfd watched[2] = {{.fd = fd, .events = 0, .revents = 0},  // hang-ups are always reported
                       {.fd = released.readEnd.get(), .events = POLLIN, .revents = 0}};
  return ::poll(watched, 2, -1) > 0 && readable(watched[1]);
}

HostReply& ScriptedHost::expect(std::string requestLine) {
  MutexLock hold(lock);
  return script.emplace_back(std::move(requestLine), HostReply()).second;
}

void ScriptedHost::expect(std::string requestLine, HostReply reply) {
  MutexLock hold(lock);
  script.emplace_back(std::move(requestLine), std::move(reply));
}

void ScriptedHost::answerWith(Handler decide) {
  MutexLock hold(lock);
  handler = std::move(decide);
}

HostReply& ScriptedHost::greetNext() {
  MutexLock hold(lock);
  return greetings.emplace_back();
}

void ScriptedHost::release() { (void)!::write(released.writeEnd.get(), "x", 1); }

std::size_t ScriptedHost::connections() const {
  MutexLock hold(lock);
  return accepted;
}

std::vector<std::string> ScriptedHost::requests() const {
  MutexLock hold(lock);
  return received;
}

bool ScriptedHost::waitForConnections(std::size_t count) const {
  return eventually([this, count] { return connections() >= count; });
}

bool ScriptedHost::waitForRequests(std::size_t count) const {
  return eventually([this, count] { return requests().size() >= count; });
}

bool ScriptedHost::waitForSends(std::size_t count) const {
  return eventually([this, count] {
    MutexLock hold(lock);
    return sent >= count;
  });
}

bool ScriptedHost::waitForEnds(std::size_t count) const {
  return eventually([this, count] {
    MutexLock hold(lock);
    return ended >= count;
  });
}

}  // namespace tarnel::test
