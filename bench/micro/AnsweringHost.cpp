#include "AnsweringHost.h"

#include <unistd.h>

#include <cstdlib>
#include <utility>

#include "Require.h"
#include "control/PosixSocket.h"
#include "control/ReceiveBuffer.h"
#include "control/Thread.h"
#include "control/UniqueFd.h"

namespace tarnel::bench {
namespace {

std::string makeFolder() {
  std::string pattern = "/tmp/tarnel-bench-XXXXXX";
  require(::mkdtemp(pattern.data()) != nullptr, "no folder for a socket");
  return pattern;
}

}  // namespace

AnsweringHost::AnsweringHost(Bytes answerLine)
    : answer(std::move(answerLine)),
      folder(makeFolder()),
      server(UnixSocketServer::make(folder + "/s")) {
  server->onConnection = [this](int fd) {
    connections.push_back(startThread("tarnel.bench.host", [this, fd] { serve(fd); }));
  };
  require(server->start().has_value(), "no socket");
}

AnsweringHost::~AnsweringHost() {
  server->stop();
  for (auto& connection : connections) connection.join();
  (void)::rmdir(folder.c_str());
}

void AnsweringHost::serve(int fd) const {
  const UniqueFd owned(fd);
  ReceiveBuffer received;
  while (received.fill(fd) > 0) {
    while (received.takeLine()) {
      if (writeWithoutSignal(fd, answer) != static_cast<ssize_t>(answer.size())) return;
    }
  }
}

}  // namespace tarnel::bench
