#include "host/ReferenceHost.h"

#include <new>
#include <system_error>
#include <utility>

#include "ConnectionRegistry.h"
#include "HostConnection.h"
#include "HostResponder.h"
#include "SocketSite.h"
#include "control/PosixSocket.h"
#include "control/Thread.h"

namespace tarnel {

struct ReferenceHost::Core {
  Core(std::unique_ptr<ShareTable> table, HostOptions options)
      : connections(std::make_shared<ConnectionRegistry>(options.maxConnections)),
        responder(std::move(table), std::move(options)) {}

  // Outlives the rest for the last moment of a connection's thread.
  const std::shared_ptr<ConnectionRegistry> connections;
  HostResponder responder;
};

std::expected<std::unique_ptr<ReferenceHost>, HostStartError> ReferenceHost::start(
    HostOptions options) {
  auto table = ShareTable::open(options.shares, options.isOwnMount);
  if (!table) return std::unexpected(std::move(table.error()));
  const std::string path = options.socketPath;
  auto host = std::unique_ptr<ReferenceHost>(
      new ReferenceHost(std::make_shared<Core>(std::move(*table), std::move(options))));
  if (auto listening = host->listenAlso(path); !listening) {
    return std::unexpected(std::move(listening.error()));
  }
  return host;
}

ReferenceHost::ReferenceHost(std::shared_ptr<Core> shared) : core(std::move(shared)) {}

std::expected<void, HostStartError> ReferenceHost::listenAlso(const std::string& path) {
  if (auto taken = socketSiteError(path)) return std::unexpected(std::move(*taken));
  auto server = UnixSocketServer::make(path);
  server->onConnection = [held = core](int fd) { serve(held, fd); };
  if (auto listening = server->start(); !listening) {
    return std::unexpected(HostStartError{
        .kind = HostStartError::Kind::socket, .path = path, .error = listening.error().error});
  }
  servers.push_back(std::move(server));
  return {};
}

ReferenceHost::~ReferenceHost() { stop(); }

void ReferenceHost::stop() {
  for (const auto& server : std::exchange(servers, {})) server->stop();
  core->connections->endAll();
}

// A connection for which there is no thread or no memory ends like one too many.
void ReferenceHost::serve(const std::shared_ptr<Core>& core, int connectedFD) {
  UniqueFd fd(connectedFD);
  try {
    if (!peerIsTrusted(fd.get()) || !core->connections->add(fd.get())) return;
    startThread("tarnel.host.connection", [held = core, borrowed = fd.get()]() mutable {
      try {
        HostConnection(borrowed, held->responder).serve();
      } catch (const std::bad_alloc&) {  // what the client took is free again when it is hung up on
      }
      // stop() returns on the last finish(): the shared folders must not be held any longer then.
      const auto connections = held->connections;
      held = nullptr;
      connections->finish(UniqueFd(borrowed));
    }).detach();
    (void)fd.release();  // the thread's now
  } catch (const std::system_error&) {
    core->connections->finish(std::move(fd));
  } catch (const std::bad_alloc&) {
    core->connections->finish(std::move(fd));
  }
}

}  // namespace tarnel
