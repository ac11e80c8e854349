// A request of the kernel that waits for the host. It is answered exactly once, by whichever comes
// first: its result, or an interrupt, which answers EINTR: at once when the signal ends the
// program, as Ctrl-C does to most; after interruptGrace when the program handles it. A timer's
// signal is no reason to fail a call that a healthy host is about to answer, and no local file
// system does.
//
//   const auto pending = PendingRequest::make(session, request);
//   volume.lookupItem(..., [pending](...) {
//     if (!pending->claim()) return;        // interrupted: the request is gone
//     fuse_reply_entry(pending->request(), ...);
//   });
#pragma once

#include <atomic>
#include <chrono>
#include <memory>

#include "FuseReply.h"

namespace tarnel {

class Adapter;

inline constexpr std::chrono::milliseconds interruptGrace{1000};

class PendingRequest : public std::enable_shared_from_this<PendingRequest> {
 public:
  [[nodiscard]] static std::shared_ptr<PendingRequest> make(std::shared_ptr<Adapter> session,
                                                            fuse_req_t request);

  // True for the first caller, who must reply; from then on no interrupt touches the request.
  [[nodiscard]] bool claim();
  [[nodiscard]] fuse_req_t request() const { return req; }
  // claim() and an error reply.
  void fail(int error);

 private:
  PendingRequest(std::shared_ptr<Adapter> session, fuse_req_t request);
  static void interrupted(fuse_req_t request, void* self);

  const std::shared_ptr<Adapter> adapter;  // keeps the session for a late result
  const fuse_req_t req;
  std::atomic<bool> answered = false;
};

}  // namespace tarnel
