// A host inside the test's process: a real Unix-domain socket that answers as the test says.
//
//   ScriptedHost host;
//   host.expect(R"({"op":"stat","name":"me\/Docs"})").answer(R"({"status":"ok"})").hangUp();
//
// The script is consumed in order of arrival, over all connections; with answerWith a function
// decides instead. A request that is not the expected one, a request past the end of the script and
// a step that nobody asked for are failures of the test.
// A chain of calls on an expected reply is finished before the request is sent; where a program of
// its own sends it, at a time of its own, the reply is given whole.
// Threads: one for each connection. Waiting is bounded (Eventually.h). Destruction hangs up on
// everybody, stalled or not, and joins.
#pragma once

#include <deque>
#include <filesystem>
#include <functional>
#include <list>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "control/Mutex.h"
#include "control/PosixSocket.h"
#include "control/UniqueFd.h"
#include "support/HostReply.h"
#include "support/TempDir.h"

namespace tarnel::test {

class ScriptedHost {
 public:
  using Handler = std::function<HostReply(const std::string& requestLine)>;

  ScriptedHost();                                 // at a path of its own
  explicit ScriptedHost(std::string socketPath);  // listens at once, in the place of what is there
  ~ScriptedHost();
  ScriptedHost(const ScriptedHost&) = delete;
  ScriptedHost& operator=(const ScriptedHost&) = delete;

  [[nodiscard]] const std::string& path() const { return socketPath; }

  HostReply& expect(std::string requestLine);
  void expect(std::string requestLine, HostReply reply);
  void answerWith(Handler decide);
  // What the next connection that comes gets before any request.
  HostReply& greetNext();
  // Stalled replies go on, now and from now on.
  void release();

  [[nodiscard]] std::size_t connections() const;
  [[nodiscard]] std::vector<std::string> requests() const;
  [[nodiscard]] bool waitForConnections(std::size_t count) const;
  [[nodiscard]] bool waitForRequests(std::size_t count) const;
  // Sends of the replies' steps that are done: their bytes have reached the socket.
  [[nodiscard]] bool waitForSends(std::size_t count) const;
  // Connections that have ended, whoever hung up.
  [[nodiscard]] bool waitForEnds(std::size_t count) const;

 private:
  void listen();
  void acceptAll();
  void serve(int fd);
  [[nodiscard]] HostReply replyTo(const std::string& line);
  [[nodiscard]] bool perform(int fd, const HostReply& reply);
  [[nodiscard]] bool stall(int fd);

  TempDir folder;
  const std::string socketPath;
  UniqueFd listening;
  const Pipe stopped = makePipe().value();   // readable once the destructor runs
  const Pipe released = makePipe().value();  // readable once release() was called
  std::thread accepting;
  std::list<std::thread> serving;  // the accepting thread's, the destructor's after its end

  mutable Mutex lock;  // guards all below
  std::deque<std::pair<std::string, HostReply>> script GUARDED_BY(lock);
  std::deque<HostReply> greetings GUARDED_BY(lock);
  Handler handler GUARDED_BY(lock);
  std::vector<int> open GUARDED_BY(lock);
  std::vector<std::string> received GUARDED_BY(lock);
  std::size_t accepted GUARDED_BY(lock) = 0;
  std::size_t sent GUARDED_BY(lock) = 0;
  std::size_t ended GUARDED_BY(lock) = 0;
};

}  // namespace tarnel::test
