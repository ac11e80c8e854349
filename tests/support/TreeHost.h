// A scripted host that serves a small tree from memory, counts what it is asked, and gives other
// answers where the test says so.
//
//   TreeHost host;
//   host.file("me/Docs/a.txt", "hello");
//   host.answer({ControlOp::stat, "me/Docs/b"}, HostReply().answer("nonsense"));
//
// The shares of "me" are the second levels of the paths. Threads: any.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "control/ControlRequest.h"
#include "control/ControlResponse.h"
#include "control/Mutex.h"
#include "support/ScriptedHost.h"

namespace tarnel::test {

class TreeHost {
 public:
  struct Question {
    ControlOp op;
    std::string path = {};  // empty for shares
    friend auto operator<=>(const Question&, const Question&) = default;
  };

  static constexpr std::int64_t someTime = 1'600'000'000'000;  // ms

  TreeHost();

  void folder(const std::string& path);
  void file(const std::string& path, std::string bytes, std::int64_t mtimeMs = someTime);
  void remove(const std::string& path);
  // From now on this question gets this reply, until the usual one is wanted back.
  void answer(const Question& question, HostReply reply);
  void answerAsUsual();
  // Reads answer with at most this many bytes.
  void limitChunks(std::size_t bytes);

  [[nodiscard]] std::size_t asked(const Question& question) const;
  [[nodiscard]] std::size_t asked(ControlOp op) const;
  [[nodiscard]] bool waitUntilAsked(const Question& question, std::size_t times = 1) const;

  [[nodiscard]] const std::string& path() const { return host.path(); }
  // Stalled replies go on.
  void release() { host.release(); }

  // The answer to a request as one line, without its line feed.
  [[nodiscard]] static std::string lineOf(const ControlResponse& response);
  [[nodiscard]] ControlStat statusOf(const std::string& path) const;

 private:
  struct Node {
    ControlStat status;
    std::string bytes;
  };

  [[nodiscard]] HostReply reply(const std::string& line);
  [[nodiscard]] ControlResponse respond(const ControlRequest& request) REQUIRES(lock);
  [[nodiscard]] std::vector<ControlStat> childrenOf(const std::string& path) REQUIRES(lock);

  mutable Mutex lock;  // guards all below but the host
  std::map<std::string, Node> nodes GUARDED_BY(lock);
  std::map<Question, HostReply> others GUARDED_BY(lock);
  std::map<Question, std::size_t> counts GUARDED_BY(lock);
  std::size_t chunkLimit GUARDED_BY(lock) = SIZE_MAX;
  ScriptedHost host;  // gone first
};

}  // namespace tarnel::test
