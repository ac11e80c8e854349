// A host inside this process that answers every line with the same one, on a real socket. A thread
// for each connection; destruction waits for them, so the clients hang up first.
#pragma once

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "control/Bytes.h"
#include "control/UnixSocketServer.h"

namespace tarnel::bench {

class AnsweringHost {
 public:
  explicit AnsweringHost(Bytes answerLine);  // with its line feed
  ~AnsweringHost();
  AnsweringHost(const AnsweringHost&) = delete;
  AnsweringHost& operator=(const AnsweringHost&) = delete;

  [[nodiscard]] const std::string& socketPath() const { return server->path(); }

 private:
  void serve(int fd) const;

  const Bytes answer;
  std::string folder;
  std::shared_ptr<UnixSocketServer> server;
  std::vector<std::thread> connections;  // the server's queue only, until that has stopped
};

}  // namespace tarnel::bench
