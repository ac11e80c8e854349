// The source over the control socket: each operation is one request and one response. It caches
// nothing and keeps no state but its client.
//
// Success is the presence of the payload, never the response's status; a missing payload is
// classified from the response's message. Channel errors become timedOut and disconnected; coding
// errors pass through unchanged.
// Threads: any; replies come from the client's threads.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "control/DualControlClient.h"
#include "fs/FabricSource.h"

namespace tarnel {

class ControlFabricSource final : public FabricSource {
 public:
  // The peer name under which the host's own shares appear.
  static constexpr std::string_view localPeer = "me";

  explicit ControlFabricSource(std::shared_ptr<DualControlClient> controlClient);

  void shareListing(Reply<std::vector<FabricShare>> reply) override;
  void stat(const std::string& relpath, Reply<FileStat> reply) override;
  void list(const std::string& relpath, Reply<std::vector<FileStat>> reply) override;
  void read(const std::string& relpath, std::int64_t offset, std::int64_t length,
            Reply<Bytes> reply) override;
  void cancelAll() override;

  // What a refusal's message says; an absent one says "notFound", as every unknown one does.
  [[nodiscard]] static FabricSourceError classify(const std::optional<std::string>& message);

 private:
  // Takes the payload out of a response; absent: the request was refused.
  template <class T>
  using Extract = std::optional<T> (*)(ControlResponse&);

  template <class T>
  void send(ControlRequest request, Extract<T> extract, Reply<T> reply);

  const std::shared_ptr<DualControlClient> client;
};

}  // namespace tarnel
